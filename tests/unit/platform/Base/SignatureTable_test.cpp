#include "PssSigner.h"
#include "SignatureTableFixture.h"

namespace support {
namespace {

using Test = SignatureTableFixture;
using Public::Base::Signature;

constexpr std::time_t sIn2015 = 1435708800;  // the former publisher's certificate was valid
constexpr std::time_t sIn2016 = 1467331200;  // it was not any more

const char* nameOf(Ours ours) { return ours == Ours::Good ? "good" : ours == Ours::Bad ? "bad" : "unsigned"; }

Ours oursOf(const Verdict& verdict) { return verdict.good ? Ours::Good : verdict.isBad() ? Ours::Bad : Ours::Unsigned; }

void signStamped(Test& test, SigningKit::Signer signer, std::time_t when, const Credential& authority,
                 TimeStamp::Form form = TimeStamp::Rfc3161) {
    test.sign(signer, {.stamp = TimeStamp{form, when, authority}});
}

constexpr const char* sNotTrusted = "the certificate chain is not trusted: ";
constexpr const char* sExpired = "the certificate chain is not trusted: certificate has expired";
constexpr const char* sNotForPrograms = "the certificate is not meant for signing programs";
constexpr const char* sTooWeak = "the certificate chain is too weak";

const SignatureRow sSigners[] = {
    {"Sound", [](Test& test) { test.sign(); }, Ours::Good, "", Tool::Accepts},
    {"UntrustedRoot", [](Test& test) { test.sign(SigningKit::Untrusted); }, Ours::Bad, sNotTrusted, Tool::Refuses},
    {"SelfSigned",
     [](Test& test) { signFile(makeCertificate(test.publisher()), test.unsignedPackage(), test.signedFile()); },
     Ours::Bad, sNotTrusted, Tool::Refuses},
    {"WebServersCertificate", [](Test& test) { test.sign(SigningKit::WrongUsage); }, Ours::Bad, sNotForPrograms,
     Tool::Refuses},
    {"NoExtendedUsage",
     [](Test& test) {
         auto spec = test.publisher();
         spec.extendedKeyUsage = "";
         test.signBy(spec);
     },
     Ours::Bad, sNotForPrograms, Tool::Accepts, "a certificate must say that it is for programs"},
    {"AnyExtendedUsage",
     [](Test& test) {
         auto spec = test.publisher();
         spec.extendedKeyUsage = "anyExtendedKeyUsage";
         test.signBy(spec);
     },
     Ours::Bad, sNotForPrograms, Tool::Refuses},
    {"TimeStampsOnly",
     [](Test& test) {
         auto spec = test.publisher();
         spec.extendedKeyUsage = "timeStamping";
         test.signBy(spec);
     },
     Ours::Bad, sNotForPrograms, Tool::Refuses},
    {"KeyForOtherWork",
     [](Test& test) {
         auto spec = test.publisher();
         spec.keyUsage = "critical,keyEncipherment";
         test.signBy(spec);
     },
     Ours::Bad, sNotForPrograms, Tool::Accepts, "the certificate names what its key is for"},
    {"NotYetValid",
     [](Test& test) {
         auto spec = test.publisher();
         spec.notBefore = "20480101000000Z";
         test.signBy(spec);
     },
     Ours::Bad, "the certificate chain is not trusted: certificate is not yet valid", Tool::Refuses},
    {"PublisherOnTheList",
     [](Test& test) {
         Signature::setTrustedPublishers({"Orv Test Publisher"});
         test.sign();
     },
     Ours::Good, "", Tool::Accepts},
    {"PublisherOffTheList",
     [](Test& test) {
         Signature::setTrustedPublishers({"Someone"});
         test.sign();
     },
     Ours::Bad, "the signer is not among the trusted publishers", Tool::Accepts, "the tool knows no such list"},
    {"RevocationListOutOfReach",
     [](Test& test) {
         auto spec = test.publisher();
         spec.revocationList = "URI:http://127.0.0.1:9/none.crl";
         test.signBy(spec);
     },
     Ours::Good, "", Tool::DependsOnItsVersion, "a node without a way out must install too: no list is fetched"},
};

const SignatureRow sChains[] = {
    {"Intermediate", [](Test& test) { test.sign(SigningKit::ViaIntermediate); }, Ours::Good, "", Tool::Accepts},
    {"TwoIntermediates",
     [](Test& test) {
         test.signBelow({test.authority("A"), test.authority("B")}, test.publisher());
     },
     Ours::Good, "", Tool::Accepts},
    {"IntermediateMissing",
     [](Test& test) {
         auto signer = test.kit().credential(SigningKit::ViaIntermediate);
         signer.certificate.resize(signer.certificate.find("-----BEGIN", 1));
         signFile(signer, test.unsignedPackage(), test.signedFile());
     },
     Ours::Bad, sNotTrusted, Tool::Refuses},
    {"IntermediateIsNoAuthority",
     [](Test& test) {
         auto middle = test.authority("A");
         middle.authority = false;
         test.signBelow({middle}, test.publisher());
     },
     Ours::Bad, sNotTrusted, Tool::Refuses},
    {"PublisherAsAuthority", [](Test& test) { test.signBelow({test.publisher()}, test.publisher()); }, Ours::Bad,
     sNotTrusted, Tool::Refuses},
    {"IntermediateMayNotSign",
     [](Test& test) {
         auto middle = test.authority("A");
         middle.keyUsage = "critical,digitalSignature";
         test.signBelow({middle}, test.publisher());
     },
     Ours::Bad, sNotTrusted, Tool::Refuses},
    {"IntermediateForWebServers",
     [](Test& test) {
         auto middle = test.authority("A");
         middle.extendedKeyUsage = "serverAuth";
         test.signBelow({middle}, test.publisher());
     },
     Ours::Bad, "an issuer in the certificate chain is not meant for this usage", Tool::Accepts,
     "an issuer limits the usage of all below it"},
    {"IntermediateExpired",
     [](Test& test) {
         auto middle = test.authority("A");
         middle.notAfter = "20240101000000Z";
         test.signBelow({middle}, test.publisher());
     },
     Ours::Bad, sExpired, Tool::Refuses},
    {"PathLengthKept",
     [](Test& test) {
         auto middle = test.authority("A");
         middle.pathLength = 0;
         test.signBelow({middle}, test.publisher());
     },
     Ours::Good, "", Tool::Accepts},
    {"PathLengthViolated",
     [](Test& test) {
         auto middle = test.authority("A");
         middle.pathLength = 0;
         test.signBelow({middle, test.authority("B")}, test.publisher());
     },
     Ours::Bad, sNotTrusted, Tool::Refuses},
};

const SignatureRow sTimes[] = {
    {"ExpiredWithoutStamp", [](Test& test) { test.sign(SigningKit::Expired); }, Ours::Bad, sExpired, Tool::Refuses},
    {"ExpiredStampedInTime",
     [](Test& test) { signStamped(test, SigningKit::Expired, sIn2015, test.kit().timeStamper()); }, Ours::Good, "",
     Tool::Accepts},
    {"ExpiredCounterSignedInTime",
     [](Test& test) {
         signStamped(test, SigningKit::Expired, sIn2015, test.kit().timeStamper(), TimeStamp::CounterSignature);
     },
     Ours::Good, "", Tool::Accepts},
    {"ExpiredStampedLate",
     [](Test& test) { signStamped(test, SigningKit::Expired, sIn2016, test.kit().timeStamper()); }, Ours::Bad, sExpired,
     Tool::Refuses},
    {"ExpiredStampedByAnUntrustedAuthority",
     [](Test& test) { signStamped(test, SigningKit::Expired, sIn2015, test.kit().foreignTimeStamper()); }, Ours::Bad,
     sExpired, Tool::Refuses},
    {"ExpiredStampedByAPublisher",
     [](Test& test) {
         signStamped(test, SigningKit::Expired, sIn2015, test.kit().credential(SigningKit::Expired),
                     TimeStamp::CounterSignature);
     },
     Ours::Bad, sExpired, Tool::Refuses},
    {"ValidStampedInTime",
     [](Test& test) { signStamped(test, SigningKit::Publisher, 1600000000, test.kit().timeStamper()); }, Ours::Good, "",
     Tool::Accepts},
    {"StampedBeforeTheCertificate",
     [](Test& test) { signStamped(test, SigningKit::Publisher, sIn2015, test.kit().timeStamper()); }, Ours::Bad,
     "the certificate chain is not trusted: certificate is not yet valid", Tool::Refuses},
    {"ValidStampedByAnUntrustedAuthority",
     [](Test& test) { signStamped(test, SigningKit::Publisher, 1600000000, test.kit().foreignTimeStamper()); },
     Ours::Good, "", Tool::Accepts},
    {"LifetimeSignerExpiredStampedInTime",
     [](Test& test) {
         auto spec = test.publisher();
         spec.notBefore = "20150101000000Z";
         spec.notAfter = "20160101000000Z";
         spec.extendedKeyUsage = "codeSigning,1.3.6.1.4.1.311.10.3.13";
         test.signBy(spec, {.stamp = TimeStamp{TimeStamp::Rfc3161, sIn2015, test.kit().timeStamper()}});
     },
     Ours::Bad, sExpired, Tool::Accepts, "the certificate itself says that a stamp prolongs nothing"},
};

void signWithKey(Test& test, CertificateSpec::KeyKind kind, const std::string& hash = "sha256") {
    auto spec = test.publisher();
    spec.key = "";
    spec.keyKind = kind;
    test.signBy(spec, {.hash = hash});
}

void signWithPss(Test& test, CertificateSpec::KeyKind kind) {
    auto spec = test.publisher();
    spec.keyKind = kind;
    if (kind == CertificateSpec::RsaPss) spec.key = "";
    const Credential root = test.kit().root();
    test.sign();
    writeSignatures(test.signedFile(),
                    {signAgainWithPss(readSignatures(test.signedFile()).at(0), makeCertificate(spec, &root))});
}

const SignatureRow sAlgorithms[] = {
    {"Sha1", [](Test& test) { test.sign(SigningKit::Publisher, {.hash = "sha1"}); }, Ours::Good, "", Tool::Accepts},
    {"Sha384", [](Test& test) { test.sign(SigningKit::Publisher, {.hash = "sha384"}); }, Ours::Good, "", Tool::Accepts},
    {"Sha512", [](Test& test) { test.sign(SigningKit::Publisher, {.hash = "sha512"}); }, Ours::Good, "", Tool::Accepts},
    {"Md5", [](Test& test) { test.sign(SigningKit::Publisher, {.hash = "md5"}); }, Ours::Bad,
     "the digest of the signature", Tool::Accepts, "files of the same MD5 are made at will"},
    {"EcdsaP256", [](Test& test) { signWithKey(test, CertificateSpec::EcP256); }, Ours::Good, "", Tool::Accepts},
    {"EcdsaP384WithSha384", [](Test& test) { signWithKey(test, CertificateSpec::EcP384, "sha384"); }, Ours::Good, "",
     Tool::Accepts},
    {"RsaPssKey", [](Test& test) { signWithPss(test, CertificateSpec::RsaPss); }, Ours::Good, "", Tool::Accepts},
    {"RsaKeyWithPss", [](Test& test) { signWithPss(test, CertificateSpec::Rsa2048); }, Ours::Bad,
     "the signature does not fit its certificate", Tool::Refuses},
    {"RsaOf512Bits", [](Test& test) { signWithKey(test, CertificateSpec::Rsa512); }, Ours::Bad, sTooWeak, Tool::Accepts,
     "such a key is broken in hours"},
    {"CertificateSignedWithMd5",
     [](Test& test) {
         auto spec = test.publisher();
         spec.digest = "md5";
         test.signBy(spec);
     },
     Ours::Bad, sTooWeak, Tool::Accepts, "certificates of the same MD5 are made at will"},
    {"PageHashes", [](Test& test) { test.sign(SigningKit::Publisher, {.words = {"-ph"}}); }, Ours::Good, "",
     Tool::Accepts},
    {"Description",
     [](Test& test) {
         test.sign(SigningKit::Publisher, {.words = {"-comm", "-n", "Orv", "-i", "http://localhost/orv"}});
     },
     Ours::Good, "", Tool::Accepts},
};

TEST_P(SignatureTable, IsJudgedBesideTheSigningTool) {
    const SignatureRow& row = GetParam();
    row.make(*this);
    const Verdict verdict = verify(signedFile());
    EXPECT_STREQ(nameOf(row.ours), nameOf(oursOf(verdict))) << verdict.detail;
    EXPECT_EQ(0u, verdict.detail.rfind(row.detail, 0)) << verdict.detail;
    EXPECT_EQ(row.ours == Ours::Good, verdict.detail.empty()) << verdict.detail;
    if (row.tool != Tool::DependsOnItsVersion) {
        const ToolResult tool = askTool();
        EXPECT_EQ(row.tool == Tool::Accepts, tool.code == 0) << tool.output << tool.errors;
    }
    const bool agree = (row.ours == Ours::Good) == (row.tool == Tool::Accepts);
    EXPECT_EQ(agree, std::string(row.why).empty()) << "a difference, and only that, needs a reason";
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Signer, SignatureTable, testing::ValuesIn(sSigners), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Chain, SignatureTable, testing::ValuesIn(sChains), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Time, SignatureTable, testing::ValuesIn(sTimes), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Algorithm, SignatureTable, testing::ValuesIn(sAlgorithms), nameOfRow);

}  // namespace support
