// A server on which peers install packages.
#pragma once

#include "FileText.h"
#include "PeBuilder.h"
#include "PeerTopicsFixture.h"
#include "ProgramRecorder.h"
#include "Public/Base/DetachedThread.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"

namespace Tarnwick::OrvUpdate {

/// The node has a sound package in its store, an installer program beside its own, and a host that answers as a test
/// wants. No program is really started.
class InstallTopics : public PeerTopics {
protected:
    explicit InstallTopics(VersionType role = VersionType_Server) {
        mRequest = makeRequest(mServer, role);
        support::writeText(mProgramDir + "/orvInstaller.exe", support::buildPe({true, {}, {}, "installer"}).bytes);
        Public::Base::File::setExcutableFileFullPath(mProgramDir);
        std::filesystem::create_directories(mDrive);
        Public::Base::System::setSystemDirectory(mDrive + "/Windows/system32");
        mPackage = mStore.put(packageOf("1.11.0.8"), "1.11.0.8");
        startHost("1.0.0.0");
    }
    /// Nothing of a test may go on after it: it would meet the real system.
    ~InstallTopics() override {
        mConsentGate.open();
        mRequest->stop();
        while (mRequest.use_count() > 1) std::this_thread::yield();
        mClock.advance(100000);
        Public::Base::settleDetached();
        Public::Base::System::setSystemDirectory({});
        Public::Base::File::setExcutableFileFullPath({});
    }

    void startHost(const std::string& version) {
        mRequest->stop();
        mRequest->start(Version(version, 0), consent(), ends(), mStore.path());
    }
    PackageCallback consent() {
        return [this](const std::string& version, std::string& first, std::string& second) {
            mAsked.add(version);
            first = "one";
            second = "two";
            if (mHoldConsent.exchange(false)) mConsentGate.pass();
            return mConsent.load();
        };
    }
    CheckCallback ends() {
        return [exits = mExits, answer = mEnds] {
            exits.add(std::this_thread::get_id());
            return answer;
        };
    }
    /// Lets that time pass, with what it brings about.
    void elapse(uint64_t milliseconds) {
        mClock.advance(milliseconds);
        Public::Base::settleDetached();
    }
    /// Asks for an installation and waits until the host has been asked, and does not answer.
    void installUpToConsent() {
        mHoldConsent = true;
        const auto packet = packetOf(documentOf("1.11.0.8"));
        EXPECT_NE(mInstalling.send("server", kStartInstall, &packet), 0U);
        EXPECT_TRUE(mConsentGate.waitForSomeone());
    }
    QueueAnswer install() { return ask(kStartInstall, documentOf("1.11.0.8")); }

    support::ProgramRecorder mPrograms;
    support::TempDir mWorkshop;
    const std::string mProgramDir = mWorkshop.path() + "/bin";
    const std::string mDrive = mWorkshop.path() + "/drive";
    std::string mPackage;
    const support::Received<std::string> mAsked;
    const support::Received<std::thread::id> mExits;
    std::atomic<bool> mConsent{true};
    std::atomic<bool> mHoldConsent{false};
    support::Gate mConsentGate;
    bool mEnds = true;
    Asker mInstalling{mPeer->connectionTo("server", "")};  // for requests that stay open
};

}  // namespace Tarnwick::OrvUpdate
