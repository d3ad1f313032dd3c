// The verdicts on what a run has begun, with violations planted.
#include "Verdicts.h"

#include <gtest/gtest.h>

#include "Book.h"

namespace {

using namespace cluster;
using Tarnwick::OrvUpdate::ErrorInfo;
using Tarnwick::OrvUpdate::Function;
using Tarnwick::OrvUpdate::IDownload;

class FakeTransfer : public IDownload {
public:
    using IDownload::start;
    ErrorInfo start(const Function<void()>&) override { return {}; }
    ErrorInfo stop() override { return {}; }
    ErrorInfo cancel() override { return {}; }
    ErrorInfo getProgress(float&) override { return {}; }
    ErrorInfo getFileName(std::string&) override { return {}; }
    ErrorInfo getError() override { return error; }
    bool finish() override { return finished; }

    ErrorInfo error;
    bool finished = false;
};

class Verdicts : public testing::Test {
protected:
    std::string question(const std::vector<std::string>& answers, size_t lasts = 1, bool mayStayOpen = false) {
        Activity activity("a", "node", mLog);
        for (const auto& answer : answers) activity.called(kAnswer, answer);
        return judgeQuestion(activity, lasts, mayStayOpen);
    }
    std::string transfer(size_t calls, size_t most = 1) {
        for (size_t i = 0; i < calls; ++i) mActivity.called(kDone);
        return judgeTransfer(mActivity, mTransfer, most, false);
    }
    std::string installation(const std::vector<std::string>& callbacks) {
        for (const auto& callback : callbacks) mActivity.called(callback);
        return judgeInstallation(mActivity);
    }

    const std::shared_ptr<RunLog> mLog = std::make_shared<RunLog>([] { return 0; }, "/no such directory");
    Activity mActivity{"a", "node", mLog};
    std::shared_ptr<FakeTransfer> mTransfer = std::make_shared<FakeTransfer>();
};

class BookTest : public Verdicts {
protected:
    Book mBook{mLog, std::chrono::milliseconds(20)};
    static std::string fine(const Activity&) { return {}; }
};

}  // namespace

TEST_F(Verdicts, OnAQuestionThatEndedAreGood) { EXPECT_EQ(question({"of a 0", "of b 0 last"}), ""); }

TEST_F(Verdicts, OnAQuestionWantOneLastCall) {
    EXPECT_EQ(question({"of a 0"}), "its last call has never come");
    EXPECT_EQ(question({"of a 0 last", "of b 0 last"}), "its last call came 2 times");
    EXPECT_EQ(question({"of a 0 last", "of b 0"}), "a call came after the last one");
}

TEST_F(Verdicts, OnAQuestionKnowWhereTwoLastCallsAreDueAndWhereNone) {
    EXPECT_EQ(question({"of - -1 last", "of - -1 last"}, 2), "");
    EXPECT_EQ(question({"of - -1 last"}, 2), "its last call has never come");
    EXPECT_EQ(question({"of a 0"}, 1, true), "") << "a link refused it";
}

TEST_F(Verdicts, OnATransferWantItsEnd) {
    EXPECT_EQ(transfer(0), "it has never ended");
    EXPECT_EQ(transfer(0, 0), "") << "this one never calls";
}

TEST_F(Verdicts, OnATransferWantOneCall) {
    mTransfer->finished = true;
    EXPECT_EQ(transfer(0), "it ended with 0 without a call");
    EXPECT_EQ(transfer(1), "");
    EXPECT_EQ(transfer(1), "its callback ran 2 times");
}

TEST_F(Verdicts, OnAFailedTransferWantACallToo) {
    mTransfer->error = ErrorInfo(-202, "");
    EXPECT_EQ(transfer(0), "it ended with -202 without a call");
    EXPECT_EQ(transfer(1), "");
}

TEST_F(Verdicts, OnATransferThatIsNoMoreOrWasReleasedOweNothing) {
    mActivity.release();
    EXPECT_EQ(transfer(0), "");
    EXPECT_EQ(transfer(2), "its callback ran 2 times") << "but too much is too much";
    Activity other("b", "node", mLog);
    EXPECT_EQ(judgeTransfer(other, std::weak_ptr<IDownload>(), 1, false), "");
}

TEST_F(Verdicts, OnAnInstallationWantEachCallOnceAndInOrder) {
    EXPECT_EQ(installation({"downloaded", "installing"}), "");
    EXPECT_EQ(installation({"error"}), "");
    EXPECT_EQ(installation({"error"}), "error ran 2 times");
}

TEST_F(Verdicts, OnAnInstallationWantThePackageFirst) {
    EXPECT_EQ(installation({"installing"}), "it was installed before it was there");
}

TEST_F(BookTest, TellsWhatItsVerdictsFind) {
    const auto good = mBook.open("node", "good", fine);
    const auto bad = mBook.open("node", "bad", [](const Activity&) { return "wrong"; });
    mBook.close();
    EXPECT_EQ(mBook.violations(), std::vector<std::string>{"#1 node bad: wrong"});
}

TEST_F(BookTest, FindsCallbacksThatSomeoneKeeps) {
    auto kept = mBook.open("node", "kept", fine);
    mBook.open("node", "dropped", fine);
    mBook.findKept();
    EXPECT_EQ(mBook.violations(),
              std::vector<std::string>{"#0 node kept: its callback is still kept after everything has ended"});
}

TEST_F(BookTest, FindsObjectsThatSomeoneKeeps) {
    const auto kept = std::make_shared<int>(1);
    mBook.expectGone("this one", kept);
    mBook.expectGone("that one", std::make_shared<int>(2));
    mBook.findKept();
    EXPECT_EQ(mBook.violations(), std::vector<std::string>{"this one is still kept after everything has ended"});
}

TEST_F(BookTest, FindsAnOperationThatALockHoldsUp) {
    const auto mutex = std::make_shared<std::timed_mutex>();
    const auto operation = [mutex] { std::lock_guard lock(*mutex); };
    mBook.probe("a callback", operation);
    EXPECT_EQ(mBook.violations().size(), 0U);
    {
        std::lock_guard lock(*mutex);
        mBook.probe("a callback", operation);
    }
    EXPECT_EQ(mBook.violations(),
              std::vector<std::string>{"a callback runs while a lock is held: another operation does not return"});
}

TEST_F(BookTest, ReleasesWhatANodeHasBegun) {
    const auto one = mBook.open("a", "pull 1", fine);
    const auto two = mBook.open("b", "pull 2", fine);
    const auto three = mBook.open("b", "push 3", fine);
    mBook.release("a");
    EXPECT_TRUE(one->released());
    EXPECT_FALSE(two->released());
    mBook.releaseKind("pull");
    EXPECT_TRUE(two->released());
    EXPECT_FALSE(three->released());
}

TEST_F(BookTest, NamesThePlaceOfTheRunTheSameInEveryRun) {
    RunLog log([] { return 7; }, "/tmp/orv-1");
    log.add("wrote /tmp/orv-1/a and /tmp/orv-1/b\r\n");
    EXPECT_EQ(log.lines(), std::vector<std::string>{"7 wrote ~/a and ~/b"});
}
