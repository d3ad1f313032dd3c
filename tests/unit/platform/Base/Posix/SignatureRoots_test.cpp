// The trusted roots are those of a file.
#include "SignatureFixture.h"

namespace {

using Public::Base::Signature;
using support::SigningKit;
using support::verify;

class SignatureRootsFile : public support::SignatureFixture {};

TEST_F(SignatureRootsFile, CallsEverySignedFileBadWithoutTrustedRoots) {
    Signature::setTrustedRoots(path("missing.pem"));
    const auto verdict = verify(signedPackage());
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("Orv Test Publisher", verdict.signer);
    EXPECT_EQ("the trusted roots cannot be read from " + path("missing.pem"), verdict.detail);
}

TEST_F(SignatureRootsFile, CallsAnUnsignedFileUnsignedWithoutTrustedRoots) {
    Signature::setTrustedRoots(path("missing.pem"));
    EXPECT_TRUE(verify(package()).isUnsigned());
}

TEST_F(SignatureRootsFile, TrustsTheOtherRootOnceItIsTheListedOne) {
    Signature::setTrustedRoots(mKit.foreignRootPem());
    EXPECT_TRUE(verify(signedPackage(SigningKit::Untrusted)).good);
    EXPECT_TRUE(verify(signedPackage()).isBad());
}

}  // namespace
