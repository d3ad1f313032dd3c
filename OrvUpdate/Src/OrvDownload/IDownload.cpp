#include "IDownload.h"

namespace Tarnwick::OrvUpdate {

ErrorInfo IDownload::start(const Function<void()>&, void*) { return {Public::Base::ErrorCode_NotSupported, ""}; }

}  // namespace Tarnwick::OrvUpdate
