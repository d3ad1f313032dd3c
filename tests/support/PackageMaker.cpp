#include "PackageMaker.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include "HostTools.h"

namespace fs = std::filesystem;

namespace support {
namespace {

uint64_t fnv(uint64_t hash, const std::string& text) {
    for (unsigned char c : text) hash = (hash ^ c) * 0x100000001b3ull;
    return (hash ^ 0xff) * 0x100000001b3ull;
}

std::string cacheKey(const std::string& script, const PackageSpec::Files& sources) {
    uint64_t first = 0xcbf29ce484222325ull, second = 0x9e3779b97f4a7c15ull;
    auto add = [&](const std::string& text) {
        first = fnv(first, text);
        second = fnv(second, text + "#");
    };
    add(script);
    for (const auto& [name, content] : sources) {
        add(name);
        add(content);
    }
    char key[40];
    std::snprintf(key, sizeof key, "%016llx%016llx", static_cast<unsigned long long>(first),
                  static_cast<unsigned long long>(second));
    return key;
}

std::string uniqueName() {
    std::random_device random;
    return std::to_string(random()) + "-" + std::to_string(random());
}

void save(const fs::path& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
}

/// Gives a finished file the name under which it is kept. Another process may have been faster, and be reading its own.
void keepAs(const fs::path& finished, const fs::path& kept) {
    std::error_code lost;
    fs::rename(finished, kept, lost);
    if (lost && !fs::exists(kept)) throw std::runtime_error("cannot make " + kept.string() + ": " + lost.message());
}

/// A text as the script's language quotes it.
std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '$')
            out += "$$";
        else if (c == '"')
            out += "$\\\"";
        else
            out += c;
    }
    return out + "\"";
}

/// The numbers of a version text, padded to the four that the fixed version holds.
std::string fourNumbers(const std::string& version) {
    std::string numbers = version.substr(0, version.find_first_not_of("0123456789."));
    for (auto points = std::count(numbers.begin(), numbers.end(), '.'); points < 3; ++points) numbers += ".0";
    return numbers;
}

void writeVersionResource(std::ostream& script, const PackageSpec& spec) {
    if (!spec.versionResource) return;
    const std::string numbers = fourNumbers(spec.version);
    script << "VIProductVersion " << numbers << "\nVIFileVersion " << numbers << "\n";
    auto key = [&](const char* name, const std::string& value) {
        script << "VIAddVersionKey /LANG=1033 " << name << " " << quoted(value) << "\n";
    };
    key("ProductName", spec.product);
    if (spec.productVersionText) key("ProductVersion", spec.version);
    // The compiler warns without it, but builds.
    if (spec.fileVersionText) key("FileVersion", spec.version);
    key("Comments", spec.comment);
    key("FileDescription", spec.product + " upgrade");
    key("LegalCopyright", "Orv");
}

/// Directory and base name of an item; the directory has the install directory in front.
std::pair<std::string, std::string> splitName(const std::string& name) {
    const size_t cut = name.rfind('\\');
    if (cut == std::string::npos) return {"$INSTDIR", name};
    std::string directory = quoted(name.substr(0, cut));
    return {"$INSTDIR\\" + directory.substr(1, directory.size() - 2), name.substr(cut + 1)};
}

/// The section's part that stores the files, and their sources under plain numbered names.
void writeFiles(std::ostream& script, const PackageSpec::Files& files, PackageSpec::Files& sources) {
    std::string current;
    for (const auto& [name, content] : files) {
        const auto [directory, base] = splitName(name);
        if (directory != current) script << "SetOutPath \"" << directory << "\"\n";
        current = directory;
        const std::string source = "f" + std::to_string(sources.size());
        std::string target = quoted("/oname=" + base);
        script << "File " << target << " " << source << "\n";
        sources.emplace_back(source, content);
    }
}

std::string reproducibleBytes(const std::string& seed, size_t size) {
    std::mt19937_64 random(fnv(0xcbf29ce484222325ull, seed));
    std::string bytes;
    while (bytes.size() < size) {
        bytes += seed + " section text. ";
        for (int i = 0; i < 16; ++i) bytes.push_back(static_cast<char>(random() & 0xff));
    }
    bytes.resize(size);
    return bytes;
}

