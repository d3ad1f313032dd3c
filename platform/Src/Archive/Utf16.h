// UTF-16 to UTF-8.
#pragma once

#include <string>

#include "Bytes.h"

namespace Archive {

void appendUtf8(uint32_t codePoint, std::string& text);

/// Little-endian code units; a lone surrogate becomes U+FFFD.
std::string utf8FromUtf16(ByteView units);

}  // namespace Archive
