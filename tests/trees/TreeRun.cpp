#include <sstream>
#include <stdexcept>

#include "Base/Windows/NativePath.h"
#include "FileText.h"
#include "Public/Base/StringEx.h"
#include "TreeFixture.h"

namespace support {

using Public::Base::OwnedHandle;
using Public::Base::StringEx;

namespace {

std::wstring native(const std::string& path) {
    std::wstring wide;
    if (!Public::Base::toNativePath(path, wide)) throw std::runtime_error("no path: " + path);
    return wide;
}

std::wstring windowsDirectory() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, ::GetWindowsDirectoryW(path, MAX_PATH));
}

/// What every program needs, and a PATH of the given directories alone.
std::wstring environment(const std::vector<std::string>& searched) {
    std::wstring path = L"PATH=" + windowsDirectory() + L"\\system32;" + windowsDirectory();
    for (const std::string& directory : searched) path += L";" + native(directory);
    return path + L'\0' + L"SystemRoot=" + windowsDirectory() + L'\0' + L'\0';
}

OwnedHandle outputTo(const std::string& path) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return OwnedHandle(::CreateFileW(native(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// @return the program's exit code
uint32_t execute(const std::string& program, const std::vector<std::string>& searched, const std::string& output) {
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX |
                   SEM_NOOPENFILEERRORBOX);  // no box for it to wait in
    const OwnedHandle out = outputTo(output);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = out.get();
    PROCESS_INFORMATION process{};
    std::wstring variables = environment(searched);
    if (!::CreateProcessW(native(program).c_str(), nullptr, nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                          variables.data(), windowsDirectory().c_str(), &start, &process)) {
        throw std::runtime_error("cannot start " + program + ": " + std::to_string(::GetLastError()));
    }
    const OwnedHandle running(process.hProcess);
    const OwnedHandle thread(process.hThread);
    DWORD code = 0;
    ::WaitForSingleObject(running.get(), INFINITE);
    ::GetExitCodeProcess(running.get(), &code);
    return code;
}

/// In the form without a limit of length and with it, a path is the same.
std::string plainPath(std::string path) {
    path = StringEx::replace(path, "\\", "/");
    return path.starts_with("//?/") ? path.substr(4) : path;
}

}  // namespace

TreeRun runTree(const std::string& program, const std::vector<std::string>& searched, std::string* output) {
    TempDir dir;
    TreeRun run;
    run.code = execute(program, searched, dir.path() + "/output");
    const std::string printed = readText(dir.path() + "/output").value_or("");
    if (output != nullptr) *output = printed;
    std::istringstream lines(printed);
    const std::string system = StringEx::toLower(plainPath(StringEx::wstring2string(windowsDirectory())));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("reached ")) run.reached.insert(line.substr(8));
        if (!line.starts_with("loaded ")) continue;
        const std::string path = plainPath(line.substr(7));
        if (!StringEx::toLower(path).starts_with(system)) run.loaded.insert(path);
    }
    return run;
}

}  // namespace support
