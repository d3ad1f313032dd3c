// Takes encoded fields apart.
#pragma once

#include <string_view>

#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

/// Walks the fields of a record in the protobuf wire format. The input is not trusted.
class FieldReader {
public:
    explicit FieldReader(std::string_view bytes) : mRest(bytes) {}
    /// @return false at the end and at the first malformed field
    bool next(TWField& field);
    /// True when everything was read, and well.
    bool atEnd() const { return mRest.empty() && !mMalformed; }

private:
    bool readField(TWField& field);
    bool varint(uint64_t& value);
    bool fixed(size_t width, uint64_t& value);

    std::string_view mRest;
    bool mMalformed = false;
};

}  // namespace Tarnwick::Protocol
