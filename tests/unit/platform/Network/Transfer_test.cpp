// What comes back from servers, good and bad.
#include "Network/Transfer.h"

#include "BadHttpServer.h"
#include "Fetch.h"
#include "HttpFileServer.h"

namespace {

using namespace support;
using namespace std::chrono_literals;

const std::string kBody = "the body of a package, as it were";

BadScript raw(const std::string& bytes) { return BadScript().send(bytes); }

struct Answer {
    const char* name;
    BadScript script;
    int status;
    std::string body;
};

class Answers : public testing::TestWithParam<Answer> {
protected:
    Answers() { mServer.script("/a", GetParam().script); }
    BadHttpServer mServer;
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(1);
};

TEST_P(Answers, AreGathered) {
    Fetch fetch(mServer.url("/a"));
    fetch.run(mWorker);
    EXPECT_EQ(fetch.status(), GetParam().status);
    EXPECT_EQ(fetch.content(), GetParam().body);
    EXPECT_EQ(fetch.completions, 1);
}

TEST_P(Answers, AreStreamed) {
    Fetch fetch(mServer.url("/a"), HTTPCacheType_Stream);
    fetch.run(mWorker);
    EXPECT_EQ(fetch.status(), GetParam().status);
    EXPECT_EQ(fetch.content(), "");
    if (GetParam().status != 0) {
        EXPECT_EQ(fetch.streamed, GetParam().body);
    }
    EXPECT_EQ(fetch.completions, 1);
}

const std::string kGzipField = "Content-Encoding: gzip\r\nContent-Length: 3\r\n\r\nraw";

INSTANTIATE_TEST_SUITE_P(
    Whole, Answers,
    testing::Values(
        Answer{"RightLength", BadScript::status(200, kBody), 200, kBody},
        Answer{"NoLengthEndsWithTheConnection", BadScript::noLength(kBody), 200, kBody},
        Answer{"EmptyBody", BadScript::empty(200), 200, ""},
        Answer{"NoContent", raw("HTTP/1.1 204 No\r\n\r\n"), 204, ""},
        Answer{"MoreThanItsLengthEndsAtTheLength", BadScript::wrongLength(kBody, 8), 200, kBody.substr(0, 8)},
        Answer{"Chunked", BadScript::chunked(kBody, 7), 200, kBody},
        Answer{"ChunkedWithATrailer",
               raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n0\r\nX-After: 1\r\n\r\n"), 200,
               "ab"},
        Answer{"ChunkedLongerThanItsLengthField",
               raw("HTTP/1.1 200 OK\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n"),
               200, "abc"},
        Answer{"InterimResponsesFirst", BadScript::interimFirst(kBody), 200, kBody},
        Answer{"LargeField", BadScript::hugeHeader(60000, kBody), 200, kBody},
        Answer{"EncodedBodyIsNotUndone", raw("HTTP/1.1 200 OK\r\n" + kGzipField), 200, "raw"},
        Answer{"OldProtocol", raw("HTTP/1.0 200 OK\r\n\r\nold"), 200, "old"},
        Answer{"SlowDrip", BadScript::slowDrip(kBody, 5, 5ms), 200, kBody},
        Answer{"RedirectWithoutAPlace", BadScript::status(302, "lost"), 302, "lost"},
        Answer{"Unauthorized", BadScript::status(401, "who"), 401, "who"},
        Answer{"NotFound", BadScript::status(404, "gone"), 404, "gone"},
        Answer{"ServerSaysTimeout", BadScript::status(408, "late"), 408, "late"},
        Answer{"ServerError", BadScript::status(500, "oops"), 500, "oops"}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Broken, Answers,
    testing::Values(Answer{"LessThanItsLength", BadScript::wrongLength(kBody, 1000), 0, ""},
                    Answer{"ClosedInBody", BadScript::closeAt(kBody, 10), 0, ""},
                    Answer{"ClosedBeforeBody", BadScript::closeAt(kBody, 0), 0, ""},
                    Answer{"ResetInBody", BadScript::resetAt(kBody, 10), 0, ""},
                    Answer{"ClosedAtOnce", BadScript::closeAtOnce(), 0, ""},
                    Answer{"ClosedInHeader", raw("HTTP/1.1 200 OK\r\nServer: x\r\nContent-Le"), 0, ""},
                    Answer{"ClosedBetweenFields", raw("HTTP/1.1 200 OK\r\nServer: x\r\n"), 0, ""},
                    Answer{"ClosedInStatusLine", raw("HTTP/1.1 20"), 0, ""},
                    Answer{"Garbage", BadScript::garbage(), 0, ""},
                    Answer{"ChunkedCutShort", BadScript::chunkedCutShort(kBody, 7), 0, ""},
                    Answer{"ChunkOfNoSize", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"), 0, ""},
                    Answer{"NegativeLength", raw("HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nabc"), 0, ""},
                    Answer{"StatusLineWithoutStatus", raw("HTTP/200 OK\r\nContent-Length: 3\r\n\r\nabc"), 0, ""},
                    Answer{"StatusOfFourDigits", raw("HTTP/1.1 2000 OK\r\nContent-Length: 3\r\n\r\nabc"), 0, ""},
                    Answer{"StatusThatIsNoNumber", raw("HTTP/1.1 2x0 OK\r\nContent-Length: 3\r\n\r\nabc"), 0, ""},
                    Answer{"OtherVersion", raw("HTTP/2 200 OK\r\nContent-Length: 3\r\n\r\nabc"), 0, ""},
                    Answer{"LengthBeyondAnyNumber",
                           raw("HTTP/1.1 200 OK\r\nContent-Length: 18446744073709551616\r\n\r\nabc"), 0, ""},
                    Answer{"TwoLengthsOfWhichTheSecondHolds",
                           raw("HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 3\r\n\r\nabc"), 0, ""},
                    Answer{"HugeField", BadScript::hugeHeader(2000000, kBody), 0, ""},
                    Answer{"EndlessHeader", BadScript::endlessHeaders(), 0, ""},
                    Answer{"ClosedInHeaderAfterAnInterimResponse",
                           raw("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n"), 0, ""},
                    Answer{"OnlyInterimResponses", raw("HTTP/1.1 100 Continue\r\n\r\n"), 0, ""}),
    [](const auto& test) { return test.param.name; });

// Redirects

struct Redirect {
    const char* name;
    int code;
};

class RedirectCodes : public testing::TestWithParam<Redirect> {};

TEST_P(RedirectCodes, AreFollowed) {
    BadHttpServer server;
    server.script("/from", BadScript::redirect("/to", GetParam().code));
    server.script("/to", BadScript::status(200, kBody));
    Fetch fetch(server.url("/from"));
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_EQ(fetch.content(), kBody);
}

INSTANTIATE_TEST_SUITE_P(Codes, RedirectCodes,
                         testing::Values(Redirect{"MovedPermanently", 301}, Redirect{"Found", 302},
                                         Redirect{"SeeOther", 303}, Redirect{"Temporary", 307},
                                         Redirect{"Permanent", 308}),
                         [](const auto& test) { return test.param.name; });

class Redirects : public testing::Test {
protected:
    BadHttpServer mServer;
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(1);
};

TEST_F(Redirects, FiveAreFollowed) {
    Fetch fetch(mServer.url(mServer.redirectChain("chain", 5, kBody)));
    fetch.run(mWorker);
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_EQ(fetch.content(), kBody);
}

TEST_F(Redirects, TheSixthFailsTheRequest) {
    Fetch fetch(mServer.url(mServer.redirectChain("chain", 6, kBody)), HTTPCacheType_Stream);
    fetch.run(mWorker);
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_EQ(fetch.streamed, "");
    EXPECT_EQ(mServer.requests().size(), 6U);
}

TEST_F(Redirects, ALoopFails) {
    mServer.script("/a", BadScript::redirect("/b"));
    mServer.script("/b", BadScript::redirect("/a"));
    Fetch fetch(mServer.url("/a"));
    fetch.run(mWorker);
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_EQ(mServer.requests().size(), 6U);
}

class RedirectTargets : public testing::TestWithParam<const char*> {};

TEST_P(RedirectTargets, ThatAreNotHttpAreRefused) {
    BadHttpServer server;
    server.script("/a", BadScript::redirect(GetParam()));
    Fetch fetch(server.url("/a"), HTTPCacheType_Stream);
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_EQ(fetch.streamed, "");
}

INSTANTIATE_TEST_SUITE_P(Schemes, RedirectTargets,
                         testing::Values("file:///etc/passwd", "ftp://127.0.0.1/a", "gopher://127.0.0.1/a",
                                         "dict://127.0.0.1/a"),
                         [](const auto& test) {
                             return std::string(test.param).substr(0, std::string(test.param).find(':'));
                         });

TEST_F(Redirects, BodyAndFieldsAreThoseOfTheFinalResponse) {
    mServer.script("/a",
                   raw("HTTP/1.1 302 Found\r\nLocation: /b\r\nX-From: redirect\r\nContent-Length: 5\r\n\r\nmoved"));
    mServer.script("/b", raw("HTTP/1.1 200 OK\r\nX-To: final\r\nContent-Length: 2\r\n\r\nok"));
    Fetch fetch(mServer.url("/a"), HTTPCacheType_Stream);
    fetch.run(mWorker);
    EXPECT_EQ(fetch.streamed, "ok");
    ASSERT_TRUE(fetch.pieceHeader);
    EXPECT_EQ(fetch.pieceHeader->statuscode, 200);
    EXPECT_EQ(fetch.pieceHeader->header("X-To", 0).toString(), "final");
    EXPECT_TRUE(fetch.pieceHeader->header("X-From", 0).isNull());
    EXPECT_TRUE(fetch.pieceHeader->header("Location", 0).isNull());
}

TEST_F(Redirects, ToAnotherServerWork) {
    HttpFileServer other;
    other.serve("/b", kBody);
    mServer.script("/a", BadScript::redirect(other.url("/b")));
    Fetch fetch(mServer.url("/a"));
    fetch.run(mWorker);
    EXPECT_EQ(fetch.content(), kBody);
}

TEST_F(Redirects, CarryMethodAndBodyAlong) {
    HttpFileServer other;
    other.serve("/b", "ok");
    mServer.script("/a", BadScript::redirect(other.url("/b")));
    Fetch fetch(mServer.url("/a"));
    fetch.body("{\"serverid\":\"1\"}").run(mWorker);
    EXPECT_EQ(fetch.status(), 200);
    ASSERT_EQ(other.requests().size(), 1U);
    EXPECT_EQ(other.requests()[0].method, "GET");
    EXPECT_EQ(other.requests()[0].body, "{\"serverid\":\"1\"}");
}

// Fields

TEST(ResponseFields, OfInterimResponsesAndTrailersAreLeftOut) {
    BadHttpServer server;
    server.script("/interim", BadScript::interimFirst(kBody));
    server.script("/trailer",
                  raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n0\r\nX-After: 1\r\n\r\n"));
    const auto worker = IOWorker::create(1);
    Fetch interim(server.url("/interim"));
    EXPECT_EQ(interim.run(worker).field("X-Interim"), "");
    EXPECT_EQ(interim.field("Content-Length"), std::to_string(kBody.size()));
    Fetch trailer(server.url("/trailer"));
    EXPECT_EQ(trailer.run(worker).field("X-After"), "");
    EXPECT_EQ(trailer.field("Transfer-Encoding"), "chunked");
}

TEST(ResponseFields, ComeRepeatedInOrder) {
    BadHttpServer server;
    server.script("/a", raw("HTTP/1.1 200 OK\r\nVia: one\r\nvia:two\r\nContent-Length: 0\r\n\r\n"));
    Fetch fetch(server.url("/a"));
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.field("VIA", 0), "one");
    EXPECT_EQ(fetch.field("VIA", 1), "two");
    EXPECT_EQ(fetch.field("VIA", 2), "");
}

TEST(ResponseFields, AreKnownBeforeTheFirstPieceOfBody) {
    HttpFileServer server;
    server.serve("/a", kBody);
    Fetch fetch(server.url("/a"));
    std::atomic<uint64_t> length{0};
    fetch.stream([&](const std::string&) { length = fetch.pieceHeader->header("Content-Length", 0).toUint64(); });
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(length, kBody.size());
    EXPECT_EQ(fetch.response->header()->statuscode, 200);
}

// Time-outs

struct Silence {
    const char* name;
    BadScript script;
};

class Silences : public testing::TestWithParam<Silence> {};

TEST_P(Silences, EndWith408) {
    BadHttpServer server;
    server.script("/a", GetParam().script);
    for (const int cacheType : {HTTPCacheType_Memory, HTTPCacheType_Stream}) {
        Fetch fetch(server.url("/a"), cacheType);
        const auto before = std::chrono::steady_clock::now();
        fetch.timeout(100).run(IOWorker::create(1));
        EXPECT_EQ(fetch.status(), 408);
        EXPECT_EQ(fetch.content(), "");
        EXPECT_EQ(fetch.completions, 1);
        EXPECT_GE(std::chrono::steady_clock::now() - before, 100ms);
    }
}

INSTANTIATE_TEST_SUITE_P(Where, Silences,
                         testing::Values(Silence{"BeforeTheHeader", BadScript::hangBeforeHeaders()},
                                         Silence{"InTheHeader", BadScript::hangInHeaders()},
                                         Silence{"BeforeTheBody", BadScript::hangInBody(kBody, 0)},
                                         Silence{"InTheBody", BadScript::hangInBody(kBody, 10)},
                                         Silence{"InAChunk", BadScript::chunkedCutShort(kBody, 7).hang()}),
                         [](const auto& test) { return test.param.name; });

class Timeouts : public testing::Test {
protected:
    BadHttpServer mServer;
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(1);
};

TEST_F(Timeouts, GovernTheTimeToConnect) {
    // The server waits for a request in plain text, so the handshake that makes the connection never ends.
    Fetch fetch("https://" + mServer.host() + "/a");
    fetch.timeout(100).run(mWorker);
    EXPECT_EQ(fetch.status(), 408);
}

TEST_F(Timeouts, DoNotCutABodyThatKeepsMoving) {
    mServer.script("/a", BadScript::slowDrip(std::string(15, 'x'), 1, 40ms));
    Fetch fetch(mServer.url("/a"));
    fetch.timeout(400).run(mWorker);
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_EQ(fetch.content(), std::string(15, 'x'));
}

TEST_F(Timeouts, CountEveryByteOfAHeaderThatDrips) {
    mServer.script("/a", BadScript().drip("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok", 3, 40ms));
    Fetch fetch(mServer.url("/a"));
    fetch.timeout(400).run(mWorker);
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_EQ(fetch.content(), "ok");
}

TEST_F(Timeouts, OfZeroMeanNone) {
    mServer.script("/a", BadScript::slowDrip("ab", 1, 200ms));
    Fetch fetch(mServer.url("/a"));
    fetch.timeout(0).run(mWorker);
    EXPECT_EQ(fetch.content(), "ab");
}

TEST_F(Timeouts, EndTheConnection) {
    mServer.script("/a", BadScript::hangInBody(kBody, 10));
    Fetch fetch(mServer.url("/a"));
    fetch.timeout(80).run(mWorker);
    EXPECT_EQ(fetch.status(), 408);
    EXPECT_TRUE(mServer.waitForNoConnection());
}

TEST_F(Timeouts, DoNotCountTheTimeThatACallbackTakes) {
    HttpFileServer server;
    server.serve("/a", kBody);
    server.hold("/a");
    Fetch fetch(server.url("/a"));
    std::atomic<bool> first{true};
    fetch.stream([&](const std::string&) {
        if (first.exchange(false)) std::this_thread::sleep_for(400ms);
        server.release("/a");
    });
    fetch.timeout(200).run(mWorker);
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_EQ(fetch.streamed, kBody);
}

TEST_F(Timeouts, DoNotStrikeARequestWhoseThreadIsHeldUp) {
    HttpFileServer server;
    server.serve("/slow", kBody);
    server.serve("/other", kBody);
    server.hold("/other");
    Fetch other(server.url("/other"));
    other.timeout(300);
    ASSERT_TRUE(other.start(mWorker));
    ASSERT_TRUE(server.waitForHeld("/other"));
    Fetch slow(server.url("/slow"));
    std::atomic<bool> first{true};
    slow.stream([&](const std::string&) {
        server.release("/other");
        if (first.exchange(false)) std::this_thread::sleep_for(600ms);
    });
    slow.run(mWorker);
    ASSERT_TRUE(other.done.wait());
    EXPECT_EQ(slow.status(), 200);
    EXPECT_EQ(other.status(), 200);
}

// Sizes

TEST(LargeBodies, AreStreamedWhole) {
    HttpFileServer server;
    std::string body(8 << 20, '\0');
    for (size_t i = 0; i < body.size(); ++i) body[i] = static_cast<char>(i * 31 + (i >> 11));
    server.serve("/a", body);
    Fetch fetch(server.url("/a"), HTTPCacheType_Stream);
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_TRUE(fetch.streamed == body);
}

TEST(LargeBodies, OfExactly64MiBAreGathered) {
    HttpFileServer server;
    server.serve("/a", std::string(64 << 20, 'g'));
    Fetch fetch(server.url("/a"));
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 200);
    EXPECT_EQ(fetch.response->content()->readAll().size(), size_t{64} << 20);
}

TEST(LargeBodies, OfOneByteMoreFailTheGathering) {
    HttpFileServer server;
    server.serve("/a", std::string((64 << 20) + 1, 'g'));
    Fetch fetch(server.url("/a"));
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_EQ(fetch.content(), "");
}

TEST(LargeBodies, WithoutEndFailTheGathering) {
    BadHttpServer server;
    server.script("/a", BadScript::endlessBody());
    Fetch fetch(server.url("/a"));
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_TRUE(server.waitForNoConnection());
}

TEST(LargeBodies, GoToTheReceiverEvenWhenTheRequestGathers) {
    HttpFileServer server;
    server.serve("/a", kBody);
    Fetch fetch(server.url("/a"), HTTPCacheType_Memory);
    fetch.stream([](const std::string&) {}).run(IOWorker::create(1));
    EXPECT_EQ(fetch.streamed, kBody);
    EXPECT_EQ(fetch.content(), "");
}

}  // namespace
