// A first transfer and a push behind it, as one.
#include "ForwardDownload.h"

#include "LocalDownload.h"
#include "PostDownloadFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

/// A first transfer that ends when the test says so.
class KeyedTransfer : public IDownload {
public:
    ErrorInfo start(const Function<void()>& callback, void* key) override {
        mRelay = callback;
        mKey = key;
        return mStartResult;
    }
    ErrorInfo start(const Function<void()>&) override {
        ++mPlainStarts;
        return {};
    }
    ErrorInfo stop() override { return {-11, ""}; }
    ErrorInfo cancel() override { return {-12, ""}; }
    ErrorInfo getProgress(float& progress) override {
        progress = 0.5F;
        return {};
    }
    ErrorInfo getFileName(std::string& fileName) override {
        fileName = "first";
        return {-13, ""};
    }
    ErrorInfo getError() override { return mError; }
    bool finish() override { return true; }

    Function<void()> mRelay;
    void* mKey = nullptr;
    int mPlainStarts = 0;
    ErrorInfo mStartResult;
    ErrorInfo mError;
};

class ForwardDownloadTest : public PostDownloadFixture {
protected:
    void SetUp() override {
        mPush = makePush();
        mForward = std::make_shared<ForwardDownload>(mFirst, mPush);
    }
    void startForward() { ASSERT_EQ(mForward->start(mWaiter.callback()).errorCode(), 0); }

    std::shared_ptr<KeyedTransfer> mFirst = std::make_shared<KeyedTransfer>();
    std::shared_ptr<ForwardDownload> mForward;
};

}  // namespace

TEST_F(ForwardDownloadTest, StartsTheFirstTransferUnderItsOwnAddress) {
    startForward();
    EXPECT_EQ(mFirst->mKey, mForward.get());
    EXPECT_EQ(mFirst->mPlainStarts, 0);
    EXPECT_EQ(mLink->sent.count(), 0U);
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(ForwardDownloadTest, GivesTheResultOfTheFirstStartAsItStands) {
    mFirst->mStartResult = ErrorInfo(-602, "text");
    const ErrorInfo result = mForward->start(mWaiter.callback());
    EXPECT_EQ(result.errorCode(), -602);
    EXPECT_EQ(result.errorMessage(), "text");
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(ForwardDownloadTest, UnkeyedFirstMemberGivesMinus2AndNothingHappens) {
    mStore.put("p.exe");
    const auto forward = std::make_shared<ForwardDownload>(std::make_shared<LocalDownload>(mPackage), mPush);
    EXPECT_EQ(forward->start(mWaiter.callback()).errorCode(), -2);
    Public::Base::settleDetached();
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(mLink->sent.count(), 0U);
}

TEST_F(ForwardDownloadTest, ThrowsWhenNoSharedPointerOwnsIt) {
    ForwardDownload forward(mFirst, mPush);
    EXPECT_THROW(forward.start({}), std::bad_weak_ptr);
}

TEST_F(ForwardDownloadTest, PushesWhenTheFirstTransferHasEnded) {
    putPackage(0x180000);
    startForward();
    mFirst->mRelay();
    mLink->answer(0);
    float progress = 0.0F;
    EXPECT_EQ(mForward->getProgress(progress).errorCode(), 0);
    EXPECT_FLOAT_EQ(progress, 2.0F / 3.0F);
    mLink->answer(1);
    EXPECT_FALSE(mForward->finish());
    mRequest->answer(true);
    EXPECT_TRUE(mForward->finish());
    EXPECT_EQ(mForward->getError().errorCode(), 0);
    EXPECT_EQ(mWaiter.calls(), 1);
}

TEST_F(ForwardDownloadTest, FailedFirstTransferCallsBackTwiceSinceThePushIsStartedAllTheSame) {
    startForward();
    mFirst->mError = ErrorInfo(-201, "");
    mFirst->mRelay();
    Public::Base::settleDetached();
    EXPECT_EQ(mWaiter.calls(), 2);
    EXPECT_EQ(mPush->getError().errorCode(), -416);
    EXPECT_EQ(mForward->getError().errorCode(), -201);
    EXPECT_FALSE(mForward->finish());
    EXPECT_TRUE(mLog.has(2, "send version fail! errcode:-416"));
}

TEST_F(ForwardDownloadTest, FailedFirstTransferIsToldBeforeThePushIsStarted) {
    std::vector<int> errors;
    std::mutex mutex;
    ASSERT_EQ(mForward
                  ->start([&] {
                      std::lock_guard lock(mutex);
                      errors.push_back(mPush->getError().errorCode());
                  })
                  .errorCode(),
              0);
    mFirst->mError = ErrorInfo(-201, "");
    mFirst->mRelay();
    Public::Base::settleDetached();
    EXPECT_EQ(errors, (std::vector<int>{0, -416}));
}

TEST_F(ForwardDownloadTest, ErrorOfThePushIsToldWhenTheFirstTransferHasNone) {
    startForward();
    mFirst->mRelay();
    Public::Base::settleDetached();
    EXPECT_EQ(mForward->getError().errorCode(), -416);
    EXPECT_EQ(mWaiter.calls(), 1);
}

TEST_F(ForwardDownloadTest, FirstTransferThatEndsAgainDoesNotPushAgain) {
    mStore.put("p.exe");
    startForward();
    mFirst->mRelay();
    mLink->chunk(0);
    mFirst->mRelay();
    Public::Base::settleDetached();
    EXPECT_EQ(mLink->sent.count(), 1U);
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(ForwardDownloadTest, LetGoBeforeTheFirstTransferEndsPushesNothing) {
    mStore.put("p.exe");
    startForward();
    mForward.reset();
    mFirst->mRelay();
    Public::Base::settleDetached();
    EXPECT_EQ(mLink->sent.count(), 0U);
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(ForwardDownloadTest, IsNotKeptAliveByTheFirstTransfer) {
    startForward();
    const std::weak_ptr<ForwardDownload> forward = mForward;
    mForward.reset();
    EXPECT_TRUE(forward.expired());
}

TEST_F(ForwardDownloadTest, ForwardsEachOperationToOneMember) {
    std::string fileName;
    float progress = -1.0F;
    EXPECT_EQ(mForward->stop().errorCode(), -2);
    EXPECT_EQ(mForward->cancel().errorCode(), -2);
    EXPECT_EQ(mForward->getProgress(progress).errorCode(), 0);
    EXPECT_EQ(progress, 0.0F);
    EXPECT_EQ(mForward->getFileName(fileName).errorCode(), -13);
    EXPECT_EQ(fileName, "first");
    EXPECT_EQ(mForward->getError().errorCode(), 0);
    EXPECT_FALSE(mForward->finish());
    IDownload& contract = *mForward;
    EXPECT_EQ(contract.start({}, nullptr).errorCode(), -2);
}

TEST_F(ForwardDownloadTest, WithoutAMemberFailsInsteadOfFalling) {
    for (const auto& forward :
         {std::make_shared<ForwardDownload>(nullptr, mPush), std::make_shared<ForwardDownload>(mFirst, nullptr)}) {
        float progress = 0.0F;
        std::string fileName;
        EXPECT_EQ(forward->start(mWaiter.callback()).errorCode(), -1);
        EXPECT_EQ(forward->getError().errorCode(), -1);
        EXPECT_FALSE(forward->finish());
        forward->stop();
        forward->cancel();
        forward->getProgress(progress);
        forward->getFileName(fileName);
    }
    EXPECT_EQ(mWaiter.calls(), 0);
}
