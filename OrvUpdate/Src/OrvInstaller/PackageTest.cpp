#include "PackageTest.h"

#include "Archive/NSISDecompile.h"
#include "OrvInstaller.h"
#include "Public/Base/File.h"
#include "Public/Base/Signature.h"
#include "Public/Base/StringEx.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;

namespace {

/// A good signature vouches for the length too. Without any, the package must be as long as it says; one that carries a
/// bad signature has been tampered with.
bool isOriginal(NSISDecompile& package, const std::string& path) {
    std::wstring signer;
    std::wstring detail;
    if (Signature::Verify(StringEx::string2wstring(path), signer, detail)) return true;
    if (!signer.empty()) return false;
    uint64_t size = 0;
    return package.getSize(size) && size == File::getLength(path);
}

ErrorInfo failure(ErrorCode code) { return ErrorInfo(code, ""); }

}  // namespace

ErrorInfo judgeContent(const NsisParse& content) {
    if (content.errorCode() != IExtractOutFile::ErrorCode_None) return failure(ErrorCode_ArchiveError);
    if (!content.hasClient() || !content.hasServer()) return failure(ErrorCode_PackageIncomplete);
    return {};
}

ErrorInfo examinePackage(const std::string& path, const Function<ErrorInfo(const std::string&)>& acceptVersion,
                         PackageFindings& findings) {
    if (!File::access(path, AccessMode_Exists)) return failure(ErrorCode_PackageInvalid);
    NSISDecompile package;
    if (!package.open(path, "")) return failure(ErrorCode_PackageUnreadable);
    if (!package.getVersion(findings.version)) return failure(ErrorCode_PackageUnreadable);
    if (const ErrorInfo refused = acceptVersion(findings.version)) return refused;
    if (!isOriginal(package, path)) return failure(ErrorCode_PackageUnreadable);

    const auto content = std::make_shared<NsisParse>();
    const bool extracted = package.extract(content);
    if (!extracted && content->errorCode() == IExtractOutFile::ErrorCode_None) {
        return failure(ErrorCode_PackageUnreadable);
    }
    findings.systemBits = content->systemBits();
    return judgeContent(*content);
}

ErrorInfo OrvInstaller::checkPackage(const std::string& path, const std::string& versionText, int systemBits) {
    PackageFindings findings;
    if (const ErrorInfo error = examinePackage(path, {}, findings)) return error;
    if (Version(findings.version) != Version(versionText)) return failure(ErrorCode_PackageMismatch);
    if (findings.systemBits != static_cast<uint32_t>(systemBits)) return failure(ErrorCode_PackageMismatch);
    return {};
}

}  // namespace Tarnwick::OrvUpdate
