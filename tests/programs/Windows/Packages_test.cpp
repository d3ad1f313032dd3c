// Packages as Windows itself runs them.
#include "FileText.h"
#include "HostTools.h"
#include "LogRecorder.h"
#include "OrvBackup.h"
#include "OrvInstaller.h"
#include "Program.h"
#include "TempDir.h"

namespace {

/// Every file of a directory with what it holds.
std::map<std::string, std::string> contentOf(const std::string& directory) {
    std::map<std::string, std::string> files;
    for (const auto& name : support::filesBelow(directory)) {
        files[name] = support::readText(directory + "/" + name).value_or("unreadable");
    }
    return files;
}

TEST(Packages, InstallByThemselvesWhatTheReaderUnpacks) {
    const support::TempDir dir;
    const support::LogRecorder log;
    const std::string package = dir.path() + "/package.exe";
    const auto made = support::runTool({{support::toolPath(ORV_SOURCE_DIR "/scripts/make-package.sh"), "--wide",
                                         "--version", "1.12.0.3", support::toolPath(package)}});
    ASSERT_EQ(made.code, 0) << made.errors;

    std::string byItself = dir.path() + "/itself";
    std::replace(byItself.begin(), byItself.end(), '/', '\\');
    EXPECT_EQ(support::runProgram({{package, "/S", "/D=" + byItself}}).status, 0);

    const std::string byReader = dir.path() + "/reader";
    const auto installer = std::make_shared<Tarnwick::OrvUpdate::OrvInstaller>(
        std::make_shared<Tarnwick::OrvUpdate::OrvBackup>(dir.path() + "/backup"), package,
        Tarnwick::OrvUpdate::VersionType_All);
    ASSERT_FALSE(installer->start(byReader, true, {}));
    while (!installer->finish()) std::this_thread::yield();
    installer->stop();
    EXPECT_FALSE(installer->getError());

    const auto files = contentOf(byReader);
    EXPECT_EQ(files.size(), 11U);
    EXPECT_EQ(files.count("Orv Server/tools/OrvService.exe"), 1U);
    EXPECT_TRUE(contentOf(byItself) == files);
}

}  // namespace
