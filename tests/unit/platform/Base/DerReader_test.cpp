#include "Base/DerReader.h"

namespace {

using Public::Base::DerReader;

struct Case {
    const char* name;
    std::vector<unsigned char> bytes;
    bool taken;
    size_t length;  // of the content
};

std::vector<unsigned char> element(std::vector<unsigned char> head, size_t content) {
    head.resize(head.size() + content, 0x41);
    return head;
}

const Case sCases[] = {
    {"Nothing", {}, false, 0},
    {"TagOnly", {0x04}, false, 0},
    {"OtherTag", {0x30, 0x00}, false, 0},
    {"EmptyContent", {0x04, 0x00}, true, 0},
    {"ShortLength", element({0x04, 0x7f}, 127), true, 127},
    {"LengthInOneByte", element({0x04, 0x81, 0x80}, 128), true, 128},
    {"LengthInTwoBytes", element({0x04, 0x82, 0x01, 0x00}, 256), true, 256},
    {"ContentCut", element({0x04, 0x05}, 4), false, 0},
    {"LengthCut", {0x04, 0x82, 0x01}, false, 0},
    {"IndefiniteLength", {0x04, 0x80, 0x41, 0x00, 0x00}, false, 0},
    {"LengthLongerThanNeeded", element({0x04, 0x81, 0x05}, 5), false, 0},
    {"LengthWithLeadingZero", element({0x04, 0x82, 0x00, 0x80}, 128), false, 0},
    {"LengthOfFiveBytes", element({0x04, 0x85, 0x01, 0x00, 0x00, 0x00, 0x00}, 8), false, 0},
    {"LargestLength", element({0x04, 0x84, 0xff, 0xff, 0xff, 0xff}, 8), false, 0},
};

class DerReaderElement : public testing::TestWithParam<Case> {};

TEST_P(DerReaderElement, IsTakenOnlyWhenStrict) {
    DerReader reader(GetParam().bytes);
    DerReader::Bytes content;
    EXPECT_EQ(GetParam().taken, reader.take(DerReader::OctetString, content));
    EXPECT_EQ(GetParam().length, content.size());
    EXPECT_EQ(GetParam().taken ? 0 : GetParam().bytes.size(), reader.rest().size());
}

INSTANTIATE_TEST_SUITE_P(Forms, DerReaderElement, testing::ValuesIn(sCases),
                         [](const auto& test) { return test.param.name; });

TEST(DerReader, TakesElementsInTheirOrder) {
    const unsigned char bytes[] = {0x04, 0x01, 'a', 0x05, 0x00, 0x04, 0x01, 'b'};
    DerReader reader(bytes);
    DerReader::Bytes first, none, second;
    ASSERT_TRUE(reader.take(DerReader::OctetString, first));
    ASSERT_TRUE(reader.take(DerReader::Null, none));
    EXPECT_FALSE(reader.atEnd());
    ASSERT_TRUE(reader.take(DerReader::OctetString, second));
    EXPECT_EQ('a', first[0]);
    EXPECT_EQ('b', second[0]);
    EXPECT_TRUE(reader.atEnd());
}

}  // namespace
