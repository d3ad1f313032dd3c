#include "MQ/Presence.h"

#include "Protocol/FieldReader.h"

namespace Tarnwick::MQ {

TWServerInfo Presence::judged(const Known& known, uint64_t now) {
    TWServerInfo info = known.info;
    if (!known.told) info.reachable = info.reachable && now - known.heardAt < kSilentAfterMs;
    return info;
}

bool Presence::heard(const TWServerInfo& info, const std::string& node, uint64_t now) {
    std::lock_guard lock(mMutex);
    const auto found = mServers.find(info.serverId);
    const bool news = found == mServers.end() || !judged(found->second, now).reachable;
    Known& known = mServers[info.serverId];
    known = {info, node, now, false};
    known.info.reachable = true;
    return news;
}

void Presence::own(const TWServerInfo& info, const std::string& node) {
    std::lock_guard lock(mMutex);
    mServers[info.serverId] = {info, node, 0, true};
}

void Presence::replace(const ServerList& list) {
    std::lock_guard lock(mMutex);
    mServers.clear();
    for (const auto& [id, info] : list) mServers[id] = {info, id, 0, true};
}

void Presence::lost(const std::string& node) {
    std::lock_guard lock(mMutex);
    for (auto& [id, known] : mServers) {
        if (known.node == node) known.info.reachable = false;
    }
}

ServerList Presence::list(const std::string& systemId, uint64_t now) const {
    std::lock_guard lock(mMutex);
    ServerList servers;
    for (const auto& [id, known] : mServers) {
        if (systemId.empty() || known.info.systemId == systemId) servers[id] = judged(known, now);
    }
    return servers;
}

bool Presence::find(const std::string& serverId, TWServerInfo& info, uint64_t now) const {
    std::lock_guard lock(mMutex);
    const auto found = mServers.find(serverId);
    if (found == mServers.end()) return false;
    info = judged(found->second, now);
    return true;
}

std::string Presence::nodeOf(const std::string& serverId) const {
    std::lock_guard lock(mMutex);
    const auto found = mServers.find(serverId);
    return found == mServers.end() ? std::string() : found->second.node;
}

std::string Presence::master(const std::string& systemId, uint64_t now) const {
    for (const auto& [id, info] : list(systemId, now)) {
        if (info.reachable && info.ready) return id;
    }
    return {};
}

std::string encodeServerList(const ServerList& list) {
    Protocol::TWFieldWriter writer;
    for (const auto& [id, info] : list) writer.record(1, info);
    return writer.take();
}

bool decodeServerList(const std::string& bytes, ServerList& list) {
    list.clear();
    Protocol::FieldReader reader(bytes);
    for (Protocol::TWField field; reader.next(field);) {
        if (field.number != 1) continue;
        TWServerInfo info;
        if (!field.to(info)) return false;
        list[info.serverId] = info;
    }
    return reader.atEnd();
}

}  // namespace Tarnwick::MQ
