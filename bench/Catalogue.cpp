// The catalogue as it grows. There is no peer; the cost of one entry shows whether the growth is linear.
#include "Bench.h"
#include "OrvVersion.h"
#include "VersionRequest.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

VersionSet makeVersions(int count) {
    VersionSet versions;
    for (int i = 0; i < count; ++i) {
        auto version = std::make_shared<OrvVersion>(nullptr, "/store", "server");
        version->setVersion("1." + std::to_string(i / 1000) + "." + std::to_string(i % 1000));
        version->setStoragePosition(StoragePosition_Cloud);
        versions.insert(version);
    }
    return versions;
}

Row perEntry(const std::string& operation, int count, double seconds) {
    return {.name = operation + ", " + std::to_string(count) + " entries",
            .ours = seconds * 1e9 / count,
            .unit = "ns/entry"};
}

}  // namespace

void measureCatalogue(const Report& report) {
    for (const int count : {100, 1000, 10000, 100000}) {
        const auto request =
            std::make_shared<VersionRequest>(nullptr, std::shared_ptr<TWMQClient>(), VersionType_Client);
        const VersionSet versions = makeVersions(count);
        const std::string newest = (*versions.rbegin())->getVersion().toString();
        const int repeats = 100000 / count;  // a short operation is measured as a row of them
        const double update = medianSeconds(
            [&] {
                for (int i = 0; i < repeats; ++i) request->updateVersions(versions, StoragePosition_Cloud);
            },
            5);
        const double query = medianSeconds(
            [&] {
                for (int i = 0; i < repeats; ++i) {
                    const auto found =
                        request->queryNewestVersion(Public::Base::SystemType_Windows, Public::Base::SystemBits_64,
                                                    Public::Base::ProjectType_Unknown, VersionType_Client,
                                                    VersionSource_Unknown, Version("0.1", 0));
                    require(found && found->getVersion().toString() == newest, "the newest version is not found");
                }
            },
            5);
        require(request->getVersions().size() == static_cast<size_t>(count), "entries are missing");
        report(perEntry("queryNewestVersion", count, query / repeats));
        report(perEntry("updateVersions", count, update / repeats));
    }
}

}  // namespace bench
