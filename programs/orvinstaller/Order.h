// The command line of the installer, read and tested.
#pragma once

#include <string>
#include <vector>

#include "Upgrade.h"

/// @param arguments what stands behind the program's name
/// @return what is wrong with them, in words for people; empty when the order is good
std::string readOrder(const std::vector<std::string>& arguments, UpgradeOrder& order);
