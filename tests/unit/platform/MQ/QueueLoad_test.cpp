// Requests in great number, of great length, and at the same moment as what ends them.
#include "QueueBed.h"
#include "TWProtocol/TWProtoDeviceCmd.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;
using Public::Base::ErrorInfo;
using Tarnwick::Protocol::TWProtoMessageLevel_Normal;
using Tarnwick::Protocol::TWProtoUpgradeInfo;

class QueueLoad : public QueueContract {
protected:
    std::shared_ptr<MQConnection> link() { return a->connectionTo("b", ""); }
    unsigned askB(Answers& into, unsigned timeoutMs = 60000) { return ask(link(), "b", "topic", "", into, timeoutMs); }
    /// Keeps what comes, without an answer.
    void keepAll() {
        serve(*b, "topic", [this](const std::shared_ptr<MQMessage>& message) {
            std::lock_guard lock(mutex);
            kept.push_back(message);
            return std::shared_ptr<MQMessage>();
        });
    }
    void answerAllKept() {
        for (const auto& message : kept) {
            message->connection()->pushResponse(message->buildResponse(ErrorInfo(0, ""), packet("late")), false);
        }
    }
    /// Many requests are answered while something else would end them with that code.
    void answersMeet(unsigned timeoutMs, const std::function<void()>& end, int code) {
        keepAll();
        std::vector<Answers> each(300);
        for (auto& one : each) ASSERT_NE(askB(one, timeoutMs), 0u);
        bed().settle();
        std::thread answering([this] { answerAllKept(); });
        end();
        answering.join();
        bed().settle();
        bed().elapse(timeoutMs);
        for (const auto& one : each) {
            ASSERT_EQ(one.count(), 1u);
            ASSERT_TRUE(one.code() == 0 || one.code() == code) << one.code();
        }
    }

    std::mutex mutex;
    std::vector<std::shared_ptr<MQMessage>> kept;
    std::shared_ptr<TWMQSystemServer> a = server("a");
    std::shared_ptr<TWMQSystemServer> b = server("b");
    Answers answers;
};

ORV_INSTANTIATE_QUEUE_SUITE(Embedded, QueueLoad, makeEmbeddedBed);

TEST_P(QueueLoad, CarriesAFrameOfTheGreatestLengthBothWays) {
    constexpr size_t kAllButData = 4096;  // names, numbers and the record around the data
    TWProtoUpgradeInfo chunk;
    chunk.data.assign(bed().busOf("a")->maxFrame() - kAllButData, 'c');
    ASSERT_GT(chunk.data.size(), 0x100000u) << "a chunk of a package must fit";
    serve(*b, "topic", [](const std::shared_ptr<MQMessage>& message) {
        TWProtoUpgradeInfo record;
        const bool read = message->parseBody(&record, false);
        return message->buildResponse(ErrorInfo(read ? 0 : -1, ""), record);
    });
    EXPECT_NE(
        link()->pushMessageRequest("topic", &chunk, nullptr, TWProtoMessageLevel_Normal, answers.callback(), 60000),
        0u);
    bed().settle();
    ASSERT_EQ(answers.count(), 1u);
    TWProtoUpgradeInfo back;
    ASSERT_TRUE(answers.last()->parseBody(&back, false));
    EXPECT_TRUE(back.data == chunk.data);
}

TEST_P(QueueLoad, LongFramesAmongShortOnesAreEachServedOnce) {
    std::vector<uint32_t> positions;
    serve(*b, "topic", [&](const std::shared_ptr<MQMessage>& message) {
        TWProtoUpgradeInfo record;
        message->parseBody(&record, false);
        std::lock_guard lock(mutex);
        positions.push_back(record.position);
        return message->buildResponse(ErrorInfo(0, ""), record);
    });
    for (uint32_t i = 0; i < 12; ++i) {
        TWProtoUpgradeInfo chunk;
        chunk.position = i;
        chunk.data.assign(i % 3 == 0 ? 0x100000 : 10, 'c');
        link()->pushMessageRequest("topic", &chunk, nullptr, TWProtoMessageLevel_Normal, answers.callback(), 60000);
    }
    bed().settle();
    EXPECT_EQ(answers.count(), 12u);
    std::sort(positions.begin(), positions.end());
    EXPECT_EQ(positions, (std::vector<uint32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
}

TEST_P(QueueLoad, AnAnswerThatMeetsTheTimeOutIsOneCallback) {
    answersMeet(
        1000, [this] { bed().jump(1000); }, -202);
}

TEST_P(QueueLoad, AnAnswerThatMeetsTheCutOfTheLinkIsOneCallback) {
    answersMeet(
        60000, [this] { bed().cut("a", "b"); }, -203);
}

TEST_P(QueueLoad, AnAnswerThatMeetsTheNodesOwnEndIsOneCallback) {
    answersMeet(
        60000, [this] { a.reset(); }, -203);
}

TEST_P(QueueLoad, ManyAnswersToOneRequestAreOneCallback) {
    keepAll();
    askB(answers);
    bed().settle();
    ASSERT_EQ(kept.size(), 1u);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([this] {
            for (int i = 0; i < 50; ++i) answerAllKept();
        });
    }
    for (auto& thread : threads) thread.join();
    bed().settle();
    EXPECT_EQ(answers.count(), 1u);
    EXPECT_EQ(answers.text(), "late");
}

TEST_P(QueueLoad, NoHandlerBeginsAfterUnsubscribeReturns) {
    for (int round = 0; round < 20; ++round) {
        int owner = 0;
        std::atomic<int> began{0};
        std::atomic<int> beganLate{0};
        std::atomic<bool> removed{false};
        serve(
            *b, "topic",
            [&](const std::shared_ptr<MQMessage>& message) {
                ++began;
                if (removed) ++beganLate;
                return message->buildResponse(ErrorInfo(0, ""), nullptr);
            },
            &owner);
        Answers flood;
        std::thread asking([&] {
            for (int i = 0; i < 50; ++i) askB(flood);
        });
        flood.waitFor(1);
        b->unsubcribe(&owner);
        removed = true;
        asking.join();
        bed().settle();
        EXPECT_EQ(beganLate, 0);
        EXPECT_GT(began, 0);
        EXPECT_EQ(flood.count(), 50u) << "those that found no handler are answered too";
    }
}

TEST_P(QueueLoad, CallbacksThatAskAgainEndWithTheirCount) {
    serve(*b, "topic", answering(""));
    constexpr int kChains = 8;
    constexpr int kLinks = 40;
    std::atomic<int> calls{0};
    std::function<void(int)> next = [&](int left) {
        const auto body = packet("");
        link()->pushMessageRequest(
            "topic", &body, nullptr, TWProtoMessageLevel_Normal,
            [&, left](const auto&) {
                ++calls;
                if (left > 1) next(left - 1);
            },
            60000);
    };
    for (int i = 0; i < kChains; ++i) next(kLinks);
    bed().settle();
    EXPECT_EQ(calls, kChains * kLinks);
}

}  // namespace
