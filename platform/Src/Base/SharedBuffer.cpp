#include "Public/Base/SharedBuffer.h"

namespace Public::Base {

SharedBuffer::SharedBuffer(const std::string& bytes) : mBytes(std::make_shared<const std::string>(bytes)) {}

SharedBuffer::SharedBuffer(std::string&& bytes) : mBytes(std::make_shared<const std::string>(std::move(bytes))) {}

SharedBuffer::SharedBuffer(const char* text) {
    if (text != nullptr) mBytes = std::make_shared<const std::string>(text);
}

SharedBuffer::SharedBuffer(const void* data, size_t length) {
    if (data != nullptr) mBytes = std::make_shared<const std::string>(static_cast<const char*>(data), length);
}

const char* SharedBuffer::buf() const { return mBytes ? mBytes->c_str() : ""; }

size_t SharedBuffer::size() const { return mBytes ? mBytes->size() : 0; }

std::string SharedBuffer::toStdString() const { return mBytes ? *mBytes : std::string(); }

}  // namespace Public::Base
