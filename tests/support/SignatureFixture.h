// What the tests of signatures share: a package, a kit that is trusted, and the verdict of one verification.
#pragma once

#include <string>

#include "FileText.h"
#include "PackageMaker.h"
#include "PackageSigner.h"
#include "Public/Base/Signature.h"
#include "Public/Base/StringEx.h"
#include "TempDir.h"

namespace support {

struct Verdict {
    bool good = false;
    std::string signer;
    std::string detail;
    bool isUnsigned() const { return !good && signer.empty(); }
    bool isBad() const { return !good && !signer.empty(); }
};

inline Verdict verify(const std::string& file) {
    // Old texts must not shine through.
    std::wstring signer = L"left over", detail = L"left over";
    Verdict verdict;
    verdict.good = Public::Base::Signature::Verify(Public::Base::StringEx::string2wstring(file), signer, detail);
    verdict.signer = Public::Base::StringEx::wstring2string(signer);
    verdict.detail = Public::Base::StringEx::wstring2string(detail);
    return verdict;
}

class SignatureFixture : public testing::Test {
protected:
    std::string path(const std::string& name) const { return mDirectory.path() + "/" + name; }

    /// An unsigned package.
    std::string package() { return makePackage({}, path("package.exe")); }

    /// Another one, at path("other.exe").
    std::string otherPackage() {
        PackageSpec spec;
        spec.version = "2.0.0.1";
        return makePackage(spec, path("other.exe"));
    }

    /// The package, signed.
    std::string signedPackage(SigningKit::Signer signer = SigningKit::Publisher, const SignOptions& options = {}) {
        mKit.sign(package(), path("signed.exe"), signer, options);
        return path("signed.exe");
    }

    TempDir mDirectory;
    SigningKit mKit;
    TrustRoots mTrust{mKit.rootPem()};
};

}  // namespace support
