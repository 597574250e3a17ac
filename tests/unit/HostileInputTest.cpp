// Whole-script runs through ExecuteProgram. Bad and oversized scripts must
// each end with a reported error or a defined result, within a time bound,
// without crashing the process (the large inputs are generated here, never
// stored in the repository); and a run leaves its last error and resident
// flag for the host.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "ui/headless/HeadlessDesktop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using ob::ui::HeadlessDesktop;

// Seconds a single hostile script may take, generous enough for sanitizer builds.
constexpr int kTimeLimitSeconds = 60;

// What one run left behind: the printed texts and the reported error messages.
struct RunResult {
    bool loaded = false;
    bool resident = false;
    std::string lastError;
    std::vector<std::string> printed;   // print boxes, UTF-8
    std::vector<std::string> errors;    // first line of each error box
    double seconds = 0;
};

// A scratch directory for the generated scripts, removed at the end.
class ScratchDir {
public:
    ScratchDir() {
        std::string pattern = (fs::temp_directory_path() / "ob-hostile-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        m_path = pattern;
    }
    ~ScratchDir() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    // Writes the bytes as a script file and returns its path.
    std::string Write(const std::string& bytes) const {
        std::string path = (m_path / "script.bas").string();
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path;
    }

private:
    fs::path m_path;
};

// Sorts the boxes the headless desktop saw into prints and error reports.
void CollectBoxes(const HeadlessDesktop& desktop, RunResult& result) {
    for (const HeadlessDesktop::Box& box : desktop.Boxes()) {
        std::string text = box.text.ToUtf8();
        if (box.style == (ob::ui::MB_OKCANCEL | ob::ui::MB_ICONSTOP))
            result.errors.push_back(text.substr(0, text.find('\n')));
        else
            result.printed.push_back(text);
    }
}

// Runs the script on a worker thread and waits at most the time limit; a
// run that outlives it is a hang, which ends the whole test process.
RunResult RunScript(const std::string& bytes) {
    ScratchDir dir;
    std::string path = dir.Write(bytes);
    HeadlessDesktop desktop;
    ob::ui::SetDesktop(&desktop);
    RunResult result;
    std::mutex mutex;
    std::condition_variable done;
    bool finished = false;
    auto start = std::chrono::steady_clock::now();
    std::thread worker([&] {
        COrvoBasic interpreter;
        bool loaded = interpreter.ExecuteProgram(CString::FromUtf8(path));
        std::lock_guard<std::mutex> lock(mutex);
        result.loaded = loaded;
        result.resident = interpreter.IsResident();
        result.lastError = interpreter.GetLastError().ToUtf8();
        finished = true;
        done.notify_one();
    });
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (!done.wait_for(lock, std::chrono::seconds(kTimeLimitSeconds), [&] { return finished; })) {
            std::fprintf(stderr, "hostile script still running after %d s: the interpreter hangs\n",
                         kTimeLimitSeconds);
            std::_Exit(1);
        }
    }
    worker.join();
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ob::ui::SetDesktop(nullptr);
    CollectBoxes(desktop, result);
    return result;
}

// Repeats a piece of text.
std::string Repeat(const std::string& piece, size_t count) {
    std::string out;
    out.reserve(piece.size() * count);
    for (size_t i = 0; i < count; ++i) out += piece;
    return out;
}

// Bytes from a fixed seed, so a failure can be reproduced.
std::string RandomBytes(unsigned seed, size_t count) {
    std::mt19937 engine(seed);
    std::uniform_int_distribution<int> byte(0, 255);
    std::string out(count, '\0');
    for (char& c : out) c = static_cast<char>(byte(engine));
    return out;
}

