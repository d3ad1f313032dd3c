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
constexpr const char* sNotTrusted = "the certificate chain is not trusted: ";

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

bool isMeantFor(PCCERT_CONTEXT leaf, const char* purpose) {
    if (!usagesOf(leaf).has(purpose)) return false;
    BYTE usage[2] = {};
    if (::CertGetIntendedKeyUsage(crypt::kEncoding, leaf->pCertInfo, usage, sizeof usage))
        return usage[0] & (std::strcmp(purpose, szOID_PKIX_KP_TIMESTAMP_SIGNING) == 0
                               ? CERT_DIGITAL_SIGNATURE_KEY_USAGE | CERT_NON_REPUDIATION_KEY_USAGE
                               : CERT_DIGITAL_SIGNATURE_KEY_USAGE);
    const CERT_INFO& info = *leaf->pCertInfo;
    return !::CertFindExtension(szOID_KEY_USAGE, info.cExtension, info.rgExtension);
}

/// RFC 5280: an authority that limits its usage limits it for all below it.
bool permits(PCCERT_CONTEXT issuer, const char* purpose) {
    const Usages usages = usagesOf(issuer);
    return !usages.limited || usages.has(purpose) || usages.has(sForAnything);
}

bool hasLongKey(const CERT_PUBLIC_KEY_INFO& key) {
    if (std::strcmp(key.Algorithm.pszObjId, szOID_ECC_PUBLIC_KEY) != 0) {
        CERT_PUBLIC_KEY_INFO asked = key;
        return ::CertGetPublicKeyLength(crypt::kEncoding, &asked) >= sShortestKey;
    }
    // A point of a curve: how it is written, then one number or two of the key's length.
    constexpr BYTE kBothNumbers = 4;
    const CRYPT_BIT_BLOB& point = key.PublicKey;
    if (point.cbData < 2) return false;
    return (point.cbData - 1) / (point.pbData[0] == kBothNumbers ? 2 : 1) * 8 >= sShortestCurve;
}

bool isStrong(PCCERT_CONTEXT certificate, bool isRoot) {
    if (!hasLongKey(certificate->pCertInfo->SubjectPublicKeyInfo)) return false;
    // What a root says of itself proves nothing, so the digest does not matter there.
    const char* signature = certificate->pCertInfo->SignatureAlgorithm.pszObjId;
    return isRoot || std::any_of(std::begin(sStrongSignatures), std::end(sStrongSignatures),
                                 [&](const char* strong) { return std::strcmp(strong, signature) == 0; });
}

/// The system may take an issuer by its key alone; RFC 5280 asks for its name.
bool isNamedByIssuer(PCCERT_CONTEXT certificate, PCCERT_CONTEXT issuer) {
    return ::CertCompareCertificateName(crypt::kEncoding, &certificate->pCertInfo->Issuer, &issuer->pCertInfo->Subject);
}

std::string findFlawInMembers(const CERT_SIMPLE_CHAIN& chain, const char* purpose) {
    for (DWORD i = 0; i < chain.cElement; ++i) {
        PCCERT_CONTEXT certificate = chain.rgpElement[i]->pCertContext;
        const bool isRoot = i + 1 == chain.cElement;
        if (!isRoot && !isNamedByIssuer(certificate, chain.rgpElement[i + 1]->pCertContext))
            return sNotTrusted + std::string("an issuer is missing");
        if (!isStrong(certificate, isRoot)) return "the certificate chain is too weak";
        if (!isRoot && !permits(certificate, purpose))
            return "an issuer in the certificate chain is not meant for this usage";
    }
    return {};
}

const char* notMeantFor(const char* purpose) {
    return std::strcmp(purpose, szOID_PKIX_KP_CODE_SIGNING) == 0 ? "the certificate is not meant for signing programs"
                                                                 : "the certificate is not meant for time-stamps";
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
                            {CERT_TRUST_IS_NOT_VALID_FOR_USAGE, "a certificate is not meant for this usage"},
                            {CERT_TRUST_HAS_WEAK_SIGNATURE, "a certificate is signed too weakly"}};

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
    return "a certificate is not valid at that time";
}

