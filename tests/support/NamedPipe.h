// A pipe with a name, which opens like a file.
#pragma once

#include <memory>
#include <string>

namespace support {

/// Nobody writes to it, so that a reader who waits does so for ever.
class NamedPipe {
public:
    /// @param path where it is to lie, on a system that keeps pipes among the files. Throws std::runtime_error.
    explicit NamedPipe(const std::string& path);
    ~NamedPipe();
    NamedPipe(const NamedPipe&) = delete;
    NamedPipe& operator=(const NamedPipe&) = delete;

    /// How it is opened.
    const std::string& path() const { return mPath; }

private:
    struct Held;
    std::string mPath;
    std::unique_ptr<Held> mHeld;
};

}  // namespace support
