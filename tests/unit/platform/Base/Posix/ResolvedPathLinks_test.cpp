// What lies under the name of a link, and where it leads.
#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/FileEntry.h"
#include "TempDir.h"

using Public::Base::ErrorInfo;
using Public::Base::File;
using Public::Base::FileEntry;
namespace fs = std::filesystem;

namespace {

class ResolvedPathLinks : public testing::Test {
protected:
    ResolvedPathLinks() { support::writeText(mRoot + "/sub/a.txt", "A"); }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
};

}  // namespace

TEST_F(ResolvedPathLinks, ALinkIsALinkWhereverItLeads) {
    fs::create_symlink(mRoot + "/sub/a.txt", mRoot + "/file");
    fs::create_directory_symlink(mRoot + "/sub", mRoot + "/directory");
    fs::create_symlink("nowhere", mRoot + "/nothing");
    EXPECT_EQ(FileEntry::at(mRoot + "/file").kind, FileEntry::Kind::Link);
    EXPECT_EQ(FileEntry::at(mRoot + "/directory").kind, FileEntry::Kind::Link);
    EXPECT_EQ(FileEntry::at(mRoot + "/nothing").kind, FileEntry::Kind::Link);
    EXPECT_EQ(FileEntry::at(mRoot + "/directory/a.txt").kind, FileEntry::Kind::File);
    EXPECT_EQ(FileEntry::at("/dev/null").kind, FileEntry::Kind::Other);
}

TEST_F(ResolvedPathLinks, LinksAreFollowed) {
    fs::create_directory_symlink(mRoot + "/sub", mRoot + "/link");
    EXPECT_EQ(FileEntry::resolved(mRoot + "/link"), mRoot + "/sub");
    EXPECT_EQ(FileEntry::resolved(mRoot + "/link/new/x"), mRoot + "/sub/new/x");
}

TEST_F(ResolvedPathLinks, LinksInACircleLeadNowhere) {
    fs::create_directory_symlink("b", mRoot + "/a");
    fs::create_directory_symlink("a", mRoot + "/b");
    EXPECT_EQ(FileEntry::resolved(mRoot + "/a/x"), "");
    EXPECT_LT(ErrorInfo::getLastError().errorCode(), -10000);
    EXPECT_EQ(FileEntry::at(mRoot + "/a/x").kind, FileEntry::Kind::Unknown);
}
