// UTF-8 as the 8-bit code page: conversions, how a script file's encoding is
// decided, reading and writing UTF-8 text files in chunks, and dBase values
// cut at a character boundary.
#include "IoTestUtil.h"

#include <orvobasic/CDbf.h>

#include "io/CTextFileLoc.h"
#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <string>

using namespace ob::platform;
using iotest::ReadBytes;
using iotest::TempDir;
using iotest::WriteBytes;
using ob::CodePage;

namespace {

CString Script(std::string_view bytes, CodePage codePage) {
    CString out;
    DecodeScriptText(bytes, codePage, out);
    return out;
}

}  // namespace

TEST(Utf8, ConvertsBothWaysAndReplacesWhatHasNoForm) {
    const std::string text = "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC \xF0\x9F\x98\x80";   // Grüße € 😀
    CString wide = AnsiToWide(text, CodePage::Utf8);
    EXPECT_EQ(wide, CString(u"Grüße € 😀"));
    EXPECT_EQ(WideToAnsi(wide, CodePage::Utf8), text);
    // Malformed bytes: a stray continuation, a cut sequence, an overlong
    // form, an encoded surrogate; each fault is one U+FFFD.
    EXPECT_EQ(AnsiToWide("a\x80" "b", CodePage::Utf8), CString(u"a\uFFFDb"));
    EXPECT_EQ(AnsiToWide("a\xE2\x82", CodePage::Utf8), CString(u"a\uFFFD"));
    EXPECT_EQ(AnsiToWide("\xC0\xAF", CodePage::Utf8), CString(u"\uFFFD\uFFFD"));
    EXPECT_EQ(AnsiToWide("\xED\xA0\x80", CodePage::Utf8), CString(u"\uFFFD"));
    EXPECT_EQ(WideToAnsi(std::u16string(1, u'\xD800'), CodePage::Utf8), "\xEF\xBF\xBD");
    // Windows-1252 stays what it was.
    EXPECT_EQ(AnsiToWide("\x80\xFC", CodePage::Windows1252), CString(u"€ü"));
    EXPECT_EQ(WideToAnsi(u"€ü中", CodePage::Windows1252), "\x80\xFC?");
}

TEST(Utf8, ScriptEncodingIsDecidedByMarkThenContent) {
    // A mark wins and is dropped, also when the setting is Windows-1252.
    EXPECT_EQ(Script("\xEF\xBB\xBFprint 1", CodePage::Windows1252), CString(u"print 1"));
    // Valid UTF-8 with a multi-byte sequence is UTF-8.
    EXPECT_EQ(Script("x = \"\xC3\xBC\"", CodePage::Windows1252), CString(u"x = \"ü\""));
    // Not valid UTF-8: the code page.
    EXPECT_EQ(Script("x = \"\xFC\xC3\"", CodePage::Windows1252), CString(u"x = \"üÃ\""));
    EXPECT_EQ(Script("x = \"\xFC\"", CodePage::Utf8), CString(u"x = \"\uFFFD\""));
    // ASCII reads the same either way.
    EXPECT_FALSE(IsMultibyteUtf8("print 1"));
    EXPECT_TRUE(IsMultibyteUtf8("\xE2\x82\xAC"));
    EXPECT_FALSE(IsMultibyteUtf8("\xE2\x82"));
}

TEST(Utf8, UnfinishedTailsAndWholeCharacterCuts) {
    EXPECT_EQ(Utf8UnfinishedTail("ab"), 0u);
    EXPECT_EQ(Utf8UnfinishedTail("a\xE2"), 1u);
    EXPECT_EQ(Utf8UnfinishedTail("a\xE2\x82"), 2u);
    EXPECT_EQ(Utf8UnfinishedTail("a\xE2\x82\xAC"), 0u);
    EXPECT_EQ(Utf8UnfinishedTail("\xF0\x9F\x98"), 3u);
    EXPECT_EQ(Utf8UnfinishedTail("\x80\x80\x80\x80"), 0u);   // no lead byte: nothing to wait for
    const std::string euro = "ab\xE2\x82\xAC";
    EXPECT_EQ(WholeCharacterPrefix(euro, 4, CodePage::Utf8), 2u);
    EXPECT_EQ(WholeCharacterPrefix(euro, 5, CodePage::Utf8), 5u);
    EXPECT_EQ(WholeCharacterPrefix(euro, 4, CodePage::Windows1252), 4u);
    EXPECT_EQ(WholeCharacterPrefix(euro, 9, CodePage::Utf8), 5u);
}

