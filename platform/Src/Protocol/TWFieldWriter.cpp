#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

namespace {

void putVarint(std::string& out, uint64_t value) {
    for (; value >= 0x80; value >>= 7) out += static_cast<char>((value & 0x7F) | 0x80);
    out += static_cast<char>(value);
}

}  // namespace

void TWFieldWriter::number(uint32_t field, uint64_t value) {
    if (value == 0) return;
    putVarint(mBytes, uint64_t{field} << 3);
    putVarint(mBytes, value);
}

void TWFieldWriter::fixed64(uint32_t field, uint64_t value) {
    putVarint(mBytes, (uint64_t{field} << 3) | 1);
    for (unsigned shift = 0; shift < 64; shift += 8) mBytes += static_cast<char>(value >> shift);
}

void TWFieldWriter::text(uint32_t field, std::string_view bytes) {
    if (!bytes.empty()) element(field, bytes);
}

void TWFieldWriter::element(uint32_t field, std::string_view bytes) {
    putVarint(mBytes, (uint64_t{field} << 3) | 2);
    putVarint(mBytes, bytes.size());
    mBytes += bytes;
}

void TWFieldWriter::record(uint32_t field, const TWPacket& nested) {
    TWFieldWriter inner;
    nested.writeFields(inner);
    text(field, inner.mBytes);
}

}  // namespace Tarnwick::Protocol
