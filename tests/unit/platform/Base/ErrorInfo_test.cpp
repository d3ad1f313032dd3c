#include "Public/Base/ErrorInfo.h"

#include <cerrno>

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

}  // namespace
