#include "Public/Base/System.h"

#include <windows.h>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "TempDir.h"
#include "WideText.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

TEST(SystemOnWindows, SystemDirectoryIsTheSystemsOwn) {
    char directory[MAX_PATH] = {};
    ASSERT_GT(::GetSystemDirectoryA(directory, MAX_PATH), 0U);
    EXPECT_EQ(System::getSystemDirectory(), directory);
}

TEST(SystemOnWindows, IsNotLaterThanVersionsYetToCome) {
    EXPECT_FALSE(System::isVersionOrLater(999, 0, 0));
    EXPECT_FALSE(System::isVersionOrLater(999, 999, 999));
}

TEST(SystemOnWindows, CopyLeavesATargetThatAnotherKeepsToItself) {
    const support::TempDir dir;
    const std::string from = dir.path() + "/from", to = dir.path() + "/to";
    writeText(from, "new");
    writeText(to, "old");
    const HANDLE kept = ::CreateFileW(support::wide(to).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(kept, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(System::copyFile(from, to));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ERROR_ACCESS_DENIED));  // to take its place
    ::CloseHandle(kept);
    EXPECT_EQ(readText(to), "old");
}

}  // namespace
