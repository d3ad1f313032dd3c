// Fetching newer documents from peers over HTTP.
#include "BadHttpServer.h"
#include "NewestFixture.h"

namespace Tarnwick::OrvUpdate {

class NewestFetch : public Newest {
protected:
    void ask(const support::LoopbackServer& peer) { mNewest->inputSystemServerInfo(addressOf(peer), "peer", "9.0"); }
    /// Asks another peer, and returns when its document has come.
    void askAnother(const std::string& version) {
        mOther.serve(kPath, newer(version));
        mNewest->inputSystemServerInfo(addressOf(mOther), "other", version);
        EXPECT_TRUE(reaches(mNewest, version));
    }
    /// Returns when the peer's answers, which end with their connections, have had their effect: one thread runs all
    /// completions, and one that comes later has been read, as the log tells.
    void settle(const support::LoopbackServer& peer, size_t answers = 1) {
        ASSERT_TRUE(peer.waitForRequests(answers));
        ASSERT_TRUE(peer.waitForNoConnection());
        mOther.serve(kPath, documentOf(kClients, rule(kClients, {"1.0", "2.0", R"(["BeOS"])"}), "0.1"));
        ask(mOther);
        ASSERT_TRUE(support::eventually([&] { return mLog.has(2, "Unknown System!"); }));
        EXPECT_EQ(mLog.entries().size(), 1u);
    }
    void expectUnchanged() {
        EXPECT_EQ(mNewest->getVersionCompatible(), mAtFirst);
        EXPECT_EQ(mNewest->compatibleVersion(), "1.0.0.6");
        EXPECT_EQ(fileText(), kDefaultDocument);
    }
    /// Returns when no completion runs any more; requests that still run come to nothing.
    void endEverything() {
        const std::weak_ptr<maxVersionCompatible> weak = mNewest;
        mNewest.reset();
        EXPECT_TRUE(support::eventually([&] { return weak.expired(); }));
        mOneThread.reset();
    }

    const support::LogRecorder mLog;
    support::HttpFileServer mPeer;
    support::HttpFileServer mOther;
    support::BadHttpServer mClosing;  // its connections end with the answer
    std::shared_ptr<IOWorker> mOneThread = IOWorker::create(1);
    std::shared_ptr<maxVersionCompatible> mNewest = std::make_shared<maxVersionCompatible>(directory(), mOneThread);
    const std::shared_ptr<IVersionCompatible> mAtFirst = mNewest->getVersionCompatible();
};

TEST_F(NewestFetch, TakesANewerDocumentAndSavesItAsReceived) {
    const std::string text = "\t" + newer("9.0") + "\r\n";
    mPeer.serve(kPath, text);
    ask(mPeer);
    ASSERT_TRUE(reaches(mNewest, "9.0"));
    EXPECT_TRUE(saves(mNewest, text));
    EXPECT_TRUE(
        mNewest->checkClientToSystemVersionIsCompatible(VersionType_Client, component("7.1"), component("7.2")));
}

TEST_F(NewestFetch, SendsAGetWithTheServersIdInItsBody) {
    mPeer.serve(kPath, newer("9.0"));
    mNewest->inputSystemServerInfo(addressOf(mPeer), "server \"7\"\n", "9.0");
    ASSERT_TRUE(mPeer.waitForRequests(1));
    const auto request = mPeer.requests().front();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.target, kPath);
    EXPECT_EQ(request.header("User-Agent"), "orvSDK");
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    JsonValue expected;
    expected["serverid"] = "server \"7\"\n";
    EXPECT_EQ(request.body, support::write(expected));
}

TEST_F(NewestFetch, AsksNothingOfAnInvalidAddress) {
    mNewest->inputSystemServerInfo(NetAddr(), "peer", "9.0");
    mNewest->inputSystemServerInfo(NetAddr("", 80), "peer", "9.0");
    mNewest->inputSystemServerInfo(NetAddr("127.0.0.1", 0), "peer", "9.0");
    EXPECT_EQ(mNewest->compatibleVersion(), "1.0.0.6");
}

struct NoFetch {
    const char* name;
    const char* version;
};

class NewestNoFetch : public NewestFetch, public testing::WithParamInterface<NoFetch> {};

TEST_P(NewestNoFetch, AsksNothingOfAPeerThatHasNoNewerDocument) {
    mNewest->inputSystemServerInfo(addressOf(mPeer), "peer", GetParam().version);
    askAnother("1.0.0.7");
    EXPECT_TRUE(mPeer.requests().empty());
}

