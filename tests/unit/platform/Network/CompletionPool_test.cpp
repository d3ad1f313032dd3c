#include "Network/CompletionPool.h"

namespace {

using Public::Network::CompletionPool;

TEST(CompletionPool, MakesEveryCallBeforeItsThreadsLeave) {
    const auto pool = std::make_shared<CompletionPool>();
    std::atomic<int> calls{0};
    auto producer = std::make_unique<CompletionPool::Producer>(pool);
    for (int i = 0; i < 10; ++i) producer->post([&] { ++calls; });
    producer.reset();
    std::thread first([&] { pool->run(); });
    std::thread second([&] { pool->run(); });
    first.join();
    second.join();
    EXPECT_EQ(calls, 10);
}

TEST(CompletionPool, WaitsForItsLastProducer) {
    const auto pool = std::make_shared<CompletionPool>();
    auto first = std::make_unique<CompletionPool::Producer>(pool);
    auto second = std::make_unique<CompletionPool::Producer>(pool);
    std::atomic<bool> called{false};
    std::thread thread([&] { pool->run(); });
    first.reset();
    second->post([&] { called = true; });
    second.reset();
    thread.join();
    EXPECT_TRUE(called);
}

TEST(CompletionPool, KeepsTheOrderOnOneThread) {
    const auto pool = std::make_shared<CompletionPool>();
    std::string order;
    {
        CompletionPool::Producer producer(pool);
        for (const char letter : {'a', 'b', 'c'}) producer.post([&order, letter] { order += letter; });
    }
    pool->run();
    EXPECT_EQ(order, "abc");
}

}  // namespace
