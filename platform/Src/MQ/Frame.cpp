#include "MQ/Frame.h"

#include "Protocol/FieldReader.h"

namespace Tarnwick::MQ {

using Protocol::TWField;

std::string Frame::encode() const {
    Protocol::TWFieldWriter writer;
    writer.number(1, kind);
    writer.number(2, messageId);
    writer.text(3, sender);
    writer.text(4, addressee);
    writer.text(5, finalTarget);
    writer.text(6, waiter);
    writer.text(7, topic);
    writer.text(8, session);
    writer.number(9, static_cast<uint64_t>(static_cast<int64_t>(errorCode)));
    writer.text(10, errorText);
    if (hasBody) writer.element(11, body);
    writer.text(12, authen);
    return writer.take();
}

namespace {

bool takeField(const TWField& field, Frame& frame) {
    switch (field.number) {
        case 1: return field.to(frame.kind);
        case 2: return field.to(frame.messageId);
        case 3: return field.to(frame.sender);
        case 4: return field.to(frame.addressee);
        case 5: return field.to(frame.finalTarget);
        case 6: return field.to(frame.waiter);
        case 7: return field.to(frame.topic);
        case 8: return field.to(frame.session);
        case 9: return field.to(frame.errorCode);
        case 10: return field.to(frame.errorText);
        case 11: frame.hasBody = true; return field.to(frame.body);
        case 12: return field.to(frame.authen);
        default: return true;
    }
}

}  // namespace

bool Frame::decode(std::string_view bytes, Frame& frame) {
    frame = Frame();
    Protocol::FieldReader reader(bytes);
    for (TWField field; reader.next(field);) {
        if (!takeField(field, frame)) return false;
    }
    return reader.atEnd() && frame.kind >= Request && frame.kind <= List;
}

}  // namespace Tarnwick::MQ
