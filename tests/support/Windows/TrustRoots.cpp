#include "TrustRoots.h"

#include <windows.h>

#include <wincrypt.h>

#include <map>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "FileText.h"
#include "Public/Base/Signature.h"

namespace support {
namespace {

std::vector<BYTE> derOf(const std::string& pem) {
    DWORD size = 0;
    const auto length = static_cast<DWORD>(pem.size());
    ::CryptStringToBinaryA(pem.c_str(), length, CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr);
    std::vector<BYTE> der(size);
    if (!::CryptStringToBinaryA(pem.c_str(), length, CRYPT_STRING_BASE64HEADER, der.data(), &size, nullptr, nullptr))
        throw std::runtime_error("not a certificate");
    return der;
}

/// A root in the machine's store. It is written where the store keeps its certificates: through the store itself, other
/// processes of the tests could write back what was removed since they looked.
class RootOfTheMachine {
public:
    explicit RootOfTheMachine(const std::string& pem) {
        const auto der = derOf(pem);
        const PCCERT_CONTEXT root =
            ::CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()));
        if (root == nullptr) throw std::runtime_error("not a certificate");
        name(root);
        DWORD size = 0;
        ::CertSerializeCertificateStoreElement(root, 0, nullptr, &size);
        std::vector<BYTE> kept(size);
        const bool good = ::CertSerializeCertificateStoreElement(root, 0, kept.data(), &size) && write(kept);
        ::CertFreeCertificateContext(root);
        if (!good) throw std::runtime_error("the machine takes no root; only an administrator may add one");
    }
    ~RootOfTheMachine() { ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, mKey.c_str()); }
    RootOfTheMachine(const RootOfTheMachine&) = delete;
    RootOfTheMachine& operator=(const RootOfTheMachine&) = delete;

private:
    void name(PCCERT_CONTEXT root) {
        BYTE hash[20];
        DWORD size = sizeof hash;
        ::CertGetCertificateContextProperty(root, CERT_SHA1_HASH_PROP_ID, hash, &size);
        mKey = L"SOFTWARE\\Microsoft\\SystemCertificates\\Root\\Certificates\\";
        for (const BYTE byte : hash) {
            mKey += L"0123456789ABCDEF"[byte >> 4];
            mKey += L"0123456789ABCDEF"[byte & 15];
        }
    }
    bool write(const std::vector<BYTE>& kept) const {
        HKEY key = nullptr;
        if (::RegCreateKeyExW(HKEY_LOCAL_MACHINE, mKey.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) != 0)
            return false;
        const auto size = static_cast<DWORD>(kept.size());
        const LSTATUS status = ::RegSetValueExW(key, L"Blob", 0, REG_BINARY, kept.data(), size);
        ::RegCloseKey(key);
        return status == 0;
    }

    std::wstring mKey;
};

void trustUntilTheEnd(const std::string& pem) {
    static std::mutex mutex;
    static std::map<std::string, RootOfTheMachine> roots;
    std::lock_guard lock(mutex);
    roots.try_emplace(pem, pem);
}

}  // namespace

TrustRoots::TrustRoots(const std::string& pemFile) {
    trustUntilTheEnd(readText(pemFile).value());
    Public::Base::Signature::setTrustedPublishers({});
}

TrustRoots::~TrustRoots() { Public::Base::Signature::setTrustedPublishers({}); }

}  // namespace support
