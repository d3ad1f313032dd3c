#include "Archive/NSISDecompile.h"

#include "NamedPipe.h"
#include "PackageFixture.h"
#include "VirtualSlot.h"

namespace {

using support::PackageSpec;

class PackageReader : public support::PackageFixture {};

TEST_F(PackageReader, ListsItemsInTheOrderOfTheirData) {
    ASSERT_TRUE(openPackage());
    // core.dll is stored once, for both components.
    const Names expected = {"win64.sysbits",
                            "Orv Client\\OrvClient.exe",
                            "Orv Client\\core.dll",
                            "Orv Server\\core.dll",
                            "Orv Client\\lang\\zh-CN.dll",
                            "Orv Server\\OrvServer.exe",
                            "Orv Server\\tools\\OrvService.exe",
                            "Orv VideoWall\\OrvVideoWall.exe",
                            "Orv VideoWall\\render.dll"};
    EXPECT_EQ(names(), expected);
}

TEST_F(PackageReader, ExtractsInTheListedOrder) {
    ASSERT_TRUE(openPackage());
    const Names listed = names();
    ASSERT_TRUE(extract());
    EXPECT_EQ(mSink->names(), std::vector<std::string>(listed.begin(), listed.end()));
}

TEST_F(PackageReader, HandsAnItemOverInOneWriteAndAnEmptyOneInNone) {
    ASSERT_TRUE(openPackage());
    ASSERT_TRUE(extract());
    for (const auto& item : mSink->items) {
        EXPECT_EQ(item.writes, item.content.empty() ? 0 : 1) << item.name;
        EXPECT_TRUE(item.closed) << item.name;
    }
    EXPECT_EQ(mSink->items.front().writes, 0);
}

TEST_F(PackageReader, DrivesTheSinkOnTheCallersThread) {
    ASSERT_TRUE(openPackage({.solid = false}));
    ASSERT_TRUE(extract());
    ASSERT_EQ(mSink->threads.size(), 9u);
    for (const auto& thread : mSink->threads) EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(PackageReader, GoesOnWhenTheSinkRefusesBytes) {
    ASSERT_TRUE(openPackage());
    mSink->takesBytes = false;
    EXPECT_TRUE(extract());
    EXPECT_EQ(mSink->items.size(), 9u);
    EXPECT_TRUE(mSink->errors.empty());
}

TEST_F(PackageReader, DoesNotLookAtTheResultOfClose) {
    ASSERT_TRUE(openPackage());
    mSink->closeResult = false;
    EXPECT_TRUE(extract());
    EXPECT_EQ(mSink->items.size(), 9u);
}

TEST_F(PackageReader, EndsWithoutAnErrorWhenTheSinkRefusesAnItem) {
    ASSERT_TRUE(openPackage());
    mSink->refusedItem = "Orv Client\\core.dll";
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->items.size(), 2u);
    EXPECT_TRUE(mSink->errors.empty());
}

TEST_F(PackageReader, ExtractsAgainAfterARefusal) {
    ASSERT_TRUE(openPackage({.solid = false}));
    mSink->refusedItem = "win64.sysbits";
    EXPECT_FALSE(extract());
    mSink->refusedItem = "(none)";
    EXPECT_TRUE(extract());
    EXPECT_EQ(mSink->items.size(), 9u);
}

TEST_F(PackageReader, CloseFromTheSinkCancelsTheExtraction) {
    ASSERT_TRUE(openPackage());
    mSink->onOpen = [&](const std::string& name) {
        if (name == "Orv Client\\core.dll") mReader.close();
    };
    EXPECT_FALSE(extract());
    EXPECT_EQ(mSink->items.size(), 3u);
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Cancelled});
}

class PackageCancel : public support::PackageFixture, public testing::WithParamInterface<bool> {};

TEST_P(PackageCancel, CloseFromAnotherThreadEndsTheExtraction) {
    ASSERT_TRUE(openPackage({.solid = GetParam()}));
    std::thread closer;
    mSink->onOpen = [&](const std::string&) {
        if (closer.joinable()) return;
        closer = std::thread([&] { mReader.close(); });
        closer.join();
        closer = std::thread([] {});
    };
    EXPECT_FALSE(extract());
    closer.join();
    EXPECT_EQ(mSink->items.size(), 1u);
    EXPECT_EQ(mSink->errors, Errors{IExtractOutFile::ErrorCode_Cancelled});
}

