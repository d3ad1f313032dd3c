// What goes out, and what is refused.
#include "EnvironmentVariable.h"
#include "Fetch.h"
#include "HttpFileServer.h"

namespace {

using namespace support;

bool refuses(const std::shared_ptr<IOWorker>& worker, const std::shared_ptr<HTTPClientRequest>& request,
             const std::string& agent = "TestAgent") {
    bool called = false;
    auto client = std::make_shared<HTTPClient>(worker, agent);
    const bool accepted = client->request(
        request, [&](const auto&, const auto&, const auto&) { called = true; }, "");
    return !accepted && !called;
}

class RefusedRequests : public testing::Test {
protected:
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(1);
    const std::string mUrl = "http://127.0.0.1:1/";
};

TEST_F(RefusedRequests, WithoutAWorker) { EXPECT_TRUE(refuses(nullptr, makeRequest(mUrl))); }

TEST_F(RefusedRequests, WithoutARequest) { EXPECT_TRUE(refuses(mWorker, nullptr)); }

TEST_F(RefusedRequests, OfAWorkerThatHasEnded) {
    auto client = std::make_shared<HTTPClient>(mWorker, "TestAgent");
    mWorker.reset();
    EXPECT_FALSE(client->request(
        makeRequest(mUrl), [](const auto&, const auto&, const auto&) {}, ""));
}

TEST_F(RefusedRequests, OfAddressesThatAreNotHttp) {
    for (const char* url : {"", "host/path", "file:///etc/passwd", "ftp://127.0.0.1/", "http://"}) {
        EXPECT_TRUE(refuses(mWorker, makeRequest(url))) << url;
    }
}

TEST_F(RefusedRequests, OfMethodsThatAreNoToken) {
    for (const char* method : {"", "GE T", "GET\r\nX: y", "GET\n", "G\xC3\xBC", "GET "}) {
        EXPECT_TRUE(refuses(mWorker, makeRequest(mUrl, HTTPCacheType_Memory, method))) << method;
    }
}

TEST_F(RefusedRequests, OfAgentsWithALineEnd) {
    EXPECT_TRUE(refuses(mWorker, makeRequest(mUrl), "Orv\r\nX-Injected: 1"));
    EXPECT_TRUE(refuses(mWorker, makeRequest(mUrl), "Orv\n"));
    EXPECT_TRUE(refuses(mWorker, makeRequest(mUrl), std::string("Orv\0x", 5)));
}

TEST_F(RefusedRequests, OfAClientThatHasHadItsRequest) {
    HttpFileServer server;
    server.serve("/a", "one");
    server.hold("/a");
    Fetch fetch(server.url("/a"));
    ASSERT_TRUE(fetch.start(mWorker));
    ASSERT_TRUE(server.waitForHeld("/a"));
    int others = 0;
    const auto count = [&](const auto&, const auto&, const auto&) { ++others; };
    EXPECT_FALSE(fetch.client->request(makeRequest(server.url("/a")), count, ""));
    server.release("/a");
    ASSERT_TRUE(fetch.done.wait());
    EXPECT_FALSE(fetch.client->request(makeRequest(server.url("/a")), count, ""));
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(others, 0);
}

TEST_F(RefusedRequests, LeaveTheClientItsOneRequest) {
    HttpFileServer server;
    server.serve("/a", "one");
    auto client = std::make_shared<HTTPClient>(mWorker, "TestAgent");
    Event done;
    const auto finish = [&](const auto&, const auto&, const auto&) { done.set(); };
    EXPECT_FALSE(client->request(makeRequest("ftp://127.0.0.1/"), finish, ""));
    EXPECT_TRUE(client->request(makeRequest(server.url("/a")), finish, ""));
    EXPECT_TRUE(done.wait());
}

TEST_F(RefusedRequests, LetGoOfTheirClosures) {
    const auto held = std::make_shared<int>(1);
    auto client = std::make_shared<HTTPClient>(mWorker, "TestAgent");
    mWorker.reset();
    EXPECT_FALSE(client->request(
        makeRequest(mUrl), [held](const auto&, const auto&, const auto&) {}, ""));
    EXPECT_EQ(held.use_count(), 1);
}

class SentRequests : public testing::Test {
protected:
    SentRequests() { mServer.serve("/a", "ok"); }
    HttpRequest sent(Fetch& fetch) {
        fetch.run(mWorker);
        const auto requests = mServer.requests();
        return requests.empty() ? HttpRequest() : requests.back();
    }
    HttpFileServer mServer;
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(1);
};

TEST_F(SentRequests, BearMethodTargetHostAndAgent) {
    Fetch fetch(mServer.url("/a?platform=0&softversion=1.2-oem3&actived=1"));
    const auto request = sent(fetch.agent("OrvDownload"));
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.target, "/a?platform=0&softversion=1.2-oem3&actived=1");
    EXPECT_EQ(request.header("Host"), mServer.host());
    EXPECT_EQ(request.header("User-Agent"), "OrvDownload");
    EXPECT_EQ(request.headerCount("User-Agent"), 1U);
}

