#include "SignatureChain.h"

#include <openssl/pem.h>
#include <openssl/pemerr.h>

#include <algorithm>

namespace Public::Base {
namespace {

constexpr int sLongestChain = 16;
constexpr int sWeakestKey = 80;     // bits of security: RSA of 1024 bits
constexpr int sWeakestDigest = 60;  // bits of security: SHA-1, which older chains still use

/// RFC 5280: an authority that limits its usage limits it for all below it.
bool permits(X509* certificate, uint32_t usage) {
    const bool limited = X509_get_extension_flags(certificate) & EXFLAG_XKUSAGE;
    return !limited || (X509_get_extended_key_usage(certificate) & (usage | XKU_ANYEKU));
}

bool isMeantFor(X509* leaf, uint32_t usage) {
    const uint32_t flags = X509_get_extension_flags(leaf);
    if (!(flags & EXFLAG_XKUSAGE) || !(X509_get_extended_key_usage(leaf) & usage)) return false;
    const uint32_t accepted = KU_DIGITAL_SIGNATURE | (usage == XKU_TIMESTAMP ? KU_NON_REPUDIATION : 0);
    return !(flags & EXFLAG_KUSAGE) || (X509_get_key_usage(leaf) & accepted);
}

bool isStrong(X509* certificate, bool isRoot) {
    EVP_PKEY* key = X509_get0_pubkey(certificate);
    if (!key || EVP_PKEY_get_security_bits(key) < sWeakestKey) return false;
    int bits = 0;
    // What a root says of itself proves nothing, so the digest does not matter there.
    return isRoot || (X509_get_signature_info(certificate, nullptr, nullptr, &bits, nullptr) && bits >= sWeakestDigest);
}

std::string findFlawInMembers(STACK_OF(X509) * chain, uint32_t usage) {
    const int last = sk_X509_num(chain) - 1;
    for (int i = 0; i <= last; ++i) {
        X509* certificate = sk_X509_value(chain, i);
        const bool isRoot = i == last;
        if (!isStrong(certificate, isRoot)) return "the certificate chain is too weak";
        if (isRoot) break;
        if (!permits(certificate, usage)) return "an issuer in the certificate chain is not meant for this usage";
    }
    return {};
}

}  // namespace

ssl::Store loadRoots(const std::string& pemFile, std::string& flaw) {
    const ssl::Bio file(BIO_new_file(pemFile.c_str(), "rb"));
    if (!file) {
        flaw = "the trusted roots cannot be read from " + pemFile;
        return nullptr;
    }
    ssl::Store store(X509_STORE_new());
    bool any = false;
    while (store) {
        const ssl::Certificate root(PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr));
        if (root)
            any = X509_STORE_add_cert(store.get(), root.get()) == 1 || any;
        else if (ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE)
            break;  // the end; a certificate that cannot be read is passed over
    }
    if (any) return store;
    flaw = "there are no trusted roots in " + pemFile;
    return nullptr;
}

std::string findChainFlaw(const ChainQuestion& question) {
    if (!isMeantFor(question.leaf, question.usage))
        return question.usage == XKU_CODE_SIGN ? "the certificate is not meant for signing programs"
                                               : "the certificate is not meant for time-stamps";
    const ssl::Owned<X509_STORE_CTX, &X509_STORE_CTX_free> context(X509_STORE_CTX_new());
    if (!context || !X509_STORE_CTX_init(context.get(), question.roots, question.leaf, question.others))
        return "the certificate chain cannot be examined";
    X509_VERIFY_PARAM* parameters = X509_STORE_CTX_get0_param(context.get());
    X509_VERIFY_PARAM_set_time(parameters, question.time);
    X509_VERIFY_PARAM_set_depth(parameters, sLongestChain);
    if (X509_verify_cert(context.get()) != 1)
        return std::string("the certificate chain is not trusted: ") +
               X509_verify_cert_error_string(X509_STORE_CTX_get_error(context.get()));
    return findFlawInMembers(X509_STORE_CTX_get0_chain(context.get()), question.usage);
}

std::string commonName(X509* certificate) {
    const X509_NAME* subject = X509_get_subject_name(certificate);
    // The last one is the most specific.
    int index = -1;
    for (int next; (next = X509_NAME_get_index_by_NID(subject, NID_commonName, index)) >= 0;) index = next;
    if (index < 0) return {};
    unsigned char* text = nullptr;
    const int length = ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, index)));
    if (length < 0) return {};
    std::string name(text, text + length);
    OPENSSL_free(text);
    return name;
}

std::string signerText(X509* certificate) {
    std::string text = commonName(certificate);
    if (text.empty()) {
        const ssl::Bio line(BIO_new(BIO_s_mem()));
        char* bytes = nullptr;
        if (line && X509_NAME_print_ex(line.get(), X509_get_subject_name(certificate), 0,
                                       XN_FLAG_ONELINE & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB)) > 0) {
            const long length = BIO_get_mem_data(line.get(), &bytes);
            text.assign(bytes, static_cast<size_t>(length));
        }
    }
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    return text.empty() ? "unknown" : text;
}

}  // namespace Public::Base
