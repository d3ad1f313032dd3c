// The contract through which every movement of a package is driven.
#pragma once

#include <memory>
#include <string>

#include "IVersion.h"
#include "OrvUpdateExport.h"
#include "Public/Base/Function.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::Function;

/// One transfer of one package. Start it with a callback; when that fires, read getError and finish. The callback takes
/// no outcome and never fires for a cancel. No transfer keeps itself alive: whoever owns it decides how long it lives.
/// Operations may be called from any thread. A member of the family that does not offer an operation returns code -2.
class ORV_UPDATE_API IDownload {
public:
    /// The transfer that brings a version onto a peer: the peer fetches it for itself (RemoteDownload), unless the
    /// version is the cloud's and no server holds it; then the package passes through this program (ForwardDownload).
    /// @param serverId of the peer
    /// @return null unless the request and the version are the engine's own and the program is a client of the queue;
    ///         null too when the version cannot be fetched here
    static std::shared_ptr<IDownload> createRemoteDownload(const std::shared_ptr<IVersionRequest>& request,
                                                           const std::shared_ptr<IVersion>& version,
                                                           const std::string& serverId);

    virtual ~IDownload() = default;

    /// Starts with a callback under a key, so that several waiters can hang on one transfer; a callback already under
    /// that key is replaced. @return -2 unless the member offers it
    virtual ErrorInfo start(const Function<void()>& callback, void* key);
    virtual ErrorInfo start(const Function<void()>& callback) = 0;
    virtual ErrorInfo stop() = 0;
    /// Ends the transfer without a callback.
    virtual ErrorInfo cancel() = 0;
    /// @param progress fraction done, 0.0 to 1.0
    virtual ErrorInfo getProgress(float& progress) = 0;
    /// @param fileName path of the package on this disk
    virtual ErrorInfo getFileName(std::string& fileName) = 0;
    /// A copy of the last recorded error.
    virtual ErrorInfo getError() = 0;
    /// True once the package has arrived whole.
    virtual bool finish() = 0;
};

}  // namespace Tarnwick::OrvUpdate
