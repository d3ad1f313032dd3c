// The unpacked header of a package.
#pragma once

#include <vector>

#include "Bytes.h"

namespace Archive {

/// The tables of a package's header. All views lie within the block's bytes.
class HeaderBlock {
public:
    /// Takes the bytes and checks that the tables lie in them as the compiler lays them.
    /// @param wide the stub is a 64-bit one, whose table offsets are 8 bytes long
    bool parse(std::vector<unsigned char> bytes, bool wide);

    /// 28 bytes an entry.
    static constexpr size_t kEntrySize = 28;
    ByteView entries() const { return view(mEntries); }
    ByteView strings() const { return view(mStrings); }
    /// The fields of one language row: u16 language id, two numbers, then string numbers. Empty without languages.
    ByteView language() const { return view(mLanguage); }
    /// The last number of the fixed part: a string that every package has, with a code in front.
    int32_t initString() const { return mInitString; }

private:
    struct Range {
        size_t begin = 0, length = 0;
    };
    ByteView view(const Range& range) const { return part(mBytes, range.begin, range.length); }
    void chooseLanguage(size_t offset, size_t count, size_t rowSize);

    std::vector<unsigned char> mBytes;
    Range mEntries, mStrings, mLanguage;
    int32_t mInitString = 0;
};

}  // namespace Archive
