#include "FileKinds.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "WithoutRights.h"

namespace support {

namespace fs = std::filesystem;

namespace {

/// Changes permissions, has no rights itself meanwhile, and puts the permissions back.
class Closed {
public:
    Closed(const std::string& path, mode_t meanwhile) : mPath(path), mBefore(fs::status(path).permissions()) {
        ::chmod(path.c_str(), meanwhile);
        mNobody = std::make_unique<WithoutRights>();
    }
    ~Closed() {
        mNobody.reset();
        std::error_code gone;
        fs::permissions(mPath, mBefore, gone);
    }
    Closed(const Closed&) = delete;
    Closed& operator=(const Closed&) = delete;

private:
    const std::string mPath;
    const fs::perms mBefore;
    std::unique_ptr<WithoutRights> mNobody;
};

}  // namespace

struct ReadOnlyFile::State {
    WithoutRights nobody;
};

ReadOnlyFile::ReadOnlyFile(const std::string& path) {
    ::chmod(path.c_str(), 0444);
    mState = std::make_unique<State>();
}

ReadOnlyFile::~ReadOnlyFile() = default;

struct WithheldFile::State {
    Closed closed;
};

WithheldFile::WithheldFile(const std::string& path) : mState(new State{{path, 0}}) {}

WithheldFile::~WithheldFile() = default;

struct KeptFile::State {
    Closed closed;
};

KeptFile::KeptFile(const std::string& path) : mState(new State{{fs::path(path).parent_path().string(), 0555}}) {}

KeptFile::~KeptFile() = default;

void hide(const std::string&) {}

void makeSparse(const std::string& path, uint64_t length) {
    std::ofstream(path).close();
    fs::resize_file(path, length);
}

void makeDirectoryLink(const std::string& directory, const std::string& link) {
    fs::create_directory_symlink(directory, link);
}

}  // namespace support
