// An install directory, and what lies outside of it.
#pragma once

#include "FileText.h"
#include "OrvInstaller/OutputFile.h"
#include "TempDir.h"

namespace Tarnwick::OrvUpdate {

class OutputFile : public testing::Test {
protected:
    OutputFile() {
        std::filesystem::create_directories(mInstall);
        std::filesystem::create_directories(mOutside);
    }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
    const std::string mInstall = mRoot + "/install";
    const std::string mOutside = mRoot + "/outside";
};

}  // namespace Tarnwick::OrvUpdate
