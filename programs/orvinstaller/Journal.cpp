#include "Journal.h"

#include <charconv>
#include <filesystem>
#include <string_view>

#include "Paths.h"
#include "Public/Base/Durability.h"
#include "Public/Base/File.h"
#include "Public/Base/FileEntry.h"

using Public::Base::ErrorInfo;
using Public::Base::File;
using Public::Base::FileEntry;

namespace {

constexpr std::string_view kHeader = "orvinstaller journal 1\n";
constexpr std::string_view kDirectory = "makes", kAdded = "adds", kReplaced = "replaces", kLink = "unlinks";
constexpr std::string_view kInstalls = "installs", kEnd = "end";

constexpr std::string_view kDigits = "0123456789abcdef";

std::string inQuotes(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || c == '"' || c == '\\') {
            out += {'\\', kDigits[byte >> 4U], kDigits[byte & 15U]};
        } else {
            out += c;
        }
    }
    return out + '"';
}

/// FNV-1a, going on from an earlier sum.
uint32_t checksum(uint32_t sum, std::string_view text) {
    for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
    return sum;
}

constexpr uint32_t kFirstSum = 2166136261U;

/// Eight digits and a blank in front of each line.
constexpr size_t kSumLength = 9;

std::string sumText(uint32_t sum) {
    std::string out(kSumLength - 1, '0');
    for (size_t at = out.size(); at-- > 0; sum >>= 4U) out[at] = kDigits[sum & 15U];
    return out + ' ';
}

class Writer {
public:
    void line(const std::string& text) {
        mSum = checksum(mSum, text);
        mText += sumText(mSum) + text + '\n';
    }
    std::string take() { return std::move(mText); }

private:
    std::string mText{kHeader};
    uint32_t mSum = checksum(kFirstSum, kHeader);
};

std::string entryLine(const JournalEntry& entry) {
    switch (entry.kind) {
        case JournalEntry::Kind::MadeDirectory:
            return std::string(kDirectory) + ' ' + inQuotes(entry.name);
        case JournalEntry::Kind::AddedFile:
            return std::string(kAdded) + ' ' + inQuotes(entry.name);
        case JournalEntry::Kind::ReplacedFile:
            return std::string(kReplaced) + ' ' + inQuotes(entry.name) + ' ' + std::to_string(entry.permissions) + ' ' +
                   std::to_string(entry.modified);
        case JournalEntry::Kind::ReplacedLink:
            return std::string(kLink) + ' ' + inQuotes(entry.name) + ' ' + inQuotes(entry.target);
    }
    return {};
}

/// Takes words off the front of a line. Once one is not as expected, none is any more.
class Words {
public:
    explicit Words(std::string_view line) : mLeft(line) {}

    std::string_view word() {
        const size_t end = mLeft.find(' ');
        const std::string_view found = mLeft.substr(0, end);
        mLeft.remove_prefix(end == std::string_view::npos ? mLeft.size() : end + 1);
        return found;
    }
    template <class Number>
    void number(Number& value) {
        const std::string_view text = word();
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        mGood = mGood && error == std::errc() && end == text.data() + text.size();
    }
    void text(std::string& value) {
        value.clear();
        size_t at = 1;
        mGood = mGood && mLeft.starts_with('"');
        for (; mGood && at < mLeft.size() && mLeft[at] != '"'; ++at) {
            if (mLeft[at] != '\\') {
                value += mLeft[at];
                continue;
            }
            unsigned byte = 0;
            const std::string_view digits = mLeft.substr(at + 1, 2);
            const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
            mGood = error == std::errc() && digits.size() == 2 && end == digits.data() + 2;
            value += static_cast<char>(byte);
            at += 2;
        }
        mGood = mGood && at < mLeft.size();
        if (!mGood) return;
        mLeft.remove_prefix(at + 1);
        if (mLeft.starts_with(' ')) mLeft.remove_prefix(1);
    }
    bool end() const { return mGood && mLeft.empty(); }

private:
    std::string_view mLeft;
    bool mGood = true;
};

/// A name of an entry leads below its directory, whatever became of the document.
bool isRelative(const std::string& name) {
    const std::filesystem::path path = toPath(name);
    return !path.has_root_path() && path.lexically_normal() == path && (path.empty() || *path.begin() != "..");
}

