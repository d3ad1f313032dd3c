// The programs as a user starts them.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "FileText.h"
#include "HttpFileServer.h"
#include "OrvInstaller/PeImports.h"
#include "PackageMaker.h"
#include "TempDir.h"

using support::readText;
using support::writeText;

namespace {

/// Runs a command line. @return its exit status, or -1 when a signal ended it
int run(const std::string& commandLine) {
    const int status = std::system(commandLine.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string quoted(const std::string& text) { return "'" + text + "'"; }

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
    std::filesystem::create_directories(temporary);
    EXPECT_EQ(run("TMPDIR=" + quoted(temporary) + " " + quoted(ORV_DEMO) + " > " + quoted(dir.path() + "/out")), 0)
        << readText(dir.path() + "/out").value_or("");
    const std::string told = readText(dir.path() + "/out").value_or("");
    // Each step with what must have happened in it, in this order.
    size_t at = 0;
    for (const char* line : kToldInOrder) {
        const size_t found = told.find(line, at);
        EXPECT_NE(found, std::string::npos) << line << " is not told behind what comes before it:\n" << told;
        if (found != std::string::npos) at = found;
    }
    EXPECT_EQ(told.find("NOT AS EXPECTED"), std::string::npos) << told;
    EXPECT_EQ(support::filesBelow(dir.path()), std::set<std::string>{"out"});
}

TEST(Programs, DemonstrationWithoutATemporaryDirectorySaysSo) {
    const support::TempDir dir;
    EXPECT_EQ(run("TMPDIR=/dev/null/none " + quoted(ORV_DEMO) + " > /dev/null 2> " + quoted(dir.path() + "/err")), 1);
    EXPECT_NE(readText(dir.path() + "/err").value_or("").find("orvdemo: "), std::string::npos);
}

TEST(Programs, DemonstrationRefusesOptionsThatItDoesNotKnow) {
    EXPECT_EQ(run(quoted(ORV_DEMO) + " --fast > /dev/null 2>&1"), 2);
}

TEST(Programs, InstallerReportsThatItsArgumentsAreBad) {
    const support::TempDir dir;
    const std::string report = dir.path() + "/report.json";
    EXPECT_EQ(run(quoted(ORV_INSTALLER) + " /p /i server 1 " + quoted(report) + " '' 1 2> /dev/null"), 2);
    const std::string text = readText(report).value_or("");
    EXPECT_NE(text.find("\"restored\""), std::string::npos) << text;
    EXPECT_NE(text.find("ROLE is none of 1 to 5"), std::string::npos) << text;
}

TEST(Programs, InstallerEndsWhatItHasBegunAlsoWhenItIsAskedToEnd) {
    const support::TempDir dir;
    const std::string package = support::makePackage({}, dir.path() + "/package.exe");
    const std::string report = dir.path() + "/report.json";
    const pid_t host = ::fork();
    if (host == 0) {
        for (;;) ::pause();
    }
    const pid_t installer = ::fork();
    if (installer == 0) {
        const std::string installed = dir.path() + "/installed", backup = dir.path() + "/backup";
        ::execl(ORV_INSTALLER, "orvinstaller", package.c_str(), installed.c_str(), "3", std::to_string(host).c_str(),
                report.c_str(), backup.c_str(), "1", nullptr);
        ::_exit(127);
    }
    // Bits 1, 2 and 15 of the mask are SIGHUP, SIGINT and SIGTERM.
    const auto ignores = [&] {
        const std::string status = readText("/proc/" + std::to_string(installer) + "/status").value_or("");
        const size_t at = status.find("SigIgn:");
        return at != std::string::npos && (std::stoull(status.substr(at + 7), nullptr, 16) & 0x4003) == 0x4003;
    };
    int status = -1;
    bool ended = false;  // as one that cannot be started does at once
    while (!ended && !ignores()) {
        ended = ::waitpid(installer, &status, WNOHANG) != 0;
        std::this_thread::yield();
    }
    if (!ended) ::kill(installer, SIGTERM);
    ::kill(host, SIGKILL);
    ::waitpid(host, nullptr, 0);
    if (!ended) ::waitpid(installer, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_NE(readText(report).value_or("").find("\"installed\""), std::string::npos);
}

TEST(Programs, InstallerEndsWithStatusOneAtADamagedJournal) {
    const support::TempDir dir;
    const std::string package = support::makePackage({}, dir.path() + "/package.exe");
    const std::string report = dir.path() + "/report.json";
    writeText(dir.path() + "/backup/orvinstaller.journal", "orvinstaller journal 7\n");
    writeText(dir.path() + "/backup/saved.dll", "kept");
    EXPECT_EQ(run(quoted(ORV_INSTALLER) + " " + quoted(package) + " " + quoted(dir.path() + "/installed") + " 3 0 " +
                  quoted(report) + " " + quoted(dir.path() + "/backup") + " 1"),
              1);
    const std::string text = readText(report).value_or("");
    EXPECT_NE(text.find("\"damaged\""), std::string::npos) << text;
    EXPECT_NE(text.find("was written by another version of the installer"), std::string::npos) << text;
    EXPECT_EQ(readText(dir.path() + "/backup/saved.dll"), "kept");
    EXPECT_FALSE(std::filesystem::exists(dir.path() + "/installed"));
}

TEST(Programs, InstallerWithoutItsSevenArgumentsTellsHowItIsUsed) {
    const support::TempDir dir;
    EXPECT_EQ(run(quoted(ORV_INSTALLER) + " one two 2> " + quoted(dir.path() + "/err")), 2);
    EXPECT_NE(readText(dir.path() + "/err").value_or("").find("usage: orvinstaller PACKAGE"), std::string::npos);
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
    EXPECT_EQ(run("/bin/sh " + quoted(launcher) + " a 'b c'"), 0);
    EXPECT_EQ(readText(dir.path() + "/out"), "2 b c\n");
}

class ExampleHost : public testing::Test {
protected:
    ExampleHost() {
        std::filesystem::create_directories(mDir.path() + "/program");
        std::filesystem::copy_file(ORV_EXAMPLE, mDir.path() + "/program/orvexample");
        const std::string url = mCloud.url("");
        writeText(mDir.path() + "/program/upgrade_domain.json",
                  "{\"domain\":\"" +
                      url.substr(url.find("//") + 2, url.find('/', url.find("//") + 2) - url.find("//") - 2) + "\"}");
    }
    int start() {
        return run(quoted(mDir.path() + "/program/orvexample") + " " + quoted(mDir.path() + "/store") + " " +
                   quoted(mDir.path() + "/installed") + " > " + quoted(mDir.path() + "/out") + " 2>/dev/null");
    }
    std::string out() { return readText(mDir.path() + "/out").value_or(""); }

    support::TempDir mDir;
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
