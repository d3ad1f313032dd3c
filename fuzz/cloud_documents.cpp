// The update cloud's version documents, and the node documents that are made of them.
#include <cstddef>
#include <cstdint>

#include "OrvVersion.h"
#include "Require.h"

using namespace Tarnwick::OrvUpdate;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string document(reinterpret_cast<const char*>(data), size);
    const Version running("1.0", 0);
    VersionSet versions;
    if (OrvVersion::parseVersionFromHttp(nullptr, document, "/store", versions, "server", running)) {
        FUZZ_REQUIRE(versions.empty());
        return 0;
    }
    for (const auto& version : versions) {
        FUZZ_REQUIRE(version->getVersion().OEM() == running.OEM());
        FUZZ_REQUIRE(version->getStoragePosition() == StoragePosition_Cloud);
        FUZZ_REQUIRE(version->getPackageFile().find("..") == std::string::npos);
    }
    std::string announced;
    OrvVersion::buildVersion(versions, announced);
    VersionSet heard;
    OrvVersion::parseVersion(nullptr, announced, "/store", heard, "", running);
    FUZZ_REQUIRE(heard.size() == versions.size());
    return 0;
}
