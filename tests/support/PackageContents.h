// What packages of the grid hold: one kind of content after another.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "PackageMaker.h"

namespace support {

/// A kind of content, for a package of any storage.
struct PackageContents {
    std::string name;
    /// Adds the content to what the package is to hold. @return item names as the reader spells them, with what they
    /// hold
    std::map<std::string, std::string> (*add)(PackageSpec& spec);
    /// Whether 7zz gives the items the same names: it knows neither strings of the language nor a package's code page.
    enum Spelling { Alike, AlikeInUnicode, Apart } spelling = Alike;
};

/// Sections, trees, variables in names, items of every size, an uninstaller, foreign scripts.
const std::vector<PackageContents>& packageContents();

/// Bytes that look like chance and do not pack.
std::string noise(size_t size, uint32_t seed);
/// Words that pack to a third or so.
std::string words(size_t size, uint32_t seed);

}  // namespace support