crypt::Chain buildChain(const ChainQuestion& question) {
    std::string usage = question.purpose;
    char* usages[] = {usage.data()};
    CERT_CHAIN_PARA wanted{};
    wanted.cbSize = sizeof wanted;
    wanted.RequestedUsage.dwType = USAGE_MATCH_TYPE_AND;
    wanted.RequestedUsage.Usage.cUsageIdentifier = 1;
    wanted.RequestedUsage.Usage.rgpszUsageIdentifier = usages;
    FILETIME time = question.time;
    PCCERT_CHAIN_CONTEXT chain = nullptr;
    if (!::CertGetCertificateChain(question.engine, question.leaf, &time, question.others, &wanted,
                                   CERT_CHAIN_CACHE_ONLY_URL_RETRIEVAL, nullptr, &chain))
        return nullptr;
    return crypt::Chain(chain);
}

std::string textOf(const CERT_RDN_ATTR& part) {
    auto value = part.Value;
    const DWORD length = ::CertRDNValueToStrW(part.dwValueType, &value, nullptr, 0);
    std::wstring text(length, L'\0');
    text.resize(std::max<DWORD>(::CertRDNValueToStrW(part.dwValueType, &value, text.data(), length), 1) - 1);
    return fromNative(text);
}

std::string typeOf(const CERT_RDN_ATTR& part) {
    const CRYPT_OID_INFO* known =
        ::CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, part.pszObjId, CRYPT_RDN_ATTR_OID_GROUP_ID);
    return known ? fromNative(known->pwszName) : std::string(part.pszObjId);
}

/// Calls for each part of the subject's name, in its order.
template <typename Visit>
void forEachPart(PCCERT_CONTEXT certificate, Visit visit) {
    const CERT_NAME_BLOB& subject = certificate->pCertInfo->Subject;
    DWORD size = 0;
    if (!::CryptDecodeObject(crypt::kEncoding, X509_NAME, subject.pbData, subject.cbData, 0, nullptr, &size)) return;
    std::string bytes(size, '\0');
    if (!::CryptDecodeObject(crypt::kEncoding, X509_NAME, subject.pbData, subject.cbData, 0, bytes.data(), &size))
        return;
    const auto& name = *reinterpret_cast<const CERT_NAME_INFO*>(bytes.data());
    for (DWORD i = 0; i < name.cRDN; ++i)
        for (DWORD j = 0; j < name.rgRDN[i].cRDNAttr; ++j) visit(name.rgRDN[i].rgRDNAttr[j]);
}

std::string wholeSubject(PCCERT_CONTEXT certificate) {
    std::string text;
    forEachPart(certificate, [&](const CERT_RDN_ATTR& part) {
        text += (text.empty() ? "" : ", ") + typeOf(part) + " = " + textOf(part);
    });
    return text;
}

}  // namespace

ChainFlaw findChainFlaw(const ChainQuestion& question) {
    if (!isMeantFor(question.leaf, question.purpose)) return {notMeantFor(question.purpose)};
    const crypt::Chain chain = buildChain(question);
    if (!chain || chain->cChain == 0) return {"the certificate chain cannot be examined"};
    // Nothing was fetched, and nobody asks any more that the times of certificates lie within each other.
    constexpr DWORD kOfNoWeight =
        CERT_TRUST_REVOCATION_STATUS_UNKNOWN | CERT_TRUST_IS_OFFLINE_REVOCATION | CERT_TRUST_IS_NOT_TIME_NESTED;
    constexpr DWORD kOfMembers = CERT_TRUST_IS_NOT_VALID_FOR_USAGE | CERT_TRUST_HAS_WEAK_SIGNATURE;
    const CERT_SIMPLE_CHAIN& first = *chain->rgpChain[0];
    const DWORD status = chain->TrustStatus.dwErrorStatus & ~kOfNoWeight;
    const DWORD beyondTime = status & ~static_cast<DWORD>(CERT_TRUST_IS_NOT_TIME_VALID);
    if (beyondTime & ~kOfMembers) return {sNotTrusted + inWords(beyondTime & ~kOfMembers)};
    const std::string flaw = findFlawInMembers(first, question.purpose);
    if (!flaw.empty()) return {flaw};
    if (beyondTime) return {sNotTrusted + inWords(beyondTime)};
    if (status) return {std::string(sNotTrusted) + wordsOfTime(first, question.time), true};
    return {};
}

bool endsWithValidity(PCCERT_CONTEXT certificate) { return usagesOf(certificate).has(sLifetimeSigning); }

std::string commonName(PCCERT_CONTEXT certificate) {
    std::string text;
    forEachPart(certificate, [&](const CERT_RDN_ATTR& part) {
        // The last one is the most specific.
        if (std::strcmp(part.pszObjId, szOID_COMMON_NAME) == 0) text = textOf(part);
    });
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
