// Finds the signature in a PE file, and the bytes that it covers.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace Public::Base {

/// What the head of a PE file (32 or 64 bits) and its certificate table say. No offset or length in the file is
/// trusted. The spans point into the bytes that locate was given.
struct PeSecurity {
    using Bytes = std::span<const unsigned char>;

    enum class State {
        NotProgram,  ///< no PE file
        Unsigned,    ///< the head names no certificate table
        Damaged,     ///< the head names one, but no signature that could be judged stands there
        Signed,
    };

    State state = State::NotProgram;
    std::string flaw;              ///< why the state is not Signed, in plain words
    std::array<Bytes, 3> covered;  ///< Signed: what the digest of a signature is made of, in this order
    Bytes signature;               ///< Signed: the first PKCS#7 entry, with the padding behind it

    static PeSecurity locate(Bytes file);
};

}  // namespace Public::Base
