#include "Tarnwick/MQ/TWServerInfo.h"

#include "ProtocDecode.h"

namespace {

using Tarnwick::MQ::TWServerInfo;
using Tarnwick::Protocol::TWPacket;
using Tarnwick::Protocol::TWProtoServerRecvInfo;

TEST(TWServerInfo, KeepsNameAndTypeOfItsBase) {
    EXPECT_STREQ(TWServerInfo().typeName(), "TWProtoServerRecvInfo");
    EXPECT_EQ(TWServerInfo().typeId(), 0x34143257d999eff5ULL);
    EXPECT_EQ(TWProtoServerRecvInfo().typeId(), TWServerInfo().typeId());
}

TEST(TWServerInfo, IsNeitherReachableNorReadyByDefault) {
    const TWServerInfo info;
    EXPECT_FALSE(info.reachable);
    EXPECT_FALSE(info.ready);
    EXPECT_FALSE(info.getServerAddr().isValid());
}

TEST(TWServerInfo, TravelsAsTheProtoFileSays) {
    TWServerInfo info;
    info.serverId = "id";
    info.systemId = "system";
    info.version = "1.0";
    info.addresses = "h 80";
    info.reachable = true;
    info.ready = true;
    const auto bytes = TWPacket::serializeAsBytes(info).toStdString();
    EXPECT_EQ(support::protocDecode("TWFrame.proto", "TWProtoServerRecvInfo", bytes),
              "server_id: \"id\"\nsystem_id: \"system\"\nversion: \"1.0\"\naddresses: \"h 80\"\n"
              "reachable: true\nready: true\ntype_id: 3752679742400753653\n");
    TWServerInfo back;
    ASSERT_TRUE(TWPacket::parseBytes(bytes, back));
    EXPECT_EQ(back.serverId + back.systemId + back.version + back.addresses, "idsystem1.0h 80");
    EXPECT_TRUE(back.reachable && back.ready);
}

struct Address {
    const char* name;
    const char* lines;
    const char* ip;  // empty: not valid
    int port;
};

class TWServerInfoAddress : public testing::TestWithParam<Address> {};

TEST_P(TWServerInfoAddress, IsTheFirstLine) {
    TWServerInfo info;
    info.addresses = GetParam().lines;
    const auto address = info.getServerAddr();
    EXPECT_EQ(address.isValid(), *GetParam().ip != 0);
    EXPECT_EQ(address.getIP(), GetParam().ip);
    EXPECT_EQ(address.getPort(), GetParam().port);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, TWServerInfoAddress,
    testing::Values(Address{"One", "10.0.0.1 80", "10.0.0.1", 80},
                    Address{"Two", "10.0.0.1 80\n10.0.0.2 81", "10.0.0.1", 80},
                    Address{"WithALineEnd", "host 65535\n", "host", 65535},
                    Address{"Version6", "fe80::1 8080", "fe80::1", 8080}, Address{"None", "", "", 0},
                    Address{"NoPort", "10.0.0.1", "", 0}, Address{"EmptyPort", "10.0.0.1 ", "", 0},
                    Address{"PortOfText", "10.0.0.1 http", "", 0}, Address{"PortWithATail", "10.0.0.1 80x", "", 0},
                    Address{"PortTooLarge", "10.0.0.1 65536", "", 0}, Address{"NegativePort", "10.0.0.1 -1", "", 0}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
