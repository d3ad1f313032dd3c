// What the status of an HTTP answer means.
#pragma once

#include <memory>

#include "Public/Base/ErrorInfo.h"
#include "Public/Network/HTTPClient.h"

namespace Tarnwick::OrvUpdate {

/// @param response null when none came   @return success for status 200
Public::Base::ErrorInfo errorOfAnswer(const std::shared_ptr<Public::Network::HTTPClientResponse>& response);

}  // namespace Tarnwick::OrvUpdate
