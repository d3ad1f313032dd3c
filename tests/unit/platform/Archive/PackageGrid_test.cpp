// Every way in which the package compiler stores a package, with every kind of content, compared with what went in and
// with what the archiver that users meet makes of it.
#include "Archiver.h"
#include "MemoryMeter.h"
#include "PackageContents.h"
#include "PackageFixture.h"
#include "PackedStreams.h"
#include "SyntheticPackage.h"

namespace {

using support::PackageContents;
using support::PackageSpec;

struct Case {
    std::string name;
    PackageSpec spec;
    PackageContents contents;
};
void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }

void addWithEveryChecksum(const std::string& storage, const PackageSpec& spec, std::vector<Case>& cases) {
    for (const PackageContents& contents : support::packageContents()) {
        for (const char* crc : {"on", "off", "force"}) {
            Case one{storage + contents.name + "Checksum" + crc, spec, contents};
            one.spec.crc = crc;
            cases.push_back(one);
        }
    }
}

std::vector<Case> grid() {
    std::vector<Case> cases;
    for (const std::string compressor : {"lzma", "zlib", "bzip2", "none"}) {
        for (const bool solid : {true, false}) {
            if (compressor == "none" && solid) continue;
            PackageSpec spec{.compressor = compressor, .solid = solid};
            const std::string storage = compressor == "none" ? "Plain" : compressor + (solid ? "Solid" : "Separate");
            addWithEveryChecksum(storage + "Unicode", spec, cases);
            spec.wideStub = true;
            addWithEveryChecksum(storage + "Wide", spec, cases);
            spec.wideStub = spec.unicode = false;
            addWithEveryChecksum(storage + "Ansi", spec, cases);
        }
    }
    return cases;
}

class GridPackage : public support::PackageFixture, public testing::WithParamInterface<Case> {
protected:
    void expectTexts(const PackageSpec& spec) {
        std::string text;
        uint64_t size = 0;
        EXPECT_TRUE(mReader.getVersion(text));
        EXPECT_EQ(text, spec.version);
        EXPECT_TRUE(mReader.getName(text));
        EXPECT_EQ(text, spec.product);
        EXPECT_TRUE(mReader.getComment(text));
        EXPECT_EQ(text, spec.comment);
        EXPECT_TRUE(mReader.getSize(size));
        EXPECT_EQ(size, std::filesystem::file_size(path()));
    }
    void expectItems(const std::map<std::string, std::string>& expected) {
        std::set<std::string> wanted, listed, extracted;
        for (const auto& [name, content] : expected) wanted.insert(name);
        for (const std::string& name : names()) listed.insert(name);
        for (const auto& item : mSink->items) {
            extracted.insert(item.name);
            const auto found = expected.find(item.name);
            if (found == expected.end() || found->second == "(any)") continue;
            EXPECT_TRUE(item.content == found->second) << item.name;
        }
        EXPECT_EQ(listed, wanted);
        EXPECT_EQ(extracted, wanted);
        EXPECT_EQ(mSink->items.size(), wanted.size());
    }
    /// @param byName else only the contents are compared, which differ among each other
    void expectWhatTheArchiverGives(bool byName) {
        ASSERT_EQ(support::unpackByArchiver(path(), path("out")), "");
        std::multiset<std::string> ours, theirs;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path("out"))) {
            if (!entry.is_regular_file()) continue;
            std::string name = std::filesystem::relative(entry.path(), path("out")).generic_string();
            std::replace(name.begin(), name.end(), '/', '\\');
            const std::string content = support::readFile(entry.path().string());
            EXPECT_TRUE(!byName || mSink->content(name) == content) << name;
            theirs.insert(content);
        }
        for (const auto& item : mSink->items) ours.insert(item.content);
        EXPECT_EQ(ours.size(), theirs.size());
        EXPECT_TRUE(ours == theirs);
    }
};

TEST_P(GridPackage, GivesWhatWentInAndWhatTheArchiverGives) {
    const Case& one = GetParam();
    PackageSpec spec = one.spec;
    const auto expected = one.contents.add(spec);
    ASSERT_TRUE(openPackage(spec));
    expectTexts(spec);
    ASSERT_TRUE(extract());
    EXPECT_TRUE(mSink->errors.empty());
    expectItems(expected);
    expectWhatTheArchiverGives(one.contents.spelling == PackageContents::Alike ||
                               (one.contents.spelling == PackageContents::AlikeInUnicode && spec.unicode));
}

INSTANTIATE_TEST_SUITE_P(Stored, GridPackage, testing::ValuesIn(grid()),
                         [](const auto& test) { return test.param.name; });

/// A few hundred kilobytes of content that packs well, badly and not at all, in items of every size.
class PackageContent : public support::PackageFixture, public testing::WithParamInterface<std::string> {
protected:
    static support::PackageSpec::Files mixedFiles() {
        support::PackageSpec::Files files;
        uint32_t state = 12345;
        auto random = [&] { return static_cast<char>((state = state * 1664525 + 1013904223) >> 24); };
        std::string noise(150000, '\0'), text, runs;
        for (char& c : noise) c = random();
        for (int i = 0; i < 9000; ++i) text += "line " + std::to_string(i * 7919 % 1000) + "\n";
        for (int i = 0; i < 600; ++i) runs += std::string(static_cast<unsigned char>(random()) * 3u, random());
        files = {{"noise.bin", noise},
                 {"text.txt", text},
                 {"runs.bin", runs},
                 {"zero.bin", std::string(1200000, '\0')},
                 {"empty", ""},
                 {"one", "x"},
                 {"two", "xx"},
                 {"four.bin", std::string(4, 'a')},
                 {"five.bin", std::string(5, 'a')},
                 {"run259", std::string(259, 'b')},
                 {"run260", std::string(260, 'b')},
                 {"both", text + noise + runs}};
        return files;
    }
};