TEST_P(PackageCancel, CloseWhileItDecompressesNeitherCrashesNorHangs) {
    PackageSpec spec{.solid = GetParam()};
    for (int i = 0; i < 40; ++i)
        spec.files.emplace_back("f" + std::to_string(i), std::string(40000, char('a' + i % 20)));
    ASSERT_TRUE(openPackage(spec));
    std::atomic<bool> begun{false};
    std::thread closer([&] {
        while (!begun) std::this_thread::yield();
        mReader.close();
    });
    begun = true;
    const bool done = extract();
    closer.join();
    EXPECT_TRUE(done ? mSink->items.size() == 40 : mSink->items.size() <= 40);
    std::list<std::string> items;
    EXPECT_FALSE(mReader.getItems(items));
}

INSTANTIATE_TEST_SUITE_P(Stored, PackageCancel, testing::Bool(),
                         [](const auto& test) { return test.param ? "Solid" : "Separate"; });

TEST_F(PackageReader, OpensAgainAfterBeingClosedUnderWay) {
    ASSERT_TRUE(openPackage());
    mSink->onOpen = [&](const std::string&) { mReader.close(); };
    EXPECT_FALSE(extract());
    mSink->onOpen = nullptr;
    ASSERT_TRUE(mReader.open(path(), ""));
    EXPECT_TRUE(extract());
}

TEST_F(PackageReader, TwoReadersExtractOneFileAtTheSameTime) {
    ASSERT_TRUE(openPackage({.solid = false}));
    auto second = std::make_shared<support::RecordingSink>();
    bool secondDone = false;
    std::thread other([&] {
        NSISDecompile reader;
        secondDone = reader.open(path(), "") && reader.extract(second);
    });
    EXPECT_TRUE(extract());
    other.join();
    EXPECT_TRUE(secondDone);
    EXPECT_EQ(second->names(), mSink->names());
}

TEST_F(PackageReader, GivesNothingWhileNoPackageIsOpen) {
    std::string text = "untouched";
    uint64_t size = 7;
    std::list<std::string> items{"old"};
    EXPECT_FALSE(mReader.getName(text));
    EXPECT_FALSE(mReader.getComment(text));
    EXPECT_FALSE(mReader.getVersion(text));
    EXPECT_FALSE(mReader.getSize(size));
    EXPECT_FALSE(mReader.getItems(items));
    EXPECT_FALSE(extract());
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(size, 7u);
    EXPECT_TRUE(items.empty());
}

TEST_F(PackageReader, GivesNothingAfterClose) {
    ASSERT_TRUE(openPackage());
    mReader.close();
    mReader.close();
    std::string version;
    EXPECT_FALSE(mReader.getVersion(version));
    EXPECT_FALSE(extract());
    EXPECT_TRUE(mSink->errors.empty());
}

TEST_F(PackageReader, RefusesAnAbsentSink) {
    ASSERT_TRUE(openPackage());
    EXPECT_FALSE(mReader.extract(nullptr));
}

TEST_F(PackageReader, AFailedOpenClosesThePackageBefore) {
    ASSERT_TRUE(openPackage());
    EXPECT_FALSE(mReader.open(path("absent.exe"), ""));
    std::string version;
    EXPECT_FALSE(mReader.getVersion(version));
}

TEST_F(PackageReader, ASecondOpenReplacesTheFirst) {
    ASSERT_TRUE(openPackage());
    support::makePackage({.version = "2.0"}, path("second.exe"));
    ASSERT_TRUE(mReader.open(path("second.exe"), ""));
    std::string version;
    EXPECT_TRUE(mReader.getVersion(version));
    EXPECT_EQ(version, "2.0");
}

struct Unreadable {
    std::string name, content;
};
void PrintTo(const Unreadable& file, std::ostream* out) { *out << file.name; }
class UnreadableFile : public support::PackageFixture, public testing::WithParamInterface<Unreadable> {};

