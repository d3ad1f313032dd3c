#include "Program.h"

#include <algorithm>
#include <stdexcept>
// Needs the system's types.
#include "WideText.h"
//
#include <tlhelp32.h>

#include "FileText.h"
#include "TempDir.h"

namespace support {
namespace {

/// How a killed one ends, so that no status of its own is taken for it.
constexpr DWORD kKilled = 0xDEADDEAD;

class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle = nullptr) : mHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~OwnedHandle() {
        if (mHandle != nullptr) ::CloseHandle(mHandle);
    }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    HANDLE get() const { return mHandle; }

private:
    HANDLE mHandle;
};

HANDLE inheritable(const std::string& path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return ::CreateFileW(wide(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::wstring quoted(const std::wstring& word) {
    if (!word.empty() && word.find_first_of(L" \t\"") == std::wstring::npos) return word;
    std::wstring out = L"\"";
    size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'"') out.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        out += c;
    }
    return out.append(backslashes, L'\\') + L'"';
}

/// While it lives, programs that are started put their temporary files there.
class TemporaryFilesAt {
public:
    explicit TemporaryFilesAt(const std::string& directory) {
        for (const wchar_t* name : {L"TMP", L"TEMP"}) {
            if (directory.empty()) continue;
            wchar_t before[MAX_PATH] = {};
            ::GetEnvironmentVariableW(name, before, MAX_PATH);
            mBefore.emplace_back(name, before);
            std::wstring path = wide(directory);
            std::replace(path.begin(), path.end(), L'/', L'\\');
            ::SetEnvironmentVariableW(name, path.c_str());
        }
    }
    ~TemporaryFilesAt() {
        for (const auto& [name, value] : mBefore) ::SetEnvironmentVariableW(name.c_str(), value.c_str());
    }
    TemporaryFilesAt(const TemporaryFilesAt&) = delete;
    TemporaryFilesAt& operator=(const TemporaryFilesAt&) = delete;

private:
    std::vector<std::pair<std::wstring, std::wstring>> mBefore;
};

/// @return its handle, null when it cannot be started
HANDLE start(const ProgramCall& call, const std::string& output, const std::string& errors, DWORD& id) {
    const OwnedHandle input(inheritable("NUL", GENERIC_READ, OPEN_EXISTING));
    const OwnedHandle out(inheritable(output, GENERIC_WRITE, OPEN_ALWAYS));
    const OwnedHandle err(inheritable(errors, GENERIC_WRITE, OPEN_ALWAYS));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = out.get();
    startup.hStdError = err.get();
    std::wstring line;
    for (const auto& word : call.words) line += (line.empty() ? L"" : L" ") + quoted(wide(word));
    const TemporaryFilesAt temporary(call.temporary);
    PROCESS_INFORMATION started{};
    if (!::CreateProcessW(wide(call.words.front()).c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                          nullptr, nullptr, &startup, &started)) {
        return nullptr;
    }
    ::CloseHandle(started.hThread);
    id = started.dwProcessId;
    return started.hProcess;
}

int statusOf(HANDLE process) {
    DWORD status = kKilled;
    if (process != nullptr) {
        ::WaitForSingleObject(process, INFINITE);
        ::GetExitCodeProcess(process, &status);
    }
    return status == kKilled ? -1 : static_cast<int>(status);
}

std::string withoutReturns(std::string text) {
    size_t at = 0;
    while ((at = text.find("\r\n", at)) != std::string::npos) text.erase(at, 1);
    return text;
}

}  // namespace

ProgramEnd runProgram(const ProgramCall& call) {
    const TempDir results;
    DWORD id = 0;
    const OwnedHandle process(start(call, results.path() + "/out", results.path() + "/err", id));
    const int status = statusOf(process.get());
    return {status, withoutReturns(readText(results.path() + "/out").value_or("")),
            withoutReturns(readText(results.path() + "/err").value_or(""))};
}

struct RunningProgram::State {
    DWORD id = 0;
    HANDLE process = nullptr;
};

RunningProgram::RunningProgram(const ProgramCall& call) : mState(std::make_unique<State>()) {
    mState->process = start(call, "NUL", "NUL", mState->id);
}

RunningProgram::RunningProgram(RunningProgram&&) noexcept = default;

RunningProgram::~RunningProgram() {
    if (!mState) return;
    kill();
    ::CloseHandle(mState->process);
}

unsigned RunningProgram::id() const { return mState->id; }

bool RunningProgram::endsWithin(std::chrono::steady_clock::duration time) {
    // The system's own waiting is as coarse as its clock, too coarse to end a program at any of its steps.
    const auto deadline = std::chrono::steady_clock::now() + time;
    for (;;) {
        if (::WaitForSingleObject(mState->process, 0) != WAIT_TIMEOUT) return true;
        const auto left = deadline - std::chrono::steady_clock::now();
        if (left <= std::chrono::steady_clock::duration::zero()) return false;
        if (left > std::chrono::milliseconds(3)) ::WaitForSingleObject(mState->process, 1);
    }
}

bool RunningProgram::kill() {
    if (::WaitForSingleObject(mState->process, 0) != WAIT_TIMEOUT) return false;
    ::TerminateProcess(mState->process, kKilled);
    return statusOf(mState->process) == -1;
}

void RunningProgram::askToEnd() {
    const OwnedHandle threads(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL any = ::Thread32First(threads.get(), &thread); any; any = ::Thread32Next(threads.get(), &thread)) {
        if (thread.th32OwnerProcessID != mState->id) continue;
        ::PostThreadMessageW(thread.th32ThreadID, WM_CLOSE, 0, 0);
        ::PostThreadMessageW(thread.th32ThreadID, WM_QUIT, 0, 0);
    }
}

int RunningProgram::wait() { return statusOf(mState->process); }

std::string copyProgram(const std::string& program, const std::string& directory) {
    const std::filesystem::path from = program;
    std::filesystem::create_directories(directory);
    for (const auto& entry : std::filesystem::directory_iterator(from.parent_path())) {
        if (entry.path().filename() != from.filename() && entry.path().extension() != ".dll") continue;
        std::filesystem::copy_file(entry.path(), directory / entry.path().filename(),
                                   std::filesystem::copy_options::overwrite_existing);
    }
    return directory + "/" + from.filename().string();
}

}  // namespace support
