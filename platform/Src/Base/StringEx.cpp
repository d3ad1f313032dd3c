#include "Public/Base/StringEx.h"

#include <algorithm>
#include <cstdint>

namespace Public::Base {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Takes one code point off the text at `at`; what is no UTF-8 (RFC 3629) gives the replacement and one byte of
/// progress.
char32_t takeUtf8(const std::string& text, size_t& at) {
    const auto first = static_cast<uint8_t>(text[at++]);
    if (first < 0x80) return first;
    size_t more = 0;
    char32_t point = 0;
    if (first >= 0xC2 && first <= 0xDF) {
        more = 1;
        point = first & 0x1F;
    } else if (first >= 0xE0 && first <= 0xEF) {
        more = 2;
        point = first & 0x0F;
    } else if (first >= 0xF0 && first <= 0xF4) {
        more = 3;
        point = first & 0x07;
    } else {
        return kReplacement;
    }
    if (text.size() - at < more) return kReplacement;
    for (size_t i = 0; i < more; ++i) {
        const auto next = static_cast<uint8_t>(text[at + i]);
        if ((next & 0xC0) != 0x80) return kReplacement;
        point = (point << 6) | (next & 0x3F);
    }
    static constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (point < kSmallest[more] || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) return kReplacement;
    at += more;
    return point;
}

void putUtf8(char32_t point, std::string& out) {
    if (point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) point = kReplacement;
    const auto put = [&out](char32_t byte) { out += static_cast<char>(byte); };
    if (point < 0x80) {
        put(point);
    } else if (point < 0x800) {
        put(0xC0 | (point >> 6));
        put(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        put(0xE0 | (point >> 12));
        put(0x80 | ((point >> 6) & 0x3F));
        put(0x80 | (point & 0x3F));
    } else {
        put(0xF0 | (point >> 18));
        put(0x80 | ((point >> 12) & 0x3F));
        put(0x80 | ((point >> 6) & 0x3F));
        put(0x80 | (point & 0x3F));
    }
}

}  // namespace

std::string StringEx::replace(const std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) return text;
    std::string out;
    size_t done = 0;
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, done)) {
        out.append(text, done, at - done).append(to);
        done = at + from.size();
    }
    return out.append(text, done, std::string::npos);
}

bool StringEx::iequals(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

size_t StringEx::indexOf(const std::string& text, const std::string& part) { return text.find(part); }

size_t StringEx::indexOfByCase(const std::string& text, const std::string& part) {
    return toLower(text).find(toLower(part));
}

std::string StringEx::toLower(const std::string& text) {
    std::string out = text;
    std::transform(out.begin(), out.end(), out.begin(), lower);
    return out;
}

std::wstring StringEx::string2wstring(const std::string& text) {
    std::wstring out;
    for (size_t at = 0; at < text.size();) {
        const char32_t point = takeUtf8(text, at);
        if constexpr (sizeof(wchar_t) == 2) {
            if (point >= 0x10000) {
                out += static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10));
                out += static_cast<wchar_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
                continue;
            }
        }
        out += static_cast<wchar_t>(point);
    }
    return out;
}

std::string StringEx::wstring2string(const std::wstring& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        auto point = static_cast<char32_t>(text[i]);
        if constexpr (sizeof(wchar_t) == 2) {
            if (point >= 0xD800 && point <= 0xDBFF && i + 1 < text.size()) {
                const auto low = static_cast<char32_t>(text[i + 1]);
                if (low >= 0xDC00 && low <= 0xDFFF) {
                    point = 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00);
                    ++i;
                }
            }
        }
        putUtf8(point, out);
    }
    return out;
}

}  // namespace Public::Base
