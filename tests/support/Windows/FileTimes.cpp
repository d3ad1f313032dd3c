#include "FileTimes.h"

#include <stdexcept>

#include "WideText.h"

namespace support {
namespace {

/// For its attributes, of which the time is one.
template <class Use>
void withFile(const std::string& path, DWORD access, Use use) {
    const HANDLE file =
        ::CreateFileW(longPath(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("no file " + path);
    const BOOL good = use(file);
    ::CloseHandle(file);
    if (!good) throw std::runtime_error("no time of " + path);
}

}  // namespace

int64_t modifiedTime(const std::string& path) {
    FILETIME time{};
    withFile(path, FILE_READ_ATTRIBUTES, [&](HANDLE file) { return ::GetFileTime(file, nullptr, nullptr, &time); });
    return static_cast<int64_t>(static_cast<uint64_t>(time.dwHighDateTime) << 32U | time.dwLowDateTime);
}

void setModifiedTime(const std::string& path, int64_t ticks) {
    const auto bits = static_cast<uint64_t>(ticks);
    const FILETIME time{static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32U)};
    withFile(path, FILE_WRITE_ATTRIBUTES, [&](HANDLE file) { return ::SetFileTime(file, nullptr, nullptr, &time); });
}

}  // namespace support
