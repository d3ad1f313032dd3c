// The system-specific half of System.
#pragma once

#include <string>

#include "Public/Base/System.h"

namespace Public::Base {

std::string nativeSystemDirectory();
bool nativeStartElevated(const ProgramStart& start);
bool nativeStartPlain(const ProgramStart& start);

}  // namespace Public::Base
