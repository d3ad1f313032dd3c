#include "Base/Windows/MappedNames.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "Base/Windows/HeldFile.h"
#include "Base/Windows/NameBeside.h"
#include "Base/Windows/NativePath.h"

namespace Public::Base {

namespace {

using FileId = std::pair<uint64_t, uint64_t>;

struct Mapped {
    unsigned times = 0;
    std::vector<std::wstring> aside;  // where it was moved; more than one where it has several names
};

std::mutex& mutex() {
    static auto& mutex = *new std::mutex;
    return mutex;
}

/// Guarded by the mutex. Never destroyed: files may outlive static objects.
std::map<FileId, Mapped>& mappedFiles() {
    static auto& files = *new std::map<FileId, Mapped>;
    return files;
}

/// Under the mutex. @return null when it is not mapped here
Mapped* find(const std::wstring& native) {
    BY_HANDLE_FILE_INFORMATION status{};
    if (!queryStatus(native, status)) return nullptr;
    const FileId id{status.dwVolumeSerialNumber, joined(status.nFileIndexHigh, status.nFileIndexLow)};
    const auto found = mappedFiles().find(id);
    return found != mappedFiles().end() ? &found->second : nullptr;
}

}  // namespace

void MappedNames::add(uint64_t volume, uint64_t number) {
    std::lock_guard lock(mutex());
    ++mappedFiles()[{volume, number}].times;
}

void MappedNames::drop(uint64_t volume, uint64_t number) {
    std::lock_guard lock(mutex());
    const auto found = mappedFiles().find({volume, number});
    if (found == mappedFiles().end() || --found->second.times > 0) return;
    for (const std::wstring& aside : found->second.aside) deleteFile(aside);
    mappedFiles().erase(found);
}

bool MappedNames::moveAside(const std::wstring& native) {
    std::lock_guard lock(mutex());
    Mapped* const mapped = find(native);
    if (mapped == nullptr) return false;
    const std::wstring aside = nameBeside(native, L".old");
    if (!persist([&] { return ::MoveFileExW(native.c_str(), aside.c_str(), 0) != 0; })) return false;
    mapped->aside.push_back(aside);
    return true;
}

bool MappedNames::deleteLater(const std::wstring& native) {
    std::lock_guard lock(mutex());
    Mapped* const mapped = find(native);
    if (mapped != nullptr) mapped->aside.push_back(native);
    return mapped != nullptr;
}

}  // namespace Public::Base
