#include <cerrno>
#include <cstring>

#include "FaultLayer.h"
#include "Operations.h"

namespace faults {

int errorOf(Kind kind, Call) {
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

bool canBeInterrupted(Call call) {
    switch (call) {
        case Call::Open:
        case Call::Create:
        case Call::Read:
        case Call::Write:
        case Call::Send:
        case Call::Receive:
        case Call::Sync:
        case Call::Close:
        case Call::Poll:
            return true;
        default:
            return false;
    }
}

bool liesBelow(const char* path, const char* directory, size_t directoryLength) {
    return std::strncmp(path, directory, directoryLength) == 0 &&
           (path[directoryLength] == '/' || path[directoryLength] == '\0');
}

}  // namespace faults
