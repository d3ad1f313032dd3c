#include "KitPlace.h"

namespace support {

KitPlace KitPlace::usual() { return {.directory = ORV_BUILD_DIR "/test-signing/kit-1"}; }

}  // namespace support
