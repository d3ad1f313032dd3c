// The name of a thread, for debuggers.
#pragma once

#include <string>

namespace Public::Base {

void nameThisThread(const std::string& name);

}  // namespace Public::Base
