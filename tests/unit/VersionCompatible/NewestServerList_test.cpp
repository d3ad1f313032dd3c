// Which servers of a list are asked for their document, and through which address.
#include "NewestFixture.h"

namespace Tarnwick::OrvUpdate {

class NewestServerList : public Newest {
protected:
    using Servers = std::map<std::string, TWServerInfo>;

    static TWServerInfo server(const std::string& id, const std::string& addresses,
                               const std::string& version = "9.0") {
        TWServerInfo info;
        info.serverId = id;
        info.version = version;
        info.addresses = addresses;
        info.reachable = true;
        return info;
    }
    static std::string line(const support::LoopbackServer& peer) { return "127.0.0.1 " + std::to_string(peer.port()); }
    std::multiset<std::string> idsAskedOf(const support::HttpFileServer& peer, size_t count) const {
        EXPECT_TRUE(peer.waitForRequests(count));
        std::multiset<std::string> ids;
        for (const auto& request : peer.requests()) ids.insert(askedFor(request));
        return ids;
    }

    support::HttpFileServer mFirst, mSecond;
    std::shared_ptr<maxVersionCompatible> mNewest = make();
};

using Ids = std::multiset<std::string>;

TEST_F(NewestServerList, AsksEveryReachableServerWithAnAddress) {
    mNewest->inputSystemServerListInfo({{"a", server("a", line(mFirst))}, {"b", server("b", line(mSecond))}});
    EXPECT_EQ(idsAskedOf(mFirst, 1), Ids{"a"});
    EXPECT_EQ(idsAskedOf(mSecond, 1), Ids{"b"});
}

TEST_F(NewestServerList, TakesIdAndVersionFromTheRecordNotFromTheKey) {
    mNewest->inputSystemServerListInfo({{"key", server("id of the record", line(mFirst))}});
    EXPECT_EQ(idsAskedOf(mFirst, 1), Ids{"id of the record"});
}

TEST_F(NewestServerList, SkipsAServerThatIsNotReachable) {
    Servers servers{{"a", server("a", line(mFirst))}, {"b", server("b", line(mSecond))}, {"c", server("c", "")}};
    servers["a"].reachable = false;
    mNewest->inputSystemServerListInfo(servers);
    EXPECT_EQ(idsAskedOf(mSecond, 2), (Ids{"b", "c"}));
    EXPECT_TRUE(mFirst.requests().empty());
}

TEST_F(NewestServerList, AsksForAServerWithoutAnAddressThroughTheFirstAddressMet) {
    mNewest->inputSystemServerListInfo({{"a", server("a", "")},
                                        {"b", server("b", line(mFirst))},
                                        {"c", server("c", line(mSecond))},
                                        {"d", server("d", "")}});
    EXPECT_EQ(idsAskedOf(mFirst, 3), (Ids{"a", "b", "d"}));
    EXPECT_EQ(idsAskedOf(mSecond, 1), Ids{"c"});
}

TEST_F(NewestServerList, AsksWithOwnVersionOfEachServer) {
    mNewest->inputSystemServerListInfo({{"a", server("a", line(mFirst), "1.0.0.6")},
                                        {"b", server("b", "", "1.0.0.7")},
                                        {"c", server("c", "", "1.0.0.1")}});
    EXPECT_EQ(idsAskedOf(mFirst, 1), Ids{"b"});
}

TEST_F(NewestServerList, OfNobodyDoesNothing) {
    mNewest->inputSystemServerListInfo({});
    EXPECT_EQ(mNewest->compatibleVersion(), "1.0.0.6");
}

TEST_F(NewestServerList, WithoutAnyAddressDoesNothing) {
    mNewest->inputSystemServerListInfo({{"a", server("a", "")}, {"b", server("b", "")}});
    EXPECT_EQ(mNewest->compatibleVersion(), "1.0.0.6");
}

TEST_F(NewestServerList, PassesOverAnAddressThatCannotBeRead) {
    mNewest->inputSystemServerListInfo(
        {{"a", server("a", "no address at all")}, {"b", server("b", line(mFirst))}, {"c", server("c", "")}});
    EXPECT_EQ(idsAskedOf(mFirst, 2), (Ids{"b", "c"}));
}

TEST_F(NewestServerList, TakesTheFirstOfAServersAddresses) {
    mNewest->inputSystemServerListInfo({{"a", server("a", line(mFirst) + "\n" + line(mSecond))}});
    EXPECT_EQ(idsAskedOf(mFirst, 1), Ids{"a"});
    EXPECT_TRUE(mSecond.requests().empty());
}

TEST_F(NewestServerList, AdoptsTheHighestOfWhatItsServersHold) {
    mFirst.serve(kPath, newer("4.0"));
    mSecond.serve(kPath, newer("5.0"));
    mNewest->inputSystemServerListInfo({{"a", server("a", line(mFirst))}, {"b", server("b", line(mSecond))}});
    EXPECT_TRUE(reaches(mNewest, "5.0"));
    EXPECT_TRUE(saves(mNewest, newer("5.0")));
}

TEST_F(NewestServerList, PassesThroughTheOperationThatAClassPutsInPlaceOfTheFetch) {
    class Recording : public maxVersionCompatible {
    public:
        using maxVersionCompatible::maxVersionCompatible;
        void inputSystemServerInfo(const NetAddr& address, const std::string& id, const std::string& version) override {
            mAsked.push_back(address.getIP() + ":" + std::to_string(address.getPort()) + " " + id + " " + version);
        }
        std::vector<std::string> mAsked;
    } recording(directory(), nullptr);
    recording.inputSystemServerListInfo(
        {{"a", server("a", "", "1.0")}, {"b", server("b", "host 80", "2.0")}, {"c", server("c", "", "3.0")}});
    EXPECT_EQ(recording.mAsked, (std::vector<std::string>{"host:80 b 2.0", "host:80 a 1.0", "host:80 c 3.0"}));
}

}  // namespace Tarnwick::OrvUpdate
