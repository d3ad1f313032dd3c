// Permissions that a file does not have by itself.
#pragma once

namespace support {

/// As FileEntry gives them; the file can still be written.
extern const unsigned kUnusualPermissions;

}  // namespace support
