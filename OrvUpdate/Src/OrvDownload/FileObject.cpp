#include "FileObject.h"

#include "Public/Base/Time.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::File;
using Public::Base::SeekPosition_Begin;
using Public::Base::Time;

FileObject::FileObject() : File(std::string()) {}

size_t FileObject::writeAt(uint32_t position, const void* data, size_t length) {
    mLastAccess = Time::getCurrentMilliSecond();
    std::lock_guard lock(mMutex);
    if (seek(position, SeekPosition_Begin) != static_cast<int64_t>(position)) return 0;
    return write(data, length);
}

size_t FileObject::readAt(uint32_t position, void* data, size_t length) {
    mLastAccess = Time::getCurrentMilliSecond();
    std::lock_guard lock(mMutex);
    if (seek(position, SeekPosition_Begin) != static_cast<int64_t>(position)) return 0;
    return read(data, length);
}

}  // namespace Tarnwick::OrvUpdate
