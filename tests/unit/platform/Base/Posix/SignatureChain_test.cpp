#include "Base/Posix/SignatureChain.h"

#include "CertificateMaker.h"
#include "OpenSslHandles.h"
#include "TempDir.h"

namespace {

using namespace Public::Base;
using support::CertificateSpec;
using support::makeCertificate;

CertificateSpec authority(const std::string& name) {
    return {
        .commonName = name, .authority = true, .keyUsage = "critical,keyCertSign", .keyKind = CertificateSpec::EcP256};
}

/// What is wrong with a time-stamp authority of that usage, straight under a root.
std::string flawOfStamper(const std::string& extendedKeyUsage) {
    const auto root = makeCertificate(authority("Root"));
    const auto rootCertificate = support::ssl::readCertificate(root.certificate);
    const auto stamper = support::ssl::readCertificate(makeCertificate({.commonName = "Orv",
                                                                        .keyUsage = "digitalSignature",
                                                                        .extendedKeyUsage = extendedKeyUsage,
                                                                        .keyKind = CertificateSpec::EcP256},
                                                                       &root)
                                                           .certificate);
    const ssl::Store roots(X509_STORE_new());
    X509_STORE_add_cert(roots.get(), rootCertificate.get());
    return findChainFlaw(
        {.leaf = stamper.get(), .roots = roots.get(), .usage = XKU_TIMESTAMP, .time = std::time(nullptr)});
}

TEST(SignatureChain, AsksTheUsageOfATimeStampAuthority) {
    EXPECT_EQ("the certificate is not meant for time-stamps", flawOfStamper("codeSigning"));
    EXPECT_EQ("", flawOfStamper("critical,timeStamping"));
}

class SignatureRoots : public testing::Test {
protected:
    std::string file(const std::string& content) {
        std::ofstream(mDirectory.path() + "/roots.pem", std::ios::binary) << content;
        return mDirectory.path() + "/roots.pem";
    }
    static int count(const ssl::Store& store) { return sk_X509_OBJECT_num(X509_STORE_get0_objects(store.get())); }

    support::TempDir mDirectory;
    std::string mFlaw;
};

TEST_F(SignatureRoots, AreAllReadFromOneFile) {
    const std::string pem =
        makeCertificate(authority("A")).certificate + "some words\n" + makeCertificate(authority("B")).certificate;
    const auto store = loadRoots(file(pem), mFlaw);
    ASSERT_TRUE(store);
    EXPECT_EQ(2, count(store));
    EXPECT_EQ("", mFlaw);
}

TEST_F(SignatureRoots, PassOverOneThatCannotBeRead) {
    const auto store = loadRoots(file("-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n" +
                                      makeCertificate(authority("B")).certificate),
                                 mFlaw);
    ASSERT_TRUE(store);
    EXPECT_EQ(1, count(store));
}

TEST_F(SignatureRoots, AreMissingInAnEmptyFile) {
    const std::string empty = file("");
    EXPECT_FALSE(loadRoots(empty, mFlaw));
    EXPECT_EQ("there are no trusted roots in " + empty, mFlaw);
}

TEST_F(SignatureRoots, AreMissingInADirectory) { EXPECT_FALSE(loadRoots(mDirectory.path(), mFlaw)); }

TEST_F(SignatureRoots, AreMissingWithoutTheFile) {
    EXPECT_FALSE(loadRoots(mDirectory.path() + "/no.pem", mFlaw));
    EXPECT_EQ("the trusted roots cannot be read from " + mDirectory.path() + "/no.pem", mFlaw);
}

}  // namespace
