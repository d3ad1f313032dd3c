// Measures one operation of the engine in a process of its own, on whatever system it was built for, and prints the
// seconds:
//
//   orvmeasure check PACKAGE            the test of a package, version 1.0.0.0 for 64 bits
//   orvmeasure download URL DIRECTORY   a download into a store
#include <chrono>
#include <cstdio>
#include <exception>
#include <future>
#include <stdexcept>
#include <string>

#include "HttpDownload.h"
#include "OrvInstaller.h"
#include "OrvVersion.h"
#include "Public/Base/Printer.h"

namespace {

using namespace Tarnwick::OrvUpdate;

void require(bool condition, const std::string& text) {
    if (!condition) throw std::runtime_error(text);
}

void check(const std::string& package) {
    require(!OrvInstaller::checkPackage(package, "1.0.0.0", 64), "checkPackage refuses " + package);
}

void download(const std::string& url, const std::string& store) {
    const auto worker = IOWorker::create(2);
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
    require(transfer->finish() && !transfer->getError(), "the transfer fails");
}

}  // namespace

int main(int argc, char** argv) {
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    const std::string what = argc > 1 ? argv[1] : "";
    try {
        const auto begin = std::chrono::steady_clock::now();
        if (what == "check" && argc == 3) {
            check(argv[2]);
        } else if (what == "download" && argc == 4) {
            download(argv[2], argv[3]);
        } else {
            std::fprintf(stderr, "usage: orvmeasure check PACKAGE | download URL DIRECTORY\n");
            return 2;
        }
        std::printf("%.6f\n", std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvmeasure: %s\n", error.what());
        return 1;
    }
}
