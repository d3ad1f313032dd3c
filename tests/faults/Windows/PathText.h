// Paths as the layer compares them.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <algorithm>
#include <string>

#include "Operations.h"

namespace faults {

/// Leaves the error of the call that was made as its caller is to find it.
class KeptError {
public:
    KeptError() : mError(::GetLastError()) {}
    ~KeptError() { ::SetLastError(mError); }
    KeptError(const KeptError&) = delete;
    KeptError& operator=(const KeptError&) = delete;

private:
    DWORD mError;
};

/// UTF-8 with "/", without what lifts the limit of length.
inline std::string pathText(const wchar_t* path) {
    const KeptError kept;
    std::wstring wide = path != nullptr ? path : L"";
    if (wide.starts_with(L"\\\\?\\")) wide.erase(0, 4);
    std::replace(wide.begin(), wide.end(), L'\\', L'/');
    const int length = static_cast<int>(wide.size());
    std::string text(wide.size() * 3, '\0');
    const int used = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text.data(), static_cast<int>(text.size()),
                                           nullptr, nullptr);
    text.resize(static_cast<size_t>(used));
    return text;
}

/// @return false, with the error set, when the call is to fail
inline bool passes(const Verdict& verdict) {
    if (verdict.error != 0) ::SetLastError(static_cast<DWORD>(verdict.error));
    return verdict.error == 0;
}

inline bool passesAt(Call call, const char* name, const wchar_t* path) {
    return passes(judgePath(call, name, pathText(path).c_str()));
}

inline Handle numberOf(const void* handle) { return reinterpret_cast<Handle>(handle); }

inline bool passesFor(Call call, const char* name, const void* handle) {
    return passes(judgeHandle(call, name, numberOf(handle)));
}

}  // namespace faults