INSTANTIATE_TEST_SUITE_P(Of, NewestNoFetch,
                         testing::Values(NoFetch{"TheSameVersion", "1.0.0.6"}, NoFetch{"ALowerVersion", "1.0.0.5"},
                                         NoFetch{"NoVersion", ""}, NoFetch{"AVersionThatCannotBeRead", "newest"}),
                         nameOf);

TEST_F(NewestFetch, DropsAnAnswerOfTheSameVersion) {
    mClosing.script(kPath, support::BadScript::status(200, newer("1.0.0.6")));
    ask(mClosing);
    settle(mClosing);
    expectUnchanged();
}

TEST_F(NewestFetch, DropsAnAnswerOfALowerVersion) {
    mClosing.script(kPath, support::BadScript::status(200, newer("1.0.0.5")));
    ask(mClosing);
    settle(mClosing);
    expectUnchanged();
}

TEST_F(NewestFetch, BelievesTheDocumentNotWhatWasToldOfIt) {
    mPeer.serve(kPath, newer("5.0"));
    ask(mPeer);
    EXPECT_TRUE(reaches(mNewest, "5.0"));
}

struct FailedAnswer {
    const char* name;
    int status;
    std::string body;
};

class NewestFailedFetch : public NewestFetch, public testing::WithParamInterface<FailedAnswer> {};

TEST_P(NewestFailedFetch, ChangesNothingAndIsNotLogged) {
    mClosing.script(kPath, support::BadScript::status(GetParam().status, GetParam().body));
    ask(mClosing);
    settle(mClosing);
    expectUnchanged();
}

TEST_P(NewestFailedFetch, IsTriedAgainNextTime) {
    mClosing.script(kPath, support::BadScript::status(GetParam().status, GetParam().body));
    ask(mClosing);
    settle(mClosing);
    mClosing.script(kPath, support::BadScript::status(200, newer("9.0")));
    ask(mClosing);
    EXPECT_TRUE(reaches(mNewest, "9.0"));
    EXPECT_EQ(mClosing.requests().size(), 2u);
}

INSTANTIATE_TEST_SUITE_P(With, NewestFailedFetch,
                         testing::Values(FailedAnswer{"401", 401, newer("8.0")}, FailedAnswer{"408", 408, newer("8.0")},
                                         FailedAnswer{"403", 403, newer("8.0")}, FailedAnswer{"404", 404, newer("8.0")},
                                         FailedAnswer{"500", 500, newer("8.0")}, FailedAnswer{"503", 503, newer("8.0")},
                                         FailedAnswer{"506", 506, newer("8.0")}, FailedAnswer{"201", 201, newer("8.0")},
                                         FailedAnswer{"206", 206, newer("8.0")}, FailedAnswer{"200AndNoBody", 200, ""},
                                         FailedAnswer{"200AndNoDocument", 200, "<html></html>"},
                                         FailedAnswer{"200AndNoVersion", 200, R"({"ClientCompatibles":[]})"}),
                         nameOf);

TEST_F(NewestFetch, AsksNobodyOverHttpsOnStatus506) {
    mClosing.script(kPath, support::BadScript::status(506, newer("8.0")));
    ask(mClosing);
    settle(mClosing);
    EXPECT_EQ(mClosing.requests().size(), 1u);
    EXPECT_TRUE(mClosing.waitForNoConnection());
    expectUnchanged();
}

struct BrokenPeer {
    const char* name;
    std::function<support::BadScript(const std::string&)> script;
};

class NewestBrokenPeer : public NewestFetch, public testing::WithParamInterface<BrokenPeer> {};

TEST_P(NewestBrokenPeer, ChangesNothingAndHoldsUpNobody) {
    support::BadHttpServer broken;
    broken.script(kPath, GetParam().script(newer("8.0")));
    ask(broken);
    ASSERT_TRUE(broken.waitForRequests(1));
    askAnother("7.0");
    EXPECT_TRUE(saves(mNewest, newer("7.0")));
    endEverything();
    EXPECT_EQ(fileText(), newer("7.0"));
}

