// The address of a peer's compatibility document.
#include "VersionCompatible/CompatibleUrl.h"

namespace Tarnwick::OrvUpdate {

using Public::Network::NetAddr;

TEST(CompatibleUrl, IsMadeOfSchemeHostAndPort) {
    EXPECT_EQ(buildCompatibleUrl("http://", NetAddr("10.0.0.7", 8080)), "http://10.0.0.7:8080/VersionCompatible");
    EXPECT_EQ(buildCompatibleUrl("https://", NetAddr("host.example", 65535)),
              "https://host.example:65535/VersionCompatible");
}

TEST(CompatibleUrl, PutsAnIpv6AddressInBracketsOnce) {
    EXPECT_EQ(buildCompatibleUrl("http://", NetAddr("fe80::1", 80)), "http://[fe80::1]:80/VersionCompatible");
    EXPECT_EQ(buildCompatibleUrl("http://", NetAddr("[::1]", 80)), "http://[::1]:80/VersionCompatible");
}

}  // namespace Tarnwick::OrvUpdate
