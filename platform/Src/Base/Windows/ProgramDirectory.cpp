#include "Base/ProgramDirectory.h"

#include "Base/Windows/NativePath.h"

namespace Public::Base {

std::string programDirectory() {
    constexpr size_t kLongest = 1 << 15;
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = 0;
    // A path that does not fit is cut without a word.
    while ((length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()))) == path.size() &&
           path.size() < kLongest)
        path.resize(path.size() * 2);
    path.resize(length);
    const size_t separator = path.rfind(L'\\');
    return separator == std::wstring::npos ? std::string() : fromNative(path.substr(0, separator));
}

}  // namespace Public::Base
