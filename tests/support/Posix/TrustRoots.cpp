#include "TrustRoots.h"

#include "Public/Base/Signature.h"

namespace support {

TrustRoots::TrustRoots(const std::string& pemFile) {
    Public::Base::Signature::setTrustedRoots(pemFile);
    Public::Base::Signature::setTrustedPublishers({});
}

TrustRoots::~TrustRoots() {
    Public::Base::Signature::setTrustedRoots({});
    Public::Base::Signature::setTrustedPublishers({});
}

}  // namespace support
