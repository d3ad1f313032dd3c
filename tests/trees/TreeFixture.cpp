#include "TreeFixture.h"

#include "FileKinds.h"
#include "FileText.h"
#include "OrvInstaller/DependencyCopy.h"
#include "Public/Base/File.h"

namespace support {

namespace fs = std::filesystem;
using Public::Base::File;

namespace {

/// Below the directory, it first and each before the next by its name, depth first.
void addDirectories(const fs::path& directory, std::vector<std::string>& found) {
    const std::u8string path = directory.generic_u8string();
    found.emplace_back(path.begin(), path.end());
    std::set<fs::path> inside;
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (entry.is_directory()) inside.insert(entry.path());
    }
    for (const fs::path& one : inside) addDirectories(one, found);
}

fs::path systemPath(const std::string& path) { return std::u8string(path.begin(), path.end()); }

}  // namespace

TreeFixture::TreeFixture() { File::makeDirectory(mTarget); }

void TreeFixture::install(const DescribedTree& tree) {
    for (const DescribedModule& one : tree.modules) {
        File::makeDirectory(source(one.place).substr(0, source(one.place).rfind('/')));
        ASSERT_TRUE(File::copy(built(tree, one.place), source(one.place))) << one.place;
        if (one.place.front() == '.') hide(source(one.place.substr(0, one.place.find('/'))));
    }
}

std::string TreeFixture::built(const DescribedTree& tree, const std::string& place) {
    return ORV_TREES "/" + tree.name + "/" + place;
}

bool TreeFixture::copy() const { return Tarnwick::OrvUpdate::copyDependens(source("app.exe"), mSource, mTarget); }

std::set<std::string> TreeFixture::copied() const { return filesBelow(mTarget); }

std::vector<std::string> TreeFixture::searched() const {
    std::vector<std::string> directories;
    addDirectories(systemPath(mSource), directories);
    return directories;
}

}  // namespace support
