#include "Utf16.h"

namespace Archive {

void appendUtf8(uint32_t codePoint, std::string& text) {
    auto put = [&](uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | codePoint >> 6);
        put(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        put(0xE0 | codePoint >> 12);
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    } else {
        put(0xF0 | codePoint >> 18);
        put(0x80 | (codePoint >> 12 & 0x3F));
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
}

std::string utf8FromUtf16(ByteView units) {
    std::string text;
    for (size_t i = 0; i + 2 <= units.size(); i += 2) {
        uint32_t unit = le16(&units[i]);
        if (unit >= 0xD800 && unit < 0xE000) {
            const uint32_t second = i + 4 <= units.size() ? le16(&units[i + 2]) : 0;
            const bool pair = unit < 0xDC00 && second >= 0xDC00 && second < 0xE000;
            if (pair) i += 2;
            unit = pair ? 0x10000 + ((unit - 0xD800) << 10) + (second - 0xDC00) : 0xFFFD;
        }
        appendUtf8(unit, text);
    }
    return text;
}

}  // namespace Archive
