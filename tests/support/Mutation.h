// Changes bytes at random, the same way for the same seed.
#pragma once

#include <cstdint>
#include <string>

namespace support {

enum class Mutation {
    BitFlips,     ///< one to eight bits
    ByteRuns,     ///< up to 64 bytes become one value, or noise
    Truncation,   ///< the end is cut off
    Splice,       ///< a piece is put in elsewhere, over what is there or between, or taken out
    FieldValues,  ///< one to three 32-bit numbers become ones that lengths and offsets break at
};

/// @param begin bytes before it stay   @param end those from it on stay too, but for a cut
std::string mutated(const std::string& bytes, Mutation mutation, uint32_t seed, size_t begin, size_t end);

}  // namespace support
