#include "QueueCopy.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "Bench.h"
#include "Content.h"
#include "FileObject.h"
#include "MQ/EmbeddedBus.h"
#include "Public/Base/File.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;
using Public::Base::File;
using Tarnwick::MQ::EmbeddedBus;

namespace {

/// The one place through which a chunk passes.
struct Slot {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<char> chunk = std::vector<char>(kQueueChunk);
    uint64_t asked = 0;  // position
    size_t given = 0;
    bool waits = false;  // a request is out

    template <class Condition>
    void await(const Condition& condition) {
        std::unique_lock lock(mutex);
        changed.wait(lock, condition);
    }
    template <class Change>
    void tell(const Change& change) {
        {
            std::lock_guard lock(mutex);
            change();
        }
        changed.notify_all();
    }
};

void readByTurns(Slot& slot, const std::string& from) {
    FileObject file;
    require(file.open(from, Public::Base::OpenMode_Read), "cannot read " + from);
    for (size_t given = kQueueChunk; given != 0;) {
        slot.await([&] { return slot.waits; });
        given = file.readAt(static_cast<uint32_t>(slot.asked), slot.chunk.data(), slot.chunk.size());
        slot.tell([&] {
            slot.given = given;
            slot.waits = false;
        });
    }
}

std::shared_ptr<VersionRequest> startNode(const std::shared_ptr<EmbeddedBus>& bus,
                                          const std::shared_ptr<IOWorker>& worker, const std::string& id) {
    Tarnwick::MQ::NodeOptions options;
    options.id = id;
    options.systemId = "site";
    const auto server = TWMQSystemServer::create(bus, options);
    require(server != nullptr, "no node " + id);
    const auto request = std::make_shared<VersionRequest>(worker, server, VersionType_Server);
    require(!request->start(Version("1.0", 0), {}, {}, freshDirectory("queue-" + id)), "the node does not start");
    return request;
}

}  // namespace

std::string queueFile(uint64_t bytes) { return noiseFile("queue-" + std::to_string(bytes), bytes); }

void copyByTurns(const std::string& from, const std::string& to) {
    Slot slot;
    std::thread reader([&] { readByTurns(slot, from); });
    FileObject file;
    const bool open = file.open(to, Public::Base::OpenMode_Create);
    bool whole = open;
    for (uint64_t position = 0;;) {
        slot.tell([&] {
            slot.asked = position;
            slot.waits = true;
        });
        slot.await([&] { return !slot.waits; });
        if (slot.given == 0) break;
        whole = whole && file.writeAt(static_cast<uint32_t>(position), slot.chunk.data(), slot.given) == slot.given;
        position += slot.given;
    }
    reader.join();
    require(whole && file.close() && File::getLength(to) == File::getLength(from), "cannot write " + to);
}

QueueNodes::QueueNodes(unsigned roundTripMs) : mWorker(IOWorker::create(2)) {
    const auto bus = std::make_shared<EmbeddedBus>();
    if (roundTripMs > 0) {
        Tarnwick::MQ::LinkFaults slow;
        slow.delayAtLeast = roundTripMs;
        slow.delayAtMost = roundTripMs;
        bus->setLinkFaults("taker", "holder", slow);
    }
    mHolder = startNode(bus, mWorker, "holder");
    mTaker = startNode(bus, mWorker, "taker");
}

std::shared_ptr<OrvVersion> QueueNodes::hold(const std::string& package) {
    auto version = wanted({});
    version->setStoragePosition(StoragePosition_Local);
    version->setLocalFileName(package);
    mHolder->addVersion(version);
    return version;
}

std::shared_ptr<OrvVersion> QueueNodes::wanted(const std::string& store) const {
    auto version = std::make_shared<OrvVersion>(mWorker, store, std::string("holder"));
    version->setVersion("2.0");
    version->setStoragePosition(StoragePosition_Node);
    return version;
}

}  // namespace bench
