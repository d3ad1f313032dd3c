// An open descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace Public::Base {

class Descriptor {
public:
    explicit Descriptor(int fd) : mFd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : mFd(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(mFd, other.mFd);
        return *this;
    }

    bool isOpen() const { return mFd >= 0; }
    int get() const { return mFd; }
    /// The caller closes it from now on.
    int release() { return std::exchange(mFd, -1); }
    /// @return false with errno when the system could not keep what was written
    bool close() {
        // An interrupted close has closed all the same; a second one could meet another thread's descriptor.
        return mFd < 0 || ::close(release()) == 0 || errno == EINTR;
    }

private:
    int mFd;
};

}  // namespace Public::Base
