// Files of uncommon kinds, and files that somebody keeps a program from.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace support {

/// While it lives, this program may read the file but not write it. The file stays read-only.
class ReadOnlyFile {
public:
    explicit ReadOnlyFile(const std::string& path);
    ~ReadOnlyFile();
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// While it lives, this program cannot open the file or the directory: for want of the right to read it, or because
/// somebody has it open for himself alone.
class WithheldFile {
public:
    explicit WithheldFile(const std::string& path);
    ~WithheldFile();
    WithheldFile(const WithheldFile&) = delete;
    WithheldFile& operator=(const WithheldFile&) = delete;

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// While it lives, this program cannot remove the file: for want of the right to change its directory, or because
/// somebody has it open and does not share that.
class KeptFile {
public:
    explicit KeptFile(const std::string& path);
    ~KeptFile();
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// Marks the file or directory as hidden where the system does not take a point at the beginning of a name for that.
void hide(const std::string& path);
/// Makes an empty file of this length that takes no room on the disk.
void makeSparse(const std::string& path, uint64_t length);
/// Makes a second name, which leads to a directory that is there.
void makeDirectoryLink(const std::string& directory, const std::string& link);

}  // namespace support
