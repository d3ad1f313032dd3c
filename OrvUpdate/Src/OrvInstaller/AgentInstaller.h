// The last step of an installation in the host's process.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "IInstaller.h"
#include "IVersionRequest.h"
#include "Public/Base/Value.h"

namespace Tarnwick::OrvUpdate {

/// Tests the package, copies the installer program with its libraries out of the running program's directory into one
/// directory per role, asks the host's consent and starts that copy with raised rights. Runs on the caller's thread and
/// may block for as long as the host takes to answer; cancel comes from another.
class AgentInstaller : public IInstaller {
public:
    AgentInstaller(const PackageCallback& upgradeAckNotify, const CheckCallback& exitNotify,
                   const std::shared_ptr<IVersion>& version, VersionType versionType);

    /// Runs to its end on this thread. A failed agent returns its error on every later start.
    /// @return 0 launched, or cancelled during the test; the package test's code (the package is deleted then); -4 no
    ///         install directory; the system's error when the installer directory cannot be made; -1 copy or launch
    ///         failed, or the host refused
    ErrorInfo start(const std::string& installDir, bool flag, const Function<void()>& callback) override;
    /// Does nothing. @return code 0
    ErrorInfo stop() override;
    /// Makes a package test that still runs discard the package that it has tested. @return code 0
    ErrorInfo cancel() override;
    /// Does nothing. @return code 0
    ErrorInfo getProgress(float& progress) override;
    /// Always false.
    bool finish() override;
    ErrorInfo getError() override;
    /// Lets the host end itself. @return -1 when it declines, or has not said how
    ErrorInfo exit();

private:
    ErrorInfo startInstall(const std::string& installDir, bool flag, const Function<void()>& callback);
    void resetTransfer();
    ErrorInfo prepareInstaller(std::string& installerDir);
    ErrorInfo launch(const std::string& installerDir, const std::string& installDir, bool flag);
    ErrorInfo buildInstallerPath(std::string& path);

    const PackageCallback mUpgradeAckNotify;
    const CheckCallback mExitNotify;
    const std::shared_ptr<IVersion> mVersion;
    std::atomic<bool> mCancelled{false};
    const VersionType mVersionType;
    std::mutex mErrorMutex;  // guards mError
    ErrorInfo mError;
};

}  // namespace Tarnwick::OrvUpdate
