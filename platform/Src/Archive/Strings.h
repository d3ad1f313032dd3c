// The string table of a package.
#pragma once

#include "HeaderBlock.h"
#include "PathText.h"

namespace Archive {

/// The current directory and its saved copy, as a package's script would have set them.
struct ScriptFolders {
    PathText current{PathText::InstallDir, {}};
    PathText saved{PathText::InstallDir, {}};
};

/// Expands strings with their codes: variables by name, folders by name, strings of the chosen language.
class Strings {
public:
    static constexpr int32_t kCurrentFolder = 22, kSavedFolder = 31;  ///< numbers of these variables

    explicit Strings(const HeaderBlock& header);

    /// @param number place in the table, or a negative number for a string of the language
    /// @return false when it lies outside the table, does not end in it, refers to itself or is beyond all measure
    bool expand(int32_t number, const ScriptFolders& folders, PathText& path);

private:
    enum class Kind { Unicode, Ansi3, Ansi2 };
    struct Cursor;
    Kind findKind(const HeaderBlock& header) const;
    bool append(int32_t number, const ScriptFolders& folders, unsigned depth, PathText& path);
    bool appendCode(Cursor& cursor, uint32_t code, const ScriptFolders& folders, unsigned depth, PathText& path);
    std::string folderName(uint32_t first);
    static void appendVariable(uint32_t number, const ScriptFolders& folders, PathText& path);
    bool flushText(std::string& raw, PathText& path);

    ByteView mTable, mLanguage;
    Kind mKind;
    unsigned mCodePage = 1252;
    uint64_t mWork = 0;  // characters expanded so far
};

}  // namespace Archive
