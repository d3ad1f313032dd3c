#include "WineShell.h"

#include <stdexcept>

#include "FileText.h"
#include "Sockets.h"
#include "TempDir.h"
#include "WideText.h"

namespace support {
namespace {

/// Wine's own word for it, which no other system has.
using UnixFileName = char*(__cdecl*)(const wchar_t*);

UnixFileName unixFileName() {
    const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
    return reinterpret_cast<UnixFileName>(reinterpret_cast<void*>(::GetProcAddress(kernel, "wine_get_unix_file_name")));
}

/// Starts the shell. Of a program that is not for Windows wine tells neither when nor how it ended, but the program
/// gets the output that it is given, a socket too.
void startShell(const std::string& script, sockets::Socket output) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = INVALID_HANDLE_VALUE;
    startup.hStdOutput = reinterpret_cast<HANDLE>(output);
    startup.hStdError = INVALID_HANDLE_VALUE;
    PROCESS_INFORMATION started{};
    std::wstring line = L"\"Z:\\bin\\sh\" \"" + wide(unixPath(script)) + L"\"";
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started) == 0) {
        throw std::runtime_error("no shell below wine: " + std::to_string(::GetLastError()));
    }
    if (started.hProcess != nullptr) ::CloseHandle(started.hProcess);
    if (started.hThread != nullptr) ::CloseHandle(started.hThread);
}

/// Starts the shell. @return where its output comes in, until it ends
sockets::Socket startInShell(const std::string& script) {
    uint16_t port = 0;
    const auto listener = sockets::listenOnLoopback(port);
    const auto ours = sockets::connectToLoopback(port);
    const auto theirs = sockets::acceptPeer(listener);
    sockets::close(listener);
    startShell(script, theirs);
    sockets::close(theirs);
    return ours;
}

/// All that comes until the peer's last owner is gone.
std::string receiveAll(sockets::Socket socket) {
    std::string text;
    char buffer[64];
    while (const size_t got = sockets::receive(socket, buffer, sizeof buffer)) text.append(buffer, got);
    return text;
}

}  // namespace

bool underWine() { return unixFileName() != nullptr; }

std::string unixPath(const std::string& path) {
    char* const name = unixFileName()(wide(path).c_str());
    if (name == nullptr) throw std::runtime_error("no name below wine for " + path);
    std::string text = name;
    ::HeapFree(::GetProcessHeap(), 0, name);
    return text;
}

int runInShell(const std::string& command) {
    const TempDir directory;
    const std::string script = directory.path() + "/command";
    writeText(script, "(" + command + "\n)\necho $?\n");
    const auto output = startInShell(script);
    const std::string answer = receiveAll(output);
    sockets::close(output);
    return answer.empty() ? -1 : std::stoi(answer);
}

}  // namespace support
