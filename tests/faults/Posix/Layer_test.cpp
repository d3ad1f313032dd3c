// The layer itself: what it counts, what it leaves alone, and that a fault reaches the caller.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "FaultTest.h"
#include "FileText.h"

using namespace faults;
using support::readText;
using support::writeText;

namespace {

class Layer : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

}  // namespace

TEST_F(Layer, FailsTheChosenCallAndNoOther) {
    writeText(at("a"), "x");
    const Armed armed(mDir.path(), Kind::InputOutputError, 2);
    EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);
    EXPECT_FALSE(armed.struck());
    EXPECT_EQ(::access(at("a").c_str(), F_OK), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_TRUE(armed.struck());
    EXPECT_EQ(armed.where(), "access " + at("a"));
    EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);
}

TEST_F(Layer, LeavesOtherDirectoriesAlone) {
    const support::TempDir other;
    writeText(other.path() + "/a", "x");
    const Armed armed(mDir.path(), Kind::InputOutputError, 1);
    EXPECT_EQ(::access((other.path() + "/a").c_str(), F_OK), 0);
    EXPECT_EQ(::access((mDir.path() + "x").c_str(), F_OK), -1);
    EXPECT_EQ(errno, ENOENT);
    const int descriptor = ::open((other.path() + "/a").c_str(), O_RDONLY);
    char byte = 0;
    EXPECT_EQ(::read(descriptor, &byte, 1), 1);
    EXPECT_EQ(::close(descriptor), 0);
    EXPECT_FALSE(armed.struck());
}

TEST_F(Layer, FollowsWhatWasOpenedInTheDirectory) {
    writeText(at("a"), "0123456789");
    const Armed armed(mDir.path(), Kind::ShortTransfer, 1);
    const int descriptor = ::open(at("a").c_str(), O_RDONLY);
    char bytes[10];
    EXPECT_EQ(::read(descriptor, bytes, 10), 5);
    EXPECT_EQ(::read(descriptor, bytes, 10), 5);
    EXPECT_EQ(::close(descriptor), 0);
    EXPECT_TRUE(armed.struck());
}

TEST_F(Layer, ClosesTheDescriptorOfWhichItComplains) {
    const Armed armed(mDir.path(), Kind::DiskFull, 2);
    const int descriptor = ::open(at("a").c_str(), O_WRONLY | O_CREAT, 0666);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(::close(descriptor), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST_F(Layer, ADiskThatStaysFullTakesHalfOfOneLastWriteAndThenNothing) {
    const Armed armed(mDir.path(), Kind::DiskStaysFull, 2);
    const int descriptor = ::open(at("a").c_str(), O_WRONLY | O_CREAT, 0666);
    EXPECT_EQ(::write(descriptor, "0123456789", 10), 5);
    EXPECT_EQ(::write(descriptor, "56789", 5), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(::mkdir(at("d").c_str(), 0777), -1);
    EXPECT_EQ(::unlink(at("a").c_str()), 0);
    ::close(descriptor);
}

TEST_F(Layer, CountsTheSocketsMadeWhileItIsArmed) {
    const Armed armed(mDir.path(), Kind::TooManyOpen, 1);
    EXPECT_EQ(::socket(AF_INET, SOCK_STREAM, 0), -1);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_TRUE(armed.struck());
}

TEST_F(Layer, CountsOnEveryThread) {
    writeText(at("a"), "x");
    const Armed armed(mDir.path(), Kind::NoRight, 2);
    EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);
    int result = 0;
    std::thread([&] { result = ::access(at("a").c_str(), F_OK); }).join();
    EXPECT_EQ(result, -1);
}

TEST_F(Layer, RunsAnActionInsteadOfAFault) {
    writeText(at("a"), "x");
    int calls = 0;
    const Armed armed(mDir.path(), 2, [&] {
        ++calls;
        EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);  // not counted itself
    });
    EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);
    EXPECT_EQ(calls, 1);
}

TEST_F(Layer, IsGoneWithItsObject) {
    writeText(at("a"), "x");
    { const Armed armed(mDir.path(), Kind::InputOutputError, 1); }
    EXPECT_EQ(::access(at("a").c_str(), F_OK), 0);
    EXPECT_EQ(readText(at("a")), "x");
}
