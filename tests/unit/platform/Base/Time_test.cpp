#include "Public/Base/Time.h"

#include <ctime>
#include <limits>
#include <tuple>

#include "ManualClock.h"

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

INSTANTIATE_TEST_SUITE_P(
    Time, TimeRefusal,
    testing::Values(std::pair("OtherFormat", "31/01/2024"), std::pair("Empty", ""), std::pair("DateOnly", "2024-01-31"),
                    std::pair("Month13", "2024-13-01 00:00:00"), std::pair("Month0", "2024-00-01 00:00:00"),
                    std::pair("Day0", "2024-01-00 00:00:00"), std::pair("February30", "2024-02-30 00:00:00"),
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

TEST(Time, MillisecondsComeFromTheClockInForce) {
    support::ManualClock clock;
    const uint64_t before = Time::getCurrentMilliSecond();
    EXPECT_EQ(before, clock.now());
    clock.advance(1234);
    EXPECT_EQ(Time::getCurrentMilliSecond(), before + 1234);
}

TEST(Time, DefaultIsTheEpoch) { EXPECT_EQ(Time().makeTime(), 0U); }

struct SecondsCase {
    const char* name;
    const char* text;
    int zone;
    uint64_t seconds;
};

class TimeSeconds : public testing::TestWithParam<SecondsCase> {};

TEST_P(TimeSeconds, SinceTheEpoch) {
    Time time;
    ASSERT_TRUE(time.parse(GetParam().text, kFormat));
    time.timeZone = GetParam().zone;
    EXPECT_EQ(time.makeTime(), GetParam().seconds);
}

INSTANTIATE_TEST_SUITE_P(Time, TimeSeconds,
                         testing::Values(SecondsCase{"FirstSecond", "1970-01-01 00:00:01", 0, 1},
                                         SecondsCase{"LeapDayOf2000", "2000-02-29 12:00:00", 0, 951825600},
                                         SecondsCase{"Beyond32Bits", "2038-01-19 03:14:08", 0, 2147483648ULL},
                                         SecondsCase{"Beyond32BitsUnsigned", "2106-02-07 06:28:16", 0, 4294967296ULL},
                                         SecondsCase{"LastYear", "9999-12-31 23:59:59", 0, 253402300799ULL},
                                         SecondsCase{"ZoneOfHalfAnHour", "2024-01-01 05:30:00", 330, 1704067200},
                                         SecondsCase{"ZoneReachesBeforeTheEpoch", "1970-01-01 01:00:00", 120, 0},
                                         SecondsCase{"ZoneReachesBehindTheEpoch", "1969-12-31 23:00:00", -120, 3600}),
                         [](const auto& each) { return each.param.name; });

TEST(Time, DatesThatNoCalendarHasGiveZero) {
    for (const auto& [year, month, day] : {std::tuple{2024, 0, 1},
                                           {2024, 13, 1},
                                           {2024, 257, 1},
                                           {2024, 2, 30},
                                           {2024, 1, 0},
                                           {2024, 1, -1},
                                           {2024, 1, 257},
                                           {10000, 1, 1},
                                           {67560, 1, 1},
                                           {-1, 1, 1}}) {
        Time time;
        time.year = year;
        time.month = month;
        time.day = day;
        EXPECT_EQ(time.makeTime(), 0U) << year << '-' << month << '-' << day;
    }
}

TEST(Time, FieldsOfAnySizeDoNoHarm) {
    Time time;
    time.year = 2024;
    time.hour = time.minute = time.second = std::numeric_limits<int>::max();
    time.timeZone = std::numeric_limits<int>::min();
    EXPECT_GT(time.makeTime(), 1704067200U);
}

TEST(Time, CenturiesAreLeapYearsEveryFourHundredYears) {
    Time time;
    EXPECT_TRUE(time.parse("2000-02-29 00:00:00", kFormat));
    EXPECT_FALSE(time.parse("1900-02-29 00:00:00", kFormat));
}

TEST(Time, FormatTellsWhereTheFieldsStand) {
    Time time;
    ASSERT_TRUE(time.parse("at 08:07:06 on 05.03.2024", "at HH:mm:ss on dd.MM.yyyy"));
    EXPECT_EQ(time.year, 2024);
    EXPECT_EQ(time.month, 3);
    EXPECT_EQ(time.day, 5);
    EXPECT_EQ(time.hour, 8);
    EXPECT_EQ(time.minute, 7);
    EXPECT_EQ(time.second, 6);
}

TEST(Time, RefusesFieldsOfMoreDigitsThanAnyYearHas) {
    Time time;
    EXPECT_FALSE(time.parse("9999999999999999-01-01 00:00:00", "yyyyyyyyyyyyyyyy-MM-dd HH:mm:ss"));
    EXPECT_FALSE(time.parse("10000-01-01 00:00:00", "yyyyy-MM-dd HH:mm:ss"));
    EXPECT_EQ(time.year, 1970);
}

}  // namespace
