// Where an operation stands in its class's virtual table.
#pragma once

#include <cstddef>
#include <cstring>

namespace support {

/// The place of a virtual operation, given its member pointer, in the first virtual table of its class. The destructor
/// takes the places 0 and 1, so that the operation declared behind it has place 2.
template <class Member>
size_t virtualSlot(Member member) {
    static_assert(sizeof(Member) == 2 * sizeof(size_t),
                  "the common layout: an offset in the table, then an adjustment");
    size_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return offset / sizeof(void*);  // the mark of a virtual operation, where it is in the lowest bit, falls away
}

}  // namespace support
