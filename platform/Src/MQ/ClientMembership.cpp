#include "MQ/ClientMembership.h"

#include <algorithm>

namespace Tarnwick::MQ {

ClientMembership::ClientMembership(std::shared_ptr<Bus> bus, const NodeOptions& options, uint64_t now)
    : mBus(std::move(bus)),
      mBusId(options.id),
      mServer(options.serverId),
      mHeard(now),
      mNextGreeting(now),
      mBeat(now) {}

uint64_t ClientMembership::tick(uint64_t now) {
    if (mServer.empty()) return kNever;
    bool greeting = false;
    uint64_t next = kNever;
    {
        std::lock_guard lock(mMutex);
        mHeard += mBeat.heldUp(now);
        if (now >= mHeard + kSilence) mAlive = false;
        if (now >= mNextGreeting) {
            greeting = true;
            mNextGreeting = now + kAnnouncePeriod;
        }
        next = mAlive ? std::min(mNextGreeting, mHeard + kSilence) : mNextGreeting;
    }
    if (greeting) greet(mServer);
    return next;
}

void ClientMembership::receive(const std::string& from, const Frame& frame, uint64_t now) {
    // A server that takes this node for one of its kind is told once; it stops announcing itself here.
    if (frame.kind == FrameKind_Announce) greet(from);
    if (frame.kind != FrameKind_List || from != mServer) return;
    ServerList servers;
    for (const auto& server : frame.servers) servers[server.serverId] = server;
    std::lock_guard lock(mMutex);
    mServers.swap(servers);
    mMaster = frame.master;
    mAlive = true;
    mHeard = now;
}

void ClientMembership::lost(const std::string& peer) {
    std::lock_guard lock(mMutex);
    if (peer == mServer) mAlive = false;
}

bool ClientMembership::alive(const std::string& peer) {
    std::lock_guard lock(mMutex);
    return peer != mServer || mAlive;
}

ServerList ClientMembership::list() {
    std::lock_guard lock(mMutex);
    return mServers;
}

std::string ClientMembership::master() {
    std::lock_guard lock(mMutex);
    return mMaster;
}

void ClientMembership::greet(const std::string& server) {
    Frame frame;
    frame.kind = FrameKind_Hello;
    frame.sender = mBusId;
    frame.addressee = mServer;
    mBus->send(mBusId, server, encodeFrame(frame));
}

}  // namespace Tarnwick::MQ
