// A server that keeps itself up to date: orvexample STORE INSTALL_DIR
#include <cstdio>
#include <future>
#include <string>
#include <vector>

#include "OrvUpdate.h"
#include "Public/Base.h"
#include "Public/Network.h"
#include "Tarnwick/MQ.h"

using namespace Tarnwick::OrvUpdate;

int main(int argc, char** argv) {
    const std::vector<std::string> words = Public::Base::Process::arguments(argc, argv);  // in UTF-8 on every system
    if (words.size() != 3) return 2;

    // One thread pool, one queue object, one request for the life of the program.
    const auto worker = IOWorker::create(2);
    Tarnwick::MQ::NodeOptions node;
    node.id = "server-1";
    node.systemId = "site-1";
    const auto server = TWMQSystemServer::create(Tarnwick::MQ::Bus::embedded(), node);
    const auto request = IVersionRequest::allocVersionRequest(worker, server, VersionType_Server);

    std::promise<const char*> outcome;
    const Version running("1.11.0.8", 0);
    const ErrorInfo started = request->start(
        running, [](const std::string&, std::string&, std::string&) { return true; },  // may it be installed now?
        [&outcome] {                                                                   // it is being installed: end
            outcome.set_value("upgrading");
            return true;
        },
        words[1]);
    if (started) return 1;

    // Ask the cloud; the answer comes on a thread of the worker.
    std::promise<ErrorInfo> asked;
    request->requestVersionFromHttp([&asked](const ErrorInfo& error) { asked.set_value(error); }, true);
    if (const ErrorInfo error = asked.get_future().get()) {
        std::printf("the update cloud cannot be asked: %d\n", static_cast<int>(error.errorCode()));
        return 1;
    }

    const auto newest = request->queryNewestVersion(
        Public::Base::SystemType_Windows, Public::Base::Host::getSoftwareSystemBits(),
        Public::Base::ProjectType_Unknown, VersionType_Server, VersionSource_Unknown, running);
    if (!newest) {
        std::printf("up to date\n");
        return 0;
    }

    // Fetch, test, launch. What goes wrong later reaches onError; what goes well ends in the callback above.
    request->install(
        newest, words[2], true, [&outcome](const ErrorInfo&) { outcome.set_value("failed"); },
        [] { std::printf("the package has arrived\n"); }, [] { std::printf("the package is sound\n"); });
    std::printf("%s\n", outcome.get_future().get());
    return 0;
}
