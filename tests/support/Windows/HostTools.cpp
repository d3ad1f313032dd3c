#include "HostTools.h"

#include "FileText.h"
#include "TempDir.h"
#include "WideText.h"
#include "WineShell.h"

namespace support {
namespace {

/// A word as the usual start-up code of programs splits it off the command line again.
std::wstring quoted(const std::wstring& word) {
    std::wstring out = L"\"";
    size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        // Before a quote each backslash counts double; elsewhere it stands for itself.
        out.append(c == L'"' ? 2 * backslashes + 1 : backslashes, L'\\');
        backslashes = 0;
        out += c;
    }
    return out.append(2 * backslashes, L'\\') + L"\"";
}

/// A file that the program started next inherits.
class Stream {
public:
    Stream(const std::string& path, DWORD access, DWORD disposition) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        mHandle = ::CreateFileW(wide(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    ~Stream() {
        if (mHandle != INVALID_HANDLE_VALUE) ::CloseHandle(mHandle);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    HANDLE handle() const { return mHandle; }

private:
    HANDLE mHandle;
};

/// @return the exit code; -1 when it cannot be started
int runProgram(const ToolCall& call, const std::string& results) {
    const Stream in(call.input.empty() ? "NUL" : call.input, GENERIC_READ, OPEN_EXISTING);
    const Stream out(results + "/out", GENERIC_WRITE, CREATE_ALWAYS);
    const Stream err(results + "/err", GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.handle();
    startup.hStdOutput = out.handle();
    startup.hStdError = err.handle();

    std::wstring line;
    for (const auto& word : call.words) line += (line.empty() ? L"" : L" ") + quoted(wide(word));
    const std::wstring directory = wide(call.directory);
    PROCESS_INFORMATION started{};
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                         directory.empty() ? nullptr : directory.c_str(), &startup, &started) == 0) {
        return -1;
    }
    DWORD code = 0;
    ::WaitForSingleObject(started.hProcess, INFINITE);
    ::GetExitCodeProcess(started.hProcess, &code);
    ::CloseHandle(started.hThread);
    ::CloseHandle(started.hProcess);
    return static_cast<int>(code);
}

}  // namespace

ToolResult runTool(const ToolCall& call) {
    const TempDir results;
    const int code = underWine() ? runInShell(shellCommand(call, results.path())) : runProgram(call, results.path());
    return {code, readText(results.path() + "/out").value_or(""), readText(results.path() + "/err").value_or("")};
}

std::string toolPath(const std::string& path) { return underWine() ? unixPath(path) : path; }

}  // namespace support
