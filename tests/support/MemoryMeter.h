// Counts the memory that a program allocates, for tests that hold code to a limit.
#pragma once

#include <cstdint>

namespace support {

/// Works in every build: a plain program's own malloc counts, a sanitizer's tells its hooks. Memory counts when it is
/// asked for, touched or not; mapped files do not count. All threads do.
class MemoryMeter {
public:
    /// Begins anew. One meter at a time.
    MemoryMeter();
    /// The most bytes that were allocated at once since then, beyond those of the beginning.
    uint64_t peak() const;

private:
    int64_t mBegin;
};

}  // namespace support
