#include "SignatureCms.h"

#include <cstring>

#include "../DerReader.h"

namespace Public::Base {
namespace {

using ssl::Bytes;

constexpr const char* sIndirectData = "1.3.6.1.4.1.311.2.1.4";

bool isOfType(const ASN1_OBJECT* object, const char* oid) {
    char text[80];
    return OBJ_obj2txt(text, sizeof text, object, 1) > 0 && std::strcmp(text, oid) == 0;
}

/// Reads the message itself; the entry must hold nothing else, since what lies there is covered by no digest.
std::string parseMessage(Bytes entry, ProgramSignature& signature) {
    Bytes bytes;
    const std::string flaw = SignedContent::findMessage(entry, bytes);
    if (bytes.empty()) return flaw;
    const auto* at = bytes.data();
    ssl::SignedData message(d2i_PKCS7(nullptr, &at, static_cast<long>(bytes.size())));
    if (!message || at != bytes.data() + bytes.size() || !PKCS7_type_is_signed(message.get()) || !message->d.sign)
        return sUnreadableSignature;
    signature.message = std::move(message);
    return flaw;
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

const EVP_MD* digestMethod(SignedContent::Digest digest) {
    switch (digest) {
        case SignedContent::Digest::Sha1:
            return EVP_sha1();
        case SignedContent::Digest::Sha256:
            return EVP_sha256();
        case SignedContent::Digest::Sha384:
            return EVP_sha384();
        case SignedContent::Digest::Sha512:
            return EVP_sha512();
        case SignedContent::Digest::None:
            break;
    }
    return EVP_md_null();
}

std::string parseSignature(Bytes entry, ProgramSignature& signature) {
    std::string flaw = parseMessage(entry, signature);
    if (!signature.message) return flaw;
    const std::string signerFlaw = findSigner(signature);
    if (flaw.empty()) flaw = signerFlaw;
    if (!flaw.empty()) return flaw;

    const PKCS7* contents = signature.message->d.sign->contents;
    if (!contents || !isOfType(contents->type, sIndirectData)) return "the signature is not one of a program";
    const ASN1_TYPE* value = contents->d.other;
    if (!value || value->type != V_ASN1_SEQUENCE) return sUnreadableSignature;
    DerReader content(ssl::contentOf(value->value.sequence));
    if (!content.take(DerReader::Sequence, signature.content) || !content.atEnd()) return sUnreadableSignature;
    return SignedContent::read(signature.content, signature.said);
}

std::string findSignatureFlaw(const ProgramSignature& signature) {
    const X509_ALGOR* algorithm = signature.signer->digest_alg;
    if (!algorithm || OBJ_obj2nid(algorithm->algorithm) != EVP_MD_get_type(digestMethod(signature.said.digest)))
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
