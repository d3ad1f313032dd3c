// How a test program ends.
#pragma once

namespace support {

/// @return what main is to return, where it is to return at all
int endProcess(int status);

}  // namespace support
