// The programs as a user starts them.
#include "FileText.h"
#include "HostTools.h"
#include "HttpFileServer.h"
#include "PackageMaker.h"
#include "Program.h"
#include "Public/Base/Process.h"
#include "TempDir.h"

using support::readText;
using support::runProgram;
using support::writeText;

namespace {

/// Of the demonstration.
const char* const kToldInOrder[] = {"  A server runs 1.11.0.8\n",
                                    "installer    installed\n",
                                    "  The cloud serves 1.13.0.1 with one byte changed\n",
                                    "the package has been thrown away\n",
                                    "installer    restored: ",
                                    "the user has thought better of it",
                                    "  Three servers and two clients of a site run 1.11.0.8\n",
                                    "every node sees the three servers\n",
                                    "master       server-a\n",
                                    "a client of 1.11.0.8 with a system of 1.14.0.2: no\n",
                                    "/VersionCompatible\n",
                                    "rules        1.0.0.7, fetched from the page\n",
                                    "asked 3 times: once for each server\n",
                                    "a client of 1.11.0.8 with a system of 1.14.0.2: yes\n",
                                    "answered     server-a, server-b, server-c, the cloud\n",
                                    "server-a that there may be something newer\n",
                                    "  server-a fetches 1.12.0.3 from the cloud\n",
                                    "bytes, each as in the package\n",
                                    "  client-2 pulls 1.12.0.3 from server-a, through its own server\n",
                                    "entry        1.12.0.3 on server-a\n",
                                    "bytes, each as in the package\n",
                                    "  client-1 fetches 1.12.0.3 from the cloud and passes it on to server-c\n",
                                    "bytes, each as in the package\n",
                                    "  A user of client-1 brings 1.14.0.2 and uploads it to the master\n",
                                    "ended        at server-a, with error 0\n",
                                    "bytes, each as in the package\n",
                                    "  client-1 has server-b fetch 1.14.0.2 from the master, and watches\n",
                                    "bytes, each as in the package\n",
                                    "  client-1 has server-b install 1.14.0.2\n",
                                    "the installer runs; server-b is told to end itself\n",
                                    "server-a sees that server-b is gone\n",
                                    "installer    installed\n",
                                    "server-b is back and runs 1.14.0.2\n",
                                    "client-1 sees that server-b runs the wanted version, error 0\n",
                                    "every replaced file was saved first:\n",
                                    "  What lies in the stores now\n",
                                    "     Manual/Windows x64 All/1.14.0.2/1.14.0.2.exe ",
                                    "\nEverything was as expected.\n"};

TEST(Programs, DemonstrationEndsWithEverythingAsExpected) {
    const support::TempDir dir;
    const std::string temporary = dir.path() + "/with blank, $HOME and \xC3\xA9";
    const std::string packages = dir.path() + "/packages";
    std::filesystem::create_directories(std::u8string(temporary.begin(), temporary.end()));
    std::filesystem::create_directories(packages);
    // Made here, since the program for Windows has no package compiler to ask.
    std::istringstream list(runProgram({{ORV_DEMO, "--list-packages"}}).output);
    for (std::string line; std::getline(list, line);) {
        std::istringstream words(line);
        support::ToolCall make{{support::toolPath(ORV_SOURCE_DIR "/scripts/make-package.sh")}, packages};
        for (std::string word; words >> word;) make.words.push_back(word);
        const auto made = support::runTool(make);
        ASSERT_EQ(made.code, 0) << line << ": " << made.errors;
    }
    const auto end = runProgram({{ORV_DEMO, "--packages", packages}, temporary});
    EXPECT_EQ(end.status, 0) << end.output << end.errors;
    // Each step with what must have happened in it, in this order.
    size_t at = 0;
    for (const char* line : kToldInOrder) {
        const size_t found = end.output.find(line, at);
        EXPECT_NE(found, std::string::npos) << line << " is not told behind what comes before it:\n" << end.output;
        if (found != std::string::npos) at = found;
    }
    EXPECT_EQ(end.output.find("NOT AS EXPECTED"), std::string::npos) << end.output;
    EXPECT_TRUE(std::filesystem::is_empty(std::u8string(temporary.begin(), temporary.end())));
}

TEST(Programs, DemonstrationWithoutATemporaryDirectorySaysSo) {
    const support::TempDir dir;
    const auto end = runProgram({{ORV_DEMO}, dir.path() + "/none"});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("orvdemo: "), std::string::npos) << end.errors;
}

TEST(Programs, DemonstrationRefusesOptionsThatItDoesNotKnow) {
    EXPECT_EQ(runProgram({{ORV_DEMO, "--fast"}}).status, 2);
    EXPECT_EQ(runProgram({{ORV_DEMO, "--packages"}}).status, 2);
}

TEST(Programs, InstallerReportsThatItsArgumentsAreBad) {
    const support::TempDir dir;
    const std::string report = dir.path() + "/report.json";
    EXPECT_EQ(runProgram({{ORV_INSTALLER, "/p", "/i", "server", "1", report, "", "1"}}).status, 2);
    const std::string text = readText(report).value_or("");
    EXPECT_NE(text.find("\"restored\""), std::string::npos) << text;
    EXPECT_NE(text.find("ROLE is none of 1 to 5"), std::string::npos) << text;
}

