// Command lines as programs of this system take them apart.
#pragma once

#include <string>
#include <vector>

namespace Public::Base {

/// One line that the usual rules take apart into these words again (Microsoft, "Parsing C++ command-line arguments").
std::wstring commandLineOf(const std::vector<std::string>& arguments);

}  // namespace Public::Base
