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
    /// How many times over a growing block lies in memory: a sanitizer copies it, the system's own malloc moves pages.
    static constexpr uint64_t copiesOfAGrowingBlock() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        return 2;
#else
        return 1;
#endif
    }

private:
    int64_t mBegin;
};

}  // namespace support