TEST_P(PackageContent, SurvivesInItemsOfEverySize) {
    support::PackageSpec spec;
    spec.compressor = GetParam().substr(0, GetParam().find('_'));
    spec.solid = GetParam().ends_with("solid");
    spec.files = mixedFiles();
    ASSERT_TRUE(openPackage(spec));
    ASSERT_TRUE(extract());
    ASSERT_EQ(mSink->items.size(), spec.files.size());
    for (const auto& [name, content] : spec.files) EXPECT_TRUE(mSink->content(name) == content) << name;
}

INSTANTIATE_TEST_SUITE_P(Mixed, PackageContent,
                         testing::Values("lzma_solid", "lzma_separate", "zlib_solid", "zlib_separate", "bzip2_solid",
                                         "bzip2_separate"),
                         [](const auto& test) { return test.param; });

// Items over 64 MiB. The compiler takes minutes to pack one, so that it makes only the plain package.

/// Compares what it is given without keeping it.
class Comparing : public IExtractOutFile {
public:
    explicit Comparing(const PackageSpec::Files& files) : mFiles(files) {}
    bool open(const std::string& name, bool) override { return closed < mFiles.size() && mFiles[closed].first == name; }
    bool write(const char* data, unsigned int size) override {
        same = same && mFiles[closed].second == std::string_view(data, size);
        return true;
    }
    bool close() override { return ++closed != 0; }
    void setError(ErrorCode) override {}
    bool same = true;
    size_t closed = 0;

private:
    const PackageSpec::Files& mFiles;
};

class LargePackage : public support::PackageFixture {
protected:
    static std::string repeated(const std::string& piece, size_t times) {
        std::string text;
        text.reserve(piece.size() * times);
        for (size_t i = 0; i < times; ++i) text += piece;
        return text;
    }
    /// Reads the package at path(), which holds these files.
    void expectWithinTheLimits(const PackageSpec::Files& files) {
        const auto sink = std::make_shared<Comparing>(files);
        uint64_t largest = 0;
        for (const auto& [name, content] : files) largest = std::max<uint64_t>(largest, content.size());
        const support::MemoryMeter meter;
        ASSERT_TRUE(mReader.open(path(), ""));
        ASSERT_TRUE(mReader.extract(sink));
        // The block is up to an eighth larger than the item, which matters where there are two of them.
        const uint64_t growing = (support::MemoryMeter::copiesOfAGrowingBlock() - 1) * (largest + largest / 8);
        EXPECT_LE(meter.peak(), largest + growing + (uint64_t{64} << 20));
        EXPECT_EQ(sink->closed, files.size());
        EXPECT_TRUE(sink->same);
    }
    static PackageSpec::Files files(const std::string& content) {
        return {{"before", "before"}, {"large", content}, {"behind", content.substr(1)}, {"end", "end"}};
    }
};

TEST_F(LargePackage, OfPlainItemsIsReadWithin64MiBBeyondItsLargestItem) {
    const PackageSpec::Files stored = {{"before", "before"}, {"large", support::noise(66u << 20, 1)}, {"end", "end"}};
    support::makePackage({.compressor = "none", .files = stored}, path());
    expectWithinTheLimits(stored);
}

TEST_F(LargePackage, OfPackedItemsBeyond128MiBIsReadWithin64MiBBeyondItsLargestItem) {
    const PackageSpec::Files packed = files(repeated(support::words(1u << 20, 2), 140));
    support::SyntheticPackage package;
    for (const auto& [name, content] : packed) {
        package.extractFile(package.addText(name), package.addPacked(support::deflated(content, 1)));
    }
    support::writeFile(path(), package.build());
    expectWithinTheLimits(packed);
}

TEST_F(LargePackage, OfLzmaItemsIsReadWithin64MiBBeyondItsLargestItem) {
    const PackageSpec::Files packed = files(std::string(70u << 20, '\0'));
    support::SyntheticPackage package;
    package.extractFile(package.addText("before"), package.addItem("before"));
    package.extractFile(package.addText("large"), package.addPacked(support::lzmaBomb(70)));
    // The same stream again, for a second large item beside the first.
    package.extractFile(package.addText("again"), package.addPacked(support::lzmaBomb(70)));
    support::writeFile(path(), package.build());
    expectWithinTheLimits({{"before", "before"}, packed[1], {"again", packed[1].second}});
}

TEST_F(LargePackage, OfAStreamIsReadWithin64MiBBeyondItsLargestItem) {
    const PackageSpec::Files stored = files(repeated(support::words(1u << 20, 4), 70));
    support::SyntheticPackage package;
    for (const auto& [name, content] : stored) package.extractFile(package.addText(name), package.addItem(content));
    support::writeFile(path(), package.wrap(support::deflated(package.solidStream(), 1)));
    expectWithinTheLimits(stored);
}

}  // namespace
