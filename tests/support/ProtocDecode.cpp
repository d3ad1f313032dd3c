#include "ProtocDecode.h"

#include <cstdlib>
#include <stdexcept>

#include "FileText.h"
#include "TempDir.h"

namespace support {

namespace {

std::string run(const std::string& mode, const std::string& file, const std::string& message,
                const std::string& input) {
    const TempDir dir;
    writeText(dir.path() + "/in", input);
    const std::string command = "protoc --" + mode + "=Tarnwick.Protocol." + message +
                                " -I '" ORV_SOURCE_DIR "/Include/TWProtocol' " + file + " <'" + dir.path() + "/in' >'" +
                                dir.path() + "/out' 2>'" + dir.path() + "/err'";
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("protoc: " + readText(dir.path() + "/err").value_or(""));
    return readText(dir.path() + "/out").value_or("");
}

}  // namespace

std::string protocDecode(const std::string& file, const std::string& message, const std::string& bytes) {
    return run("decode", file, message, bytes);
}

std::string protocEncode(const std::string& file, const std::string& message, const std::string& text) {
    return run("encode", file, message, text);
}

}  // namespace support
