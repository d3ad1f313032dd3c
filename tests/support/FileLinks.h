// Symbolic links of the system at hand.
#pragma once

#include <string>

namespace support {

/// Makes one. Throws std::runtime_error when the system makes none.
void makeLink(const std::string& target, const std::string& path);

/// Whether it makes any: not every Windows lets every user, nor does everything that passes for one have them.
bool linksCanBeMade();

}  // namespace support
