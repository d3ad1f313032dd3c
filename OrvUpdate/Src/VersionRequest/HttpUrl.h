// One address of the update cloud, and the platform that its answers are for.
#pragma once

#include <string>

#include "Public/Base/SystemType.h"

namespace Tarnwick::OrvUpdate {

struct HttpUrl {
    Public::Base::SystemType systemType = Public::Base::SystemType_Windows;
    Public::Base::SystemBits systemBits = Public::Base::SystemBits_64;
    std::string url;
};

}  // namespace Tarnwick::OrvUpdate
