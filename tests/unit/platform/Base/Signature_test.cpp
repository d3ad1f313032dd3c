#include "Public/Base/Signature.h"

#include "SignatureFixture.h"

namespace {

using Public::Base::Signature;
using support::SigningKit;
using support::verify;

class SignatureTest : public support::SignatureFixture {
protected:
    /// The signed package with one byte changed.
    std::string signedWithFlippedByte(size_t at) {
        const std::string file = signedPackage();
        std::string bytes = support::readText(file).value();
        bytes.at(at) = static_cast<char>(bytes.at(at) ^ 1);
        support::writeText(file, bytes);
        return file;
    }

    /// Signs with a certificate that comes from this description, under the trusted root.
    std::string signedBy(const support::CertificateSpec& spec, const support::SignOptions& options = {}) {
        const auto root = mKit.root();
        support::signFile(support::makeCertificate(spec, &root), package(), path("signed.exe"), options);
        return path("signed.exe");
    }

    support::CertificateSpec publisher() const {
        return {.commonName = "Orv",
                .keyUsage = "critical,digitalSignature",
                .extendedKeyUsage = "codeSigning",
                .key = mKit.credential(SigningKit::Publisher).key};
    }
};

TEST_F(SignatureTest, AcceptsASoundSignatureAndNamesItsSigner) {
    const auto verdict = verify(signedPackage());
    EXPECT_TRUE(verdict.good);
    EXPECT_EQ("Orv Test Publisher", verdict.signer);
    EXPECT_EQ("", verdict.detail);
}

TEST_F(SignatureTest, AcceptsAFileDigestOfSha1) {
    EXPECT_TRUE(verify(signedPackage(SigningKit::Publisher, {.hash = "sha1"})).good);
}

TEST_F(SignatureTest, RefusesAFileDigestOfMd5) {
    const auto verdict = verify(signedPackage(SigningKit::Publisher, {.hash = "md5"}));
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("the digest of the signature is neither SHA-1 nor SHA-2", verdict.detail);
}

TEST_F(SignatureTest, AcceptsAProgramOf64Bits) {
    support::compilePackage("Target amd64-unicode\nUnicode true\nOutFile package.exe\nSection\nSectionEnd\n", {},
                            path("64.exe"));
    mKit.sign(path("64.exe"), path("64signed.exe"));
    EXPECT_TRUE(verify(path("64.exe")).isUnsigned());
    EXPECT_TRUE(verify(path("64signed.exe")).good);
}

TEST_F(SignatureTest, AcceptsAnEllipticCurveKey) {
    auto spec = publisher();
    spec.key = "";
    spec.keyKind = support::CertificateSpec::EcP256;
    EXPECT_TRUE(verify(signedBy(spec)).good);
}

TEST_F(SignatureTest, FindsTheIntermediateAuthorityInTheSignature) {
    const auto verdict = verify(signedPackage(SigningKit::ViaIntermediate));
    EXPECT_TRUE(verdict.good) << verdict.detail;
    EXPECT_EQ("Orv Test Branch Publisher", verdict.signer);
}

TEST_F(SignatureTest, RefusesAChainWithoutItsIntermediateAuthority) {
    auto signer = mKit.credential(SigningKit::ViaIntermediate);
    signer.certificate.resize(signer.certificate.find("-----BEGIN", 1));
    support::signFile(signer, package(), path("signed.exe"));
    EXPECT_TRUE(verify(path("signed.exe")).isBad());
}

TEST_F(SignatureTest, CallsAFileWithoutTableUnsigned) {
    const auto verdict = verify(package());
    EXPECT_TRUE(verdict.isUnsigned());
    EXPECT_EQ("the file has no certificate table", verdict.detail);
}

TEST_F(SignatureTest, CallsAMissingFileUnsigned) {
    const auto verdict = verify(path("missing.exe"));
    EXPECT_TRUE(verdict.isUnsigned());
    EXPECT_EQ("the file cannot be read", verdict.detail);
}

TEST_F(SignatureTest, CallsADirectoryUnsigned) { EXPECT_TRUE(verify(mDirectory.path()).isUnsigned()); }

TEST_F(SignatureTest, CallsAnEmptyPathUnsigned) { EXPECT_TRUE(verify("").isUnsigned()); }

TEST_F(SignatureTest, CallsAnEmptyFileUnsigned) {
    support::writeText(path("empty.exe"), "");
    EXPECT_TRUE(verify(path("empty.exe")).isUnsigned());
}

TEST_F(SignatureTest, CallsAFileThatIsNoProgramUnsigned) {
    support::writeText(path("text.exe"), std::string(500, 'x'));
    const auto verdict = verify(path("text.exe"));
    EXPECT_TRUE(verdict.isUnsigned());
    EXPECT_EQ("not a program file", verdict.detail);
}

TEST_F(SignatureTest, ReadsAPathBeyondAscii) {
    std::filesystem::copy_file(signedPackage(), path("\xe5\x8d\x87\xe7\xba\xa7 \xc3\xbc.exe"));
    EXPECT_TRUE(verify(path("\xe5\x8d\x87\xe7\xba\xa7 \xc3\xbc.exe")).good);
}

TEST_F(SignatureTest, RefusesAnUntrustedRootAndStillNamesTheSigner) {
    const auto verdict = verify(signedPackage(SigningKit::Untrusted));
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("Orv Other Publisher", verdict.signer);
    EXPECT_NE(std::string::npos, verdict.detail.find("not trusted")) << verdict.detail;
}

TEST_F(SignatureTest, RefusesAnExpiredCertificate) {
    const auto verdict = verify(signedPackage(SigningKit::Expired));
    EXPECT_TRUE(verdict.isBad());
    EXPECT_NE(std::string::npos, verdict.detail.find("expired")) << verdict.detail;
}

TEST_F(SignatureTest, RefusesACertificateOfTheFuture) {
    auto spec = publisher();
    spec.notBefore = "20480101000000Z";
    EXPECT_TRUE(verify(signedBy(spec)).isBad());
}

TEST_F(SignatureTest, RefusesACertificateForAnotherUsage) {
    const auto verdict = verify(signedPackage(SigningKit::WrongUsage));
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("the certificate is not meant for signing programs", verdict.detail);
}

TEST_F(SignatureTest, RefusesACertificateSignedByItself) {
    support::signFile(support::makeCertificate(publisher()), package(), path("signed.exe"));
    EXPECT_TRUE(verify(path("signed.exe")).isBad());
}

TEST_F(SignatureTest, NamesTheWholeSubjectWhenThereIsNoCommonName) {
    auto spec = publisher();
    spec.commonName = "";
    spec.organization = "Orv Works";
    const auto verdict = verify(signedBy(spec));
    EXPECT_TRUE(verdict.good) << verdict.detail;
    EXPECT_EQ("O = Orv Works", verdict.signer);
}

TEST_F(SignatureTest, CallsASignerWithoutSubjectUnknown) {
    auto spec = publisher();
    spec.commonName = "";
    EXPECT_EQ("unknown", verify(signedBy(spec)).signer);
}

TEST_F(SignatureTest, GivesTheSignersNameInItsOwnLetters) {
    auto spec = publisher();
    spec.commonName = "\xe5\x8d\x87\xe7\xba\xa7";
    EXPECT_EQ("\xe5\x8d\x87\xe7\xba\xa7", verify(signedBy(spec)).signer);
}

struct PlaceCase {
    const char* name;
    size_t (*place)(const std::string& bytes);
};

class SignatureOfChangedFile : public SignatureTest, public testing::WithParamInterface<PlaceCase> {};

TEST_P(SignatureOfChangedFile, IsBadButNamesItsSigner) {
    const auto verdict = verify(signedWithFlippedByte(GetParam().place(support::readText(signedPackage()).value())));
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("Orv Test Publisher", verdict.signer);
    EXPECT_EQ("the file was changed after it was signed", verdict.detail);
}

// The table's first entry begins where the unsigned package, padded to eight bytes, ends.
constexpr const char* sTableHead = "\x00\x02\x02\x00\x30\x82";

INSTANTIATE_TEST_SUITE_P(Places, SignatureOfChangedFile,
                         testing::Values(PlaceCase{"InTheDosHead", [](const std::string&) { return size_t{4}; }},
                                         PlaceCase{"InTheMiddle",
                                                   [](const std::string& bytes) { return bytes.size() / 2; }},
                                         PlaceCase{"LastByteBeforeTheTable",
                                                   [](const std::string& bytes) {
                                                       return bytes.rfind(std::string(sTableHead, 6)) - 4 - 1;
                                                   }}),
                         [](const auto& test) { return test.param.name; });

TEST_F(SignatureTest, DoesNotCoverTheChecksumOfTheHead) {
    const std::string bytes = support::readText(signedPackage()).value();
    const auto nt = static_cast<unsigned char>(bytes[60]) + 256u * static_cast<unsigned char>(bytes[61]);
    EXPECT_TRUE(verify(signedWithFlippedByte(nt + 24 + 64)).good);
}

TEST_F(SignatureTest, IsBadWhenBytesAreAppended) {
    const std::string file = signedPackage();
    for (const char* tail : {"x", "12345678"}) {
        support::writeText(file, support::readText(file).value() + tail);
        const auto verdict = verify(file);
        EXPECT_TRUE(verdict.isBad()) << tail;
        EXPECT_EQ("the certificate table is not at the end of the file", verdict.detail);
    }
}

TEST_F(SignatureTest, IsBadWhenTheTableIsCut) {
    const std::string file = signedPackage();
    support::writeText(file, support::readText(file).value().substr(0, support::readText(file).value().size() - 1));
    EXPECT_TRUE(verify(file).isBad());
}

TEST_F(SignatureTest, IsBadWhenTheTableHoldsGarbage) {
    const std::string file = signedPackage();
    support::writeSignatures(file, {std::string(200, '\x30')});
    const auto verdict = verify(file);
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("unknown", verdict.signer);
    EXPECT_EQ("the signature cannot be read", verdict.detail);
}

TEST_F(SignatureTest, IsBadWhenSomethingHidesBehindTheSignature) {
    const std::string file = signedPackage();
    support::writeSignatures(file, {support::readSignatures(file).at(0) + "payload"});
    const auto verdict = verify(file);
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("there is something hidden behind the signature", verdict.detail);
}

TEST_F(SignatureTest, IsBadOnAnotherFile) {
    const auto signatures = support::readSignatures(signedPackage());
    otherPackage();
    support::writeSignatures(path("other.exe"), signatures);
    EXPECT_TRUE(verify(path("other.exe")).isBad());
}

TEST_F(SignatureTest, JudgesTheFirstOfTwoTableEntries) {
    const auto good = support::readSignatures(signedPackage()).at(0);
    const auto bad = support::readSignatures(signedPackage(SigningKit::Untrusted)).at(0);
    const std::string file = signedPackage();
    support::writeSignatures(file, {good, bad});
    EXPECT_TRUE(verify(file).good);
    support::writeSignatures(file, {bad, good});
    EXPECT_TRUE(verify(file).isBad());
}

TEST_F(SignatureTest, JudgesThePrimaryOfTwoNestedSignatures) {
    signedPackage(SigningKit::Publisher, {.hash = "sha1"});
    mKit.sign(path("signed.exe"), path("nested.exe"), SigningKit::Untrusted, {.nested = true});
    const auto verdict = verify(path("nested.exe"));
    EXPECT_TRUE(verdict.good) << verdict.detail;
    EXPECT_EQ("Orv Test Publisher", verdict.signer);
}

TEST_F(SignatureTest, DoesNotLetANestedSignatureStandInForABadPrimary) {
    signedPackage(SigningKit::Untrusted);
    mKit.sign(path("signed.exe"), path("nested.exe"), SigningKit::Publisher, {.nested = true});
    EXPECT_TRUE(verify(path("nested.exe")).isBad());
}

TEST_F(SignatureTest, AcceptsAListedPublisher) {
    Signature::setTrustedPublishers({"Someone", "Orv Test Publisher"});
    EXPECT_TRUE(verify(signedPackage()).good);
}

TEST_F(SignatureTest, RefusesAPublisherOffTheListAndStillNamesIt) {
    Signature::setTrustedPublishers({"Someone"});
    const auto verdict = verify(signedPackage());
    EXPECT_TRUE(verdict.isBad());
    EXPECT_EQ("Orv Test Publisher", verdict.signer);
    EXPECT_EQ("the signer is not among the trusted publishers", verdict.detail);
}

TEST_F(SignatureTest, DoesNotTakeAListedTextForTheSubjectOfANamelessSigner) {
    auto spec = publisher();
    spec.commonName = "";
    spec.organization = "Orv Works";
    Signature::setTrustedPublishers({"O = Orv Works"});
    EXPECT_TRUE(verify(signedBy(spec)).isBad());
}

TEST_F(SignatureTest, AnswersManyThreadsAtOnce) {
    const std::string good = signedPackage();
    mKit.sign(package(), path("bad.exe"), SigningKit::Untrusted);
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 5; ++j) right += verify(good).good && verify(path("bad.exe")).isBad();
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(20, right);
}

}  // namespace
