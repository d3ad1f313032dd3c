#include "Network/HttpAddress.h"

using Public::Network::httpAddress;

namespace {

struct Address {
    const char* name;
    std::string text;
    std::string expected;  // empty: refused
};

class HttpAddress : public testing::TestWithParam<Address> {};

TEST_P(HttpAddress, IsTakenOrRefused) { EXPECT_EQ(httpAddress(GetParam().text), GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(Taken, HttpAddress,
                         testing::Values(Address{"Plain", "http://host/a", "http://host/a"},
                                         Address{"Secure", "https://host/a", "https://host/a"},
                                         Address{"WithoutPath", "http://host", "http://host/"},
                                         Address{"CapitalScheme", "HTTP://host/a", "http://host/a"},
                                         Address{"Port", "http://host:8080/a", "http://host:8080/a"},
                                         Address{"IPv6", "http://[::1]:8080/a", "http://[::1]:8080/a"},
                                         Address{"QueryAsItStands", "http://host/version?platform=0&oemid=1",
                                                 "http://host/version?platform=0&oemid=1"},
                                         Address{"EncodedStaysEncoded", "http://host/a%20b%2F", "http://host/a%20b%2F"},
                                         Address{"SpaceInPath", "http://host/Orv Client/1.exe",
                                                 "http://host/Orv%20Client/1.exe"},
                                         Address{"FragmentIsLeftOut", "http://host/a?b#c d", "http://host/a?b"},
                                         Address{"TextBeyondAscii", "http://host/\xC3\xBC", "http://host/%c3%bc"}),
                         [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Refused, HttpAddress,
    testing::Values(Address{"Empty", "", ""}, Address{"File", "file:///etc/passwd", ""},
                    Address{"Ftp", "ftp://host/a", ""}, Address{"NoScheme", "host/a", ""},
                    Address{"PathOnly", "/a", ""}, Address{"NoHost", "http://", ""},
                    Address{"NoHostBeforePath", "http:///version?platform=0", ""},
                    Address{"OneSlash", "http:/host/a", ""}, Address{"LineEnd", "http://host/a\r\nX: y", ""},
                    Address{"Control", "http://host/\x01", ""},
                    Address{"ZeroByte", std::string("http://host/a\0b", 15), ""},
                    Address{"PortTooLarge", "http://host:99999/", ""}, Address{"SpaceInUser", "http://a b@host/", ""},
                    Address{"SpaceInHost", "http://ho st/", ""}, Address{"Script", "javascript:alert(1)", ""}),
    [](const auto& test) { return test.param.name; });

}  // namespace
