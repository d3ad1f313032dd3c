#include "TWProtocol/TWProtoUser.h"

#include <algorithm>

namespace Tarnwick::Protocol {

void TWProtoUserForceModifyInfo::writeFields(TWFieldWriter& writer) const {
    writer.number(1, value1);
    writer.number(2, value2);
    writer.number(3, value3);
}

bool TWProtoUserForceModifyInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1:
            return field.to(value1);
        case 2:
            return field.to(value2);
        case 3:
            return field.to(value3);
        default:
            return true;
    }
}

void TWProtoUserLdapSourceDetail::writeFields(TWFieldWriter& writer) const {
    writer.text(1, text1);
    writer.text(2, text2);
    writer.text(3, text3);
}

bool TWProtoUserLdapSourceDetail::readField(const TWField& field) {
    switch (field.number) {
        case 1:
            return field.to(text1);
        case 2:
            return field.to(text2);
        case 3:
            return field.to(text3);
        default:
            return true;
    }
}

void TWProtoUserInfo::writeFields(TWFieldWriter& writer) const {
    writer.text(1, text1);
    writer.text(2, userName);
    writer.text(3, text2);
    writer.number(4, value1);
    writer.text(5, text3);
    writer.text(6, text4);
    writer.number(7, value2);
    if (std::any_of(flags.begin(), flags.end(), [](uint8_t flag) { return flag != 0; }))
        writer.text(8, std::string(flags.begin(), flags.end()));
    writer.record(9, forceModify);
    writer.number(10, number1);
    writer.number(11, number2);
    writer.record(12, ldapSource);
    writer.number(13, value3);
    writer.number(14, value4);
    for (const auto& record : records) writer.element(16, record);
    writer.text(17, text5);
}

bool TWProtoUserInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1:
            return field.to(text1);
        case 2:
            return field.to(userName);
        case 3:
            return field.to(text2);
        case 4:
            return field.to(value1);
        case 5:
            return field.to(text3);
        case 6:
            return field.to(text4);
        case 7:
            return field.to(value2);
        case 8:
            return readFlags(field);
        case 9:
            return field.to(forceModify);
        case 10:
            return field.to(number1);
        case 11:
            return field.to(number2);
        case 12:
            return field.to(ldapSource);
        case 13:
            return field.to(value3);
        case 14:
            return field.to(value4);
        case 16:
            return field.append(records);
        case 17:
            return field.to(text5);
        default:
            return true;
    }
}

bool TWProtoUserInfo::readFlags(const TWField& field) {
    if (field.kind != TWField::Kind::Bytes || field.bytes.size() != flags.size()) return false;
    if (!field.checking) std::copy(field.bytes.begin(), field.bytes.end(), flags.begin());
    return true;
}

void TWProtoUserLoginInfo::writeFields(TWFieldWriter& writer) const {
    writer.record(1, user);
    writer.text(2, text1);
    writer.number(3, value1);
    writer.text(4, text2);
    writer.number(5, value2);
}

bool TWProtoUserLoginInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1:
            return field.to(user);
        case 2:
            return field.to(text1);
        case 3:
            return field.to(value1);
        case 4:
            return field.to(text2);
        case 5:
            return field.to(value2);
        default:
            return true;
    }
}

void TWProtoAuthUserInfo::writeFields(TWFieldWriter& writer) const { writer.record(1, login); }

bool TWProtoAuthUserInfo::readField(const TWField& field) { return field.number != 1 || field.to(login); }

}  // namespace Tarnwick::Protocol