bool readEntry(std::string_view line, JournalEntry& entry) {
    Words words(line);
    const std::string_view kind = words.word();
    words.text(entry.name);
    if (kind == kDirectory) {
        entry.kind = JournalEntry::Kind::MadeDirectory;
        return words.end() && isRelative(entry.name);
    }
    if (kind == kAdded) {
        entry.kind = JournalEntry::Kind::AddedFile;
    } else if (kind == kReplaced) {
        entry.kind = JournalEntry::Kind::ReplacedFile;
        words.number(entry.permissions);
        words.number(entry.modified);
    } else if (kind == kLink) {
        entry.kind = JournalEntry::Kind::ReplacedLink;
        words.text(entry.target);
    } else {
        return false;
    }
    return words.end() && !entry.name.empty() && isRelative(entry.name);
}

/// The lines behind the header, without their checksums. @return false when one is not as it was written
bool splitLines(std::string_view text, std::vector<std::string_view>& lines) {
    uint32_t sum = checksum(kFirstSum, kHeader);
    while (!text.empty()) {
        const size_t end = text.find('\n');
        if (end == std::string_view::npos || end < kSumLength) return false;
        const std::string_view line = text.substr(kSumLength, end - kSumLength);
        sum = checksum(sum, line);
        if (text.substr(0, kSumLength) != sumText(sum)) return false;
        lines.push_back(line);
        text.remove_prefix(end + 1);
    }
    return true;
}

bool readLines(const std::vector<std::string_view>& lines, Journal& journal) {
    if (lines.size() < 2) return false;
    Words first(lines.front());
    const bool installs = first.word() == kInstalls;
    first.text(journal.installDir);
    size_t count = 0;
    Words last(lines.back());
    const bool ends = last.word() == kEnd;
    last.number(count);
    if (!installs || !first.end() || journal.installDir.empty() || !ends || !last.end()) return false;
    if (count != lines.size() - 2) return false;
    for (size_t at = 1; at + 1 < lines.size(); ++at) {
        if (!readEntry(lines[at], journal.entries.emplace_back())) return false;
    }
    return true;
}

}  // namespace

std::string writeJournal(const Journal& journal) {
    Writer writer;
    writer.line(std::string(kInstalls) + ' ' + inQuotes(journal.installDir));
    for (const auto& entry : journal.entries) writer.line(entryLine(entry));
    writer.line(std::string(kEnd) + ' ' + std::to_string(journal.entries.size()));
    return writer.take();
}

std::string readJournal(const std::string& text, Journal& journal) {
    journal = {};
    const std::string_view header = std::string_view(text).substr(0, text.find('\n') + 1);
    constexpr std::string_view kAnyVersion = kHeader.substr(0, kHeader.size() - 2);
    if (header != kHeader) {
        return header.starts_with(kAnyVersion) ? "was written by another version of the installer" : "is damaged";
    }
    std::vector<std::string_view> lines;
    if (!splitLines(std::string_view(text).substr(kHeader.size()), lines) || !readLines(lines, journal)) {
        return "is damaged";
    }
    return {};
}

JournalFile::JournalFile(const std::string& backupDir) : mBackupDir(backupDir), mPath(below(backupDir, kName)) {}

bool JournalFile::exists() const {
    return FileEntry::at(mPath).kind != FileEntry::Kind::Absent;  // one that cannot be looked at may be there
}

ErrorInfo JournalFile::read(Journal& journal) const {
    const bool opens = File(mPath).open(Public::Base::OpenMode_Read);
    const Public::Base::SharedBuffer content = File::load(mPath);
    const std::string wrong =
        opens ? readJournal(std::string(content.buf(), content.size()), journal) : "cannot be read";
    if (wrong.empty()) return {};
    return {Public::Base::ErrorCode_Failed, "the journal of an unfinished upgrade, " + mPath + ", " + wrong};
}

ErrorInfo JournalFile::write(const Journal& journal) const {
    const std::string unnamed = mPath + ".new";
    File file(unnamed);
    const std::string text = writeJournal(journal);
    const bool written =
        file.open(Public::Base::OpenMode_Create) && file.write(text.data(), text.size()) == text.size();
    file.close();
    if (!written || !Public::Base::Durability::sync(unnamed)) return ErrorInfo::getLastError();
    if (!FileEntry::rename(unnamed, mPath)) {
        return {Public::Base::ErrorCode_Failed,
                "the journal cannot be put in its place: " + ErrorInfo::getLastError().errorMessage()};
    }
    return Public::Base::Durability::sync(mBackupDir) ? ErrorInfo() : ErrorInfo::getLastError();
}

ErrorInfo JournalFile::remove() const {
    if (exists() && !File::remove(mPath)) return ErrorInfo::getLastError();
    // Should a power cut bring it back, the upgrade is undone as a whole: no reason to fail now.
    Public::Base::Durability::sync(mBackupDir);
    return {};
}
