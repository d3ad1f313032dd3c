#include "Content.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <random>
#include <string_view>
#include <vector>

#include "Bench.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr uint64_t kProgramBytes = 240 * kMegabyte;
constexpr uint64_t kNoiseBytes = 60 * kMegabyte;
constexpr int kNoiseFiles = 12;
constexpr int kSignedFiles = 20;
constexpr uint64_t kSignedFileBytes = 15 * kMegabyte;  // of noise, which does not pack
constexpr uint64_t kSmallest = 256 << 10;
constexpr uint64_t kLargest = 32 << 20;

bool isProgram(const fs::directory_entry& entry) {
    std::error_code ignored;
    if (!entry.is_regular_file(ignored) || entry.is_symlink(ignored)) return false;
    const uint64_t size = entry.file_size(ignored);
    if (size < kSmallest || size > kLargest) return false;
    std::array<char, 4> head{};
    std::ifstream(entry.path(), std::ios::binary).read(head.data(), head.size());
    return std::string_view(head.data(), head.size()) ==
           "\x7f"
           "ELF";
}

std::vector<fs::path> findPrograms() {
    std::vector<fs::path> found;
    for (const auto& entry :
         fs::recursive_directory_iterator("/usr/lib", fs::directory_options::skip_permission_denied)) {
        if (isProgram(entry)) found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

void writeNoise(const std::string& path, uint64_t bytes, uint64_t seed, Noise noise = Noise::Bytes) {
    std::mt19937_64 random(seed);
    std::vector<uint64_t> words(8192);
    std::ofstream out(path, std::ios::binary);
    for (uint64_t left = bytes; left != 0;) {
        for (uint64_t& word : words) {
            word = random();
            if (noise == Noise::Letters) word = (word & 0x3F3F3F3F3F3F3F3F) + 0x2020202020202020;
        }
        const uint64_t piece = std::min<uint64_t>(left, words.size() * sizeof(uint64_t));
        out.write(reinterpret_cast<const char*>(words.data()), static_cast<std::streamsize>(piece));
        left -= piece;
    }
    require(out.flush().good(), "cannot write " + path);
}

/// Gives a directory that is whole or not there at all.
template <class Fill>
std::string makeOnce(const std::string& name, const Fill& fill) {
    const std::string path = dataPath(name);
    if (fs::exists(path)) return path;
    const std::string unfinished = freshDirectory(name + ".new");
    fill(unfinished);
    fs::rename(unfinished, path);
    return path;
}

std::string makeComponents(const std::string& directory) {
    for (const char* component : {"Orv Client", "Orv Server"}) fs::create_directory(directory + "/" + component);
    return directory + "/Orv Client/";
}

}  // namespace

std::string programContent() {
    return makeOnce("programs", [](const std::string& directory) {
        const std::string target = makeComponents(directory);
        uint64_t bytes = 0;
        for (const fs::path& file : findPrograms()) {
            if (bytes >= kProgramBytes) break;
            if (!fs::copy_file(file, target + file.filename().string(), fs::copy_options::skip_existing)) continue;
            bytes += fs::file_size(file);
        }
        require(bytes >= kProgramBytes, "this machine has too few libraries for the content of a package");
        for (int i = 0; i < kNoiseFiles; ++i) {
            writeNoise(directory + "/Orv Server/media" + std::to_string(i), kNoiseBytes / kNoiseFiles,
                       static_cast<uint64_t>(i));
        }
    });
}

std::string noiseContent(const std::string& name, int files, uint64_t bytesPerFile, Noise noise) {
    return makeOnce(name, [&](const std::string& directory) {
        const std::string target = makeComponents(directory);
        for (int i = 0; i < files; ++i) {
            writeNoise((i % 2 == 0 ? target : directory + "/Orv Server/") + "part" + std::to_string(i), bytesPerFile,
                       static_cast<uint64_t>(i), noise);
        }
    });
}

std::string noiseFile(const std::string& name, uint64_t bytes) {
    return makeOnce(name, [&](const std::string& directory) { writeNoise(directory + "/noise", bytes, 1); }) + "/noise";
}

std::string package(const std::string& name, const std::string& content, const std::string& options) {
    const std::string path = dataPath(name + ".exe");
    if (fs::exists(path)) return path;
    const std::string unfinished = dataPath(name + ".new.exe");
    run(shellWord(ORV_BENCH_MAKE_PACKAGE) + " --version 1.0.0.0 --input " + shellWord(content) + " " + options + " " +
        shellWord(unfinished));
    fs::rename(unfinished, path);
    return path;
}

std::string largeContent() { return noiseContent("letters", 90, 16 << 20, Noise::Letters); }

std::string largePackage() {
    // Three quarters of the bytes are left after packing.
    const std::string large = package("large", largeContent(), "--compressor zlib --separate");
    require(fs::file_size(large) >= uint64_t{1} << 30, "the package is less than 1 GiB");
    return large;
}

std::string signedPackage(const std::string& root) {
    const std::string path = dataPath("signed.exe");
    if (std::filesystem::exists(path)) return path;
    const std::string rootKey = dataPath("root-key.pem");
    const std::string key = dataPath("publisher-key.pem");
    const std::string certificate = dataPath("publisher.pem");
    run("openssl req -x509 -newkey rsa:2048 -nodes -days 9000 -subj '/CN=Orv Bench Root' -keyout " +
        shellWord(rootKey) + " -out " + shellWord(root));
    run("openssl req -x509 -newkey rsa:2048 -nodes -days 9000 -subj '/CN=Orv Bench' -CA " + shellWord(root) +
        " -CAkey " + shellWord(rootKey) +
        " -addext basicConstraints=critical,CA:FALSE -addext keyUsage=digitalSignature" +
        " -addext extendedKeyUsage=codeSigning -keyout " + shellWord(key) + " -out " + shellWord(certificate));
    const std::string plain =
        package("plain", noiseContent("noise", kSignedFiles, kSignedFileBytes), "--compressor zlib --separate");
    run("osslsigncode sign -certs " + shellWord(certificate) + " -key " + shellWord(key) + " -h sha256 -in " +
        shellWord(plain) + " -out " + shellWord(path + ".new"));
    std::filesystem::rename(path + ".new", path);
    return path;
}

uint64_t sizeOf(const std::string& directory) {
    uint64_t bytes = 0;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) bytes += entry.file_size();
    }
    return bytes;
}

}  // namespace bench
