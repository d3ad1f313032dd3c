#include "AgentFixture.h"
#include "ForeignRequest.h"
#include "Tarnwick/MQ/Bus.h"
#include "VersionRequest.h"

using namespace Tarnwick::OrvUpdate;

namespace {

/// A started client whose host answers as the fixture says.
class LocalInstaller : public AgentFixture {
protected:
    LocalInstaller() {
        Tarnwick::MQ::NodeOptions options;
        options.id = "client";
        mClient = TWMQClient::create(Tarnwick::MQ::Bus::embedded(), options);
        mRequest = IVersionRequest::allocVersionRequest(nullptr, mClient, VersionType_VideoWall);
        EXPECT_EQ(mRequest->start(Version("1.0"), consent(), ends(), mDir.path() + "/downloads").errorCode(), 0);
    }
    ~LocalInstaller() override { mRequest->stop(); }

    std::shared_ptr<TWMQClient> mClient;
    std::shared_ptr<IVersionRequest> mRequest;
};

}  // namespace

TEST_F(LocalInstaller, LaunchesWithTheRequestsCallbacksAndRole) {
    mFirst = "from the host";
    const auto installer = IInstaller::createLocalInstaller(mRequest, mVersion, "C:\\Orv");
    ASSERT_NE(installer, nullptr);
    EXPECT_EQ(installer->getError().errorCode(), 0);
    ASSERT_EQ(mPrograms.starts().size(), 1U);
    EXPECT_EQ(mPrograms.starts()[0].program, installerDir("VideoWall") + "\\orvInstaller.exe");
    EXPECT_NE(mPrograms.starts()[0].parameters.find("\"C:\\Orv\" \"4\" "), std::string::npos);
    EXPECT_TRUE(mPrograms.starts()[0].parameters.ends_with("\"from the host\" \"\" \"1\""));
}

TEST_F(LocalInstaller, LetsTheHostEndAfterALaunch) {
    IInstaller::createLocalInstaller(mRequest, mVersion, "C:\\Orv");
    EXPECT_EQ(mExits, 1);
}

TEST_F(LocalInstaller, AHostThatDoesNotEndChangesNothing) {
    mEnds = false;
    const auto installer = IInstaller::createLocalInstaller(mRequest, mVersion, "C:\\Orv");
    ASSERT_NE(installer, nullptr);
    EXPECT_EQ(installer->getError().errorCode(), 0);
}

TEST_F(LocalInstaller, GivesTheInstallerAlsoAfterAFailureAndKeepsTheHostRunning) {
    std::filesystem::remove(mPackage);
    const auto installer = IInstaller::createLocalInstaller(mRequest, mVersion, "C:\\Orv");
    ASSERT_NE(installer, nullptr);
    EXPECT_EQ(installer->getError().errorCode(), -416);
    EXPECT_EQ(mExits, 0);
}

TEST_F(LocalInstaller, ARequestOfAnotherClassGivesAnInstallerThatHasFailed) {
    const auto installer = IInstaller::createLocalInstaller(std::make_shared<ForeignRequest>(), mVersion, "C:\\Orv");
    ASSERT_NE(installer, nullptr);
    EXPECT_EQ(installer->getError().errorCode(), -1);
    EXPECT_TRUE(mPrograms.starts().empty());
    EXPECT_TRUE(std::filesystem::exists(mPackage));
}

TEST_F(LocalInstaller, NoRequestOrNoVersionGivesAnInstallerThatHasFailed) {
    const auto withoutRequest = IInstaller::createLocalInstaller(nullptr, mVersion, "C:\\Orv");
    const auto withoutVersion = IInstaller::createLocalInstaller(mRequest, nullptr, "C:\\Orv");
    for (const auto& installer : {withoutRequest, withoutVersion}) {
        ASSERT_NE(installer, nullptr);
        EXPECT_EQ(installer->getError().errorCode(), -1);
    }
    EXPECT_EQ(mExits, 0);
    EXPECT_TRUE(std::filesystem::exists(mPackage));
}
