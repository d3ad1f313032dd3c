// Takes DER apart, for structures that must be read strictly.
#pragma once

#include <cstddef>
#include <span>

namespace Public::Base {

/// Walks the elements of one level. Only single-byte tags and definite lengths in their shortest form pass, and no
/// element reaches beyond the bytes given.
class DerReader {
public:
    using Bytes = std::span<const unsigned char>;

    static constexpr unsigned char BitString = 0x03;
    static constexpr unsigned char OctetString = 0x04;
    static constexpr unsigned char Null = 0x05;
    static constexpr unsigned char ObjectId = 0x06;
    static constexpr unsigned char Sequence = 0x30;

    explicit DerReader(Bytes bytes) : mRest(bytes) {}

    /// Takes the next element if it bears the tag. @return false, with nothing taken, when it does not
    bool take(unsigned char tag, Bytes& content);
    /// What has not been taken yet.
    Bytes rest() const { return mRest; }
    bool atEnd() const { return mRest.empty(); }

private:
    Bytes mRest;
};

}  // namespace Public::Base
