#include "NamedPipe.h"

#include <filesystem>
#include <stdexcept>

#include "WideText.h"

namespace support {

struct NamedPipe::Held {
    HANDLE end;
};

NamedPipe::NamedPipe(const std::string& path) {
    // Pipes have a place of their own; the directory's name keeps those of several tests apart.
    const std::filesystem::path wanted(path);
    mPath = "\\\\.\\pipe\\" + wanted.parent_path().filename().string() + "-" + wanted.filename().string();
    const HANDLE end =
        ::CreateNamedPipeW(wide(mPath).c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 1024, 1024, 0, nullptr);
    if (end == INVALID_HANDLE_VALUE) throw std::runtime_error("no pipe at " + mPath);
    mHeld = std::make_unique<Held>(Held{end});
}

NamedPipe::~NamedPipe() { ::CloseHandle(mHeld->end); }

}  // namespace support
