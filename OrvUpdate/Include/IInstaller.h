// The contract of everything that installs a package.
#pragma once

#include <memory>
#include <string>

#include "IVersion.h"
#include "OrvUpdateExport.h"
#include "Public/Base/Function.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::Function;

/// A kind that does not offer an operation returns code -2.
class ORV_UPDATE_API IInstaller {
public:
    /// Tests the version's package on this disk, launches the installer program with raised rights and lets the host
    /// end itself. Runs to its end on this thread; for host programs.
    /// @param request a started VersionRequest, whose callbacks are used   @param version whose package is installed
    /// @return the installer, never null, whose getError tells the outcome: -1 when the request is of another class or
    /// an
    ///         argument is null; nothing has been done then
    static std::shared_ptr<IInstaller> createLocalInstaller(const std::shared_ptr<IVersionRequest>& request,
                                                            const std::shared_ptr<IVersion>& version,
                                                            const std::string& installDir);

    /// Makes an installer that has a server of the cluster install the version on itself; for host programs in a client
    /// role. It is not started: start tells the server, then getProgress asks how far it is, as often as it is called.
    /// The end is finish true, or an error in getError, which gives -1 once 180 seconds have gone since the start.
    /// @param request a VersionRequest, whose queue client is used   @param serverId of the server
    /// @return the installer, never null; its start gives -1 when the request is of another class, has no queue client,
    ///         or an argument is null
    static std::shared_ptr<IInstaller> createRemoteInstaller(const std::shared_ptr<IVersionRequest>& request,
                                                             const std::shared_ptr<IVersion>& version,
                                                             const std::string& serverId);

    virtual ~IInstaller() = default;
    /// Begins the installation into installDir.
    virtual ErrorInfo start(const std::string& installDir, bool flag, const Function<void()>& callback) = 0;
    virtual ErrorInfo stop() = 0;
    /// Asks the installation to end.
    virtual ErrorInfo cancel() = 0;
    /// @param progress fraction done, 0.0 to 1.0
    virtual ErrorInfo getProgress(float& progress) = 0;
    /// True when the work has ended.
    virtual bool finish() = 0;
    /// A copy of the last recorded error.
    virtual ErrorInfo getError() = 0;
};

}  // namespace Tarnwick::OrvUpdate
