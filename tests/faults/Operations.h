// What the replaced system calls ask the layer.
#pragma once

#include <cstddef>
#include <cstdint>

namespace faults {

enum class Kind;

enum class Call {
    Open,
    Create,  // an open that may make a file
    Read,
    Write,
    Close,
    Sync,
    Truncate,
    Seek,
    Rename,
    Remove,
    MakeDirectory,
    OpenDirectory,
    ReadDirectory,
    Look,  // stat, access, readlink and the like
    ChangeMode,
    Map,
    Socket,
    Connect,
    Send,
    Receive,
    Poll,
    SocketOption,
};

/// What is to become of one operation.
struct Verdict {
    int error = 0;      // number to fail with, 0 for none
    bool half = false;  // move but half of the bytes
};

/// A descriptor, or what the system has in its place.
using Handle = std::intptr_t;

/// @param name of the call   @param path that it is about, with "/"; null leaves it uncounted
Verdict judgePath(Call call, const char* name, const char* path);
/// @param what the call is about, where that is not the file of the handle itself
Verdict judgeHandle(Call call, const char* name, Handle handle, const char* what = nullptr);
Verdict judgeSocket(const char* name);

/// True for a handle that is counted.
bool isFollowed(Handle handle);
/// From now on it is, or is not.
void follow(Handle handle, bool followed);
/// It is when the path lies in the directory.
void followPath(Handle handle, const char* path);
void forget(Handle handle);

/// How much of a transfer is let through.
inline size_t allowed(const Verdict& verdict, size_t length) {
    return verdict.half && length > 1 ? length / 2 : length;
}

// What the systems differ in.

/// The system's number for what goes wrong.
int errorOf(Kind kind, Call call);
/// True when what holds the call up may be gone at the next try.
bool canBeInterrupted(Call call);
/// True when a call about the path is one about the directory or what lies below it.
bool liesBelow(const char* path, const char* directory, size_t directoryLength);

}  // namespace faults
