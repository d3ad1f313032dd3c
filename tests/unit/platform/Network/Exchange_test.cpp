// Which callbacks run, on which threads, and what they may do to their client.
#include "Network/Exchange.h"

#include <future>

#include "BadHttpServer.h"
#include "Fetch.h"
#include "HttpFileServer.h"

namespace {

using namespace support;

class Exchanges : public testing::Test {
protected:
    Exchanges() { mServer.serve("/a", "the body"); }

    std::shared_ptr<HTTPClient> makeClient() { return std::make_shared<HTTPClient>(mWorker, "TestAgent"); }

    HttpFileServer mServer;
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(2);
};

TEST_F(Exchanges, CompleteOnAThreadOfTheWorker) {
    Fetch fetch(mServer.url("/a"));
    fetch.run(mWorker);
    EXPECT_NE(fetch.thread, std::thread::id());
    EXPECT_NE(fetch.thread, std::this_thread::get_id());
}

TEST_F(Exchanges, ThatFailAtOnceCompleteOnAThreadOfTheWorkerToo) {
    Fetch fetch("http://127.0.0.1:1/");
    fetch.run(mWorker);
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_NE(fetch.thread, std::this_thread::get_id());
    EXPECT_NE(fetch.thread, std::thread::id());
}

TEST_F(Exchanges, GiveTheCompletionItsClientAndRequest) {
    const auto client = makeClient();
    const auto request = makeRequest(mServer.url("/a"));
    std::shared_ptr<HTTPClient> givenClient;
    std::shared_ptr<HTTPClientRequest> givenRequest;
    Event done;
    ASSERT_TRUE(client->request(
        request,
        [&](const auto& theClient, const auto& theRequest, const auto&) {
            givenClient = theClient;
            givenRequest = theRequest;
            done.set();
        },
        ""));
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(givenClient, client);
    EXPECT_EQ(givenRequest, request);
}

TEST_F(Exchanges, GiveANullClientWhenNoSharedPointerHoldsIt) {
    HTTPClient client(mWorker, "TestAgent");
    bool null = false;
    Event done;
    ASSERT_TRUE(client.request(
        makeRequest(mServer.url("/a")),
        [&](const std::shared_ptr<HTTPClient>& given, const auto&, const auto&) {
            null = given == nullptr;
            done.set();
        },
        ""));
    ASSERT_TRUE(done.wait());
    EXPECT_TRUE(null);
}

TEST_F(Exchanges, WithoutACompletionEndQuietly) {
    auto client = makeClient();
    ASSERT_TRUE(client->request(makeRequest(mServer.url("/a")), nullptr, ""));
    EXPECT_TRUE(mServer.waitForRequests(1));
    mWorker.reset();
}

TEST_F(Exchanges, KeepAClientThatOnlyItsCompletionHoldsUntilTheAnswer) {
    std::weak_ptr<HTTPClient> weak;
    Event done;
    {
        const auto client = makeClient();
        weak = client;
        ASSERT_TRUE(client->request(
            makeRequest(mServer.url("/a")), [client, &done](const auto&, const auto&, const auto&) { done.set(); },
            ""));
    }
    ASSERT_TRUE(done.wait());
    mWorker.reset();  // waits until its threads have let go of what they held
    EXPECT_TRUE(weak.expired());
}

TEST_F(Exchanges, LetGoOfBothClosuresWhenTheyComplete) {
    const auto token = std::make_shared<int>(0);
    const auto client = makeClient();
    {
        const auto request = makeRequest(mServer.url("/a"));
        request->recvCallback() = [token](const auto&, const auto&, const char*, unsigned int) {};
        Event done;
        ASSERT_TRUE(client->request(
            request, [token, &done](const auto&, const auto&, const auto&) { done.set(); }, ""));
        ASSERT_TRUE(done.wait());
    }
    mWorker.reset();
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_EQ(client.use_count(), 1);
}

TEST_F(Exchanges, LetGoOfBothClosuresWhenTheyAreEnded) {
    mServer.hold("/a");
    const auto token = std::make_shared<int>(0);
    auto client = makeClient();
    {
        const auto request = makeRequest(mServer.url("/a"));
        request->recvCallback() = [token](const auto&, const auto&, const char*, unsigned int) {};
        ASSERT_TRUE(client->request(
            request, [token](const auto&, const auto&, const auto&) {}, ""));
    }
    ASSERT_TRUE(mServer.waitForHeld("/a"));
    client.reset();
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(Exchanges, EndWithTheirClientAndCompleteNoMore) {
    mServer.hold("/a");
    Fetch fetch(mServer.url("/a"));
    ASSERT_TRUE(fetch.start(mWorker));
    ASSERT_TRUE(mServer.waitForHeld("/a"));
    fetch.client.reset();
    mServer.release("/a");
    mWorker.reset();
    EXPECT_EQ(fetch.completions, 0);
}

TEST_F(Exchanges, ThatAreEndedCloseTheirConnection) {
    BadHttpServer server;
    server.script("/a", BadScript::endlessBody());
    Fetch fetch(server.url("/a"));
    Event first;
    fetch.stream([&](const std::string&) {
        fetch.streamed.clear();
        first.set();
    });
    ASSERT_TRUE(fetch.start(mWorker));
    ASSERT_TRUE(first.wait());
    fetch.client.reset();
    EXPECT_TRUE(server.waitForNoConnection());
    EXPECT_EQ(fetch.completions, 0);
}

TEST_F(Exchanges, MakeTheDestructorWaitForARunningCompletion) {
    Event inside;
    Event proceed;
    std::atomic<bool> left{false};
    auto client = std::make_unique<HTTPClient>(mWorker, "TestAgent");
    ASSERT_TRUE(client->request(
        makeRequest(mServer.url("/a")),
        [&](const auto&, const auto&, const auto&) {
            inside.set();
            proceed.wait();
            left = true;
        },
        ""));
    ASSERT_TRUE(inside.wait());
    auto destroyed = std::async(std::launch::async, [&] {
        client.reset();
        return left.load();
    });
    EXPECT_EQ(destroyed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    proceed.set();
    EXPECT_TRUE(destroyed.get());
}

TEST_F(Exchanges, MakeTheDestructorWaitForARunningPiece) {
    Event inside;
    Event proceed;
    std::atomic<bool> left{false};
    Fetch fetch(mServer.url("/a"));
    fetch.stream([&](const std::string&) {
        inside.set();
        proceed.wait();
        left = true;
    });
    ASSERT_TRUE(fetch.start(mWorker));
    ASSERT_TRUE(inside.wait());
    auto destroyed = std::async(std::launch::async, [&] {
        fetch.client.reset();
        return left.load();
    });
    EXPECT_EQ(destroyed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    proceed.set();
    EXPECT_TRUE(destroyed.get());
    mWorker.reset();
    EXPECT_EQ(fetch.completions, 0);
}

TEST_F(Exchanges, LetAPieceDestroyItsClient) {
    BadHttpServer server;
    server.script("/a", BadScript::endlessBody());
    Fetch fetch(server.url("/a"));
    std::atomic<int> pieces{0};
    fetch.stream([&](const std::string&) {
        ++pieces;
        fetch.client.reset();
    });
    ASSERT_TRUE(fetch.start(mWorker));
    EXPECT_TRUE(server.waitForRequests(1));
    EXPECT_TRUE(server.waitForNoConnection());
    mWorker.reset();
    EXPECT_EQ(pieces, 1);
    EXPECT_EQ(fetch.completions, 0);
}

TEST_F(Exchanges, LetTheCompletionDestroyItsClient) {
    auto client = std::make_unique<HTTPClient>(mWorker, "TestAgent");
    Event done;
    ASSERT_TRUE(client->request(
        makeRequest(mServer.url("/a")),
        [&](const auto&, const auto&, const auto&) {
            client.reset();
            done.set();
        },
        ""));
    ASSERT_TRUE(done.wait());
    EXPECT_FALSE(client);
}

TEST_F(Exchanges, LetTheCompletionStartAnother) {
    const auto worker = IOWorker::create(1);
    Fetch second(mServer.url("/a"));
    const auto first = std::make_shared<HTTPClient>(worker, "TestAgent");
    ASSERT_TRUE(first->request(
        makeRequest(mServer.url("/a")), [&](const auto&, const auto&, const auto&) { second.start(worker); }, ""));
    ASSERT_TRUE(second.done.wait());
    EXPECT_EQ(second.status(), 200);
}

TEST_F(Exchanges, LetTheCompletionWaitForAnother) {
    Fetch second(mServer.url("/a"));
    int seen = 0;
    Event done;
    const auto first = makeClient();
    ASSERT_TRUE(first->request(
        makeRequest(mServer.url("/a")),
        [&](const auto&, const auto&, const auto&) {
            seen = second.run(mWorker).status();
            done.set();
        },
        ""));
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(seen, 200);
}

TEST_F(Exchanges, HoldNoLockDuringTheCompletion) {
    // Everything that a client offers is called from within.
    Event done;
    bool again = true;
    const auto client = makeClient();
    ASSERT_TRUE(client->request(
        makeRequest(mServer.url("/a")),
        [&](const std::shared_ptr<HTTPClient>& self, const std::shared_ptr<HTTPClientRequest>& request, const auto&) {
            again = self->request(request, nullptr, "");
            std::thread([&] { again = self->request(request, nullptr, "") || again; }).join();
            done.set();
        },
        ""));
    ASSERT_TRUE(done.wait());
    EXPECT_FALSE(again);
}

TEST_F(Exchanges, DestroyedWithoutARequestDoNothing) {
    auto client = makeClient();
    client.reset();
    EXPECT_EQ(mServer.requests().size(), 0U);
}

TEST_F(Exchanges, DeliverPiecesInOrderNeverTwoAtATime) {
    std::string body;
    for (int i = 0; i < 200000; ++i) body += static_cast<char>('a' + i % 26);
    mServer.serve("/big", body);
    struct Download {
        explicit Download(const std::string& url) : fetch(url) {}
        Fetch fetch;
        std::atomic<int> inside{0};
    };
    std::atomic<bool> overlapped{false};
    std::vector<std::unique_ptr<Download>> downloads;
    for (int i = 0; i < 8; ++i) {
        auto download = std::make_unique<Download>(mServer.url("/big"));
        download->fetch.stream([&overlapped, raw = download.get()](const std::string&) {
            if (++raw->inside != 1) overlapped = true;
            --raw->inside;
        });
        downloads.push_back(std::move(download));
    }
    for (const auto& download : downloads) ASSERT_TRUE(download->fetch.start(mWorker));
    for (const auto& download : downloads) {
        ASSERT_TRUE(download->fetch.done.wait());
        EXPECT_TRUE(download->fetch.streamed == body);
    }
    EXPECT_FALSE(overlapped);
}

TEST_F(Exchanges, StartedOnManyThreadsCompleteOnceEach) {
    constexpr int kThreads = 4;
    constexpr int kEach = 25;
    std::vector<std::unique_ptr<Fetch>> fetches;
    for (int i = 0; i < kThreads * kEach; ++i) fetches.push_back(std::make_unique<Fetch>(mServer.url("/a")));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kEach; ++i) fetches[static_cast<size_t>(t * kEach + i)]->start(mWorker);
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto& fetch : fetches) ASSERT_TRUE(fetch->done.wait());
    mWorker.reset();
    for (const auto& fetch : fetches) {
        EXPECT_EQ(fetch->completions, 1);
        EXPECT_EQ(fetch->content(), "the body");
    }
}

TEST_F(Exchanges, EndedAtAnyMomentCallNothingAfterwards) {
    mServer.serve("/big", std::string(100000, 'b'));
    for (int round = 0; round < 60; ++round) {
        std::atomic<bool> gone{false};
        std::atomic<int> late{0};
        auto client = std::make_unique<HTTPClient>(mWorker, "TestAgent");
        const auto request = makeRequest(mServer.url("/big"), HTTPCacheType_Stream);
        request->recvCallback() = [&](const auto&, const auto&, const char*, unsigned int) {
            if (gone) ++late;
        };
        ASSERT_TRUE(client->request(
            request,
            [&](const auto&, const auto&, const auto&) {
                if (gone) ++late;
            },
            ""));
        std::this_thread::sleep_for(std::chrono::microseconds(round * 50));
        client.reset();
        gone = true;
        EXPECT_EQ(late, 0);
    }
}

}  // namespace
