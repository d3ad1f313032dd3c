#include "Base/Posix/SignatureChain.h"

#include "CertificateMaker.h"
#include "OpenSslHandles.h"
#include "TempDir.h"

namespace {

using namespace Public::Base;
using support::CertificateSpec;
using support::Credential;
using support::makeCertificate;

constexpr std::time_t sIn2025 = 1750000000;

CertificateSpec authority(const std::string& name) {
    return {
        .commonName = name, .authority = true, .keyUsage = "critical,keyCertSign", .keyKind = CertificateSpec::EcP256};
}

CertificateSpec leaf() {
    return {.commonName = "Orv",
            .keyUsage = "digitalSignature",
            .extendedKeyUsage = "codeSigning",
            .keyKind = CertificateSpec::EcP256};
}

/// What is wrong with leaf under intermediate under root.
std::string flawOf(const CertificateSpec& root, const CertificateSpec& intermediate, const CertificateSpec& last,
                   uint32_t usage = XKU_CODE_SIGN) {
    const Credential top = makeCertificate(root);
    const Credential middle = makeCertificate(intermediate, &top);
    const auto topCertificate = support::ssl::readCertificate(top.certificate);
    const auto middleCertificate = support::ssl::readCertificate(middle.certificate);
    const auto lastCertificate = support::ssl::readCertificate(makeCertificate(last, &middle).certificate);
    ssl::Store roots(X509_STORE_new());
    X509_STORE_add_cert(roots.get(), topCertificate.get());
    STACK_OF(X509)* others = sk_X509_new_null();
    sk_X509_push(others, middleCertificate.get());
    std::string flaw = findChainFlaw(
        {.leaf = lastCertificate.get(), .others = others, .roots = roots.get(), .usage = usage, .time = sIn2025});
    sk_X509_free(others);
    return flaw;
}

struct Case {
    const char* name;
    std::string flaw;
    void (*change)(CertificateSpec& root, CertificateSpec& intermediate, CertificateSpec& last);
};

constexpr const char* sNotForPrograms = "the certificate is not meant for signing programs";
constexpr const char* sIssuerUsage = "an issuer in the certificate chain is not meant for this usage";
constexpr const char* sTooWeak = "the certificate chain is too weak";
constexpr const char* sNotTrusted = "the certificate chain is not trusted: ";
using Spec = CertificateSpec;

const Case sCases[] = {
    {"Sound", "", [](Spec&, Spec&, Spec&) {}},
    {"WithoutKeyUsage", "", [](Spec&, Spec&, Spec& last) { last.keyUsage = ""; }},
    {"SignedWithSha1", "", [](Spec&, Spec&, Spec& last) { last.digest = "sha1"; }},
    {"SignedWithSha384", "", [](Spec&, Spec& middle, Spec&) { middle.digest = "sha384"; }},
    {"RootSignedWithMd5", "",
     [](Spec& root, Spec&, Spec&) {
         root.keyKind = Spec::Rsa2048;
         root.digest = "md5";
     }},
    {"LeafSignedWithMd5", sTooWeak,
     [](Spec&, Spec& middle, Spec& last) {
         middle.keyKind = Spec::Rsa2048;
         last.digest = "md5";
     }},
    {"IntermediateSignedWithMd5", sTooWeak,
     [](Spec& root, Spec& middle, Spec&) {
         root.keyKind = Spec::Rsa2048;
         middle.digest = "md5";
     }},
    {"LeafWithAShortKey", sTooWeak, [](Spec&, Spec&, Spec& last) { last.keyKind = Spec::Rsa512; }},
    {"RootWithAShortKey", sTooWeak, [](Spec& root, Spec&, Spec&) { root.keyKind = Spec::Rsa512; }},
    {"NoExtendedUsage", sNotForPrograms, [](Spec&, Spec&, Spec& last) { last.extendedKeyUsage = ""; }},
    {"AnyUsageOnly", sNotForPrograms, [](Spec&, Spec&, Spec& last) { last.extendedKeyUsage = "anyExtendedKeyUsage"; }},
    {"TimeStampsOnly", sNotForPrograms, [](Spec&, Spec&, Spec& last) { last.extendedKeyUsage = "timeStamping"; }},
    {"KeyForOtherWork", sNotForPrograms, [](Spec&, Spec&, Spec& last) { last.keyUsage = "keyEncipherment"; }},
    {"SeveralUsages", "", [](Spec&, Spec&, Spec& last) { last.extendedKeyUsage = "emailProtection,codeSigning"; }},
    {"IssuerForThisUsage", "", [](Spec&, Spec& middle, Spec&) { middle.extendedKeyUsage = "codeSigning"; }},
    {"IssuerForAnyUsage", "", [](Spec&, Spec& middle, Spec&) { middle.extendedKeyUsage = "anyExtendedKeyUsage"; }},
    {"IssuerForAnotherUsage", sIssuerUsage, [](Spec&, Spec& middle, Spec&) { middle.extendedKeyUsage = "serverAuth"; }},
    {"IssuerIsNoAuthority", sNotTrusted, [](Spec&, Spec& middle, Spec&) { middle.authority = false; }},
    {"IssuerDoesNotSayWhatItIs", sNotTrusted, [](Spec&, Spec& middle, Spec&) { middle.constrained = false; }},
    {"IssuerMayNotSign", sNotTrusted, [](Spec&, Spec& middle, Spec&) { middle.keyUsage = "digitalSignature"; }},
    {"Expired", "the certificate chain is not trusted: certificate has expired",
     [](Spec&, Spec&, Spec& last) { last.notAfter = "20240101000000Z"; }},
    {"IssuerExpired", "the certificate chain is not trusted: certificate has expired",
     [](Spec&, Spec& middle, Spec&) { middle.notAfter = "20240101000000Z"; }},
    {"NotYetValid", "the certificate chain is not trusted: certificate is not yet valid",
     [](Spec&, Spec&, Spec& last) { last.notBefore = "20300101000000Z"; }},
};

class SignatureChain : public testing::TestWithParam<Case> {};

TEST_P(SignatureChain, HasTheFlaw) {
    CertificateSpec root = authority("Root"), middle = authority("Middle"), last = leaf();
    GetParam().change(root, middle, last);
    const std::string flaw = flawOf(root, middle, last), &expected = GetParam().flaw;
    // What the library itself says of a chain differs between its versions.
    EXPECT_EQ(expected, expected == sNotTrusted ? flaw.substr(0, expected.size()) : flaw);
}

INSTANTIATE_TEST_SUITE_P(Certificates, SignatureChain, testing::ValuesIn(sCases),
                         [](const auto& test) { return test.param.name; });

TEST(SignatureChain, AsksTheUsageOfATimeStampAuthority) {
    auto last = leaf();
    EXPECT_EQ("the certificate is not meant for time-stamps",
              flawOf(authority("Root"), authority("Middle"), last, XKU_TIMESTAMP));
    last.extendedKeyUsage = "critical,timeStamping";
    EXPECT_EQ("", flawOf(authority("Root"), authority("Middle"), last, XKU_TIMESTAMP));
}

std::string signerOf(const CertificateSpec& spec) {
    return signerText(support::ssl::readCertificate(makeCertificate(spec).certificate).get());
}

TEST(SignatureChain, NamesTheSignerByCommonNameThenSubjectThenAsUnknown) {
    auto spec = leaf();
    spec.organization = "Works";
    EXPECT_EQ("Orv", signerOf(spec));
    spec.commonName = "";
    EXPECT_EQ("O = Works", signerOf(spec));
    spec.organization = "";
    EXPECT_EQ("unknown", signerOf(spec));
}

TEST(SignatureChain, ShowsNoControlCharactersOfAName) {
    auto spec = leaf();
    spec.commonName = "Orv\r\nall is well\x7f";
    EXPECT_EQ("Orv  all is well ", signerOf(spec));
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
