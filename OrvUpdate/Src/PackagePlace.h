// The place of a package in the store, which one installation may test while another fills it anew.
#pragma once

#include <string>

#include "Public/Base/File.h"
#include "Public/Base/System.h"

namespace Tarnwick::OrvUpdate {

/// Opens an empty file where a package is to arrive. What lies there is taken away, not cut: a test that is reading it
/// keeps it, and can tell the new one from it. @return false when it cannot be opened (ErrorInfo::getLastError)
bool openPackageAnew(Public::Base::File& file, const std::string& path);

/// A package under test, held from its beginning to the verdict.
class TestedPackage {
public:
    explicit TestedPackage(const std::string& path);

    /// Removes the package, unless another has come to its place meanwhile. @return false when another has
    bool discard();

private:
    const std::string mPath;
    Public::Base::MappedFile mFile;
    bool mWasThere;
};

}  // namespace Tarnwick::OrvUpdate
