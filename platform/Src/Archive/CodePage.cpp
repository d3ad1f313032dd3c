#include "CodePage.h"

#include "Utf16.h"

namespace Archive {
namespace {

/// 1252 differs from Latin 1 only here; 0 where it has no character.
constexpr uint16_t kWestern[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                   0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

/// Bytes of the UTF-8 sequence at the text's start, 0 when it is none. Overlong forms and surrogates do not matter
/// here: the question is only what the builder meant.
size_t sequenceLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length > text.size()) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 0;
    }
    return length;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = sequenceLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace

unsigned codePageOfLanguage(unsigned languageId) {
    switch (languageId) {
        case 2052:
        case 4100:
            return 936;
        case 1028:
        case 3076:
            return 950;
        case 1041:
            return 932;
        case 1042:
            return 949;
        case 1049:
        case 1058:
        case 1026:
            return 1251;
        case 1029:
        case 1038:
        case 1045:
            return 1250;
        default:
            return 1252;
    }
}

std::string utf8FromCodePage(std::string_view text, unsigned codePage) {
    if (isUtf8(text)) return std::string(text);
    std::string utf8;
    if (codePage != 1252 && convertBySystem(text, codePage, utf8)) return utf8;
    utf8.clear();
    for (const char c : text) {
        uint32_t byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 && byte < 0xA0) byte = kWestern[byte - 0x80] != 0 ? kWestern[byte - 0x80] : 0xFFFD;
        appendUtf8(byte, utf8);
    }
    return utf8;
}

}  // namespace Archive
