#include "SystemVerdict.h"

#include <softpub.h>
#include <wintrust.h>

#include "SignatureChain.h"

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

}  // namespace

SystemVerdict askSystem(HANDLE file, const std::wstring& native) {
    Question question(file, native);
    SystemVerdict verdict;
    verdict.status = question.ask();
    verdict.time = timeNow();
    const CRYPT_PROVIDER_SGNR* signer = question.signer();
    if (!signer) return verdict;
    if (signer->sftVerifyAsOf.dwHighDateTime) verdict.time = signer->sftVerifyAsOf;
    if (signer->csCertChain && signer->pasCertChain)
        verdict.certificate.reset(::CertDuplicateCertificateContext(signer->pasCertChain[0].pCert));
    return verdict;
}

}  // namespace Public::Base