std::string compoundDocument(const std::string& seed) {
    static const std::string kMagic("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8);
    return kMagic + reproducibleBytes(seed, 1500);
}

/// Runs the compiler in a directory of its own and gives the package's path there.
fs::path compile(const fs::path& stage, const std::string& script, const PackageSpec::Files& sources) {
    fs::create_directories(stage);
    for (const auto& [name, content] : sources) {
        const fs::path target = stage / name;
        fs::create_directories(target.parent_path());
        save(target, content);
    }
    save(stage / "package.nsi", script);
    const auto result =
        runTool({.words = {"makensis", "-V2", "-INPUTCHARSET", "UTF8", "package.nsi"}, .directory = stage.string()});
    if (result.code != 0 || !fs::exists(stage / "package.exe")) {
        fs::remove_all(stage);
        throw std::runtime_error("makensis: " + result.output + result.errors);
    }
    return stage / "package.exe";
}

}  // namespace

std::string programImage(int bits, const std::string& seed, size_t size) {
    std::string image(256, '\0');
    image[0] = 'M';
    image[1] = 'Z';
    image[60] = 64;
    image.replace(64, 2, "PE");
    image[68] = static_cast<char>(bits == 32 ? 0x4c : 0x64);
    image[69] = static_cast<char>(bits == 32 ? 0x01 : 0x86);
    image[88] = 0x0b;
    image[89] = static_cast<char>(bits == 32 ? 0x01 : 0x02);
    return image + reproducibleBytes(seed + (bits == 32 ? " 32" : " 64"), size > 256 ? size - 256 : 0);
}

PackageSpec::Files defaultFiles(const PackageSpec& spec) {
    PackageSpec::Files files;
    if (spec.bits != 0) files.emplace_back("win" + std::to_string(spec.bits) + ".sysbits", "");
    const std::string mark = " " + spec.version;
    if (spec.layout == PackageSpec::Msi) {
        for (const char* role : {"Client", "Server", "VideoWall", "Analytics"})
            files.emplace_back(std::string(role) + ".msi", compoundDocument(role + mark));
        return files;
    }
    auto program = [&](const std::string& name, const std::string& seed) {
        files.emplace_back(name, programImage(spec.bits, seed + mark));
    };
    program("Orv Client\\OrvClient.exe", "OrvClient");
    program("Orv Client\\core.dll", "core");
    program("Orv Client\\lang\\zh-CN.dll", "zh-CN");
    program("Orv Server\\OrvServer.exe", "OrvServer");
    program("Orv Server\\core.dll", "core");  // the same bytes as the client's: the compiler stores them once
    program("Orv Server\\tools\\OrvService.exe", "OrvService");
    program("Orv VideoWall\\OrvVideoWall.exe", "OrvVideoWall");
    program("Orv VideoWall\\render.dll", "render");
    return files;
}

std::string makePackage(const PackageSpec& spec, const std::string& outPath) {
    std::ostringstream script;
    script
        << (spec.wideStub  ? "Target amd64-unicode"
            : spec.unicode ? "Unicode true"
                           : "Unicode false")
        << "\n"
        << (spec.compressor == "none" ? "SetCompress off"
                                      : std::string("SetCompressor ") + (spec.solid ? "/SOLID " : "") + spec.compressor)
        << "\nCRCCheck " << spec.crc << "\nName " << quoted(spec.product)
        << "\nOutFile package.exe\nInstallDir \"$PROGRAMFILES\\Orv\"\nRequestExecutionLevel admin\nSetDateSave off\n";
    writeVersionResource(script, spec);
    script << spec.headerScript << "\nSection \"Main\"\n";
    PackageSpec::Files sources;
    writeFiles(script, spec.files.empty() ? defaultFiles(spec) : spec.files, sources);
    if (spec.uninstaller) script << "WriteUninstaller \"$INSTDIR\\uninst.exe\"\n";
    sources.insert(sources.end(), spec.extraSources.begin(), spec.extraSources.end());
    script << spec.extraScript << "\nSectionEnd\n";
    if (spec.uninstaller) script << "Section \"Uninstall\"\nDelete \"$INSTDIR\\uninst.exe\"\nSectionEnd\n";
    return compilePackage(script.str(), sources, outPath);
}

std::string compilePackage(const std::string& script, const PackageSpec::Files& sources, const std::string& outPath) {
    const fs::path cache = ORV_TEST_PACKAGES;
    const fs::path cached = cache / (cacheKey(script, sources) + ".exe");
    if (!fs::exists(cached)) {
        const fs::path stage = cache / ("stage-" + uniqueName());
        keepAs(compile(stage, script, sources), cached);
        fs::remove_all(stage);
    }
    if (fs::path(outPath).has_parent_path()) fs::create_directories(fs::path(outPath).parent_path());
    fs::remove(outPath);  // to put one file in the place of another is more than every standard library can
    fs::copy_file(cached, outPath);
    return outPath;
}

}  // namespace support
