#include "ProtocDecode.h"

#include <stdexcept>

#include "FileText.h"
#include "HostTools.h"
#include "TempDir.h"

namespace support {

namespace {

std::string run(const std::string& mode, const std::string& file, const std::string& message,
                const std::string& input) {
    const TempDir dir;
    writeText(dir.path() + "/in", input);
    const std::string records = toolPath(ORV_SOURCE_DIR "/Include/TWProtocol");
    const auto result =
        runTool({.words = {"protoc", "--" + mode + "=Tarnwick.Protocol." + message, "-I", records, file},
                 .input = dir.path() + "/in"});
    if (result.code != 0) throw std::runtime_error("protoc: " + result.errors);
    return result.output;
}

}  // namespace

std::string protocDecode(const std::string& file, const std::string& message, const std::string& bytes) {
    return run("decode", file, message, bytes);
}

std::string protocEncode(const std::string& file, const std::string& message, const std::string& text) {
    return run("encode", file, message, text);
}

}  // namespace support
