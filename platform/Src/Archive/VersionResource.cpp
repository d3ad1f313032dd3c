#include "VersionResource.h"

#include "Utf16.h"

namespace Archive {
namespace {

constexpr uint32_t kTypeVersion = 16, kVersionId = 1, kEnglish = 1033;
constexpr uint32_t kDirectoryBit = 0x80000000u;
constexpr uint32_t kFixedSignature = 0xFEEF04BD;

/// The child of a resource directory with that id, else the first one when anyWill. @return its offset field, 0 if none
uint32_t findChild(ByteView resources, uint32_t directory, uint32_t id, bool anyWill) {
    const ByteView head = part(resources, directory, 16);
    if (head.empty()) return 0;
    const uint32_t count = uint32_t{le16(&head[12])} + le16(&head[14]);
    uint32_t first = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const ByteView row = part(resources, uint64_t{directory} + 16 + uint64_t{i} * 8, 8);
        if (row.empty()) break;
        if (le32(row.data()) == id) return le32(&row[4]);
        if (first == 0) first = le32(&row[4]);
    }
    return anyWill ? first : 0;
}

ByteView findVersionData(const PeImage& image) {
    const ByteView resources = image.resources();
    const uint32_t type = findChild(resources, 0, kTypeVersion, false);
    if ((type & kDirectoryBit) == 0) return {};
    const uint32_t name = findChild(resources, type & ~kDirectoryBit, kVersionId, false);
    if ((name & kDirectoryBit) == 0) return {};
    const uint32_t leaf = findChild(resources, name & ~kDirectoryBit, kEnglish, true);
    if (leaf == 0 || (leaf & kDirectoryBit) != 0) return {};
    const ByteView row = part(resources, leaf, 16);
    return row.empty() ? ByteView() : part(image.at(le32(row.data())), 0, le32(&row[4]));
}

/// One block of the resource: a key, a value and children. Offsets count from the resource's start, where padding does.
struct Block {
    std::string key;
    size_t end = 0;                     // behind the block
    size_t value = 0, valueLength = 0;  // the length as it stands: characters for text, bytes for the fixed part
    size_t children(size_t valueBytes) const { return (value + valueBytes + 3) & ~size_t{3}; }
};

bool readBlock(ByteView data, size_t at, size_t limit, Block& block) {
    if (!fits(limit, at, 8)) return false;
    const size_t length = le16(&data[at]);
    if (length < 8 || !fits(limit, at, length)) return false;
    block.end = at + length;
    block.valueLength = le16(&data[at + 2]);
    size_t key = at + 6, end = key;
    while (end + 2 <= block.end && le16(&data[end]) != 0) end += 2;
    block.key = utf8FromUtf16(data.subspan(key, end - key));
    block.value = (end + 2 + 3) & ~size_t{3};
    return true;
}

void readString(ByteView data, const Block& block, VersionResource& version) {
    if (block.value >= block.end) return;
    const size_t bytes = std::min(block.valueLength * 2, (block.end - block.value) & ~size_t{1});
    ByteView value = data.subspan(block.value, bytes);
    size_t length = 0;
    while (length + 2 <= value.size() && le16(&value[length]) != 0) length += 2;
    if (length != 0) version.strings.emplace(block.key, utf8FromUtf16(value.first(length)));
}

/// Calls visit for every block in [at, limit).
template <typename Visit>
void forEachBlock(ByteView data, size_t at, size_t limit, const Visit& visit) {
    Block block;
    while (readBlock(data, at, limit, block)) {
        visit(block);
        at = (block.end + 3) & ~size_t{3};
    }
}

void readFixed(ByteView data, const Block& root, VersionResource& version) {
    const ByteView fixed = part(data.first(root.end), root.value, 24);
    if (root.valueLength < 24 || fixed.empty() || le32(fixed.data()) != kFixedSignature) return;
    const uint32_t high = le32(&fixed[8]), low = le32(&fixed[12]);
    version.fixedFileVersion = std::to_string(high >> 16) + "." + std::to_string(high & 0xFFFF) + "." +
                               std::to_string(low >> 16) + "." + std::to_string(low & 0xFFFF);
}

}  // namespace

VersionResource readVersionResource(const PeImage& image) {
    VersionResource version;
    const ByteView data = findVersionData(image);
    Block root;
    if (!readBlock(data, 0, data.size(), root) || root.key != "VS_VERSION_INFO") return version;
    version.found = true;
    readFixed(data, root, version);
    forEachBlock(data, root.children(root.valueLength), root.end, [&](const Block& info) {
        if (info.key != "StringFileInfo") return;
        forEachBlock(data, info.children(0), info.end, [&](const Block& table) {
            forEachBlock(data, table.children(0), table.end,
                         [&](const Block& string) { readString(data, string, version); });
        });
    });
    return version;
}

}  // namespace Archive
