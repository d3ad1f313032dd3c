#include "SignatureCms.h"

#include <bcrypt.h>
#include <wintrust.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "Base/DerReader.h"

namespace Public::Base {
namespace {

using crypt::Bytes;

constexpr unsigned char sIndirectData[] = {0x2b, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, 0x02, 0x01, 0x04};
constexpr const char* sDoesNotFit = "the signature does not fit its certificate";

std::string openMessage(Bytes bytes, ProgramSignature& signature) {
    crypt::Message message(::CryptMsgOpenToDecode(crypt::kEncoding, 0, 0, 0, nullptr, nullptr));
    if (!message || !::CryptMsgUpdate(message.get(), bytes.data(), static_cast<DWORD>(bytes.size()), TRUE))
        return sUnreadableSignature;
    DWORD type = 0, size = sizeof type;
    if (!::CryptMsgGetParam(message.get(), CMSG_TYPE_PARAM, 0, &type, &size) || type != CMSG_SIGNED)
        return sUnreadableSignature;
    signature.certificates.reset(
        ::CertOpenStore(CERT_STORE_PROV_MSG, crypt::kEncoding, 0, CERT_STORE_READONLY_FLAG, message.get()));
    signature.message = std::move(message);
    return {};
}

/// Finds the one signer and the certificate, whatever else may be wrong, so that the signer can be named.
std::string findSigner(ProgramSignature& signature) {
    DWORD count = 0, size = sizeof count;
    if (!::CryptMsgGetParam(signature.message.get(), CMSG_SIGNER_COUNT_PARAM, 0, &count, &size) || count != 1)
        return "the signature has not exactly one signer";
    std::string id = crypt::parameterOf(signature.message.get(), CMSG_SIGNER_CERT_INFO_PARAM);
    if (signature.certificates && id.size() >= sizeof(CERT_INFO))
        signature.certificate.reset(::CertGetSubjectCertificateFromStore(signature.certificates.get(), crypt::kEncoding,
                                                                         reinterpret_cast<CERT_INFO*>(id.data())));
    return signature.certificate ? "" : "the certificate of the signer is missing";
}

bool hasType(const ProgramSignature& signature, const char* objectId) {
    const std::string type = crypt::parameterOf(signature.message.get(), CMSG_INNER_CONTENT_TYPE_PARAM);
    return std::strcmp(type.c_str(), objectId) == 0;
}

const CRYPT_ATTRIBUTE* findAttribute(const CRYPT_ATTRIBUTES& attributes, const char* objectId) {
    for (DWORD i = 0; i < attributes.cAttr; ++i)
        if (std::strcmp(attributes.rgAttr[i].pszObjId, objectId) == 0) return &attributes.rgAttr[i];
    return nullptr;
}

bool holds(const CRYPT_ATTRIBUTE* attribute, unsigned char tag, Bytes wanted) {
    if (!attribute || attribute->cValue != 1) return false;
    DerReader value({attribute->rgValue[0].pbData, attribute->rgValue[0].cbData});
    Bytes held;
    return value.take(tag, held) && value.atEnd() && std::equal(held.begin(), held.end(), wanted.begin(), wanted.end());
}

const char* nameOf(SignedContent::Digest digest) {
    switch (digest) {
        case SignedContent::Digest::Sha1:
            return szOID_OIWSEC_sha1;
        case SignedContent::Digest::Sha256:
            return szOID_NIST_sha256;
        case SignedContent::Digest::Sha384:
            return szOID_NIST_sha384;
        case SignedContent::Digest::Sha512:
            return szOID_NIST_sha512;
        case SignedContent::Digest::None:
            break;
    }
    return "";
}

const wchar_t* algorithmOf(SignedContent::Digest digest) {
    switch (digest) {
        case SignedContent::Digest::Sha256:
            return BCRYPT_SHA256_ALGORITHM;
        case SignedContent::Digest::Sha384:
            return BCRYPT_SHA384_ALGORITHM;
        case SignedContent::Digest::Sha512:
            return BCRYPT_SHA512_ALGORITHM;
        case SignedContent::Digest::Sha1:
        case SignedContent::Digest::None:
            break;
    }
    return BCRYPT_SHA1_ALGORITHM;
}

/// @return empty when the system cannot make it
std::vector<unsigned char> makeDigest(SignedContent::Digest digest, const std::string& text) {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    if (::BCryptOpenAlgorithmProvider(&algorithm, algorithmOf(digest), nullptr, 0) != 0) return {};
    std::vector<unsigned char> made(static_cast<size_t>(digest));
    std::vector<unsigned char> bytes(text.begin(), text.end());
    const NTSTATUS status = ::BCryptHash(algorithm, nullptr, 0, bytes.data(), static_cast<ULONG>(bytes.size()),
                                         made.data(), static_cast<ULONG>(made.size()));
    ::BCryptCloseAlgorithmProvider(algorithm, 0);
    if (status != 0) made.clear();
    return made;
}

/// The signer must sign attributes that name the content's type and hold its digest; a signature of the content alone
/// could be taken for one of attributes.
bool signsContent(const ProgramSignature& signature, const CMSG_SIGNER_INFO& signer) {
    const auto digest = makeDigest(signature.said.digest, signature.content);
    return !digest.empty() &&
           holds(findAttribute(signer.AuthAttrs, szOID_RSA_contentType), DerReader::ObjectId, sIndirectData) &&
           holds(findAttribute(signer.AuthAttrs, szOID_RSA_messageDigest), DerReader::OctetString, digest);
}

}  // namespace

std::string parseSignature(Bytes entry, ProgramSignature& signature) {
    Bytes bytes;
    std::string flaw = SignedContent::findMessage(entry, bytes);
    if (bytes.empty()) return flaw;
    const std::string unreadable = openMessage(bytes, signature);
    if (!signature.message) return unreadable;
    const std::string signerFlaw = findSigner(signature);
    if (flaw.empty()) flaw = signerFlaw;
    if (!flaw.empty()) return flaw;

    if (!hasType(signature, SPC_INDIRECT_DATA_OBJID)) return "the signature is not one of a program";
    const std::string content = crypt::parameterOf(signature.message.get(), CMSG_CONTENT_PARAM);
    DerReader outer({reinterpret_cast<const unsigned char*>(content.data()), content.size()});
    Bytes parts;
    if (!outer.take(DerReader::Sequence, parts) || !outer.atEnd()) return sUnreadableSignature;
    signature.content.assign(parts.begin(), parts.end());
    return SignedContent::read(parts, signature.said);
}

std::string findSignatureFlaw(const ProgramSignature& signature) {
    const std::string bytes = crypt::parameterOf(signature.message.get(), CMSG_SIGNER_INFO_PARAM);
    if (bytes.size() < sizeof(CMSG_SIGNER_INFO)) return sUnreadableSignature;
    const auto& signer = *reinterpret_cast<const CMSG_SIGNER_INFO*>(bytes.data());
    if (std::strcmp(signer.HashAlgorithm.pszObjId, nameOf(signature.said.digest)) != 0)
        return "the signature and the file have different digests";
    const bool fits =
        signsContent(signature, signer) &&
        ::CryptMsgControl(signature.message.get(), 0, CMSG_CTRL_VERIFY_SIGNATURE, signature.certificate->pCertInfo);
    return fits ? "" : sDoesNotFit;
}

}  // namespace Public::Base