// Random bytes drawn from the language's own characters and words, which get
// much further into the statement handlers than uniform noise.
std::string RandomTokens(unsigned seed, size_t count) {
    static const char* const kPieces[] = {
        "print ", "if ", " then\n", "else\n", "endif\n", "for ", " to ", "next\n", "do ", "while ",
        "loop\n", "goto ", "dim ", "global ", "call ", "x", "y", "a[", "]", "(", ")", "=", "=>",
        "<", "~~", "+", "-", "*", "/", "^", "%", ";", ",", "\"", "1", "0", "1e300", "\n",
        "lbl:", "return\n", "function f(", "endfunction\n", "sub s(", "endsub\n", "#", " ", "\r\n",
    };
    std::mt19937 engine(seed);
    std::uniform_int_distribution<size_t> pick(0, std::size(kPieces) - 1);
    std::string out;
    for (size_t i = 0; i < count; ++i) out += kPieces[pick(engine)];
    return out;
}

TEST(HostileInput, BinaryGarbageEndsWithoutCrash) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        RunResult r = RunScript(RandomBytes(seed, 64 * 1024));
        EXPECT_TRUE(r.loaded) << "seed " << seed;
    }
}

TEST(HostileInput, RandomLanguageTokensEndWithoutCrash) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        RunResult r = RunScript(RandomTokens(seed, 2000));
        EXPECT_TRUE(r.loaded) << "seed " << seed;
    }
}

// The script is one zero-terminated 8-bit string: a NUL byte ends the
// program text, and nothing after it runs.
TEST(HostileInput, NulByteEndsTheProgramText) {
    std::string nuls(1000, '\0');
    RunResult r = RunScript("print 1\nprint 2" + nuls + "print 3\n");
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, (std::vector<std::string>{"1.000000\n", "2.000000\n"}));
}

// A literal cut by a NUL is left open at the end of the text.
TEST(HostileInput, NulInsideStringLiteralIsHandled) {
    std::string script("s = \"ab", 7);
    script += '\0';
    script += "cd\"\nprint \"after\"\n";
    RunResult r = RunScript(script);
    EXPECT_TRUE(r.loaded);
    EXPECT_FALSE(r.errors.empty());
}

TEST(HostileInput, MegabyteOfNulsEndsTheText) {
    RunResult r = RunScript("print \"start\"\n" + std::string(1024 * 1024, '\0') + "print \"end\"\n");
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, std::vector<std::string>{"start\n"});
}

// 10 MB of statements with long comments: every line executes.
TEST(HostileInput, TenMegabyteScriptRuns) {
    const std::string line = "x = x + 1  # " + std::string(987, 'c') + "\n";
    const size_t lines = 10 * 1024 * 1024 / line.size();
    RunResult r = RunScript("x = 0\n" + Repeat(line, lines) + "print x\n");
    EXPECT_TRUE(r.errors.empty());
    ASSERT_EQ(r.printed.size(), 1u);
    EXPECT_EQ(r.printed[0], std::to_string(lines) + ".000000\n");
}

TEST(HostileInput, MegabyteStringLiteralPrints) {
    const std::string text(1024 * 1024, 'a');
    RunResult r = RunScript("s = \"" + text + "\"\nprint s\n");
    EXPECT_TRUE(r.errors.empty());
    ASSERT_EQ(r.printed.size(), 1u);
    EXPECT_EQ(r.printed[0], text + "\n");
}

// A 1 MB line of additions is evaluated iteratively, not by recursion.
TEST(HostileInput, MegabyteExpressionLineEvaluates) {
    const size_t terms = 1024 * 1024 / 8;
    RunResult r = RunScript("x = 0" + Repeat(" + 00001", terms) + "\nprint x\n");
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, std::vector<std::string>{std::to_string(terms) + ".000000\n"});
}

TEST(HostileInput, MegabyteNameAndCommentLines) {
    const std::string name = "v" + std::string(1024 * 1024, 'n');
    RunResult r = RunScript("#" + std::string(1024 * 1024, '#') + "\n" + name + " = 5\nprint " + name + "\n");
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, std::vector<std::string>{"5.000000\n"});
}

