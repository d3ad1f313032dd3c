// What the packages of the benchmarks hold, and the packages themselves. All of it is made once and kept.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

constexpr uint64_t kMegabyte = 1000000;

/// A directory of 300 MB: programs and libraries of this machine, as in a real package, and a fifth of noise, which
/// stands for media.
std::string programContent();

enum class Noise {
    Bytes,   ///< does not pack
    Letters  ///< 64 different ones: a quarter goes when it is packed
};

/// A directory of noise in files of equal size.
std::string noiseContent(const std::string& name, int files, uint64_t bytesPerFile, Noise noise = Noise::Bytes);

/// A file of noise.
std::string noiseFile(const std::string& name, uint64_t bytes);

/// A package of the version 1.0.0.0 for 64 bits, with that content, in both components' layout.
/// @param options of the package script: the compressor and the storage
std::string package(const std::string& name, const std::string& content, const std::string& options);

/// A package of 1 GiB, and what it holds: files of 16 MiB.
std::string largePackage();
std::string largeContent();

/// A package of 300 MB that a publisher has signed. @param root where the authority's certificate lies, or is put
std::string signedPackage(const std::string& root);

/// Bytes of all files below the directory.
uint64_t sizeOf(const std::string& directory);

}  // namespace bench
