#include "Strings.h"

#include "CodePage.h"
#include "FolderNames.h"
#include "Utf16.h"

namespace Archive {
namespace {

constexpr unsigned kDepthLimit = 8;         // strings of the language within strings of the language
constexpr size_t kLengthLimit = 32768;      // of one expanded string
constexpr uint64_t kWorkLimit = 32u << 20;  // of all together: short tables can be expanded without end otherwise
constexpr size_t kLanguageHead = 10;
enum Code { None = 0, LanguageString = 1, ShellFolder = 2, Variable = 3, Literal = 4 };

}  // namespace

/// Walks the characters of one string, whose width is the table's.
struct Strings::Cursor {
    ByteView bytes;
    bool wide;
    size_t at;

    bool next(uint32_t& character) {
        const size_t width = wide ? 2 : 1;
        if (!fits(bytes.size(), at, width)) return false;
        character = wide ? le16(&bytes[at]) : bytes[at];
        at += width;
        return true;
    }
    /// The two bytes behind a code.
    bool parameter(uint32_t& first, uint32_t& second) {
        if (!fits(bytes.size(), at, 2)) return false;
        first = bytes[at];
        second = bytes[at + 1];
        at += 2;
        return true;
    }
};

Strings::Strings(const HeaderBlock& header)
    : mTable(header.strings()), mLanguage(header.language()), mKind(findKind(header)) {
    if (mLanguage.size() >= 2) mCodePage = codePageOfLanguage(le16(mLanguage.data()));
}

Strings::Kind Strings::findKind(const HeaderBlock& header) const {
    if (mTable.size() >= 2 && le16(mTable.data()) == 0) return Kind::Unicode;
    // This string begins with a folder, so that its first byte tells which numbers the codes have.
    const int32_t place = header.initString();
    if (place >= 0 && static_cast<size_t>(place) < mTable.size() && mTable[static_cast<size_t>(place)] == 0xFE) {
        return Kind::Ansi2;
    }
    return Kind::Ansi3;
}

bool Strings::expand(int32_t number, const ScriptFolders& folders, PathText& path) {
    path = PathText();
    if (!append(number, folders, 0, path)) return false;
    const std::string& text = path.text;
    const bool drive = text.size() >= 2 && text[1] == ':';
    const bool share = text.size() >= 2 && text[0] == '\\' && text[1] == '\\';
    if (path.root == PathText::Relative && (drive || share)) path.root = PathText::Elsewhere;
    return true;
}

bool Strings::append(int32_t number, const ScriptFolders& folders, unsigned depth, PathText& path) {
    if (depth > kDepthLimit) return false;
    if (number < 0) {
        const uint64_t field = kLanguageHead + 4 * static_cast<uint64_t>(-(int64_t{number} + 1));
        const ByteView place = part(mLanguage, field, 4);
        if (place.empty()) return false;
        number = static_cast<int32_t>(le32(place.data()));
        if (number < 0) return append(number, folders, depth + 1, path);
    }
    const bool wide = mKind == Kind::Unicode;
    Cursor cursor{mTable, wide, static_cast<size_t>(number) * (wide ? 2 : 1)};
    std::string raw;
    uint32_t character = 0;
    while (cursor.next(character)) {
        if (++mWork > kWorkLimit || raw.size() > kLengthLimit) return false;
        if (character == 0) return flushText(raw, path);
        const bool coded = mKind == Kind::Ansi2 ? character >= 252 : character <= 4;
        const uint32_t code = !coded ? uint32_t{None} : mKind == Kind::Ansi2 ? 256 - character : character;
        if (code == Literal && !cursor.next(character)) return false;
        if (code == None || code == Literal) {
            raw.push_back(static_cast<char>(character & 0xFF));
            if (wide) raw.push_back(static_cast<char>(character >> 8));
        } else if (!flushText(raw, path) || !appendCode(cursor, code, folders, depth, path)) {
            return false;
        }
    }
    return false;
}

bool Strings::flushText(std::string& raw, PathText& path) {
    if (!raw.empty()) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(raw.data());
        path.text += mKind == Kind::Unicode ? utf8FromUtf16({bytes, raw.size()}) : utf8FromCodePage(raw, mCodePage);
        raw.clear();
    }
    mWork += path.text.size();
    return path.text.size() <= kLengthLimit && mWork <= kWorkLimit;
}

bool Strings::appendCode(Cursor& cursor, uint32_t code, const ScriptFolders& folders, unsigned depth, PathText& path) {
    uint32_t first = 0, second = 0;
    if (!cursor.parameter(first, second)) return false;
    const uint32_t number = (first & 127) | (second & 127) << 7;
    if (code == LanguageString) return append(-static_cast<int32_t>(number) - 1, folders, depth + 1, path);
    if (code == Variable) {
        appendVariable(number, folders, path);
        return path.text.size() <= kLengthLimit;
    }
    if (path.root == PathText::Relative && path.text.empty()) path.root = PathText::Elsewhere;
    path.text += folderName(first);
    return true;
}

void Strings::appendVariable(uint32_t number, const ScriptFolders& folders, PathText& path) {
    constexpr uint32_t kInstallDir = 21;
    PathText value{PathText::Elsewhere, variableName(number)};
    if (number == kInstallDir) value = {PathText::InstallDir, {}};
    if (number == uint32_t{kCurrentFolder}) value = folders.current;
    if (number == uint32_t{kSavedFolder}) value = folders.saved;
    if (path.root == PathText::Relative && path.text.empty())
        path = value;
    else
        path.text += value.spelled();
}

std::string Strings::folderName(uint32_t first) {
    if ((first & 0x80) == 0) return shellFolderName(first);
    // The folder stands in the registry of the target; the table holds the name of its value.
    Cursor cursor{mTable, mKind == Kind::Unicode, (first & 0x3F) * (mKind == Kind::Unicode ? 2u : 1u)};
    std::string value;
    for (uint32_t character = 0; value.size() < 32 && cursor.next(character) && character != 0;) {
        value.push_back(character < 0x80 ? static_cast<char>(character) : '?');
    }
    const std::string name = value == "ProgramFilesDir"  ? "$PROGRAMFILES"
                             : value == "CommonFilesDir" ? "$COMMONFILES"
                                                         : "$_REGISTRY_" + value + "_";
    return (first & 0x40) != 0 ? name + "64" : name;
}

}  // namespace Archive
