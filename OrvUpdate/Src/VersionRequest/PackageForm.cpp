#include "OrvVersion/PackageForm.h"

#include "Public/Base/File.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

bool VersionRequest::isInvalidPakcage(const std::string& path) {
    if (Public::Base::File::getLength(path) == 0) return false;
    NSISDecompile package;
    return openSoundPackage(path, package);
}

}  // namespace Tarnwick::OrvUpdate
