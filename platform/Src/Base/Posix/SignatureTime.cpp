#include "SignatureTime.h"

#include <cstring>

#include "SignatureChain.h"

namespace Public::Base {
namespace {

using ssl::Bytes;

constexpr int sMostStamps = 8;                     // a hostile file gets no more work out of us
constexpr std::time_t sClockDifference = 10 * 60;  // seconds by which an authority's clock may be ahead of ours

struct Stamp {
    const ProgramSignature& signature;
    X509_STORE* roots;
    std::time_t now;
    Bytes value;  // of the attribute

    Bytes stampedBytes() const { return ssl::contentOf(signature.signer->enc_digest); }
};

bool isGoodDigest(const X509_ALGOR* algorithm) {
    if (!algorithm) return false;
    const int id = OBJ_obj2nid(algorithm->algorithm);
    return id == NID_sha1 || id == NID_sha256 || id == NID_sha384 || id == NID_sha512;
}

std::optional<std::time_t> toTime(const ASN1_TIME* time) {
    std::tm parts{};
    if (!time || ASN1_TIME_to_tm(time, &parts) != 1) return {};
    return timegm(&parts);
}

bool isTrusted(const Stamp& stamp, X509* authority, STACK_OF(X509) * others, std::time_t time) {
    return time <= stamp.now + sClockDifference &&
           findChainFlaw(
               {.leaf = authority, .others = others, .roots = stamp.roots, .usage = XKU_TIMESTAMP, .time = time})
               .empty();
}

/// The library's reader of tokens takes the types of these attributes for granted.
bool hasSoundAttributes(PKCS7_SIGNER_INFO* signer) {
    auto isMissingOr = [&](int id, int type) {
        const ASN1_TYPE* value = PKCS7_get_signed_attribute(signer, id);
        return !value || value->type == type;
    };
    return isMissingOr(NID_pkcs9_messageDigest, V_ASN1_OCTET_STRING) &&
           isMissingOr(NID_id_smime_aa_signingCertificate, V_ASN1_SEQUENCE) &&
           isMissingOr(NID_id_smime_aa_signingCertificateV2, V_ASN1_SEQUENCE);
}

/// The rules of RFC 3161 for the token: its version, its imprint of the signature, its signature, its authority.
bool isGoodToken(const Stamp& stamp, PKCS7* token, std::time_t time) {
    const ssl::Owned<TS_VERIFY_CTX, &TS_VERIFY_CTX_free> context(TS_VERIFY_CTX_new());
    const Bytes stamped = stamp.stampedBytes();
    if (!context) return false;
    TS_VERIFY_CTX_set_flags(context.get(), TS_VFY_VERSION | TS_VFY_SIGNATURE | TS_VFY_DATA);
    TS_VERIFY_CTX_set_data(context.get(), BIO_new_mem_buf(stamped.data(), static_cast<int>(stamped.size())));
    X509_STORE_up_ref(stamp.roots);
    TS_VERIFY_CTX_set_store(context.get(), stamp.roots);
    X509_VERIFY_PARAM_set_time(X509_STORE_get0_param(stamp.roots), time);
    return TS_RESP_verify_token(context.get(), token) == 1;
}

std::optional<std::time_t> timeOfToken(const Stamp& stamp) {
    const auto* bytes = stamp.value.data();
    const ssl::SignedData token(d2i_PKCS7(nullptr, &bytes, static_cast<long>(stamp.value.size())));
    if (!token || !PKCS7_type_is_signed(token.get()) || !token->d.sign) return {};
    PKCS7_SIGNER_INFO* signer = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(token.get()), 0);
    if (!signer || !isGoodDigest(signer->digest_alg) || !hasSoundAttributes(signer)) return {};
    const ssl::Owned<TS_TST_INFO, &TS_TST_INFO_free> info(PKCS7_to_TS_TST_INFO(token.get()));
    if (!info || !isGoodDigest(TS_MSG_IMPRINT_get_algo(TS_TST_INFO_get_msg_imprint(info.get())))) return {};
    const auto time = toTime(TS_TST_INFO_get_time(info.get()));
    if (!time || !isGoodToken(stamp, token.get(), *time)) return {};

    X509* authority = findSignerCertificate(*signer, token->d.sign->cert);
    if (!authority || !isTrusted(stamp, authority, token->d.sign->cert, *time)) return {};
    return time;
}

std::optional<std::time_t> timeOfCounterSignature(const Stamp& stamp) {
    const auto* bytes = stamp.value.data();
    const ssl::Owned<PKCS7_SIGNER_INFO, &PKCS7_SIGNER_INFO_free> signer(
        d2i_PKCS7_SIGNER_INFO(nullptr, &bytes, static_cast<long>(stamp.value.size())));
    if (!signer || !isGoodDigest(signer->digest_alg)) return {};
    const ASN1_TYPE* signingTime = PKCS7_get_signed_attribute(signer.get(), NID_pkcs9_signingTime);
    if (!signingTime || (signingTime->type != V_ASN1_UTCTIME && signingTime->type != V_ASN1_GENERALIZEDTIME)) return {};
    const auto time = toTime(signingTime->value.asn1_string);

    STACK_OF(X509)* certificates = stamp.signature.certificates;
    X509* authority = findSignerCertificate(*signer, certificates);
    constexpr const char* plainData = "1.2.840.113549.1.7.1";
    if (!time || !authority || !isTrusted(stamp, authority, certificates, *time)) return {};
    if (!isSignedBy(stamp.signature.message.get(), signer.get(), authority, stamp.stampedBytes(), plainData)) return {};
    return time;
}

enum class Form { None, Token, CounterSignature };

Form formOf(const X509_ATTRIBUTE* attribute) {
    char text[80];
    if (OBJ_obj2txt(text, sizeof text, X509_ATTRIBUTE_get0_object(const_cast<X509_ATTRIBUTE*>(attribute)), 1) <= 0)
        return Form::None;
    if (std::strcmp(text, "1.3.6.1.4.1.311.3.3.1") == 0) return Form::Token;
    if (std::strcmp(text, "1.2.840.113549.1.9.6") == 0) return Form::CounterSignature;
    return Form::None;
}

}  // namespace

std::optional<std::time_t> findStampedTime(const ProgramSignature& signature, X509_STORE* roots, std::time_t now) {
    int left = sMostStamps;
    const STACK_OF(X509_ATTRIBUTE)* attributes = signature.signer->unauth_attr;
    for (int i = 0; i < sk_X509_ATTRIBUTE_num(attributes); ++i) {
        X509_ATTRIBUTE* attribute = sk_X509_ATTRIBUTE_value(attributes, i);
        const Form form = formOf(attribute);
        if (form == Form::None) continue;
        for (int j = 0; j < X509_ATTRIBUTE_count(attribute) && left-- > 0; ++j) {
            const ASN1_TYPE* value = X509_ATTRIBUTE_get0_type(attribute, j);
            if (!value || value->type != V_ASN1_SEQUENCE) continue;
            const Stamp stamp{signature, roots, now, ssl::contentOf(value->value.sequence)};
            const auto time = form == Form::Token ? timeOfToken(stamp) : timeOfCounterSignature(stamp);
            if (time) return time;
        }
    }
    return {};
}

}  // namespace Public::Base
