// What holds for every transfer that brings a package to this disk.
#include "IDownload.h"

#include "HttpTransferFixture.h"
#include "LocalDownload.h"

using namespace Tarnwick::OrvUpdate;

namespace {

/// The least that a member of the family has to offer.
class BareTransfer : public IDownload {
public:
    using IDownload::start;
    explicit BareTransfer(bool& destroyed) : mDestroyed(destroyed) {}
    ~BareTransfer() override { mDestroyed = true; }
    ErrorInfo start(const Function<void()>& callback) override {
        ++mStarts;
        callback();
        return {};
    }
    ErrorInfo stop() override { return {}; }
    ErrorInfo cancel() override { return {}; }
    ErrorInfo getProgress(float&) override { return {}; }
    ErrorInfo getFileName(std::string&) override { return {}; }
    ErrorInfo getError() override { return {}; }
    bool finish() override { return false; }
    int mStarts = 0;

private:
    bool& mDestroyed;
};

struct Member {
    std::string name;
    bool fetches;  // has a server to bring the package from
};

/// One life cycle, told by the same flags, whichever way the package moves.
class EveryTransfer : public support::HttpTransferFixture, public testing::WithParamInterface<Member> {
protected:
    void SetUp() override { mPackage = *support::readText(mStore.put("cloud side/p.exe")); }
    /// A transfer that will bring the package, or will not.
    std::shared_ptr<IDownload> make(bool succeeds) {
        if (GetParam().fetches) {
            prepareBody(mPackage, succeeds ? 200 : 404);
            return mTransfer;
        }
        if (succeeds) mStore.put("cloud/p.exe");
        return std::make_shared<LocalDownload>(mPath);
    }

    std::string mPackage;
};

}  // namespace

TEST(Transfer, OffersNoStartWithAKeyUnlessAMemberDoes) {
    bool destroyed = false;
    int calls = 0;
    BareTransfer transfer(destroyed);
    IDownload& contract = transfer;
    const ErrorInfo error = contract.start([&] { ++calls; }, &calls);
    EXPECT_EQ(error.errorCode(), -2);
    EXPECT_EQ(error.errorMessage(), "");
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(transfer.mStarts, 0);
}

TEST(Transfer, OfAnyKindIsDestroyedThroughTheContract) {
    bool destroyed = false;
    std::unique_ptr<IDownload>(new BareTransfer(destroyed)).reset();
    EXPECT_TRUE(destroyed);
}

TEST_P(EveryTransfer, IsCreatedWithoutErrorAndNotFinished) {
    const auto transfer = make(true);
    float progress = -1.0F;
    EXPECT_EQ(transfer->getProgress(progress).errorCode(), 0);
    EXPECT_EQ(progress, 0.0F);
    EXPECT_FALSE(transfer->finish());
    EXPECT_EQ(transfer->getError().errorCode(), 0);
    EXPECT_EQ(transfer->getError().errorMessage(), "");
}

TEST_P(EveryTransfer, FinishesWithThePackageAtItsFileName) {
    const auto transfer = make(true);
    EXPECT_EQ(transfer->start(mWaiter.callback()).errorCode(), 0);
    ASSERT_TRUE(mWaiter.wait());
    std::string fileName;
    float progress = 0.0F;
    EXPECT_EQ(transfer->getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, mPath);
    EXPECT_EQ(support::readText(fileName), mPackage);
    transfer->getProgress(progress);
    EXPECT_EQ(progress, 1.0F);
    EXPECT_TRUE(transfer->finish());
    EXPECT_EQ(transfer->getError().errorCode(), 0);
}

TEST_P(EveryTransfer, CallsBackWithItsErrorWhenItFails) {
    const auto transfer = make(false);
    transfer->start(mWaiter.callback());
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_FALSE(transfer->finish());
    EXPECT_NE(transfer->getError().errorCode(), 0);
}

TEST_P(EveryTransfer, MayBeStartedAgainAfterAFailure) {
    const auto transfer = make(false);
    transfer->start(mWaiter.callback());
    ASSERT_TRUE(mWaiter.wait());
    mServer.serve("/p.exe", mPackage);
    if (!GetParam().fetches) mStore.put("cloud/p.exe");
    EXPECT_EQ(transfer->start(mWaiter.callback()).errorCode(), 0);
    ASSERT_TRUE(mWaiter.wait(2));
    EXPECT_TRUE(transfer->finish());
    EXPECT_EQ(transfer->getError().errorCode(), 0);
}

TEST_P(EveryTransfer, FinishesAgainWhenItIsStartedAfterItsEnd) {
    const auto transfer = make(true);
    transfer->start(mWaiter.callback());
    ASSERT_TRUE(mWaiter.wait());
    EXPECT_EQ(transfer->start(mWaiter.callback()).errorCode(), 0);
    ASSERT_TRUE(mWaiter.wait(2));
    EXPECT_TRUE(transfer->finish());
    EXPECT_LE(mServer.requestCount("/p.exe"), 1U);
}

TEST_P(EveryTransfer, StopAndCancelBeforeAnyStartSucceed) {
    const auto transfer = make(true);
    EXPECT_EQ(transfer->stop().errorCode(), 0);
    EXPECT_EQ(transfer->cancel().errorCode(), 0);
    EXPECT_EQ(transfer->getError().errorCode(), 0);
    EXPECT_FALSE(transfer->finish());
}

TEST_P(EveryTransfer, StartsWithoutACallback) {
    const auto transfer = make(true);
    EXPECT_EQ(transfer->start({}).errorCode(), 0);
    EXPECT_TRUE(support::eventually([&] { return transfer->finish(); }));
}

INSTANTIATE_TEST_SUITE_P(IDownload, EveryTransfer, testing::Values(Member{"Local", false}, Member{"Http", true}),
                         [](const auto& each) { return each.param.name; });
