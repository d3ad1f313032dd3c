// A push whose peer, link and cluster are played by the test.
#pragma once

#include "HttpTransferFixture.h"
#include "OpenFiles.h"
#include "PostDownload.h"
#include "Public/Base/DetachedThread.h"
#include "PushDoubles.h"

namespace Tarnwick::OrvUpdate {

class PostDownloadFixture : public testing::Test {
protected:
    static constexpr size_t kChunk = 0x100000;

    PostDownloadFixture() { mProvider->direct = mLink; }
    ~PostDownloadFixture() override { Public::Base::settleDetached(); }

    /// Puts a sound package of that many bytes in place of the one to send.
    void putPackage(size_t bytes) {
        support::PackageSpec spec;
        spec.crc = "off";
        mStore.put("p.exe", spec);
        const size_t length = std::filesystem::file_size(mPackage);
        support::appendBytes(mPackage, support::programImage(64, "noise", bytes - length));
        support::claimAllBytes(mPackage);
    }
    std::shared_ptr<PostDownload> makePush(VersionSource source = VersionSource_Online) {
        return std::make_shared<PostDownload>(mRequest, mPackage, mProvider, source, "peer");
    }
    /// Starts a push of a package of that many bytes.
    void begin(size_t bytes) {
        putPackage(bytes);
        begin();
    }
    void begin() {
        mPush = makePush();
        ASSERT_EQ(mPush->start(mWaiter.callback()).errorCode(), 0);
    }
    /// Starts a push and returns when what can happen has happened.
    void beginAndSettle() {
        begin();
        Public::Base::settleDetached();
    }
    float progress() const {
        float progress = -1.0F;
        EXPECT_EQ(mPush->getProgress(progress).errorCode(), 0);
        return progress;
    }
    int error() const { return mPush->getError().errorCode(); }
    std::string content() const { return support::readText(mPackage).value(); }
    /// What a failed push looks like from outside.
    void expectFailed(int code, const std::string& log) const {
        EXPECT_EQ(error(), code);
        EXPECT_EQ(mPush->getError().errorMessage(), "");
        EXPECT_EQ(mWaiter.calls(), 1);
        EXPECT_FALSE(mPush->finish());
        EXPECT_TRUE(mLog.has(2, log));
        EXPECT_EQ(mRequest->queries.count(), 0U);
        EXPECT_EQ(support::timesOpenHere(mPackage), 0U);
    }

    support::PackageStore mStore;
    std::string mPackage = mStore.path("p.exe");
    support::LogRecorder mLog;
    support::Waiter mWaiter;
    std::shared_ptr<support::ChunkLink> mLink = std::make_shared<support::ChunkLink>();
    std::shared_ptr<support::LinkProvider> mProvider = std::make_shared<support::LinkProvider>();
    std::shared_ptr<support::QueryingRequest> mRequest = std::make_shared<support::QueryingRequest>();
    std::shared_ptr<PostDownload> mPush;
};

}  // namespace Tarnwick::OrvUpdate
