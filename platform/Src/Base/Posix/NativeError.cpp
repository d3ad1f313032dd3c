#include "Base/NativeError.h"

#include <system_error>

namespace Public::Base {

std::string nativeErrorText(int nativeError) { return std::system_category().message(nativeError); }

}  // namespace Public::Base
