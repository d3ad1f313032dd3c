// The public tool's view of encoded records.
#pragma once

#include <string>

namespace support {

/// What `protoc --decode` prints for the bytes. @param file name below Include/TWProtocol @param message without
/// package Throws std::runtime_error when the tool refuses the bytes or the file.
std::string protocDecode(const std::string& file, const std::string& message, const std::string& bytes);
/// And back: the bytes that the tool makes of its own text.
std::string protocEncode(const std::string& file, const std::string& message, const std::string& text);

}  // namespace support
