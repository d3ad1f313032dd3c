// What the system keeps among its files without being one.
#pragma once

namespace support {

/// Can be read but tells no length.
inline constexpr const char* kDeviceWithoutLength = "/dev/zero";

}  // namespace support