INSTANTIATE_TEST_SUITE_P(
    That, NewestBrokenPeer,
    testing::Values(
        BrokenPeer{"ClosesAtOnce", [](const std::string&) { return support::BadScript::closeAtOnce(); }},
        BrokenPeer{"CutsTheBody", [](const std::string& text) { return support::BadScript::closeAt(text, 20); }},
        BrokenPeer{"ResetsInTheBody", [](const std::string& text) { return support::BadScript::resetAt(text, 20); }},
        BrokenPeer{"HangsBeforeItsFields", [](const std::string&) { return support::BadScript::hangBeforeHeaders(); }},
        BrokenPeer{"HangsInTheBody", [](const std::string& text) { return support::BadScript::hangInBody(text, 20); }},
        BrokenPeer{"NeverEndsItsBody", [](const std::string&) { return support::BadScript::endlessBody(); }},
        BrokenPeer{"NeverEndsItsFields", [](const std::string&) { return support::BadScript::endlessHeaders(); }},
        BrokenPeer{"SpeaksNoHttp", [](const std::string&) { return support::BadScript::garbage(); }}),
    nameOf);

TEST_F(NewestFetch, OfAPortThatNobodyListensOnChangesNothing) {
    NetAddr gone;
    {
        const support::HttpFileServer closed;
        gone = addressOf(closed);
    }
    mNewest->inputSystemServerInfo(gone, "gone", "9.0");
    settle(mClosing, 0);
    expectUnchanged();
}

TEST_F(NewestFetch, WithoutAWorkerIsNotBegun) {
    mNewest = std::make_shared<maxVersionCompatible>(directory(), nullptr);
    ask(mPeer);
    EXPECT_EQ(mNewest->compatibleVersion(), "1.0.0.6");
    EXPECT_TRUE(mPeer.requests().empty());
}

TEST_F(NewestFetch, HoldsNoLockWhileAPeerIsSlow) {
    mPeer.serve(kPath, newer("9.0"));
    mPeer.hold(kPath);
    ask(mPeer);
    ASSERT_TRUE(mPeer.waitForHeld(kPath));
    EXPECT_EQ(mNewest->compatibleVersion(), "1.0.0.6");
    EXPECT_TRUE(mNewest->checkServerToServerVersionIsCompatible(component("1.0"), component("1.0")));
    mNewest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("3.0")));
    EXPECT_EQ(mNewest->compatibleVersion(), "3.0");
    mPeer.release(kPath);
    EXPECT_TRUE(reaches(mNewest, "9.0"));
}

TEST_F(NewestFetch, KeepsTheHigherOfTwoThatRunAtOnceWhicheverEndsFirst) {
    mNewest = std::make_shared<maxVersionCompatible>(directory(), mWorker);
    for (const bool higherFirst : {true, false}) {
        const std::string low = higherFirst ? "2.0" : "4.0", high = higherFirst ? "3.0" : "5.0";
        support::HttpFileServer lower, higher;
        lower.serve(kPath, newer(low));
        higher.serve(kPath, newer(high));
        for (auto* peer : {&lower, &higher}) {
            peer->hold(kPath);
            mNewest->inputSystemServerInfo(addressOf(*peer), "peer", "9.0");
            ASSERT_TRUE(peer->waitForHeld(kPath));
        }
        auto& first = higherFirst ? higher : lower;
        auto& last = higherFirst ? lower : higher;
        first.release(kPath);
        ASSERT_TRUE(reaches(mNewest, higherFirst ? high : low));
        last.release(kPath);
        EXPECT_TRUE(reaches(mNewest, high));
        EXPECT_TRUE(saves(mNewest, newer(high)));
    }
}

TEST_F(NewestFetch, DropsAnAnswerThatComesWhenTheObjectIsGone) {
    mPeer.serve(kPath, newer("9.0"));
    mPeer.hold(kPath);
    ask(mPeer);
    ASSERT_TRUE(mPeer.waitForHeld(kPath));
    const std::weak_ptr<maxVersionCompatible> weak = mNewest;
    mNewest.reset();
    EXPECT_TRUE(weak.expired());  // the request does not keep it alive
    mPeer.release(kPath);
    mOneThread.reset();  // waits for the completion
    EXPECT_EQ(fileText(), kDefaultDocument);
}

TEST_F(NewestFetch, ManyAtOnceEndWithTheHighest) {
    std::list<support::HttpFileServer> peers(12);
    mNewest = std::make_shared<maxVersionCompatible>(directory(), mWorker);
    int version = 0;
    for (auto& peer : peers) peer.serve(kPath, newer("2." + std::to_string(++version)));
    for (auto& peer : peers) mNewest->inputSystemServerInfo(addressOf(peer), "peer", "9.0");
    EXPECT_TRUE(reaches(mNewest, "2.12"));
    EXPECT_TRUE(saves(mNewest, newer("2.12")));
}

}  // namespace Tarnwick::OrvUpdate
