// The "format" parser: values passed by the conversion letter, literal text,
// and hostile formats that must give defined text without touching memory
// they should not (the C library never sees a script's format).
#include "functions/Format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <random>
#include <string>

namespace {

using ob::FormatValue;

std::string Fmt(const char16_t* format, const CVarBase& value) { return FormatValue(format, value).ToUtf8(); }

TEST(FormatTest, LetterDecidesHowTheValueIsPassed) {
    EXPECT_EQ(Fmt(u"%d", CVarBase(2.9)), "2");
    EXPECT_EQ(Fmt(u"%i", CVarBase(-2.9)), "-2");
    EXPECT_EQ(Fmt(u"%f", CVarBase(7L)), "7.000000");
    EXPECT_EQ(Fmt(u"%g", CVarBase(u"1e3")), "1000");
    EXPECT_EQ(Fmt(u"%s", CVarBase(2.5)), "2.500000");
    EXPECT_EQ(Fmt(u"%s", CVarBase(true)), "True");
    EXPECT_EQ(Fmt(u"%d", CVarBase(true)), "1");
    EXPECT_EQ(Fmt(u"%c", CVarBase(0x263AL)), "\u263A");
    EXPECT_EQ(Fmt(u"[%c]", CVarBase(0L)), "[]");
    EXPECT_EQ(Fmt(u"[%c]", CVarBase(70000L)), "[]");
    EXPECT_EQ(Fmt(u"[%3c]", CVarBase(u"")), "[   ]");
    // an unset value is 0 and the empty text
    EXPECT_EQ(Fmt(u"%d|", CVarBase()), "0|");
    EXPECT_EQ(Fmt(u"%s|", CVarBase()), "|");
}

TEST(FormatTest, IntegerWidthsFollowTheLengthModifier) {
    EXPECT_EQ(Fmt(u"%hhd", CVarBase(300.0)), "127");
    EXPECT_EQ(Fmt(u"%hd", CVarBase(-40000.0)), "-32768");
    EXPECT_EQ(Fmt(u"%hx", CVarBase(-1.0)), "ffff");
    EXPECT_EQ(Fmt(u"%lu", CVarBase(-1.0)), "4294967295");
    EXPECT_EQ(Fmt(u"%llx", CVarBase(-1.0)), "ffffffffffffffff");
    EXPECT_EQ(Fmt(u"%jd", CVarBase(1e300)), "9223372036854775807");
    EXPECT_EQ(Fmt(u"%d", CVarBase(std::nan(""))), "0");
    // long double is never passed: "L" with a floating letter still takes a double
    EXPECT_EQ(Fmt(u"%.1Lf", CVarBase(2.25)), "2.2");
}

TEST(FormatTest, FlagsWidthAndPrecisionAreRebuiltFaithfully) {
    EXPECT_EQ(Fmt(u"%+05d", CVarBase(42L)), "+0042");
    EXPECT_EQ(Fmt(u"% d", CVarBase(42L)), " 42");
    EXPECT_EQ(Fmt(u"%#o", CVarBase(8L)), "010");
    EXPECT_EQ(Fmt(u"%-6.2f|", CVarBase(3.14159)), "3.14  |");
    EXPECT_EQ(Fmt(u"%.3s", CVarBase(u"\u00e9\u00e8\u00ea\u00eb")), "\u00e9\u00e8\u00ea");
    // string padding counts UTF-16 characters, not bytes
    EXPECT_EQ(Fmt(u"%4s|", CVarBase(u"\u00e9")), "   \u00e9|");
    // repeated flags are harmless
    EXPECT_EQ(Fmt(u"%------5d|", CVarBase(1L)), "1    |");
}

TEST(FormatTest, HostileFormatsGiveDefinedText) {
    CVarBase five(5L);
    EXPECT_EQ(Fmt(u"%s%s%s%n", five), "5%s%s%n");
    EXPECT_EQ(Fmt(u"%", five), "%");
    EXPECT_EQ(Fmt(u"%l", five), "%l");
    EXPECT_EQ(Fmt(u"%ll", five), "%ll");
    EXPECT_EQ(Fmt(u"%5", five), "%5");
    EXPECT_EQ(Fmt(u"%.", five), "%.");
    EXPECT_EQ(Fmt(u"%n%d", five), "%n5");
    EXPECT_EQ(Fmt(u"%*d", five), "%*d");
    EXPECT_EQ(Fmt(u"%1$d", five), "%1$d");
    EXPECT_EQ(Fmt(u"%\u0100d", five), "%\u0100d");
    EXPECT_EQ(Fmt(u"", five), "");
}

TEST(FormatTest, WidthAndPrecisionAreClamped) {
    EXPECT_EQ(FormatValue(u"%999999999d", CVarBase(5L)).size(), size_t{ob::kMaxFormatWidth});
    EXPECT_EQ(FormatValue(u"%-99999999999999999999s", CVarBase(u"x")).size(), size_t{ob::kMaxFormatWidth});
    EXPECT_EQ(FormatValue(u"%.999999999s", CVarBase(u"abc")).size(), 3u);
    // the largest double with the largest precision stays a few kilobytes
    EXPECT_LT(FormatValue(u"%999999.999999f", CVarBase(1.7976931348623157e308)).size(), 4096u + 320u);
    EXPECT_EQ(FormatValue(u"%.99999e", CVarBase(1.0)).size(), size_t{ob::kMaxFormatWidth} + 6);
}

TEST(FormatTest, DecimalPointIgnoresTheHostLocale) {
    const char* previous = std::setlocale(LC_NUMERIC, nullptr);
    std::string saved = previous ? previous : "C";
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "fr_FR.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma installed";
    std::string text = Fmt(u"%.1f", CVarBase(2.5));
    std::setlocale(LC_NUMERIC, saved.c_str());
    EXPECT_EQ(text, "2.5");
}

// Random formats built from the characters that matter never crash, never
// grow past the clamp and keep every character that is not part of the
// one conversion.
TEST(FormatTest, RandomFormatsStayBounded) {
    const std::u16string alphabet = u"%%%-+ #0123456789.*hlLqjztdiouxXeEfFgGaAcCsSnp$x";
    std::mt19937 rng(12345);
    CVarBase values[] = {CVarBase(1e308), CVarBase(-3L), CVarBase(u"text"), CVarBase()};
    for (int round = 0; round < 20000; ++round) {
        std::u16string format;
        size_t length = rng() % 24;
        for (size_t i = 0; i < length; ++i) format += alphabet[rng() % alphabet.size()];
        CString out = FormatValue(format, values[round % 4]);
        ASSERT_LE(out.size(), format.size() + 2 * ob::kMaxFormatWidth + 320) << CString(format).ToUtf8();
    }
}

}  // namespace
