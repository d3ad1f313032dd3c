// The steps that every test of a package has in common.
#pragma once

#include <cstdint>
#include <string>

#include "NsisParse.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/Function.h"

namespace Tarnwick::OrvUpdate {

/// What a package says of itself.
struct PackageFindings {
    std::string version;      // as it stands in the version resource
    uint32_t systemBits = 0;  // 0 when its content does not tell
};

/// Examines a package by signature, size and content. Decompresses it in full and writes nothing. Runs on the calling
/// thread, also beside other readers of the file.
/// @param acceptVersion asked as soon as the version is known, before the signature is judged; its error is the result.
///        An empty one accepts any version.
/// @return 0; -416 no such file; -302 not a readable package, badly signed, or unsigned and not whole; -606 the reader
///         reported an error, such as content that does not decode; -308 it lacks the client or the server
Public::Base::ErrorInfo examinePackage(
    const std::string& path,
    const Public::Base::Function<Public::Base::ErrorInfo(const std::string& version)>& acceptVersion,
    PackageFindings& findings);

/// The verdict on a package that has passed through the sink: 0, -606 or -308.
Public::Base::ErrorInfo judgeContent(const NsisParse& content);

}  // namespace Tarnwick::OrvUpdate
