#include "KitPlace.h"

#include <filesystem>

#include "FileText.h"
#include "TempDir.h"

namespace support {
namespace {

namespace fs = std::filesystem;

/// A long key takes a second to make, so one is kept for all processes. Authorities get their own.
std::string keptKey() {
    const std::string folder = ORV_BUILD_DIR "/test-signing", path = folder + "/signers.key";
    if (const auto key = readText(path)) return *key;
    fs::create_directories(folder);
    const TempDir making(folder);
    writeText(making.path() + "/key", makeCertificate({.commonName = "Orv"}).key);
    std::error_code lost;
    fs::rename(making.path() + "/key", path, lost);
    return readText(path).value();
}

}  // namespace

KitPlace KitPlace::usual() {
    static const TempDir directory;
    static const std::string key = keptKey();
    return {.directory = directory.path() + "/kit", .authoritiesKeys = CertificateSpec::Rsa1024, .signersKey = key};
}

}  // namespace support
