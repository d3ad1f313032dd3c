// Every way in which the package compiler stores a package, compared byte for byte with what went in.
#include "PackageFixture.h"

namespace {

struct Case {
    std::string name;
    support::PackageSpec spec;
};
void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }

std::vector<Case> grid() {
    std::vector<Case> cases;
    for (const char* compressor : {"lzma", "zlib", "bzip2"}) {
        for (bool solid : {true, false}) {
            for (bool unicode : {true, false}) {
                for (const char* crc : {"on", "off", "force"}) {
                    support::PackageSpec spec;
                    spec.compressor = compressor;
                    spec.solid = solid;
                    spec.unicode = unicode;
                    spec.crc = crc;
                    spec.layout = unicode ? support::PackageSpec::Tree : support::PackageSpec::Msi;
                    cases.push_back({std::string(compressor) + (solid ? "Solid" : "Separate") +
                                         (unicode ? "Unicode" : "Ansi") + "Checksum" + crc,
                                     spec});
                }
            }
        }
    }
    return cases;
}

class PackageGrid : public support::PackageFixture, public testing::WithParamInterface<Case> {};

TEST_P(PackageGrid, GivesEveryItemAsItWentIn) {
    ASSERT_TRUE(openPackage(GetParam().spec));
    ASSERT_TRUE(extract());
    const auto files = support::defaultFiles(GetParam().spec);
    EXPECT_EQ(mSink->items.size(), files.size());
    for (const auto& [name, content] : files) EXPECT_EQ(mSink->content(name), content) << name;
    EXPECT_TRUE(mSink->errors.empty());
}

TEST_P(PackageGrid, DeclaresTheFilesLengthAndItsVersion) {
    ASSERT_TRUE(openPackage(GetParam().spec));
    uint64_t size = 0;
    std::string version;
    EXPECT_TRUE(mReader.getSize(size));
    EXPECT_EQ(size, std::filesystem::file_size(path()));
    EXPECT_TRUE(mReader.getVersion(version));
    EXPECT_EQ(version, "1.11.0.8");
}

INSTANTIATE_TEST_SUITE_P(Stored, PackageGrid, testing::ValuesIn(grid()),
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

}  // namespace
