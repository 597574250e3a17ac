// CTextFileLoc, StringTokenizer and FindFiles. The text fixtures were made
// with iconv: utf16_lines.txt (iconv -t UTF-16, so FF FE and little-endian
// units) and ansi_lines.txt (iconv -t CP1252, last line without a line end).
#include "IoTestUtil.h"

#include "io/CTextFileLoc.h"
#include "io/StringTokenizer.h"
#include "platform/FindFiles.h"

#include <gtest/gtest.h>

#include <chrono>

using iotest::Bytes;
using iotest::ReadBytes;
using iotest::TempDir;
using iotest::Utf16;
using iotest::WriteBytes;
using ob::CTextFileLoc;
using ob::StringTokenizer;
using ob::platform::CFile;

namespace {

constexpr unsigned kInput = CFile::modeRead | CFile::shareDenyNone;
constexpr unsigned kOutput = CFile::modeCreate | CFile::modeReadWrite | CFile::shareDenyNone;
constexpr unsigned kAppend = CFile::modeNoTruncate | CFile::modeReadWrite | CFile::shareDenyNone;

// Every line of a file through ReadString.
std::vector<CString> ReadAll(CTextFileLoc& file) {
    std::vector<CString> lines;
    CString line;
    while (file.ReadString(line)) lines.push_back(line);
    return lines;
}

}  // namespace

TEST(TextFile, CreatedFilesAreMarkedUtf16WithCrLfLineEnds) {
    TempDir dir;
    CTextFileLoc file;
    ASSERT_TRUE(file.Open(dir.WPath("u.txt"), kOutput));
    ASSERT_TRUE(file.WriteString(u"ab\n"));
    ASSERT_TRUE(file.WriteString(u"x\n\ny"));   // an empty line inside, a line end added at the end
    ASSERT_TRUE(file.WriteString(u""));         // nothing at all
    ASSERT_TRUE(file.WriteString(u"€"));
    file.Close();
    EXPECT_EQ(ReadBytes(dir.Path("u.txt")),
              "\xFF\xFE" + Utf16("ab\r\nx\r\n\r\ny\r\n") + "\xAC\x20" + Utf16("\r\n"));
}

TEST(TextFile, LongTextIsWrittenInChunksWithOneLineEnd) {
    TempDir dir;
    CTextFileLoc file(false);
    ASSERT_TRUE(file.Open(dir.WPath("l.txt"), kOutput));
    EXPECT_FALSE(file.IsUnicode());
    CString text(600, u'a');
    text[255] = u'\n';   // the first chunk ends with its own line
    ASSERT_TRUE(file.WriteString(text));
    file.Close();
    EXPECT_EQ(ReadBytes(dir.Path("l.txt")), std::string(255, 'a') + "\r\n" + std::string(344, 'a') + "\r\n");
}

TEST(TextFile, EightBitFilesAreWindows1252) {
    TempDir dir;
    CTextFileLoc file(false);
    ASSERT_TRUE(file.Open(dir.WPath("a.txt"), kOutput));
    ASSERT_TRUE(file.WriteString(u"café €5 ☺"));
    file.Close();
    EXPECT_EQ(ReadBytes(dir.Path("a.txt")), "caf\xE9 \x80" "5 ?\r\n");
}

TEST(TextFile, ReadsUtf16WrittenByIconv) {
    CTextFileLoc file(false);
    ASSERT_TRUE(file.Open(CString::FromUtf8(iotest::Fixture("utf16_lines.txt")), kInput));
    EXPECT_TRUE(file.IsUnicode());   // decided by the mark
    EXPECT_EQ(ReadAll(file), (std::vector<CString> {u"first line", u"second été €", u"", u"1;2;x;4",
                                                    u"last without end"}));
    EXPECT_EQ(file.BufferedChars(), 0u);
}

TEST(TextFile, ReadsEightBitWithoutAMark) {
    CTextFileLoc file(true);
    ASSERT_TRUE(file.Open(CString::FromUtf8(iotest::Fixture("ansi_lines.txt")), kInput));
    EXPECT_FALSE(file.IsUnicode());
    EXPECT_EQ(file.GetPosition(), 0u);   // back before the two bytes looked at
    EXPECT_EQ(ReadAll(file), (std::vector<CString> {u"café €5", u"10,20.5,abc,30", u"end"}));
}

