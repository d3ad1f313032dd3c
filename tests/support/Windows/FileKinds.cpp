#include "FileKinds.h"

#include <windows.h>
#include <winioctl.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "WideText.h"
#include "WineShell.h"

namespace support {
namespace {

/// A handle that denies others what is not shared.
class Holder {
public:
    Holder(const std::string& path, DWORD access, DWORD shared, DWORD disposition = OPEN_EXISTING)
        : mHandle(::CreateFileW(longPath(path).c_str(), access, shared, nullptr, disposition,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr)) {
        if (mHandle == INVALID_HANDLE_VALUE)
            throw std::runtime_error("cannot hold " + path + ": " + std::to_string(::GetLastError()));
    }
    ~Holder() { ::CloseHandle(mHandle); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    HANDLE get() const { return mHandle; }

private:
    const HANDLE mHandle;
};

/// Makes an empty directory a second name for another. @return false when the system knows no such thing
bool makeJunction(const std::string& directory, const std::string& link) {
    struct Head {
        DWORD tag;
        WORD length, reserved, nameOffset, nameLength, shownOffset, shownLength;
    };
    const std::wstring target = L"\\??\\" + longPath(directory).substr(4);
    const auto bytes = static_cast<WORD>(target.size() * sizeof(wchar_t));
    const Head head{
        IO_REPARSE_TAG_MOUNT_POINT, static_cast<WORD>(bytes + 12), 0, 0, bytes, static_cast<WORD>(bytes + 2), 0};
    std::vector<char> point(sizeof head + bytes + 4);
    std::memcpy(point.data(), &head, sizeof head);
    std::memcpy(point.data() + sizeof head, target.data(), bytes);
    const Holder opened(link, GENERIC_WRITE, 0);
    DWORD told = 0;
    return ::DeviceIoControl(opened.get(), FSCTL_SET_REPARSE_POINT, point.data(), static_cast<DWORD>(point.size()),
                             nullptr, 0, &told, nullptr) != 0;
}

}  // namespace

struct ReadOnlyFile::State {};

ReadOnlyFile::ReadOnlyFile(const std::string& path) {
    if (!::SetFileAttributesW(longPath(path).c_str(), FILE_ATTRIBUTE_READONLY))
        throw std::runtime_error("cannot protect " + path);
}

ReadOnlyFile::~ReadOnlyFile() = default;

struct WithheldFile::State {
    Holder holder;
};

WithheldFile::WithheldFile(const std::string& path) : mState(new State{{path, GENERIC_READ, 0}}) {}

WithheldFile::~WithheldFile() = default;

struct KeptFile::State {
    Holder holder;
};

KeptFile::KeptFile(const std::string& path)
    : mState(new State{{path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE}}) {}

KeptFile::~KeptFile() = default;

void hide(const std::string& path) {
    if (!::SetFileAttributesW(longPath(path).c_str(), FILE_ATTRIBUTE_HIDDEN))
        throw std::runtime_error("cannot hide " + path);
}

void makeSparse(const std::string& path, uint64_t length) {
    const Holder file(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    DWORD told = 0;
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(length);
    const bool made = ::DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &told, nullptr) &&
                      ::SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) && ::SetEndOfFile(file.get());
    if (!made) throw std::runtime_error("no sparse file: " + std::to_string(::GetLastError()));
}

void makeDirectoryLink(const std::string& directory, const std::string& link) {
    if (!underWine()) {
        if (!::CreateDirectoryW(longPath(link).c_str(), nullptr) || !makeJunction(directory, link))
            throw std::runtime_error("no link " + link + ": " + std::to_string(::GetLastError()));
        return;
    }
    // Wine makes no junctions, but takes the links of the machine below for such.
    if (runInShell("ln -s '" + unixPath(directory) + "' '" + unixPath(link) + "'") != 0)
        throw std::runtime_error("no link " + link);
}

}  // namespace support
