// The base of all records that travel between nodes, and their encoding.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Public/Base/PlatformExport.h"
#include "Public/Base/SharedBuffer.h"

namespace Tarnwick::Protocol {

/// Priority of a message; the first value is the only one in use.
enum TWProtoMessageLevel : int {
    TWProtoMessageLevel_Normal = 0,
};

/// Appends fields in the protobuf wire format (protobuf.dev, "Encoding"). Fields at their default are left out.
class ORV_PLATFORM_API TWFieldWriter {
public:
    /// As a varint; negative numbers are sign-extended to 64 bits.
    void number(uint32_t field, uint64_t value);
    void text(uint32_t field, std::string_view bytes);
    /// One element of a repeated text: written also when it is empty.
    void element(uint32_t field, std::string_view bytes);
    /// A nested record, left out when all of its fields are.
    void record(uint32_t field, const struct TWPacket& nested);
    /// One element of a repeated record: written also when all of its fields are left out.
    void element(uint32_t field, const struct TWPacket& nested);
    /// Eight bytes, lowest first; written also when the value is 0.
    void fixed(uint32_t field, uint64_t value);
    /// What stands in front of a text of that size.
    void lead(uint32_t field, size_t size);
    /// Makes room at once for a record of about that size.
    void reserve(size_t bytes) { mBytes.reserve(bytes); }
    std::string take() { return std::move(mBytes); }

private:
    void tag(uint32_t field, uint32_t wireType);
    void varint(uint64_t value);

    std::string mBytes;
};

/// One field as it was read. A record is read in two passes: the first finds out whether every field fits and writes
/// nothing, so that a malformed record leaves its target as it was. Records take part by giving a field to their
/// members through to() and append() only.
struct ORV_PLATFORM_API TWField {
    enum class Kind : uint8_t { Varint, Fixed64, Bytes, Fixed32 };

    uint32_t number = 0;
    Kind kind = Kind::Varint;
    uint64_t value = 0;      ///< of a number
    std::string_view bytes;  ///< of a length-delimited field; lives as long as the input
    bool checking = false;   ///< the first pass: to() and append() write nothing
    unsigned depth = 0;      ///< of the record that holds the field; nesting beyond 32 is refused

    /// Each gives false when the field is of another kind, or the number does not fit.
    bool to(std::string& out) const;
    /// Looks into the input.
    bool to(std::string_view& out) const;
    bool to(uint32_t& out) const;
    bool to(int32_t& out) const;
    bool to(uint64_t& out) const;
    bool to(int64_t& out) const;
    bool to(bool& out) const;
    bool to(struct TWPacket& nested) const;
    bool to(Public::Base::SharedBuffer& out) const;
    /// Adds to a list.
    bool append(std::vector<std::string>& list) const;
    /// Adds a record to a list; the target of the first pass is a scratch element.
    template <class Record>
    bool append(std::vector<Record>& list) const {
        Record fresh;
        if (!to(fresh)) return false;
        if (!checking) list.push_back(std::move(fresh));
        return true;
    }
};

/// A record. The encoding of a body is: field 15 as a fixed 64-bit number, the typeId, in front; then the members by
/// their number, as the .proto twin beside each header says. Plain values: one thread at a time.
struct ORV_PLATFORM_API TWPacket {
    /// Declared by the base; this system neither fills nor reads it.
    std::list<std::shared_ptr<TWPacket>> extensions;

    virtual ~TWPacket() = default;
    /// Constant of the type.
    virtual const char* typeName() const = 0;
    /// Constant of the type; a body of another type does not parse.
    virtual uint64_t typeId() const = 0;

    /// Appends every member that is not at its default.
    virtual void writeFields(TWFieldWriter& writer) const = 0;
    /// Takes one field. @return false when a known field is of a wrong kind; unknown fields give true
    virtual bool readField(const TWField& field) = 0;

    /// The bytes as they travel in a body; null gives no bytes.
    static Public::Base::SharedBuffer serializeAsBytes(const TWPacket* record);
    static Public::Base::SharedBuffer serializeAsBytes(const TWPacket& record);
    /// Reads such bytes into a record. @return false for another typeId, a wrong kind or length, or truncation; the
    /// record is as it was then
    static bool parseBytes(std::string_view bytes, TWPacket& record);
};

}  // namespace Tarnwick::Protocol