TEST(TextFile, LinesAreCutAtTheFirstCarriageReturn) {
    TempDir dir;
    WriteBytes(dir.Path("cr.txt"), "a\rb\r\nc\r\r\n\nlast\r");
    CTextFileLoc file;
    ASSERT_TRUE(file.Open(dir.WPath("cr.txt"), kInput));
    EXPECT_EQ(ReadAll(file), (std::vector<CString> {u"a", u"c", u"", u"last\r"}));
}

TEST(TextFile, AppendWritesFromTheStartAfterTheMark) {
    TempDir dir;
    WriteBytes(dir.Path("m.txt"), "\xFF\xFE" + Utf16("hello world"));
    WriteBytes(dir.Path("p.txt"), "hello world");
    CTextFileLoc marked, plain;
    ASSERT_TRUE(marked.Open(dir.WPath("m.txt"), kAppend));
    ASSERT_TRUE(plain.Open(dir.WPath("p.txt"), kAppend));
    ASSERT_TRUE(marked.WriteString(u"HEY"));
    ASSERT_TRUE(plain.WriteString(u"HEY"));
    marked.Close();
    plain.Close();
    EXPECT_EQ(ReadBytes(dir.Path("m.txt")), "\xFF\xFE" + Utf16("HEY\r\n world"));
    EXPECT_EQ(ReadBytes(dir.Path("p.txt")), "HEY\r\n world");
    CTextFileLoc missing;
    EXPECT_FALSE(missing.Open(dir.WPath("nope.txt"), kAppend));
}

TEST(TextFile, OddByteCountsAndZeroBytes) {
    TempDir dir;
    WriteBytes(dir.Path("odd.txt"), "\xFF\xFE" + Utf16("ab\ncd") + "e");
    CTextFileLoc odd;
    ASSERT_TRUE(odd.Open(dir.WPath("odd.txt"), kInput));
    EXPECT_EQ(ReadAll(odd), (std::vector<CString> {u"ab", u"cd"}));   // the lone last byte is dropped

    WriteBytes(dir.Path("one.txt"), "\xFF");
    CTextFileLoc one;
    ASSERT_TRUE(one.Open(dir.WPath("one.txt"), kInput));
    EXPECT_FALSE(one.IsUnicode());
    EXPECT_EQ(ReadAll(one), (std::vector<CString> {u"\u00FF"}));

    WriteBytes(dir.Path("nul.txt"), Bytes("a\0b\n") + std::string(600, '\0') + "c");
    CTextFileLoc kept(true, false), dropped(true, true);
    ASSERT_TRUE(kept.Open(dir.WPath("nul.txt"), kInput));
    ASSERT_TRUE(dropped.Open(dir.WPath("nul.txt"), kInput));
    std::vector<CString> keptLines = ReadAll(kept);
    ASSERT_EQ(keptLines.size(), 2u);
    EXPECT_EQ(keptLines[0], CString(u"a\0b", 3));
    EXPECT_EQ(keptLines[1].size(), 601u);
    EXPECT_EQ(ReadAll(dropped), (std::vector<CString> {u"ab", u"c"}));
}

TEST(TextFile, ATenMegabyteLineIsReadInLinearTime) {
    TempDir dir;
    std::string big(10 * 1024 * 1024, 'x');
    WriteBytes(dir.Path("big.txt"), big + "\r\nnext");
    auto start = std::chrono::steady_clock::now();
    CTextFileLoc file;
    ASSERT_TRUE(file.Open(dir.WPath("big.txt"), kInput));
    CString line;
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line.size(), big.size());
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, u"next");
    EXPECT_FALSE(file.ReadString(line));
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 30.0);   // quadratic would take hours
}

TEST(TextFile, ReadAheadRunsBeforeTheCaller) {
    TempDir dir;
    WriteBytes(dir.Path("r.txt"), "one\r\ntwo\r\n");
    CTextFileLoc file;
    ASSERT_TRUE(file.Open(dir.WPath("r.txt"), kInput));
    CString line;
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(file.GetPosition(), 10u);   // the whole file was read ahead
    EXPECT_EQ(file.BufferedChars(), 5u);  // "two\r\n"
    file.ClearBuffer();
    EXPECT_FALSE(file.ReadString(line));
}

