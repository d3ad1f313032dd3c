#include "Public/Base/System.h"

namespace Public::Base {

std::string System::fromCodePage(const std::string& text) { return text; }

}  // namespace Public::Base
