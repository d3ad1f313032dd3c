// What a package may ask of the machine. No number in it is trusted, so that all it can ask for is bounded by its size.
#pragma once

#include <algorithm>
#include <cstdint>

namespace Archive {

constexpr uint64_t kMebibyte = 1u << 20;

/// A package of up to 2 MiB, of whatever content, is refused or read within 256 MiB: one item, one window, the names
/// and what is read ahead. Larger packages may ask for more in proportion, for real ones hold items of several hundred
/// MiB. 64 is far above what real files pack to (text packs to a tenth), and far below what a bomb does (zeros pack to
/// a thousandth with deflate, less with the others).
constexpr uint64_t kRatioLimit = 64;

/// Bytes of one item, which lies in memory as a whole. @param packed bytes of the item, or of the stream it lies in
constexpr uint64_t itemLimit(uint64_t packed) {
    return std::min<uint64_t>(UINT32_MAX, std::max(128 * kMebibyte, kRatioLimit * packed));
}

/// Bytes decompressed while a package is read, tries that led nowhere included: this bounds the time. The worst streams
/// give some 40 MB a second.
constexpr uint64_t decodedLimit(uint64_t fileSize) { return std::max(256 * kMebibyte, kRatioLimit * fileSize); }

/// Bytes handed to the sink: thousands of names may share one item.
constexpr uint64_t deliveredLimit(uint64_t fileSize) { return std::max(1024 * kMebibyte, kRatioLimit * fileSize); }

/// The largest LZMA window: the usual dictionaries of 8 to 64 MiB always, larger ones when the stream is long enough to
/// have any use for them. liblzma takes the memory at once.
constexpr uint64_t windowLimit(uint64_t packed) { return std::max(64 * kMebibyte, 16 * packed); }

constexpr uint64_t kHeaderLimit = 32 * kMebibyte;      ///< the unpacked header; of 10,000 files it is about 1 MiB
constexpr uint64_t kNameLimit = 200000;                ///< names in one package
constexpr uint64_t kNameBytesLimit = 16 * kMebibyte;   ///< of all names together
constexpr uint64_t kPatchLimit = 16 * kMebibyte;       ///< an uninstaller's icons
constexpr uint64_t kReadAheadLimit = 32 * kMebibyte;   ///< items decompressed before they are wanted, and spare buffers
constexpr uint64_t kWindowsTogether = 32 * kMebibyte;  ///< of all threads, unless one thread alone wants more

}  // namespace Archive