TEST_P(UnreadableFile, DoesNotOpen) { EXPECT_FALSE(openBytes(GetParam().content)); }

INSTANTIATE_TEST_SUITE_P(Files, UnreadableFile,
                         testing::Values(Unreadable{"Empty", ""}, Unreadable{"OneByte", "M"},
                                         Unreadable{"OnlyTheMark", "MZ"}, Unreadable{"Text", std::string(3000, 't')},
                                         Unreadable{"Zeros", std::string(100000, '\0')},
                                         Unreadable{"ProgramWithoutPackage", support::programImage(64, "x", 5000)}),
                         [](const auto& test) { return test.param.name; });

TEST(InterfaceOrder, OfThePackageReaderAndItsSink) {
    using support::virtualSlot;
    const std::vector<size_t> reader{
        virtualSlot(&NSISDecompile::open),       virtualSlot(&NSISDecompile::getName),
        virtualSlot(&NSISDecompile::getComment), virtualSlot(&NSISDecompile::getVersion),
        virtualSlot(&NSISDecompile::getSize),    virtualSlot(&NSISDecompile::getItems),
        virtualSlot(&NSISDecompile::extract),    virtualSlot(&NSISDecompile::close),
    };
    const std::vector<size_t> sink{
        virtualSlot(&IExtractOutFile::open),
        virtualSlot(&IExtractOutFile::write),
        virtualSlot(&IExtractOutFile::close),
        virtualSlot(&IExtractOutFile::setError),
    };
    EXPECT_EQ(reader, (std::vector<size_t>{2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(sink, (std::vector<size_t>{2, 3, 4, 5}));
}

TEST_F(PackageReader, RefusesADirectory) { EXPECT_FALSE(mReader.open(mDirectory.path(), "")); }

TEST_F(PackageReader, RefusesAnEmptyPathAndOneWithAZeroByte) {
    EXPECT_FALSE(mReader.open("", ""));
    EXPECT_FALSE(mReader.open(support::makePackage({}, path()) + std::string(1, '\0'), ""));
    EXPECT_TRUE(mReader.open(path(), ""));
}

TEST_F(PackageReader, RefusesAPipeWithoutWaitingForAWriter) {
    const support::NamedPipe pipe(path());
    EXPECT_FALSE(mReader.open(pipe.path(), ""));
}

TEST_F(PackageReader, GivesNameAndCommentOfTheVersionResource) {
    ASSERT_TRUE(openPackage({.product = "Orv Suite", .comment = "升级包 for all roles"}));
    std::string name, comment;
    EXPECT_TRUE(mReader.getName(name));
    EXPECT_TRUE(mReader.getComment(comment));
    EXPECT_EQ(name, "Orv Suite");
    EXPECT_EQ(comment, "升级包 for all roles");
}

TEST_F(PackageReader, TakesTheProductVersionAsItIsWritten) {
    ASSERT_TRUE(openPackage({.version = "5.2.1-oem3-b17"}));
    std::string version;
    EXPECT_TRUE(mReader.getVersion(version));
    EXPECT_EQ(version, "5.2.1-oem3-b17");
}

TEST_F(PackageReader, TakesTheFileVersionWithoutAProductVersion) {
    ASSERT_TRUE(openPackage({.version = "5.2", .productVersionText = false}));
    std::string version;
    EXPECT_TRUE(mReader.getVersion(version));
    EXPECT_EQ(version, "5.2");
}

TEST_F(PackageReader, TakesTheFixedFileVersionWithoutEither) {
    ASSERT_TRUE(openPackage({.version = "5.2", .productVersionText = false, .fileVersionText = false}));
    std::string version;
    EXPECT_TRUE(mReader.getVersion(version));
    EXPECT_EQ(version, "5.2.0.0");
}

TEST_F(PackageReader, HasNoVersionNameOrCommentWithoutAResource) {
    ASSERT_TRUE(openPackage({.versionResource = false}));
    std::string text;
    EXPECT_FALSE(mReader.getVersion(text));
    EXPECT_FALSE(mReader.getName(text));
    EXPECT_FALSE(mReader.getComment(text));
    EXPECT_TRUE(extract());
}

}  // namespace
