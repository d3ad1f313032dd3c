#include "TWProtocol/TWProtoUpgrade.h"

#include "ProtocDecode.h"

namespace {

using Tarnwick::Protocol::TWPacket;
using Tarnwick::Protocol::TWProtoUpgradeNotify;
using Tarnwick::Protocol::TWProtoUpgradePkt;

TEST(TWProtoUpgrade, RecordsBearTheirNamesAndTypes) {
    EXPECT_STREQ(TWProtoUpgradePkt().typeName(), "TWProtoUpgradePkt");
    EXPECT_EQ(TWProtoUpgradePkt().typeId(), 0x710061aed6f261c7ULL);
    EXPECT_STREQ(TWProtoUpgradeNotify().typeName(), "TWProtoUpgradeNotify");
    EXPECT_EQ(TWProtoUpgradeNotify().typeId(), 0x81d547a257e20437ULL);
}

TEST(TWProtoUpgrade, BodiesAreEmptyByDefault) {
    EXPECT_EQ(TWProtoUpgradePkt().body, "");
    EXPECT_EQ(TWProtoUpgradeNotify().body, "");
}

TEST(TWProtoUpgrade, TextsComeBack) {
    TWProtoUpgradePkt pkt;
    pkt.body = "{\"pos\": 0.5}";
    TWProtoUpgradePkt back;
    ASSERT_TRUE(TWPacket::parseBytes(TWPacket::serializeAsBytes(pkt).toStdString(), back));
    EXPECT_EQ(back.body, pkt.body);
    TWProtoUpgradeNotify notify;
    notify.body = "1.2.3.4";
    TWProtoUpgradeNotify notifyBack;
    ASSERT_TRUE(TWPacket::parseBytes(TWPacket::serializeAsBytes(notify).toStdString(), notifyBack));
    EXPECT_EQ(notifyBack.body, "1.2.3.4");
}

TEST(TWProtoUpgrade, OneRecordDoesNotParseAsTheOtherThoughTheirShapeIsTheSame) {
    TWProtoUpgradePkt pkt;
    pkt.body = "text";
    TWProtoUpgradeNotify notify;
    EXPECT_FALSE(TWPacket::parseBytes(TWPacket::serializeAsBytes(pkt).toStdString(), notify));
    EXPECT_EQ(notify.body, "");
}

TEST(TWProtoUpgrade, TheProtoFileDescribesTheBytes) {
    TWProtoUpgradePkt pkt;
    pkt.body = "text";
    EXPECT_EQ(support::protocDecode("TWProtoUpgrade.proto", "TWProtoUpgradePkt",
                                    TWPacket::serializeAsBytes(pkt).toStdString()),
              "body: \"text\"\ntype_id: 8142615529844269511\n");
    TWProtoUpgradeNotify notify;
    notify.body = "1.0";
    EXPECT_EQ(support::protocDecode("TWProtoUpgrade.proto", "TWProtoUpgradeNotify",
                                    TWPacket::serializeAsBytes(notify).toStdString()),
              "body: \"1.0\"\ntype_id: 9355462563516777527\n");
}

TEST(TWProtoUpgrade, LiveRecordsAreCounted) {
    const auto count = [] { return Public::Base::ObjCounter::count("Include/TWProtocol/TWProtoUpgrade.pb", 19); };
    const long before = count();
    {
        const TWProtoUpgradePkt one;
        const TWProtoUpgradePkt copy = one;
        EXPECT_EQ(count(), before + 2);
    }
    EXPECT_EQ(count(), before);
}

}  // namespace
