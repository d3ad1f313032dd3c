// Receiving a package from a server on the loopback.
#include "Download.h"

#include <filesystem>
#include <future>

#include "Bench.h"
#include "HttpDownload.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

std::string download(const std::shared_ptr<IOWorker>& worker, const std::string& store, const std::string& url) {
    const auto version = std::make_shared<OrvVersion>(worker, store, "server");
    JsonValue document;
    document["softversion"] = "1.0";
    document["description"] = "";
    document["url"] = url;
    require(!version->parseVersionFromHttp(document), "no version");
    const auto transfer = std::make_shared<HttpDownload>(worker, version);
    std::promise<void> ended;
    require(!transfer->start([&] { ended.set_value(); }), "the transfer does not start");
    ended.get_future().wait();
    require(transfer->finish() && std::filesystem::file_size(version->getPackageFile()) == PackageServer::kBodyBytes,
            "the transfer fails");
    return version->getPackageFile();
}

void measureDownload(const Report& report) {
    const PackageServer server;
    const auto worker = IOWorker::create(2);
    std::string target;
    const auto empty = [&] { target = freshDirectory("download"); };
    report(compare(
        {.name = "download, 1 GiB from the loopback",
         .peer = "curl -o",
         .ours = {[&] { download(worker, target, server.url()); }, empty},
         .theirs = {[&] { run("curl -sS -o " + shellWord(target + "/package.exe") + " " + server.url()); }, empty},
         .amount = static_cast<double>(PackageServer::kBodyBytes) / (1 << 20),
         .unit = "MiB/s",
         .target = 0.95}));
    std::filesystem::remove_all(target);
}

}  // namespace bench
