// Numeric text forms: "%f" with six decimals and "%i", wcstod- and
// _wtol-style parsing, all independent of the process locale.
#include "platform/NumberFormat.h"

#include <orvobasic/CVarBase.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

using namespace ob::platform;

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(NumberFormat, FixedSixDecimals) {
    const std::pair<double, const char16_t*> cases[] = {
        {2.5, u"2.500000"},       {7, u"7.000000"},           {-0.125, u"-0.125000"},
        {0, u"0.000000"},         {-0.0, u"-0.000000"},       {1e-7, u"0.000000"},
        {0.0000015625, u"0.000002"}, {123456789.125, u"123456789.125000"}, {1e15, u"1000000000000000.000000"},
        {kInf, u"inf"},           {-kInf, u"-inf"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(FormatDouble(value), CString(text)) << value;
    EXPECT_EQ(FormatDouble(std::nan("")), u"nan");
    EXPECT_EQ(FormatDouble(-std::nan("")), u"-nan");
}

// The largest doubles print all their integer digits.
TEST(NumberFormat, HugeValuesPrintInFull) {
    CString max = FormatDouble(std::numeric_limits<double>::max());
    EXPECT_EQ(max.size(), 309u + 7u);
    EXPECT_EQ(max.Left(6), u"179769");
    EXPECT_EQ(max.Right(7), u".000000");
    EXPECT_EQ(FormatDouble(-1e300).size(), 1u + 301u + 7u);
}

TEST(NumberFormat, Integers) {
    EXPECT_EQ(FormatInt(0), u"0");
    EXPECT_EQ(FormatInt(-42), u"-42");
    EXPECT_EQ(FormatInt(INT64_MIN), u"-9223372036854775808");
    CString appended = u"x=";
    AppendDouble(appended, 1.5);
    EXPECT_EQ(appended, u"x=1.500000");
}

TEST(NumberFormat, ParseDoubleTakesTheLongestPrefix) {
    struct Case {
        const char16_t* text;
        double value;
        size_t consumed;
    };
    const Case cases[] = {
        {u"12abc", 12, 2},   {u"abc", 0, 0},        {u"1e3", 1000, 3},   {u"  2.5", 2.5, 5},
        {u"-.5", -0.5, 3},   {u"1e", 1, 1},         {u"", 0, 0},         {u"0x1A", 26, 4},
        {u"1e400", kInf, 5}, {u"\u00a0", 0, 0},     {u"3\u00e9", 3, 1},  {u"+", 0, 0},
    };
    for (const Case& c : cases) {
        size_t consumed = 99;
        EXPECT_EQ(ParseDouble(c.text, &consumed), c.value) << CString(c.text).ToUtf8();
        EXPECT_EQ(consumed, c.consumed) << CString(c.text).ToUtf8();
    }
    EXPECT_TRUE(std::isinf(ParseDouble(u"inf")));
    EXPECT_TRUE(std::isnan(ParseDouble(u"nan")));
}

TEST(NumberFormat, ParseDoubleOfLongText) {
    std::u16string digits(5000, u'1');
    EXPECT_GT(ParseDouble(digits), 1e300);
    std::u16string zeros = u"0." + std::u16string(5000, u'0') + u"1";
    EXPECT_EQ(ParseDouble(zeros), 0.0);
}

TEST(NumberFormat, ParseLongDecimalPrefixOnly) {
    const std::pair<const char16_t*, int32_t> cases[] = {
        {u"12.7", 12},           {u"x", 0},          {u"1e3", 1},        {u" -42z", -42},
        {u"+7", 7},              {u"", 0},           {u"-", 0},          {u"2147483647", 2147483647},
        {u"99999999999999999999", INT32_MAX},       {u"-99999999999999999999", INT32_MIN},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(ParseLong(text), value) << CString(text).ToUtf8();
}

// A locale with a decimal comma must not change the language's number texts.
TEST(NumberFormat, GermanNumericLocaleChangesNothing) {
    std::string previous = std::setlocale(LC_NUMERIC, nullptr);
    const char* german = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE"})
        if (std::setlocale(LC_NUMERIC, name)) {
            german = name;
            break;
        }
    if (!german) GTEST_SKIP() << "no German locale installed";
    EXPECT_EQ(FormatDouble(2.5), u"2.500000");
    EXPECT_EQ(ParseDouble(u"2.5"), 2.5);
    EXPECT_EQ(CVarBase(2.5).GetStringValue(), u"2.500000");
    EXPECT_EQ(CVarBase(u"0.75").GetDoubleValue(), 0.75);
    std::setlocale(LC_NUMERIC, previous.c_str());
}

}  // namespace
