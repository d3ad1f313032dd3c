#include "MQ/ServerMembership.h"

#include <algorithm>

namespace Tarnwick::MQ {

namespace {

std::string addressLines(const std::vector<Public::Network::NetAddr>& addresses) {
    std::string lines;
    for (const auto& address : addresses) {
        if (!lines.empty()) lines += '\n';
        lines += address.getIP() + ' ' + std::to_string(address.getPort());
    }
    return lines;
}

bool sameButReachable(const TWServerInfo& a, const TWServerInfo& b) {
    return a.systemId == b.systemId && a.version == b.version && a.addresses == b.addresses && a.ready == b.ready;
}

}  // namespace

ServerMembership::ServerMembership(std::shared_ptr<Bus> bus, const NodeOptions& options, bool systemServer,
                                   uint64_t now)
    : mBus(std::move(bus)), mBusId(options.id), mSystemServer(systemServer), mBeat(now), mNextAnnounce(now) {
    mSelf.serverId = options.serverId.empty() ? options.id : options.serverId;
    mSelf.systemId = options.systemId;
    mSelf.version = options.version;
    mSelf.addresses = addressLines(options.addresses);
    mSelf.reachable = true;
    mSelf.ready = options.ready;
}

uint64_t ServerMembership::tick(uint64_t now) {
    bool announcing = false;
    bool changed = false;
    uint64_t next = kNever;
    {
        std::lock_guard lock(mMutex);
        if (now >= mNextAnnounce) {
            announcing = true;
            mNextAnnounce = now + kAnnouncePeriod;
        }
        next = std::min(mNextAnnounce, judge(now, changed));
    }
    if (announcing) announce();
    if (announcing || changed) pushListTo(clients());
    return next;
}

/// With the lock held. @return when the next peer would be found silent
uint64_t ServerMembership::judge(uint64_t now, bool& changed) {
    const uint64_t excused = mBeat.heldUp(now);
    uint64_t next = kNever;
    for (auto& entry : mPeers) {
        auto& peer = entry.second;
        if (!peer.reachable) continue;
        peer.heard += excused;
        if (now >= peer.heard + kSilence) {
            peer.reachable = false;
            changed = true;
        } else {
            next = std::min(next, peer.heard + kSilence);
        }
    }
    for (auto& entry : mClients) {
        auto& client = entry.second;
        if (!client.mine || client.silent) continue;
        client.heard += excused;
        client.silent = now >= client.heard + kSilence;
        if (!client.silent) next = std::min(next, client.heard + kSilence);
    }
    return next;
}

void ServerMembership::receive(const std::string& from, const Frame& frame, uint64_t now) {
    if (frame.kind == FrameKind_Announce) hearServer(from, frame, now);
    if (frame.kind == FrameKind_Hello) hearClient(from, frame, now);
}

void ServerMembership::hearServer(const std::string& from, const Frame& frame, uint64_t now) {
    const auto& info = frame.servers.front();
    if (info.serverId == mSelf.serverId) return;
    bool fresh = false;
    bool changed = false;
    {
        std::lock_guard lock(mMutex);
        const auto known = mPeers.find(info.serverId);
        if (known != mPeers.end() && known->second.reachable && known->second.busId != from) return;  // another's id
        if (known != mPeers.end() && known->second.busId != from) mServerOf.erase(known->second.busId);
        // One node is one server, so that a node cannot fill the table.
        auto& spokenFor = mServerOf[from];
        if (spokenFor != info.serverId) mPeers.erase(spokenFor);
        spokenFor = info.serverId;
        auto& peer = mPeers[info.serverId];
        fresh = !peer.reachable;
        changed = fresh || !sameButReachable(peer.info, info);
        peer = Peer{info, from, frame.systemServer, true, now};
        mClients.erase(from);
    }
    if (fresh) announceTo({from});
    if (changed) pushListTo(clients());
}

void ServerMembership::hearClient(const std::string& from, const Frame& frame, uint64_t now) {
    bool fresh = false;
    {
        std::lock_guard lock(mMutex);
        auto& client = mClients[from];
        const bool mine = frame.addressee == mBusId;
        fresh = mine && (!client.mine || client.silent);
        client = Client{mine, false, now};
    }
    if (fresh) pushListTo({from});
}

void ServerMembership::lost(const std::string& peer) {
    {
        std::lock_guard lock(mMutex);
        if (auto* server = serverAt(peer)) server->reachable = false;
        mClients.erase(peer);
    }
    pushListTo(clients());
}

bool ServerMembership::alive(const std::string& peer) {
    std::lock_guard lock(mMutex);
    if (const auto* server = serverAt(peer)) return server->reachable;
    const auto client = mClients.find(peer);
    return client == mClients.end() || !client->second.silent;
}

/// With the lock held. @return null when no server speaks there
ServerMembership::Peer* ServerMembership::serverAt(const std::string& busId) {
    const auto spokenFor = mServerOf.find(busId);
    if (spokenFor == mServerOf.end()) return nullptr;
    const auto peer = mPeers.find(spokenFor->second);
    return peer == mPeers.end() ? nullptr : &peer->second;
}

/// With the lock held: the record with what is known at this moment.
TWServerInfo ServerMembership::seen(const Peer& peer) {
    auto info = peer.info;
    info.reachable = peer.reachable && mBus->linked(mBusId, peer.busId);
    return info;
}

bool ServerMembership::infoOf(const std::string& serverId, TWServerInfo& info) {
    if (mSystemServer && serverId == mSelf.serverId) {
        info = mSelf;
        return true;
    }
    std::lock_guard lock(mMutex);
    const auto found = mPeers.find(serverId);
    if (found == mPeers.end() || !found->second.systemServer || found->second.info.systemId != mSelf.systemId)
        return false;
    info = seen(found->second);
    return true;
}

ServerList ServerMembership::list(const std::string& systemId) {
    std::lock_guard lock(mMutex);
    return listLocked(systemId);
}

ServerList ServerMembership::listLocked(const std::string& systemId) {
    ServerList servers;
    for (const auto& entry : mPeers) {
        if (entry.second.systemServer && entry.second.info.systemId == systemId)
            servers[entry.first] = seen(entry.second);
    }
    if (mSystemServer && mSelf.systemId == systemId) servers[mSelf.serverId] = mSelf;
    return servers;
}

std::string ServerMembership::master() {
    std::lock_guard lock(mMutex);
    return masterLocked();
}

std::string ServerMembership::masterLocked() {
    std::string master = mSystemServer && mSelf.ready ? mSelf.serverId : std::string();
    for (const auto& entry : mPeers) {
        if (!master.empty() && master < entry.first) break;
        const auto& peer = entry.second;
        if (!peer.systemServer || peer.info.systemId != mSelf.systemId) continue;
        if (peer.reachable && peer.info.ready && mBus->linked(mBusId, peer.busId)) return entry.first;
    }
    return master;
}

std::string ServerMembership::busIdOf(const std::string& id) {
    if (id == mSelf.serverId || id == mBusId) return mBusId;
    std::lock_guard lock(mMutex);
    const auto peer = mPeers.find(id);
    if (peer != mPeers.end()) return peer->second.busId;
    return mClients.count(id) || mBus->linked(mBusId, id) ? id : std::string();
}

void ServerMembership::announce() {
    auto peers = mBus->peers(mBusId);
    {
        std::lock_guard lock(mMutex);
        peers.erase(
            std::remove_if(peers.begin(), peers.end(), [this](const auto& id) { return mClients.count(id) > 0; }),
            peers.end());
    }
    announceTo(peers);
}

void ServerMembership::announceTo(const std::vector<std::string>& peers) {
    Frame frame;
    frame.kind = FrameKind_Announce;
    frame.sender = mBusId;
    frame.systemServer = mSystemServer;
    frame.servers.push_back(mSelf);
    const auto bytes = encodeFrame(frame);
    for (const auto& peer : peers) mBus->send(mBusId, peer, bytes);
}

std::vector<std::string> ServerMembership::clients() {
    std::vector<std::string> ids;
    std::lock_guard lock(mMutex);
    for (const auto& client : mClients) {
        if (client.second.mine && !client.second.silent) ids.push_back(client.first);
    }
    return ids;
}

/// A client of a plain server finds that one in its list too, since it is the one that answers it.
void ServerMembership::pushListTo(const std::vector<std::string>& clients) {
    if (clients.empty()) return;
    Frame frame;
    frame.kind = FrameKind_List;
    frame.sender = mBusId;
    {
        std::lock_guard lock(mMutex);
        auto servers = listLocked(mSelf.systemId);
        servers[mSelf.serverId] = mSelf;
        for (const auto& server : servers) frame.servers.push_back(server.second);
        frame.master = masterLocked();
    }
    const auto bytes = encodeFrame(frame);
    for (const auto& client : clients) mBus->send(mBusId, client, bytes);
}

}  // namespace Tarnwick::MQ
