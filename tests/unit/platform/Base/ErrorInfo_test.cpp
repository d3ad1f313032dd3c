#include "Public/Base/ErrorInfo.h"

#include <cerrno>

#include "Public/Base/JsonValue.h"

using Public::Base::ErrorInfo;

namespace {

TEST(ErrorInfo, DefaultIsSuccess) {
    const ErrorInfo error;
    EXPECT_FALSE(error);
    EXPECT_TRUE(!error);
    EXPECT_EQ(error.errorCode(), 0);
    EXPECT_EQ(error.errorMessage(), "");
}

TEST(ErrorInfo, ConvertsToTrueWhenItCarriesAnError) {
    EXPECT_TRUE(ErrorInfo(-1, ""));
    EXPECT_TRUE(ErrorInfo(5, ""));
    EXPECT_FALSE(ErrorInfo(0, "a message does not make an error"));
}

TEST(ErrorInfo, KeepsCodeAndMessageThroughCopies) {
    const ErrorInfo error(-304, "text");
    ErrorInfo copy;
    copy = error;
    EXPECT_EQ(copy.errorCode(), -304);
    EXPECT_EQ(copy.errorMessage(), "text");
}

TEST(ErrorInfo, TakesCodesThatHaveNoName) { EXPECT_EQ(ErrorInfo(-12345, "").errorCode(), -12345); }

TEST(ErrorInfo, SystemFailureIsBelowTenThousandWithTheSystemsText) {
    ErrorInfo::setLastSystemError(ENOENT);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
    EXPECT_FALSE(ErrorInfo::getLastError().errorMessage().empty());
}

TEST(ErrorInfo, LastErrorBelongsToItsThread) {
    ErrorInfo::setLastSystemError(EACCES);
    int other = 1;
    std::thread([&other] { other = ErrorInfo::getLastError().errorCode(); }).join();
    EXPECT_EQ(other, 0);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
}

TEST(ErrorInfo, SuccessDoesNotClearTheLastError) {
    ErrorInfo::setLastError(ErrorInfo(-602, "kept"));
    Public::Base::JsonValue value;
    EXPECT_FALSE(value.read(Public::Base::SharedBuffer("{}")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -602);
    EXPECT_EQ(ErrorInfo::getLastError().errorMessage(), "kept");
}

TEST(ErrorInfo, LaterFailureTakesThePlaceOfTheLast) {
    ErrorInfo::setLastSystemError(ENOENT);
    ErrorInfo::setLastError(ErrorInfo(-603, "later"));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -603);
}

TEST(ErrorInfo, LastErrorIsACopy) {
    ErrorInfo::setLastError(ErrorInfo(-1, "first"));
    const ErrorInfo error = ErrorInfo::getLastError();
    ErrorInfo::setLastError(ErrorInfo(-2, "second"));
    EXPECT_EQ(error.errorCode(), -1);
    EXPECT_EQ(error.errorMessage(), "first");
}

TEST(ErrorInfo, SystemNumberThatNoSystemKnowsIsKept) {
    ErrorInfo::setLastSystemError(99999);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -109999);
}

TEST(ErrorInfo, CodesThatTravelKeepTheirNumbers) {
    using namespace Public::Base;
    EXPECT_EQ(ErrorCode_Success, 0);
    EXPECT_EQ(ErrorCode_Failed, -1);
    EXPECT_EQ(ErrorCode_NotSupported, -2);
    EXPECT_EQ(ErrorCode_NoInstallDir, -4);
    EXPECT_EQ(ErrorCode_AuthFailed, -105);
    EXPECT_EQ(ErrorCode_NoConnection, -200);
    EXPECT_EQ(ErrorCode_NetworkTimeout, -201);
    EXPECT_EQ(ErrorCode_RequestTimeout, -202);
    EXPECT_EQ(ErrorCode_LinkDead, -203);
    EXPECT_EQ(ErrorCode_NoSuchNode, -204);
    EXPECT_EQ(ErrorCode_BadDocument, -301);
    EXPECT_EQ(ErrorCode_PackageUnreadable, -302);
    EXPECT_EQ(ErrorCode_RequestError, -304);
    EXPECT_EQ(ErrorCode_PackageIncomplete, -308);
    EXPECT_EQ(ErrorCode_PeerHasEnough, -415);
    EXPECT_EQ(ErrorCode_PackageInvalid, -416);
    EXPECT_EQ(ErrorCode_UploadRunning, -417);
    EXPECT_EQ(ErrorCode_PeerUnreachable, -425);
    EXPECT_EQ(ErrorCode_PeerNotReady, -426);
    EXPECT_EQ(ErrorCode_PackageMismatch, -428);
    EXPECT_EQ(ErrorCode_OutputOpen, -602);
    EXPECT_EQ(ErrorCode_OutputWrite, -603);
    EXPECT_EQ(ErrorCode_ArchiveError, -606);
}

}  // namespace
