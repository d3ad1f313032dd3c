// A machine as the agent installer meets it.
#pragma once

#include "FileText.h"
#include "LogRecorder.h"
#include "OrvInstaller/AgentInstaller.h"
#include "PackageMaker.h"
#include "PeBuilder.h"
#include "ProgramRecorder.h"
#include "Public/Base/File.h"
#include "Public/Base/OEMInfo.h"
#include "Public/Base/Process.h"
#include "Public/Base/System.h"
#include "TempDir.h"
#include "WatchedVersion.h"

namespace Tarnwick::OrvUpdate {

/// A sound package with its entry, a program directory with an installer program, a system drive, and a host that
/// answers as a test wants. No program is really started.
class AgentFixture : public testing::Test {
protected:
    /// @param below a directory, with a separator in front, in which all of the machine lies
    explicit AgentFixture(const std::string& below = {}) : mRoot(mDir.path() + below) {
        support::makePackage({}, mDir.path() + "/package.exe");
        Public::Base::File::makeDirectory(mRoot + "/store");
        EXPECT_TRUE(Public::Base::File::copy(mDir.path() + "/package.exe", mPackage));
        Public::Base::File::remove(mDir.path() + "/package.exe");
        mVersion->setVersion("1.11.0.8");
        mVersion->setLocalFileName(mPackage);
        support::writeText(mProgramDir + "/orvInstaller.exe",
                           support::buildPe({true, {"core.dll", "KERNEL32.dll"}, {}, "installer"}).bytes);
        support::writeText(mProgramDir + "/core.dll", support::buildPe({true, {}, {}, "core"}).bytes);
        support::writeText(mProgramDir + "/host.dll", support::buildPe({true, {}, {}, "host"}).bytes);
        Public::Base::File::setExcutableFileFullPath(mProgramDir);
        Public::Base::File::makeDirectory(mDrive);
        Public::Base::System::setSystemDirectory(mDrive + "/Windows/system32");
    }
    ~AgentFixture() override {
        Public::Base::System::setSystemDirectory({});
        Public::Base::File::setExcutableFileFullPath({});
    }

    PackageCallback consent() {
        return [this](const std::string& version, std::string& first, std::string& second) {
            mAsked.push_back(version);
            first = mFirst;
            second = mSecond;
            return mConsent;
        };
    }
    CheckCallback ends() {
        return [this] {
            ++mExits;
            return mEnds;
        };
    }
    AgentInstaller make(VersionType role = VersionType_Client) { return {consent(), ends(), mVersion, role}; }

    /// As it stands in logs and command lines.
    std::string installerDir(const std::string& role) const {
        return mDrive + "\\ProgramData\\Tarnwick Orv\\" + role + "\\installer";
    }
    static std::string plain(std::string path) {
        std::replace(path.begin(), path.end(), '\\', '/');
        return path;
    }

    support::TempDir mDir;
    support::ProgramRecorder mPrograms;
    const std::string mRoot;
    const std::string mPackage = mRoot + "/store/package.exe";
    const std::string mProgramDir = mRoot + "/bin";
    const std::string mDrive = mRoot + "/drive";
    const std::shared_ptr<WatchedVersion> mVersion =
        std::make_shared<WatchedVersion>(nullptr, mRoot + "/store", std::string("server"));

    bool mConsent = true;
    std::string mFirst;
    std::string mSecond;
    std::vector<std::string> mAsked;
    bool mEnds = true;
    int mExits = 0;
};

}  // namespace Tarnwick::OrvUpdate
