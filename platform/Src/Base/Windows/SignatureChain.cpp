#include "SignatureChain.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include "Base/Windows/NativePath.h"

namespace Public::Base {
namespace {

constexpr DWORD sShortestKey = 1024;   // bits, of RSA and its like
constexpr DWORD sShortestCurve = 160;  // bits, of elliptic curves
constexpr const char* sLifetimeSigning = "1.3.6.1.4.1.311.10.3.13";
constexpr const char* sForAnything = "2.5.29.37.0";

/// SHA-1, which older chains still use, and SHA-2.
constexpr const char* sStrongSignatures[] = {
    "1.2.840.113549.1.1.5",  "1.3.14.3.2.29",         "1.2.840.113549.1.1.10", "1.2.840.113549.1.1.11",
    "1.2.840.113549.1.1.12", "1.2.840.113549.1.1.13", "1.2.840.10045.4.1",     "1.2.840.10045.4.3.2",
    "1.2.840.10045.4.3.3",   "1.2.840.10045.4.3.4",   "1.2.840.10040.4.3",     "2.16.840.1.101.3.4.3.2"};

struct Usages {
    bool limited = false;  // without the extension a certificate is good for everything
    std::vector<std::string> named;
    bool has(const char* usage) const { return std::find(named.begin(), named.end(), usage) != named.end(); }
};

Usages usagesOf(PCCERT_CONTEXT certificate) {
    Usages usages;
    const CERT_INFO& info = *certificate->pCertInfo;
    usages.limited = ::CertFindExtension(szOID_ENHANCED_KEY_USAGE, info.cExtension, info.rgExtension) != nullptr;
    constexpr DWORD kOfTheCertificate = CERT_FIND_EXT_ONLY_ENHKEY_USAGE_FLAG;
    DWORD size = 0;
    if (!usages.limited || !::CertGetEnhancedKeyUsage(certificate, kOfTheCertificate, nullptr, &size)) return usages;
    std::string bytes(size, '\0');
    auto* list = reinterpret_cast<CERT_ENHKEY_USAGE*>(bytes.data());
    if (!::CertGetEnhancedKeyUsage(certificate, kOfTheCertificate, list, &size)) return usages;
    for (DWORD i = 0; i < list->cUsageIdentifier; ++i) usages.named.emplace_back(list->rgpszUsageIdentifier[i]);
    return usages;
}

bool isMeantForPrograms(PCCERT_CONTEXT leaf) {
    if (!usagesOf(leaf).has(szOID_PKIX_KP_CODE_SIGNING)) return false;
    BYTE usage[2] = {};
    if (::CertGetIntendedKeyUsage(crypt::kEncoding, leaf->pCertInfo, usage, sizeof usage))
        return usage[0] & CERT_DIGITAL_SIGNATURE_KEY_USAGE;
    const CERT_INFO& info = *leaf->pCertInfo;
    return !::CertFindExtension(szOID_KEY_USAGE, info.cExtension, info.rgExtension);
}

/// RFC 5280: an authority that limits its usage limits it for all below it.
bool permitsPrograms(PCCERT_CONTEXT issuer) {
    const Usages usages = usagesOf(issuer);
    return !usages.limited || usages.has(szOID_PKIX_KP_CODE_SIGNING) || usages.has(sForAnything);
}

bool isStrong(PCCERT_CONTEXT certificate, bool isRoot) {
    CERT_PUBLIC_KEY_INFO& key = certificate->pCertInfo->SubjectPublicKeyInfo;
    const bool isCurve = std::strcmp(key.Algorithm.pszObjId, szOID_ECC_PUBLIC_KEY) == 0;
    if (::CertGetPublicKeyLength(crypt::kEncoding, &key) < (isCurve ? sShortestCurve : sShortestKey)) return false;
    // What a root says of itself proves nothing, so the digest does not matter there.
    const char* signature = certificate->pCertInfo->SignatureAlgorithm.pszObjId;
    return isRoot || std::any_of(std::begin(sStrongSignatures), std::end(sStrongSignatures),
                                 [&](const char* strong) { return std::strcmp(strong, signature) == 0; });
}

std::string findFlawInMembers(const CERT_SIMPLE_CHAIN& chain) {
    for (DWORD i = 0; i < chain.cElement; ++i) {
        PCCERT_CONTEXT certificate = chain.rgpElement[i]->pCertContext;
        const bool isRoot = i + 1 == chain.cElement;
        if (!isStrong(certificate, isRoot)) return "the certificate chain is too weak";
        if (!isRoot && !permitsPrograms(certificate))
            return "an issuer in the certificate chain is not meant for this usage";
    }
    return {};
}

struct Words {
    DWORD status;
    const char* text;
};

/// The gravest first.
constexpr Words sWords[] = {{CERT_TRUST_IS_NOT_SIGNATURE_VALID, "a certificate was changed"},
                            {CERT_TRUST_IS_PARTIAL_CHAIN, "an issuer is missing"},
                            {CERT_TRUST_IS_CYCLIC, "the issuers go round in a circle"},
                            {CERT_TRUST_IS_REVOKED, "a certificate was revoked"},
                            {CERT_TRUST_IS_EXPLICIT_DISTRUST, "a certificate is distrusted"},
                            {CERT_TRUST_INVALID_BASIC_CONSTRAINTS, "an issuer is no authority"},
                            {CERT_TRUST_INVALID_NAME_CONSTRAINTS, "an issuer may not issue for this name"},
                            {CERT_TRUST_HAS_NOT_PERMITTED_NAME_CONSTRAINT, "an issuer may not issue for this name"},
                            {CERT_TRUST_HAS_EXCLUDED_NAME_CONSTRAINT, "an issuer may not issue for this name"},
                            {CERT_TRUST_IS_UNTRUSTED_ROOT, "its root is not one of the system's"},
                            {CERT_TRUST_IS_NOT_VALID_FOR_USAGE, "a certificate is not meant for this usage"}};

std::string inWords(DWORD status) {
    for (const Words& words : sWords)
        if (status & words.status) return words.text;
    return "status " + std::to_string(status);
}

/// In which way the first certificate that is not valid at that time is not.
const char* wordsOfTime(const CERT_SIMPLE_CHAIN& chain, FILETIME time) {
    for (DWORD i = 0; i < chain.cElement; ++i) {
        const LONG side = ::CertVerifyTimeValidity(&time, chain.rgpElement[i]->pCertContext->pCertInfo);
        if (side != 0) return side < 0 ? "certificate is not yet valid" : "certificate has expired";
    }
    return "certificates do not cover each other's time";
}

crypt::Chain buildChain(const ChainQuestion& question) {
    char usage[] = szOID_PKIX_KP_CODE_SIGNING;
    char* usages[] = {usage};
    CERT_CHAIN_PARA wanted{};
    wanted.cbSize = sizeof wanted;
    wanted.RequestedUsage.dwType = USAGE_MATCH_TYPE_AND;
    wanted.RequestedUsage.Usage.cUsageIdentifier = 1;
    wanted.RequestedUsage.Usage.rgpszUsageIdentifier = usages;
    FILETIME time = question.time;
    PCCERT_CHAIN_CONTEXT chain = nullptr;
    if (!::CertGetCertificateChain(nullptr, question.leaf, &time, question.others, &wanted,
                                   CERT_CHAIN_CACHE_ONLY_URL_RETRIEVAL, nullptr, &chain))
        return nullptr;
    return crypt::Chain(chain);
}

std::wstring wideOf(const CERT_RDN_VALUE_BLOB& value) {
    return {reinterpret_cast<const wchar_t*>(value.pbData), value.cbData / sizeof(wchar_t)};
}

std::string wholeSubject(PCCERT_CONTEXT certificate) {
    CERT_NAME_BLOB& subject = certificate->pCertInfo->Subject;
    constexpr DWORD kForm = CERT_X500_NAME_STR;
    const DWORD length = ::CertNameToStrW(crypt::kEncoding, &subject, kForm, nullptr, 0);
    std::wstring text(length, L'\0');
    text.resize(std::max<DWORD>(::CertNameToStrW(crypt::kEncoding, &subject, kForm, text.data(), length), 1) - 1);
    return fromNative(text);
}

}  // namespace

ChainFlaw findChainFlaw(const ChainQuestion& question) {
    if (!isMeantForPrograms(question.leaf)) return {"the certificate is not meant for signing programs"};
    const crypt::Chain chain = buildChain(question);
    if (!chain || chain->cChain == 0) return {"the certificate chain cannot be examined"};
    constexpr DWORD kNothingWasFetched = CERT_TRUST_REVOCATION_STATUS_UNKNOWN | CERT_TRUST_IS_OFFLINE_REVOCATION;
    constexpr DWORD kOfTime = CERT_TRUST_IS_NOT_TIME_VALID | CERT_TRUST_IS_NOT_TIME_NESTED;
    const CERT_SIMPLE_CHAIN& first = *chain->rgpChain[0];
    const DWORD status = chain->TrustStatus.dwErrorStatus & ~kNothingWasFetched;
    const std::string notTrusted = "the certificate chain is not trusted: ";
    if (status & ~(kOfTime | CERT_TRUST_IS_NOT_VALID_FOR_USAGE)) return {notTrusted + inWords(status)};
    const std::string flaw = findFlawInMembers(first);
    if (!flaw.empty()) return {flaw};
    if (status & CERT_TRUST_IS_NOT_VALID_FOR_USAGE) return {notTrusted + inWords(status)};
    if (status & kOfTime) return {notTrusted + wordsOfTime(first, question.time), true};
    return {};
}

bool endsWithValidity(PCCERT_CONTEXT certificate) { return usagesOf(certificate).has(sLifetimeSigning); }

std::string commonName(PCCERT_CONTEXT certificate) {
    const CERT_NAME_BLOB& subject = certificate->pCertInfo->Subject;
    DWORD size = 0;
    if (!::CryptDecodeObject(crypt::kEncoding, X509_UNICODE_NAME, subject.pbData, subject.cbData, 0, nullptr, &size))
        return {};
    std::string bytes(size, '\0');
    if (!::CryptDecodeObject(crypt::kEncoding, X509_UNICODE_NAME, subject.pbData, subject.cbData, 0, bytes.data(),
                             &size))
        return {};
    const auto& name = *reinterpret_cast<const CERT_NAME_INFO*>(bytes.data());
    std::string text;
    // The last one is the most specific.
    for (DWORD i = 0; i < name.cRDN; ++i)
        for (DWORD j = 0; j < name.rgRDN[i].cRDNAttr; ++j) {
            const CERT_RDN_ATTR& part = name.rgRDN[i].rgRDNAttr[j];
            if (std::strcmp(part.pszObjId, szOID_COMMON_NAME) == 0) text = fromNative(wideOf(part.Value));
        }
    return text;
}

std::string signerText(PCCERT_CONTEXT certificate) {
    std::string text = commonName(certificate);
    if (text.empty()) text = wholeSubject(certificate);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    return text.empty() ? "unknown" : text;
}

FILETIME timeNow() {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    return now;
}

}  // namespace Public::Base
