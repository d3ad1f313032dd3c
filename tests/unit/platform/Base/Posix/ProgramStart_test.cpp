#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/System.h"
#include "TempDir.h"
#include "WithoutRights.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class ProgramStartOnPosix : public testing::Test {
protected:
    ProgramStartOnPosix() { support::openToAll(mDir.path()); }
    ~ProgramStartOnPosix() override {
        if (mPath) ::setenv("PATH", mPath->c_str(), 1);
    }
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    void writeScript(const std::string& name, const std::string& text) {
        writeText(at(name), text);
        ::chmod(at(name).c_str(), 0755);
    }
    /// A program that writes its arguments, each in brackets, to the file "out".
    void writeTeller(const std::string& name, const std::string& begin = "#!/bin/sh\n") {
        writeScript(name, begin + "{ printf '[%s]' \"${0##*/}\" \"$@\"; } > '" + at("tmp") + "'\nmv '" + at("tmp") +
                              "' '" + at("out") + "'\n");
    }
    /// A program that writes what the commands print to the file "out".
    void writeScriptOf(const std::string& commands) {
        writeScript("p", "#!/bin/sh\n{ " + commands + "; } > '" + at("tmp") + "'\nmv '" + at("tmp") + "' '" +
                             at("out") + "'\n");
    }
    /// What a started program has written, once it has.
    std::string written(const std::string& name) {
        while (!std::filesystem::exists(at(name))) std::this_thread::yield();
        return readText(at(name)).value_or("");
    }
    bool startPlain(const std::string& parameters = "") {
        return System::startPlain({at("p"), parameters, true, false});
    }
    bool startElevated(const std::string& program, const std::string& parameters = "") {
        return System::startElevated({program, parameters, true, true});
    }
    /// From now on only programs of the test's directory are found by name.
    void searchHereFirst() {
        mPath = ::getenv("PATH");
        ::setenv("PATH", (mDir.path() + ":" + *mPath).c_str(), 1);
    }
    std::optional<std::string> mPath;
    support::TempDir mDir;
};

TEST_F(ProgramStartOnPosix, GivesAFileThatTheKernelWillNotExecuteToTheShell) {
    writeScript("p.exe", "MZ=1;echo \"ran $1\" > \"${0%/*}/tmp\"; mv \"${0%/*}/tmp\" \"${0%/*}/out\"\n");
    ASSERT_TRUE(System::startPlain({mDir.path() + "\\p.exe", "\"x y\"", true, false}));
    EXPECT_EQ(written("out"), "ran x y\n");
}

