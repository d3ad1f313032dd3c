#include "TWProtocol/TWProtoUser.h"

namespace Tarnwick::Protocol {

namespace {

constexpr size_t kFlagBytes = 9;

/// Negative numbers travel in ten bytes, as the wire format has it.
uint64_t wire(int64_t value) { return static_cast<uint64_t>(value); }

}  // namespace

void TWProtoUserForceModifyInfo::writeFields(TWFieldWriter& writer) const {
    writer.number(1, wire(value1));
    writer.number(2, wire(value2));
    writer.number(3, wire(value3));
}

bool TWProtoUserForceModifyInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1: return field.to(value1);
        case 2: return field.to(value2);
        case 3: return field.to(value3);
        default: return true;
    }
}

void TWProtoUserLdapSourceDetail::writeFields(TWFieldWriter& writer) const {
    writer.text(1, text1);
    writer.text(2, text2);
    writer.text(3, text3);
}

bool TWProtoUserLdapSourceDetail::readField(const TWField& field) {
    switch (field.number) {
        case 1: return field.to(text1);
        case 2: return field.to(text2);
        case 3: return field.to(text3);
        default: return true;
    }
}

void TWProtoUserInfo::writeFields(TWFieldWriter& writer) const {
    writer.text(1, text1);
    writer.text(2, userName);
    writer.text(3, text3);
    writer.number(4, wire(value4));
    writer.text(5, text5);
    writer.text(6, text6);
    writer.number(7, wire(value7));
    if (flags != std::string(kFlagBytes, '\0')) writer.text(8, flags);
    writer.record(9, forceModify);
    writer.number(10, wire(value10));
    writer.number(11, wire(value11));
    writer.record(12, ldapSource);
    writer.number(13, wire(value13));
    writer.number(14, wire(value14));
    for (const auto& record : records) writer.element(16, record);
    writer.text(17, text16);
}

bool TWProtoUserInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1: return field.to(text1);
        case 2: return field.to(userName);
        case 3: return field.to(text3);
        case 4: return field.to(value4);
        case 5: return field.to(text5);
        case 6: return field.to(text6);
        case 7: return field.to(value7);
        case 8: return field.bytes.size() == kFlagBytes && field.to(flags);
        case 9: return field.to(forceModify);
        case 10: return field.to(value10);
        case 11: return field.to(value11);
        case 12: return field.to(ldapSource);
        case 13: return field.to(value13);
        case 14: return field.to(value14);
        case 16: return field.to(records.emplace_back());
        case 17: return field.to(text16);
        default: return true;
    }
}

void TWProtoUserLoginInfo::writeFields(TWFieldWriter& writer) const {
    writer.record(1, user);
    writer.text(2, text2);
    writer.number(3, wire(value3));
    writer.text(4, text4);
    writer.number(5, wire(value5));
}

bool TWProtoUserLoginInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1: return field.to(user);
        case 2: return field.to(text2);
        case 3: return field.to(value3);
        case 4: return field.to(text4);
        case 5: return field.to(value5);
        default: return true;
    }
}

void TWProtoAuthUserInfo::writeFields(TWFieldWriter& writer) const { writer.record(1, login); }

bool TWProtoAuthUserInfo::readField(const TWField& field) { return field.number != 1 || field.to(login); }

}  // namespace Tarnwick::Protocol
