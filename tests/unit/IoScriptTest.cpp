// Scripts that write files, run through the interpreter, with the written
// bytes compared here; and script-level behaviour on hostile files.
#include "IoTestUtil.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <functional>

using iotest::ReadBytes;
using iotest::TempDir;
using iotest::Utf16;
using iotest::WriteBytes;

namespace {

// Records what a script prints and the numbers of the errors it reports,
// answering every error box with OK.
class RecordingDesktop : public ob::ui::Desktop {
public:
    int MessageBox(const CString&, unsigned) override { return ob::ui::IDOK; }
    void PrintBox(const CString& text) override { prints.push_back(text.ToUtf8()); }
    int ErrorBox(const ob::ui::ErrorReport& report) override {
        errors.push_back(report.id);
        return ob::ui::IDOK;
    }
    std::vector<std::string> prints;
    std::vector<int> errors;
};

// Runs `script` (8-bit text) from a file in `dir`; every "@" in it stands
// for the directory, so the script names its files by absolute path.
class ScriptRun {
public:
    ScriptRun(const TempDir& dir, std::string script, const std::function<void(COrvoBasic&)>& setup = {}) {
        for (size_t at = script.find('@'); at != std::string::npos; at = script.find('@', at))
            script.replace(at, 1, dir.Dir().string());
        WriteBytes(dir.Path("script.bas"), script);
        ob::ui::SetDesktop(&m_desktop);
        COrvoBasic interpreter;
        if (setup) setup(interpreter);
        interpreter.ExecuteProgram(dir.WPath("script.bas"));
        ob::ui::SetDesktop(nullptr);
    }
    const std::vector<std::string>& Prints() const { return m_desktop.prints; }
    const std::vector<int>& Errors() const { return m_desktop.errors; }

private:
    RecordingDesktop m_desktop;
};

}  // namespace

TEST(IoScript, TextSlotsWriteMarkedUtf16AndCrLf) {
    TempDir dir;
    ScriptRun run(dir, "open \"@/t.txt\" for output as 1 text\n"
                       "dim a[2]\n"
                       "a[0] = \"one\"\n"
                       "a[1] = \"two\"\n"
                       "n = writeline(1, a)\n"
                       "n = writeline(1, \"x\" + \"\")\n"
                       "close 1\n");
    EXPECT_TRUE(run.Errors().empty());
    EXPECT_EQ(ReadBytes(dir.Path("t.txt")), "\xFF\xFE" + Utf16("one\r\ntwo\r\nx\r\n"));
}

TEST(IoScript, BinarySlotsWritePackedLittleEndianItems) {
    TempDir dir;
    ScriptRun run(dir, "open \"@/b.bin\" for output as 7\n"
                       "dim v[2]\n"
                       "v[0] = -2\n"
                       "v[1] = 258\n"
                       "n = write(7, v, 1)\n"
                       "n = write(7, v, 2)\n"
                       "n = write(7, v, 4)\n"
                       "n = write(7, 1, 8)\n"
                       "close 7\n");
    EXPECT_TRUE(run.Errors().empty());
    EXPECT_EQ(ReadBytes(dir.Path("b.bin")), iotest::Bytes("\xFE\x02"
                                                          "\xFE\xFF\x02\x01"
                                                          "\xFE\xFF\xFF\xFF\x02\x01\0\0"
                                                          "\0\0\0\0\0\0\xF0\x3F"));
}