TEST(HostileInput, TenThousandNestedTrueIfs) {
    const size_t depth = 10000;
    RunResult r = RunScript(Repeat("if 1 = 1 then\n", depth) + "print \"in\"\n" + Repeat("endif\n", depth) +
                            "print \"out\"\n");
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, (std::vector<std::string>{"in\n", "out\n"}));
}

TEST(HostileInput, TenThousandNestedIfsUnderAFalseOne) {
    const size_t depth = 10000;
    RunResult r = RunScript("if 1 = 2 then\n" + Repeat("if 1 = 1 then\n", depth) + "print \"in\"\n" +
                            Repeat("endif\n", depth) + "print \"skipped\"\nendif\nprint \"out\"\n");
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, std::vector<std::string>{"out\n"});
}

// Nesting beyond the bound is one syntax error for the line; the next line runs.
TEST(HostileInput, HundredThousandNestedParenthesesAreOneSyntaxError) {
    const size_t depth = 100000;
    RunResult r = RunScript("x = " + Repeat("(", depth) + "1" + Repeat(")", depth) + "\nprint \"after\"\n");
    EXPECT_EQ(r.errors, std::vector<std::string>{"Syntax error"});
    EXPECT_EQ(r.printed, std::vector<std::string>{"after\n"});
}

TEST(HostileInput, DeepParenthesesInConditionAndPrint) {
    const std::string deep = Repeat("(", 100000) + "1" + Repeat(")", 100000);
    RunResult r = RunScript("if " + deep + " = 1 then\nendif\nprint " + deep + "\nprint \"after\"\n");
    EXPECT_EQ(r.errors, (std::vector<std::string>{"Syntax error", "Syntax error"}));
    ASSERT_FALSE(r.printed.empty());
    EXPECT_EQ(r.printed.back(), "after\n");
}

// "^" is right-associative, so a long chain nests like parentheses.
TEST(HostileInput, LongPowerChainIsBounded) {
    RunResult r = RunScript("x = 1" + Repeat("^1", 100000) + "\nprint \"after\"\n");
    EXPECT_EQ(r.errors, std::vector<std::string>{"Syntax error"});
    EXPECT_EQ(r.printed, std::vector<std::string>{"after\n"});
}

// Without a closing quote the literal runs to the end of the program; the
// label pre-pass meets it first, then the statement itself.
TEST(HostileInput, UnterminatedStringLiteral) {
    RunResult r = RunScript("print \"start\"\nprint \"never closed\nx = 1\n");
    EXPECT_EQ(r.errors, (std::vector<std::string>{"Syntax error", "Syntax error"}));
    ASSERT_EQ(r.printed.size(), 2u);
    EXPECT_EQ(r.printed[0], "start\n");
    EXPECT_EQ(r.printed[1], "never closed\nx = 1\n\n");
}

TEST(HostileInput, ForWhoseNextNeverComes) {
    RunResult r = RunScript("for i = 1 to 1000000000\nprint i\n");
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, std::vector<std::string>{"1.000000\n"});
}

TEST(HostileInput, HugeAndNegativeSubscripts) {
    RunResult r = RunScript(
        "dim a[3]\n"
        "a[1e300] = 1\n"
        "a[-1e300] = 1\n"
        "print a[1e300]\n"
        "x = a[-1e300]\n"
        "dim b[1e300]\n"
        "dim c[-1e300]\n"
        "print \"end\"\n");
    EXPECT_EQ(r.errors, (std::vector<std::string>{"Array index is out of bounds", "Array index is out of bounds",
                                                  "Array index is out of bounds", "Array index is out of bounds",
                                                  "Incorrect array size", "Incorrect array size"}));
    ASSERT_FALSE(r.printed.empty());
    EXPECT_EQ(r.printed.back(), "end\n");
}

