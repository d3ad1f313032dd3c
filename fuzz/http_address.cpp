// Addresses that a cloud document names: one that is accepted is of HTTP, names a host, and brings nothing into the
// request that is no address.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Network/HttpAddress.h"
#include "Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string address = Public::Network::httpAddress(text);
    if (address.empty()) return 0;
    const bool secure = address.starts_with("https://");
    FUZZ_REQUIRE(secure || address.starts_with("http://"));
    const size_t host = secure ? 8 : 7;
    FUZZ_REQUIRE(host < address.size() && address[host] != '/');
    FUZZ_REQUIRE(std::none_of(address.begin(), address.end(), [](char letter) {
        const auto code = static_cast<unsigned char>(letter);
        return code <= ' ' || code == 0x7F;
    }));
    FUZZ_REQUIRE(Public::Network::httpAddress(address) == address);
    return 0;
}
