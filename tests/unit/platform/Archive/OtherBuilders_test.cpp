// Packages as older and other builds of the compiler write them: string codes, stored blocks and filters of their own.
#include "PackageFixture.h"
#include "PackedStreams.h"
#include "SyntheticPackage.h"

namespace {

using support::le32;
using support::SyntheticPackage;

/// How a builder packs one stream.
struct Packing {
    std::string name;
    std::string (*pack)(const std::string& text);
};
std::string behindByte(char byte, const std::string& stream) { return std::string(1, byte) + stream; }

const Packing kPackings[] = {
    {"Deflate", [](const std::string& text) { return support::deflated(text); }},
    {"DeflateOfStoredBlocks", [](const std::string& text) { return support::deflated(text, 0); }},
    {"DeflateOfBareBlocks", [](const std::string& text) { return support::bareBlocks(text, 1000); }},
    {"DeflateOfOneBareBlock", [](const std::string& text) { return support::bareBlock(text, true); }},
    {"DeflateOfTinyBareBlocks", [](const std::string& text) { return support::bareBlocks(text, 1); }},
    {"DeflateOfBareAndPackedBlocks",
     [](const std::string& text) {
         return support::bareBlock(text.substr(0, text.size() / 2), false) +
                support::deflated(text.substr(text.size() / 2));
     }},
    {"Lzma", [](const std::string& text) { return support::lzmaStream(text); }},
    {"LzmaBehindAZeroByte", [](const std::string& text) { return behindByte('\0', support::lzmaStream(text)); }},
    {"LzmaFiltered", [](const std::string& text) { return behindByte('\1', support::lzmaStream(text, true)); }},
    {"LzmaOfALargeDictionary", [](const std::string& text) { return support::lzmaStream(text, false, 64u << 20); }},
};

struct Kind {
    std::string name;
    SyntheticPackage::Text text;
};
const Kind kKinds[] = {
    {"Unicode", SyntheticPackage::Unicode}, {"Ansi3", SyntheticPackage::Ansi3}, {"Ansi2", SyntheticPackage::Ansi2}};

using Case = std::tuple<Packing, Kind>;
void PrintTo(const Case& one, std::ostream* out) { *out << std::get<0>(one).name << std::get<1>(one).name; }

class OtherBuilder : public support::PackageFixture, public testing::WithParamInterface<Case> {
protected:
    /// Adds an item, packed or plain.
    using Add = std::function<int32_t(SyntheticPackage& package, const std::string& content)>;

    SyntheticPackage make(const Add& add) {
        SyntheticPackage package(std::get<1>(GetParam()).text);
        const int32_t client =
            package.addRaw(package.variable(21) + package.text("\\Orv ") + package.languageString(1));
        package.addLanguage(1031, {0, package.addText("Kunde")});
        package.addLanguage(1033, {0, package.addText("Client")});
        package.setOutPath(client);
        package.extractFile(package.addText("code.dll"), add(package, machineCode()));
        package.extractFile(package.addRaw(package.variable(26) + package.text("\\plugin.dll")),
                            add(package, "plugin"));
        package.extractFile(package.addRaw(package.folder(0x1A, 0x23) + package.text("\\data")), add(package, ""));
        const int32_t patches = add(package, le32(4) + le32(8) + "ICON" + std::string(1, '\0'));
        add(package, "uninstaller");
        const int32_t name = package.addRaw(package.variable(21) + package.text("\\u.exe"));
        package.addEntry(62, {name, patches, 13, name, 0, 0});
        return package;
    }
    static std::string machineCode() {
        std::string code;
        for (int i = 0; i < 400; ++i) code += std::string("\xe8\x10\x20\0\0\x90\x55\x8b\xec", 9) + std::to_string(i);
        return code;
    }
    static std::string pack(const std::string& text) { return std::get<0>(GetParam()).pack(text); }
    static int32_t addPacked(SyntheticPackage& package, const std::string& content) {
        return package.addPacked(pack(content));
    }
    static int32_t addPlain(SyntheticPackage& package, const std::string& content) { return package.addItem(content); }

    void expectItems(const std::string& bytes) {
        ASSERT_TRUE(openBytes(bytes));
        ASSERT_TRUE(extract());
        ASSERT_EQ(mSink->names(), (std::vector<std::string>{"Orv Client\\code.dll", "$PLUGINSDIR\\plugin.dll",
                                                            "$APPDATA\\data", "u.exe"}));
        EXPECT_TRUE(mSink->items[0].content == machineCode());
        EXPECT_EQ(mSink->items[1].content, "plugin");
        EXPECT_EQ(mSink->items[2].content, "");
        EXPECT_EQ(mSink->items[3].content, std::string(8, '\0') + "ICON" + std::string(500, '\0') + "uninstaller");
    }
};

TEST_P(OtherBuilder, PacksAllInOneStream) {
    const SyntheticPackage package = make(addPlain);
    expectItems(package.wrap(pack(package.solidStream())));
}

TEST_P(OtherBuilder, PacksTheHeaderAndEachItem) {
    const SyntheticPackage package = make(addPacked);
    const std::string header = pack(package.header());
    const std::string data = package.solidStream().substr(4 + package.header().size());
    expectItems(package.wrap(le32(static_cast<uint32_t>(header.size()) | 0x80000000u) + header + data));
}

TEST_P(OtherBuilder, LeavesTheHeaderPlain) { expectItems(make(addPacked).build()); }

TEST_P(OtherBuilder, PacksSomeItemsOnly) {
    int count = 0;
    const SyntheticPackage package = make([&](SyntheticPackage& one, const std::string& content) {
        return ++count % 2 == 0 ? addPlain(one, content) : addPacked(one, content);
    });
    expectItems(package.build());
}

INSTANTIATE_TEST_SUITE_P(Packings, OtherBuilder,
                         testing::Combine(testing::ValuesIn(kPackings), testing::ValuesIn(kKinds)),
                         [](const auto& test) { return std::get<0>(test.param).name + std::get<1>(test.param).name; });

class OtherBuilders : public support::PackageFixture {};

TEST_F(OtherBuilders, PackThousandsOfSmallItems) {
    // What is unpacked in vain on the way does not use up what a package may ask for.
    SyntheticPackage package(SyntheticPackage::Ansi2);
    for (int i = 0; i < 10000; ++i) {
        package.extractFile(package.addText("n" + std::to_string(i)),
                            package.addPacked(support::bareBlock(std::to_string(i), true)));
    }
    ASSERT_TRUE(openBytes(package.build()));
    ASSERT_TRUE(extract());
    ASSERT_EQ(mSink->items.size(), 10000u);
    EXPECT_EQ(mSink->items[9999].content, "9999");
}

}  // namespace
