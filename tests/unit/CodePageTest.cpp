// The 8-bit code page of scripts and 8-bit files: every byte survives a
// round trip, and characters without a byte become '?'.
#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace ob::platform;

TEST(CodePage, AllBytesRoundTrip) {
    std::string bytes;
    for (int b = 0; b < 256; ++b) bytes += static_cast<char>(b);
    CString wide = AnsiToWide(bytes);
    ASSERT_EQ(wide.size(), 256u);
    EXPECT_EQ(WideToAnsi(wide), bytes);
    for (int b = 0; b < 256; ++b) {
        unsigned char byte = static_cast<unsigned char>(b);
        EXPECT_EQ(static_cast<unsigned char>(WideToByte(ByteToWide(byte))), byte) << b;
    }
}

TEST(CodePage, DistinctBytesGiveDistinctCharacters) {
    std::u16string seen;
    for (int b = 0; b < 256; ++b) {
        char16_t c = ByteToWide(static_cast<unsigned char>(b));
        EXPECT_EQ(seen.find(c), std::u16string::npos) << b;
        seen += c;
    }
}

TEST(CodePage, KnownMappings) {
    EXPECT_EQ(ByteToWide(0x41), u'A');
    EXPECT_EQ(ByteToWide(0x80), u'\u20AC');
    EXPECT_EQ(ByteToWide(0x92), u'\u2019');
    EXPECT_EQ(ByteToWide(0x9F), u'\u0178');
    EXPECT_EQ(ByteToWide(0xE9), u'\u00E9');
    EXPECT_EQ(ByteToWide(0xFF), u'\u00FF');
    // the five bytes the code page leaves open stand for the C1 controls of the same value
    for (unsigned char b : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) EXPECT_EQ(ByteToWide(b), static_cast<char16_t>(b));
}

TEST(CodePage, UnmappableCharactersBecomeQuestionMarks) {
    for (char16_t c : {char16_t(0xD800), u'\u0100', u'\u4E2D', u'\uFFFD', u'\u0080', u'\u009F', u'\u2028'})
        EXPECT_EQ(WideToByte(c), '?') << static_cast<int>(c);
    EXPECT_EQ(WideToAnsi(u"a\u4E2Db\u20AC"), "a?b\x80");
}

TEST(CodePage, AppendingConversionKeepsWhatWasThere) {
    CString out = u"pre";
    AnsiToWide("\xE4x", out);
    EXPECT_EQ(out, u"pre\u00E4x");
    EXPECT_EQ(AnsiToWide(std::string("a\0b", 3)), CString(u"a\0b", 3));
}

}  // namespace
