// Views of untrusted bytes, and little-endian numbers in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Archive {

using ByteView = std::span<const unsigned char>;

inline uint16_t le16(const unsigned char* at) { return static_cast<uint16_t>(at[0] | (at[1] << 8)); }
inline uint32_t le32(const unsigned char* at) {
    return static_cast<uint32_t>(at[0]) | static_cast<uint32_t>(at[1]) << 8 | static_cast<uint32_t>(at[2]) << 16 |
           static_cast<uint32_t>(at[3]) << 24;
}
inline uint64_t le64(const unsigned char* at) { return le32(at) | static_cast<uint64_t>(le32(at + 4)) << 32; }

/// True when [offset, offset + length) lies within size bytes; no sum here can overflow.
inline bool fits(uint64_t size, uint64_t offset, uint64_t length) { return offset <= size && length <= size - offset; }

/// The part [offset, offset + length), empty when it does not lie within the whole.
inline ByteView part(ByteView whole, uint64_t offset, uint64_t length) {
    if (!fits(whole.size(), offset, length)) return {};
    return whole.subspan(static_cast<size_t>(offset), static_cast<size_t>(length));
}

/// All from offset on, empty when that is beyond the end.
inline ByteView rest(ByteView whole, uint64_t offset) {
    return offset <= whole.size() ? whole.subspan(static_cast<size_t>(offset)) : ByteView();
}

}  // namespace Archive
