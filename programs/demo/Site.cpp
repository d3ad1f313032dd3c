#include "Site.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Public/Base/Guid.h"

namespace fs = std::filesystem;

namespace {

/// The version that the made-up content of a file names in its first line.
std::string versionIn(const std::string& whole) {
    const std::string content = whole.substr(0, whole.find('\n'));
    const size_t at = content.find("version ");
    return at == std::string::npos ? "" : content.substr(at + 8, content.find_first_of(",\n", at) - at - 8);
}

}  // namespace

std::string readFile(const std::string& path) {
    std::ifstream input(path, std::ios::binary);
    std::ostringstream text;
    text << input.rdbuf();
    return text.str();
}

Site::Site(bool keep)
    : mRoot((fs::temp_directory_path() / ("orvdemo-" + Public::Base::Guid::createGuid().getStringStream())).string()),
      mKeep(keep) {
    for (const char* name : {"program", "store", "installed", "packages"}) fs::create_directories(path(name));
    fs::create_directories(path("machine/Windows/system32"));
}

Site::~Site() {
    std::error_code ignored;
    if (!mKeep) fs::remove_all(mRoot, ignored);
}

void Site::installHostAt(const std::string& directory, const std::string& cloudAddress) const {
    const fs::path program = path(directory);
    fs::create_directories(program);
    std::istringstream libraries(ORV_DEMO_LIBRARIES);
    for (std::string library; std::getline(libraries, library, ':');) {
        fs::copy_file(library, program / fs::path(library).filename());
    }
    for (const char* file : {ORV_DEMO_HOST, ORV_DEMO_INSTALLER, ORV_DEMO_LAUNCHER}) {
        fs::copy_file(file, program / fs::path(file).filename());
    }
    std::ofstream(program / "upgrade_domain.json") << "{\"domain\": \"" << cloudAddress << "\"}\n";
}

std::map<std::string, std::string> Site::files(const std::string& directory) const {
    std::map<std::string, std::string> found;
    if (!fs::exists(path(directory))) return found;
    for (const auto& entry : fs::recursive_directory_iterator(path(directory))) {
        if (entry.is_regular_file()) {
            found[fs::relative(entry.path(), path(directory)).string()] = readFile(entry.path().string());
        }
    }
    return found;
}

std::string Site::tree(const std::string& directory) const {
    std::string lines;
    for (const auto& [name, content] : files(directory)) {
        char line[160];
        std::snprintf(line, sizeof line, "%-24s %8zu bytes  %s\n", name.c_str(), content.size(),
                      versionIn(content).c_str());
        lines += line;
    }
    return lines.empty() ? "(empty)\n" : lines;
}
