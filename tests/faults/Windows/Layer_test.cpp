// The layer itself: what it counts, what it leaves alone, and that a fault reaches the caller.
#include <winsock2.h>

#include <windows.h>

#include "FaultTest.h"
#include "FileText.h"
#include "Held.h"

using namespace faults;
using support::readText;
using support::writeText;

namespace {

class Layer : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

std::wstring wide(const std::string& path) { return std::filesystem::path(path).wstring(); }

bool isThere(const std::string& path) { return ::GetFileAttributesW(wide(path).c_str()) != INVALID_FILE_ATTRIBUTES; }

HANDLE openToRead(const std::string& path) {
    return ::CreateFileW(wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
}

HANDLE openToWrite(const std::string& path) {
    return ::CreateFileW(wide(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
}

DWORD readSome(HANDLE file, DWORD length) {
    char bytes[16];
    DWORD got = 0;
    return ::ReadFile(file, bytes, length, &got, nullptr) ? got : 0;
}

/// For as long as it lives.
class NetworkInUse {
public:
    NetworkInUse() { ::WSAStartup(MAKEWORD(2, 2), &mData); }
    ~NetworkInUse() { ::WSACleanup(); }
    NetworkInUse(const NetworkInUse&) = delete;
    NetworkInUse& operator=(const NetworkInUse&) = delete;

private:
    WSADATA mData{};
};

}  // namespace

TEST_F(Layer, FailsTheChosenCallAndNoOther) {
    writeText(at("a"), "x");
    const Armed armed(mDir.path(), Kind::InputOutputError, 2);
    EXPECT_TRUE(isThere(at("a")));
    EXPECT_FALSE(armed.struck());
    EXPECT_FALSE(isThere(at("a")));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_IO_DEVICE});
    EXPECT_TRUE(armed.struck());
    EXPECT_FALSE(armed.wasOpening());
    EXPECT_EQ(armed.where(), "GetFileAttributesW " + at("a"));
    EXPECT_TRUE(isThere(at("a")));
}

TEST_F(Layer, LeavesOtherDirectoriesAlone) {
    const support::TempDir other;
    writeText(other.path() + "/a", "x");
    const Armed armed(mDir.path(), Kind::InputOutputError, 1);
    EXPECT_TRUE(isThere(other.path() + "/a"));
    EXPECT_FALSE(isThere(mDir.path() + "x"));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    const HANDLE file = openToRead(other.path() + "/a");
    EXPECT_EQ(readSome(file, 1), 1U);
    EXPECT_TRUE(::CloseHandle(file));
    EXPECT_FALSE(armed.struck());
}

TEST_F(Layer, KnowsTheDirectoryByEveryFormOfItsName) {
    writeText(at("a"), "x");
    std::wstring path = L"\\\\?\\" + wide(at("A"));
    std::replace(path.begin(), path.end(), L'/', L'\\');
    const Armed armed(mDir.path(), Kind::NoRight, 1);
    EXPECT_EQ(::GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(Layer, FollowsWhatWasOpenedInTheDirectory) {
    writeText(at("a"), "0123456789");
    const Armed armed(mDir.path(), Kind::ShortTransfer, 1);
    const HANDLE file = openToRead(at("a"));
    EXPECT_EQ(readSome(file, 10), 5U);
    EXPECT_EQ(readSome(file, 10), 5U);
    EXPECT_TRUE(::CloseHandle(file));
    EXPECT_TRUE(armed.struck());
}

TEST_F(Layer, FollowsTheMappingOfAFile) {
    writeText(at("a"), "0123456789");
    const Armed armed(mDir.path(), Kind::OutOfMemory, 3);
    const HANDLE file = openToRead(at("a"));
    const HANDLE mapping = ::CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(::MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0), nullptr);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    void* const view = ::MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
    EXPECT_TRUE(isMappedBelow(mDir.path()));
    EXPECT_TRUE(::UnmapViewOfFile(view));
    EXPECT_FALSE(isMappedBelow(mDir.path()));
    ::CloseHandle(mapping);
    ::CloseHandle(file);
}

TEST_F(Layer, SeesWhatIsLeftOpen) {
    writeText(at("a"), "x");
    const auto before = openHere();
    const HANDLE file = openToRead(at("a"));
    auto expected = before;
    expected.insert(at("a"));
    EXPECT_EQ(openHere(), expected);
    ::CloseHandle(file);
    const NetworkInUse network;
    const SOCKET end = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(openHere().size(), before.size() + 1);
    ::closesocket(end);
    EXPECT_EQ(openHere(), before);
}

TEST_F(Layer, AFileThatSomebodyHoldsIsToBeTriedAgain) {
    writeText(at("a"), "x");
    const Armed armed(mDir.path(), Kind::Interrupted, 1);
    EXPECT_FALSE(::DeleteFileW(wide(at("a")).c_str()));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(::DeleteFileW(wide(at("a")).c_str()));
}

TEST_F(Layer, ADiskThatStaysFullTakesHalfOfOneLastWriteAndThenNothing) {
    const Armed armed(mDir.path(), Kind::DiskStaysFull, 2);
    const HANDLE file = openToWrite(at("a"));
    DWORD put = 0;
    EXPECT_TRUE(::WriteFile(file, "0123456789", 10, &put, nullptr));
    EXPECT_EQ(put, 5U);
    EXPECT_FALSE(::WriteFile(file, "56789", 5, &put, nullptr));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_DISK_FULL});
    EXPECT_FALSE(::CreateDirectoryW(wide(at("d")).c_str(), nullptr));
    ::CloseHandle(file);
    EXPECT_TRUE(::DeleteFileW(wide(at("a")).c_str()));
}

TEST_F(Layer, CountsTheSocketsMadeWhileItIsArmed) {
    const NetworkInUse network;
    const Armed armed(mDir.path(), Kind::TooManyOpen, 1);
    EXPECT_EQ(::socket(AF_INET, SOCK_STREAM, 0), INVALID_SOCKET);
    EXPECT_EQ(::WSAGetLastError(), WSAEMFILE);
    EXPECT_TRUE(armed.struck());
}

TEST_F(Layer, CountsOnEveryThread) {
    writeText(at("a"), "x");
    const Armed armed(mDir.path(), Kind::NoRight, 2);
    EXPECT_TRUE(isThere(at("a")));
    bool there = true;
    std::thread([&] { there = isThere(at("a")); }).join();
    EXPECT_FALSE(there);
}

TEST_F(Layer, RunsAnActionInsteadOfAFault) {
    writeText(at("a"), "x");
    int calls = 0;
    const Armed armed(mDir.path(), 2, [&] {
        ++calls;
        EXPECT_TRUE(isThere(at("a")));  // not counted itself
    });
    EXPECT_TRUE(isThere(at("a")));
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(isThere(at("a")));
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(isThere(at("a")));
    EXPECT_EQ(calls, 1);
}

TEST_F(Layer, IsGoneWithItsObject) {
    writeText(at("a"), "x");
    { const Armed armed(mDir.path(), Kind::InputOutputError, 1); }
    EXPECT_TRUE(isThere(at("a")));
    EXPECT_EQ(readText(at("a")), "x");
}
