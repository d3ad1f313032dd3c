#include "../SignatureJudge.h"

#include <cstring>

#include "SignatureChain.h"
#include "SignatureCms.h"
#include "SignatureTime.h"

namespace Public::Base {
namespace {

/// A certificate with this usage vouches for nothing beyond its own validity, whatever a time-stamp says.
constexpr const char* sLifetimeSigning = "1.3.6.1.4.1.311.10.3.13";

bool endsWithValidity(X509* certificate) {
    const ssl::Owned<EXTENDED_KEY_USAGE, &EXTENDED_KEY_USAGE_free> usages(
        static_cast<EXTENDED_KEY_USAGE*>(X509_get_ext_d2i(certificate, NID_ext_key_usage, nullptr, nullptr)));
    for (int i = 0; i < sk_ASN1_OBJECT_num(usages.get()); ++i) {
        char text[80];
        const ASN1_OBJECT* usage = sk_ASN1_OBJECT_value(usages.get(), i);
        if (OBJ_obj2txt(text, sizeof text, usage, 1) > 0 && std::strcmp(text, sLifetimeSigning) == 0) return true;
    }
    return false;
}

std::string findTrustFlaw(const ProgramSignature& signature, const SignatureSettings& settings) {
    std::string flaw;
    const ssl::Store roots = loadRoots(settings.rootsFile, flaw);
    if (!roots) return flaw;
    const std::time_t now = std::time(nullptr);
    const auto stamped = findStampedTime(signature, roots.get(), now);
    flaw = findChainFlaw({.leaf = signature.certificate,
                          .others = signature.certificates,
                          .roots = roots.get(),
                          .usage = XKU_CODE_SIGN,
                          .time = stamped && !endsWithValidity(signature.certificate) ? *stamped : now});
    if (flaw.empty() && !settings.acceptsPublisher(commonName(signature.certificate)))
        flaw = "the signer is not among the trusted publishers";
    return flaw;
}

std::string findContentFlaw(const ProgramSignature& signature, const PeSecurity& program) {
    const ssl::Owned<EVP_MD_CTX, &EVP_MD_CTX_free> context(EVP_MD_CTX_new());
    bool good = context && EVP_DigestInit_ex(context.get(), digestMethod(signature.said.digest), nullptr) == 1;
    for (const auto& part : program.covered)
        good = good && EVP_DigestUpdate(context.get(), part.data(), part.size()) == 1;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    if (!good || EVP_DigestFinal_ex(context.get(), digest, &length) != 1)
        return "the digest of the file cannot be made";
    return std::string(digest, digest + length) == signature.said.fileDigest
               ? ""
               : "the file was changed after it was signed";
}

}  // namespace

/// The cheap tests come first: only a file whose signature is trusted is read as a whole.
Judgement judgeSigned(const PeSecurity& program, const std::string&, const SignatureSettings& settings) {
    const ssl::ErrorQueueMark mark;
    ProgramSignature signature;
    std::string flaw = parseSignature(program.signature, signature);
    const std::string signer = signature.certificate ? signerText(signature.certificate) : "unknown";
    if (flaw.empty()) flaw = findSignatureFlaw(signature);
    if (flaw.empty()) flaw = findTrustFlaw(signature, settings);
    if (flaw.empty()) flaw = findContentFlaw(signature, program);
    return {signer, flaw};
}

}  // namespace Public::Base
