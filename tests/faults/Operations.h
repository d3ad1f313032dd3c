// What the replaced system calls ask the layer.
#pragma once

#include <cstddef>

namespace faults {

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

/// @param name of the call   @param path that it is about; null leaves it uncounted
Verdict judgePath(Call call, const char* name, const char* path);
/// The same for a path that may be relative to an open directory.
Verdict judgeAt(Call call, const char* name, int directory, const char* path);
Verdict judgeDescriptor(Call call, const char* name, int descriptor);
Verdict judgeSocket(const char* name);

/// True for a descriptor that is counted.
bool isFollowed(int descriptor);
void followPath(int descriptor, const char* path);
void followAt(int descriptor, int directory, const char* path);
void followSocket(int descriptor);
void forget(int descriptor);

/// How much of a transfer is let through.
inline size_t allowed(const Verdict& verdict, size_t length) {
    return verdict.half && length > 1 ? length / 2 : length;
}

}  // namespace faults
