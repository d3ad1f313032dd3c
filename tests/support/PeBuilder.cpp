#include "PeBuilder.h"

namespace support {

namespace {

constexpr size_t kAlignment = 0x200;
constexpr size_t kNtHeader = 0x40;
constexpr size_t kFileHeader = 24;  // with the signature in front
constexpr size_t kDirectories = 16;

size_t directories(bool is64) { return is64 ? 112 : 96; }  // offset in the optional header

void put(std::string& bytes, size_t offset, uint64_t value, size_t width) {
    if (bytes.size() < offset + width) bytes.resize(offset + width);
    for (size_t i = 0; i < width; ++i) bytes[offset + i] = static_cast<char>(value >> 8 * i & 0xFF);
}

/// Appends to the section and tells the address of what was appended.
class SectionWriter {
public:
    explicit SectionWriter(std::string& data) : mData(data) {}

    uint32_t here() const { return PeFile::kSectionAddress + static_cast<uint32_t>(mData.size()); }
    uint32_t zeros(size_t count) {
        mData.resize((mData.size() + 7) / 8 * 8);
        const uint32_t address = here();
        mData.resize(mData.size() + count);
        return address;
    }
    uint32_t text(const std::string& text) {
        const uint32_t address = here();
        mData += text;
        mData += '\0';
        return address;
    }
    void set(uint32_t address, uint64_t value, size_t width) {
        put(mData, address - PeFile::kSectionAddress, value, width);
    }

private:
    std::string& mData;
};

struct Directory {
    uint32_t address = 0;
    uint32_t size = 0;
};

Directory writeImports(SectionWriter& section, const PeSpec& spec, std::vector<uint32_t>& names) {
    if (spec.imports.empty()) return {};
    const auto size = static_cast<uint32_t>((spec.imports.size() + 1) * 20);
    const uint32_t table = section.zeros(size);
    const size_t width = spec.is64 ? 8 : 4;
    for (size_t i = 0; i < spec.imports.size(); ++i) {
        const uint32_t descriptor = table + static_cast<uint32_t>(i) * 20;
        const uint64_t byNumber = uint64_t{1} << (width * 8 - 1) | 1;
        for (const uint32_t field : {0U, 16U}) {  // names to look up, and where the addresses go
            const uint32_t thunks = section.zeros(2 * width);
            section.set(thunks, byNumber, width);
            section.set(descriptor + field, thunks, 4);
        }
        names.push_back(section.text(spec.imports[i]));
        section.set(descriptor + 12, names.back(), 4);
    }
    return {table, size};
}

Directory writeExports(SectionWriter& section, const PeSpec& spec) {
    if (spec.exports.empty()) return {};
    const auto count = static_cast<uint32_t>(spec.exports.size());
    const uint32_t table = section.zeros(40);
    section.set(table + 12, section.text("module.dll"), 4);
    section.set(table + 16, 1, 4);  // first number
    section.set(table + 20, count, 4);
    section.set(table + 24, count, 4);
    const uint32_t functions = section.zeros(4 * count);
    const uint32_t names = section.zeros(4 * count);
    const uint32_t numbers = section.zeros(2 * count);
    section.set(table + 28, functions, 4);
    section.set(table + 32, names, 4);
    section.set(table + 36, numbers, 4);
    for (uint32_t i = 0; i < count; ++i) {
        section.set(functions + 4 * i, PeFile::kSectionAddress, 4);
        section.set(names + 4 * i, section.text(spec.exports[i]), 4);
        section.set(numbers + 2 * i, i, 2);
    }
    return {table, 40};
}

/// Everything in front of the section table that does not depend on the directories.
void writeHeaders(std::string& file, bool is64, size_t optionalSize) {
    put(file, 0, 0x5A4D, 2);
    put(file, 60, kNtHeader, 4);
    put(file, kNtHeader, 0x4550, 4);
    put(file, kNtHeader + 4, is64 ? 0x8664 : 0x14C, 2);
    put(file, kNtHeader + 6, 1, 2);  // sections
    put(file, kNtHeader + 20, optionalSize, 2);
    put(file, kNtHeader + 22, is64 ? 0x2022 : 0x2102, 2);  // a library
    const size_t optional = kNtHeader + kFileHeader;
    put(file, optional, is64 ? 0x20B : 0x10B, 2);
    put(file, optional + 28, 0x400000, 4);
    put(file, optional + 32, 0x1000, 4);
    put(file, optional + 36, kAlignment, 4);
    put(file, optional + 40, 6, 2);
    put(file, optional + 48, 6, 2);
    put(file, optional + 60, kAlignment, 4);
    put(file, optional + 68, 2, 2);
    put(file, optional + directories(is64) - 4, kDirectories, 4);
}

}  // namespace

size_t PeFile::importDirectoryField() const { return exportDirectoryField() + 8; }

size_t PeFile::exportDirectoryField() const {
    const bool is64 = bytes[ntHeader + kFileHeader + 1] == 2;
    return ntHeader + kFileHeader + directories(is64);
}

uint32_t PeFile::addressOf(size_t fileOffset) const {
    return kSectionAddress + static_cast<uint32_t>(fileOffset - sectionData);
}

void PeFile::set16(size_t fileOffset, uint16_t value) { put(bytes, fileOffset, value, 2); }

void PeFile::set32(size_t fileOffset, uint32_t value) { put(bytes, fileOffset, value, 4); }

PeFile buildPe(const PeSpec& spec) {
    std::string data;
    SectionWriter section(data);
    std::vector<uint32_t> names;
    const Directory imports = writeImports(section, spec, names);
    const Directory exports = writeExports(section, spec);
    section.zeros(8);

    PeFile file;
    const size_t optionalSize = directories(spec.is64) + kDirectories * 8;
    writeHeaders(file.bytes, spec.is64, optionalSize);
    file.ntHeader = kNtHeader;
    file.sectionHeader = kNtHeader + kFileHeader + optionalSize;
    file.sectionData = kAlignment;
    file.set32(file.exportDirectoryField(), exports.address);
    file.set32(file.exportDirectoryField() + 4, exports.size);
    file.set32(file.importDirectoryField(), imports.address);
    file.set32(file.importDirectoryField() + 4, imports.size);

    const size_t rawSize = (data.size() + kAlignment - 1) / kAlignment * kAlignment;
    file.bytes.resize(file.sectionHeader);
    file.bytes += std::string(".rdata\0\0", 8);
    file.set32(file.sectionHeader + 8, static_cast<uint32_t>(data.size()));
    file.set32(file.sectionHeader + 12, PeFile::kSectionAddress);
    file.set32(file.sectionHeader + 16, static_cast<uint32_t>(rawSize));
    file.set32(file.sectionHeader + 20, kAlignment);
    file.set32(file.sectionHeader + 36, 0x40000040);
    file.set32(kNtHeader + kFileHeader + 56, 0x1000 + static_cast<uint32_t>((rawSize + 0xFFF) / 0x1000 * 0x1000));
    data.resize(rawSize);
    file.bytes.resize(kAlignment);
    file.bytes += data + spec.trailer;

    const auto offset = [&](uint32_t address) { return address - PeFile::kSectionAddress + kAlignment; };
    if (imports.address) file.importTable = offset(imports.address);
    for (const uint32_t name : names) file.importNames.push_back(offset(name));
    return file;
}

}  // namespace support
