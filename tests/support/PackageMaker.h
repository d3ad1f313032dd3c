// Builds real installer packages with the package compiler, for tests of every unit.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace support {

/// What a package is to hold and how. The default is a sound 64-bit package of the tree layout, a few kilobytes long.
struct PackageSpec {
    enum Layout { Tree, Msi };
    using Files = std::vector<std::pair<std::string, std::string>>;  // name with backslashes, content

    std::string version = "1.11.0.8";
    int bits = 64;  ///< 32 or 64: the marker item and the programs; 0 leaves the marker out and makes 64-bit programs
    Layout layout = Tree;
    std::string compressor = "lzma";  ///< lzma, zlib, bzip2; none leaves all plain, the header too
    bool solid = true;
    bool unicode = true;
    bool wideStub = false;   ///< a 64-bit installer; these are Unicode ones
    std::string crc = "on";  ///< on, off, force
    Files files = {};        ///< in this order; empty: defaultFiles
    bool versionResource = true;
    bool productVersionText = true;  ///< the resource's ProductVersion string
    bool fileVersionText = true;     ///< the resource's FileVersion string
    std::string product = "Orv Suite";
    std::string comment = "Orv upgrade package";
    std::string headerScript = {};  ///< further script before the section
    Files extraSources = {};        ///< for the scripts, under these names; directories with "/"
    std::string extraScript = {};   ///< further script at the end of the section
    bool uninstaller = false;       ///< writes "uninst.exe" into the install directory
};

/// A program image that passes for one: MZ and PE heads with the word size's magic, then reproducible bytes.
/// @param bits 32 or 64   @param seed makes one image differ from another   @param size at least 256
std::string programImage(int bits, const std::string& seed, size_t size = 1024);

/// The items of a package when none are named: the word-size marker, then "Orv Client\\OrvClient.exe" and the like,
/// or "Client.msi" and the like.
PackageSpec::Files defaultFiles(const PackageSpec& spec);

/// Builds the package, or takes it from the cache that all builds of this checkout share, and puts a copy at outPath,
/// whose directory is made when missing. Safe with other test processes. Throws std::runtime_error with the compiler's
/// words.
/// @return outPath
std::string makePackage(const PackageSpec& spec, const std::string& outPath);

/// The same for any script of the package compiler (UTF-8). It finds the given files, by their plain names, in its
/// working directory and must write "package.exe".
std::string compilePackage(const std::string& script, const PackageSpec::Files& sources, const std::string& outPath);

}  // namespace support
