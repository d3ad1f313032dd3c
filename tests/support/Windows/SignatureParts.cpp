#include "SignatureParts.h"

#include <cstddef>
#include <stdexcept>
#include <vector>

#include "Base/Windows/SignatureChain.h"
#include "Base/Windows/SignatureCms.h"

namespace support {

using namespace Public::Base;

namespace {

crypt::Certificate read(const std::string& pem) {
    const auto length = static_cast<DWORD>(pem.size());
    DWORD size = 0;
    ::CryptStringToBinaryA(pem.c_str(), length, CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr);
    std::vector<BYTE> der(size);
    ::CryptStringToBinaryA(pem.c_str(), length, CRYPT_STRING_BASE64HEADER, der.data(), &size, nullptr, nullptr);
    crypt::Certificate certificate(::CertCreateCertificateContext(crypt::kEncoding, der.data(), size));
    if (!certificate) throw std::runtime_error("not a certificate");
    return certificate;
}

crypt::Store storeOf(const std::string& pem) {
    crypt::Store store(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    ::CertAddCertificateContextToStore(store.get(), read(pem).get(), CERT_STORE_ADD_ALWAYS, nullptr);
    return store;
}

FILETIME fileTime(std::time_t when) {
    constexpr long long kFrom1601To1970 = 11644473600LL;
    const auto ticks = static_cast<unsigned long long>(when + kFrom1601To1970) * 10000000ULL;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

/// Makes chains up to one root only, in place of the system's.
class EngineOf {
public:
    explicit EngineOf(HCERTSTORE root) {
        CERT_CHAIN_ENGINE_CONFIG config{};
        config.cbSize = offsetof(CERT_CHAIN_ENGINE_CONFIG, dwExclusiveFlags);  // the form that all versions know
        config.hExclusiveRoot = root;
        if (!::CertCreateCertificateChainEngine(&config, &mEngine)) throw std::runtime_error("no engine for chains");
    }
    ~EngineOf() { ::CertFreeCertificateChainEngine(mEngine); }
    EngineOf(const EngineOf&) = delete;
    EngineOf& operator=(const EngineOf&) = delete;
    HCERTCHAINENGINE get() const { return mEngine; }

private:
    HCERTCHAINENGINE mEngine = nullptr;
};

}  // namespace

EntryVerdict examineEntry(const std::string& entry, const std::string&) {
    ProgramSignature signature;
    EntryVerdict verdict;
    verdict.flaw = parseSignature({reinterpret_cast<const unsigned char*>(entry.data()), entry.size()}, signature);
    if (verdict.flaw.empty()) verdict.flaw = findSignatureFlaw(signature);
    verdict.fileDigest = signature.said.fileDigest;
    if (signature.certificate) verdict.signer = commonName(signature.certificate.get());
    return verdict;
}

std::string findFlawOfChain(const std::string& root, const std::string& issuer, const std::string& leaf,
                            std::time_t when) {
    const crypt::Store roots = storeOf(root), others = storeOf(issuer);
    const crypt::Certificate certificate = read(leaf);
    const EngineOf engine(roots.get());
    return findChainFlaw(
               {.leaf = certificate.get(), .others = others.get(), .time = fileTime(when), .engine = engine.get()})
        .text;
}

std::string signerTextOf(const std::string& certificate) { return signerText(read(certificate).get()); }

}  // namespace support
