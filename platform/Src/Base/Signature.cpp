// What is the same of signatures on every system: the file, the table in it, and the answer.
#include "Public/Base/Signature.h"

#include <exception>

#include "Public/Base/File.h"
#include "Public/Base/StringEx.h"
#include "Public/Base/System.h"
#include "SignatureJudge.h"

namespace Public::Base {
namespace {

Judgement judge(const std::string& path) {
    MappedFile file;
    if (file.open(path) != MappedFile::Result::Mapped) {
        // What is there but cannot be read now may carry any signature; only what holds no byte surely carries none.
        const bool mayBeSigned = !File::isAbsent(path) && (File::getLength(path) != 0);
        return {mayBeSigned ? "unknown" : "", "the file cannot be read"};
    }
    const PeSecurity program = PeSecurity::locate({file.data(), file.size()});
    switch (program.state) {
        case PeSecurity::State::NotProgram:
        case PeSecurity::State::Unsigned:
            return {"", program.flaw};
        case PeSecurity::State::Damaged:
            return {"unknown", program.flaw};
        case PeSecurity::State::Signed:
            break;
    }
    return judgeSigned(program, path, *SignatureSettings::current());
}

}  // namespace

bool Signature::Verify(const std::wstring& file, std::wstring& signer, std::wstring& detail) {
    signer.clear();
    detail.clear();
    try {
        const Judgement judgement = judge(StringEx::wstring2string(file));
        signer = StringEx::string2wstring(judgement.signer);
        detail = StringEx::string2wstring(judgement.flaw);
        return judgement.flaw.empty();
    } catch (const std::exception&) {
        // Memory ran out; what could not be judged is not trusted.
        signer = L"unknown";
        detail = L"the file could not be examined";
        return false;
    }
}

}  // namespace Public::Base
