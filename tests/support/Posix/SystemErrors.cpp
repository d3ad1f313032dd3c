#include "SystemErrors.h"

#include <cerrno>

namespace support {
namespace {

int numberOf(SystemError error) {
    switch (error) {
        case SystemError::NotThere:
        case SystemError::DirectoryNotThere:
            return ENOENT;
        case SystemError::BelowAFile:
        case SystemError::NoDirectory:
            return ENOTDIR;
        case SystemError::IsDirectory:
            return EISDIR;
        case SystemError::Withheld:
        case SystemError::ReadOnly:
            return EACCES;
        case SystemError::BadPath:
        case SystemError::EmptyToMap:
            return EINVAL;
        case SystemError::NameTooLong:
        case SystemError::PathTooLong:
            return ENAMETOOLONG;
        case SystemError::SameFile:
            return EEXIST;
        case SystemError::NotOpen:
        case SystemError::NoRight:
            return EBADF;
        case SystemError::FileLimit:
            return EFBIG;
    }
    return 0;
}

}  // namespace

int errorOf(SystemError error) { return -(10000 + numberOf(error)); }

}  // namespace support
