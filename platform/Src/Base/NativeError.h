// What the operating system says of its error numbers.
#pragma once

#include <string>

namespace Public::Base {

/// One line of UTF-8 without a line end.
std::string nativeErrorText(int nativeError);

}  // namespace Public::Base
