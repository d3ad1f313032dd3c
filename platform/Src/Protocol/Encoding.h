// The encoding of records for the platform's own use.
#pragma once

#include <cstddef>
#include <string>

#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

/// The bytes of a body. @param expected about how many they will be
std::string encodeRecord(const TWPacket& record, size_t expected = 0);

}  // namespace Tarnwick::Protocol
