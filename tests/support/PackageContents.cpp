#include "PackageContents.h"

namespace support {
namespace {

using Expected = std::map<std::string, std::string>;

Expected expectedOf(const PackageSpec::Files& files) { return {files.begin(), files.end()}; }

Expected addSections(PackageSpec& spec) {
    spec.files = defaultFiles(spec);
    spec.extraSources = {{"again.txt", "of the second section"}, {"optional.txt", "of an optional section"}};
    // f1 is stored already: its data gets further names.
    spec.extraScript = R"(
SectionEnd
Section "Second"
SetOutPath "$INSTDIR\Second"
File again.txt
File /oname=copy.exe f1
SectionEnd
Section /o "Optional"
File optional.txt
SetOutPath "$INSTDIR"
File /oname=root.exe f1
SectionEnd
SectionGroup "Group"
Section "-Hidden"
SetOutPath "$INSTDIR\Hidden"
File /oname=copy.txt again.txt
SectionEnd
SectionGroupEnd
Function Unused
File /oname=callback.txt optional.txt
FunctionEnd
Section
Call Unused)";
    Expected expected = expectedOf(spec.files);
    const std::string& program = spec.files[1].second;
    expected["Second\\again.txt"] = expected["Hidden\\copy.txt"] = spec.extraSources[0].second;
    expected["Second\\copy.exe"] = expected["root.exe"] = program;
    expected["Second\\optional.txt"] = expected["Hidden\\callback.txt"] = spec.extraSources[1].second;
    return expected;
}

Expected addTree(PackageSpec& spec) {
    spec.files = {{"first.txt", "first"}};
    spec.extraSources = {{"tree/a.txt", words(3000, 1)},
                         {"tree/sub/b.txt", words(200, 2)},
                         {"tree/sub/deep/deeper/c.bin", noise(5000, 3)},
                         {"tree/with blank/d.txt", "d"},
                         {"tree/with blank/empty", ""},
                         {"tree/z.bin", noise(100, 4)}};
    spec.extraScript = R"(
SetOutPath "$INSTDIR\Whole"
File /r tree
SetOutPath "$INSTDIR\Inside"
File /r tree/*
SetOutPath "$INSTDIR\Chosen"
File /r /x *.bin tree/*
SetOutPath "$INSTDIR\After"
File /oname=last.txt f0)";
    Expected expected = {{"first.txt", "first"}, {"After\\last.txt", "first"}};
    for (const auto& [path, content] : spec.extraSources) {
        std::string name = path.substr(5);
        for (char& c : name) c = c == '/' ? '\\' : c;
        expected["Whole\\tree\\" + name] = content;
        expected["Inside\\" + name] = content;
        if (!name.ends_with(".bin")) expected["Chosen\\" + name] = content;
    }
    return expected;
}

Expected addVariables(PackageSpec& spec) {
    spec.headerScript =
        "Var Own\nLoadLanguageFile \"${NSISDIR}/Contrib/Language files/English.nlf\"\n"
        "LoadLanguageFile \"${NSISDIR}/Contrib/Language files/French.nlf\"\n"
        "LangString Title 1033 \"english\"\nLangString Title 1036 \"french\"\n";
    struct Place {
        const char* folder;
        const char* file;
        const char* expected;
    };
    static const Place kPlaces[] = {{"$INSTDIR", "plain.txt", "plain.txt"},
                                    {"$INSTDIR\\$(Title)", "a.txt", "english\\a.txt"},
                                    {"$INSTDIR", "$(Title).txt", "english.txt"},
                                    {"$INSTDIR\\sub", "$(Title)-$(Title)", "sub\\english-english"},
                                    {"$TEMP\\t", "temp.txt", "$TEMP\\t\\temp.txt"},
                                    {"$PLUGINSDIR", "plugin.dll", "$PLUGINSDIR\\plugin.dll"},
                                    {"$0\\x", "zero.txt", "$0\\x\\zero.txt"},
                                    {"$INSTDIR\\$R3", "r3.txt", "$R3\\r3.txt"},
                                    {"$EXEDIR", "beside.txt", "$EXEDIR\\beside.txt"},
                                    {"$INSTDIR\\$$money", "dollar$$.txt", "$money\\dollar$.txt"},
                                    {"$INSTDIR\\Own", "in $9.txt", "Own\\in $9.txt"}};
    Expected expected;
    for (const Place& place : kPlaces) {
        const std::string source = "p" + std::to_string(expected.size());
        spec.extraSources.emplace_back(source, words(60, static_cast<uint32_t>(expected.size())) + source);
        spec.extraScript +=
            std::string("\nSetOutPath \"") + place.folder + "\"\nFile \"/oname=" + place.file + "\" " + source;
        expected[place.expected] = spec.extraSources.back().second;
    }
    spec.files = {{"first.txt", "first"}};
    expected["first.txt"] = "first";
    return expected;
}

Expected addSizes(PackageSpec& spec) {
    Expected expected;
    const char* const modes[] = {"auto", "off", "force"};
    // In one stream there is nothing to choose item by item.
    const bool choice = spec.compressor != "none" && !spec.solid;
    size_t count = 0;
    auto add = [&](const std::string& name, const std::string& content) {
        spec.extraSources.emplace_back(name, content);
        if (choice) spec.extraScript += std::string("\nSetCompress ") + modes[count++ % 3];
        spec.extraScript += "\nFile " + name;
        expected[name] = content;
    };
    for (uint32_t round = 0; round < 3; ++round) {
        for (size_t size : {0u, 1u, 2u, 3u, 4u, 5u, 255u, 4096u, 32768u, 65535u, 65536u, 70000u}) {
            const std::string number = std::to_string(round) + "-" + std::to_string(size);
            add("noise-" + number, noise(size, round));
            add("words-" + number, words(size, round));
        }
    }
    add("zeros", std::string(1200000, '\0'));
    add("zeros-again", std::string(1200000, '\0'));
    if (choice) spec.extraScript += "\nSetCompress auto";
    spec.files = {{"first.txt", "first"}};
    expected["first.txt"] = "first";
    return expected;
}

Expected addUninstaller(PackageSpec& spec) {
    spec.uninstaller = true;
    spec.files = defaultFiles(spec);
    spec.extraSources = {{"after.txt", "behind the uninstaller"}};
    spec.extraScript =
        "\nSetOutPath \"$INSTDIR\\After\"\nWriteUninstaller \"$INSTDIR\\sub\\remove.exe\"\nFile after.txt";
    Expected expected = expectedOf(spec.files);
    expected["After\\after.txt"] = "behind the uninstaller";
    // What they hold is for the archiver to say.
    expected["uninst.exe"] = expected["sub\\remove.exe"] = "(any)";
    return expected;
}

Expected addForeignNames(PackageSpec& spec) {
    spec.files = {{"Straße\\Käse.txt", words(500, 5)}, {"Ünder\\é à ç.dll", noise(500, 6)}, {"£.txt", "pound"}};
    if (!spec.unicode) return expectedOf(spec.files);
    spec.files.insert(spec.files.end(), {{"客户端\\升级.exe", programImage(64, "upgrade")},
                                         {"客户端\\资源\\读我.txt", words(900, 7)},
                                         {"日本語\\テスト.dll", noise(300, 8)},
                                         {"Ελληνικά\\Россия.txt", words(300, 9)},
                                         {"한국어.txt", "hangul"}});
    return expectedOf(spec.files);
}

}  // namespace

const std::vector<PackageContents>& packageContents() {
    static const std::vector<PackageContents> kAll = {
        {"Sections", addSections},
        {"Tree", addTree},
        {"Variables", addVariables, PackageContents::Apart},
        {"Sizes", addSizes},
        {"Uninstaller", addUninstaller},
        {"ForeignNames", addForeignNames, PackageContents::AlikeInUnicode}};
    return kAll;
}

std::string noise(size_t size, uint32_t seed) {
    uint64_t state = seed * 0x9E3779B97F4A7C15ull + 1;
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        byte = static_cast<char>(state >> 32);
    }
    return bytes;
}

std::string words(size_t size, uint32_t seed) {
    std::string text;
    text.reserve(size + 16);
    for (uint32_t state = seed; text.size() < size;) {
        state = state * 1664525 + 1013904223;
        text += "word" + std::to_string(state >> 22) + (state & 0x10000 ? " " : "\n");
    }
    text.resize(size);
    return text;
}

}  // namespace support
