#include "OrvDownload/ConnectionProviders.h"

#include "FakeQueueNodes.h"

using namespace Tarnwick::OrvUpdate;

namespace {

std::shared_ptr<Tarnwick::MQ::MQConnection> makeLink() { return std::make_shared<support::FakeConnection>(); }

}  // namespace

TEST(GetClientConnection, GivesTheOneLinkForPeersAndMaster) {
    const auto client = std::make_shared<support::FakeClient>();
    client->link = makeLink();
    client->master = "M";
    GetClientConnection provider(client);
    EXPECT_EQ(provider.getConnection(), client->link);
    EXPECT_EQ(provider.getMasterConnection(), client->link);
    EXPECT_EQ(provider.getMasterId(), "M");
}

TEST(GetClientConnection, GivesNothingWithoutALink) {
    GetClientConnection provider(std::make_shared<support::FakeClient>());
    EXPECT_EQ(provider.getConnection(), nullptr);
    EXPECT_EQ(provider.getMasterConnection(), nullptr);
    EXPECT_EQ(provider.getMasterId(), "");
}

TEST(GetClientConnection, AsksTheClientAtEveryCall) {
    const auto client = std::make_shared<support::FakeClient>();
    GetClientConnection provider(client);
    EXPECT_EQ(provider.getConnection(), nullptr);
    client->link = makeLink();
    client->master = "later";
    EXPECT_EQ(provider.getConnection(), client->link);
    EXPECT_EQ(provider.getMasterId(), "later");
}

TEST(GetServerConnection, ReachesThePeerByItsIdWithAnEmptyRoute) {
    const auto server = std::make_shared<support::FakeServer>();
    server->links["S2"] = makeLink();
    GetServerConnection provider(server, "S2");
    EXPECT_EQ(provider.getConnection(), server->links["S2"]);
    EXPECT_EQ(server->asked, (std::vector<std::pair<std::string, std::string>>{{"S2", ""}}));
}

TEST(GetServerConnection, GivesNullForAPeerThatTheServerDoesNotKnow) {
    GetServerConnection provider(std::make_shared<support::FakeServer>(), "S2");
    EXPECT_EQ(provider.getConnection(), nullptr);
}

TEST(GetServerConnection, KnowsNoMasterOverAServerOutsideOfACluster) {
    const auto server = std::make_shared<support::FakeServer>();
    server->links["S2"] = makeLink();
    GetServerConnection provider(server, "S2");
    EXPECT_EQ(provider.getMasterConnection(), nullptr);
    EXPECT_EQ(provider.getMasterId(), "");
}

TEST(GetServerConnection, ReachesPeerAndMasterOfACluster) {
    const auto server = std::make_shared<support::FakeSystemServer>();
    server->links["S2"] = makeLink();
    server->master = "S1";
    server->masterLinks["S1"] = makeLink();
    GetServerConnection provider(server, "S2");
    EXPECT_EQ(provider.getConnection(), server->links["S2"]);
    EXPECT_EQ(provider.getMasterConnection(), server->masterLinks["S1"]);
    EXPECT_EQ(provider.getMasterId(), "S1");
}

TEST(GetServerConnection, FollowsTheMasterWhenItChanges) {
    const auto server = std::make_shared<support::FakeSystemServer>();
    server->masterLinks["S1"] = makeLink();
    server->masterLinks["S3"] = makeLink();
    server->master = "S1";
    GetServerConnection provider(server, "S2");
    EXPECT_EQ(provider.getMasterConnection(), server->masterLinks["S1"]);
    server->master = "S3";
    EXPECT_EQ(provider.getMasterConnection(), server->masterLinks["S3"]);
    EXPECT_EQ(provider.getMasterId(), "S3");
}

TEST(GetServerConnection, HasNoMasterWhileTheClusterHasNone) {
    GetServerConnection provider(std::make_shared<support::FakeSystemServer>(), "S2");
    EXPECT_EQ(provider.getMasterConnection(), nullptr);
    EXPECT_EQ(provider.getMasterId(), "");
}

TEST(GetServerConnection, OverAClientBehavesAsTheClientsOwnWhateverTheServerId) {
    const auto client = std::make_shared<support::FakeClient>();
    client->link = makeLink();
    client->master = "M";
    for (const char* serverId : {"", "S2", "M"}) {
        GetServerConnection provider(client, serverId);
        EXPECT_EQ(provider.getConnection(), client->link) << serverId;
        EXPECT_EQ(provider.getMasterConnection(), client->link) << serverId;
        EXPECT_EQ(provider.getMasterId(), "M") << serverId;
    }
}

TEST(GetServerConnection, GivesNothingOverADispatcherOfNeitherKind) {
    GetServerConnection provider(std::make_shared<support::FakeDispatcher<Tarnwick::MQ::MQDispatcher>>(), "S2");
    EXPECT_EQ(provider.getConnection(), nullptr);
    EXPECT_EQ(provider.getMasterConnection(), nullptr);
    EXPECT_EQ(provider.getMasterId(), "");
}

TEST(GetServerConnection, GivesNothingOverNull) {
    GetServerConnection provider(nullptr, "S2");
    EXPECT_EQ(provider.getConnection(), nullptr);
    EXPECT_EQ(provider.getMasterConnection(), nullptr);
    EXPECT_EQ(provider.getMasterId(), "");
}
