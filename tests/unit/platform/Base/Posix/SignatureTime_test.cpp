#include "Base/Posix/SignatureTime.h"

#include "Base/Posix/SignatureChain.h"
#include "SignatureFixture.h"

namespace {

using support::SigningKit;
using support::TimeStamp;

constexpr std::time_t sIn2015 = 1435708800;  // the former publisher's certificate was valid

class SignatureStampedTime : public support::SignatureFixture, public testing::WithParamInterface<TimeStamp::Form> {};

INSTANTIATE_TEST_SUITE_P(Forms, SignatureStampedTime, testing::Values(TimeStamp::Rfc3161, TimeStamp::CounterSignature),
                         [](const auto& test) {
                             return test.param == TimeStamp::Rfc3161 ? "Token" : "CounterSignature";
                         });

TEST_P(SignatureStampedTime, IsGivenAsTheAuthorityTellsIt) {
    signedPackage(SigningKit::Expired, {.stamp = TimeStamp{GetParam(), sIn2015, mKit.timeStamper()}});
    const std::string entry = support::readSignatures(path("signed.exe")).at(0);
    Public::Base::ProgramSignature signature;
    std::string flaw;
    ASSERT_EQ("", parseSignature({reinterpret_cast<const unsigned char*>(entry.data()), entry.size()}, signature));
    const auto roots = Public::Base::loadRoots(mKit.rootPem(), flaw);
    EXPECT_EQ(sIn2015, findStampedTime(signature, roots.get(), std::time(nullptr)));
}

}  // namespace
