// A version store in a directory of its own, filled with real packages.
#pragma once

#include <string>

#include "OrvVersion.h"
#include "PackageMaker.h"
#include "PackageSigner.h"
#include "TempDir.h"

namespace support {

/// Paths are relative to the store's root and use "/"; missing directories are made.
class PackageStore {
public:
    /// Root of the store.
    std::string path() const;
    std::string path(const std::string& relative) const;

    /// Puts a sound unsigned package there. @return its full path
    std::string put(const std::string& relative, const PackageSpec& spec = {}) const;
    std::string put(const std::string& relative, const std::string& version) const;
    std::string putSigned(const std::string& relative, SigningKit::Signer signer = SigningKit::Publisher,
                          const PackageSpec& spec = {}) const;
    std::string putText(const std::string& relative, const std::string& content) const;

    /// What a scan of the store finds.
    Tarnwick::OrvUpdate::VersionSet scan(
        const std::shared_ptr<Tarnwick::OrvUpdate::IGetServerId>& getServerId = nullptr) const;

private:
    TempDir mDirectory;
};

/// Adds bytes at the end of a file.
void appendBytes(const std::string& path, const std::string& bytes);
/// Cuts bytes off its end.
void cutBytes(const std::string& path, size_t count);
/// Makes the package's first header claim every byte of the file, as if all that was appended belonged to the archive.
void claimAllBytes(const std::string& path);
/// Inverts one byte in its middle.
void flipMiddleByte(const std::string& path);

}  // namespace support