// A NaN subscript must be refused or land on a real element, never read outside.
TEST(HostileInput, NanSubscript) {
    RunResult r = RunScript(
        "dim a[3]\n"
        "a[0] = \"zero\"\n"
        "z = 0\n"
        "n = z / z\n"
        "a[n] = \"stored\"\n"
        "print a[n]\n"
        "dim b[n]\n"
        "print \"end\"\n");
    ASSERT_FALSE(r.printed.empty());
    EXPECT_EQ(r.printed.back(), "end\n");
    for (const std::string& error : r.errors)
        EXPECT_TRUE(error == "Array index is out of bounds" || error == "Incorrect array size") << error;
}

TEST(HostileInput, DimOfSixteenThousand) {
    RunResult r = RunScript(
        "dim a[16000]\n"
        "a[15999] = \"last\"\n"
        "print a[15999]\n"
        "dim a[16000]\n"
        "print a[15999]\n"
        "dim b[16001]\n"
        "global g[16000]\n"
        "g[15999] = 1\n");
    EXPECT_EQ(r.errors, std::vector<std::string>{"Incorrect array size"});
    EXPECT_EQ(r.printed, (std::vector<std::string>{"last\n", "last\n"}));
}

// Many large arrays at once are created and freed without trouble.
TEST(HostileInput, ManyLargeArrays) {
    std::string script;
    for (int i = 0; i < 20; ++i) script += "dim arr" + std::to_string(i) + "[16000]\n";
    script += "arr19[15999] = 7\nprint arr19[15999]\n";
    RunResult r = RunScript(script);
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.printed, std::vector<std::string>{"7.000000\n"});
}

TEST(HostileInput, DeepRecursionIsBoundedWithError13) {
    RunResult r = RunScript("x = f(1)\nprint \"after\"\nend\nfunction f(n)\n  f = f(n + 1)\nendfunction\n");
    EXPECT_EQ(r.errors, std::vector<std::string>{"Too many nested GOSUBs"});
    EXPECT_EQ(r.printed, std::vector<std::string>{"after\n"});
}

TEST(HostileInput, MissingFileIsReportedAndNotRun) {
    HeadlessDesktop desktop;
    ob::ui::SetDesktop(&desktop);
    bool loaded = true;
    {
        COrvoBasic interpreter;
        loaded = interpreter.ExecuteProgram(u"/nonexistent/dir/script.bas");
    }
    ob::ui::SetDesktop(nullptr);
    EXPECT_FALSE(loaded);
    RunResult r;
    CollectBoxes(desktop, r);
    EXPECT_EQ(r.errors, std::vector<std::string>{"Not enough memory to load source file"});
}

TEST(HostileInput, DirectoryAsScriptIsNotLoaded) {
    HeadlessDesktop desktop;
    ob::ui::SetDesktop(&desktop);
    bool loaded = true;
    {
        COrvoBasic interpreter;
        loaded = interpreter.ExecuteProgram(CString::FromUtf8(fs::temp_directory_path().string()));
    }
    ob::ui::SetDesktop(nullptr);
    EXPECT_FALSE(loaded);
}

// The last error holds the message and the source line; the first line has
// no line end before it, later ones begin with the one before them.
TEST(RunOutcome, LastErrorText) {
    EXPECT_EQ(RunScript("print 1\n").lastError, "");
    EXPECT_EQ(RunScript("goto nowhere\n").lastError, "Duplicate label\ngoto nowhere");
    EXPECT_EQ(RunScript("print 1\ngoto nowhere\nprint 2\n").lastError, "Duplicate label\n\ngoto nowhere");
    // the search for the line's end starts two characters in, so a first line
    // of one character runs on to the next line end
    EXPECT_EQ(RunScript("5\nprint 1\n").lastError, "Unexpected operator\n5\nprint 1");
}

TEST(RunOutcome, ResidentFlagOutlivesTheRun) {
    EXPECT_FALSE(RunScript("print 1\n").resident);
    RunResult r = RunScript("stayresident\nprint 1\n");
    EXPECT_TRUE(r.resident);
    EXPECT_EQ(r.printed, std::vector<std::string>{"1.000000\n"});
}

}  // namespace
