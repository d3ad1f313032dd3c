#include "PackageStore.h"

#include <stdexcept>

#include "FileText.h"

namespace fs = std::filesystem;
using Tarnwick::OrvUpdate::OrvVersion;
using Tarnwick::OrvUpdate::VersionSet;

namespace support {

std::string PackageStore::path() const { return mDirectory.path(); }

std::string PackageStore::path(const std::string& relative) const { return path() + "/" + relative; }

std::string PackageStore::put(const std::string& relative, const PackageSpec& spec) const {
    return makePackage(spec, path(relative));
}

std::string PackageStore::put(const std::string& relative, const std::string& version) const {
    PackageSpec spec;
    spec.version = version;
    return put(relative, spec);
}

std::string PackageStore::putSigned(const std::string& relative, SigningKit::Signer signer,
                                    const PackageSpec& spec) const {
    TempDir workshop;
    const std::string unsignedPackage = makePackage(spec, workshop.path() + "/package.exe");
    const std::string target = path(relative);
    fs::create_directories(fs::path(target).parent_path());
    SigningKit().sign(unsignedPackage, target, signer);
    return target;
}

std::string PackageStore::putText(const std::string& relative, const std::string& content) const {
    writeText(path(relative), content);
    return path(relative);
}

VersionSet PackageStore::scan(const std::shared_ptr<Tarnwick::OrvUpdate::IGetServerId>& getServerId) const {
    VersionSet found;
    if (OrvVersion::parseVersionFromCache(nullptr, path(), found, getServerId)) {
        throw std::runtime_error("the scan of a store must not fail");
    }
    return found;
}

void appendBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

void cutBytes(const std::string& path, size_t count) { fs::resize_file(path, fs::file_size(path) - count); }

void claimAllBytes(const std::string& path) {
    std::string bytes = readText(path).value();
    const size_t magic = bytes.find("\xef\xbe\xad\xdeNullsoftInst");
    if (magic == std::string::npos) throw std::runtime_error("no package: " + path);
    // The flags stand before the magic; the length of all data, from the flags on, follows that of the header.
    const size_t length = bytes.size() - (magic - 4);
    for (size_t byte = 0; byte < 4; ++byte) bytes[magic + 20 + byte] = static_cast<char>(length >> (8 * byte));
    writeText(path, bytes);
}

void flipMiddleByte(const std::string& path) {
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    const auto middle = static_cast<std::streamoff>(fs::file_size(path) / 2);
    file.seekg(middle);
    const char byte = static_cast<char>(file.get());
    file.seekp(middle);
    file.put(static_cast<char>(~byte));
}

}  // namespace support
