#include "Public/Base/System.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "TempDir.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class SystemTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    std::vector<ListedFile> list(const std::string& path) {
        std::vector<ListedFile> files;
        FileListing listing(path);
        for (ListedFile file; listing.next(file);) files.push_back(file);
        return files;
    }
    void writeScript(const std::string& name, const std::string& text) {
        writeText(at(name), text);
        std::filesystem::permissions(at(name), std::filesystem::perms::owner_all);
    }
    /// What a started program has written, once it has.
    std::string written(const std::string& name) {
        while (!exists(at(name))) std::this_thread::yield();
        return readText(at(name)).value_or("");
    }
    static bool exists(const std::string& path) { return std::filesystem::exists(path); }
    support::TempDir mDir;
};

TEST_F(SystemTest, SystemDirectoryHasADefaultAndCanBeSet) {
    EXPECT_EQ(System::getSystemDirectory(), "/var/lib/orv/Windows/system32");
    System::setSystemDirectory("/x/Windows/system32");
    EXPECT_EQ(System::getSystemDirectory(), "/x/Windows/system32");
    System::setSystemDirectory("");
    EXPECT_EQ(System::getSystemDirectory(), "/var/lib/orv/Windows/system32");
}

TEST_F(SystemTest, IsLaterThanAnyVersion) { EXPECT_TRUE(System::isVersionOrLater(6, 0, 0)); }

TEST_F(SystemTest, MapsAFile) {
    writeText(at("a"), "hello");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(file.data()), file.size()), "hello");
    file.close();
    EXPECT_EQ(file.size(), 0U);
    EXPECT_EQ(file.data(), nullptr);
}

TEST_F(SystemTest, TellsAFileThatCannotBeOpenedFromOneThatCannotBeMapped) {
    writeText(at("empty"), "");
    MappedFile file;
    EXPECT_EQ(file.open(at("none")), MappedFile::Result::CannotOpen);
    EXPECT_EQ(file.open(mDir.path()), MappedFile::Result::CannotOpen);
    EXPECT_EQ(file.open(""), MappedFile::Result::CannotOpen);
    EXPECT_EQ(file.open(at("empty")), MappedFile::Result::CannotMap);
    EXPECT_EQ(file.open("/dev/null"), MappedFile::Result::CannotMap);
    EXPECT_EQ(file.size(), 0U);
}

TEST_F(SystemTest, MapsAFileOfAnotherCase) {
    writeText(at("LibX.DLL"), "x");
    MappedFile file;
    EXPECT_EQ(file.open(at("libx.dll")), MappedFile::Result::Mapped);
}

TEST_F(SystemTest, ExactNameWinsOverOneOfAnotherCase) {
    writeText(at("LIB"), "upper");
    writeText(at("lib"), "lower");
    MappedFile file;
    ASSERT_EQ(file.open(at("lib")), MappedFile::Result::Mapped);
    EXPECT_EQ(file.data()[0], 'l');
}

TEST_F(SystemTest, OpeningAgainReplacesTheMapping) {
    writeText(at("a"), "1");
    writeText(at("b"), "22");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    ASSERT_EQ(file.open(at("b")), MappedFile::Result::Mapped);
    EXPECT_EQ(file.size(), 2U);
}

TEST_F(SystemTest, ListingGivesThePointsFirst) {
    writeText(at("a"), "");
    const auto files = list(mDir.path());
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[0].name, ".");
    EXPECT_EQ(files[1].name, "..");
    EXPECT_EQ(files[0].attributes, ListedFile::SubDirectory);
    EXPECT_EQ(files[2].name, "a");
    EXPECT_EQ(files[2].attributes, 0U);
}

TEST_F(SystemTest, ListingMarksHiddenFilesAndDirectories) {
    writeText(at(".h"), "");
    std::filesystem::create_directory(at("d"));
    std::map<std::string, unsigned> attributes;
    for (const auto& file : list(mDir.path())) attributes[file.name] = file.attributes;
    EXPECT_EQ(attributes.at(".h"), ListedFile::Hidden);
    EXPECT_EQ(attributes.at("d"), ListedFile::SubDirectory);
}

TEST_F(SystemTest, ListingOfALinkToADirectoryIsNoDirectory) {
    std::filesystem::create_directory_symlink(mDir.path(), at("loop"));
    EXPECT_EQ(list(mDir.path()).at(2).attributes, 0U);
}

TEST_F(SystemTest, ListingOfWhatCannotBeReadIsEmpty) {
    EXPECT_TRUE(list(at("none")).empty());
    EXPECT_TRUE(list("").empty());
}

TEST_F(SystemTest, CopiesAFileOfAnotherCase) {
    writeText(at("LibX.DLL"), "x");
    EXPECT_TRUE(System::copyFile(at("libx.dll"), at("out")));
    EXPECT_EQ(readText(at("out")), "x");
}

TEST_F(SystemTest, CopyOfAMissingFileFails) {
    EXPECT_FALSE(System::copyFile(at("none"), at("out")));
    EXPECT_FALSE(exists(at("out")));
}

