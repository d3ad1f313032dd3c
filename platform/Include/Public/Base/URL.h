// The address of an HTTP request.
#pragma once

#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Keeps the text as it was given; the HTTP client judges whether it is an address. Plain value.
class ORV_PLATFORM_API URL {
public:
    /// @param decode always false: the text is not touched
    URL(const std::string& text, bool decode);
    const std::string& text() const { return mText; }

private:
    std::string mText;
};

}  // namespace Public::Base
