#include "Public/Base/Value.h"

#include <limits>

using Public::Base::Value;

namespace {

struct ConversionCase {
    const char* name;
    Value value;
    std::string text;
    int number;
    unsigned long long unsignedNumber;
    double real;
    bool flag;
};

class ValueConversion : public testing::TestWithParam<ConversionCase> {};

TEST_P(ValueConversion, GivesEveryKind) {
    const auto& [name, value, text, number, unsignedNumber, real, flag] = GetParam();
    EXPECT_EQ(value.toString(""), text);
    EXPECT_EQ(value.toInt(""), number);
    EXPECT_EQ(value.toUint64(""), unsignedNumber);
    EXPECT_EQ(static_cast<unsigned long long>(value), unsignedNumber);
    EXPECT_DOUBLE_EQ(value.toDouble(), real);
    EXPECT_FLOAT_EQ(value.toFloat(""), static_cast<float>(real));
    EXPECT_EQ(value.toBool(), flag);
}

INSTANTIATE_TEST_SUITE_P(
    Value, ValueConversion,
    testing::Values(ConversionCase{"Nothing", Value(), "", 0, 0, 0, false},
                    ConversionCase{"Text", Value("hello"), "hello", 0, 0, 0, false},
                    ConversionCase{"NumberAsText", Value("5"), "5", 5, 5, 5, true},
                    ConversionCase{"NegativeText", Value("-7"), "-7", -7, 0, -7, true},
                    ConversionCase{"RealText", Value("2.5"), "2.5", 2, 2, 2.5, true},
                    ConversionCase{"TrueText", Value("true"), "true", 0, 0, 0, true},
                    ConversionCase{"FalseText", Value("false"), "false", 0, 0, 0, false},
                    ConversionCase{"NumberThenLetters", Value("5x"), "5x", 0, 0, 0, false},
                    ConversionCase{"EmptyText", Value(""), "", 0, 0, 0, false},
                    ConversionCase{"NullText", Value(static_cast<const char*>(nullptr)), "", 0, 0, 0, false},
                    ConversionCase{"Int", Value(-3), "-3", -3, 0, -3, true},
                    ConversionCase{"Unsigned", Value(3U), "3", 3, 3, 3, true},
                    ConversionCase{"UnsignedLong", Value(4UL), "4", 4, 4, 4, true},
                    ConversionCase{"LargestUnsigned", Value(18446744073709551615ULL), "18446744073709551615",
                                   2147483647, 18446744073709551615ULL, 18446744073709551615.0, true},
                    ConversionCase{"LongLong", Value(-5000000000LL), "-5000000000", -2147483648, 0, -5000000000.0,
                                   true},
                    ConversionCase{"True", Value(true), "true", 1, 1, 1, true},
                    ConversionCase{"False", Value(false), "false", 0, 0, 0, false},
                    ConversionCase{"Real", Value(0.5), "0.5", 0, 0, 0.5, true},
                    ConversionCase{"HugeReal", Value(1e30), "1e+30", 2147483647, 18446744073709551615ULL, 1e30, true}),
    [](const auto& each) { return each.param.name; });

TEST(Value, NotANumberGivesZeroAsInteger) {
    const Value value(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(value.toInt(""), 0);
    EXPECT_EQ(value.toUint64(""), 0U);
}

TEST(Value, KnowsItsKind) {
    EXPECT_TRUE(Value().isNull());
    EXPECT_TRUE(Value("x").isString());
    EXPECT_TRUE(Value(1).isInteger());
    EXPECT_TRUE(Value(1U).isUnsigned());
    EXPECT_TRUE(Value(true).isBool());
    EXPECT_TRUE(Value(1.0).isFloat());
    EXPECT_FALSE(Value(1).isFloat());
}

TEST(Value, AssignmentTakesTheOtherKind) {
    Value value(1);
    value = Value("text");
    EXPECT_EQ(value.toString(""), "text");
}

struct WordCase {
    const char* name;
    const char* text;
    double real;
};

class ValueNumberText : public testing::TestWithParam<WordCase> {};

TEST_P(ValueNumberText, CountsWhenAllOfItIsADecimalNumber) {
    const Value value(GetParam().text);
    EXPECT_DOUBLE_EQ(value.toDouble(), GetParam().real);
    EXPECT_EQ(value.toInt(""), static_cast<int>(GetParam().real));
    EXPECT_EQ(value.toBool(), GetParam().real != 0);
}

INSTANTIATE_TEST_SUITE_P(Value, ValueNumberText,
                         testing::Values(WordCase{"Infinity", "inf", 0}, WordCase{"LongInfinity", "infinity", 0},
                                         WordCase{"NotANumber", "nan", 0}, WordCase{"NegativeNotANumber", "-nan", 0},
                                         WordCase{"Hexadecimal", "0x10", 0}, WordCase{"PlusSign", "+5", 0},
                                         WordCase{"LeadingBlank", " 5", 0}, WordCase{"TrailingBlank", "5 ", 0},
                                         WordCase{"DecimalComma", "2,5", 0}, WordCase{"TwoPoints", "1.2.3", 0},
                                         WordCase{"Sign", "-", 0}, WordCase{"OutOfEveryRange", "1e999", 0},
                                         WordCase{"Exponent", "1e3", 1000}, WordCase{"LeadingZeros", "007", 7},
                                         WordCase{"NegativeFraction", "-2.9", -2.9}, WordCase{"Zero", "0", 0},
                                         WordCase{"NegativeZero", "-0.0", 0}),
                         [](const auto& each) { return each.param.name; });

TEST(Value, IntegersBeyondTheRangeGiveItsNearestEnd) {
    EXPECT_EQ(Value(2147483648LL).toInt(""), 2147483647);
    EXPECT_EQ(Value(-2147483649LL).toInt(""), std::numeric_limits<int>::min());
    EXPECT_EQ(Value("99999999999999999999").toInt64(), std::numeric_limits<long long>::max());
    EXPECT_EQ(Value("-99999999999999999999").toInt64(), std::numeric_limits<long long>::min());
    EXPECT_EQ(Value("99999999999999999999").toUint64(""), std::numeric_limits<unsigned long long>::max());
    EXPECT_EQ(Value(-1e300).toInt64(), std::numeric_limits<long long>::min());
    EXPECT_EQ(Value(-1).toUint64(""), 0U);
}

TEST(Value, LargeIntegersLoseNothingAsText) {
    EXPECT_EQ(Value("9223372036854775807").toInt64(), 9223372036854775807LL);
    EXPECT_EQ(Value("18446744073709551615").toUint64(""), 18446744073709551615ULL);
    EXPECT_EQ(Value(9007199254740993LL).toString(""), "9007199254740993");
}

TEST(Value, RealBeyondTheRangeOfFloatGivesItsNearestEnd) {
    EXPECT_EQ(Value(1e300).toFloat(""), std::numeric_limits<float>::max());
    EXPECT_EQ(Value(-1e300).toFloat(""), -std::numeric_limits<float>::max());
}

TEST(Value, NotANumberIsFalse) { EXPECT_FALSE(Value(std::numeric_limits<double>::quiet_NaN()).toBool()); }

TEST(Value, RealIsPrintedInTheShortestFormThatReadsBack) {
    EXPECT_EQ(Value(0.1).toString(""), "0.1");
    EXPECT_EQ(Value(5.0).toString(""), "5");
    EXPECT_EQ(Value(1.0 / 3).toString(""), "0.3333333333333333");
}

TEST(Value, TextKeepsZeroBytes) {
    EXPECT_EQ(Value(std::string("a\0b", 3)).toString("").size(), 3U);
    EXPECT_EQ(Value(std::string("5\0", 2)).toInt(""), 0);
}

}  // namespace
