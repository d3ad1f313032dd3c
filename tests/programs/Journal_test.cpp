// The document that tells what an upgrade changes, and its place.
#include "Journal.h"

#include "FileText.h"
#include "TempDir.h"

namespace {

using Kind = JournalEntry::Kind;

Journal everything() {
    return {"/opt/Orv \"7\"\\x",
            {{Kind::MadeDirectory, "", 0, 0, {}},
             {Kind::MadeDirectory, "lib/with blank", 0, 0, {}},
             {Kind::AddedFile, "lib/with blank/a\nb\x7F\x01.dll", 0, 0, {}},
             {Kind::ReplacedFile, "\xE4\xB8\xAD\xE6\x96\x87.txt", 04755, -5000000000000000001, {}},
             {Kind::ReplacedLink, "current", 0, 0, "../versions/\"7\" \\ 8"}}};
}

TEST(Journal, ComesBackAsItWasWritten) {
    Journal back;
    EXPECT_EQ(readJournal(writeJournal(everything()), back), "");
    EXPECT_TRUE(back == everything());
}

TEST(Journal, OfNothingComesBackToo) {
    const Journal nothing{"/opt/orv", {}};
    Journal back = everything();
    EXPECT_EQ(readJournal(writeJournal(nothing), back), "");
    EXPECT_TRUE(back == nothing);
}

TEST(Journal, IsLinesThatPeopleCanRead) {
    const std::string text = writeJournal({"/opt/orv", {{Kind::AddedFile, "a\nb.dll", 0, 0, {}}}});
    EXPECT_EQ(text.substr(0, text.find('\n')), "orvinstaller journal 1");
    EXPECT_NE(text.find(" installs \"/opt/orv\"\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" adds \"a\\0ab.dll\"\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" end 1\n"), std::string::npos) << text;
}

TEST(Journal, CutAfterAnyByteIsDamaged) {
    const std::string text = writeJournal(everything());
    for (size_t length = 0; length < text.size(); ++length) {
        Journal back;
        ASSERT_EQ(readJournal(text.substr(0, length), back), "is damaged") << "after " << length;
    }
}

TEST(Journal, WithAnyBitChangedIsRefused) {
    const std::string text = writeJournal(everything());
    for (size_t bit = 0; bit < text.size() * 8; ++bit) {
        std::string changed = text;
        changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << (bit % 8)));
        Journal back;
        ASSERT_NE(readJournal(changed, back), "") << "bit " << bit;
    }
}

TEST(Journal, WithoutOneOfItsLinesOrWithTwoInAnotherOrderIsDamaged) {
    std::vector<std::string> lines;
    std::istringstream text(writeJournal(everything()));
    for (std::string line; std::getline(text, line);) lines.push_back(line + "\n");
    const auto joined = [](const std::vector<std::string>& parts) {
        std::string all;
        for (const auto& part : parts) all += part;
        return all;
    };
    Journal back;
    for (size_t at = 0; at < lines.size(); ++at) {
        auto without = lines;
        without.erase(without.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_EQ(readJournal(joined(without), back), "is damaged") << "line " << at;
        if (at == 0) continue;
        auto swapped = lines;
        std::swap(swapped[at - 1], swapped[at]);
        EXPECT_EQ(readJournal(joined(swapped), back), "is damaged") << "line " << at;
    }
}

TEST(Journal, WithMoreBehindItsEndIsDamaged) {
    Journal back;
    EXPECT_EQ(readJournal(writeJournal(everything()) + "x", back), "is damaged");
    EXPECT_EQ(readJournal(writeJournal(everything()) + "\n", back), "is damaged");
    EXPECT_EQ(readJournal(writeJournal(everything()) + writeJournal(everything()), back), "is damaged");
}

TEST(Journal, OfAnotherVersionSaysSo) {
    std::string text = writeJournal(everything());
    text[text.find('1')] = '2';
    Journal back;
    EXPECT_EQ(readJournal(text, back), "was written by another version of the installer");
}

struct BadName {
    const char* title;
    JournalEntry entry;
};
class JournalNames : public testing::TestWithParam<BadName> {};

TEST_P(JournalNames, ThatLeadElsewhereAreRefused) {
    Journal back;
    EXPECT_EQ(readJournal(writeJournal({"/opt/orv", {GetParam().entry}}), back), "is damaged");
}

INSTANTIATE_TEST_SUITE_P(Journal, JournalNames,
                         testing::Values(BadName{"Up", {Kind::AddedFile, "../x", 0, 0, {}}},
                                         BadName{"UpInside", {Kind::ReplacedFile, "a/../../x", 0, 0, {}}},
                                         BadName{"UpWithBackslash", {Kind::AddedFile, "a\\..\\..\\x", 0, 0, {}}},
                                         BadName{"Absolute", {Kind::AddedFile, "/etc/x", 0, 0, {}}},
                                         BadName{"DirectoryAbove", {Kind::MadeDirectory, "..", 0, 0, {}}},
                                         BadName{"FileWithoutName", {Kind::AddedFile, "", 0, 0, {}}},
                                         BadName{"LinkWithoutName", {Kind::ReplacedLink, "", 0, 0, "x"}}),
                         [](const auto& one) { return one.param.title; });

TEST(Journal, WithoutAnInstallDirectoryIsDamaged) {
    Journal back;
    EXPECT_EQ(readJournal(writeJournal({"", {}}), back), "is damaged");
}

TEST(JournalFile, IsThereFromWritingToRemoving) {
    const support::TempDir dir;
    const JournalFile file(dir.path());
    EXPECT_FALSE(file.exists());
    ASSERT_FALSE(file.write(everything()));
    EXPECT_TRUE(file.exists());
    EXPECT_EQ(support::filesBelow(dir.path()), std::set<std::string>{"orvinstaller.journal"});
    Journal back;
    EXPECT_FALSE(file.read(back));
    EXPECT_TRUE(back == everything());
    EXPECT_FALSE(file.remove());
    EXPECT_FALSE(file.exists());
}

TEST(JournalFile, TakesThePlaceOfAnEarlierOne) {
    const support::TempDir dir;
    const JournalFile file(dir.path());
    ASSERT_FALSE(file.write({"/elsewhere", {}}));
    ASSERT_FALSE(file.write(everything()));
    Journal back;
    EXPECT_FALSE(file.read(back));
    EXPECT_TRUE(back == everything());
}

TEST(JournalFile, ThatIsHalfWrittenIsNoneYet) {
    const support::TempDir dir;
    const std::string text = writeJournal(everything());
    for (size_t length = 0; length <= text.size(); ++length) {
        support::writeText(dir.path() + "/orvinstaller.journal.new", text.substr(0, length));
        ASSERT_FALSE(JournalFile(dir.path()).exists());
    }
}

TEST(JournalFile, ThatCannotBeReadIsAnErrorNotNone) {
    const support::TempDir dir;
    std::filesystem::create_directory(dir.path() + "/orvinstaller.journal");
    const JournalFile file(dir.path());
    EXPECT_TRUE(file.exists());
    Journal back;
    const auto error = file.read(back);
    EXPECT_EQ(error.errorCode(), -1);
    EXPECT_EQ(error.errorMessage(),
              "the journal of an unfinished upgrade, " + dir.path() + "/orvinstaller.journal, cannot be read");
}

TEST(JournalFile, WithoutADirectoryCannotBeWritten) {
    const support::TempDir dir;
    EXPECT_TRUE(JournalFile(dir.path() + "/none").write(everything()));
}

TEST(JournalFile, ThatCannotBeRemovedIsToldAndStays) {
    const support::TempDir dir;
    std::filesystem::create_directories(dir.path() + "/orvinstaller.journal/x");
    EXPECT_TRUE(JournalFile(dir.path()).remove());
    EXPECT_TRUE(JournalFile(dir.path()).exists());
}

}  // namespace
