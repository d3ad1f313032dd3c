// The version documents that nodes tell each other: a set that was read is announced as it was heard.
#include <cstddef>
#include <cstdint>

#include "OrvVersion.h"
#include "Require.h"

using namespace Tarnwick::OrvUpdate;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string document(reinterpret_cast<const char*>(data), size);
    VersionSet versions;
    if (OrvVersion::parseVersion(nullptr, document, "/store", versions, "server", Version())) {
        FUZZ_REQUIRE(versions.empty());
        return 0;
    }
    for (const auto& version : versions) FUZZ_REQUIRE(version->getPackageFile().find("..") == std::string::npos);

    std::string announced;
    OrvVersion::buildVersion(versions, announced);
    VersionSet heard;
    OrvVersion::parseVersion(nullptr, announced, "/store", heard, "", Version());
    FUZZ_REQUIRE(heard.size() == versions.size());
    std::string repeated;
    OrvVersion::buildVersion(heard, repeated);
    FUZZ_REQUIRE(repeated == announced);
    return 0;
}
