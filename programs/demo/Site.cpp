#include "Site.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Public/Base/File.h"
#include "Public/Base/Guid.h"

namespace fs = std::filesystem;

namespace {

/// The version that the made-up content of a file names in its first line.
std::string versionIn(const std::string& whole) {
    const std::string content = whole.substr(0, whole.find('\n'));
    const size_t at = content.find("version ");
    return at == std::string::npos ? "" : content.substr(at + 8, content.find_first_of(",\n", at) - at - 8);
}

/// With "/".
std::string textOf(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

}  // namespace

fs::path sitePath(const std::string& text) { return std::u8string(text.begin(), text.end()); }

std::string readFile(const std::string& path) {
    const Public::Base::SharedBuffer content = Public::Base::File::load(path);
    return {content.buf(), content.size()};
}

Site::Site(bool keep)
    : mRoot(textOf(fs::temp_directory_path() / ("orvdemo-" + Public::Base::Guid::createGuid().getStringStream()))),
      mHere(sitePath(Public::Base::File::getExcutableFileFullPath())),
      mKeep(keep) {
    for (const char* name : {"program", "store", "installed", "packages"}) fs::create_directories(sitePath(path(name)));
    fs::create_directories(sitePath(path("machine/Windows/system32")));
}

Site::~Site() {
    std::error_code ignored;
    if (!mKeep) fs::remove_all(sitePath(mRoot), ignored);
}

void Site::installHostAt(const std::string& directory, const std::string& cloudAddress) const {
    const fs::path program = sitePath(path(directory));
    fs::create_directories(program);
    // Those that are not told by their whole path lie beside this program.
    std::istringstream files(ORV_DEMO_FILES);
    for (std::string file; std::getline(files, file, ':');) {
        fs::copy_file(mHere / sitePath(file), program / sitePath(file).filename());
    }
    std::ofstream(program / "upgrade_domain.json") << "{\"domain\": \"" << cloudAddress << "\"}\n";
}

std::map<std::string, std::string> Site::files(const std::string& directory) const {
    std::map<std::string, std::string> found;
    const fs::path top = sitePath(path(directory));
    if (!fs::exists(top)) return found;
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
        if (entry.is_regular_file()) found[textOf(fs::relative(entry.path(), top))] = readFile(textOf(entry.path()));
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
