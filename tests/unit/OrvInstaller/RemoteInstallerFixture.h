// The drive of a peer's installation, as its tests watch it.
#pragma once

#include "ManualClock.h"
#include "OrvInstaller/RemoteInstaller.h"
#include "PeerDriveFixture.h"

namespace Tarnwick::OrvUpdate {

inline constexpr char kStartInstall[] = "topic_upgrade_startinstall";
inline constexpr char kInstallPos[] = "topic_upgrade_getinstallpos";

class RemoteInstallerFixture : public support::PeerDriveFixture {
protected:
    ErrorInfo start() { return mInstaller->start("C:\\Orv", true, {}); }
    /// What getProgress gives, which always succeeds.
    float progress() {
        float value = -1;
        EXPECT_EQ(mInstaller->getProgress(value).errorCode(), 0);
        return value;
    }
    void pollAnswered(const std::shared_ptr<Tarnwick::MQ::MQMessage>& message) {
        progress();
        mLink->answer(message);
    }
    void pollAnswered(const std::string& document) { pollAnswered(support::peerDocument(document)); }
    size_t polls() const { return mLink->count(kInstallPos); }
    int error() { return mInstaller->getError().errorCode(); }

    support::ManualClock mClock;
    std::shared_ptr<RemoteInstaller> mInstaller = std::make_shared<RemoteInstaller>(mClient, mVersion, "peer");
};

}  // namespace Tarnwick::OrvUpdate
