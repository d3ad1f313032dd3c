#include "LocalDownload.h"

#include "FileText.h"
#include "LogRecorder.h"
#include "PackageStore.h"

using namespace Tarnwick::OrvUpdate;
using support::PackageSpec;
using support::SigningKit;

namespace {

float progressOf(IDownload& transfer) {
    float progress = -1.0F;
    EXPECT_FALSE(transfer.getProgress(progress));
    return progress;
}

class LocalTransfer : public testing::Test {
protected:
    std::string badPackage() const { return mStore.putText("bad.exe", "no package"); }
    Function<void()> counting() {
        return [this] { ++mCalls; };
    }

    support::PackageStore mStore;
    int mCalls = 0;
};

/// A signed package whose test reads some megabytes, so that another thread can come in between.
class SlowLocalTransfer : public LocalTransfer {
protected:
    std::string slowPackage() const {
        PackageSpec spec;
        spec.compressor = "zlib";
        spec.solid = false;
        spec.headerScript = "SetCompress off\n";
        spec.files = {{"big.bin", support::programImage(64, "big", 8U << 20U)}};
        return mStore.putSigned("slow.exe", SigningKit::Publisher, spec);
    }

    /// Starts the fresh transfer, which another thread cancels as soon as the package test has begun.
    ErrorInfo startAndCancel(LocalDownload& transfer, const Function<void()>& callback) {
        std::atomic<bool> over{false};
        mCancelled = false;
        std::thread canceller([&] {
            float progress = 0.0F;
            while (!over && progress != 0.98F) transfer.getProgress(progress);
            transfer.cancel();
            mCancelled = true;
        });
        const ErrorInfo error = transfer.start(callback);
        over = true;
        canceller.join();
        return error;
    }

    std::atomic<bool> mCancelled{false};
    support::TrustRoots mTrust{SigningKit().rootPem()};
};

}  // namespace

TEST_F(LocalTransfer, BeginsWithoutProgressAndError) {
    LocalDownload transfer(mStore.put("p.exe"));
    EXPECT_EQ(progressOf(transfer), 0.0F);
    EXPECT_FALSE(transfer.finish());
    EXPECT_EQ(transfer.getError().errorCode(), 0);
    EXPECT_EQ(transfer.getError().errorMessage(), "");
}

TEST_F(LocalTransfer, TellsTheFileNameOfItsConstruction) {
    LocalDownload transfer("D:\\any where/p.exe");
    std::string fileName;
    EXPECT_EQ(transfer.getFileName(fileName).errorCode(), 0);
    EXPECT_EQ(fileName, "D:\\any where/p.exe");
}

TEST_F(LocalTransfer, FinishesWithASoundPackageBeforeStartReturns) {
    LocalDownload transfer(mStore.put("p.exe"));
    bool finishedInCallback = false;
    float progressInCallback = 0.0F;
    std::thread::id thread;
    const ErrorInfo error = transfer.start([&] {
        ++mCalls;
        finishedInCallback = transfer.finish();
        progressInCallback = progressOf(transfer);
        thread = std::this_thread::get_id();
    });
    EXPECT_EQ(error.errorCode(), 0);
    EXPECT_EQ(mCalls, 1);
    EXPECT_TRUE(finishedInCallback);
    EXPECT_EQ(progressInCallback, 1.0F);
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_TRUE(transfer.finish());
    EXPECT_EQ(progressOf(transfer), 1.0F);
    EXPECT_EQ(transfer.getError().errorCode(), 0);
}

