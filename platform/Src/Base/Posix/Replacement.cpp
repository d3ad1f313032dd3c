#include "Base/Posix/Replacement.h"

#include <fcntl.h>

#include <atomic>
#include <climits>
#include <cstdio>

#include "Base/Posix/NativePath.h"

namespace Public::Base {

namespace {

/// With its separator; empty for a name alone.
std::string directoryOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

bool followLinks(std::string& path) {
    constexpr int kMostLinks = 40;
    for (int links = 0; links < kMostLinks; ++links) {
        char text[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), text, sizeof text);
        if (length < 0) return errno == EINVAL || errno == ENOENT || failWithErrno();  // no link, or nothing yet
        const std::string next(text, static_cast<size_t>(length));
        path = next.starts_with('/') ? next : directoryOf(path) + next;
    }
    return failWith(ELOOP);
}

/// Short whatever the target's name is, since a name has but so much room; hidden, so that no scan takes it.
std::string temporaryName() {
    static std::atomic<unsigned> sCount{0};
    return ".orv-" + std::to_string(::getpid()) + "-" + std::to_string(sCount++) + ".part";
}

}  // namespace

Replacement::~Replacement() {
    if (!mTemporary.empty()) ::unlink(mTemporary.c_str());
}

bool Replacement::find(const std::string& target) {
    mTarget = target;
    mReplaces = ::stat(target.c_str(), &mReplaced) == 0;
    if (!mReplaces && errno != ENOENT) return failWithErrno();
    if (mReplaces && S_ISDIR(mReplaced.st_mode)) return failWith(EISDIR);
    mInPlace = mReplaces && !S_ISREG(mReplaced.st_mode);
    if (mInPlace) return true;
    if (!followLinks(mTarget)) return false;
    // A link of the process file system leads to its file without naming it.
    struct stat found {};
    mInPlace = mReplaces && (::stat(mTarget.c_str(), &found) != 0 || found.st_dev != mReplaced.st_dev ||
                             found.st_ino != mReplaced.st_ino);
    return true;
}

bool Replacement::open(const std::string& target, mode_t permissions) {
    if (!find(target)) return false;
    if (!mInPlace) return makeTemporary(permissions);
    mFile = Descriptor(openRetrying(target, O_WRONLY | O_TRUNC));
    return mFile.isOpen() || failWithErrno();
}

bool Replacement::makeTemporary(mode_t permissions) {
    constexpr int kAttempts = 100;  // another process space may use the same names
    for (int attempt = 0; attempt < kAttempts && !mFile.isOpen(); ++attempt) {
        const std::string path = directoryOf(mTarget) + temporaryName();
        mFile = Descriptor(openRetrying(path, O_WRONLY | O_CREAT | O_EXCL, permissions));
        if (mFile.isOpen()) {
            mTemporary = path;
        } else if (errno != EEXIST) {
            break;
        }
    }
    if (!mFile.isOpen()) return failWithErrno();
    // Only root can give a file away; for others the new file is theirs.
    [[maybe_unused]] const int given = mReplaces ? ::fchown(mFile.get(), mReplaced.st_uid, mReplaced.st_gid) : 0;
    return true;
}

bool Replacement::write(const char* data, size_t length) {
    for (size_t done = 0; done < length;) {
        const ssize_t put = ::write(mFile.get(), data + done, length - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return put < 0 ? failWithErrno() : failWith(ENOSPC);
        done += static_cast<size_t>(put);
    }
    return true;
}

bool Replacement::setPermissions(mode_t permissions) {
    struct stat status {};
    if (::fstat(mFile.get(), &status) != 0) return failWithErrno();
    return !S_ISREG(status.st_mode) || ::fchmod(mFile.get(), permissions) == 0 || failWithErrno();
}

bool Replacement::sync() {
    while (!mInPlace && ::fsync(mFile.get()) != 0) {
        if (errno != EINTR) return failWithErrno();
    }
    return true;
}

bool Replacement::commit() {
    if (!mFile.close()) return failWithErrno();
    if (mInPlace) return true;
    if (::rename(mTemporary.c_str(), mTarget.c_str()) != 0) return failWithErrno();
    mTemporary.clear();
    return true;
}

}  // namespace Public::Base
