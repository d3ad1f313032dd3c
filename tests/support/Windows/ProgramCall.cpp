#include "ProgramCall.h"

#include "WideText.h"

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

}  // namespace

HANDLE startProgram(const std::vector<std::string>& words, const std::string& directory, const Streams& streams) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = streams.in;
    startup.hStdOutput = streams.out;
    startup.hStdError = streams.err;
    std::wstring line;
    for (const auto& word : words) line += (line.empty() ? L"" : L" ") + quoted(wide(word));
    const std::wstring place = wide(directory);
    PROCESS_INFORMATION started{};
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                         place.empty() ? nullptr : place.c_str(), &startup, &started) == 0) {
        return nullptr;
    }
    ::CloseHandle(started.hThread);
    return started.hProcess;
}

int endOf(HANDLE process) {
    DWORD code = 0;
    ::WaitForSingleObject(process, INFINITE);
    ::GetExitCodeProcess(process, &code);
    ::CloseHandle(process);
    return static_cast<int>(code);
}

}  // namespace support
