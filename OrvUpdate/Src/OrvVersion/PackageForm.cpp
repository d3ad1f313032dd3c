#include "OrvVersion/PackageForm.h"

#include "Public/Base/File.h"
#include "Public/Base/Signature.h"
#include "Public/Base/StringEx.h"

namespace Tarnwick::OrvUpdate {

bool openSoundPackage(const std::string& path, NSISDecompile& package) {
    std::wstring signer;
    std::wstring detail;
    const bool isSigned = Public::Base::Signature::Verify(Public::Base::StringEx::string2wstring(path), signer, detail);
    const uint64_t length = Public::Base::File::getLength(path);
    if (!package.open(path, "")) return false;
    if (isSigned) return true;
    if (!signer.empty()) return false;  // a signature is there and is bad
    uint64_t size = 0;
    return package.getSize(size) && size == length;
}

}  // namespace Tarnwick::OrvUpdate
