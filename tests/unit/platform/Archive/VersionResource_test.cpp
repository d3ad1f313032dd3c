// Version resources, made by hand around one section.
#include "Archive/VersionResource.h"

#include "PackageFixture.h"
#include "SyntheticPackage.h"

namespace {

using support::le16;
using support::le32;

constexpr uint32_t kAddress = 0x1000, kRaw = 0x200;

std::string wide(const std::string& text) {
    std::string out;
    for (char c : text) out += {c, '\0'};
    return out;
}
void pad(std::string& text) { text.resize((text.size() + 3) & ~size_t{3}); }

/// A block whose children are padded already. @param valueLength as it is to stand
std::string block(const std::string& key, const std::string& value, size_t valueLength,
                  const std::string& children = "") {
    std::string body = le16(static_cast<uint32_t>(valueLength)) + le16(0) + wide(key) + le16(0);
    body = le16(0) + body;
    pad(body);
    body += value;
    if (!children.empty()) pad(body);
    body += children;
    body.replace(0, 2, le16(static_cast<uint32_t>(body.size())));
    return body;
}
std::string text(const std::string& key, const std::string& value) {
    std::string one = block(key, wide(value) + le16(0), value.size() + 1);
    pad(one);
    return one;
}
std::string fixedInfo() {
    return le32(0xFEEF04BD) + le32(0x10000) + le32(1u << 16 | 2) + le32(3u << 16 | 4) + le32(9u << 16) + le32(0) +
           std::string(28, '\0');
}
std::string info(const std::string& strings, const std::string& tableKey = "040904b0") {
    const std::string table = block(tableKey, "", 0, strings);
    return block("VS_VERSION_INFO", fixedInfo(), 52, block("StringFileInfo", "", 0, table));
}

struct Language {
    uint32_t id;
    std::string data;
};

/// Resources with one version of that name in those languages.
std::string resources(const std::vector<Language>& languages, uint32_t type = 16, uint32_t name = 1) {
    auto directory = [](size_t count) { return std::string(12, '\0') + le16(0) + le16(static_cast<uint32_t>(count)); };
    const size_t leaves = 24 + 24 + 16 + 8 * languages.size();
    size_t data = leaves + 16 * languages.size();
    std::string out = directory(1) + le32(type) + le32(0x80000000u | 24);
    out += directory(1) + le32(name) + le32(0x80000000u | 48);
    out += directory(languages.size());
    for (size_t i = 0; i < languages.size(); ++i)
        out += le32(languages[i].id) + le32(static_cast<uint32_t>(leaves + 16 * i));
    std::string blocks;
    for (const Language& language : languages) {
        out += le32(static_cast<uint32_t>(kAddress + data)) + le32(static_cast<uint32_t>(language.data.size())) +
               std::string(8, '\0');
        std::string padded = language.data;
        pad(padded);
        blocks += padded;
        data += padded.size();
    }
    return out + blocks;
}

std::string image(const std::string& section, uint32_t rawSize = 0) {
    std::string out = "MZ" + std::string(58, '\0') + le32(64) + le32(0x4550);
    out += le16(0x14C) + le16(1) + std::string(12, '\0') + le16(224) + le16(0);
    out += le16(0x10B) + std::string(94, '\0') + std::string(16, '\0') + le32(kAddress) + le32(0x1000);
    out.resize(64 + 24 + 224);
    out += "rsrc" + std::string(4, '\0') + le32(0x1000) + le32(kAddress) +
           le32(rawSize != 0 ? rawSize : static_cast<uint32_t>(section.size())) + le32(kRaw) + std::string(16, '\0');
    out.resize(kRaw);
    return out + section;
}

Archive::VersionResource read(const std::string& file) {
    Archive::PeImage pe;
    pe.parse({reinterpret_cast<const unsigned char*>(file.data()), file.size()});
    return Archive::readVersionResource(pe);
}

TEST(VersionResource, GivesItsTextsAndTheFixedVersion) {
    const auto version =
        read(image(resources({{1033, info(text("ProductVersion", "5.2") + text("Comments", "hello"))}})));
    EXPECT_TRUE(version.found);
    EXPECT_EQ(version.strings.at("ProductVersion"), "5.2");
    EXPECT_EQ(version.strings.at("Comments"), "hello");
    EXPECT_EQ(version.fixedFileVersion, "1.2.3.4");
}

TEST(VersionResource, IsReadWhateverTheKeyOfItsTable) {
    for (const char* key : {"040904b0", "040904e4", "000003a8"}) {
        const auto version = read(image(resources({{0, info(text("ProductVersion", "7"), key)}})));
        EXPECT_EQ(version.strings.at("ProductVersion"), "7") << key;
    }
}

TEST(VersionResource, IsTheEnglishOneElseTheFirst) {
    const Language german{1031, info(text("ProductName", "Deutsch"))},
        french{1036, info(text("ProductName", "Francais"))};
    const Language english{1033, info(text("ProductName", "English"))};
    EXPECT_EQ(read(image(resources({german, english}))).strings.at("ProductName"), "English");
    EXPECT_EQ(read(image(resources({german, french}))).strings.at("ProductName"), "Deutsch");
}

TEST(VersionResource, LeavesOutEmptyTexts) {
    const auto version = read(image(resources({{1033, info(text("ProductVersion", "") + text("FileVersion", "3"))}})));
    EXPECT_FALSE(version.strings.contains("ProductVersion"));
    EXPECT_EQ(version.strings.at("FileVersion"), "3");
}

TEST(VersionResource, IsOnlyThatOfTypeAndName) {
    const Language english{1033, info(text("ProductName", "x"))};
    EXPECT_FALSE(read(image(resources({english}, 24))).found);
    EXPECT_FALSE(read(image(resources({english}, 16, 2))).found);
}

TEST(VersionResource, OfAnotherKeyIsNone) {
    EXPECT_FALSE(read(image(resources({{1033, block("SOMETHING_ELSE", fixedInfo(), 52)}}))).found);
}

TEST(VersionResource, WithoutTheFixedMarkHasNoFixedVersion) {
    const auto version = read(image(resources({{1033, block("VS_VERSION_INFO", std::string(52, 'x'), 52)}})));
    EXPECT_TRUE(version.found);
    EXPECT_EQ(version.fixedFileVersion, "");
}

TEST(VersionResource, CutAnywhereDoesNoHarm) {
    const std::string file = image(resources({{1033, info(text("ProductVersion", "5.2"))}}), 0);
    for (size_t length = 0; length < file.size(); ++length) {
        const auto version = read(file.substr(0, length));
        EXPECT_FALSE(version.strings.contains("ProductVersion")) << length;
    }
}

TEST(VersionResource, WithAnyByteChangedDoesNoHarm) {
    const std::string file = image(resources({{1033, info(text("ProductVersion", "5.2"))}}));
    size_t read255 = 0;
    for (size_t at = 0; at < file.size(); ++at) {
        for (int value : {0, 1, 0x7f, 0xff}) {
            std::string changed = file;
            changed[at] = static_cast<char>(value);
            read255 += read(changed).found ? 1 : 0;
        }
    }
    EXPECT_GT(read255, 0u);
}

TEST(PeImage, ThatIsNoneIsEmpty) {
    for (const std::string& file : {std::string(), std::string("MZ"), std::string(64, 'x'),
                                    "MZ" + std::string(58, '\0') + le32(0xFFFFFFF0) + std::string(100, '\0')}) {
        Archive::PeImage pe;
        EXPECT_FALSE(pe.parse({reinterpret_cast<const unsigned char*>(file.data()), file.size()}));
        EXPECT_EQ(pe.sectionsEnd(), 0u);
        EXPECT_TRUE(pe.resources().empty());
        EXPECT_TRUE(pe.at(kAddress).empty());
    }
}

TEST(PeImage, TellsWhereItsSectionsEnd) {
    const std::string file = image(std::string(300, 's'));
    Archive::PeImage pe;
    ASSERT_TRUE(pe.parse({reinterpret_cast<const unsigned char*>(file.data()), file.size()}));
    EXPECT_EQ(pe.sectionsEnd(), kRaw + 300);
    EXPECT_FALSE(pe.isWide());
    EXPECT_EQ(pe.at(kAddress).size(), 300u);
    EXPECT_EQ(pe.at(kAddress + 299).size(), 1u);
    EXPECT_TRUE(pe.at(kAddress + 300).empty());
    EXPECT_TRUE(pe.at(kAddress - 1).empty());
}

TEST(PeImage, GivesNothingOfASectionBehindTheFile) {
    const std::string file = image("short", 1000);
    Archive::PeImage pe;
    ASSERT_TRUE(pe.parse({reinterpret_cast<const unsigned char*>(file.data()), file.size()}));
    EXPECT_TRUE(pe.at(kAddress).empty());
}

}  // namespace
