// One row of the table of signed packages: how the file is made, our verdict and the signing tool's.
#pragma once

#include "HostTools.h"
#include "SignatureFixture.h"

namespace support {

enum class Ours { Good, Bad, Unsigned };
enum class Tool { Accepts, Refuses, DependsOnItsVersion };

class SignatureTableFixture;

struct SignatureRow {
    const char* name;
    void (*make)(SignatureTableFixture&);  ///< leaves the file at signedFile()
    Ours ours;
    const char* detail;  ///< how our reason begins; empty when good
    Tool tool;
    const char* why = "";  ///< why the tool and we differ; empty where we agree
};

inline void PrintTo(const SignatureRow& row, std::ostream* out) { *out << row.name; }

class SignatureTableFixture : public SignatureFixture {
public:
    std::string signedFile() const { return path("signed.exe"); }

    const SigningKit& kit() const { return mKit; }
    std::string unsignedPackage() { return package(); }
    std::string anotherPackage() { return otherPackage(); }
    std::string file(const std::string& name) const { return path(name); }

    /// A sound publisher's certificate, with a key that is there already.
    CertificateSpec publisher() const {
        return {.commonName = "Orv Table Publisher",
                .keyUsage = "critical,digitalSignature",
                .extendedKeyUsage = "codeSigning",
                .key = mKit.credential(SigningKit::Publisher).key};
    }
    CertificateSpec authority(const std::string& name) const {
        return {.commonName = name,
                .notBefore = "20100101000000Z",
                .authority = true,
                .keyUsage = "critical,keyCertSign,cRLSign",
                .keyKind = CertificateSpec::Rsa1024};
    }

    void sign(SigningKit::Signer signer = SigningKit::Publisher, const SignOptions& options = {}) {
        signedPackage(signer, options);
    }
    /// Signs with a certificate from this description, under the trusted root.
    void signBy(const CertificateSpec& spec, const SignOptions& options = {}) {
        const Credential root = mKit.root();
        signFile(makeCertificate(spec, &root), package(), signedFile(), options);
    }
    /// Signs with a certificate under these authorities, the first of which is under the trusted root.
    void signBelow(const std::vector<CertificateSpec>& authorities, const CertificateSpec& leaf) {
        Credential issuer = mKit.root();
        std::string others;
        for (const auto& spec : authorities) {
            issuer = makeCertificate(spec, &issuer);
            others += issuer.certificate;
        }
        Credential signer = makeCertificate(leaf, &issuer);
        signer.certificate += others;
        signFile(signer, package(), signedFile());
    }

    std::string bytes() const { return readText(signedFile()).value(); }
    void setBytes(const std::string& bytes) { writeText(signedFile(), bytes); }

    /// Signs soundly, then changes one byte.
    void signAndFlip(size_t (*place)(const SignatureTableFixture& test)) {
        sign();
        std::string changed = bytes();
        const size_t at = place(*this);
        changed.at(at) = static_cast<char>(changed.at(at) ^ 1);
        setBytes(changed);
    }
    /// Signs soundly, then sets a number of 32 bits.
    void signAndPut(size_t (*place)(const SignatureTableFixture& test), uint32_t (*value)(const std::string& bytes)) {
        sign();
        std::string changed = bytes();
        putNumber(changed, place(*this), value(changed));
        setBytes(changed);
    }

    size_t peHead() const { return number(60); }
    size_t securityEntry() const { return tableEntry(bytes()); }
    size_t table() const { return number(securityEntry()); }

    static void putNumber(std::string& bytes, size_t at, uint32_t value) {
        for (size_t i = 0; i < 4; ++i) bytes.at(at + i) = static_cast<char>(value >> (8 * i));
    }
    uint32_t number(size_t at) const { return readNumber(bytes(), at); }

    /// What the signing tool says of the file: its exit code 0 when it accepts it.
    ToolResult askTool() const {
        const std::string roots = toolPath(mKit.rootPem());
        return runTool({.words = {"osslsigncode", "verify", "-CAfile", roots, "-TSA-CAfile", roots, "-in",
                                  toolPath(signedFile())}});
    }
};

class SignatureTable : public SignatureTableFixture, public testing::WithParamInterface<SignatureRow> {};

inline std::string nameOfRow(const testing::TestParamInfo<SignatureRow>& row) { return row.param.name; }

}  // namespace support
