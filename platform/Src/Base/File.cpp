// What is the same of files on every system.
#include "Public/Base/File.h"

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "Base/ProgramDirectory.h"
#include "Public/Base/ErrorInfo.h"

namespace Public::Base {

namespace {
std::mutex sMutex;  // guards sProgramDirectory
std::string sProgramDirectory;
}  // namespace

std::string File::getExcutableFileFullPath() {
    {
        std::lock_guard lock(sMutex);
        if (!sProgramDirectory.empty()) return sProgramDirectory;
    }
    return programDirectory();
}

void File::setExcutableFileFullPath(const std::string& path) {
    std::lock_guard lock(sMutex);
    sProgramDirectory = path;
}

bool File::gets(std::string& line) {
    line.clear();
    bool any = false;
    for (char c = 0; read(&c, 1) == 1;) {
        any = true;
        if (c == '\n') break;
        line += c;
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return any;
}

bool File::puts(const std::string& text) { return write(text.data(), text.size()) == text.size(); }

SharedBuffer File::load(const std::string& path) {
    constexpr size_t kPiece = 1 << 16;
    constexpr uint64_t kLongest = 1 << 30;
    File file(path);
    if (!file.open(OpenMode_Read)) return {};
    std::string content;
    bool sound = true;
    // Its length says how much there is to come, but some of the system's own files tell none.
    for (uint64_t length = getLength(path); sound && std::max<uint64_t>(length, content.size()) <= kLongest;) {
        const size_t held = content.size();
        content.resize(held + std::max<size_t>(kPiece, length > held ? length - held + 1 : 0));
        const size_t got = file.readUntil(content.data() + held, content.size() - held, sound);
        const bool ended = got < content.size() - held;
        content.resize(held + got);
        if (ended && sound) return SharedBuffer(std::move(content));
    }
    if (sound) ErrorInfo::setLastSystemError(EFBIG);
    return {};
}

bool File::save(const std::string& path, const SharedBuffer& content) {
    File file(path);
    if (!file.open(OpenMode_Create)) return false;
    return file.write(content.buf(), content.size()) == content.size() && file.flush();
}

}  // namespace Public::Base
