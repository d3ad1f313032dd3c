// What this program has allocated by "new".
#pragma once

#include <cstddef>

namespace support {

/// Counts from its making; the counts are those of the whole program.
class AllocationMeter {
public:
    AllocationMeter();
    /// Bytes held at the worst moment, beyond those at the beginning.
    size_t peak() const;
    /// Bytes held now, beyond those at the beginning.
    size_t held() const;

private:
    size_t mBegin;
};

}  // namespace support
