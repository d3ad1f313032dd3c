// A handle of the system that closes itself.
#pragma once

#include <utility>

#include "Base/Windows/WindowsHeaders.h"

namespace Public::Base {

class OwnedHandle {
public:
    /// Takes over a handle; null and INVALID_HANDLE_VALUE alike are none.
    explicit OwnedHandle(HANDLE handle = nullptr) : mHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~OwnedHandle() { close(); }
    OwnedHandle(OwnedHandle&& other) noexcept : mHandle(std::exchange(other.mHandle, nullptr)) {}
    OwnedHandle& operator=(OwnedHandle&& other) noexcept {
        std::swap(mHandle, other.mHandle);
        return *this;
    }

    bool isOpen() const { return mHandle != nullptr; }
    HANDLE get() const { return mHandle; }
    /// @return false with GetLastError when the system refuses
    bool close() {
        const HANDLE handle = std::exchange(mHandle, nullptr);
        return handle == nullptr || ::CloseHandle(handle);
    }

private:
    HANDLE mHandle;
};

}  // namespace Public::Base
