#include "Public/Base/FileEntry.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>

#include "Base/Posix/Descriptor.h"
#include "Base/Posix/NativePath.h"

namespace fs = std::filesystem;

namespace Public::Base {

namespace {

FileEntry::Kind kindOf(fs::file_type type) {
    switch (type) {
        case fs::file_type::not_found:
            return FileEntry::Kind::Absent;
        case fs::file_type::regular:
            return FileEntry::Kind::File;
        case fs::file_type::directory:
            return FileEntry::Kind::Directory;
        case fs::file_type::symlink:
            return FileEntry::Kind::Link;
        case fs::file_type::none:
            return FileEntry::Kind::Unknown;
        default:
            return FileEntry::Kind::Other;
    }
}

bool succeeded(const std::error_code& error) { return !error || failWith(error.value()); }

}  // namespace

FileEntry FileEntry::at(const std::string& path) {
    FileEntry entry;
    std::string native;
    if (!toNativePath(path, native)) return entry;
    std::error_code error;
    const fs::file_status status = fs::symlink_status(native, error);
    entry.kind = kindOf(status.type());
    if (entry.kind == Kind::Unknown) failWith(error.value());
    if (entry.kind != Kind::File && entry.kind != Kind::Directory) return entry;
    entry.permissions = static_cast<unsigned>(status.permissions());
    if (entry.kind == Kind::Directory) return entry;
    entry.modified = fs::last_write_time(native, error).time_since_epoch().count();
    if (!succeeded(error)) entry.kind = Kind::Unknown;
    return entry;
}

bool FileEntry::setPermissions(const std::string& path, unsigned permissions) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    std::error_code error;
    fs::permissions(native, static_cast<fs::perms>(permissions), error);
    return succeeded(error);
}

bool FileEntry::setModified(const std::string& path, int64_t modified) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    std::error_code error;
    fs::last_write_time(native, fs::file_time_type(fs::file_time_type::duration(modified)), error);
    return succeeded(error);
}

bool FileEntry::readLink(const std::string& path, std::string& target) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    std::error_code error;
    target = fs::read_symlink(native, error).string();
    return succeeded(error);
}

bool FileEntry::makeLink(const std::string& target, const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    std::error_code error;
    fs::create_symlink(target, native, error);  // the target as it is, "\\" too
    return succeeded(error);
}

bool FileEntry::rename(const std::string& from, const std::string& to) {
    std::string source;
    std::string target;
    if (!toNativePath(from, source) || !toNativePath(to, target)) return false;
    std::error_code error;
    fs::rename(source, target, error);
    return succeeded(error);
}

bool FileEntry::removeEmptyDirectory(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    std::error_code error;
    if (!fs::is_empty(native, error) && !error) return true;
    fs::remove(native, error);
    return succeeded(error);
}

bool FileEntry::isInUse(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    const Descriptor opened(openRetrying(native, O_WRONLY | O_NONBLOCK));
    return !opened.isOpen() && errno == ETXTBSY;
}

std::string FileEntry::resolved(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return {};
    std::error_code error;
    const fs::path whole = fs::absolute(native, error);
    if (!succeeded(error)) return {};
    const fs::path found = fs::weakly_canonical(whole, error);
    if (!succeeded(error)) return {};
    return (found.has_filename() ? found : found.parent_path()).string();
}

}  // namespace Public::Base
