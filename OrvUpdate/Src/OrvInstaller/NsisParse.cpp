#include "NsisParse.h"

#include <cstddef>

namespace Tarnwick::OrvUpdate {

namespace {

constexpr size_t kNtHeaderField = 60;   // where the offset of the NT header stands
constexpr size_t kOptionalHeader = 24;  // behind the beginning of the NT header
constexpr uint32_t kDosMagic = 0x5A4D;  // "MZ"
constexpr uint32_t kNtMagic = 0x4550;   // "PE" and two zero bytes
constexpr uint32_t kMagic32 = 0x10B;
constexpr uint32_t kMagic64 = 0x20B;

std::string baseName(const std::string& name) {
    size_t separator = name.rfind('\\');
    if (separator == std::string::npos) separator = name.rfind('/');
    return separator == std::string::npos ? name : name.substr(separator + 1);
}

/// A little-endian number, 0 where the block does not hold all of it.
uint32_t numberAt(const char* data, size_t size, size_t offset, size_t width) {
    if (offset > size || size - offset < width) return 0;
    uint32_t number = 0;
    for (size_t i = width; i-- > 0;) number = number << 8 | static_cast<unsigned char>(data[offset + i]);
    return number;
}

uint32_t wordSizeOf(const char* data, size_t size) {
    if (numberAt(data, size, 0, 2) != kDosMagic) return 0;
    const size_t ntHeader = numberAt(data, size, kNtHeaderField, 4);
    if (numberAt(data, size, ntHeader, 4) != kNtMagic) return 0;
    switch (numberAt(data, size, ntHeader + kOptionalHeader, 2)) {
        case kMagic64:
            return 64;
        case kMagic32:
            return 32;
        default:
            return 0;
    }
}

}  // namespace

bool NsisParse::open(const std::string& name, bool) {
    const std::string base = baseName(name);
    if (base == "win64.sysbits") mSystemBits = 64;
    if (base == "win32.sysbits") mSystemBits = 32;
    if (base == "Server.msi") mHasServer = true;
    if (base == "Client.msi") mHasClient = true;

    const bool ofServer = name.find("Orv Server") != std::string::npos;
    const bool ofClient = !ofServer && name.find("Orv Client") != std::string::npos;
    if (ofServer) mHasServer = true;
    if (ofClient) mHasClient = true;
    // Whatever the item's extension: the first one inside a component that is a program tells the word size.
    mWantData = (ofServer || ofClient) && mSystemBits == 0;
    return true;
}

bool NsisParse::write(const char* data, unsigned int size) {
    if (!mWantData) return false;
    mSystemBits = wordSizeOf(data, size);
    return true;
}

bool NsisParse::close() { return true; }

void NsisParse::setError(ErrorCode code) { mErrorCode = code; }

}  // namespace Tarnwick::OrvUpdate
