#include "TWProtocol/TWPacket.h"

#include <limits>

#include "Protocol/Encoding.h"

namespace Tarnwick::Protocol {

namespace {

constexpr uint32_t kTypeIdField = 15;
constexpr unsigned kDeepest = 32;
constexpr uint64_t kLargestFieldNumber = (1u << 29) - 1;

enum WireType : uint32_t { Varint = 0, Fixed64 = 1, Bytes = 2, Fixed32 = 5 };

/// Reads fields one after the other out of bytes from anywhere.
class FieldReader {
public:
    explicit FieldReader(std::string_view bytes) : mRest(bytes) {}

    bool atEnd() const { return mRest.empty(); }

    /// False when the bytes are cut short, or hold a group or an unknown wire type.
    bool next(TWField& field) {
        uint64_t tag = 0;
        if (!varint(tag)) return false;
        const uint64_t number = tag >> 3;
        if (number == 0 || number > kLargestFieldNumber) return false;
        field.number = static_cast<uint32_t>(number);
        field.value = 0;
        field.bytes = {};
        switch (tag & 7) {
            case Varint:
                field.kind = TWField::Kind::Varint;
                return varint(field.value);
            case Fixed64:
                field.kind = TWField::Kind::Fixed64;
                return fixed(8, field.value);
            case Fixed32:
                field.kind = TWField::Kind::Fixed32;
                return fixed(4, field.value);
            case Bytes:
                field.kind = TWField::Kind::Bytes;
                return delimited(field.bytes);
            default:
                return false;
        }
    }

private:
    bool varint(uint64_t& value) {
        value = 0;
        for (unsigned shift = 0; shift < 70; shift += 7) {
            if (mRest.empty()) return false;
            const auto byte = static_cast<uint8_t>(mRest.front());
            mRest.remove_prefix(1);
            if (shift == 63 && byte > 1) return false;  // more than 64 bits
            value |= static_cast<uint64_t>(byte & 0x7f) << shift;
            if (byte < 0x80) return true;
        }
        return false;
    }

    bool fixed(size_t size, uint64_t& value) {
        if (mRest.size() < size) return false;
        value = 0;
        for (size_t i = 0; i < size; ++i) value |= static_cast<uint64_t>(static_cast<uint8_t>(mRest[i])) << (8 * i);
        mRest.remove_prefix(size);
        return true;
    }

    bool delimited(std::string_view& bytes) {
        uint64_t size = 0;
        if (!varint(size) || size > mRest.size()) return false;
        bytes = mRest.substr(0, static_cast<size_t>(size));
        mRest.remove_prefix(static_cast<size_t>(size));
        return true;
    }

    std::string_view mRest;
};

bool readFields(std::string_view bytes, TWPacket& record, bool checking, unsigned depth) {
    FieldReader reader(bytes);
    TWField field;
    field.checking = checking;
    field.depth = depth;
    while (!reader.atEnd()) {
        if (!reader.next(field) || !record.readField(field)) return false;
    }
    return true;
}

bool leadsWithTypeId(std::string_view bytes, uint64_t typeId) {
    TWField field;
    FieldReader reader(bytes);
    return !reader.atEnd() && reader.next(field) && field.number == kTypeIdField &&
           field.kind == TWField::Kind::Fixed64 && field.value == typeId;
}

}  // namespace

void TWFieldWriter::varint(uint64_t value) {
    for (; value >= 0x80; value >>= 7) mBytes.push_back(static_cast<char>(value | 0x80));
    mBytes.push_back(static_cast<char>(value));
}

void TWFieldWriter::tag(uint32_t field, uint32_t wireType) { varint((static_cast<uint64_t>(field) << 3) | wireType); }

void TWFieldWriter::number(uint32_t field, uint64_t value) {
    if (value == 0) return;
    tag(field, Varint);
    varint(value);
}

void TWFieldWriter::fixed(uint32_t field, uint64_t value) {
    tag(field, Fixed64);
    for (int i = 0; i < 8; ++i) mBytes.push_back(static_cast<char>(value >> (8 * i)));
}

void TWFieldWriter::text(uint32_t field, std::string_view bytes) {
    if (!bytes.empty()) element(field, bytes);
}

void TWFieldWriter::lead(uint32_t field, size_t size) {
    tag(field, Bytes);
    varint(size);
}

void TWFieldWriter::element(uint32_t field, std::string_view bytes) {
    lead(field, bytes.size());
    mBytes.append(bytes);
}

void TWFieldWriter::record(uint32_t field, const TWPacket& nested) {
    TWFieldWriter inner;
    nested.writeFields(inner);
    text(field, inner.mBytes);
}

void TWFieldWriter::element(uint32_t field, const TWPacket& nested) {
    TWFieldWriter inner;
    nested.writeFields(inner);
    element(field, inner.mBytes);
}

bool TWField::to(std::string& out) const {
    if (kind != Kind::Bytes) return false;
    if (!checking) out.assign(bytes);
    return true;
}

bool TWField::to(std::string_view& out) const {
    if (kind != Kind::Bytes) return false;
    if (!checking) out = bytes;
    return true;
}

bool TWField::to(Public::Base::SharedBuffer& out) const {
    if (kind != Kind::Bytes) return false;
    if (!checking) out = Public::Base::SharedBuffer(bytes.data(), bytes.size());
    return true;
}

bool TWField::to(uint64_t& out) const {
    if (kind != Kind::Varint) return false;
    if (!checking) out = value;
    return true;
}

bool TWField::to(uint32_t& out) const {
    if (kind != Kind::Varint || value > std::numeric_limits<uint32_t>::max()) return false;
    if (!checking) out = static_cast<uint32_t>(value);
    return true;
}

bool TWField::to(int64_t& out) const {
    if (kind != Kind::Varint) return false;
    if (!checking) out = static_cast<int64_t>(value);
    return true;
}

bool TWField::to(int32_t& out) const {
    const auto whole = static_cast<int64_t>(value);
    if (kind != Kind::Varint || whole < std::numeric_limits<int32_t>::min() ||
        whole > std::numeric_limits<int32_t>::max())
        return false;
    if (!checking) out = static_cast<int32_t>(whole);
    return true;
}

bool TWField::to(bool& out) const {
    if (kind != Kind::Varint || value > 1) return false;
    if (!checking) out = value == 1;
    return true;
}

bool TWField::to(TWPacket& nested) const {
    if (kind != Kind::Bytes || depth >= kDeepest) return false;
    return readFields(bytes, nested, checking, depth + 1);
}

bool TWField::append(std::vector<std::string>& list) const {
    if (kind != Kind::Bytes) return false;
    if (!checking) list.emplace_back(bytes);
    return true;
}

std::string encodeRecord(const TWPacket& record, size_t expected) {
    TWFieldWriter writer;
    writer.reserve(expected);
    writer.fixed(kTypeIdField, record.typeId());
    record.writeFields(writer);
    return writer.take();
}

Public::Base::SharedBuffer TWPacket::serializeAsBytes(const TWPacket* record) {
    return record ? serializeAsBytes(*record) : Public::Base::SharedBuffer();
}

Public::Base::SharedBuffer TWPacket::serializeAsBytes(const TWPacket& record) {
    return Public::Base::SharedBuffer(encodeRecord(record));
}

bool TWPacket::parseBytes(std::string_view bytes, TWPacket& record) {
    return leadsWithTypeId(bytes, record.typeId()) && readFields(bytes, record, true, 0) &&
           readFields(bytes, record, false, 0);
}

}  // namespace Tarnwick::Protocol
