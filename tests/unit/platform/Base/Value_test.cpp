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
                    ConversionCase{"LongLong", Value(-5000000000LL), "-5000000000", -2147483648, 0, -5000000000.0, true},
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

}  // namespace
