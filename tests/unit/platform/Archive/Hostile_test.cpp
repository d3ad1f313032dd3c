// Packages with bytes changed at random: they may be refused or read, nothing else.
#include "PackageFixture.h"
#include "SyntheticPackage.h"

namespace {

struct Case {
    std::string name, compressor;
    bool solid;
};
void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }

class MutatedPackage : public support::PackageFixture, public testing::WithParamInterface<Case> {
protected:
    void SetUp() override {
        mBytes = support::readFile(support::makePackage(
            {.compressor = GetParam().compressor, .solid = GetParam().solid, .crc = "off", .uninstaller = true},
            path("made.exe")));
        mBegin = mBytes.find(std::string("\xef\xbe\xad\xde", 4) + "NullsoftInst") - 4;
    }
    /// Reads all of it and counts what came of it.
    void readAll(const std::string& bytes) {
        NSISDecompile reader;
        support::writeFile(path(), bytes);
        auto sink = std::make_shared<support::RecordingSink>();
        if (!reader.open(path(), "")) {
            ++mRefused;
            return;
        }
        const bool whole = reader.extract(sink);
        EXPECT_EQ(whole, sink->errors.empty());
        std::list<std::string> items;
        EXPECT_TRUE(reader.getItems(items));
        EXPECT_LE(sink->items.size(), items.size());
        ++(whole ? mWhole : mFailed);
    }
    uint32_t random() { return mState = mState * 1664525 + 1013904223; }

    std::string mBytes;
    size_t mBegin = 0;
    uint32_t mState = 20240305;
    int mRefused = 0, mFailed = 0, mWhole = 0;
};

TEST_P(MutatedPackage, NeitherCrashesNorHangs) {
    for (int round = 0; round < 300; ++round) {
        std::string bytes = mBytes;
        for (uint32_t flips = 1 + (random() >> 16) % 3; flips-- > 0;) {
            const size_t at = mBegin + (random() >> 8) % (bytes.size() - mBegin);
            bytes[at] = static_cast<char>(random() >> 24);
        }
        readAll(bytes);
    }
    EXPECT_EQ(mRefused + mFailed + mWhole, 300);
    EXPECT_GT(mRefused + mFailed, 0);
}

TEST_P(MutatedPackage, CutAnywhereNeitherCrashesNorHangs) {
    for (size_t length = mBegin; length < mBytes.size(); length += 1 + (random() >> 16) % 60) {
        readAll(mBytes.substr(0, length));
    }
    EXPECT_EQ(mWhole, 0);
    EXPECT_GT(mRefused, 0);
}

INSTANTIATE_TEST_SUITE_P(Stored, MutatedPackage,
                         testing::Values(Case{"LzmaSolid", "lzma", true}, Case{"LzmaSeparate", "lzma", false},
                                         Case{"ZlibSolid", "zlib", true}, Case{"ZlibSeparate", "zlib", false},
                                         Case{"Bzip2Solid", "bzip2", true}, Case{"Bzip2Separate", "bzip2", false}),
                         [](const auto& test) { return test.param.name; });

/// Where the header is not packed, changes reach the tables and the script itself.
class MutatedHeader : public support::PackageFixture {};

TEST_F(MutatedHeader, NeitherCrashesNorHangs) {
    support::SyntheticPackage package;
    const int32_t folder = package.addRaw(package.variable(21) + package.text("\\Orv Client"));
    package.addLanguage(1033, {0, folder});
    package.setOutPath(-2);
    for (const char* name : {"a.exe", "b.dll", "c.txt"}) {
        package.extractFile(package.addText(name), package.addItem(std::string(40, name[0])));
    }
    const int32_t patches = package.addItem(support::le32(4) + support::le32(8) + "ICON" + std::string(1, '\0'));
    package.addItem("uninstaller");
    package.addEntry(62, {package.addRaw(package.variable(21) + package.text("\\u.exe")), patches, 13, folder, 0, 0});
    const std::string bytes = package.build();
    uint32_t state = 7;
    auto random = [&] { return (state = state * 1664525 + 1013904223) >> 8; };
    int opened = 0, refused = 0;
    for (int round = 0; round < 400; ++round) {
        std::string changed = bytes;
        for (uint32_t flips = 1 + random() % 4; flips-- > 0;) {
            const size_t at = 512 + random() % (changed.size() - 512);
            const char values[] = {'\0', '\xff', '\x7f', '\x80', '\1', static_cast<char>(random())};
            changed[at] = values[random() % 6];
        }
        if (openBytes(changed)) {
            ++opened;
            mSink->items.clear();
            extract();
        } else {
            ++refused;
        }
    }
    EXPECT_GT(opened, 20);
    EXPECT_GT(refused, 20);
}

// Compared with the archiver that users meet.

class AgainstTheArchiver : public support::PackageFixture, public testing::WithParamInterface<Case> {};

TEST_P(AgainstTheArchiver, AllItemsAreTheSame) {
    ASSERT_TRUE(
        openPackage({.compressor = GetParam().compressor,
                     .solid = GetParam().solid,
                     .extraScript = "SetOutPath \"$TEMP\\x\"\nFile /oname=t.txt f1\nSetOutPath \"$INSTDIR\\客户端\"\n"
                                    "File /oname=升级.txt f2",
                     .uninstaller = true}));
    ASSERT_TRUE(extract());
    const std::string command = "7zz x -y -o'" + path("out") + "' '" + path() + "' > '" + path("log") + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << support::readFile(path("log"));  // NOLINT(concurrency-mt-unsafe)
    size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path("out"))) {
        if (!entry.is_regular_file()) continue;
        std::string name = std::filesystem::relative(entry.path(), path("out")).generic_string();
        std::replace(name.begin(), name.end(), '/', '\\');
        EXPECT_TRUE(mSink->content(name) == support::readFile(entry.path().string())) << name;
        ++files;
    }
    EXPECT_EQ(files, mSink->items.size());
}

INSTANTIATE_TEST_SUITE_P(Stored, AgainstTheArchiver,
                         testing::Values(Case{"LzmaSolid", "lzma", true}, Case{"ZlibSeparate", "zlib", false},
                                         Case{"Bzip2Solid", "bzip2", true}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
