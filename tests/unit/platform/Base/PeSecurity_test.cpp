#include "Base/PeSecurity.h"

namespace {

using Public::Base::PeSecurity;
using State = PeSecurity::State;

constexpr size_t sNt = 0x80;
constexpr size_t sOptional = sNt + 24;

void put(std::string& bytes, size_t at, uint32_t value, int count = 4) {
    for (int i = 0; i < count; ++i) bytes.at(at + static_cast<size_t>(i)) = static_cast<char>(value >> (8 * i));
}

size_t securityEntry(int bits) { return sOptional + (bits == 64 ? 144 : 128); }

/// The head of a program and some content, 1024 bytes in all.
std::string program(int bits = 32) {
    std::string bytes(1024, '\x5a');
    bytes[0] = 'M';
    bytes[1] = 'Z';
    put(bytes, 60, sNt);
    put(bytes, sNt, 0x00004550);
    put(bytes, sNt + 20, bits == 64 ? 240 : 224, 2);
    put(bytes, sOptional, bits == 64 ? 0x20b : 0x10b, 2);
    put(bytes, securityEntry(bits) - 4 * 8 - 4, 16);
    put(bytes, securityEntry(bits), 0);
    put(bytes, securityEntry(bits) + 4, 0);
    return bytes;
}

std::string entry(const std::string& content, uint32_t type = 2, uint32_t revision = 0x200) {
    std::string bytes(8, '\0');
    put(bytes, 0, static_cast<uint32_t>(content.size() + 8));
    put(bytes, 4, revision, 2);
    put(bytes, 6, type, 2);
    bytes += content;
    bytes.resize((bytes.size() + 7) / 8 * 8);
    return bytes;
}

std::string withTable(const std::string& table, int bits = 32) {
    std::string bytes = program(bits);
    put(bytes, securityEntry(bits), 1024);
    put(bytes, securityEntry(bits) + 4, static_cast<uint32_t>(table.size()));
    return bytes + table;
}

PeSecurity locate(const std::string& bytes) {
    return PeSecurity::locate({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
}

std::string text(PeSecurity::Bytes bytes) { return std::string(bytes.begin(), bytes.end()); }

struct Case {
    const char* name;
    State state;
    std::string file;
};

std::string changed(std::string bytes, size_t at, uint32_t value, int count = 4) {
    put(bytes, at, value, count);
    return bytes;
}

const std::string sSigned = withTable(entry("signature"));

const Case sCases[] = {
    {"EmptyFile", State::NotProgram, ""},
    {"OneByte", State::NotProgram, "M"},
    {"DosHeadCut", State::NotProgram, program().substr(0, 63)},
    {"NoDosMagic", State::NotProgram, changed(program(), 0, 'X', 1)},
    {"NoNtMagic", State::NotProgram, changed(program(), sNt, 0x00004551)},
    {"UnknownWordSize", State::NotProgram, changed(program(), sOptional, 0x107, 2)},
    {"NtHeadBehindTheEnd", State::NotProgram, changed(program(), 60, 1024)},
    {"NtHeadAtTheLargestPlace", State::NotProgram, changed(program(), 60, 0xffffffff)},
    {"CutBeforeWordSize", State::NotProgram, program().substr(0, sOptional + 1)},
    {"CutBehindWordSize", State::Unsigned, program().substr(0, sOptional + 2)},
    {"CutBeforeDirectory", State::Unsigned, program().substr(0, securityEntry(32) + 7)},
    {"FourDirectoriesOnly", State::Unsigned, changed(sSigned, securityEntry(32) - 36, 4)},
    {"OptionalHeadTooShort", State::Unsigned, changed(sSigned, sNt + 20, 135, 2)},
    {"NoTable32", State::Unsigned, program(32)},
    {"NoTable64", State::Unsigned, program(64)},
    {"TableOfNoLength", State::Unsigned, changed(sSigned, securityEntry(32) + 4, 0)},
    {"TableWithoutPlace", State::Unsigned, changed(sSigned, securityEntry(32), 0)},
    {"BytesBehindTable", State::Damaged, sSigned + "x"},
    {"TableCutByAByte", State::Damaged, sSigned.substr(0, sSigned.size() - 1)},
    {"TableCutWhole", State::Damaged, sSigned.substr(0, 1024)},
    {"TableOutsideTheFile", State::Damaged, changed(sSigned, securityEntry(32), 5000)},
    {"PlaceAndLengthWrapAround", State::Damaged,
     changed(changed(sSigned, securityEntry(32), 0xfffffc00), securityEntry(32) + 4, 2072)},
    {"TableInTheHead", State::Damaged,
     changed(changed(sSigned, securityEntry(32), 16), securityEntry(32) + 4,
             static_cast<uint32_t>(sSigned.size() - 16))},
    {"EntryShorterThanItsHead", State::Damaged, changed(sSigned, 1024, 7)},
    {"EntryOfNoLength", State::Damaged, changed(sSigned, 1024, 0)},
    {"EntryLongerThanTable", State::Damaged, changed(sSigned, 1024, 25)},
    {"EntryOfTheLargestLength", State::Damaged, changed(sSigned, 1024, 0xffffffff)},
    {"SecondEntryCut", State::Damaged, withTable(entry("signature") + "1234")},
    {"SecondEntryTooLong", State::Damaged, withTable(entry("signature") + changed(entry("b"), 0, 17))},
    {"OnlyAPlainCertificate", State::Damaged, withTable(entry("certificate", 1))},
    {"OnlyAnOldRevision", State::Damaged, withTable(entry("signature", 2, 0x100))},
    {"Signed32", State::Signed, withTable(entry("signature"), 32)},
    {"Signed64", State::Signed, withTable(entry("signature"), 64)},
};

class PeSecurityState : public testing::TestWithParam<Case> {};

TEST_P(PeSecurityState, IsToldApart) {
    const PeSecurity found = locate(GetParam().file);
    EXPECT_EQ(GetParam().state, found.state);
    EXPECT_EQ(GetParam().state == State::Signed, found.flaw.empty()) << found.flaw;
    EXPECT_EQ(GetParam().state == State::Signed, !found.signature.empty());
}

INSTANTIATE_TEST_SUITE_P(Files, PeSecurityState, testing::ValuesIn(sCases),
                         [](const auto& test) { return test.param.name; });

class PeSecurityOf : public testing::TestWithParam<int> {};

TEST_P(PeSecurityOf, CoversAllButChecksumDirectoryEntryAndTable) {
    const int bits = GetParam();
    const std::string file = withTable(entry("signature"), bits);
    const PeSecurity found = locate(file);
    EXPECT_EQ(file.substr(0, sOptional + 64), text(found.covered[0]));
    EXPECT_EQ(file.substr(sOptional + 68, securityEntry(bits) - sOptional - 68), text(found.covered[1]));
    EXPECT_EQ(file.substr(securityEntry(bits) + 8, 1024 - securityEntry(bits) - 8), text(found.covered[2]));
}

INSTANTIATE_TEST_SUITE_P(WordSizes, PeSecurityOf, testing::Values(32, 64),
                         [](const auto& test) { return "Bits" + std::to_string(test.param); });

TEST(PeSecurity, GivesTheEntryWithItsPadding) {
    EXPECT_EQ(std::string("signature\0\0\0\0\0\0\0", 16), text(locate(sSigned).signature));
}

TEST(PeSecurity, TakesTheFirstOfTwoSignatures) {
    EXPECT_EQ("first123", text(locate(withTable(entry("first123") + entry("second"))).signature));
}

TEST(PeSecurity, PassesOverEntriesOfOtherKinds) {
    EXPECT_EQ("the true",
              text(locate(withTable(entry("other", 1) + entry("old", 2, 0x100) + entry("the true"))).signature));
}

TEST(PeSecurity, AcceptsALastEntryWithoutPadding) {
    EXPECT_EQ("signature", text(locate(withTable(entry("signature").substr(0, 17))).signature));
}

TEST(PeSecurity, SurvivesEveryCutOfASignedFile) {
    for (size_t length = 0; length < sSigned.size(); ++length) {
        const State state =
            locate(std::string(sSigned.begin(), sSigned.begin() + static_cast<std::ptrdiff_t>(length))).state;
        ASSERT_NE(State::Signed, state) << length;
        ASSERT_EQ(length >= securityEntry(32) + 8, state == State::Damaged) << length;
    }
}

}  // namespace
