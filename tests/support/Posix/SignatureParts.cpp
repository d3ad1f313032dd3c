#include "SignatureParts.h"

#include "Base/Posix/SignatureChain.h"
#include "Base/Posix/SignatureCms.h"
#include "Base/Posix/SignatureTime.h"
#include "OpenSslHandles.h"

namespace support {

using namespace Public::Base;

EntryVerdict examineEntry(const std::string& entry, const std::string& rootsPem) {
    ProgramSignature signature;
    EntryVerdict verdict;
    verdict.flaw = parseSignature({reinterpret_cast<const unsigned char*>(entry.data()), entry.size()}, signature);
    if (verdict.flaw.empty()) verdict.flaw = findSignatureFlaw(signature);
    verdict.fileDigest = signature.said.fileDigest;
    if (signature.certificate) verdict.signer = commonName(signature.certificate);
    if (verdict.flaw.empty() && !rootsPem.empty()) {
        std::string ignored;
        const auto roots = loadRoots(rootsPem, ignored);
        findStampedTime(signature, roots.get(), std::time(nullptr));
    }
    return verdict;
}

std::string findFlawOfChain(const std::string& root, const std::string& issuer, const std::string& leaf,
                            std::time_t when) {
    const auto rootCertificate = ssl::readCertificate(root);
    const auto issuerCertificate = ssl::readCertificate(issuer);
    const auto leafCertificate = ssl::readCertificate(leaf);
    const Public::Base::ssl::Store roots(X509_STORE_new());
    X509_STORE_add_cert(roots.get(), rootCertificate.get());
    STACK_OF(X509)* others = sk_X509_new_null();
    sk_X509_push(others, issuerCertificate.get());
    std::string flaw = findChainFlaw(
        {.leaf = leafCertificate.get(), .others = others, .roots = roots.get(), .usage = XKU_CODE_SIGN, .time = when});
    sk_X509_free(others);
    return flaw;
}

std::string signerTextOf(const std::string& certificate) { return signerText(ssl::readCertificate(certificate).get()); }

}  // namespace support