TEST_F(LocalTransfer, LeavesProgressAt098WhenPackageIsUnsound) {
    LocalDownload transfer(badPackage());
    bool finishedInCallback = true;
    int errorInCallback = 0;
    const ErrorInfo error = transfer.start([&] {
        ++mCalls;
        finishedInCallback = transfer.finish();
        errorInCallback = transfer.getError().errorCode();
    });
    EXPECT_EQ(error.errorCode(), -416);
    EXPECT_EQ(error.errorMessage(), "");
    EXPECT_EQ(mCalls, 1);
    EXPECT_FALSE(finishedInCallback);
    EXPECT_EQ(errorInCallback, -416);
    EXPECT_FALSE(transfer.finish());
    EXPECT_EQ(transfer.getError().errorCode(), -416);
    const float progress = progressOf(transfer);
    EXPECT_EQ(progress, 0.98F);
    uint32_t bits = 0;
    std::memcpy(&bits, &progress, sizeof bits);
    EXPECT_EQ(bits, 0x3F7AE148U);
}

TEST_F(LocalTransfer, LogsAnUnsoundPackage) {
    support::LogRecorder log;
    LocalDownload(badPackage()).start(counting());
    const auto entries = log.entries();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].level, 2);
    EXPECT_EQ(entries[0].text, "install package invalid!");
    EXPECT_EQ(entries[0].file, "OrvUpdate/Src/OrvDownload");
    EXPECT_NE(entries[0].function.find("LocalDownload::start"), std::string::npos);
}

TEST_F(LocalTransfer, LogsNothingForASoundPackage) {
    support::LogRecorder log;
    LocalDownload(mStore.put("p.exe")).start(counting());
    EXPECT_TRUE(log.entries().empty());
    EXPECT_EQ(mCalls, 1);
}

TEST_F(LocalTransfer, FailsForAMissingFileAndForAnEmptyName) {
    EXPECT_EQ(LocalDownload(mStore.path("missing.exe")).start(counting()).errorCode(), -416);
    EXPECT_EQ(LocalDownload("").start(counting()).errorCode(), -416);
    EXPECT_EQ(mCalls, 2);
}

TEST_F(LocalTransfer, StartsWithoutACallback) {
    LocalDownload sound(mStore.put("p.exe"));
    EXPECT_EQ(sound.start(nullptr).errorCode(), 0);
    EXPECT_TRUE(sound.finish());
    LocalDownload bad(badPackage());
    EXPECT_EQ(bad.start(nullptr).errorCode(), -416);
}

TEST_F(LocalTransfer, OffersNoStartWithAKey) {
    LocalDownload transfer(mStore.put("p.exe"));
    const ErrorInfo error = transfer.start(counting(), &transfer);
    EXPECT_EQ(error.errorCode(), -2);
    EXPECT_EQ(error.errorMessage(), "");
    EXPECT_EQ(mCalls, 0);
    EXPECT_EQ(progressOf(transfer), 0.0F);
    EXPECT_FALSE(transfer.finish());
}

TEST_F(LocalTransfer, StopDoesNothing) {
    LocalDownload transfer(mStore.put("p.exe"));
    EXPECT_EQ(transfer.stop().errorCode(), 0);
    EXPECT_EQ(transfer.start(counting()).errorCode(), 0);
    EXPECT_EQ(transfer.stop().errorCode(), 0);
    EXPECT_TRUE(transfer.finish());
    EXPECT_EQ(progressOf(transfer), 1.0F);
}

TEST_F(LocalTransfer, CancelLeavesThePackageWhereItIs) {
    const std::string path = mStore.put("p.exe");
    LocalDownload transfer(path);
    EXPECT_EQ(transfer.cancel().errorCode(), 0);
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(transfer.getError().errorCode(), 0);
}

TEST_F(LocalTransfer, StartForgetsAnEarlierCancel) {
    LocalDownload transfer(mStore.put("p.exe"));
    transfer.cancel();
    EXPECT_EQ(transfer.start(counting()).errorCode(), 0);
    EXPECT_EQ(mCalls, 1);
    EXPECT_TRUE(transfer.finish());
}

