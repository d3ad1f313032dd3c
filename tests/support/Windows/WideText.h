// Texts and paths as Windows takes them, made without the code under test.
#pragma once

#include <windows.h>

#include <string>

namespace support {

inline std::wstring wide(const std::string& utf8) {
    const int length = static_cast<int>(utf8.size());
    std::wstring out(static_cast<size_t>(::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0)), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, out.data(), static_cast<int>(out.size()));
    return out;
}

inline std::string narrow(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int needed = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(needed), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, out.data(), needed, nullptr, nullptr);
    return out;
}

/// The whole path with backslashes, in the form that knows no limit of length.
inline std::wstring longPath(const std::string& path) {
    const std::wstring given = wide(path);
    if (given.starts_with(L"\\\\?\\")) return given;
    std::wstring full(::GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return (full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full);
}

}  // namespace support
