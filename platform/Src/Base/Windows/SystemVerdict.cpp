#include "SystemVerdict.h"

#include <softpub.h>
#include <wintrust.h>

namespace Public::Base {
namespace {

constexpr GUID sVerifyPrograms = WINTRUST_ACTION_GENERIC_VERIFY_V2;

/// One question to the verifier, with what it keeps of it until the end.
class Question {
public:
    Question(HANDLE file, const std::wstring& native) {
        mFile.cbStruct = sizeof mFile;
        mFile.pcwszFilePath = native.c_str();
        mFile.hFile = file;
        mData.cbStruct = sizeof mData;
        mData.dwUIChoice = WTD_UI_NONE;
        mData.fdwRevocationChecks = WTD_REVOKE_NONE;
        mData.dwUnionChoice = WTD_CHOICE_FILE;
        mData.pFile = &mFile;
        mData.dwStateAction = WTD_STATEACTION_VERIFY;
        mData.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL;
    }
    ~Question() {
        mData.dwStateAction = WTD_STATEACTION_CLOSE;
        ask();
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    LONG ask() {
        GUID action = sVerifyPrograms;
        // No window, not even a hidden one, is to belong to a question.
        return ::WinVerifyTrust(static_cast<HWND>(INVALID_HANDLE_VALUE), &action, &mData);
    }
    /// What it found of the first signer; null when it did not come so far.
    const CRYPT_PROVIDER_SGNR* signer() const {
        CRYPT_PROVIDER_DATA* found = ::WTHelperProvDataFromStateData(mData.hWVTStateData);
        return found ? ::WTHelperGetProvSignerFromChain(found, 0, FALSE, 0) : nullptr;
    }

private:
    WINTRUST_FILE_INFO mFile{};
    WINTRUST_DATA mData{};
};

crypt::Certificate certificateOf(const CRYPT_PROVIDER_SGNR& signer) {
    if (!signer.csCertChain || !signer.pasCertChain) return nullptr;
    return crypt::Certificate(::CertDuplicateCertificateContext(signer.pasCertChain[0].pCert));
}

crypt::Store chainOf(const CRYPT_PROVIDER_SGNR& signer) {
    crypt::Store store(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    for (DWORD i = 0; store && i < signer.csCertChain; ++i)
        ::CertAddCertificateContextToStore(store.get(), signer.pasCertChain[i].pCert, CERT_STORE_ADD_USE_EXISTING,
                                           nullptr);
    return store;
}

}  // namespace

SystemVerdict askSystem(HANDLE file, const std::wstring& native) {
    Question question(file, native);
    SystemVerdict verdict;
    verdict.status = question.ask();
    const CRYPT_PROVIDER_SGNR* signer = question.signer();
    if (!signer) return verdict;
    verdict.certificate = certificateOf(*signer);
    if (!signer->csCounterSigners || !signer->pasCounterSigners) return verdict;
    verdict.time = signer->sftVerifyAsOf;
    verdict.stamper = certificateOf(signer->pasCounterSigners[0]);
    verdict.stampersIssuers = chainOf(signer->pasCounterSigners[0]);
    return verdict;
}

}  // namespace Public::Base
