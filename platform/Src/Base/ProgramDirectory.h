// Where the running program lies.
#pragma once

#include <string>

namespace Public::Base {

/// Without a trailing separator; empty when the system does not tell.
std::string programDirectory();

}  // namespace Public::Base
