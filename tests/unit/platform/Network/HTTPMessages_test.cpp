#include "Fetch.h"

namespace {

using namespace support;

TEST(HTTPHeader, FindsAFieldInAnyCase) {
    HTTPHeader header;
    header.add("Content-Length", "12");
    EXPECT_EQ(header.header("content-LENGTH", 0).toString(), "12");
}

TEST(HTTPHeader, ConvertsALengthBeyond32Bits) {
    HTTPHeader header;
    header.add("Content-Length", "5000000000");
    EXPECT_EQ(header.header("Content-Length", 0).toUint64(), 5000000000ULL);
}

TEST(HTTPHeader, GivesRepeatedFieldsByIndexInOrder) {
    HTTPHeader header;
    header.add("Via", "first");
    header.add("Other", "x");
    header.add("VIA", "second");
    EXPECT_EQ(header.header("via", 0).toString(), "first");
    EXPECT_EQ(header.header("via", 1).toString(), "second");
}

TEST(HTTPHeader, GivesNullForWhatIsNotThere) {
    HTTPHeader header;
    EXPECT_TRUE(header.header("Via", 0).isNull());
    header.add("Via", "first");
    EXPECT_TRUE(header.header("Via", 1).isNull());
    EXPECT_TRUE(header.header("Vi", 0).isNull());
    EXPECT_EQ(header.header("Content-Length", 0).toUint64(), 0U);
}

TEST(HTTPHeader, KeepsAnEmptyFieldApartFromAMissingOne) {
    HTTPHeader header;
    header.add("Server", "");
    EXPECT_FALSE(header.header("Server", 0).isNull());
    EXPECT_EQ(header.header("Server", 0).toString(), "");
}

TEST(WriteContent, AppendsAndCountsWhatItTook) {
    Public::Network::WriteContent content;
    EXPECT_EQ(content.write(SharedBuffer("abc")), 3U);
    EXPECT_EQ(content.write(SharedBuffer(std::string("d\0e", 3))), 3U);
    EXPECT_EQ(content.write(SharedBuffer()), 0U);
    EXPECT_EQ(content.bytes(), std::string("abcd\0e", 6));
}

TEST(HTTPClientRequest, KeepsWhatItWasMadeOf) {
    HTTPClientRequest request("GET", URL("http://host/a", false), 2);
    EXPECT_EQ(request.method(), "GET");
    EXPECT_EQ(request.url().text(), "http://host/a");
    EXPECT_EQ(request.cacheType(), HTTPCacheType_Stream);
    EXPECT_EQ(request.timeout(), 0U);
    EXPECT_FALSE(request.recvCallback());
    EXPECT_TRUE(request.content()->bytes().empty());
}

}  // namespace
