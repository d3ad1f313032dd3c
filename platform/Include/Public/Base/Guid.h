// Random identifiers.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// A version 4 identifier of RFC 4122. Plain value.
class ORV_PLATFORM_API Guid {
public:
    static Guid createGuid();
    /// 36 characters, lower-case, with dashes.
    std::string getStringStream() const;

private:
    std::array<uint8_t, 16> mBytes{};
};

}  // namespace Public::Base
