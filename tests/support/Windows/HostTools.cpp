#include "HostTools.h"

#include "FileText.h"
#include "ProgramCall.h"
#include "TempDir.h"
#include "WideText.h"
#include "WineShell.h"

namespace support {
namespace {

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
    const HANDLE process = startProgram(call.words, call.directory, {in.handle(), out.handle(), err.handle()});
    return process != nullptr ? endOf(process) : -1;
}

}  // namespace

ToolResult runTool(const ToolCall& call) {
    const TempDir results;
    const int code = underWine() ? runInShell(shellCommand(call, results.path())) : runProgram(call, results.path());
    return {code, readText(results.path() + "/out").value_or(""), readText(results.path() + "/err").value_or("")};
}

std::string toolPath(const std::string& path) { return underWine() ? unixPath(path) : path; }

}  // namespace support
