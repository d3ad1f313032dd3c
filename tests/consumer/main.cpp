// Uses the engine as a customer does, from the installed tree: makes a request, starts it, reads its catalogue.
#include <OrvUpdate.h>

#include <cstdio>

#include "Public/Base.h"
#include "Public/Network.h"
#include "Tarnwick/MQ.h"

using namespace Tarnwick::OrvUpdate;

int main(int argc, char** argv) {
    Tarnwick::MQ::NodeOptions node;
    node.id = "client-1";
    const auto bus = Tarnwick::MQ::Bus::embedded();
    const auto client = TWMQClient::create(bus, node);
    const auto request = IVersionRequest::allocVersionRequest(IOWorker::create(1), client, VersionType_Client);
    const auto error = request->start(
        Version("1.11.0.8", 0), [](const std::string&, std::string&, std::string&) { return true; },
        [] { return true; }, argc > 1 ? argv[1] : "store");
    std::printf("start %d, version %s, %zu packages\n", error.errorCode(), request->getCurVersion().toString().c_str(),
                request->getVersions().size());
    return error ? 1 : 0;
}
