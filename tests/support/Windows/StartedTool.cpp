#include "StartedTool.h"

#include <stdexcept>

#include "FileText.h"
#include "HostTools.h"
#include "ProgramCall.h"
#include "Sockets.h"
#include "TempDir.h"
#include "WineShell.h"

namespace support {

/// A program of the machine below wine writes into a socket, one for Windows into a pipe.
struct StartedTool::Running {
    TempDir directory;
    sockets::Socket socket = sockets::kNone;
    HANDLE pipe = nullptr;
    HANDLE process = nullptr;

    void startBelowWine(const std::vector<std::string>& words) {
        writeText(directory.path() + "/command", "exec env " + shellWords(words) + " </dev/null 2>&1\n");
        socket = startInShell(directory.path() + "/command");
    }
    void startHere(const std::vector<std::string>& words) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        HANDLE output = nullptr;
        if (::CreatePipe(&pipe, &output, &inherited, 0) == 0) throw std::runtime_error("no pipe");
        ::SetHandleInformation(pipe, HANDLE_FLAG_INHERIT, 0);
        process = startProgram(words, {}, {INVALID_HANDLE_VALUE, output, output});
        ::CloseHandle(output);
        if (process == nullptr) throw std::runtime_error("cannot start " + words.front());
    }
    /// @return false when no more will come
    bool read(char& byte) const {
        if (socket != sockets::kNone) return sockets::receive(socket, &byte, 1) == 1;
        DWORD got = 0;
        return ::ReadFile(pipe, &byte, 1, &got, nullptr) != 0 && got == 1;
    }
};

StartedTool::StartedTool(const std::vector<std::string>& words) : mRunning(std::make_unique<Running>()) {
    if (underWine()) {
        mRunning->startBelowWine(words);
    } else {
        mRunning->startHere(words);
    }
}

StartedTool::~StartedTool() {
    while (readLine()) {
    }
    if (mRunning->socket != sockets::kNone) sockets::close(mRunning->socket);
    if (mRunning->pipe != nullptr) ::CloseHandle(mRunning->pipe);
    if (mRunning->process != nullptr) endOf(mRunning->process);
}

std::optional<std::string> StartedTool::readLine() {
    std::string line;
    char c = 0;
    bool came = false;
    while ((came = mRunning->read(c)) && c != '\n') line += c;
    if (!came && line.empty()) return std::nullopt;
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

}  // namespace support
