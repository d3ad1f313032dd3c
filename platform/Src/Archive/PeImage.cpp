#include "PeImage.h"

#include <algorithm>

namespace Archive {
namespace {
constexpr uint32_t kFileHead = 24;  // signature and file header
constexpr uint32_t kSectionHead = 40;
constexpr uint32_t kResourceRow = 2;  // of the data directories
}  // namespace

bool PeImage::parse(ByteView file) {
    *this = PeImage();
    if (file.size() < 64 || file[0] != 'M' || file[1] != 'Z') return false;
    const uint64_t head = le32(&file[60]);
    const ByteView fileHead = part(file, head, kFileHead);
    if (fileHead.empty() || le32(fileHead.data()) != 0x00004550) return false;
    mFile = file;
    mMachine = le16(&fileHead[4]);
    const uint32_t sections = le16(&fileHead[6]);
    const uint32_t optionalSize = le16(&fileHead[20]);
    readResourceAddress(part(file, head + kFileHead, optionalSize));
    for (uint32_t i = 0; i < sections; ++i) {
        const ByteView row = part(file, head + kFileHead + optionalSize + uint64_t{i} * kSectionHead, kSectionHead);
        if (row.empty()) break;
        const Section section{le32(&row[12]), le32(&row[16]), le32(&row[20])};
        mSections.push_back(section);
        mSectionsEnd = std::max(mSectionsEnd, uint64_t{section.rawOffset} + section.rawSize);
    }
    return true;
}

void PeImage::readResourceAddress(ByteView optionalHead) {
    if (optionalHead.size() < 2) return;
    const uint32_t directories = le16(optionalHead.data()) == 0x20B ? 112 : 96;
    const ByteView row = part(optionalHead, directories + 8 * kResourceRow, 8);
    if (!row.empty()) mResourceAddress = le32(row.data());
}

ByteView PeImage::at(uint32_t address) const {
    if (address == 0) return {};
    for (const Section& section : mSections) {
        if (address < section.address || address - section.address >= section.rawSize) continue;
        const uint32_t inside = address - section.address;
        return part(mFile, uint64_t{section.rawOffset} + inside, section.rawSize - inside);
    }
    return {};
}

}  // namespace Archive
