// A reference-counted byte buffer.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Copies share the bytes, which never change after construction, so copies may be read on any thread.
class ORV_PLATFORM_API SharedBuffer {
public:
    SharedBuffer() = default;
    explicit SharedBuffer(const std::string& bytes);
    explicit SharedBuffer(std::string&& bytes);
    /// Up to the terminating zero; null gives an empty buffer.
    explicit SharedBuffer(const char* text);
    /// @param length bytes at data; null data gives an empty buffer
    SharedBuffer(const void* data, size_t length);

    /// Never null; a zero byte follows the last byte.
    const char* buf() const;
    /// Bytes.
    size_t size() const;
    bool empty() const { return size() == 0; }
    std::string toStdString() const;
    operator std::string() const { return toStdString(); }  // NOLINT(google-explicit-constructor)

private:
    std::shared_ptr<const std::string> mBytes;
};

}  // namespace Public::Base
