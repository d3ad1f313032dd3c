#include "Base/Windows/NameBeside.h"

#include <atomic>

#include "Base/Windows/WindowsHeaders.h"

namespace Public::Base {

std::wstring nameBeside(const std::wstring& native, const wchar_t* suffix) {
    static std::atomic<unsigned> sCount{0};
    const std::wstring directory = native.substr(0, native.rfind(L'\\') + 1);
    std::wstring name;
    do {
        name =
            directory + L".orv-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(sCount++) + suffix;
    } while (::GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES);  // left by a process of the same number
    return name;
}

}  // namespace Public::Base
