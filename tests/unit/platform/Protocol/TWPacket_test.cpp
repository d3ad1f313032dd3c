// The encoding that all records share, seen through small records of the test's own.
#include "TWProtocol/TWPacket.h"

#include <random>

namespace {

using Public::Base::SharedBuffer;
using Tarnwick::Protocol::TWField;
using Tarnwick::Protocol::TWFieldWriter;
using Tarnwick::Protocol::TWPacket;

/// One member of each kind, and one that nests the record itself.
struct Sample : TWPacket {
    std::string text;
    uint32_t u32 = 0;
    int32_t i32 = 0;
    uint64_t u64 = 0;
    int64_t i64 = 0;
    bool flag = false;
    std::shared_ptr<Sample> inner;
    std::vector<std::string> list;
    SharedBuffer buffer;

    const char* typeName() const override { return "Sample"; }
    uint64_t typeId() const override { return 0x0123456789abcdefULL; }
    void writeFields(TWFieldWriter& writer) const override {
        writer.text(1, text);
        writer.number(2, u32);
        writer.number(3, static_cast<uint64_t>(static_cast<int64_t>(i32)));
        writer.number(4, u64);
        writer.number(5, static_cast<uint64_t>(i64));
        writer.number(6, flag);
        if (inner) writer.record(7, *inner);
        for (const auto& item : list) writer.element(8, item);
        writer.text(9, {buffer.buf(), buffer.size()});
    }
    bool readField(const TWField& field) override {
        switch (field.number) {
            case 1:
                return field.to(text);
            case 2:
                return field.to(u32);
            case 3:
                return field.to(i32);
            case 4:
                return field.to(u64);
            case 5:
                return field.to(i64);
            case 6:
                return field.to(flag);
            case 7: {
                auto fresh = std::make_shared<Sample>();
                if (!field.to(*fresh)) return false;
                if (!field.checking) inner = fresh;
                return true;
            }
            case 8:
                return field.append(list);
            case 9:
                return field.to(buffer);
            default:
                return true;
        }
    }
};

const std::string kTypeId("\x79\xef\xcd\xab\x89\x67\x45\x23\x01", 9);

bool parse(const std::string& fields, Sample& sample) { return TWPacket::parseBytes(kTypeId + fields, sample); }

std::string bytesOf(const Sample& sample) { return TWPacket::serializeAsBytes(sample).toStdString(); }

TEST(TWPacket, AnEmptyRecordIsItsTypeAlone) { EXPECT_EQ(bytesOf(Sample()), kTypeId); }

TEST(TWPacket, NullGivesNoBytes) {
    EXPECT_TRUE(TWPacket::serializeAsBytes(static_cast<const TWPacket*>(nullptr)).empty());
}

TEST(TWPacket, PointerAndReferenceGiveTheSameBytes) {
    Sample sample;
    sample.text = "x";
    EXPECT_EQ(TWPacket::serializeAsBytes(&sample).toStdString(), bytesOf(sample));
}

TEST(TWPacket, EveryKindOfMemberComesBack) {
    Sample sample;
    sample.text = std::string("a\0b", 3);
    sample.u32 = UINT32_MAX;
    sample.i32 = INT32_MIN;
    sample.u64 = UINT64_MAX;
    sample.i64 = INT64_MIN;
    sample.flag = true;
    sample.inner = std::make_shared<Sample>();
    sample.inner->text = "inside";
    sample.list = {"one", "", "three"};
    sample.buffer = SharedBuffer(std::string("bytes"));
    Sample back;
    ASSERT_TRUE(TWPacket::parseBytes(bytesOf(sample), back));
    EXPECT_EQ(back.text, sample.text);
    EXPECT_EQ(back.u32, sample.u32);
    EXPECT_EQ(back.i32, sample.i32);
    EXPECT_EQ(back.u64, sample.u64);
    EXPECT_EQ(back.i64, sample.i64);
    EXPECT_TRUE(back.flag);
    ASSERT_TRUE(back.inner);
    EXPECT_EQ(back.inner->text, "inside");
    EXPECT_EQ(back.list, sample.list);
    EXPECT_EQ(back.buffer.toStdString(), "bytes");
}

TEST(TWPacket, MembersAtTheirDefaultAreLeftOut) {
    Sample sample;
    sample.inner = std::make_shared<Sample>();
    EXPECT_EQ(bytesOf(sample), kTypeId);
}

TEST(TWPacket, NumbersAreVarintsAndNegativeOnesTenBytes) {
    Sample sample;
    sample.u32 = 300;
    EXPECT_EQ(bytesOf(sample), kTypeId + "\x10\xac\x02");
    sample.u32 = 0;
    sample.i32 = -1;
    EXPECT_EQ(bytesOf(sample), kTypeId + "\x18\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01");
}

TEST(TWPacket, UnknownFieldsOfEveryKindAreSkipped) {
    Sample sample;
    const std::string unknown(
        "\xf0\x01\x05"  // 30, varint
        "\xf9\x01"
        "12345678"  // 31, eight bytes
        "\x85\x02"
        "1234"  // 32, four bytes
        "\x8a\x02\x03"
        "abc",  // 33, three bytes of text
        3 + 10 + 6 + 6);
    ASSERT_TRUE(parse(unknown + "\x0a\x01z", sample));
    EXPECT_EQ(sample.text, "z");
}

TEST(TWPacket, ALaterFieldReplacesAnEarlierOne) {
    Sample sample;
    ASSERT_TRUE(
        parse("\x0a\x01"
              "a"
              "\x0a\x01"
              "b",
              sample));
    EXPECT_EQ(sample.text, "b");
}

TEST(TWPacket, NoBytesDoNotParse) {
    Sample sample;
    EXPECT_FALSE(TWPacket::parseBytes("", sample));
}

TEST(TWPacket, ABodyMustBeginWithItsType) {
    Sample sample;
    EXPECT_FALSE(
        TWPacket::parseBytes("\x0a\x01"
                             "a" +
                                 kTypeId,
                             sample));
    EXPECT_EQ(sample.text, "");
}

TEST(TWPacket, ABodyOfAnotherTypeDoesNotParse) {
    auto other = kTypeId;
    other[3] = 'x';
    Sample sample;
    EXPECT_FALSE(TWPacket::parseBytes(other + "\x0a\x01"
                                              "a",
                                      sample));
    EXPECT_EQ(sample.text, "");
}

TEST(TWPacket, EveryTruncationIsRefused) {
    Sample sample;
    sample.text = "some text";
    sample.u32 = 70000;
    sample.inner = std::make_shared<Sample>();
    sample.inner->list = {"x", "y"};
    const auto whole = bytesOf(sample);
    size_t refused = 0;
    size_t cuts = 0;
    // A cut between two fields leaves a shorter record that is whole; every other cut is noticed.
    const std::set<size_t> between{9, 20, 24};
    for (size_t length = 0; length < whole.size(); ++length, ++cuts) {
        Sample back;
        const bool ok = TWPacket::parseBytes(std::string_view(whole).substr(0, length), back);
        EXPECT_EQ(ok, between.count(length) > 0) << length;
        refused += !ok;
    }
    EXPECT_EQ(refused, cuts - between.size());
}

TEST(TWPacket, AMalformedBodyLeavesTheRecordAsItWas) {
    Sample sample;
    sample.text = "before";
    sample.list = {"kept"};
    EXPECT_FALSE(
        parse("\x0a\x05"
              "after"
              "\x42\x03"
              "new"
              "\x10",
              sample));
    EXPECT_EQ(sample.text, "before");
    EXPECT_EQ(sample.list, std::vector<std::string>{"kept"});
}

TEST(TWPacket, NestingBeyondThirtyTwoIsRefused) {
    const auto nested = [](int levels) {
        auto sample = std::make_shared<Sample>();
        sample->text = "deep";
        for (int i = 0; i < levels; ++i) {
            auto outer = std::make_shared<Sample>();
            outer->inner = sample;
            sample = outer;
        }
        return bytesOf(*sample);
    };
    Sample back;
    EXPECT_TRUE(TWPacket::parseBytes(nested(32), back));
    EXPECT_FALSE(TWPacket::parseBytes(nested(33), back));
    EXPECT_FALSE(TWPacket::parseBytes(nested(2000), back));
}

TEST(TWPacket, RandomBytesNeverDoMoreThanFail) {
    std::mt19937 random(7);
    Sample whole;
    whole.text = "some text";
    whole.list = {"a", "b"};
    whole.inner = std::make_shared<Sample>();
    whole.inner->i64 = -5;
    const auto good = bytesOf(whole);
    size_t refused = 0;
    for (int round = 0; round < 20000; ++round) {
        auto bytes = good;
        for (int i = 0; i < 3; ++i) bytes[9 + random() % (bytes.size() - 9)] = static_cast<char>(random());
        Sample back;
        refused += !TWPacket::parseBytes(bytes, back);
    }
    EXPECT_GT(refused, 0u);
    EXPECT_LT(refused, 20000u);
}

struct BadCase {
    const char* name;
    std::string fields;
};

class TWPacketRefuses : public testing::TestWithParam<BadCase> {};

TEST_P(TWPacketRefuses, Bytes) {
    Sample sample;
    EXPECT_FALSE(parse(GetParam().fields, sample));
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, TWPacketRefuses,
    testing::Values(BadCase{"StartOfAGroup", "\x0b"}, BadCase{"EndOfAGroup", "\x0c"},
                    BadCase{"WireTypeSix", "\x0e\x01"}, BadCase{"WireTypeSeven", "\x0f\x01"},
                    BadCase{"UnknownGroup", "\xf3\x01"}, BadCase{"FieldNumberZero", std::string("\x00\x01", 2)},
                    BadCase{"FieldNumberTooLarge", "\x80\x80\x80\x80\x10\x01"}, BadCase{"TextAsNumber", "\x08\x05"},
                    BadCase{"NumberAsText", "\x12\x01x"},
                    BadCase{"NumberAsEightBytes",
                            "\x11"
                            "12345678"},
                    BadCase{"NumberAsFourBytes",
                            "\x15"
                            "1234"},
                    BadCase{"TextLongerThanTheRest",
                            "\x0a\x06"
                            "abcde"},
                    BadCase{"TextOfHugeLength", "\x0a\xff\xff\xff\xff\xff\xff\xff\xff\x7f"},
                    BadCase{"VarintWithoutEnd", "\x10\xff"},
                    BadCase{"VarintOfElevenBytes", "\x20\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x01"},
                    BadCase{"VarintBeyond64Bits", "\x20\xff\xff\xff\xff\xff\xff\xff\xff\xff\x02"},
                    BadCase{"Unsigned32TooLarge", "\x10\x80\x80\x80\x80\x10"},
                    BadCase{"Signed32TooLarge", "\x18\x80\x80\x80\x80\x08"}, BadCase{"BoolOfTwo", "\x30\x02"},
                    BadCase{"NestedWithAWrongMember", "\x3a\x02\x08\x05"},
                    BadCase{"NestedCutShort", "\x3a\x02\x0a\x05"}, BadCase{"NestedAsNumber", "\x38\x05"},
                    BadCase{"ListElementAsNumber", "\x40\x05"}, BadCase{"BytesAsNumber", "\x48\x05"},
                    BadCase{"EightBytesCutShort",
                            "\xf9\x01"
                            "1234567"},
                    BadCase{"FourBytesCutShort",
                            "\x85\x02"
                            "123"}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
