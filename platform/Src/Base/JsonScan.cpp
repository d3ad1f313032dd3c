#include "Base/JsonScan.h"

#include <charconv>
#include <nlohmann/json.hpp>

namespace Public::Base {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

uint32_t readHex(std::string_view digits) {
    uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return number;
}

void appendUtf8(uint32_t code, std::string& out) {
    const auto put = [&](uint32_t byte) { out += static_cast<char>(byte); };
    const auto follow = [&](int shift) { put(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6), follow(0);
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12), follow(6), follow(0);
    } else {
        put(0xF0 | code >> 18), follow(12), follow(6), follow(0);
    }
}

/// @param at of the letter behind the backslash @return behind the escape
size_t appendEscape(std::string_view text, size_t at, std::string& out) {
    constexpr std::string_view kLetters = "bfnrt", kMeanings = "\b\f\n\r\t";
    if (text[at] != 'u') {
        const size_t known = kLetters.find(text[at]);
        out += known == std::string_view::npos ? text[at] : kMeanings[known];
        return at + 1;
    }
    uint32_t code = readHex(text.substr(at + 1, 4));
    at += 5;
    if (code >= 0xD800 && code < 0xDC00) {  // the other half of the pair follows
        code = 0x10000 + ((code - 0xD800) << 10) + (readHex(text.substr(at + 2, 4)) - 0xDC00);
        at += 6;
    }
    appendUtf8(code, out);
    return at;
}

template <class Integer>
bool readInteger(std::string_view text, Value& value) {
    Integer number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    value = Value(number);
    return true;
}

Value readNumber(std::string_view text) {
    Value value;
    const bool integer =
        text.front() == '-' ? readInteger<long long>(text, value) : readInteger<unsigned long long>(text, value);
    return integer ? value : Value(nlohmann::json::parse(text).get<double>());
}

}  // namespace

uint32_t JsonScan::start() const {
    return skipBlank(mText.starts_with(kByteOrderMark) ? static_cast<uint32_t>(kByteOrderMark.size()) : 0);
}

Value JsonScan::scalar(uint32_t at) const {
    switch (mText[at]) {
        case 'n':
            return {};
        case 't':
            return Value(true);
        case 'f':
            return Value(false);
        case '"': {
            std::string room;
            return Value(std::string(string(at, room)));
        }
        default:
            return readNumber(mText.substr(at, skipValue(at) - at));
    }
}

std::string_view JsonScan::string(uint32_t at, std::string& room) const {
    const std::string_view plain = mText.substr(at + 1, skipString(at) - at - 2);
    size_t escape = plain.find('\\');
    if (escape == std::string_view::npos) return plain;
    room.clear();
    size_t from = 0;
    for (; escape != std::string_view::npos; escape = plain.find('\\', from)) {
        room.append(plain.substr(from, escape - from));
        from = appendEscape(plain, escape + 1, room);
    }
    room.append(plain.substr(from));
    return room;
}

bool JsonScan::says(uint32_t at, std::string_view text) const {
    const char* next = &mText[at + 1];
    size_t same = 0;
    while (same < text.size() && *next == text[same] && *next != '"' && *next != '\\') ++next, ++same;
    if (*next != '\\') return *next == '"' && same == text.size();
    std::string room;
    return string(at, room) == text;
}

uint32_t JsonScan::skipBlank(uint32_t at) const {
    while (at < mText.size() && (mText[at] == ' ' || mText[at] == '\t' || mText[at] == '\n' || mText[at] == '\r')) ++at;
    return at;
}

uint32_t JsonScan::skipString(uint32_t at) const {
    for (size_t end = mText.find('"', at + 1);; end = mText.find('"', end + 1)) {
        size_t escapes = 0;
        while (mText[end - 1 - escapes] == '\\') ++escapes;
        if (escapes % 2 == 0) return static_cast<uint32_t>(end + 1);
    }
}

uint32_t JsonScan::skipContainer(uint32_t at) const {
    for (size_t depth = 0;;) {
        const char letter = mText[at];
        if (letter == '"') {
            at = skipString(at);
            continue;
        }
        ++at;
        if (letter == '[' || letter == '{') ++depth;
        if ((letter == ']' || letter == '}') && --depth == 0) return at;
    }
}

uint32_t JsonScan::skipValue(uint32_t at) const {
    if (mText[at] == '"') return skipString(at);
    if (isArray(at) || isObject(at)) return skipContainer(at);
    const size_t end = mText.find_first_of(",]} \t\r\n", at);
    return static_cast<uint32_t>(std::min(end, mText.size()));
}

uint32_t JsonScan::behindComma(uint32_t at) const {
    at = skipBlank(at);
    return mText[at] == ',' ? skipBlank(at + 1) : at;
}

}  // namespace Public::Base
