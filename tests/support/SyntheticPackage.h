// Packages written byte by byte, for what the package compiler would not write.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace support {

std::string le16(uint32_t value);
std::string le32(uint32_t value);

/// A package of 32-bit shape behind an empty stub of one sector, without a checksum. Items are stored one by one; the
/// header is stored too unless the finishing functions are asked for more.
class SyntheticPackage {
public:
    enum Text { Unicode, Ansi3, Ansi2 };
    explicit SyntheticPackage(Text text = Unicode);

    /// Adds a string as it is to stand in the table, without its end. @return its number
    int32_t addRaw(const std::string& bytes);
    /// Adds plain text of ASCII characters.
    int32_t addText(const std::string& text);
    /// The codes of the table's kind.
    std::string variable(unsigned number) const { return code(3, number & 127, number >> 7); }
    std::string languageString(unsigned number) const { return code(1, number & 127, number >> 7); }
    std::string folder(unsigned first, unsigned second) const;
    std::string literal(const std::string& character) const;
    std::string text(const std::string& ascii) const;

    void addEntry(uint32_t opcode, std::array<int32_t, 6> fields);
    void setOutPath(int32_t string) { addEntry(11, {string, 1, 0, 0, 0, 0}); }
    void extractFile(int32_t name, int32_t offset) { addEntry(20, {0, name, offset, -1, -1, 0}); }
    /// A row of the language table.
    void addLanguage(unsigned id, const std::vector<int32_t>& strings);

    /// Adds data with the prefix of a stored item. @return its offset
    int32_t addItem(const std::string& content);
    /// Adds data with the prefix of a packed item.
    int32_t addPacked(const std::string& stream);
    int32_t addData(const std::string& bytes);

    /// The header block.
    std::string header() const;
    /// A package whose header is stored.
    std::string build() const { return wrap(le32(static_cast<uint32_t>(header().size())) + header() + mData); }
    /// A package of any body, for a header of that length.
    std::string wrap(const std::string& body, size_t headerLength = 0, uint32_t flags = 4) const;
    /// The unpacked stream of a solid package of these parts.
    std::string solidStream() const { return le32(static_cast<uint32_t>(header().size())) + header() + mData; }

private:
    std::string code(unsigned number, unsigned first, unsigned second) const;

    Text mText;
    std::string mEntries, mStrings, mData, mLanguages;
    uint32_t mEntryCount = 0, mLanguageCount = 0, mLanguageSize = 0;
};

}  // namespace support