TEST_F(SystemTest, StartsAProgramWithItsArgumentsAsGiven) {
    writeScript("p", "#!/bin/sh\nfor a in \"$@\"; do printf '[%s]' \"$a\"; done > out.tmp\nmv out.tmp \"$1\"\n");
    ASSERT_TRUE(System::startPlain(
        {at("p"), "\"" + at("out") + "\" \"two  blanks\" \"\" plain \"\xE4\xB8\xAD\"", true, false}));
    EXPECT_EQ(written("out"), "[" + at("out") + "][two  blanks][][plain][\xE4\xB8\xAD]");
}

TEST_F(SystemTest, GivesAFileThatTheKernelWillNotExecuteToTheShell) {
    writeScript("p.exe", "MZ=1;echo \"ran $1\" > \"${0%/*}/tmp\"; mv \"${0%/*}/tmp\" \"${0%/*}/out\"\n");
    ASSERT_TRUE(System::startPlain({mDir.path() + "\\p.exe", "\"x y\"", true, false}));
    EXPECT_EQ(written("out"), "ran x y\n");
}

TEST_F(SystemTest, StartElevatedRunsTheProgramDirectlyForRoot) {
    if (::geteuid() == 0) {
        writeScript("p", "#!/bin/sh\necho elevated > \"$1.tmp\"; mv \"$1.tmp\" \"$1\"\n");
        ASSERT_TRUE(System::startElevated({at("p"), "\"" + at("out") + "\"", true, true}));
        EXPECT_EQ(written("out"), "elevated\n");
    } else {
        EXPECT_NE(::geteuid(), 0U);  // asking for rights would wait for a person
    }
}

TEST_F(SystemTest, StartOfAMissingProgramFailsWithTheSystemsError) {
    EXPECT_FALSE(System::startPlain({at("none"), "", true, false}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(SystemTest, StartOfAFileWithoutTheRightToRunFails) {
    writeText(at("p"), "#!/bin/sh\n");
    EXPECT_FALSE(System::startPlain({at("p"), "", true, false}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
}

TEST_F(SystemTest, StartRefusesAnEmptyNameAndZeroBytes) {
    EXPECT_FALSE(System::startPlain({"", "", true, false}));
    EXPECT_FALSE(System::startPlain({at("p"), std::string("a\0b", 3), true, false}));
}

TEST_F(SystemTest, StartedProgramGetsNoDescriptorOfThisOne) {
    std::ofstream held(at("held"));
    writeScript("p", "#!/bin/sh\nls -l /proc/$$/fd > \"$1.tmp\"; mv \"$1.tmp\" \"$1\"\n");
    ASSERT_TRUE(System::startPlain({at("p"), "\"" + at("out") + "\"", true, false}));
    const std::string listing = written("out");
    EXPECT_EQ(listing.find("pipe:"), listing.npos) << listing;
    EXPECT_EQ(listing.find("held"), listing.npos) << listing;
}

TEST_F(SystemTest, RecorderTakesThePlaceOfBothStarts) {
    std::vector<ProgramStart> starts;
    System::setProgramStarter([&](const ProgramStart& start) {
        starts.push_back(start);
        return starts.size() == 1;
    });
    EXPECT_TRUE(System::startElevated({"a", "\"1\"", true, true}));
    EXPECT_FALSE(System::startPlain({"b", "", false, false}));
    System::setProgramStarter({});
    ASSERT_EQ(starts.size(), 2U);
    EXPECT_EQ(starts[0].parameters, "\"1\"");
    EXPECT_FALSE(starts[1].show);
    EXPECT_FALSE(System::startPlain({at("none"), "", true, false}));
}

TEST_F(SystemTest, MappingThatFailsTellsWhy) {
    writeText(at("empty"), "");
    MappedFile file;
    EXPECT_EQ(file.open(at("empty")), MappedFile::Result::CannotMap);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EINVAL));
    EXPECT_EQ(file.open(mDir.path()), MappedFile::Result::CannotOpen);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EISDIR));
}

/// Starts a program as a user who is not root, with a pkexec that writes down what it is given.
class StartWithoutRights : public SystemTest {
protected:
    StartWithoutRights() {
        ::chmod(mDir.path().c_str(), 0777);
        writeScript("pkexec", "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + at("part") + "'\nmv '" + at("part") + "' '" +
                                  at("told") + "'\n");
        ::chmod(at("pkexec").c_str(), 0755);
    }
    /// @return the result of the start, or -1 when the user could not be changed
    int start(const std::string& name) {
        ::chmod(at(name).c_str(), 0755);
        const pid_t child = ::fork();
        if (child == 0) {
            if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
            ::setenv("PATH", (mDir.path() + ":/usr/bin:/bin").c_str(), 1);
            ::_exit(System::startElevated({at(name), "\"a b\"", true, true}) ? 1 : 0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) < 2 ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(StartWithoutRights, AsksForThem) {
    writeText(at("program"), "#!/bin/sh\n");
    EXPECT_EQ(start("program"), 1);
    EXPECT_EQ(written("told"), at("program") + "\na b\n");
}

TEST_F(StartWithoutRights, GivesWhatTheKernelWillNotExecuteToTheShell) {
    writeText(at("program"), "MZ=1;exit\n");
    EXPECT_EQ(start("program"), 1);
    EXPECT_EQ(written("told"), "/bin/sh\n" + at("program") + "\na b\n");
}

TEST_F(StartWithoutRights, FailsForAProgramThatIsNotThere) { EXPECT_EQ(start("none"), 0); }

}  // namespace
