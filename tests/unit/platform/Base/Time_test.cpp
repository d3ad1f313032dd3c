#include "Public/Base/Time.h"

#include <ctime>

using Public::Base::Time;

namespace {

constexpr char kFormat[] = "yyyy-MM-dd HH:mm:ss";

TEST(Time, ReadsTheFields) {
    Time time;
    ASSERT_TRUE(time.parse("2024-03-05 06:07:08", kFormat));
    EXPECT_EQ(time.year, 2024);
    EXPECT_EQ(time.month, 3);
    EXPECT_EQ(time.day, 5);
    EXPECT_EQ(time.hour, 6);
    EXPECT_EQ(time.minute, 7);
    EXPECT_EQ(time.second, 8);
}

TEST(Time, ParseLeavesTheZoneAsItIs) {
    Time time;
    time.timeZone = 480;
    ASSERT_TRUE(time.parse("2024-03-05 06:07:08", kFormat));
    EXPECT_EQ(time.timeZone, 480);
}

TEST(Time, MakeTimeTakesTheZoneIntoAccount) {
    Time time;
    ASSERT_TRUE(time.parse("2024-01-01 08:00:00", kFormat));
    time.timeZone = 480;
    EXPECT_EQ(time.makeTime(), 1704067200U);
    time.timeZone = 0;
    EXPECT_EQ(time.makeTime(), 1704067200U + 8 * 3600);
    time.timeZone = -60;
    EXPECT_EQ(time.makeTime(), 1704067200U + 9 * 3600);
}

TEST(Time, DatesBeforeTheEpochGiveZero) {
    Time time;
    ASSERT_TRUE(time.parse("1960-01-01 00:00:00", kFormat));
    EXPECT_EQ(time.makeTime(), 0U);
}

class TimeRefusal : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(TimeRefusal, LeavesTheValueAsItWas) {
    Time time;
    time.year = 1999;
    EXPECT_FALSE(time.parse(GetParam().second, kFormat));
    EXPECT_EQ(time.year, 1999);
}

INSTANTIATE_TEST_SUITE_P(Time, TimeRefusal,
                         testing::Values(std::pair("OtherFormat", "31/01/2024"), std::pair("Empty", ""),
                                         std::pair("DateOnly", "2024-01-31"), std::pair("Month13", "2024-13-01 00:00:00"),
                                         std::pair("Month0", "2024-00-01 00:00:00"), std::pair("Day0", "2024-01-00 00:00:00"),
                                         std::pair("February30", "2024-02-30 00:00:00"),
                                         std::pair("February29OfACommonYear", "2023-02-29 00:00:00"),
                                         std::pair("Hour24", "2024-01-01 24:00:00"), std::pair("Minute60", "2024-01-01 00:60:00"),
                                         std::pair("Second60", "2024-01-01 00:00:60"), std::pair("Letter", "2024-01-0a 00:00:00"),
                                         std::pair("Sign", "2024-01-+1 00:00:00"), std::pair("Trailing", "2024-01-01 00:00:00 "),
                                         std::pair("WrongSeparator", "2024/01/01 00:00:00")),
                         [](const auto& each) { return each.param.first; });

TEST(Time, TakesTheLeapDay) {
    Time time;
    EXPECT_TRUE(time.parse("2024-02-29 23:59:59", kFormat));
}

TEST(Time, CurrentTimeIsNow) {
    const auto before = static_cast<uint64_t>(std::time(nullptr));
    const uint64_t now = Time::getCurrentTime().makeTime();
    EXPECT_GE(now, before);
    EXPECT_LE(now, before + 60);
}

}  // namespace
