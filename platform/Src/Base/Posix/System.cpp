#include "Base/NativeSystem.h"
#include "Base/Posix/NativePath.h"
#include "Public/Base/File.h"

namespace Public::Base {

std::string nativeSystemDirectory() { return "/var/lib/orv/Windows/system32"; }

bool System::copyFile(const std::string& from, const std::string& to) {
    std::string source;
    return toNativePath(from, source) && File::copy(findRegardlessOfCase(source), to);
}

bool System::isVersionOrLater(unsigned, unsigned, unsigned) { return true; }

}  // namespace Public::Base
