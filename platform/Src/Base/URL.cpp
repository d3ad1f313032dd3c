#include "Public/Base/URL.h"

namespace Public::Base {

URL::URL(const std::string& text, bool) : mText(text) {}

}  // namespace Public::Base