TEST_F(LocalTransfer, StartsAgainAfterAFailureWithoutTheOldError) {
    const std::string path = badPackage();
    LocalDownload transfer(path);
    EXPECT_EQ(transfer.start(counting()).errorCode(), -416);
    support::makePackage({}, path);
    EXPECT_EQ(transfer.start(counting()).errorCode(), 0);
    EXPECT_EQ(transfer.getError().errorCode(), 0);
    EXPECT_TRUE(transfer.finish());
    EXPECT_EQ(mCalls, 2);
}

TEST_F(LocalTransfer, IsNotFinishedAnyMoreWhenThePackageHasGoneBadSince) {
    const std::string path = mStore.put("p.exe");
    LocalDownload transfer(path);
    EXPECT_EQ(transfer.start(counting()).errorCode(), 0);
    support::appendBytes(path, "x");
    EXPECT_EQ(transfer.start(counting()).errorCode(), -416);
    EXPECT_FALSE(transfer.finish());
    EXPECT_EQ(progressOf(transfer), 0.98F);
}

TEST_F(LocalTransfer, MayBeReleasedByItsOwnCallback) {
    for (const auto& [path, code] : {std::pair(mStore.put("p.exe"), 0), std::pair(badPackage(), -416)}) {
        auto owner = std::make_shared<LocalDownload>(path);
        const std::weak_ptr<LocalDownload> watched = owner;
        bool gone = false;
        LocalDownload& transfer = *owner;
        const ErrorInfo error = transfer.start([&] {
            owner.reset();
            gone = watched.expired();
        });
        EXPECT_EQ(error.errorCode(), code);
        EXPECT_TRUE(gone);
    }
}

TEST_F(SlowLocalTransfer, DoesNotCallBackWhenCancelledDuringTheTest) {
    const std::string path = slowPackage();
    bool cancelled = false;
    // The machine may be too busy to let the cancel in before the test ends; then the run has to finish as usual.
    for (int run = 0; run < 200 && !cancelled; ++run) {
        mCalls = 0;
        LocalDownload transfer(path);
        EXPECT_EQ(startAndCancel(transfer, counting()).errorCode(), 0);
        cancelled = mCalls == 0;
        EXPECT_EQ(transfer.finish(), !cancelled);
        EXPECT_EQ(progressOf(transfer), cancelled ? 0.98F : 1.0F);
        EXPECT_EQ(transfer.getError().errorCode(), 0);
    }
    EXPECT_TRUE(cancelled);
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(SlowLocalTransfer, CallsBackForABadPackageAlsoWhenCancelledDuringTheTest) {
    const std::string path = slowPackage();
    support::flipMiddleByte(path);
    bool cancelledBefore = false;
    for (int run = 0; run < 200 && !cancelledBefore; ++run) {
        mCalls = 0;
        LocalDownload transfer(path);
        const auto callback = [&] {
            ++mCalls;
            cancelledBefore = mCancelled;
        };
        EXPECT_EQ(startAndCancel(transfer, callback).errorCode(), -416);
        EXPECT_EQ(mCalls, 1);
        EXPECT_FALSE(transfer.finish());
        EXPECT_EQ(transfer.getError().errorCode(), -416);
    }
    EXPECT_TRUE(cancelledBefore);
}

TEST_F(SlowLocalTransfer, IsReadFromOtherThreadsWhileItRuns) {
    LocalDownload transfer(slowPackage());
    std::atomic<bool> over{false};
    bool plausible = true;
    std::thread reader([&] {
        while (!over) {
            float progress = 0.0F;
            std::string fileName;
            transfer.getProgress(progress);
            transfer.getFileName(fileName);
            plausible = plausible && !transfer.getError() && !fileName.empty() &&
                        (progress == 0.0F || progress == 0.98F || progress == 1.0F);
            transfer.finish();
        }
    });
    EXPECT_EQ(transfer.start(counting()).errorCode(), 0);
    over = true;
    reader.join();
    EXPECT_TRUE(plausible);
    EXPECT_EQ(mCalls, 1);
}
