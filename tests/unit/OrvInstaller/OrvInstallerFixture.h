// An installer over directories of a test's own.
#pragma once

#include "FileText.h"
#include "LogRecorder.h"
#include "OrvInstaller.h"
#include "PackageMaker.h"
#include "TempDir.h"

namespace Tarnwick::OrvUpdate {

using Names = std::set<std::string>;

inline constexpr int kError = 2;
inline constexpr int kProgress = 4;
inline constexpr int kDetail = 6;

/// A backup that notes what it is asked for and gives the result that a test wants.
class NotingBackup : public IBackup {
public:
    ErrorInfo backup(const std::string& name, const std::string& dir) override {
        if (onBackup) onBackup(name);
        std::lock_guard lock(mMutex);
        mSaved.emplace_back(name, dir);
        return name == failing ? ErrorInfo(-10099, "") : ErrorInfo();
    }
    ErrorInfo backup(const std::string&, const FileCallback&) override { return {}; }
    ErrorInfo restore(const std::string&, const FileCallback&) override { return {}; }
    ErrorInfo restore(const std::string&, const std::string&) override { return {}; }
    ErrorInfo clear() override { return {}; }

    std::vector<std::pair<std::string, std::string>> saved() {
        std::lock_guard lock(mMutex);
        return mSaved;
    }

    std::string failing;
    std::function<void(const std::string&)> onBackup;  // runs on the install thread

private:
    std::mutex mMutex;
    std::vector<std::pair<std::string, std::string>> mSaved;
};

/// Waits until the run has ended.
inline void waitFor(const std::shared_ptr<OrvInstaller>& installer) {
    while (!installer->finish()) std::this_thread::yield();
}

inline float progressOf(IInstaller& installer) {
    float progress = -1.0F;
    EXPECT_EQ(installer.getProgress(progress).errorCode(), 0);
    return progress;
}

/// Makes packages, installers for them, and unpacks.
class OrvInstallerTest : public testing::Test {
protected:
    std::string package(const support::PackageSpec& spec = {}) {
        return support::makePackage(spec, mRoot + "/package.exe");
    }

    std::shared_ptr<OrvInstaller> make(const std::string& path, VersionType role = VersionType_All) {
        return std::make_shared<OrvInstaller>(mBackup, path, role);
    }
    /// Unpacks to the end and gives the files.
    Names unpack(const support::PackageSpec& spec, VersionType role) {
        mInstaller = make(package(spec), role);
        EXPECT_EQ(mInstaller->start(mInstall, true, {}).errorCode(), 0);
        waitFor(mInstaller);
        return support::filesBelow(mInstall);
    }
    /// Opens one item by hand. @return what the sink says
    bool open(const std::shared_ptr<OrvInstaller>& installer, const std::string& name) {
        return static_cast<IExtractOutFile&>(*installer).open(name, false);
    }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
    const std::string mInstall = mRoot + "/install";
    const std::shared_ptr<NotingBackup> mBackup = std::make_shared<NotingBackup>();
    std::shared_ptr<OrvInstaller> mInstaller;
};

inline support::PackageSpec packageOf(const std::vector<std::string>& names) {
    support::PackageSpec spec;
    for (const std::string& name : names) spec.files.emplace_back(name, "content of " + name);
    return spec;
}

inline support::PackageSpec tree() {
    return packageOf({"win64.sysbits", "Orv Client\\c.exe", "Orv Client\\lang\\zh.dll", "Orv Server\\s.exe",
                      "Orv VideoWall\\v.exe", "Orv Analytics\\a.exe"});
}
inline const Names kWholeTree = {"Orv Analytics/a.exe", "Orv Client/c.exe",    "Orv Client/lang/zh.dll",
                                 "Orv Server/s.exe",    "Orv VideoWall/v.exe", "win64.sysbits"};
inline support::PackageSpec msi() {
    return packageOf({"win64.sysbits", "OrvClient.msi", "OrvServer.msi", "OrvVideoWall.msi", "OrvAnalytics.msi"});
}
inline const Names kWholeMsi = {"OrvAnalytics.msi", "OrvClient.msi", "OrvServer.msi", "OrvVideoWall.msi",
                                "win64.sysbits"};

}  // namespace Tarnwick::OrvUpdate
