// What tests of the package reader have in common.
#pragma once

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "Archive/NSISDecompile.h"
#include "PackageMaker.h"
#include "RecordingSink.h"
#include "TempDir.h"

namespace support {

inline std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(std::filesystem::path(path), std::ios::binary).rdbuf();
    return text.str();
}

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream out(std::filesystem::path(path), std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

class PackageFixture : public testing::Test {
protected:
    std::string path(const std::string& name = "package.exe") const { return mDirectory.path() + "/" + name; }

    // Each puts its package in the place of the one before, which must be closed for that.

    /// Builds and opens.
    bool openPackage(const PackageSpec& spec = {}) {
        mReader.close();
        return mReader.open(makePackage(spec, path()), "");
    }
    bool openScript(const std::string& script, const PackageSpec::Files& sources = {}) {
        mReader.close();
        return mReader.open(compilePackage(script, sources, path()), "");
    }
    bool openBytes(const std::string& bytes) {
        mReader.close();
        writeFile(path(), bytes);
        return mReader.open(path(), "");
    }
    bool extract() { return mReader.extract(mSink); }
    std::list<std::string> names() {
        std::list<std::string> items;
        mReader.getItems(items);
        return items;
    }
    using Names = std::list<std::string>;
    using Errors = std::vector<IExtractOutFile::ErrorCode>;

    TempDir mDirectory;
    NSISDecompile mReader;
    std::shared_ptr<RecordingSink> mSink = std::make_shared<RecordingSink>();
};

}  // namespace support
