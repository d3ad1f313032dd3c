#include "PeImports.h"

#include <algorithm>

namespace Tarnwick::OrvUpdate {

namespace {

constexpr uint32_t kDosMagic = 0x5A4D;   // "MZ"
constexpr uint64_t kNtHeaderField = 60;  // where the offset of the NT header stands
constexpr uint64_t kSectionCount = 6;    // from here to kImportDirectory: behind the NT header's beginning
constexpr uint64_t kOptionalHeaderSize = 20;
constexpr uint64_t kOptionalHeader = 24;
constexpr uint64_t kImportDirectory = 144;  // its place in a 64-bit module, taken for every module
constexpr uint64_t kSectionHeaderSize = 40;
constexpr uint64_t kSectionAddress = 12;
constexpr uint64_t kSectionRawSize = 16;
constexpr uint64_t kSectionRawOffset = 20;
constexpr uint64_t kDescriptorSize = 20;
constexpr uint64_t kDescriptorName = 12;
constexpr uint64_t kDescriptorFirstThunk = 16;  // 0 ends the table
constexpr uint64_t kLongestName = 255;          // bytes that a file name can have
constexpr uint32_t kMostSections = 96;          // that a system loads
constexpr uint64_t kMostImports = 65536;        // far more than any module has

}  // namespace

/// Little-endian; 0 where the file does not hold all of it.
uint32_t PeImports::number(uint64_t offset, unsigned width) const {
    if (offset > mFile.size() || mFile.size() - offset < width) return 0;
    uint32_t value = 0;
    for (unsigned i = width; i-- > 0;) value = value << 8 | mFile[offset + i];
    return value;
}

PeImports::PeImports(std::span<const unsigned char> file) : mFile(file), mNtHeader(number(kNtHeaderField, 4)) {
    const uint64_t table = mNtHeader + kOptionalHeader + number(mNtHeader + kOptionalHeaderSize, 2);
    const uint32_t count = std::min(number(mNtHeader + kSectionCount, 2), kMostSections);
    for (uint32_t i = 0; i < count; ++i) {
        const uint64_t header = table + i * kSectionHeaderSize;
        mSections.push_back({number(header + kSectionAddress, 4), number(header + kSectionRawSize, 4),
                             number(header + kSectionRawOffset, 4)});
    }
}

bool PeImports::isProgram() const { return number(0, 2) == kDosMagic; }

uint64_t PeImports::offsetOf(uint32_t address) const {
    for (const Section& section : mSections) {
        if (section.address <= address && address < section.address + section.size) {
            return address - section.address + section.offset;
        }
    }
    return 0;
}

std::string_view PeImports::textAt(uint64_t offset) const {
    if (offset >= mFile.size()) return {};
    const auto rest = mFile.subspan(offset, std::min<uint64_t>(mFile.size() - offset, kLongestName + 1));
    const auto end = std::find(rest.begin(), rest.end(), 0);
    if (end == rest.end()) return {};
    return {reinterpret_cast<const char*>(rest.data()), static_cast<size_t>(end - rest.begin())};
}

void PeImports::forEach(const Public::Base::Function<void(std::string_view)>& visit) const {
    const uint64_t table = offsetOf(number(mNtHeader + kImportDirectory, 4));
    if (table == 0) return;
    for (uint64_t i = 0; i < kMostImports; ++i) {
        const uint64_t descriptor = table + i * kDescriptorSize;
        if (number(descriptor + kDescriptorFirstThunk, 4) == 0) return;
        const std::string_view name = textAt(offsetOf(number(descriptor + kDescriptorName, 4)));
        if (!name.empty()) visit(name);
    }
}

}  // namespace Tarnwick::OrvUpdate
