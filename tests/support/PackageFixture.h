// What tests of the package reader have in common.
#pragma once

#include <fstream>
#include <sstream>

#include "Archive/NSISDecompile.h"
#include "PackageMaker.h"
#include "RecordingSink.h"
#include "TempDir.h"

namespace support {

inline std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
}

class PackageFixture : public testing::Test {
protected:
    std::string path(const std::string& name = "package.exe") const { return mDirectory.path() + "/" + name; }

    /// Builds and opens.
    bool openPackage(const PackageSpec& spec = {}) { return mReader.open(makePackage(spec, path()), ""); }
    bool openScript(const std::string& script, const PackageSpec::Files& sources = {}) {
        return mReader.open(compilePackage(script, sources, path()), "");
    }
    bool openBytes(const std::string& bytes) {
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
