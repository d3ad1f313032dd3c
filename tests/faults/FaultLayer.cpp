#include "FaultLayer.h"

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "Operations.h"

namespace faults {

namespace {

constexpr int kMostDescriptors = 4096;

std::atomic<bool> sArmed{false};
std::atomic<bool> sFollowed[kMostDescriptors];  // by descriptor

std::mutex sMutex;  // guards what follows
char sDirectory[PATH_MAX];
size_t sDirectoryLength = 0;
Kind sKind = Kind::InputOutputError;
size_t sAt = 0;
size_t sCount = 0;
bool sStruck = false;
char sWhere[PATH_MAX + 64];
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

bool waits(Call call) {
    return opens(call) ? call == Call::Open || call == Call::Create
                       : movesBytes(call) || call == Call::Sync || call == Call::Close || call == Call::Poll;
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
            return waits(call);
        case Kind::ShortTransfer:
            return movesBytes(call);
        case Kind::ConnectionReset:
            return call == Call::Connect || call == Call::Send || call == Call::Receive;
    }
    return false;
}

int errorOf(Kind kind) {
    switch (kind) {
        case Kind::InputOutputError:
            return EIO;
        case Kind::DiskFull:
        case Kind::DiskStaysFull:
            return ENOSPC;
        case Kind::NoRight:
            return EACCES;
        case Kind::TooManyOpen:
            return EMFILE;
        case Kind::OutOfMemory:
            return ENOMEM;
        case Kind::Interrupted:
            return EINTR;
        case Kind::ConnectionReset:
            return ECONNRESET;
        case Kind::ShortTransfer:
            break;
    }
    return 0;
}

/// Counts one operation and judges it.
Verdict judge(Call call, const char* name, const char* what) {
    std::unique_lock lock(sMutex);
    if (!sArmed) return {};
    if (sAction == nullptr && !applies(sKind, call)) return {};
    ++sCount;
    const bool repeats = sKind == Kind::DiskStaysFull && sAction == nullptr;
    if (sCount != sAt && !(repeats && sCount > sAt)) return {};
    if (sStruck) return {errorOf(sKind), false};
    sStruck = true;
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
    return {errorOf(sKind), false};
}

bool liesBelow(const char* path) {
    std::lock_guard lock(sMutex);
    return std::strncmp(path, sDirectory, sDirectoryLength) == 0 &&
           (path[sDirectoryLength] == '/' || path[sDirectoryLength] == '\0');
}

void arm(const std::string& directory, Kind kind, size_t at, std::function<void()>* action) {
    std::lock_guard lock(sMutex);
    std::snprintf(sDirectory, sizeof sDirectory, "%s", directory.c_str());
    sDirectoryLength = std::strlen(sDirectory);
    sKind = kind;
    sAt = at;
    sCount = 0;
    sStruck = false;
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
    for (auto& followed : sFollowed) followed = false;
}

bool Armed::struck() const {
    std::lock_guard lock(sMutex);
    return sStruck;
}

std::string Armed::where() const {
    std::lock_guard lock(sMutex);
    return sWhere;
}

Verdict judgePath(Call call, const char* name, const char* path) {
    if (isInside() || path == nullptr || !liesBelow(path)) return {};
    return judge(call, name, path);
}

Verdict judgeAt(Call call, const char* name, int directory, const char* path) {
    if (isInside() || path == nullptr) return {};
    if (directory == AT_FDCWD || path[0] == '/') return judgePath(call, name, path);
    return isFollowed(directory) ? judge(call, name, path) : Verdict();
}

Verdict judgeDescriptor(Call call, const char* name, int descriptor) {
    if (isInside() || !isFollowed(descriptor)) return {};
    char text[32];
    std::snprintf(text, sizeof text, "(descriptor %d)", descriptor);
    return judge(call, name, text);
}

Verdict judgeSocket(const char* name) {
    if (isInside()) return {};
    return judge(Call::Socket, name, "");
}

bool isFollowed(int descriptor) { return descriptor >= 0 && descriptor < kMostDescriptors && sFollowed[descriptor]; }

void followPath(int descriptor, const char* path) {
    if (isInside() || descriptor < 0 || descriptor >= kMostDescriptors) return;
    sFollowed[descriptor] = liesBelow(path);
}

void followAt(int descriptor, int directory, const char* path) {
    if (isInside() || descriptor < 0 || descriptor >= kMostDescriptors) return;
    if (directory == AT_FDCWD || path[0] == '/') {
        followPath(descriptor, path);
    } else {
        sFollowed[descriptor] = isFollowed(directory);
    }
}

void followSocket(int descriptor) {
    if (isInside() || descriptor < 0 || descriptor >= kMostDescriptors) return;
    sFollowed[descriptor] = true;
}

void forget(int descriptor) {
    if (descriptor >= 0 && descriptor < kMostDescriptors) sFollowed[descriptor] = false;
}

}  // namespace faults
