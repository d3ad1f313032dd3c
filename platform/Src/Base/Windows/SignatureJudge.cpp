#include "Base/SignatureJudge.h"

#include "Base/NativeError.h"
#include "Base/Windows/HeldFile.h"
#include "Base/Windows/NativePath.h"
#include "SignatureChain.h"
#include "SignatureCms.h"
#include "SystemVerdict.h"

namespace Public::Base {
namespace {

/// Looks at the chain at a time, and at the list of publishers. A flaw of time alone is left to the time-stamp.
std::string findTrustFlaw(const ProgramSignature& signature, const SignatureSettings& settings) {
    const ChainFlaw flaw =
        findChainFlaw({.leaf = signature.certificate.get(), .others = signature.certificates.get(), .time = timeNow()});
    if (!flaw.text.empty() && !flaw.onlyOfTime) return flaw.text;
    return settings.acceptsPublisher(commonName(signature.certificate.get()))
               ? ""
               : "the signer is not among the trusted publishers";
}

bool isSame(PCCERT_CONTEXT one, PCCERT_CONTEXT other) {
    return one && other && ::CertCompareCertificate(crypt::kEncoding, one->pCertInfo, other->pCertInfo);
}

std::string inWords(LONG status) {
    switch (status) {
        case TRUST_E_BAD_DIGEST:
            return "the file was changed after it was signed";
        case TRUST_E_CERT_SIGNATURE:
        case NTE_BAD_SIGNATURE:
            return "the signature does not fit its certificate";
        default:
            return "the system does not trust the signature: " + nativeErrorText(status);
    }
}

/// The time at which the signer's certificate must have been valid. A time-stamp counts only where a root vouched for
/// its authority then, and for no certificate that ends with its own validity.
FILETIME timeOf(const ProgramSignature& signature, const SystemVerdict& verdict) {
    const bool counts = verdict.stamper && !endsWithValidity(signature.certificate.get()) &&
                        findChainFlaw({.leaf = verdict.stamper.get(),
                                       .others = verdict.stampersIssuers.get(),
                                       .time = verdict.time,
                                       .purpose = szOID_PKIX_KP_TIMESTAMP_SIGNING})
                            .text.empty();
    return counts ? verdict.time : timeNow();
}

/// The system reads the whole file and knows time-stamps; what it says of the chain is looked at a second time.
std::string findSystemsFlaw(const ProgramSignature& signature, HANDLE file, const std::wstring& native) {
    const SystemVerdict verdict = askSystem(file, native);
    if (verdict.status == TRUST_E_BAD_DIGEST) return inWords(verdict.status);
    const ChainFlaw flaw = findChainFlaw({.leaf = signature.certificate.get(),
                                          .others = signature.certificates.get(),
                                          .time = timeOf(signature, verdict)});
    if (!flaw.text.empty()) return flaw.text;
    if (verdict.status != 0) return inWords(verdict.status);
    return isSame(verdict.certificate.get(), signature.certificate.get())
               ? ""
               : "the system found another signer than the first signature names";
}

}  // namespace

/// The cheap tests come first: only a file whose signature is trusted is read as a whole.
Judgement judgeSigned(const PeSecurity& program, const std::string& path, const SignatureSettings& settings) {
    std::wstring native;
    if (!toNativePath(path, native)) return {"unknown", "the file cannot be read"};
    // While it is open here nobody may write or replace it.
    OwnedHandle file;
    persist([&] {
        file = OwnedHandle(
            ::CreateFileW(native.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        return file.isOpen();
    });
    if (!file.isOpen()) return {"unknown", "the file cannot be read"};

    ProgramSignature signature;
    std::string flaw = parseSignature(program.signature, signature);
    const std::string signer = signature.certificate ? signerText(signature.certificate.get()) : "unknown";
    if (flaw.empty()) flaw = findSignatureFlaw(signature);
    if (flaw.empty()) flaw = findTrustFlaw(signature, settings);
    if (flaw.empty()) flaw = findSystemsFlaw(signature, file.get(), native);
    return {signer, flaw};
}

}  // namespace Public::Base
