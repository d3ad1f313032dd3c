#include "OpenSslHandles.h"
#include "SignatureFixture.h"

namespace {

using support::SigningKit;
using support::TimeStamp;
using support::verify;

constexpr std::time_t sIn2015 = 1435708800;  // the former publisher's certificate was valid
constexpr std::time_t sIn2016 = 1467331200;  // it was not any more
constexpr std::time_t sIn2037 = 2114380800;

/// Every test runs for both forms of a time-stamp.
class SignatureTimeTest : public support::SignatureFixture, public testing::WithParamInterface<TimeStamp::Form> {
protected:
    std::string stampedPackage(SigningKit::Signer signer, std::time_t when, const support::Credential& authority) {
        return signedPackage(signer, {.stamp = TimeStamp{GetParam(), when, authority}});
    }
    std::string stampedPackage(SigningKit::Signer signer, std::time_t when) {
        return stampedPackage(signer, when, mKit.timeStamper());
    }

    support::Credential authority(const support::CertificateSpec& spec) {
        const auto root = mKit.root();
        return support::makeCertificate(spec, &root);
    }

    /// Gives `file` the time-stamp of another signature, made over `file`'s own package.
    static void moveStamp(const std::string& from, const std::string& file) {
        const auto source = message(from), target = message(file);
        PKCS7_SIGNER_INFO* signer = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(target.get()), 0);
        PKCS7_SIGNER_INFO* stamped = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(source.get()), 0);
        std::swap(signer->unauth_attr, stamped->unauth_attr);
        support::writeSignatures(file, {support::ssl::toDer(target.get(), i2d_PKCS7)});
    }

    static support::ssl::SignedData message(const std::string& file) {
        return support::ssl::readMessage(support::readSignatures(file).at(0));
    }
};

INSTANTIATE_TEST_SUITE_P(Forms, SignatureTimeTest, testing::Values(TimeStamp::Rfc3161, TimeStamp::CounterSignature),
                         [](const auto& test) {
                             return test.param == TimeStamp::Rfc3161 ? "Token" : "CounterSignature";
                         });

TEST_P(SignatureTimeTest, KeepsASignatureGoodBeyondItsCertificate) {
    const auto verdict = verify(stampedPackage(SigningKit::Expired, sIn2015));
    EXPECT_TRUE(verdict.good) << verdict.detail;
    EXPECT_EQ("Orv Test Former Publisher", verdict.signer);
}

TEST_P(SignatureTimeTest, DoesNotHelpWhenTheCertificateHadExpiredByThen) {
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Expired, sIn2016)).isBad());
}

TEST_P(SignatureTimeTest, MakesASignatureBadThatIsOlderThanItsCertificate) {
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Publisher, sIn2015)).isBad());
}

TEST_P(SignatureTimeTest, CountsAsNoneUnderAnUntrustedRoot) {
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Expired, sIn2015, mKit.foreignTimeStamper())).isBad());
    // Judged by today, a certificate that is valid today stands.
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Publisher, sIn2015, mKit.foreignTimeStamper())).good);
}

TEST_P(SignatureTimeTest, CountsAsNoneFromTheFuture) {
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Publisher, sIn2037)).good);
    auto spec = support::CertificateSpec{
        .commonName = "Orv", .notBefore = "20360101000000Z", .extendedKeyUsage = "codeSigning"};
    support::signFile(authority(spec), package(), path("later.exe"),
                      {.stamp = TimeStamp{GetParam(), sIn2037, mKit.timeStamper()}});
    EXPECT_TRUE(verify(path("later.exe")).isBad());
}

TEST_P(SignatureTimeTest, CountsAsNoneWhenTheAuthorityWasNotYetValid) {
    const auto late = authority({.commonName = "Orv Late Time", .extendedKeyUsage = "critical,timeStamping"});
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Expired, sIn2015, late)).isBad());
}

