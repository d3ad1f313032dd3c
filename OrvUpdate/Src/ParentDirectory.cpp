#include "ParentDirectory.h"

#include "Public/Base/File.h"
#include "Public/Base/StringEx.h"

namespace Tarnwick::OrvUpdate {

bool makeParentDirectory(const std::string& path) {
    const std::string copy = Public::Base::StringEx::replace(path, "/", "\\");
    const size_t separator = copy.rfind('\\');
    if (separator == std::string::npos) return true;
    return Public::Base::File::makeDirectory(copy.substr(0, separator));
}

}  // namespace Tarnwick::OrvUpdate
