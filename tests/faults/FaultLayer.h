// Makes the n-th file or network operation of this process fail.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace faults {

/// What goes wrong. Each kind strikes only operations that can fail so. On Windows its error of the same meaning.
enum class Kind {
    InputOutputError,  // EIO
    DiskFull,          // ENOSPC, once
    DiskStaysFull,     // ENOSPC, from then on, after one last write that took half of its bytes
    NoRight,           // EACCES
    TooManyOpen,       // EMFILE
    OutOfMemory,       // ENOMEM
    Interrupted,       // EINTR, or a file that another program holds for a moment: to be retried
    ShortTransfer,     // half of the bytes: to be continued
    ConnectionReset,   // ECONNRESET
};

/// As a test's name has it.
const char* nameOf(Kind kind);
/// True for a kind that a caller must not notice.
bool isHarmless(Kind kind);

/// While it lives, operations on what lies below the directory, on what is opened there, and on sockets made
/// meanwhile are counted, on every thread; the given one fails. One at a time. What is opened by the C library itself,
/// such as a stream of fopen, is not seen.
class Armed {
public:
    /// @param at number of the operation, of those that the kind can strike, from 1
    Armed(const std::string& directory, Kind kind, size_t at);
    /// Runs the action before the n-th operation of any kind, on its thread, instead of letting it fail.
    Armed(const std::string& directory, size_t at, std::function<void()> action);
    ~Armed();
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;

    /// True once the operation was reached.
    bool struck() const;
    /// True once it was, and was the opening of a file.
    bool wasOpening() const;
    /// The operation and its path or handle; empty before it was reached.
    std::string where() const;
};

}  // namespace faults
