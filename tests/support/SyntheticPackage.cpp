#include "SyntheticPackage.h"

namespace support {
namespace {
constexpr size_t kFixedPart = 300;
constexpr size_t kStub = 512;
}  // namespace

std::string le16(uint32_t value) { return {static_cast<char>(value), static_cast<char>(value >> 8)}; }
std::string le32(uint32_t value) { return le16(value & 0xFFFF) + le16(value >> 16); }

SyntheticPackage::SyntheticPackage(Text text) : mText(text) {
    mStrings = std::string(text == Unicode ? 2 : 1, '\0');
    // The init string, which tells the kind of codes.
    addRaw(folder(0x24, 0x24) + this->text("\\wininit.ini"));
}

int32_t SyntheticPackage::addRaw(const std::string& bytes) {
    const size_t width = mText == Unicode ? 2 : 1;
    const auto number = static_cast<int32_t>(mStrings.size() / width);
    mStrings += bytes + std::string(width, '\0');
    return number;
}

int32_t SyntheticPackage::addText(const std::string& ascii) { return addRaw(text(ascii)); }

std::string SyntheticPackage::text(const std::string& ascii) const {
    if (mText != Unicode) return ascii;
    std::string wide;
    for (char c : ascii) wide += {c, '\0'};
    return wide;
}

std::string SyntheticPackage::code(unsigned number, unsigned first, unsigned second) const {
    // A zero byte would end a narrow string, so that the upper bit is always set there.
    const auto low = static_cast<char>(first | 0x80), high = static_cast<char>(second | 0x80);
    if (mText == Unicode) return le16(number) + std::string{low, high};
    return {static_cast<char>(mText == Ansi2 ? 256 - number : number), low, high};
}

std::string SyntheticPackage::folder(unsigned first, unsigned second) const {
    const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
    const std::string head = mText == Unicode ? le16(2) : std::string(1, static_cast<char>(mText == Ansi2 ? 254 : 2));
    return head + std::string(bytes, 2);
}

std::string SyntheticPackage::literal(const std::string& character) const {
    const std::string head = mText == Unicode ? le16(4) : std::string(1, static_cast<char>(mText == Ansi2 ? 252 : 4));
    return head + character;
}

void SyntheticPackage::addEntry(uint32_t opcode, std::array<int32_t, 6> fields) {
    mEntries += le32(opcode);
    for (int32_t field : fields) mEntries += le32(static_cast<uint32_t>(field));
    ++mEntryCount;
}

void SyntheticPackage::addLanguage(unsigned id, const std::vector<int32_t>& strings) {
    std::string row = le16(id) + le32(0) + le32(0);
    for (int32_t string : strings) row += le32(static_cast<uint32_t>(string));
    mLanguages += row;
    mLanguageSize = static_cast<uint32_t>(row.size());
    ++mLanguageCount;
}

int32_t SyntheticPackage::addData(const std::string& bytes) {
    const auto offset = static_cast<int32_t>(mData.size());
    mData += bytes;
    return offset;
}

int32_t SyntheticPackage::addItem(const std::string& content) {
    return addData(le32(static_cast<uint32_t>(content.size())) + content);
}

int32_t SyntheticPackage::addPacked(const std::string& stream) {
    return addData(le32(static_cast<uint32_t>(stream.size()) | 0x80000000u) + stream);
}

std::string SyntheticPackage::header() const {
    const auto entries = static_cast<uint32_t>(kFixedPart);
    const auto strings = static_cast<uint32_t>(entries + mEntries.size());
    const auto languages = static_cast<uint32_t>(strings + mStrings.size());
    const auto end = static_cast<uint32_t>(languages + mLanguages.size());
    std::string block = le32(0);
    auto row = [&](uint32_t offset, uint32_t count) { block += le32(offset) + le32(count); };
    row(entries, 0);  // pages
    row(entries, 0);  // sections
    row(entries, mEntryCount);
    row(strings, 0);
    row(languages, mLanguageCount);
    row(end, 0);  // colours
    row(end, 0);  // background
    row(0, 0);    // data
    block += std::string(32, '\0') + le32(mLanguageSize);
    block.resize(kFixedPart - 4);
    block += le32(1);  // the init string
    return block + mEntries + mStrings + mLanguages;
}

std::string SyntheticPackage::wrap(const std::string& body, size_t headerLength, uint32_t flags) const {
    const size_t length = headerLength != 0 ? headerLength : header().size();
    return std::string(kStub, '\0') + le32(flags) + le32(0xDEADBEEF) + "NullsoftInst" +
           le32(static_cast<uint32_t>(length)) + le32(static_cast<uint32_t>(28 + body.size())) + body;
}

}  // namespace support
