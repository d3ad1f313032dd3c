// The open package files of the transfers that this node serves.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "FileObject.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/Timer.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorInfo;

/// Files by transferId, for readers and writers alike. A sweep every 30 seconds lets go of those that nobody has
/// touched for more than 60 seconds; a transfer that goes on afterwards opens its file again. The same befalls the one
/// that was left alone the longest when a peer opens more than kMaxFiles, so that no peer takes all of the process's
/// file handles. Operations may be called from any thread; files close outside of the lock.
struct FileWriterManager {
    /// What a peer may have open here at most, over all of its transfers.
    static constexpr size_t kMaxFiles = 256;
    /// Bytes of the longest transferId taken; a Guid has 36.
    static constexpr size_t kMaxTransferId = 1024;

    /// Starts the sweep.
    FileWriterManager();
    virtual ~FileWriterManager() = default;

    /// Null when the transfer has no file here.
    std::shared_ptr<FileObject> getFile(const std::string& transferId);
    /// A file already there stays.
    void addFile(const std::string& transferId, const std::shared_ptr<FileObject>& file);
    /// @return code 0, also when nothing was there
    ErrorInfo removeFile(const std::string& transferId);
    /// The sweep.
    void timerProc(unsigned long);

private:
    using Files = std::map<std::string, std::shared_ptr<FileObject>>;

    Files::node_type takeLeastUsed(const std::string& newcomer);

    std::mutex mMutex;  // guards mFiles, for one operation of the map at a time
    Files mFiles;
    Public::Base::Timer mTimer{"FileWriterManagerTimer"};  // ends first
};

}  // namespace Tarnwick::OrvUpdate
