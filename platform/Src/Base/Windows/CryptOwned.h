// Owning pointers for what the system's cryptography hands out.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <type_traits>

// The system's own must come first.
#include "Base/Windows/WindowsHeaders.h"

#include <wincrypt.h>

namespace Public::Base::crypt {

using Bytes = std::span<const unsigned char>;

constexpr DWORD kEncoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

struct CloseMessage {
    void operator()(HCRYPTMSG message) const { ::CryptMsgClose(message); }
};
struct CloseStore {
    void operator()(HCERTSTORE store) const { ::CertCloseStore(store, 0); }
};
struct FreeCertificate {
    void operator()(PCCERT_CONTEXT certificate) const { ::CertFreeCertificateContext(certificate); }
};
struct FreeChain {
    void operator()(PCCERT_CHAIN_CONTEXT chain) const { ::CertFreeCertificateChain(chain); }
};

using Message = std::unique_ptr<std::remove_pointer_t<HCRYPTMSG>, CloseMessage>;
using Store = std::unique_ptr<std::remove_pointer_t<HCERTSTORE>, CloseStore>;
using Certificate = std::unique_ptr<const CERT_CONTEXT, FreeCertificate>;
using Chain = std::unique_ptr<const CERT_CHAIN_CONTEXT, FreeChain>;

/// One parameter of a message. Structures point into the text, which keeps them together.
/// @return empty when the message has none
inline std::string parameterOf(HCRYPTMSG message, DWORD which) {
    DWORD size = 0;
    if (!::CryptMsgGetParam(message, which, 0, nullptr, &size)) return {};
    std::string bytes(size, '\0');
    if (!::CryptMsgGetParam(message, which, 0, bytes.data(), &size)) return {};
    return bytes;
}

}  // namespace Public::Base::crypt
