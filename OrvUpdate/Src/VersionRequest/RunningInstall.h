// One installation between its start and its end.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "IDownload.h"
#include "IVersion.h"

namespace Tarnwick::OrvUpdate {

/// Held by the VersionRequest while the package is on its way, so that the entry outlives its place in the catalogue;
/// the transfer's callback refers to it weakly, so that nothing holds itself.
struct RunningInstall {
    std::shared_ptr<IVersion> version;
    std::shared_ptr<IDownload> transfer;
    std::string installDir;
    bool flag = false;
    std::atomic<bool> cancelled{false};  // stays set when the next installation begins
    Function<void(const ErrorInfo&)> onError;
    Function<void()> onDownloaded;
    Function<void()> onInstalling;
};

}  // namespace Tarnwick::OrvUpdate