TEST(StringTokenizer, SplitsAndConvertsNumbers) {
    StringTokenizer list(u"1;2;x;4", u";");
    double v = 0;
    ASSERT_TRUE(list.NextNumber(v));
    EXPECT_EQ(v, 1);
    ASSERT_TRUE(list.NextNumber(v));
    EXPECT_EQ(v, 2);
    EXPECT_FALSE(list.NextNumber(v));   // "x" is no number

    StringTokenizer odd(u"  12abc, 1e3,inf,4", u",");
    ASSERT_TRUE(odd.NextNumber(v));
    EXPECT_EQ(v, 12);
    ASSERT_TRUE(odd.NextNumber(v));
    EXPECT_EQ(v, 1000);
    EXPECT_FALSE(odd.NextNumber(v));   // infinite

    StringTokenizer runs(u";;1;;2;", u";");
    CString token;
    std::vector<CString> tokens;
    while (runs.NextToken(token)) tokens.push_back(token);
    EXPECT_EQ(tokens, (std::vector<CString> {u"1", u"2"}));

    StringTokenizer keep(u"a\n\nb\n", u"\n", StringTokenizer::KeepEmpty);
    tokens.clear();
    while (keep.NextToken(token)) tokens.push_back(token);
    EXPECT_EQ(tokens, (std::vector<CString> {u"a", u"", u"b"}));

    StringTokenizer many(u"1 2,3", u" ,");   // every character of the set delimits
    tokens.clear();
    while (many.NextToken(token)) tokens.push_back(token);
    EXPECT_EQ(tokens.size(), 3u);
}

TEST(FindFiles, MatchesStarAndQuestionMarkOnly) {
    TempDir dir;
    for (const char* name : {"a1.txt", "a22.txt", "b.txt", "noext", "[x].txt", ".hidden.txt"})
        WriteBytes(dir.Path(name), "");
    std::filesystem::create_directory(dir.Path("sub.txt"));
    auto find = [&](const std::string& pattern) {
        std::vector<std::string> names;
        for (const CString& n : ob::platform::FindFiles(dir.WPath(pattern))) names.push_back(n.ToUtf8());
        return names;
    };
    EXPECT_EQ(find("*.txt"), (std::vector<std::string> {"[x].txt", "a1.txt", "a22.txt", "b.txt", "sub.txt"}));
    EXPECT_EQ(find("a?.txt"), (std::vector<std::string> {"a1.txt"}));
    EXPECT_EQ(find("[x].txt"), (std::vector<std::string> {"[x].txt"}));   // brackets are plain characters
    EXPECT_EQ(find("*.*").size(), 6u);                                       // with or without a dot
    EXPECT_EQ(find(".h*"), (std::vector<std::string> {".hidden.txt"}));
    EXPECT_TRUE(find("*.none").empty());
    EXPECT_TRUE(find("missing/*").empty());
    EXPECT_TRUE(ob::platform::FindFiles(u"").empty());
}

TEST(CFile, OpenFlagsFollowTheMfcMeaning) {
    TempDir dir;
    WriteBytes(dir.Path("f.bin"), "abcdef");
    CFile file;
    ASSERT_TRUE(file.Open(dir.WPath("f.bin"), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite));
    EXPECT_EQ(file.GetLength(), 6u);   // kept
    EXPECT_EQ(file.Seek(-2, CFile::end), 4);
    EXPECT_EQ(file.Seek(-10, CFile::current), -1);
    ASSERT_TRUE(file.SetLength(3));
    file.Close();
    EXPECT_EQ(ReadBytes(dir.Path("f.bin")), "abc");
    ASSERT_TRUE(file.Open(dir.WPath("f.bin"), CFile::modeCreate | CFile::modeWrite));
    EXPECT_EQ(file.GetLength(), 0u);   // truncated
    char byte;
    EXPECT_EQ(file.Read(&byte, 1), 0u);   // write-only
    file.Close();
    EXPECT_FALSE(file.Open(dir.WPath("new.bin"), CFile::modeNoTruncate | CFile::modeReadWrite));
    EXPECT_FALSE(file.Open(CString::FromUtf8(dir.Dir().string()), CFile::modeRead));
    EXPECT_FALSE(file.Open(u"", CFile::modeRead));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(file.Write("x", 1));
    EXPECT_EQ(file.GetLength(), 0u);
    ASSERT_TRUE(file.Open(dir.WPath("f.bin"), CFile::modeRead));
    EXPECT_FALSE(file.Write("x", 1));   // read-only
}
