// What an upgrade changes, told on disk before it changes anything.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Public/Base/ErrorInfo.h"

/// One change of the install directory, with what it takes to undo it. Names are relative, with "/".
struct JournalEntry {
    enum class Kind {
        MadeDirectory,  ///< was not there; an empty name is the install directory itself
        AddedFile,      ///< was not there
        ReplacedFile,   ///< its copy lies under the same name in the backup directory
        ReplacedLink,   ///< a symbolic link; all of it is in here
    };
    Kind kind = Kind::AddedFile;
    std::string name;
    unsigned permissions = 0;  ///< of a replaced file, as FileEntry gives them
    int64_t modified = 0;      ///< of a replaced file, likewise
    std::string target;        ///< of a replaced link

    bool operator==(const JournalEntry&) const = default;
};

/// The whole of an upgrade. The entries are undone in reverse.
struct Journal {
    std::string installDir;  ///< absolute
    std::vector<JournalEntry> entries;

    bool operator==(const Journal&) const = default;
};

/// The document: lines, each with a checksum that covers all lines before it as well, the last one with their count.
std::string writeJournal(const Journal& journal);
/// @return what is wrong with the text, in words for people; empty when all of it is as it was written
std::string readJournal(const std::string& text, Journal& journal);

/// The journal's place in a backup directory. The file is there, and then whole, exactly while an upgrade is under
/// way: it appears under its name at once, when all that it speaks of is safe on the disk, and going away it says
/// that the upgrade has ended, or has been undone. So a process that finds one has to undo it.
class JournalFile {
public:
    static constexpr const char* kName = "orvinstaller.journal";

    explicit JournalFile(const std::string& backupDir);

    bool exists() const;
    /// @return an error that tells why it cannot be made out; such a journal says that something was under way, not
    /// what
    Public::Base::ErrorInfo read(Journal& journal) const;
    /// Outlasts a power cut when it returns with code 0; after a failure it may be there or not.
    Public::Base::ErrorInfo write(const Journal& journal) const;
    /// @return an error when the journal is still there
    Public::Base::ErrorInfo remove() const;

private:
    std::string mBackupDir;
    std::string mPath;
};
