// The command line of this program, and programs run to their end.
#include "Base/Windows/NativePath.h"
// Needs the system's types.
#include <shellapi.h>

#include "Base/Windows/CommandLine.h"
#include "Public/Base/Process.h"
#include "Public/Base/StringEx.h"

namespace Public::Base {

namespace {

/// In quotes, with a backslash doubled only where a quote follows.
std::wstring quoted(const std::wstring& word) {
    std::wstring out = L"\"";
    size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'"') out.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        out += c;
    }
    return out.append(backslashes, L'\\') + L'"';
}

}  // namespace

std::wstring commandLineOf(const std::vector<std::string>& arguments) {
    std::wstring line;
    for (const auto& argument : arguments) {
        line += (line.empty() ? L"" : L" ") + quoted(StringEx::string2wstring(argument));
    }
    return line;
}

std::vector<std::string> Process::arguments(int, const char* const*) {
    int count = 0;
    wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> texts;
    for (int at = 0; words != nullptr && at < count; ++at) texts.push_back(fromNative(words[at]));
    ::LocalFree(words);
    return texts;
}

int Process::run(const std::vector<std::string>& arguments) {
    std::wstring program;
    if (!toNativePath(arguments.empty() ? std::string() : arguments.front(), program)) return -1;
    std::wstring line = commandLineOf(arguments);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = ::GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION started{};
    if (!::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                          &started)) {
        failWithLastError();
        return -1;
    }
    const OwnedHandle thread(started.hThread);
    const OwnedHandle process(started.hProcess);
    ::WaitForSingleObject(process.get(), INFINITE);
    DWORD status = 0;
    if (::GetExitCodeProcess(process.get(), &status)) return static_cast<int>(status);
    failWithLastError();
    return -1;
}

}  // namespace Public::Base
