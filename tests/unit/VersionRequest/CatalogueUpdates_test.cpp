// Updates of the catalogue, beside the plain way of doing the same.
#include <random>

#include "CatalogueEntries.h"
#include "RequestAccess.h"

using namespace Tarnwick::OrvUpdate;

namespace {

VersionSet someEntries(std::mt19937& random) {
    VersionSet entries;
    for (unsigned count = random() % 12; count != 0; --count) {
        entries.insert(support::entry({.version = "1." + std::to_string(random() % 10),
                                       .position = static_cast<int>(1 + random() % 3),
                                       .bits = random() % 2 == 0 ? 32 : 64}));
    }
    return entries;
}

/// Erases the position's entries, then erases and inserts one after another.
void updatePlainly(VersionSet& catalogue, const VersionSet& entries, StoragePosition position) {
    for (auto entry = catalogue.begin(); entry != catalogue.end();) {
        entry = (*entry)->getStoragePosition() == position ? catalogue.erase(entry) : std::next(entry);
    }
    for (const auto& entry : entries) {
        catalogue.erase(entry);
        catalogue.insert(entry);
    }
}

}  // namespace

TEST(CatalogueUpdates, LeaveTheObjectsThatErasingAndInsertingOneByOneLeaves) {
    std::mt19937 random(20);
    const auto request = std::make_shared<VersionRequest>(nullptr, std::shared_ptr<TWMQClient>(), VersionType_Client);
    VersionSet expected;
    for (int round = 0; round < 500; ++round) {
        const auto position = static_cast<StoragePosition>(1 + random() % 3);
        const VersionSet entries = someEntries(random);
        request->updateVersions(entries, position);
        updatePlainly(expected, entries, position);
        ASSERT_EQ(request->getVersions(), expected) << "round " << round;
    }
}
