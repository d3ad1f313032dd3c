// The user's authentication, which rides beside a message. The engine only passes it on.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "Public/Base/ObjCounter.h"
#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

/// Members whose meaning is the user system's bear neutral names; they travel unread.
struct ORV_PLATFORM_API TWProtoUserForceModifyInfo : TWPacket {
    int64_t value1 = 0;
    int64_t value2 = 0;
    int64_t value3 = 0;

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
    std::string userName;  ///< the one member that the engine reads: a message without it carries no user
    std::string text3;
    int64_t value4 = 0;
    std::string text5;
    std::string text6;
    int64_t value7 = 0;
    std::string flags = std::string(9, '\0');  ///< nine bytes of flags and small numbers
    TWProtoUserForceModifyInfo forceModify;
    int32_t value10 = 0;
    int32_t value11 = 0;
    TWProtoUserLdapSourceDetail ldapSource;
    int64_t value13 = 0;
    int64_t value14 = 0;
    std::list<std::string> records;  ///< each in its encoded form
    std::string text16;

    const char* typeName() const override { return "TWProtoUserInfo"; }
    uint64_t typeId() const override { return 0x34806b49af91b59bULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUser.pb", 1678};
};

struct ORV_PLATFORM_API TWProtoUserLoginInfo : TWPacket {
    TWProtoUserInfo user;
    std::string text2;
    int64_t value3 = 0;
    std::string text4;
    int64_t value5 = 0;

    const char* typeName() const override { return "TWProtoUserLoginInfo"; }
    uint64_t typeId() const override { return 0x466d9a1c5290e036ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUser.pb", 2194};
};

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
