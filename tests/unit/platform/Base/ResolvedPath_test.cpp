// What lies under a name, and where it really is.
#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/FileEntry.h"
#include "TempDir.h"

using Public::Base::File;
using Public::Base::FileEntry;
using support::writeText;

namespace {

class ResolvedPath : public testing::Test {
protected:
    ResolvedPath() { writeText(mRoot + "/sub/a.txt", "A"); }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
};

}  // namespace

TEST_F(ResolvedPath, TellsAFileADirectoryAndNothing) {
    EXPECT_EQ(FileEntry::at(mRoot + "/sub/a.txt").kind, FileEntry::Kind::File);
    EXPECT_EQ(FileEntry::at(mRoot + "\\sub\\a.txt").kind, FileEntry::Kind::File);
    EXPECT_EQ(FileEntry::at(mRoot + "/sub").kind, FileEntry::Kind::Directory);
    EXPECT_EQ(FileEntry::at(mRoot + "/sub/b.txt").kind, FileEntry::Kind::Absent);
    EXPECT_EQ(FileEntry::at(mRoot + "/gone/b.txt").kind, FileEntry::Kind::Absent);
    EXPECT_EQ(FileEntry::at(mRoot + "/sub/a.txt/b.txt").kind, FileEntry::Kind::Absent);
    EXPECT_EQ(FileEntry::at("").kind, FileEntry::Kind::Unknown);
}

TEST_F(ResolvedPath, IsThePathItselfWithoutLinks) {
    EXPECT_EQ(FileEntry::resolved(mRoot), mRoot);
    EXPECT_EQ(FileEntry::resolved(mRoot + "/sub/a.txt"), mRoot + "/sub/a.txt");
    EXPECT_EQ(FileEntry::resolved(mRoot + "\\sub\\a.txt"), mRoot + "/sub/a.txt");
}

TEST_F(ResolvedPath, HasNoSeparatorAtItsEnd) {
    EXPECT_EQ(FileEntry::resolved(mRoot + "/sub/"), mRoot + "/sub");
    EXPECT_EQ(FileEntry::resolved(mRoot + "/new\\"), mRoot + "/new");
}

TEST_F(ResolvedPath, HasNoDots) {
    EXPECT_EQ(FileEntry::resolved(mRoot + "/sub/./../sub/a.txt"), mRoot + "/sub/a.txt");
    EXPECT_EQ(FileEntry::resolved(mRoot + "/new/../sub"), mRoot + "/sub");
}

TEST_F(ResolvedPath, OfWhatIsNotThereIsTheNameAsGiven) {
    EXPECT_EQ(FileEntry::resolved(mRoot + "/sub/New"), mRoot + "/sub/New");
    EXPECT_EQ(FileEntry::resolved(mRoot + "/New\\er/Est"), mRoot + "/New/er/Est");
    EXPECT_EQ(FileEntry::resolved(mRoot + "/sub/a.txt/b"), mRoot + "/sub/a.txt/b");
}

TEST_F(ResolvedPath, BeginsAtTheRoot) {
    const std::string real = FileEntry::resolved("not-there/x");
    EXPECT_TRUE(real.ends_with("/not-there/x")) << real;
    EXPECT_EQ(FileEntry::resolved(real), real);
    EXPECT_EQ(real, FileEntry::resolved(".") + "/not-there/x");
}

TEST_F(ResolvedPath, TakesChineseAndLongPaths) {
    std::string path = mRoot + "/升级";
    for (int i = 0; i < 12; ++i) path += "/一个相当长的目录名称" + std::to_string(i);
    ASSERT_GT(path.size(), 260U);
    ASSERT_TRUE(File::makeDirectory(path));
    EXPECT_EQ(FileEntry::resolved(path), path);
    EXPECT_EQ(FileEntry::resolved(path + "/新/更新"), path + "/新/更新");
    EXPECT_EQ(FileEntry::at(path).kind, FileEntry::Kind::Directory);
    EXPECT_EQ(FileEntry::at(path + "/新").kind, FileEntry::Kind::Absent);
}

TEST_F(ResolvedPath, OfNoPathIsEmpty) {
    EXPECT_EQ(FileEntry::resolved(""), "");
    EXPECT_EQ(FileEntry::resolved(std::string("a\0b", 3)), "");
    EXPECT_EQ(FileEntry::at(std::string("a\0b", 3)).kind, FileEntry::Kind::Unknown);
}
