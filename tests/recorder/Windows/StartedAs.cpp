#include "StartedAs.h"

#include <windows.h>

#include <shellapi.h>

#include "WideText.h"

namespace {

/// Behind the program, which stands in quotes, and one blank.
std::string parametersOf(std::wstring line) {
    const size_t end = line.starts_with(L'"') ? line.find(L'"', 1) : line.find(L' ');
    line.erase(0, end == line.npos ? line.size() : end + line.starts_with(L'"'));
    if (line.starts_with(L' ')) line.erase(0, 1);
    return support::narrow(line);
}

std::string workingDirectory() {
    std::wstring path(::GetCurrentDirectoryW(0, nullptr), L'\0');
    path.resize(::GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data()));
    return support::narrow(path);
}

bool isHidden() {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    ::GetStartupInfoW(&startup);
    return (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 && startup.wShowWindow == SW_HIDE;
}

}  // namespace

StartedAs StartedAs::ofThisProcess(int, char**) {
    StartedAs started;
    started.id = ::GetCurrentProcessId();
    started.directory = workingDirectory();
    started.window = isHidden() ? "hidden" : "shown";
    started.line = parametersOf(::GetCommandLineW());
    int count = 0;
    wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i) started.arguments.push_back(support::narrow(words[i]));
    ::LocalFree(words);
    return started;
}
