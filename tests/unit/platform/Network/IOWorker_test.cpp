#include "Public/Network/IOWorker.h"

#include <future>

#include "BadHttpServer.h"
#include "Fetch.h"
#include "HttpFileServer.h"

namespace {

using namespace support;

class IOWorkers : public testing::Test {
protected:
    IOWorkers() {
        mServer.serve("/a", "the body");
        mServer.serve("/held", "the body");
        mServer.hold("/held");
    }
    HttpFileServer mServer;
};

TEST_F(IOWorkers, OfZeroThreadsHaveOne) {
    Fetch fetch(mServer.url("/a"));
    fetch.run(IOWorker::create(0));
    EXPECT_EQ(fetch.status(), 200);
}

TEST_F(IOWorkers, WithoutWorkEndAtOnce) {
    auto worker = IOWorker::create(8);
    ASSERT_TRUE(worker);
    const std::weak_ptr<IOWorker> weak = worker;
    worker.reset();
    EXPECT_TRUE(weak.expired());
}

TEST_F(IOWorkers, EndTheirRequestsWithAFailureBeforeTheyAreGone) {
    auto worker = IOWorker::create(2);
    std::vector<std::unique_ptr<Fetch>> fetches;
    for (int i = 0; i < 6; ++i) {
        fetches.push_back(
            std::make_unique<Fetch>(mServer.url("/held"), i % 2 == 0 ? HTTPCacheType_Memory : HTTPCacheType_Stream));
        ASSERT_TRUE(fetches.back()->start(worker));
    }
    ASSERT_TRUE(mServer.waitForRequests(6));
    worker.reset();
    for (const auto& fetch : fetches) {
        EXPECT_EQ(fetch->completions, 1);
        EXPECT_EQ(fetch->status(), 0);
        EXPECT_NE(fetch->thread, std::this_thread::get_id());
    }
}

TEST_F(IOWorkers, EndRequestsThatHadNotBegun) {
    std::vector<std::unique_ptr<Fetch>> fetches;
    {
        const auto worker = IOWorker::create(1);
        for (int i = 0; i < 50; ++i) {
            fetches.push_back(std::make_unique<Fetch>(mServer.url("/held")));
            ASSERT_TRUE(fetches.back()->start(worker));
        }
    }
    for (const auto& fetch : fetches) EXPECT_EQ(fetch->completions, 1);
}

TEST_F(IOWorkers, AreNotKeptAliveByTheirClients) {
    auto worker = IOWorker::create(1);
    const std::weak_ptr<IOWorker> weak = worker;
    Fetch fetch(mServer.url("/held"));
    ASSERT_TRUE(fetch.start(worker));
    worker.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(fetch.completions, 1);
    fetch.client.reset();
}

TEST_F(IOWorkers, MayBeDroppedInACompletion) {
    auto worker = IOWorker::create(2);
    Fetch held(mServer.url("/held"));
    ASSERT_TRUE(held.start(worker));
    ASSERT_TRUE(mServer.waitForHeld("/held"));
    Event dropped;
    const auto client = std::make_shared<HTTPClient>(worker, "TestAgent");
    std::promise<std::shared_ptr<IOWorker>> last;
    ASSERT_TRUE(client->request(
        makeRequest(mServer.url("/a")),
        [&](const auto&, const auto&, const auto&) {
            last.get_future().get().reset();
            dropped.set();
        },
        ""));
    last.set_value(std::move(worker));
    ASSERT_TRUE(dropped.wait());
    ASSERT_TRUE(held.done.wait());
    EXPECT_EQ(held.status(), 0);
    EXPECT_EQ(held.completions, 1);
}

TEST_F(IOWorkers, MayBeDroppedInAPieceOfBody) {
    auto worker = IOWorker::create(1);
    BadHttpServer bad;
    bad.script("/endless", BadScript::endlessBody());
    Fetch fetch(bad.url("/endless"));
    std::promise<std::shared_ptr<IOWorker>> last;
    std::atomic<bool> dropped{false};
    fetch.stream([&](const std::string&) {
        if (!dropped.exchange(true)) last.get_future().get().reset();
        fetch.streamed.clear();
    });
    ASSERT_TRUE(fetch.start(worker));
    last.set_value(std::move(worker));
    ASSERT_TRUE(fetch.done.wait());
    EXPECT_EQ(fetch.status(), 0);
    EXPECT_TRUE(bad.waitForNoConnection());
    EXPECT_EQ(fetch.completions, 1);
    fetch.client.reset();  // waits for the completion to have left
}

TEST_F(IOWorkers, ThatEndTakeNoRequestFromACompletion) {
    auto worker = IOWorker::create(1);
    const auto next = std::make_shared<HTTPClient>(worker, "TestAgent");
    const auto client = std::make_shared<HTTPClient>(worker, "TestAgent");
    bool accepted = true;
    ASSERT_TRUE(client->request(
        makeRequest(mServer.url("/held")),
        [&](const auto&, const auto&, const auto&) {
            accepted = next->request(makeRequest(mServer.url("/a")), nullptr, "");
        },
        ""));
    ASSERT_TRUE(mServer.waitForHeld("/held"));
    worker.reset();
    EXPECT_FALSE(accepted);
}

TEST_F(IOWorkers, TransferWhileACompletionTakesItsTime) {
    const auto worker = IOWorker::create(1);
    Event inside;
    Event proceed;
    const auto slow = std::make_shared<HTTPClient>(worker, "TestAgent");
    ASSERT_TRUE(slow->request(
        makeRequest(mServer.url("/a")),
        [&](const auto&, const auto&, const auto&) {
            inside.set();
            proceed.wait();
        },
        ""));
    ASSERT_TRUE(inside.wait());
    Fetch other(mServer.url("/a"));
    Event arrived;
    std::string body;
    other.stream([&](const std::string& piece) {
        body += piece;
        if (body == "the body") arrived.set();
    });
    ASSERT_TRUE(other.start(worker));
    EXPECT_TRUE(arrived.wait());
    EXPECT_EQ(other.completions, 0);
    proceed.set();
    EXPECT_TRUE(other.done.wait());
}

TEST_F(IOWorkers, CompleteTwoRequestsAtTheSameMoment) {
    const auto worker = IOWorker::create(2);
    Event first;
    Event second;
    bool met = true;
    Event done;
    const auto meet = [&](Event& mine, Event& other) {
        mine.set();
        if (!other.wait()) met = false;
    };
    const auto one = std::make_shared<HTTPClient>(worker, "TestAgent");
    const auto two = std::make_shared<HTTPClient>(worker, "TestAgent");
    ASSERT_TRUE(one->request(
        makeRequest(mServer.url("/a")),
        [&](const auto&, const auto&, const auto&) {
            meet(first, second);
            done.set();
        },
        ""));
    ASSERT_TRUE(two->request(
        makeRequest(mServer.url("/a")), [&](const auto&, const auto&, const auto&) { meet(second, first); }, ""));
    ASSERT_TRUE(done.wait());
    EXPECT_TRUE(met);
}

TEST_F(IOWorkers, SpreadRequestsOverTheirThreads) {
    const auto worker = IOWorker::create(2);
    std::mutex mutex;
    std::set<std::thread::id> threads;
    std::vector<std::unique_ptr<Fetch>> fetches;
    for (int i = 0; i < 2; ++i) {
        fetches.push_back(std::make_unique<Fetch>(mServer.url("/held")));
        fetches.back()->stream([&](const std::string&) {
            std::lock_guard lock(mutex);
            threads.insert(std::this_thread::get_id());
        });
        ASSERT_TRUE(fetches.back()->start(worker));
    }
    ASSERT_TRUE(mServer.waitForRequests(2));
    mServer.release("/held");
    for (const auto& fetch : fetches) ASSERT_TRUE(fetch->done.wait());
    EXPECT_EQ(threads.size(), 2U);
}

}  // namespace
