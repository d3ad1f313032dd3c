#include "SystemErrors.h"

#include <windows.h>

namespace support {
namespace {

int numberOf(SystemError error) {
    switch (error) {
        case SystemError::NotThere:
            return ERROR_FILE_NOT_FOUND;
        case SystemError::DirectoryNotThere:
        case SystemError::BelowAFile:
            return ERROR_PATH_NOT_FOUND;
        case SystemError::NoDirectory:
            return ERROR_DIRECTORY;
        case SystemError::IsDirectory:
        case SystemError::ReadOnly:
        case SystemError::NoRight:
            return ERROR_ACCESS_DENIED;
        case SystemError::Withheld:
            return ERROR_SHARING_VIOLATION;
        case SystemError::BadPath:
            return ERROR_INVALID_NAME;
        case SystemError::NameTooLong:
        case SystemError::PathTooLong:
            return ERROR_FILENAME_EXCED_RANGE;
        case SystemError::SameFile:
            return ERROR_FILE_EXISTS;
        case SystemError::NotOpen:
            return ERROR_INVALID_HANDLE;
        case SystemError::EmptyToMap:
            return ERROR_FILE_INVALID;
        case SystemError::FileLimit:
            return ERROR_DISK_FULL;
    }
    return 0;
}

}  // namespace

int errorOf(SystemError error) { return -(10000 + numberOf(error)); }

}  // namespace support