TEST(IoScript, TablesWrittenByScriptsReadBackWithAnIndependentReader) {
    if (std::system("/usr/bin/python3 -c 'import dbfread' >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "python3-dbfread is not installed for /usr/bin/python3 "
                        "(scripts/install-deps.sh installs it)";
    TempDir dir;
    ScriptRun run(dir, "dim n[3]\nn[0] = \"NAME\"\nn[1] = \"CHAR\"\nn[2] = 8\n"
                       "dim q[4]\nq[0] = \"QTY\"\nq[1] = \"INTEGER\"\nq[2] = 4\nq[3] = 1\n"
                       "dim d[3]\nd[0] = \"DAY\"\nd[1] = \"DATE\"\nd[2] = 0\n"
                       "h = dbfcreate(\"@/s\", n, q, d)\n"
                       "x = dbfappend(h, \"caf\xE9\", 2.25, \"20240229\")\n"
                       "x = dbfappend(h, \"tea\", 10, \"19000101\")\n"
                       "x = dbfclose(h)\n");
    EXPECT_TRUE(run.Errors().empty());
    std::string command = "/usr/bin/python3 -c \"import dbfread\n"
                          "for r in dbfread.DBF('" + dir.Path("s.dbf") + "', encoding='cp1252'):\n"
                          "    print(repr(r['NAME']), repr(r['QTY']), repr(r['DAY']))\"";
    std::string output;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char chunk[256];
        size_t got;
        while ((got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0) output.append(chunk, got);
        ::pclose(pipe);
    }
    // 2.25 prints as 2.250000 and keeps one decimal; 10 prints as 10.000000.
    EXPECT_EQ(output, "'café' 2.2 datetime.date(2024, 2, 29)\n"
                      "'tea' 10.0 datetime.date(1900, 1, 1)\n");
}

TEST(IoScript, HugeReadCountsFailWithoutAllocating) {
    TempDir dir;
    WriteBytes(dir.Path("small.bin"), "12345");
    // The counts are checked against the five bytes left before anything is
    // allocated: error 51 (short read), not 50 (no memory) or a crash.
    ScriptRun run(dir, "open \"@/small.bin\" as 1\n"
                       "a = read(1, 1000000000, 8)\n"
                       "p = seek(1, 0)\n"
                       "a = read(1, 1e18, 1)\n"
                       "p = seek(1, 0)\n"
                       "a = read(1, 5, 1)\n"
                       "print a[4]\n");
    EXPECT_EQ(run.Errors(), (std::vector<int> {51, 51}));
    EXPECT_EQ(run.Prints(), (std::vector<std::string> {"53\n"}));
}

TEST(IoScript, HostileTextFilesEndCleanly) {
    TempDir dir;
    WriteBytes(dir.Path("big.txt"), std::string(10 * 1024 * 1024, 'y'));
    WriteBytes(dir.Path("odd.txt"), "\xFF\xFE" + Utf16("a\nb") + "c");
    auto start = std::chrono::steady_clock::now();
    ScriptRun run(dir, "open \"@/big.txt\" as 1 text\n"
                       "x = readline(1)\n"
                       "y = readline(1)\n"
                       "print iseof(1)\n"
                       "open \"@/odd.txt\" as 2 text\n"
                       "do while iseof(2) = 0\n"
                       "  x = readline(2)\n"
                       "  print x\n"
                       "loop\n");
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 30.0);
    EXPECT_TRUE(run.Errors().empty());
    EXPECT_EQ(run.Prints(), (std::vector<std::string> {"1\n", "a\r\n\n", "b\r\n\n"}));
}

TEST(IoScript, CorruptTablesGiveFailedCalls) {
    TempDir dir;
    std::string header(32, '\0');
    header[0] = 3;
    header[4] = 1;       // one record
    header[8] = 65;      // one field
    header[10] = 5;      // 1 + 4
    std::string field(32, '\0');
    field[0] = 'A';
    field[11] = 'C';
    field[16] = 4;
    WriteBytes(dir.Path("cut.dbf"), header + field.substr(0, 10));
    WriteBytes(dir.Path("nodata.dbf"), header + field + "\x0D");   // header only
    WriteBytes(dir.Path("zero.dbf"), "");
    ScriptRun run(dir, "print dbfopen(\"@/cut\")\n"
                       "print dbfopen(\"@/zero\")\n"
                       "h = dbfopen(\"@/nodata\")\n"
                       "print h\n"
                       "r = dbfread(h)\n"
                       "print r\n"
                       "print dbfwrite(h, 0, \"x\")\n"
                       "print dbfappend(h, \"abcd\")\n"
                       "print dbfclose(h)\n"
                       "h = dbfopen(\"@/nodata\")\n"
                       "print dbfnumrecords(h)\n"
                       "r = dbfread(h)\n"
                       "print r + \"|\"\n");
    EXPECT_TRUE(run.Errors().empty());
    EXPECT_EQ(run.Prints(), (std::vector<std::string> {"-1\n", "-1\n", "0\n", "\n", "True\n", "True\n",
                                                       "True\n", "2\n", "x   |\n"}));
}

TEST(IoScript, TheInterpreterClosesWhatTheScriptLeftOpen) {
    TempDir dir;
    ScriptRun run(dir, "dim f[3]\nf[0] = \"A\"\nf[1] = \"C\"\nf[2] = 2\n"
                       "h = dbfcreate(\"@/open\", f)\n"
                       "x = dbfappend(h, \"ab\")\n"
                       "open \"@/open.txt\" for output as 5 text\n"
                       "x = writeline(5, \"z\")\n");
    EXPECT_TRUE(run.Errors().empty());
    std::string table = ReadBytes(dir.Path("open.dbf"));
    ASSERT_EQ(table.size(), 65u + 3u + 1u);
    EXPECT_EQ(table[4], 1);                    // the count made it to the header
    EXPECT_EQ(table.substr(65), " ab\x1A");   // and the end mark after the record
    EXPECT_EQ(ReadBytes(dir.Path("open.txt")), "\xFF\xFE" + Utf16("z\r\n"));
}

TEST(IoScript, TheHostsPathResolverAppliesToTablesAndPatterns) {
    TempDir dir;
    ScriptRun run(dir,
                  "dim f[3]\nf[0] = \"A\"\nf[1] = \"C\"\nf[2] = 1\n"
                  "print dbfcreate(\"secret\", f)\n"
                  "print dbfopen(\"secret\")\n"
                  "n = findfiles(\"secret*\", 0)\n"
                  "print dbfcreate(\"fine\", f)\n",
                  [&dir](COrvoBasic& b) {
                      b.SetPathResolver([&dir](CString& path) {
                          path = CString::FromUtf8(dir.Dir().string() + "/") + path;
                          return path.Find(u"secret") < 0;
                      });
                  });
    EXPECT_EQ(run.Errors(), (std::vector<int> {47, 47, 47}));
    EXPECT_EQ(run.Prints(), (std::vector<std::string> {"-1\n", "-1\n", "0\n"}));
    EXPECT_TRUE(std::filesystem::exists(dir.Path("fine.dbf")));
}
