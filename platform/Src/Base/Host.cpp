#include "Public/Base/Host.h"

namespace Public::Base {

SystemBits Host::getSoftwareSystemBits() { return sizeof(void*) == 8 ? SystemBits_64 : SystemBits_32; }

}  // namespace Public::Base
