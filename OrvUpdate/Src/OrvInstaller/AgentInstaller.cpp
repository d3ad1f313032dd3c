#include "AgentInstaller.h"

#include "DependencyCopy.h"
#include "EngineLog.h"
#include "GbkTexts.h"
#include "InstallerPath.h"
#include "OrvInstaller.h"
#include "OrvVersion.h"
#include "PackagePlace.h"
#include "Public/Base/File.h"
#include "Public/Base/OEMInfo.h"
#include "Public/Base/Process.h"
#include "Public/Base/System.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;

namespace {

constexpr char kInstallerProgram[] = "\\orvInstaller.exe";

ErrorInfo failed(const std::string& message = {}) { return ErrorInfo(ErrorCode_Failed, message); }

}  // namespace

AgentInstaller::AgentInstaller(const PackageCallback& upgradeAckNotify, const CheckCallback& exitNotify,
                               const std::shared_ptr<IVersion>& version, VersionType versionType)
    : mUpgradeAckNotify(upgradeAckNotify), mExitNotify(exitNotify), mVersion(version), mVersionType(versionType) {}

ErrorInfo AgentInstaller::start(const std::string& installDir, bool flag, const Function<void()>& callback) {
    mCancelled = false;
    if (const ErrorInfo earlier = getError()) return earlier;
    const ErrorInfo result = startInstall(installDir, flag, callback);
    if (result) {
        std::lock_guard lock(mErrorMutex);
        mError = result;
    }
    return result;
}

ErrorInfo AgentInstaller::startInstall(const std::string& installDir, bool flag, const Function<void()>& callback) {
    if (!mVersion) return failed();
    const std::string package = mVersion->getPackageFile();
    TestedPackage held(package);
    const ErrorInfo tested =
        OrvInstaller::checkPackage(package, mVersion->getVersion().toString(), mVersion->getSystemBits());
    if (tested || mCancelled) {
        ORV_LOG(2, "OrvInstaller", "onHttpFinishCallback() remove fileName:%s\r\n", package);
        // What another installation has put in its place meanwhile is that one's, and so is the transfer.
        if (held.discard()) resetTransfer();
        return tested;
    }
    callback();
    if (installDir.empty()) {
        ORV_LOG(2, "OrvInstaller", "startInstall: installDir is empty");
        return ErrorInfo(ErrorCode_NoInstallDir, "");
    }
    std::string installerDir;
    if (const ErrorInfo error = prepareInstaller(installerDir)) return error;
    return launch(installerDir, installDir.ends_with('\\') ? installDir.substr(0, installDir.size() - 1) : installDir,
                  flag);
}

void AgentInstaller::resetTransfer() {
    if (const auto version = std::dynamic_pointer_cast<OrvVersion>(mVersion)) version->resetDownload();
}

ErrorInfo AgentInstaller::prepareInstaller(std::string& installerDir) {
    if (const ErrorInfo error = buildInstallerPath(installerDir)) {
        ORV_LOG(2, "OrvInstaller", "startInstall: buildInstallerPath with errorCode: %d", error.errorCode());
        return error;
    }
    ORV_LOG(4, "OrvInstaller", "AgentInstaller buildInstallerPath %s", installerDir);
    const std::string programDir = File::getExcutableFileFullPath();
    if (!copyDependens(programDir + kInstallerProgram, programDir, installerDir)) {
        ORV_LOG(2, "OrvInstaller", "startInstall: copyDependens failed");
        return failed();
    }
    ORV_LOG(4, "OrvInstaller", "AgentInstaller copyDependens ready, from %s to %s", programDir, installerDir);
    return {};
}

ErrorInfo AgentInstaller::buildInstallerPath(std::string& path) {
    path = installerPath(System::getSystemDirectory(), OEMInfo::getOemInfo().programDataDirectory, mVersionType);
    if (File::makeDirectory(path)) return {};
    path.clear();
    return ErrorInfo::getLastError();
}

ErrorInfo AgentInstaller::launch(const std::string& installerDir, const std::string& installDir, bool flag) {
    const std::string program = installerDir + kInstallerProgram;
    std::string first;
    std::string second;
    if (!mUpgradeAckNotify(mVersion->getVersion().toString(), first, second)) {
        ORV_LOG(4, "OrvInstaller", "startInstall: mUpgradeAckNotify cancel by user");
        return failed(kTextCancelledByUser);
    }
    const std::vector<Value> arguments = {mVersion->getPackageFile(),
                                          installDir,
                                          static_cast<int>(mVersionType),
                                          Process::getProcessId(),
                                          first,
                                          second,
                                          flag ? "1" : "0"};
    ORV_LOG(4, "OrvInstaller", "startInstall: createAdminisratorProcess %s", program);
    if (!OrvInstaller::createAdminisratorProcess(program, arguments, true)) {
        ORV_LOG(2, "OrvInstaller", "startInstall: createAdminisratorProcess failed");
        return failed();
    }
    ORV_LOG(4, "OrvInstaller", "startInstall: createAdminisratorProcess ready %s", program);
    return {};
}

ErrorInfo AgentInstaller::stop() { return {}; }

ErrorInfo AgentInstaller::cancel() {
    mCancelled = true;
    return stop();
}

ErrorInfo AgentInstaller::getProgress(float&) { return {}; }

bool AgentInstaller::finish() { return false; }

ErrorInfo AgentInstaller::getError() {
    std::lock_guard lock(mErrorMutex);
    return mError;
}

ErrorInfo AgentInstaller::exit() {
    if (mExitNotify()) return {};
    return failed();
}

}  // namespace Tarnwick::OrvUpdate
