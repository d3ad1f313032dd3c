#include "OtherProcess.h"

#include <windows.h>

#include <stdexcept>

#include "WideText.h"

namespace support {

struct OtherProcess::Running {
    HANDLE process = nullptr;
    HANDLE input = nullptr;
};

namespace {

/// The other process gets one end; this one's own is not passed on.
void makePipe(HANDLE& reading, HANDLE& writing, bool othersIsReading) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    if (!::CreatePipe(&reading, &writing, &inherited, 0)) throw std::runtime_error("no pipe");
    ::SetHandleInformation(othersIsReading ? writing : reading, HANDLE_FLAG_INHERIT, 0);
}

}  // namespace

OtherProcess::OtherProcess(Deed deed, const std::string& path, const std::string& copy) : mRunning(new Running) {
    HANDLE othersInput = nullptr, output = nullptr, othersOutput = nullptr;
    makePipe(othersInput, mRunning->input, true);
    makePipe(output, othersOutput, false);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = othersInput;
    startup.hStdOutput = othersOutput;
    startup.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    const std::string program = copy.empty() ? ownProgram() : copy;
    std::wstring line = L"\"" + wide(program) + L"\" " + wide(kAsOtherProcess) + L" " + static_cast<wchar_t>(deed) +
                        L" \"" + wide(path) + L"\"";
    PROCESS_INFORMATION started{};
    const bool runs =
        ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started) != 0;
    ::CloseHandle(othersInput);
    ::CloseHandle(othersOutput);
    if (!runs) throw std::runtime_error("cannot start " + program);
    ::CloseHandle(started.hThread);
    mRunning->process = started.hProcess;
    char told = 0;
    DWORD got = 0;
    ::ReadFile(output, &told, 1, &got, nullptr);
    ::CloseHandle(output);
    if (got != 1) throw std::runtime_error("the other process does not answer");
    mDid = told == '1';
}

OtherProcess::~OtherProcess() { kill(); }

void OtherProcess::kill() {
    if (!mRunning) return;
    ::TerminateProcess(mRunning->process, 9);
    ::WaitForSingleObject(mRunning->process, INFINITE);
    ::CloseHandle(mRunning->process);
    ::CloseHandle(mRunning->input);
    mRunning.reset();
}

std::string ownProgram() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return narrow(path);
}

}  // namespace support
