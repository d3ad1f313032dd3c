#include "PssSigner.h"

#include <openssl/core_names.h>
#include <openssl/rsa.h>

#include "OpenSslHandles.h"

namespace support {
namespace {

using namespace ssl;

/// The bytes that the signer signs: its attributes as a set.
std::string signedAttributes(const PKCS7_SIGNER_INFO& signer) {
    unsigned char* bytes = nullptr;
    const int length =
        ASN1_item_i2d(reinterpret_cast<const ASN1_VALUE*>(signer.auth_attr), &bytes, ASN1_ITEM_rptr(PKCS7_ATTR_SIGN));
    require(length > 0, "encode the attributes");
    std::string text(reinterpret_cast<char*>(bytes), static_cast<size_t>(length));
    OPENSSL_free(bytes);
    return text;
}

/// @param algorithm is set to what was used
std::string pssSignature(EVP_PKEY* key, const std::string& bytes, X509_ALGOR* algorithm) {
    const Owned<EVP_MD_CTX, &EVP_MD_CTX_free> context(EVP_MD_CTX_new());
    EVP_PKEY_CTX* parameters = nullptr;
    size_t length = 0;
    require(EVP_DigestSignInit(context.get(), &parameters, EVP_sha256(), nullptr, key) == 1 &&
                EVP_PKEY_CTX_set_rsa_padding(parameters, RSA_PKCS1_PSS_PADDING) == 1 &&
                EVP_PKEY_CTX_set_rsa_pss_saltlen(parameters, RSA_PSS_SALTLEN_DIGEST) == 1,
            "prepare a signature");
    const auto* text = reinterpret_cast<const unsigned char*>(bytes.data());
    require(EVP_DigestSign(context.get(), nullptr, &length, text, bytes.size()) == 1, "measure a signature");
    std::string signature(length, '\0');
    require(EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &length, text,
                           bytes.size()) == 1,
            "sign");

    unsigned char encoded[128];
    OSSL_PARAM wanted[] = {
        OSSL_PARAM_construct_octet_string(OSSL_SIGNATURE_PARAM_ALGORITHM_ID, encoded, sizeof encoded), OSSL_PARAM_END};
    require(EVP_PKEY_CTX_get_params(parameters, wanted) == 1, "name the algorithm");
    const unsigned char* at = encoded;
    const Owned<X509_ALGOR, &X509_ALGOR_free> named(
        d2i_X509_ALGOR(nullptr, &at, static_cast<long>(wanted[0].return_size)));
    require(named && X509_ALGOR_copy(algorithm, named.get()) == 1, "name the algorithm");
    return signature;
}

}  // namespace

std::string signAgainWithPss(const std::string& signature, const Credential& signer) {
    const SignedData message = readMessage(signature);
    const Certificate certificate = readCertificate(signer.certificate);
    const Key key = readKey(signer.key);
    PKCS7_SIGNER_INFO* info = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(message.get()), 0);
    require(X509_NAME_set(&info->issuer_and_serial->issuer, X509_get_issuer_name(certificate.get())) == 1 &&
                ASN1_STRING_copy(info->issuer_and_serial->serial, X509_get0_serialNumber(certificate.get())) == 1 &&
                PKCS7_add_certificate(message.get(), certificate.get()) == 1,
            "exchange the signer");
    const std::string fresh = pssSignature(key.get(), signedAttributes(*info), info->digest_enc_alg);
    require(ASN1_STRING_set(info->enc_digest, fresh.data(), static_cast<int>(fresh.size())) == 1, "set a signature");
    return toDer(message.get(), i2d_PKCS7);
}

}  // namespace support
