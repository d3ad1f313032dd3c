// One field, read into a member.
#include <limits>

#include "Protocol/FieldReader.h"
#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

bool TWField::to(std::string& out) const {
    if (isBytes) out = bytes;
    return isBytes;
}

bool TWField::to(uint64_t& out) const {
    if (!isBytes) out = value;
    return !isBytes;
}

bool TWField::to(int64_t& out) const {
    if (!isBytes) out = static_cast<int64_t>(value);
    return !isBytes;
}

bool TWField::to(uint32_t& out) const {
    if (isBytes || value > std::numeric_limits<uint32_t>::max()) return false;
    out = static_cast<uint32_t>(value);
    return true;
}

bool TWField::to(int32_t& out) const {
    const auto whole = static_cast<int64_t>(value);
    if (isBytes || whole < std::numeric_limits<int32_t>::min() || whole > std::numeric_limits<int32_t>::max()) {
        return false;
    }
    out = static_cast<int32_t>(whole);
    return true;
}

bool TWField::to(bool& out) const {
    if (!isBytes) out = value != 0;
    return !isBytes;
}

bool TWField::to(TWPacket& nested) const {
    if (!isBytes) return false;
    FieldReader reader(bytes);
    for (TWField field; reader.next(field);) {
        if (!nested.readField(field)) return false;
    }
    return reader.atEnd();
}

}  // namespace Tarnwick::Protocol
