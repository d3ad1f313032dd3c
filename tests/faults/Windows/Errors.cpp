#include <winsock2.h>

#include <windows.h>

#include <cstring>

#include "FaultLayer.h"
#include "Operations.h"

namespace faults {

namespace {

int socketErrorOf(Kind kind) {
    switch (kind) {
        case Kind::NoRight:
            return WSAEACCES;
        case Kind::TooManyOpen:
            return WSAEMFILE;
        case Kind::OutOfMemory:
            return WSAENOBUFS;
        case Kind::ConnectionReset:
            return WSAECONNRESET;
        default:
            return WSAEFAULT;  // no other kind strikes a socket
    }
}

int fileErrorOf(Kind kind) {
    switch (kind) {
        case Kind::InputOutputError:
            return ERROR_IO_DEVICE;
        case Kind::DiskFull:
        case Kind::DiskStaysFull:
            return ERROR_DISK_FULL;
        case Kind::NoRight:
            return ERROR_ACCESS_DENIED;
        case Kind::TooManyOpen:
            return ERROR_TOO_MANY_OPEN_FILES;
        case Kind::OutOfMemory:
            return ERROR_NOT_ENOUGH_MEMORY;
        case Kind::Interrupted:
            return ERROR_SHARING_VIOLATION;
        default:
            return ERROR_GEN_FAILURE;  // no other kind strikes a file so
    }
}

}  // namespace

int errorOf(Kind kind, Call call) {
    if (kind == Kind::ShortTransfer) return 0;
    return call >= Call::Socket ? socketErrorOf(kind) : fileErrorOf(kind);
}

// Nothing interrupts a call, but whoever looks at each new file, such as a scanner for viruses, holds it for a moment.
bool canBeInterrupted(Call call) {
    return call == Call::Open || call == Call::Create || call == Call::Rename || call == Call::Remove;
}

bool liesBelow(const char* path, const char* directory, size_t directoryLength) {
    return ::_strnicmp(path, directory, directoryLength) == 0 &&
           (path[directoryLength] == '/' || path[directoryLength] == '\0');
}

}  // namespace faults
