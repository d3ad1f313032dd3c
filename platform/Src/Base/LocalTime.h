// Wall time in the zone of this machine.
#pragma once

#include <ctime>

#include "Public/Base/Time.h"

namespace Public::Base {

Time localTime(std::time_t seconds);

}  // namespace Public::Base
