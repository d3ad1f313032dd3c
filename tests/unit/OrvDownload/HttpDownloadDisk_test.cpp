// Faults of the disk during a transfer from the cloud.
#include "FileSizeLimit.h"
#include "HttpFailureFixture.h"
#include "Public/Base/System.h"
#include "SystemErrors.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::File;
using support::HttpTransferFailure;

namespace {

constexpr int kRefusal = ENOSPC;  // whatever the system's words for the number are
constexpr int kRefused = -(10000 + kRefusal);

/// A disk that takes so many bytes.
class FullFile : public File {
public:
    explicit FullFile(size_t room) : mRoom(room) {}
    size_t write(const void* data, size_t length) override {
        const size_t taken = std::min(mRoom, length);
        mRoom -= taken;
        mWritten.append(static_cast<const char*>(data), taken);
        ++mWrites;
        if (taken < length) Public::Base::ErrorInfo::setLastSystemError(kRefusal);
        return taken;
    }
    size_t mRoom;
    std::string mWritten;
    int mWrites = 0;
};

std::string logOf(const ErrorInfo& error) { return "download http version fail! errstr:" + error.errorMessage(); }

/// What a FullFile gives to be logged.
std::string logOfRefusal() {
    ErrorInfo::setLastSystemError(kRefusal);
    return logOf(ErrorInfo::getLastError());
}

/// Takes nothing and records no error.
class SilentFile : public File {
public:
    size_t write(const void*, size_t) override { return 0; }
};

}  // namespace

TEST_F(HttpTransferFailure, WriteFaultIsRecordedButDoesNotUndoFinish) {
    prepareBody(text(4000));
    {
        const support::FileSizeLimit full(1000);
        run();
    }
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(error(), errorOf(support::SystemError::FileLimit));
    for (const auto& textOfLog : logged()) EXPECT_EQ(textOfLog, logOf(mTransfer->getError()));
    EXPECT_FALSE(logged().empty());
    EXPECT_EQ(content(), text(4000).substr(0, 1000));
}

TEST_F(HttpTransferFailure, PiecesAfterAWriteFaultAreStillWrittenAndCounted) {
    startSilent();
    const auto disk = std::make_shared<FullFile>(3);
    access().setFile(disk);
    access().receive("abcd", "8");
    EXPECT_EQ(error(), kRefused);
    EXPECT_EQ(disk->mWritten, "abc");
    EXPECT_EQ(mWaiter.calls(), 0);
    disk->mRoom = 100;
    access().receive("efgh", "8");
    EXPECT_EQ(disk->mWritten, "abcefgh");
    EXPECT_EQ(access().received(), 8U);
    EXPECT_EQ(error(), kRefused);
    finishWith(200);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(error(), kRefused);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(logged(), Texts{logOfRefusal()});
    EXPECT_TRUE(content());
}

TEST_F(HttpTransferFailure, FileEndsWhereTheDiskFirstTookTooLittle) {
    startSilent();
    const auto disk = std::make_shared<FullFile>(3);
    access().setFile(disk);
    access().receive("abcd", "8");
    support::writeText(mPath, "abcefgh");  // as the pieces behind it leave the file
    access().receive("efgh", "8");
    finishWith(200);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "abc");
}

TEST_F(HttpTransferFailure, AnUnfitPackageIsReplacedNotCutUnderItsReaders) {
    support::writeText(mPath, "an old one that is no package");
    Public::Base::MappedFile reader;
    ASSERT_EQ(reader.open(mPath), Public::Base::MappedFile::Result::Mapped);
    prepareBody("new");
    run();
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(reader.data()), reader.size()),
              "an old one that is no package");
    EXPECT_TRUE(reader.isReplacedAt(mPath));
}

TEST_F(HttpTransferFailure, EveryFailedPieceIsLogged) {
    startSilent();
    access().setFile(std::make_shared<FullFile>(0));
    for (int piece = 0; piece < 3; ++piece) access().receive("ab", "6");
    EXPECT_EQ(logged(), Texts(3, logOfRefusal()));
}

TEST_F(HttpTransferFailure, ShortWriteThatRecordedNoErrorIsPassedOver) {
    startSilent();
    access().setFile(std::make_shared<SilentFile>());
    int lastError = -99;
    // A thread of its own, on which nothing has failed yet.
    std::thread([&] {
        lastError = ErrorInfo::getLastError().errorCode();
        access().receive("ab", "2");
    }).join();
    EXPECT_EQ(lastError, 0);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(logged().empty());
    EXPECT_EQ(access().received(), 2U);
}

TEST_F(HttpTransferFailure, BadEndReplacesTheErrorOfAWriteFault) {
    startSilent();
    access().setFile(std::make_shared<FullFile>(0));
    access().receive("ab", "4");
    EXPECT_EQ(error(), kRefused);
    finishWith(200);
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(mTransfer->finish());
}
