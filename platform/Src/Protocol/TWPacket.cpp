#include "TWProtocol/TWPacket.h"

#include "Protocol/FieldReader.h"

namespace Tarnwick::Protocol {

using Public::Base::SharedBuffer;

namespace {
constexpr uint32_t kTypeIdField = 15;
}

SharedBuffer TWPacket::serializeAsBytes(const TWPacket* record) {
    return record != nullptr ? serializeAsBytes(*record) : SharedBuffer();
}

SharedBuffer TWPacket::serializeAsBytes(const TWPacket& record) {
    TWFieldWriter writer;
    writer.fixed64(kTypeIdField, record.typeId());
    record.writeFields(writer);
    return SharedBuffer(writer.take());
}

bool TWPacket::parseBytes(std::string_view bytes, TWPacket& record) {
    FieldReader reader(bytes);
    TWField field;
    if (!reader.next(field) || field.number != kTypeIdField || field.isBytes || field.value != record.typeId()) {
        return false;
    }
    while (reader.next(field)) {
        if (field.number != kTypeIdField && !record.readField(field)) return false;
    }
    return reader.atEnd();
}

}  // namespace Tarnwick::Protocol
