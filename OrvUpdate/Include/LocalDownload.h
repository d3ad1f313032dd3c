// The transfer of a package that already lies on this disk.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "IDownload.h"

namespace Tarnwick::OrvUpdate {

/// Only tests the package: all of it on the thread that calls start.
class ORV_UPDATE_API LocalDownload : public IDownload {
public:
    /// @param fileName path of the package
    explicit LocalDownload(const std::string& fileName);

    using IDownload::start;
    /// Tests the package and calls back before it returns, unless cancelled meanwhile. @return -416 for a bad package
    ErrorInfo start(const Function<void()>& callback) override;
    /// Does nothing. @return code 0
    ErrorInfo stop() override;
    /// Keeps a running start from calling back. The package stays. @return code 0
    ErrorInfo cancel() override;
    /// 0.98 while the package is tested and when it proved bad, 1.0 when it is sound. @return code 0
    ErrorInfo getProgress(float& progress) override;
    ErrorInfo getFileName(std::string& fileName) override;
    ErrorInfo getError() override;
    bool finish() override;

private:
    void setError(const ErrorInfo& error);

    const std::string mFileName;
    std::mutex mErrorMutex;  // guards mError
    ErrorInfo mError;
    std::atomic<bool> mCancelled{false};
    std::atomic<float> mProgress{0.0F};
    std::atomic<bool> mFinished{false};
};

}  // namespace Tarnwick::OrvUpdate
