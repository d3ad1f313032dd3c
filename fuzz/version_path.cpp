// Names of directories in the store: only the name that the engine itself would write is accepted.
#include <cstddef>
#include <cstdint>

#include "OrvVersionAccess.h"
#include "Require.h"

using namespace Tarnwick::OrvUpdate;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string name(reinterpret_cast<const char*>(data), size);
    SystemType systemType = Public::Base::SystemType_Unknown;
    SystemBits bits = Public::Base::SystemBits_Unknown;
    VersionType versionType = VersionType_Unknown;
    if (!OrvVersionAccess::parsePath(name, systemType, bits, versionType)) return 0;
    FUZZ_REQUIRE(OrvVersionAccess::path(systemType, bits, versionType, "1.0") == name + "/1.0");
    return 0;
}
