#include "TWProtocol/TWProtoUser.h"

#include "ProtocDecode.h"

namespace {

using namespace Tarnwick::Protocol;

TWProtoAuthUserInfo fullRecord() {
    TWProtoAuthUserInfo auth;
    auto& login = auth.login;
    login.text1 = "l1";
    login.value1 = 21;
    login.text2 = "l2";
    login.value2 = UINT64_MAX;
    auto& user = login.user;
    user.text1 = "u1";
    user.userName = "operator";
    user.text2 = "u2";
    user.value1 = 1;
    user.text3 = "u3";
    user.text4 = "u4";
    user.value2 = 2;
    user.flags = {1, 0, 2, 0, 3, 0, 4, 0, 255};
    user.forceModify.value1 = 11;
    user.forceModify.value2 = 12;
    user.forceModify.value3 = 13;
    user.number1 = 31;
    user.number2 = 32;
    user.ldapSource.text1 = "d1";
    user.ldapSource.text2 = "d2";
    user.ldapSource.text3 = "d3";
    user.value3 = 3;
    user.value4 = 4;
    user.records = {"first", "", "third"};
    user.text5 = "u5";
    return auth;
}

std::string bytesOf(const TWPacket& record) { return TWPacket::serializeAsBytes(record).toStdString(); }

struct Identity {
    std::shared_ptr<TWPacket> record;
    const char* typeName;
    uint64_t typeId;
    int counterLine;
};

class TWProtoUserIdentity : public testing::TestWithParam<Identity> {};

TEST_P(TWProtoUserIdentity, IsThatOfItsType) {
    const auto& row = GetParam();
    EXPECT_STREQ(row.record->typeName(), row.typeName);
    EXPECT_EQ(row.record->typeId(), row.typeId);
    EXPECT_GE(Public::Base::ObjCounter::count("Include/TWProtocol/TWProtoUser.pb", row.counterLine), 1);
}

INSTANTIATE_TEST_SUITE_P(Records, TWProtoUserIdentity,
                         testing::Values(Identity{std::make_shared<TWProtoAuthUserInfo>(), "TWProtoAuthUserInfo",
                                                  0x8c3bf01fadc5e937ULL, 2273},
                                         Identity{std::make_shared<TWProtoUserLoginInfo>(), "TWProtoUserLoginInfo",
                                                  0x466d9a1c5290e036ULL, 2194},
                                         Identity{std::make_shared<TWProtoUserInfo>(), "TWProtoUserInfo",
                                                  0x34806b49af91b59bULL, 1678},
                                         Identity{std::make_shared<TWProtoUserLdapSourceDetail>(),
                                                  "TWProtoUserLdapSourceDetail", 0x387a41617a6dbc88ULL, 1604},
                                         Identity{std::make_shared<TWProtoUserForceModifyInfo>(),
                                                  "TWProtoUserForceModifyInfo", 0x6f7f55bfdc8f6646ULL, 1540}),
                         [](const auto& row) { return std::string(row.param.typeName); });

TEST(TWProtoUser, DefaultsAreEmptyOrZero) {
    const TWProtoAuthUserInfo auth;
    const auto& user = auth.login.user;
    EXPECT_EQ(user.userName, "");
    EXPECT_EQ(user.flags, (std::array<uint8_t, 9>{}));
    EXPECT_EQ(user.value1 + user.value2 + user.value3 + user.value4 + user.number1 + user.number2, 0u);
    EXPECT_TRUE(user.records.empty());
    EXPECT_EQ(bytesOf(auth).size(), 9u) << "the type alone";
}

TEST(TWProtoUser, EveryMemberTravels) {
    const auto auth = fullRecord();
    TWProtoAuthUserInfo back;
    ASSERT_TRUE(TWPacket::parseBytes(bytesOf(auth), back));
    EXPECT_EQ(back.login.user.userName, "operator");
    EXPECT_EQ(back.login.user.flags, auth.login.user.flags);
    EXPECT_EQ(back.login.user.records, auth.login.user.records);
    EXPECT_EQ(back.login.user.ldapSource.text3, "d3");
    EXPECT_EQ(back.login.user.forceModify.value2, 12u);
    EXPECT_EQ(back.login.value2, UINT64_MAX);
    EXPECT_EQ(bytesOf(back), bytesOf(auth));
}

TEST(TWProtoUser, EachRecordTravelsAlone) {
    const auto auth = fullRecord();
    TWProtoUserLoginInfo login;
    ASSERT_TRUE(TWPacket::parseBytes(bytesOf(auth.login), login));
    EXPECT_EQ(bytesOf(login), bytesOf(auth.login));
    TWProtoUserForceModifyInfo force;
    ASSERT_TRUE(TWPacket::parseBytes(bytesOf(auth.login.user.forceModify), force));
    EXPECT_EQ(force.value3, 13u);
    TWProtoUserLdapSourceDetail detail;
    ASSERT_TRUE(TWPacket::parseBytes(bytesOf(auth.login.user.ldapSource), detail));
    EXPECT_EQ(detail.text1, "d1");
}

TEST(TWProtoUser, FlagsAreNineBytesOrRefused) {
    const auto type = bytesOf(TWProtoUserInfo());
    TWProtoUserInfo user;
    EXPECT_FALSE(TWPacket::parseBytes(type + "\x42\x08"
                                             "12345678",
                                      user));
    EXPECT_FALSE(TWPacket::parseBytes(type + "\x42\x0a"
                                             "1234567890",
                                      user));
    EXPECT_FALSE(TWPacket::parseBytes(type + "\x40\x01", user));
    EXPECT_EQ(user.flags, (std::array<uint8_t, 9>{}));
    ASSERT_TRUE(TWPacket::parseBytes(type + "\x42\x09"
                                            "123456789",
                                     user));
    EXPECT_EQ(user.flags[8], '9');
}

TEST(TWProtoUser, AMalformedRecordLeavesTheTargetAsItWas) {
    TWProtoAuthUserInfo target;
    target.login.user.userName = "before";
    auto bytes = bytesOf(fullRecord());
    bytes.back() = '\x0b';
    bytes.pop_back();
    EXPECT_FALSE(TWPacket::parseBytes(bytes, target));
    EXPECT_EQ(target.login.user.userName, "before");
    EXPECT_TRUE(target.login.user.records.empty());
}

TEST(TWProtoUser, TheProtoFileDescribesTheBytes) {
    const auto text = support::protocDecode("TWProtoUser.proto", "TWProtoAuthUserInfo", bytesOf(fullRecord()));
    EXPECT_EQ(text, R"(login {
  user {
    text1: "u1"
    user_name: "operator"
    text2: "u2"
    value1: 1
    text3: "u3"
    text4: "u4"
    value2: 2
    flags: "\001\000\002\000\003\000\004\000\377"
    force_modify {
      value1: 11
      value2: 12
      value3: 13
    }
    number1: 31
    number2: 32
    ldap_source {
      text1: "d1"
      text2: "d2"
      text3: "d3"
    }
    value3: 3
    value4: 4
    records: "first"
    records: ""
    records: "third"
    text5: "u5"
  }
  text1: "l1"
  value1: 21
  text2: "l2"
  value2: 18446744073709551615
}
type_id: 10104934207785920823
)");
}

}  // namespace
