// What is the same of files on every system.
#include "Public/Base/File.h"

#include <exception>
#include <mutex>

#include "Base/ProgramDirectory.h"
#include "Public/Base/ErrorInfo.h"

namespace Public::Base {

namespace {

std::mutex sMutex;  // guards the override

/// Never destroyed: a thread may still ask while the process ends.
std::string& programDirectoryOverride() {
    static auto& directory = *new std::string;
    return directory;
}

}  // namespace

std::string File::getExcutableFileFullPath() {
    {
        std::lock_guard lock(sMutex);
        if (!programDirectoryOverride().empty()) return programDirectoryOverride();
    }
    return programDirectory();
}

void File::setExcutableFileFullPath(const std::string& path) {
    std::lock_guard lock(sMutex);
    programDirectoryOverride() = path;
}

bool File::gets(std::string& line) {
    line.clear();
    for (char c = 0; read(&c, 1) == 1;) {
        if (c == '\n') {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            return true;
        }
        line += c;
    }
    return !line.empty();
}

bool File::puts(const std::string& text) { return write(text.data(), text.size()) == text.size(); }

SharedBuffer File::load(const std::string& path) {
    constexpr size_t kPiece = 1 << 16;
    File file(path);
    if (!file.open(OpenMode_Read)) return {};
    try {
        std::string content;
        // The length is but a hint: special files tell none, and a file may grow meanwhile.
        content.reserve(getLength(path) + kPiece);
        for (size_t got = kPiece; got == kPiece;) {
            const size_t held = content.size();
            content.resize(held + kPiece);
            got = file.read(content.data() + held, kPiece);
            content.resize(held + got);
        }
        return file.mReadFailed ? SharedBuffer() : SharedBuffer(std::move(content));
    } catch (const std::exception&) {  // more than memory or a string can hold
        ErrorInfo::setLastError(ErrorInfo(ErrorCode_Failed, "file too large: " + path));
        return {};
    }
}

}  // namespace Public::Base
