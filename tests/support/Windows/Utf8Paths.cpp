// Texts of char are UTF-8 for std::filesystem::path in the test programs, as they are everywhere else in them: the
// compiler's library would take each byte for a character. It converts by this facet, whose members a program may bring
// itself.
#include <locale>

#ifdef __GLIBCXX__

namespace {

using Facet = std::codecvt<wchar_t, char, std::mbstate_t>;

constexpr char32_t kNone = 0xffffffff;

/// The code point that begins at `from`, which is moved behind it; kNone, and `from` as it was, when there is no whole
/// one.
char32_t takePoint(const char*& from, const char* end) {
    const auto byte = [&](size_t at) { return static_cast<unsigned char>(from[at]); };
    const size_t length = byte(0) < 0x80 ? 1 : byte(0) >= 0xf0 ? 4 : byte(0) >= 0xe0 ? 3 : 2;
    if (static_cast<size_t>(end - from) < length) return kNone;
    char32_t point = length == 1 ? byte(0) : byte(0) & (0xffU >> (length + 1));
    for (size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xc0) != 0x80) return kNone;
        point = point << 6 | (byte(at) & 0x3f);
    }
    from += length;
    return point;
}

/// The same of UTF-16.
char32_t takePoint(const wchar_t*& from, const wchar_t* end) {
    const char32_t first = *from;
    if (first < 0xd800 || first > 0xdfff) {
        ++from;
        return first;
    }
    if (first > 0xdbff || end - from < 2 || from[1] < 0xdc00 || from[1] > 0xdfff) return kNone;
    const char32_t second = from[1];
    from += 2;
    return 0x10000 + ((first - 0xd800) << 10) + (second - 0xdc00);
}

/// @return how many bytes it wrote, 0 when there is no room
size_t putPoint(char32_t point, char* to, const char* end) {
    const size_t length = point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
    if (static_cast<size_t>(end - to) < length) return 0;
    for (size_t at = length; at-- > 1; point >>= 6) to[at] = static_cast<char>(0x80 | (point & 0x3f));
    to[0] = static_cast<char>(length == 1 ? point : (0xf00U >> length & 0xff) | point);
    return length;
}

size_t putPoint(char32_t point, wchar_t* to, const wchar_t* end) {
    const size_t length = point < 0x10000 ? 1 : 2;
    if (static_cast<size_t>(end - to) < length) return 0;
    if (length == 2) {
        to[1] = static_cast<wchar_t>(0xdc00 + (point & 0x3ff));
        point = 0xd800 + ((point - 0x10000) >> 10);
    }
    to[0] = static_cast<wchar_t>(point);
    return length;
}

template <typename From, typename To>
Facet::result convert(const From*& from, const From* fromEnd, To*& to, To* toEnd) {
    while (from != fromEnd) {
        const From* next = from;
        const char32_t point = takePoint(next, fromEnd);
        if (point == kNone) return Facet::error;
        const size_t length = putPoint(point, to, toEnd);
        if (length == 0) return Facet::partial;
        to += length;
        from = next;
    }
    return Facet::ok;
}

}  // namespace

namespace std {

codecvt_base::result Facet::do_in(mbstate_t&, const char* from, const char* fromEnd, const char*& fromNext, wchar_t* to,
                                  wchar_t* toEnd, wchar_t*& toNext) const {
    fromNext = from;
    toNext = to;
    return convert(fromNext, fromEnd, toNext, toEnd);
}

codecvt_base::result Facet::do_out(mbstate_t&, const wchar_t* from, const wchar_t* fromEnd, const wchar_t*& fromNext,
                                   char* to, char* toEnd, char*& toNext) const {
    fromNext = from;
    toNext = to;
    return convert(fromNext, fromEnd, toNext, toEnd);
}

int Facet::do_length(mbstate_t&, const char* from, const char* end, size_t most) const {
    const char* at = from;
    while (at != end && most-- > 0 && takePoint(at, end) != kNone) {
    }
    return static_cast<int>(at - from);
}

int Facet::do_encoding() const throw() { return 0; }
int Facet::do_max_length() const throw() { return 4; }

}  // namespace std
#endif
