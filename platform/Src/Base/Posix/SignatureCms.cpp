#include "SignatureCms.h"

#include "../DerReader.h"

namespace Public::Base {
namespace {

using ssl::Bytes;

constexpr size_t sLongestSignature = 16 * 1024 * 1024;
constexpr const char* sIndirectData = "1.3.6.1.4.1.311.2.1.4";
constexpr const char* sUnreadable = "the signature cannot be read";

// Object identifiers by their DER content.
constexpr unsigned char sPeImageData[] = {0x2b, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, 0x02, 0x01, 0x0f};
constexpr unsigned char sSha1[] = {0x2b, 0x0e, 0x03, 0x02, 0x1a};
constexpr unsigned char sSha256[] = {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x01};
constexpr unsigned char sSha384[] = {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x02};
constexpr unsigned char sSha512[] = {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x03};

bool equal(Bytes a, Bytes b) { return std::equal(a.begin(), a.end(), b.begin(), b.end()); }

bool isOfType(const ASN1_OBJECT* object, const char* oid) {
    char text[80];
    return OBJ_obj2txt(text, sizeof text, object, 1) > 0 && std::strcmp(text, oid) == 0;
}

const EVP_MD* digestOf(Bytes objectId) {
    if (equal(objectId, sSha1)) return EVP_sha1();
    if (equal(objectId, sSha256)) return EVP_sha256();
    if (equal(objectId, sSha384)) return EVP_sha384();
    if (equal(objectId, sSha512)) return EVP_sha512();
    return nullptr;
}

/// Reads SpcIndirectDataContent: the kind of file, then its DigestInfo.
std::string parseContent(ProgramSignature& signature) {
    Bytes data, type, value, digestInfo, algorithm, algorithmId, none, digest;
    DerReader content(signature.content);
    if (!content.take(DerReader::Sequence, data) || !content.take(DerReader::Sequence, digestInfo) || !content.atEnd())
        return sUnreadable;
    DerReader kind(data);
    if (!kind.take(DerReader::ObjectId, type)) return sUnreadable;
    if (!equal(type, sPeImageData)) return "the signature is not one of a program";
    if (!kind.atEnd() && (!kind.take(DerReader::Sequence, value) || !kind.atEnd())) return sUnreadable;

    DerReader info(digestInfo);
    if (!info.take(DerReader::Sequence, algorithm) || !info.take(DerReader::OctetString, digest) || !info.atEnd())
        return sUnreadable;
    DerReader parts(algorithm);
    if (!parts.take(DerReader::ObjectId, algorithmId)) return sUnreadable;
    if (!parts.atEnd() && (!parts.take(DerReader::Null, none) || !none.empty() || !parts.atEnd())) return sUnreadable;

    signature.digest = digestOf(algorithmId);
    if (!signature.digest) return "the digest of the signature is neither SHA-1 nor SHA-2";
    if (digest.size() != static_cast<size_t>(EVP_MD_get_size(signature.digest))) return sUnreadable;
    signature.fileDigest.assign(digest.begin(), digest.end());
    return {};
}

/// Reads the message itself; the entry must hold nothing else, since what lies there is covered by no digest.
std::string parseMessage(Bytes entry, ProgramSignature& signature) {
    if (entry.size() > sLongestSignature) return "the signature is too long";
    DerReader outer(entry);
    Bytes ignored;
    if (!outer.take(DerReader::Sequence, ignored)) return sUnreadable;
    const size_t length = entry.size() - outer.rest().size();
    const auto* bytes = entry.data();
    ssl::SignedData message(d2i_PKCS7(nullptr, &bytes, static_cast<long>(length)));
    if (!message || bytes != entry.data() + length || !PKCS7_type_is_signed(message.get()) || !message->d.sign)
        return sUnreadable;
    signature.message = std::move(message);
    const Bytes padding = outer.rest();
    if (std::any_of(padding.begin(), padding.end(), [](unsigned char byte) { return byte != 0; }))
        return "there is something hidden behind the signature";
    return {};
}

/// Finds the one signer and the certificate, whatever else may be wrong, so that the signer can be named.
std::string findSigner(ProgramSignature& signature) {
    const PKCS7_SIGNED* body = signature.message->d.sign;
    signature.certificates = body->cert;
    if (sk_PKCS7_SIGNER_INFO_num(body->signer_info) != 1) return "the signature has not exactly one signer";
    signature.signer = sk_PKCS7_SIGNER_INFO_value(body->signer_info, 0);
    signature.certificate = findSignerCertificate(*signature.signer, body->cert);
    return signature.certificate ? "" : "the certificate of the signer is missing";
}

}  // namespace

std::string parseSignature(Bytes entry, ProgramSignature& signature) {
    std::string flaw = parseMessage(entry, signature);
    if (!signature.message) return flaw;
    const std::string signerFlaw = findSigner(signature);
    if (flaw.empty()) flaw = signerFlaw;
    if (!flaw.empty()) return flaw;

    const PKCS7* contents = signature.message->d.sign->contents;
    if (!contents || !isOfType(contents->type, sIndirectData)) return "the signature is not one of a program";
    const ASN1_TYPE* value = contents->d.other;
    if (!value || value->type != V_ASN1_SEQUENCE) return sUnreadable;
    DerReader content(ssl::contentOf(value->value.sequence));
    if (!content.take(DerReader::Sequence, signature.content) || !content.atEnd()) return sUnreadable;
    return parseContent(signature);
}

std::string findSignatureFlaw(const ProgramSignature& signature) {
    const X509_ALGOR* algorithm = signature.signer->digest_alg;
    if (!algorithm || OBJ_obj2nid(algorithm->algorithm) != EVP_MD_get_type(signature.digest))
        return "the signature and the file have different digests";
    return isSignedBy(signature.message.get(), signature.signer, signature.certificate, signature.content,
                      sIndirectData)
               ? ""
               : "the signature does not fit its certificate";
}

X509* findSignerCertificate(const PKCS7_SIGNER_INFO& signer, STACK_OF(X509) * certificates) {
    const PKCS7_ISSUER_AND_SERIAL* id = signer.issuer_and_serial;
    if (!id || !certificates) return nullptr;
    return X509_find_by_issuer_and_serial(certificates, id->issuer, id->serial);
}

bool isSignedBy(PKCS7* message, PKCS7_SIGNER_INFO* signer, X509* certificate, Bytes bytes, const char* contentType) {
    const ASN1_TYPE* type = PKCS7_get_signed_attribute(signer, NID_pkcs9_contentType);
    if (!type || type->type != V_ASN1_OBJECT || !isOfType(type->value.object, contentType)) return false;
    // The library takes it for granted that this attribute, where present, is an octet string.
    const ASN1_TYPE* attributeDigest = PKCS7_get_signed_attribute(signer, NID_pkcs9_messageDigest);
    if (!attributeDigest || attributeDigest->type != V_ASN1_OCTET_STRING) return false;
    const EVP_MD* digest = EVP_get_digestbyobj(signer->digest_alg->algorithm);
    if (!digest) return false;

    // A filter that digests what is written through it, on a sink.
    ssl::Bio chain(BIO_new(BIO_s_null()));
    BIO* filter = BIO_new(BIO_f_md());
    if (!chain || !filter || BIO_set_md(filter, digest) <= 0) {
        BIO_free(filter);
        return false;
    }
    chain.reset(BIO_push(filter, chain.release()));
    if (!bytes.empty() && BIO_write(chain.get(), bytes.data(), static_cast<int>(bytes.size())) <= 0) return false;
    return PKCS7_signatureVerify(chain.get(), message, signer, certificate) == 1;
}

}  // namespace Public::Base
