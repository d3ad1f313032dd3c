// What every bus promises about frames, below requests and answers.
#include "QueueBed.h"

namespace {

using namespace Tarnwick::MQ;
using namespace support;

/// What a member of the bus was told, in order.
class Member {
public:
    Bus::Endpoint endpoint() {
        return {[this](const std::string& from, const std::string& frame) { add(from + ":" + frame); },
                [this](const std::string& id) { add(id + " lost"); }};
    }
    std::vector<std::string> heard() const {
        std::lock_guard lock(mMutex);
        return mHeard;
    }

private:
    void add(std::string text) {
        std::lock_guard lock(mMutex);
        mHeard.push_back(std::move(text));
    }

    mutable std::mutex mMutex;
    std::vector<std::string> mHeard;
};

using Heard = std::vector<std::string>;

class BusFrames : public QueueContract {
protected:
    BusFrames() {
        busX->join("x", x.endpoint());
        busY->join("y", y.endpoint());
        bed().settle();
    }
    ~BusFrames() override {
        busX->leave("x");
        busY->leave("y");
    }
    static Heard numbered(const std::string& from, int count) {
        Heard frames;
        for (int i = 0; i < count; ++i) frames.push_back(from + ":" + std::to_string(i));
        return frames;
    }

    Member x;
    Member y;
    const std::shared_ptr<Bus> busX = bed().busOf("x");
    const std::shared_ptr<Bus> busY = bed().busOf("y");
};

ORV_INSTANTIATE_QUEUE_SUITE(Embedded, BusFrames, makeEmbeddedBed);

TEST_P(BusFrames, OfAPairArriveOnceAndInOrderInBothDirections) {
    constexpr int kFrames = 500;
    std::thread other([this] {
        for (int i = 0; i < kFrames; ++i) busY->send("y", "x", std::to_string(i));
    });
    for (int i = 0; i < kFrames; ++i) EXPECT_TRUE(busX->send("x", "y", std::to_string(i)));
    other.join();
    bed().settle();
    EXPECT_EQ(y.heard(), numbered("x", kFrames));
    EXPECT_EQ(x.heard(), numbered("y", kFrames));
}

TEST_P(BusFrames, HoldAnyByteAndAnyLengthUpToTheGreatest) {
    std::string every(256, '\0');
    for (size_t i = 0; i < every.size(); ++i) every[i] = static_cast<char>(i);
    const std::string longest(busX->maxFrame(), 'z');
    EXPECT_TRUE(busX->send("x", "y", every));
    EXPECT_TRUE(busX->send("x", "y", ""));
    EXPECT_TRUE(busX->send("x", "y", longest));
    EXPECT_TRUE(busX->send("x", "y", "after"));
    bed().settle();
    const auto heard = y.heard();
    ASSERT_EQ(heard.size(), 4u);
    EXPECT_EQ(heard[0], "x:" + every);
    EXPECT_EQ(heard[1], "x:");
    EXPECT_TRUE(heard[2] == "x:" + longest);
    EXPECT_EQ(heard[3], "x:after");
}

TEST_P(BusFrames, LongerThanTheGreatestAreRefused) {
    EXPECT_FALSE(busX->send("x", "y", std::string(busX->maxFrame() + 1, 'z')));
    bed().settle();
    EXPECT_EQ(y.heard(), Heard{});
}

TEST_P(BusFrames, FromManyThreadsKeepTheOrderOfEach) {
    constexpr int kThreads = 4;
    constexpr int kFrames = 100;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < kFrames; ++i) busX->send("x", "y", std::to_string(t) + "/" + std::to_string(i));
        });
    }
    for (auto& thread : threads) thread.join();
    bed().settle();
    std::vector<int> next(kThreads, 0);
    for (const auto& frame : y.heard()) {
        const auto slash = frame.find('/');
        const auto thread = static_cast<size_t>(std::stoi(frame.substr(2, slash - 2)));
        EXPECT_EQ(std::stoi(frame.substr(slash + 1)), next[thread]++);
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kFrames));
}

TEST_P(BusFrames, ToAMemberThatLeftAreRefusedAndItHearsNoMore) {
    busX->send("x", "y", "before");
    bed().settle();
    busY->leave("y");
    busX->send("x", "y", "after");
    bed().settle();
    EXPECT_EQ(y.heard(), Heard{"x:before"});
    EXPECT_EQ(x.heard(), Heard{"y lost"});
    EXPECT_FALSE(busX->linked("x", "y"));
    EXPECT_FALSE(busX->send("x", "y", "later"));
}

}  // namespace
