#include "CertificateMaker.h"

#include <openssl/rand.h>
#include <openssl/rsa.h>

#include "OpenSslHandles.h"

namespace support {
namespace {
using namespace ssl;

std::string toPem(BIO* bio) {
    char* text = nullptr;
    const long length = BIO_get_mem_data(bio, &text);
    return std::string(text, static_cast<size_t>(length));
}

EVP_PKEY* newPssKey() {
    const Owned<EVP_PKEY_CTX, &EVP_PKEY_CTX_free> context(EVP_PKEY_CTX_new_from_name(nullptr, "RSA-PSS", nullptr));
    EVP_PKEY* key = nullptr;
    require(context && EVP_PKEY_keygen_init(context.get()) == 1 &&
                EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), 2048) == 1 &&
                EVP_PKEY_generate(context.get(), &key) == 1,
            "make a key");
    return key;
}

Key newKey(CertificateSpec::KeyKind kind) {
    auto make = [&] {
        switch (kind) {
            case CertificateSpec::EcP256:
                return EVP_EC_gen("P-256");
            case CertificateSpec::EcP384:
                return EVP_EC_gen("P-384");
            case CertificateSpec::RsaPss:
                return newPssKey();
            case CertificateSpec::Rsa512:
                return EVP_RSA_gen(512u);
            case CertificateSpec::Rsa1024:
                return EVP_RSA_gen(1024u);
            case CertificateSpec::Rsa2048:
                break;
        }
        return EVP_RSA_gen(2048u);
    };
    Key key(make());
    require(key != nullptr, "make a key");
    return key;
}

std::string constraints(const CertificateSpec& spec) {
    if (!spec.authority) return "CA:FALSE";
    return "critical,CA:TRUE" + (spec.pathLength < 0 ? "" : ",pathlen:" + std::to_string(spec.pathLength));
}

void setName(X509_NAME* name, const CertificateSpec& spec) {
    auto add = [&](const char* field, const std::string& value) {
        if (value.empty()) return;
        const auto* bytes = reinterpret_cast<const unsigned char*>(value.data());
        require(
            X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, bytes, static_cast<int>(value.size()), -1, 0) == 1,
            field);
    };
    add("O", spec.organization);
    add("CN", spec.commonName);
}

void addExtension(X509* certificate, X509* issuer, int id, const std::string& value) {
    if (value.empty()) return;
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    Owned<X509_EXTENSION, &X509_EXTENSION_free> extension(X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str()));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, "add an extension");
}

void setRandomSerial(X509* certificate) {
    uint64_t serial = 0;
    require(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1, "random");
    require(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), (serial >> 1) | 1) == 1, "serial");
}

ASN1_INTEGER* nextTokenSerial(TS_RESP_CTX*, void*) {
    ASN1_INTEGER* serial = ASN1_INTEGER_new();
    ASN1_INTEGER_set(serial, 7);
    return serial;
}

int tokenTime(TS_RESP_CTX*, void* data, long* seconds, long* microseconds) {
    *seconds = static_cast<long>(*static_cast<std::time_t*>(data));
    *microseconds = 0;
    return 1;
}

std::string sha256(const std::string& bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    require(EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr) == 1, "digest");
    return std::string(reinterpret_cast<char*>(digest), length);
}

/// The request (DER) that asks an authority to stamp the bytes.
std::string tokenRequest(const std::string& bytes) {
    Owned<TS_REQ, &TS_REQ_free> request(TS_REQ_new());
    Owned<TS_MSG_IMPRINT, &TS_MSG_IMPRINT_free> imprint(TS_MSG_IMPRINT_new());
    Owned<X509_ALGOR, &X509_ALGOR_free> algorithm(X509_ALGOR_new());
    X509_ALGOR_set_md(algorithm.get(), EVP_sha256());
    std::string digest = sha256(bytes);
    require(TS_REQ_set_version(request.get(), 1) && TS_MSG_IMPRINT_set_algo(imprint.get(), algorithm.get()) &&
                TS_MSG_IMPRINT_set_msg(imprint.get(), reinterpret_cast<unsigned char*>(digest.data()),
                                       static_cast<int>(digest.size())) &&
                TS_REQ_set_msg_imprint(request.get(), imprint.get()) && TS_REQ_set_cert_req(request.get(), 1),
            "make a time-stamp request");
    return toDer(request.get(), i2d_TS_REQ);
}

}  // namespace

