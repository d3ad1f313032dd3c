// The transfer of a package from the update cloud.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "IDownload.h"
#include "OrvVersion.h"
#include "Public/Base/File.h"
#include "Public/Network/HTTPClient.h"

namespace Tarnwick::OrvUpdate {

/// Streams the body of one GET into the package's final file. Held by std::shared_ptr by the version that it belongs
/// to, of which it keeps a weak reference. Callbacks run on a thread of the IOWorker, or on the caller's when the
/// package was already sound, in ascending order of their keys and with no lock held: they may start, cancel or release
/// the transfer. They are kept, so a further run calls them again. Received bytes, total and progress are set at
/// construction only: a second run counts on from the old figures.
class ORV_UPDATE_API HttpDownload : public IDownload, public std::enable_shared_from_this<HttpDownload> {
public:
    HttpDownload(std::shared_ptr<IOWorker> ioWorker, const std::shared_ptr<OrvVersion>& version);
    /// Stops; what was written stays on disk.
    ~HttpDownload() override;

    /// While a transfer runs, only adds the callback. @return -1 when the version is gone or the request is refused,
    /// -602 when the file cannot be opened; no callback then
    ErrorInfo start(const Function<void()>& callback, void* key) override;
    /// With a null key.
    ErrorInfo start(const Function<void()>& callback) override;
    /// Ends the exchange and freezes the transfer: the file stays, open, and only cancel clears the way. @return code 0
    ErrorInfo stop() override;
    /// Ends the exchange and deletes the file. @return code 0
    ErrorInfo cancel() override;
    ErrorInfo getProgress(float& progress) override;
    /// @return -1 when the version is gone
    ErrorInfo getFileName(std::string& fileName) override;
    ErrorInfo getError() override;
    bool finish() override;

private:
    friend struct HttpDownloadAccess;  // tests of what no well-made client delivers

    ErrorInfo start();
    ErrorInfo begin(bool& arrived);
    ErrorInfo fetch(const std::string& url, const std::string& path);
    std::shared_ptr<Public::Network::HTTPClientRequest> makeRequest(const std::string& url);
    void notifyFinish();
    void endExchange();
    void onHttpFinishCallback(const std::shared_ptr<Public::Network::HTTPClient>& client,
                              const std::shared_ptr<Public::Network::HTTPClientRequest>& request,
                              const std::shared_ptr<Public::Network::HTTPClientResponse>& response);
    void onRecvDataCallback(const std::weak_ptr<Public::Network::Socket>& socket,
                            const std::shared_ptr<Public::Network::HTTPHeader>& header, const char* data,
                            unsigned int length);
    bool isWhole(int status) const;
    bool settle(const std::shared_ptr<Public::Base::File>& file, bool whole, const std::string& unfit,
                ErrorInfo& writeFault);
    void setError(const ErrorInfo& error);

    std::mutex mStateMutex;  // guards mHttpClient, mFile, mFileName, mError; the innermost lock
    std::shared_ptr<Public::Network::HTTPClient> mHttpClient;  // the run's sign: a callback of any other does nothing
    std::shared_ptr<Public::Base::File> mFile;                 // open package file; the sign that a transfer runs
    std::weak_ptr<OrvVersion> mVersion;
    std::map<void*, Function<void()>> mCallbacks;
    std::string mFileName;
    std::atomic<float> mProgress{0.0F};
    std::atomic<uint64_t> mReceived{0};
    std::atomic<uint64_t> mTotal{0};
    std::atomic<bool> mFinished{false};
    std::atomic<uint64_t> mWritten{0};  // bytes in the file before the first that the disk did not take
    std::atomic<bool> mHasGap{false};   // there is such a one
    ErrorInfo mError;
    std::mutex mStartMutex;     // orders start, stop and cancel; the outermost lock
    std::mutex mCallbackMutex;  // guards mCallbacks
    std::shared_ptr<IOWorker> mIOWorker;
};

}  // namespace Tarnwick::OrvUpdate