TEST_P(SignatureTimeTest, HoldsWhenTheAuthorityHasExpiredSince) {
    const auto former = authority({.commonName = "Orv Former Time",
                                   .notBefore = "20150101000000Z",
                                   .notAfter = "20160101000000Z",
                                   .extendedKeyUsage = "critical,timeStamping"});
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Expired, sIn2015, former)).good);
}

TEST_P(SignatureTimeTest, CountsAsNoneForAnotherSignature) {
    std::filesystem::copy_file(stampedPackage(SigningKit::Expired, sIn2015), path("stamped.exe"));
    otherPackage();
    mKit.sign(path("other.exe"), path("signed.exe"), SigningKit::Expired);
    moveStamp(path("stamped.exe"), path("signed.exe"));
    EXPECT_TRUE(verify(path("signed.exe")).isBad());
}

TEST_P(SignatureTimeTest, DoesNotProlongALifetimeSignersCertificate) {
    auto spec = support::CertificateSpec{.commonName = "Orv",
                                         .notBefore = "20150101000000Z",
                                         .notAfter = "20160101000000Z",
                                         .extendedKeyUsage = "codeSigning,1.3.6.1.4.1.311.10.3.13"};
    support::signFile(authority(spec), package(), path("life.exe"),
                      {.stamp = TimeStamp{GetParam(), sIn2015, mKit.timeStamper()}});
    EXPECT_TRUE(verify(path("life.exe")).isBad());
}

TEST_P(SignatureTimeTest, DoesNotHideAChangedFile) {
    const std::string file = stampedPackage(SigningKit::Publisher, 1600000000);
    EXPECT_TRUE(verify(file).good);
    std::string bytes = support::readText(file).value();
    bytes[bytes.size() / 2] ^= 1;
    support::writeText(file, bytes);
    EXPECT_TRUE(verify(file).isBad());
}

class CounterSignature : public SignatureTimeTest {};
INSTANTIATE_TEST_SUITE_P(Form, CounterSignature, testing::Values(TimeStamp::CounterSignature),
                         [](const auto&) { return "CounterSignature"; });

/// Time-stamps whose attributes are not of the types that everyone takes for granted.
class TimeStampToken : public support::SignatureFixture, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Attribute, TimeStampToken,
                         testing::Values(NID_pkcs9_messageDigest, NID_id_smime_aa_signingCertificate,
                                         NID_pkcs9_contentType),
                         [](const auto& test) {
                             return std::string(OBJ_nid2sn(test.param)).substr(0, 2) == "id"
                                        ? std::string("signingCertificate")
                                        : std::string(OBJ_nid2sn(test.param));
                         });

TEST_P(TimeStampToken, CountsAsNoneWithAnAttributeOfAnotherType) {
    const std::string file = signedPackage(SigningKit::Expired), signature = support::readSignatures(file).at(0);
    const auto parsed = support::ssl::readMessage(signature);
    const auto* stamped = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(parsed.get()), 0)->enc_digest;
    const std::string bytes(reinterpret_cast<const char*>(ASN1_STRING_get0_data(stamped)),
                            static_cast<size_t>(ASN1_STRING_length(stamped)));
    const std::string token = support::makeTimeStampToken(mKit.timeStamper(), bytes, sIn2015);
    const auto message = support::ssl::readMessage(token);
    ASN1_TYPE* value =
        PKCS7_get_signed_attribute(sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(message.get()), 0), GetParam());
    ASSERT_NE(nullptr, value);
    ASN1_TYPE_set(value, V_ASN1_BOOLEAN, value);
    support::writeSignatures(file, {support::addAttribute(signature, "1.3.6.1.4.1.311.3.3.1",
                                                          support::ssl::toDer(message.get(), i2d_PKCS7))});
    EXPECT_TRUE(verify(file).isBad());
}

TEST_P(CounterSignature, CountsAsNoneFromAnAuthorityForAnotherUsage) {
    EXPECT_TRUE(verify(stampedPackage(SigningKit::Expired, sIn2015, mKit.credential(SigningKit::Expired))).isBad());
}

}  // namespace