Credential makeCertificate(const CertificateSpec& spec, const Credential* issuer) {
    Certificate certificate(X509_new());
    const Key key = spec.key.empty() ? newKey(spec.keyKind) : readKey(spec.key);
    const Certificate parent = issuer ? readCertificate(issuer->certificate) : nullptr;
    const Key parentKey = issuer ? readKey(issuer->key) : nullptr;
    X509* issuing = parent ? parent.get() : certificate.get();

    X509_set_version(certificate.get(), 2);
    setRandomSerial(certificate.get());
    setName(X509_get_subject_name(certificate.get()), spec);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuing));
    require(ASN1_TIME_set_string_X509(X509_getm_notBefore(certificate.get()), spec.notBefore.c_str()) == 1,
            "notBefore");
    require(ASN1_TIME_set_string_X509(X509_getm_notAfter(certificate.get()), spec.notAfter.c_str()) == 1, "notAfter");
    X509_set_pubkey(certificate.get(), key.get());
    if (spec.constrained) addExtension(certificate.get(), issuing, NID_basic_constraints, constraints(spec));
    addExtension(certificate.get(), issuing, NID_key_usage, spec.keyUsage);
    addExtension(certificate.get(), issuing, NID_ext_key_usage, spec.extendedKeyUsage);
    addExtension(certificate.get(), issuing, NID_subject_alt_name, spec.alternativeName);
    addExtension(certificate.get(), issuing, NID_crl_distribution_points, spec.revocationList);
    addExtension(certificate.get(), issuing, NID_subject_key_identifier, "hash");
    addExtension(certificate.get(), issuing, NID_authority_key_identifier, "keyid:always");
    const EVP_MD* digest = EVP_get_digestbyname(spec.digest.c_str());
    require(digest && X509_sign(certificate.get(), parentKey ? parentKey.get() : key.get(), digest) > 0,
            "sign a certificate");

    Bio certificatePem(BIO_new(BIO_s_mem())), keyPem(BIO_new(BIO_s_mem()));
    require(PEM_write_bio_X509(certificatePem.get(), certificate.get()) == 1, "write a certificate");
    require(PEM_write_bio_PrivateKey(keyPem.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1,
            "write a key");
    return {toPem(certificatePem.get()), toPem(keyPem.get())};
}

std::string makeTimeStampToken(const Credential& authority, const std::string& bytes, std::time_t when) {
    const Certificate certificate = readCertificate(authority.certificate);
    const Key key = readKey(authority.key);
    Owned<ASN1_OBJECT, &ASN1_OBJECT_free> policy(OBJ_txt2obj("1.3.6.1.4.1.13762.3", 1));
    Owned<TS_RESP_CTX, &TS_RESP_CTX_free> context(TS_RESP_CTX_new());
    require(TS_RESP_CTX_set_signer_cert(context.get(), certificate.get()) &&
                TS_RESP_CTX_set_signer_key(context.get(), key.get()) &&
                TS_RESP_CTX_set_signer_digest(context.get(), EVP_sha256()) &&
                TS_RESP_CTX_add_md(context.get(), EVP_sha256()) &&
                TS_RESP_CTX_set_def_policy(context.get(), policy.get()),
            "prepare a time-stamp");
    TS_RESP_CTX_set_serial_cb(context.get(), &nextTokenSerial, nullptr);
    TS_RESP_CTX_set_time_cb(context.get(), &tokenTime, &when);

    Owned<TS_RESP, &TS_RESP_free> response(TS_RESP_create_response(context.get(), reader(tokenRequest(bytes)).get()));
    require(response && TS_RESP_get_token(response.get()), "make a time-stamp");
    return toDer(TS_RESP_get_token(response.get()), i2d_PKCS7);
}

std::string makeCounterSignature(const Credential& authority, const std::string& bytes, std::time_t when) {
    const Certificate certificate = readCertificate(authority.certificate);
    const Key key = readKey(authority.key);
    SignerInfo signer(PKCS7_SIGNER_INFO_new());
    require(PKCS7_SIGNER_INFO_set(signer.get(), certificate.get(), key.get(), EVP_sha256()) == 1,
            "prepare a counter-signature");
    const std::string digest = sha256(bytes);
    // The attribute takes the time over.
    ASN1_TIME* time = ASN1_TIME_set(nullptr, when);
    require(PKCS7_add_attrib_content_type(signer.get(), nullptr) == 1 &&
                PKCS7_add0_attrib_signing_time(signer.get(), time) == 1 &&
                PKCS7_add1_attrib_digest(signer.get(), reinterpret_cast<const unsigned char*>(digest.data()),
                                         static_cast<int>(digest.size())) == 1 &&
                PKCS7_SIGNER_INFO_sign(signer.get()) == 1,
            "counter-sign");
    return toDer(signer.get(), i2d_PKCS7_SIGNER_INFO);
}

}  // namespace support