TEST(Utf8, TextFilesReadAndWriteAcrossChunks) {
    TempDir dir;
    // A two-byte character split by the first 256-byte read.
    std::string line = std::string(255, 'x') + "\xC3\xA9" "end\r\nlast \xF0\x9F\x98\x80";
    WriteBytes(dir.Path("in.txt"), line);
    ob::CTextFileLoc in;
    in.SetCodePage(CodePage::Utf8);
    ASSERT_TRUE(in.Open(dir.WPath("in.txt"), ob::platform::CFile::modeRead));
    CString text;
    ASSERT_TRUE(in.ReadString(text));
    EXPECT_EQ(text, CString(std::u16string(255, u'x') + u"éend"));
    ASSERT_TRUE(in.ReadString(text));
    EXPECT_EQ(text, CString(u"last 😀"));
    EXPECT_FALSE(in.ReadString(text));
    in.Close();

    // A file ending inside a character: the rest reads as U+FFFD.
    WriteBytes(dir.Path("cut.txt"), "ab\xE2\x82");
    ob::CTextFileLoc cut;
    cut.SetCodePage(CodePage::Utf8);
    ASSERT_TRUE(cut.Open(dir.WPath("cut.txt"), ob::platform::CFile::modeRead));
    ASSERT_TRUE(cut.ReadString(text));
    EXPECT_EQ(text, CString(u"ab\uFFFD"));

    // A surrogate pair at a 256-character write chunk boundary stays one
    // 4-byte character.
    WriteBytes(dir.Path("out.txt"), "");
    ob::CTextFileLoc out(false);
    out.SetCodePage(CodePage::Utf8);
    ASSERT_TRUE(out.Open(dir.WPath("out.txt"), ob::platform::CFile::modeNoTruncate |
                                                   ob::platform::CFile::modeReadWrite));
    ASSERT_FALSE(out.IsUnicode());
    ASSERT_TRUE(out.WriteString(CString(std::u16string(255, u'a') + u"😀b")));
    out.Close();
    EXPECT_EQ(ReadBytes(dir.Path("out.txt")), std::string(255, 'a') + "\xF0\x9F\x98\x80" "b\r\n");
}

TEST(Utf8, DbaseValuesAreCutBeforeAWholeCharacter) {
    TempDir dir;
    CDbf table;
    table.SetCodePage(CodePage::Utf8);
    CDbfFieldDescriptorEx name(u"NAME", DBF_CHAR, 3, 0);
    ASSERT_TRUE(table.Create(dir.WPath("t"), {name}));
    ASSERT_TRUE(table.AppendRecord({CString(u"Grüße")}, false));   // "Gr" + 2 bytes of ü do not fit in 3
    ASSERT_TRUE(table.AppendRecord({CString(u"€")}, false));
    table.Close();
    std::string b = ReadBytes(dir.Path("t.dbf"));
    EXPECT_EQ(b.substr(65, 4), " Gr ");
    EXPECT_EQ(b.substr(69, 4), " \xE2\x82\xAC");
    CDbf back;
    back.SetCodePage(CodePage::Utf8);
    ASSERT_TRUE(back.Open(dir.WPath("t"), CDbf::modeRead));
    std::vector<CString> values;
    ASSERT_TRUE(back.ReadRecord(1, values));
    EXPECT_EQ(values.at(0), CString(u"€"));
}
