// The version resource of an executable.
#pragma once

#include <map>
#include <string>

#include "PeImage.h"

namespace Archive {

struct VersionResource {
    bool found = false;
    std::string fixedFileVersion;                ///< "1.11.0.8"; empty when the fixed part is absent
    std::map<std::string, std::string> strings;  ///< "ProductVersion" and the like, in UTF-8; no empty ones
};

/// Reads the resource of language 1033, else the first. What is malformed in it is left out.
VersionResource readVersionResource(const PeImage& image);

}  // namespace Archive