TEST_F(ProgramStartOnPosix, StartOfAMissingProgramFailsWithTheSystemsError) {
    EXPECT_FALSE(System::startPlain({at("none"), "", true, false}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(ProgramStartOnPosix, StartOfAFileWithoutTheRightToRunFails) {
    writeText(at("p"), "#!/bin/sh\n");
    EXPECT_FALSE(System::startPlain({at("p"), "", true, false}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
}

TEST_F(ProgramStartOnPosix, StartedProgramGetsNoDescriptorOfThisOne) {
    std::ofstream held(at("held"));
    writeScript("p", "#!/bin/sh\nls -l /proc/$$/fd > \"$1.tmp\"; mv \"$1.tmp\" \"$1\"\n");
    ASSERT_TRUE(System::startPlain({at("p"), "\"" + at("out") + "\"", true, false}));
    const std::string listing = written("out");
    EXPECT_EQ(listing.find("pipe:"), listing.npos) << listing;
    EXPECT_EQ(listing.find("held"), listing.npos) << listing;
}

TEST_F(ProgramStartOnPosix, ElevatedRunsDirectlyForRootAndThroughPkexecForOthers) {
    writeTeller("p");
    writeScript("pkexec", "#!/bin/sh\ntouch '" + at("asked") + "'\nexec \"$@\"\n");
    searchHereFirst();
    ASSERT_TRUE(startElevated(at("p"), "\"x y\""));
    EXPECT_EQ(written("out"), "[p][x y]");
    EXPECT_EQ(std::filesystem::exists(at("asked")), ::geteuid() != 0);
}

TEST_F(ProgramStartOnPosix, OthersAskForRights) {
    writeTeller("pkexec");
    writeScript("p", "#!/bin/sh\n");
    searchHereFirst();
    const support::WithoutRights nobody;
    ASSERT_TRUE(startElevated(at("p"), "\"x y\" \"2\""));
    EXPECT_EQ(written("out"), "[pkexec][" + at("p") + "][x y][2]");
}

TEST_F(ProgramStartOnPosix, OthersAskForTheShellsRightsWhereTheKernelWillNotExecuteTheFile) {
    writeTeller("pkexec");
    writeScript("p.exe", "MZ=1\n");
    searchHereFirst();
    const support::WithoutRights nobody;
    ASSERT_TRUE(startElevated(mDir.path() + "\\p.exe", "\"x\""));
    EXPECT_EQ(written("out"), "[pkexec][/bin/sh][" + at("p.exe") + "][x]");
}

TEST_F(ProgramStartOnPosix, OthersAskForABinarysOwnRights) {
    writeTeller("pkexec");
    std::filesystem::copy_file("/bin/true", at("p"));
    searchHereFirst();
    const support::WithoutRights nobody;
    ASSERT_TRUE(startElevated(at("p")));
    EXPECT_EQ(written("out"), "[pkexec][" + at("p") + "]");
}

TEST_F(ProgramStartOnPosix, OthersDoNotAskForAProgramThatIsNotThereOrMayNotRun) {
    writeTeller("pkexec");
    writeText(at("text"), "#!/bin/sh\n");
    searchHereFirst();
    const support::WithoutRights nobody;
    EXPECT_FALSE(startElevated(at("none")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
    EXPECT_FALSE(startElevated(at("text")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
}

TEST_F(ProgramStartOnPosix, OthersFailWhereNobodyCanBeAsked) {
    writeScript("p", "#!/bin/sh\n");
    searchHereFirst();
    ::setenv("PATH", mDir.path().c_str(), 1);
    const support::WithoutRights nobody;
    EXPECT_FALSE(startElevated(at("p")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(ProgramStartOnPosix, NameWithoutADirectoryIsNotSearchedFor) {
    EXPECT_FALSE(System::startPlain({"true", "", true, false}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(ProgramStartOnPosix, DirectoryIsNoProgram) {
    EXPECT_FALSE(System::startPlain({mDir.path(), "", true, false}));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
}

TEST_F(ProgramStartOnPosix, MissingInterpreterIsToldToTheCaller) {
    writeScript("p", "#!/no/such/interpreter\n");
    EXPECT_FALSE(startPlain());
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(ProgramStartOnPosix, TooLongACommandLineIsToldToTheCaller) {
    writeTeller("p");
    EXPECT_FALSE(startPlain(std::string(4 << 20, 'x')));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + E2BIG));
}

TEST_F(ProgramStartOnPosix, WantOfDescriptorsIsToldToTheCaller) {
    writeTeller("p");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const int next = ::dup(0);
    ::close(next);
    const rlimit few{static_cast<rlim_t>(next), before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_FALSE(startPlain());
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EMFILE));
}

TEST_F(ProgramStartOnPosix, FailureIsToldAlsoWhereTheStandardStreamsAreClosed) {
    int kept[3];
    for (int fd = 0; fd < 3; ++fd) {
        kept[fd] = ::fcntl(fd, F_DUPFD_CLOEXEC, 10);
        ::close(fd);
    }
    const bool started = System::startPlain({at("none"), "", true, false});
    const int code = ErrorInfo::getLastError().errorCode();
    for (int fd = 0; fd < 3; ++fd) {
        ::dup2(kept[fd], fd);
        ::close(kept[fd]);
    }
    EXPECT_FALSE(started);
    EXPECT_EQ(code, -(10000 + ENOENT));
}

TEST_F(ProgramStartOnPosix, LeavesNoProcessToWaitForAndNothingOpen) {
    const auto open = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    writeTeller("p");
    const auto before = open();
    ASSERT_TRUE(startPlain());
    EXPECT_FALSE(System::startPlain({at("none"), "", true, false}));
    written("out");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(open(), before);
}

TEST_F(ProgramStartOnPosix, CallerWhoIgnoresItsChildrenCanStartPrograms) {
    writeTeller("p");
    const auto before = ::signal(SIGCHLD, SIG_IGN);
    EXPECT_TRUE(startPlain());
    EXPECT_FALSE(System::startPlain({at("none"), "", true, false}));
    ::signal(SIGCHLD, before);
    EXPECT_EQ(written("out"), "[p]");
}

TEST_F(ProgramStartOnPosix, ProgramLeadsASessionOfItsOwn) {
    writeScriptOf("read -r id name state parent group session rest < /proc/$$/stat; echo $$ $session");
    ASSERT_TRUE(startPlain());
    std::istringstream ids(written("out"));
    pid_t process = 0;
    pid_t session = 0;
    ids >> process >> session;
    EXPECT_EQ(session, process);
    EXPECT_NE(session, ::getsid(0));
}

TEST_F(ProgramStartOnPosix, ProgramBlocksAndIgnoresNoSignal) {
    writeScriptOf("grep -E 'Sig(Blk|Ign):' /proc/self/status");
    sigset_t some;
    sigset_t before;
    ::sigemptyset(&some);
    ::sigaddset(&some, SIGTERM);
    ::sigaddset(&some, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &some, &before);
    const auto pipe = ::signal(SIGPIPE, SIG_IGN);
    const auto user = ::signal(SIGUSR2, SIG_IGN);
    const bool started = startPlain();
    ::signal(SIGUSR2, user);
    ::signal(SIGPIPE, pipe);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(started);
    EXPECT_EQ(written("out"), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(ProgramStartOnPosix, CallerKeepsItsSignalMask) {
    writeTeller("p");
    sigset_t before;
    sigset_t after;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
    ASSERT_TRUE(startPlain());
    ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (int signal = 1; signal < 32; ++signal) {
        EXPECT_EQ(::sigismember(&before, signal), ::sigismember(&after, signal)) << signal;
    }
    written("out");
}

}  // namespace
