#include "HttpAnswer.h"

#include "GbkTexts.h"

namespace Tarnwick::OrvUpdate {

Public::Base::ErrorInfo errorOfAnswer(const std::shared_ptr<Public::Network::HTTPClientResponse>& response) {
    // The client gives a request that got no response at all the status 0.
    const int status = response ? response->header()->statuscode : 0;
    if (status == 0 || status == 408) return {Public::Base::ErrorCode_NetworkTimeout, kTextNetworkTimeout};
    if (status == 401) return {Public::Base::ErrorCode_AuthFailed, kTextAuthFailed};
    if (status != 200) return {Public::Base::ErrorCode_RequestError, kTextRequestError};
    return {};
}

}  // namespace Tarnwick::OrvUpdate