TEST_F(SentRequests, AskForNoEncodingAndSendNoCookie) {
    mServer.serve("/cookie", [](const HttpRequest&) {
        return HttpFileServer::Response{200, "ok", {{"Set-Cookie", "id=1; Path=/"}}};
    });
    Fetch first(mServer.url("/cookie"));
    Fetch second(mServer.url("/cookie"));
    first.run(mWorker);
    const auto request = sent(second);
    EXPECT_EQ(request.headerCount("Accept-Encoding"), 0U);
    EXPECT_EQ(request.headerCount("Cookie"), 0U);
    EXPECT_EQ(request.headerCount("Authorization"), 0U);
}

TEST_F(SentRequests, WithAnEmptyAgentHaveNoAgentField) {
    Fetch fetch(mServer.url("/a"));
    EXPECT_EQ(sent(fetch.agent("")).headerCount("User-Agent"), 0U);
    EXPECT_EQ(fetch.status(), 200);
}

TEST_F(SentRequests, WithoutABodyHaveNoLength) {
    Fetch fetch(mServer.url("/a"));
    const auto request = sent(fetch);
    EXPECT_EQ(request.headerCount("Content-Length"), 0U);
    EXPECT_EQ(request.headerCount("Transfer-Encoding"), 0U);
}

TEST_F(SentRequests, ByGetCarryTheirBodyWithALength) {
    Fetch fetch(mServer.url("/a"));
    const auto request = sent(fetch.body("{\"server").body("id\":\"7\"}"));
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.body, "{\"serverid\":\"7\"}");
    EXPECT_EQ(request.header("Content-Length"), "16");
    EXPECT_EQ(request.headerCount("Content-Type"), 0U);
}

TEST_F(SentRequests, SendALargeBodyWithoutAskingFirst) {
    const std::string body(3 << 20, 'u');
    Fetch fetch(mServer.url("/a"), HTTPCacheType_Memory, "POST");
    const auto request = sent(fetch.body(body));
    EXPECT_EQ(request.method, "POST");
    EXPECT_TRUE(request.body == body);
    EXPECT_EQ(request.headerCount("Expect"), 0U);
    EXPECT_EQ(fetch.status(), 200);
}

TEST_F(SentRequests, SendTheMethodAsItStands) {
    for (const char* method : {"POST", "DELETE", "get", "X-ORV"}) {
        Fetch fetch(mServer.url("/a"), HTTPCacheType_Memory, method);
        EXPECT_EQ(sent(fetch).method, method);
        EXPECT_EQ(fetch.content(), "ok");
    }
}

TEST_F(SentRequests, ByHeadExpectNoBody) {
    Fetch fetch(mServer.url("/a"), HTTPCacheType_Memory, "HEAD");
    EXPECT_EQ(sent(fetch).method, "HEAD");
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_EQ(fetch.field("Content-Length"), "2");
    EXPECT_EQ(fetch.content(), "");
}

TEST_F(SentRequests, UseAKeptConnectionAgain) {
    Fetch first(mServer.url("/a"));
    Fetch second(mServer.url("/a"));
    first.run(mWorker);
    EXPECT_EQ(sent(second).connection, 1U);
}

TEST_F(SentRequests, MakeANewConnectionWhenTheKeptOneIsDead) {
    auto other = std::make_unique<HttpFileServer>();
    other->serve("/b", "b");
    Fetch first(other->url("/b"));
    first.run(mWorker);
    ASSERT_EQ(first.content(), "b");
    other.reset();
    Fetch second(mServer.url("/a"));
    EXPECT_EQ(sent(second).path(), "/a");
    EXPECT_EQ(second.status(), 200);
}

TEST_F(SentRequests, IgnoreTheProxyOfTheEnvironment) {
    const EnvironmentVariable proxy("http_proxy", "http://127.0.0.1:1/");
    const EnvironmentVariable all("ALL_PROXY", "http://127.0.0.1:1/");
    Fetch fetch(mServer.url("/a"));
    EXPECT_EQ(sent(fetch).target, "/a");
    EXPECT_EQ(fetch.status(), 200);
}

TEST(FailedConnections, EndWithStatus0) {
    uint16_t port = 0;
    {
        HttpFileServer gone;
        port = gone.port();
    }
    Fetch fetch("http://127.0.0.1:" + std::to_string(port) + "/");
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_EQ(fetch.completions, 1);
}

}  // namespace
