#include "TWProtocol/TWProtoDeviceCmd.h"

#include "ProtocDecode.h"

namespace {

using Tarnwick::Protocol::TWPacket;
using Tarnwick::Protocol::TWProtoUpgradeInfo;

TWProtoUpgradeInfo chunk() {
    TWProtoUpgradeInfo info;
    info.transferId = "d1f5";
    info.fileSize = 4294967295u;
    info.data = std::string("\x00\xff\n", 3);
    info.position = 1048576;
    info.versionInfo = "{}";
    return info;
}

TEST(TWProtoUpgradeInfo, DefaultIsEmpty) {
    const TWProtoUpgradeInfo info;
    EXPECT_EQ(info.transferId, "");
    EXPECT_EQ(info.fileSize, 0u);
    EXPECT_EQ(info.data, "");
    EXPECT_EQ(info.position, 0u);
    EXPECT_EQ(info.versionInfo, "");
}

TEST(TWProtoUpgradeInfo, BearsItsNameAndType) {
    EXPECT_STREQ(TWProtoUpgradeInfo().typeName(), "TWProtoUpgradeInfo");
    EXPECT_EQ(TWProtoUpgradeInfo().typeId(), 0xd331fc77fd18abf8ULL);
    EXPECT_EQ(chunk().typeId(), TWProtoUpgradeInfo().typeId());
}

TEST(TWProtoUpgradeInfo, EveryMemberComesBack) {
    TWProtoUpgradeInfo back;
    ASSERT_TRUE(TWPacket::parseBytes(TWPacket::serializeAsBytes(chunk()).toStdString(), back));
    EXPECT_EQ(back.transferId, "d1f5");
    EXPECT_EQ(back.fileSize, 4294967295u);
    EXPECT_EQ(back.data, chunk().data);
    EXPECT_EQ(back.position, 1048576u);
    EXPECT_EQ(back.versionInfo, "{}");
}

TEST(TWProtoUpgradeInfo, AMebibyteOfDataComesBack) {
    TWProtoUpgradeInfo info;
    info.data.resize(1048576);
    for (size_t i = 0; i < info.data.size(); ++i) info.data[i] = static_cast<char>(i * 31);
    TWProtoUpgradeInfo back;
    ASSERT_TRUE(TWPacket::parseBytes(TWPacket::serializeAsBytes(info).toStdString(), back));
    EXPECT_TRUE(back.data == info.data);
}

TEST(TWProtoUpgradeInfo, ASizeBeyond32BitsIsRefused) {
    const auto bytes = TWPacket::serializeAsBytes(TWProtoUpgradeInfo()).toStdString() + "\x10\x80\x80\x80\x80\x10";
    TWProtoUpgradeInfo back;
    EXPECT_FALSE(TWPacket::parseBytes(bytes, back));
}

TEST(TWProtoUpgradeInfo, TheProtoFileDescribesTheBytes) {
    EXPECT_EQ(support::protocDecode("TWProtoDeviceCmd.proto", "TWProtoUpgradeInfo",
                                    TWPacket::serializeAsBytes(chunk()).toStdString()),
              "transfer_id: \"d1f5\"\n"
              "file_size: 4294967295\n"
              "data: \"\\000\\377\\n\"\n"
              "position: 1048576\n"
              "version_info: \"{}\"\n"
              "type_id: 15218222208139176952\n");
}

TEST(TWProtoUpgradeInfo, MembersMadeByTheToolAreRead) {
    const auto fields = support::protocEncode("TWProtoDeviceCmd.proto", "TWProtoUpgradeInfo",
                                              "file_size: 7 data: \"abc\" position: 3 type_id: 15218222208139176952");
    const auto typeFirst = TWPacket::serializeAsBytes(TWProtoUpgradeInfo()).toStdString();
    TWProtoUpgradeInfo back;
    EXPECT_FALSE(TWPacket::parseBytes(fields, back)) << "the tool writes the type last";
    ASSERT_TRUE(TWPacket::parseBytes(typeFirst + fields, back));
    EXPECT_EQ(back.fileSize, 7u);
    EXPECT_EQ(back.data, "abc");
    EXPECT_EQ(back.position, 3u);
}

}  // namespace
