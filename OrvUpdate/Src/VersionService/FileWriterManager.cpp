#include "VersionService/FileWriterManager.h"

#include "Public/Base/Time.h"

namespace Tarnwick::OrvUpdate {

namespace {

constexpr unsigned kSweepPeriodMs = 30000;
constexpr uint64_t kIdleLimitMs = 60000;

}  // namespace

FileWriterManager::FileWriterManager() {
    mTimer.start([this](unsigned long value) { timerProc(value); }, 0, kSweepPeriodMs, 0);
}

std::shared_ptr<FileObject> FileWriterManager::getFile(const std::string& transferId) {
    std::lock_guard lock(mMutex);
    const auto found = mFiles.find(transferId);
    return found == mFiles.end() ? nullptr : found->second;
}

void FileWriterManager::addFile(const std::string& transferId, const std::shared_ptr<FileObject>& file) {
    Files::node_type dropped;  // closes after the lock is given back
    std::lock_guard lock(mMutex);
    if (mFiles.emplace(transferId, file).second && mFiles.size() > kMaxFiles) dropped = takeLeastUsed(transferId);
}

/// With the lock held. The newcomer is spared: nobody has touched it yet.
FileWriterManager::Files::node_type FileWriterManager::takeLeastUsed(const std::string& newcomer) {
    auto least = mFiles.end();
    for (auto entry = mFiles.begin(); entry != mFiles.end(); ++entry) {
        if (entry->first == newcomer) continue;
        if (least == mFiles.end() || entry->second->lastAccess() < least->second->lastAccess()) least = entry;
    }
    return mFiles.extract(least);
}

ErrorInfo FileWriterManager::removeFile(const std::string& transferId) {
    Files::node_type dropped;  // closes after the lock is given back
    std::lock_guard lock(mMutex);
    dropped = mFiles.extract(transferId);
    return {};
}

void FileWriterManager::timerProc(unsigned long) {
    Files files;
    {
        std::lock_guard lock(mMutex);
        files = mFiles;
    }
    const uint64_t now = Public::Base::Time::getCurrentMilliSecond();
    for (const auto& [transferId, file] : files) {
        const uint64_t touched = file->lastAccess();
        // A file touched since the time was read is no older than that.
        if (touched >= now || now - touched <= kIdleLimitMs) continue;
        std::lock_guard lock(mMutex);
        const auto found = mFiles.find(transferId);
        if (found != mFiles.end() && found->second == file) mFiles.erase(found);
    }
}

}  // namespace Tarnwick::OrvUpdate
