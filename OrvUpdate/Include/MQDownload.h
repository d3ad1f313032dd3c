// The transfer of a package that a peer holds.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "FileObject.h"
#include "IDownload.h"
#include "IGetConnection.h"
#include "OrvVersion.h"

namespace Tarnwick::Protocol {
struct TWProtoUpgradeInfo;
}

namespace Tarnwick::OrvUpdate {

/// Asks the peer for one chunk at a time over the queue and writes each to its place in the package's final file. A
/// peer that must fetch the package itself is asked again and again until it has it. Must be held by a std::shared_ptr,
/// which the version that it belongs to does; keeps a weak reference to that. Callbacks run on the queue's threads,
/// with no lock held: they may start, cancel or release the transfer. What ends a run early leaves the short file,
/// open, until cancel; a further run writes over it.
class ORV_UPDATE_API MQDownload : public IDownload, public std::enable_shared_from_this<MQDownload> {
public:
    MQDownload(const std::shared_ptr<IGetConnection>& connection, const std::shared_ptr<OrvVersion>& version);
    /// Closes the file, which stays.
    ~MQDownload() override;

    using IDownload::start;
    /// Begins a run. When it cannot send, now or later, it ends without a callback and getError tells -1 or -200. A run
    /// that was under way ends in favour of this one, which calls back for both.
    /// @return -1 when the version is gone or there is no connection provider
    ErrorInfo start(const Function<void()>& callback) override;
    /// Does nothing. @return code 0
    ErrorInfo stop() override;
    /// Ends the run and deletes the file that it opened, also after its end. @return code 0
    ErrorInfo cancel() override;
    /// Trails by a chunk: where the last one began. @return code 0
    ErrorInfo getProgress(float& progress) override;
    /// @return -1 when the version is gone
    ErrorInfo getFileName(std::string& fileName) override;
    ErrorInfo getError() override;
    bool finish() override;

private:
    struct Run;
    enum class Outcome { Dropped, More, Whole, VersionGone, NotOpened, NotWritten };
    using Response = std::shared_ptr<Tarnwick::MQ::MQMessage>;

    static void requestNext(const std::shared_ptr<Run>& run);
    void push(const std::shared_ptr<Run>& run);
    void endUnsent(const Run& run, const ErrorInfo& error);
    void onResponse(const std::shared_ptr<Run>& run, const Response& message);
    ErrorInfo handleChunk(Run& run, const Response& message, Outcome& outcome);
    Outcome store(Run& run, const Tarnwick::Protocol::TWProtoUpgradeInfo& answer, std::string_view data,
                  std::string& path);
    Outcome openFile(std::string& path);
    void endRun(Run& run, const ErrorInfo& error);
    bool isCurrent(const Run& run);
    void setError(const ErrorInfo& error);

    const std::weak_ptr<OrvVersion> mVersion;
    const std::shared_ptr<IGetConnection> mConnection;
    std::mutex mMutex;                  // guards the next three and orders the file's steps; never held across a push
    std::weak_ptr<Run> mRun;            // the one whose answers count
    std::shared_ptr<FileObject> mFile;  // while the package is being written
    std::string mFileName;              // of the file that this run has opened
    std::mutex mErrorMutex;             // guards mError; an innermost lock
    ErrorInfo mError;
    std::atomic<bool> mFinished{false};
    std::atomic<float> mProgress{0.0F};
};

}  // namespace Tarnwick::OrvUpdate
