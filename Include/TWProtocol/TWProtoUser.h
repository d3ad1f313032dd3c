// The user's authentication, which rides beside a message.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Public/Base/ObjCounter.h"
#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

// These records belong to the user system. The update engine copies them from a received message into the forwarded one
// and reads nothing but `userName`; the members that it gives no meaning are named by their kind and place.

struct ORV_PLATFORM_API TWProtoUserForceModifyInfo : TWPacket {
    uint64_t value1 = 0;
    uint64_t value2 = 0;
    uint64_t value3 = 0;

    const char* typeName() const override { return "TWProtoUserForceModifyInfo"; }
    uint64_t typeId() const override { return 0x6f7f55bfdc8f6646ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUser.pb", 1540};
};

struct ORV_PLATFORM_API TWProtoUserLdapSourceDetail : TWPacket {
    std::string text1;
    std::string text2;
    std::string text3;

    const char* typeName() const override { return "TWProtoUserLdapSourceDetail"; }
    uint64_t typeId() const override { return 0x387a41617a6dbc88ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUser.pb", 1604};
};

struct ORV_PLATFORM_API TWProtoUserInfo : TWPacket {
    std::string text1;
    std::string userName;
    std::string text2;
    uint64_t value1 = 0;
    std::string text3;
    std::string text4;
    uint64_t value2 = 0;
    std::array<uint8_t, 9> flags{};  ///< flags and small numbers; travels as nine bytes
    TWProtoUserForceModifyInfo forceModify;
    uint32_t number1 = 0;
    uint32_t number2 = 0;
    TWProtoUserLdapSourceDetail ldapSource;
    uint64_t value3 = 0;
    uint64_t value4 = 0;
    std::vector<std::string> records;  ///< the bytes of each, unread
    std::string text5;

    const char* typeName() const override { return "TWProtoUserInfo"; }
    uint64_t typeId() const override { return 0x34806b49af91b59bULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    bool readFlags(const TWField& field);

    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUser.pb", 1678};
};

struct ORV_PLATFORM_API TWProtoUserLoginInfo : TWPacket {
    TWProtoUserInfo user;
    std::string text1;
    uint64_t value1 = 0;
    std::string text2;
    uint64_t value2 = 0;

    const char* typeName() const override { return "TWProtoUserLoginInfo"; }
    uint64_t typeId() const override { return 0x466d9a1c5290e036ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUser.pb", 2194};
};

/// Never a body; it is beside one.
struct ORV_PLATFORM_API TWProtoAuthUserInfo : TWPacket {
    TWProtoUserLoginInfo login;

    const char* typeName() const override { return "TWProtoAuthUserInfo"; }
    uint64_t typeId() const override { return 0x8c3bf01fadc5e937ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUser.pb", 2273};
};

}  // namespace Tarnwick::Protocol