TEST(Programs, InstallerEndsWhatItHasBegunAlsoWhenItIsAskedToEnd) {
    const support::TempDir dir;
    const std::string package = support::makePackage({}, dir.path() + "/package.exe");
    const std::string report = dir.path() + "/report.json", backup = dir.path() + "/backup";
    // A host that does not end: another installer, which waits for this process.
    support::RunningProgram host(
        {{ORV_INSTALLER, package, dir.path() + "/other", "3", std::to_string(Public::Base::Process::getProcessId()), "",
          dir.path() + "/saved", "1"}});
    support::RunningProgram installer(
        {{ORV_INSTALLER, package, dir.path() + "/installed", "3", std::to_string(host.id()), report, backup, "1"}});
    // By the time that it has made a directory it has seen to that.
    while (!std::filesystem::exists(backup) && !installer.endsWithin({})) std::this_thread::yield();
    installer.askToEnd();
    EXPECT_FALSE(installer.endsWithin(std::chrono::milliseconds(20)));
    EXPECT_TRUE(host.kill());
    EXPECT_EQ(installer.wait(), 0);
    EXPECT_NE(readText(report).value_or("").find("\"installed\""), std::string::npos);
}

TEST(Programs, InstallerEndsWithStatusOneAtADamagedJournal) {
    const support::TempDir dir;
    const std::string package = support::makePackage({}, dir.path() + "/package.exe");
    const std::string report = dir.path() + "/report.json";
    writeText(dir.path() + "/backup/orvinstaller.journal", "orvinstaller journal 7\n");
    writeText(dir.path() + "/backup/saved.dll", "kept");
    EXPECT_EQ(
        runProgram({{ORV_INSTALLER, package, dir.path() + "/installed", "3", "0", report, dir.path() + "/backup", "1"}})
            .status,
        1);
    const std::string text = readText(report).value_or("");
    EXPECT_NE(text.find("\"damaged\""), std::string::npos) << text;
    EXPECT_NE(text.find("was written by another version of the installer"), std::string::npos) << text;
    EXPECT_EQ(readText(dir.path() + "/backup/saved.dll"), "kept");
    EXPECT_FALSE(std::filesystem::exists(dir.path() + "/installed"));
}

TEST(Programs, InstallerWithoutItsSevenArgumentsTellsHowItIsUsed) {
    const auto end = runProgram({{ORV_INSTALLER, "one", "two"}});
    EXPECT_EQ(end.status, 2);
    EXPECT_NE(end.errors.find("usage: orvinstaller PACKAGE"), std::string::npos) << end.errors;
}

TEST(Programs, LauncherIsAProgramOfTheOtherSystemThatNamesTheNativeOne) {
    const std::string bytes = readText(ORV_LAUNCHER).value_or("");
    ASSERT_GT(bytes.size(), 0x200U);
    EXPECT_EQ(bytes.substr(0, 2), "MZ");
    EXPECT_NE(bytes.find(std::string("orvinstaller\0", 13)), std::string::npos);
    EXPECT_NE(bytes.find("libOrvUpdate.so"), std::string::npos);
}

TEST(Programs, LauncherRunsTheNativeProgramBesideIt) {
    const support::TempDir dir;
    const std::string launcher = dir.path() + "/with blank/orvInstaller.exe";
    std::filesystem::create_directories(dir.path() + "/with blank");
    std::filesystem::copy_file(ORV_LAUNCHER, launcher);
    writeText(dir.path() + "/with blank/orvinstaller", "#!/bin/sh\necho \"$# $2\" > '" + dir.path() + "/out'\n");
    std::filesystem::permissions(dir.path() + "/with blank/orvinstaller", std::filesystem::perms::owner_all);
    EXPECT_EQ(runProgram({{"/bin/sh", launcher, "a", "b c"}}).status, 0);
    EXPECT_EQ(readText(dir.path() + "/out"), "2 b c\n");
}

class ExampleHost : public testing::Test {
protected:
    ExampleHost() {
        const std::string url = mCloud.url("");
        writeText(mDir.path() + "/program/upgrade_domain.json",
                  "{\"domain\":\"" +
                      url.substr(url.find("//") + 2, url.find('/', url.find("//") + 2) - url.find("//") - 2) + "\"}");
    }
    int start() {
        mEnd = runProgram({{mProgram, mDir.path() + "/store", mDir.path() + "/installed"}});
        return mEnd.status;
    }
    std::string out() { return mEnd.output; }

    support::TempDir mDir;
    const std::string mProgram = support::copyProgram(ORV_EXAMPLE, mDir.path() + "/program");
    support::ProgramEnd mEnd;
    support::HttpFileServer mCloud;
};

TEST_F(ExampleHost, IsUpToDateWhenTheCloudOffersNothing) {
    mCloud.serve("/version", "[]");
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(out(), "up to date\n");
}

TEST_F(ExampleHost, TellsWhenTheCloudCannotBeAsked) {
    EXPECT_EQ(start(), 1);
    EXPECT_EQ(out(), "the update cloud cannot be asked: -304\n");
}

TEST_F(ExampleHost, FetchesAndTestsANewerPackage) {
    support::PackageSpec spec;
    spec.version = "1.12.0.0";
    const std::string package = support::makePackage(spec, mDir.path() + "/package.exe");
    mCloud.serve("/package", readText(package).value());
    mCloud.serve("/version", R"({"softversion":"1.12.0.0","description":"d","url":")" + mCloud.url("/package") + "\"}");
    EXPECT_EQ(start(), 0);
    // There is no installer program beside this host, so that the launch fails.
    EXPECT_EQ(out(), "the package has arrived\nthe package is sound\nfailed\n");
}

}  // namespace
