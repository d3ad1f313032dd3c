#include "Public/Network/NetAddr.h"

using Public::Network::NetAddr;

namespace {

TEST(NetAddr, DefaultIsNotValid) {
    const NetAddr address;
    EXPECT_FALSE(address.isValid());
    EXPECT_EQ(address.getIP(), "");
    EXPECT_EQ(address.getPort(), 0);
}

TEST(NetAddr, KeepsHostAndPort) {
    const NetAddr address("192.0.2.7", 65535);
    EXPECT_TRUE(address.isValid());
    EXPECT_EQ(address.getIP(), "192.0.2.7");
    EXPECT_EQ(address.getPort(), 65535);
}

TEST(NetAddr, KeepsTheHostAsItIsWritten) {
    EXPECT_EQ(NetAddr("2001:db8::1", 80).getIP(), "2001:db8::1");
    EXPECT_EQ(NetAddr("Server.example", 80).getIP(), "Server.example");
}

TEST(NetAddr, IsNotValidWithoutHostOrPort) {
    EXPECT_FALSE(NetAddr("", 80).isValid());
    EXPECT_FALSE(NetAddr("192.0.2.7", 0).isValid());
}

TEST(NetAddr, CopiesAreAlike) {
    const NetAddr first("192.0.2.7", 80);
    NetAddr second;
    second = first;
    EXPECT_TRUE(second.isValid());
    EXPECT_EQ(second.getIP(), first.getIP());
    EXPECT_EQ(second.getPort(), first.getPort());
}

}  // namespace
