// What another program holds for a moment is tried again.
#include "Base/Windows/HeldFile.h"

#include "FileText.h"
#include "TempDir.h"

using Public::Base::persist;

namespace {

/// Fails so many times, for this reason.
struct Attempts {
    unsigned failures;
    DWORD reason;
    unsigned made = 0;
    bool operator()() {
        if (++made > failures) return true;
        ::SetLastError(reason);
        return false;
    }
};

bool persistWith(Attempts& attempts) {
    return persist([&] { return attempts(); });
}

}  // namespace

TEST(HeldFile, IsTriedUntilItIsLetGo) {
    Attempts attempts{4, ERROR_SHARING_VIOLATION};
    EXPECT_TRUE(persistWith(attempts));
    EXPECT_EQ(attempts.made, 5U);
}

TEST(HeldFile, IsGivenUpWhenItIsHeldForLong) {
    Attempts attempts{1000, ERROR_SHARING_VIOLATION};
    EXPECT_FALSE(persistWith(attempts));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(attempts.made, 8U);
}

TEST(HeldFile, OtherFailuresAreToldAtOnce) {
    for (const DWORD reason : {ERROR_ACCESS_DENIED, ERROR_FILE_NOT_FOUND, ERROR_DISK_FULL}) {
        Attempts attempts{1000, reason};
        EXPECT_FALSE(persistWith(attempts));
        EXPECT_EQ(::GetLastError(), reason);
        EXPECT_EQ(attempts.made, 1U);
    }
}

TEST(HeldFile, ThatSomebodyKeepsToHimselfIsNotDeleted) {
    const support::TempDir dir;
    const std::string path = dir.path() + "/a";
    support::writeText(path, "x");
    const std::wstring wide = std::filesystem::path(path).wstring();
    const HANDLE holder = ::CreateFileW(wide.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(Public::Base::deleteFile(wide));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    ::CloseHandle(holder);
    EXPECT_TRUE(Public::Base::deleteFile(wide));
    EXPECT_FALSE(std::filesystem::exists(path));
}
