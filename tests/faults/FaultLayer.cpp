#include "FaultLayer.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "Operations.h"

namespace faults {

namespace {

// No memory is asked for in here: the calls come from everywhere.
constexpr size_t kMostFollowed = 1024;
constexpr size_t kLongestPath = 4096;

std::atomic<bool> sArmed{false};

std::mutex sFollowedMutex;  // guards these two
Handle sFollowed[kMostFollowed];
size_t sFollowedCount = 0;

std::mutex sMutex;  // guards what follows
char sDirectory[kLongestPath];
size_t sDirectoryLength = 0;
Kind sKind = Kind::InputOutputError;
size_t sAt = 0;
size_t sCount = 0;
bool sStruck = false;
bool sOpened = false;
char sWhere[kLongestPath + 64];
std::function<void()>* sAction = nullptr;

thread_local bool tInside = false;  // operations of the layer's own, or of an action

bool isSocketCall(Call call) { return call >= Call::Socket; }

bool takesRoom(Call call) {
    return call == Call::Create || call == Call::Write || call == Call::Sync || call == Call::Truncate ||
           call == Call::MakeDirectory || call == Call::Rename || call == Call::Close;
}

bool movesBytes(Call call) {
    return call == Call::Read || call == Call::Write || call == Call::Send || call == Call::Receive;
}

bool needsRight(Call call) {
    switch (call) {
        case Call::Open:
        case Call::Create:
        case Call::Rename:
        case Call::Remove:
        case Call::MakeDirectory:
        case Call::OpenDirectory:
        case Call::Look:
        case Call::ChangeMode:
        case Call::Connect:
            return true;
        default:
            return false;
    }
}

bool opens(Call call) {
    return call == Call::Open || call == Call::Create || call == Call::OpenDirectory || call == Call::Socket;
}

bool applies(Kind kind, Call call) {
    switch (kind) {
        case Kind::InputOutputError:
            return !isSocketCall(call);
        case Kind::DiskFull:
        case Kind::DiskStaysFull:
            return takesRoom(call);
        case Kind::NoRight:
            return needsRight(call);
        case Kind::TooManyOpen:
            return opens(call);
        case Kind::OutOfMemory:
            return opens(call) || call == Call::Map || call == Call::Poll || call == Call::SocketOption;
        case Kind::Interrupted:
            return canBeInterrupted(call);
        case Kind::ShortTransfer:
            return movesBytes(call);
        case Kind::ConnectionReset:
            return call == Call::Connect || call == Call::Send || call == Call::Receive;
    }
    return false;
}

/// Counts one operation and judges it.
Verdict judge(Call call, const char* name, const char* what) {
    std::unique_lock lock(sMutex);
    if (!sArmed) return {};
    if (sAction == nullptr && !applies(sKind, call)) return {};
    ++sCount;
    const bool repeats = sKind == Kind::DiskStaysFull && sAction == nullptr;
    if (sCount != sAt && !(repeats && sCount > sAt)) return {};
    if (sStruck) return {errorOf(sKind, call), false};
    sStruck = true;
    sOpened = call == Call::Open || call == Call::Create;
    std::snprintf(sWhere, sizeof sWhere, "%s %s", name, what);
    if (sAction != nullptr) {
        const auto action = *sAction;
        lock.unlock();
        tInside = true;
        action();
        tInside = false;
        return {};
    }
    if (sKind == Kind::ShortTransfer) return {0, true};
    if (sKind == Kind::DiskStaysFull && call == Call::Write) return {0, true};
    return {errorOf(sKind, call), false};
}

bool isCounted(const char* path) {
    std::lock_guard lock(sMutex);
    return liesBelow(path, sDirectory, sDirectoryLength);
}

void arm(const std::string& directory, Kind kind, size_t at, std::function<void()>* action) {
    std::lock_guard lock(sMutex);
    std::snprintf(sDirectory, sizeof sDirectory, "%s", directory.c_str());
    sDirectoryLength = std::strlen(sDirectory);
    sKind = kind;
    sAt = at;
    sCount = 0;
    sStruck = false;
    sOpened = false;
    sWhere[0] = '\0';
    sAction = action;
    sArmed = true;
}

bool isInside() { return !sArmed || tInside; }

}  // namespace

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::InputOutputError:
            return "InputOutputError";
        case Kind::DiskFull:
            return "DiskFull";
        case Kind::DiskStaysFull:
            return "DiskStaysFull";
        case Kind::NoRight:
            return "NoRight";
        case Kind::TooManyOpen:
            return "TooManyOpen";
        case Kind::OutOfMemory:
            return "OutOfMemory";
        case Kind::Interrupted:
            return "Interrupted";
        case Kind::ShortTransfer:
            return "ShortTransfer";
        case Kind::ConnectionReset:
            return "ConnectionReset";
    }
    return "";
}

bool isHarmless(Kind kind) { return kind == Kind::Interrupted || kind == Kind::ShortTransfer; }

Armed::Armed(const std::string& directory, Kind kind, size_t at) { arm(directory, kind, at, nullptr); }

Armed::Armed(const std::string& directory, size_t at, std::function<void()> action) {
    arm(directory, Kind::InputOutputError, at, new std::function<void()>(std::move(action)));
}

Armed::~Armed() {
    std::lock_guard lock(sMutex);
    sArmed = false;
    delete sAction;
    sAction = nullptr;
    std::lock_guard followed(sFollowedMutex);
    sFollowedCount = 0;
}

bool Armed::struck() const {
    std::lock_guard lock(sMutex);
    return sStruck;
}

std::string Armed::where() const {
    std::lock_guard lock(sMutex);
    return sWhere;
}

bool Armed::wasOpening() const {
    std::lock_guard lock(sMutex);
    return sOpened;
}

Verdict judgePath(Call call, const char* name, const char* path) {
    if (isInside() || path == nullptr || !isCounted(path)) return {};
    return judge(call, name, path);
}

Verdict judgeHandle(Call call, const char* name, Handle handle, const char* what) {
    if (isInside() || !isFollowed(handle)) return {};
    if (what != nullptr) return judge(call, name, what);
    char text[32];
    std::snprintf(text, sizeof text, "(handle %lld)", static_cast<long long>(handle));
    return judge(call, name, text);
}

Verdict judgeSocket(const char* name) {
    if (isInside()) return {};
    return judge(Call::Socket, name, "");
}

bool isFollowed(Handle handle) {
    std::lock_guard lock(sFollowedMutex);
    return std::find(sFollowed, sFollowed + sFollowedCount, handle) != sFollowed + sFollowedCount;
}

void forget(Handle handle) {
    if (!sArmed) return;  // nothing is followed then
    std::lock_guard lock(sFollowedMutex);
    sFollowedCount = static_cast<size_t>(std::remove(sFollowed, sFollowed + sFollowedCount, handle) - sFollowed);
}

void follow(Handle handle, bool followed) {
    forget(handle);
    if (isInside() || !followed) return;
    std::lock_guard lock(sFollowedMutex);
    if (sFollowedCount == kMostFollowed) {
        std::fputs("more is open than the layer can follow\n", stderr);
        std::abort();
    }
    sFollowed[sFollowedCount++] = handle;
}

void followPath(Handle handle, const char* path) { follow(handle, !isInside() && isCounted(path)); }

}  // namespace faults
