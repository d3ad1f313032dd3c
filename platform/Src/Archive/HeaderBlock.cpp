#include "HeaderBlock.h"

#include <utility>

namespace Archive {
namespace {

enum Table { Pages, Sections, Entries, Strings, Languages, Colors, Background, Data, TableCount };

constexpr size_t kFlags = 4;
constexpr size_t kToLanguageSize = 32;  // colours and registry places lie between the tables and that field
constexpr size_t kPageSize = 64;
constexpr size_t kClosingFields = 20;  // install directory, its tail, two uninstaller strings, the init string
constexpr size_t kLanguageHead = 10;
constexpr uint32_t kEnglish = 1033;

}  // namespace

bool HeaderBlock::parse(std::vector<unsigned char> bytes, bool wide) {
    mBytes = std::move(bytes);
    const size_t rowSize = wide ? 12 : 8;
    const size_t size = mBytes.size();
    const size_t tableEnd = kFlags + TableCount * rowSize;
    const size_t fixedLeast = tableEnd + kToLanguageSize + 4 + kClosingFields;
    if (size < fixedLeast) return false;

    uint64_t offset[TableCount], count[TableCount];
    for (size_t i = 0; i < TableCount; ++i) {
        const unsigned char* row = &mBytes[kFlags + i * rowSize];
        offset[i] = wide ? le64(row) : le32(row);
        count[i] = le32(row + rowSize - 4);
    }
    // The first table follows the fixed part, the next ones follow in order.
    if (offset[Pages] < fixedLeast) return false;
    for (size_t i = Pages; i < Languages; ++i) {
        if (offset[i] > offset[i + 1]) return false;
    }
    if (offset[Languages] > size) return false;
    if (!fits(offset[Sections], offset[Pages], count[Pages] * kPageSize)) return false;
    if (!fits(offset[Strings], offset[Entries], count[Entries] * kEntrySize)) return false;
    const uint64_t languageSize = le32(&mBytes[tableEnd + kToLanguageSize]);
    if (count[Languages] != 0 && languageSize < kLanguageHead) return false;
    if (!fits(size, offset[Languages], count[Languages] * languageSize)) return false;

    mEntries = {static_cast<size_t>(offset[Entries]), static_cast<size_t>(count[Entries]) * kEntrySize};
    mStrings = {static_cast<size_t>(offset[Strings]), static_cast<size_t>(offset[Languages] - offset[Strings])};
    mInitString = static_cast<int32_t>(le32(&mBytes[static_cast<size_t>(offset[Pages]) - 4]));
    chooseLanguage(static_cast<size_t>(offset[Languages]), static_cast<size_t>(count[Languages]),
                   static_cast<size_t>(languageSize));
    return true;
}

void HeaderBlock::chooseLanguage(size_t offset, size_t count, size_t rowSize) {
    if (count == 0) return;
    mLanguage = {offset, rowSize};
    for (size_t i = 0; i < count; ++i) {
        if (le16(&mBytes[offset + i * rowSize]) != kEnglish) continue;
        mLanguage.begin = offset + i * rowSize;
        return;
    }
}

}  // namespace Archive
