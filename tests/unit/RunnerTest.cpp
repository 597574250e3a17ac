// The orvobasic command-line runner as a process: options, exit statuses,
// the stderr format of reported errors, and line ends.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kTimeLimitSeconds = 60;
const char kFallbackText[] = "Error loading resource string. BasicEng";

// What one runner process produced.
struct Outcome {
    int status = -1;   // exit status, or -1 when killed
    std::string out;
    std::string err;
};

// A fresh working directory for one test, removed at the end.
class WorkDir {
public:
    WorkDir() {
        std::string pattern = (fs::temp_directory_path() / "ob-runner-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        m_path = pattern;
    }
    ~WorkDir() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    WorkDir(const WorkDir&) = delete;
    WorkDir& operator=(const WorkDir&) = delete;

    std::string Path(const std::string& name) const { return (m_path / name).string(); }

    // Writes a file below the directory (creating subdirectories) and returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        fs::path path = m_path / name;
        fs::create_directories(path.parent_path());
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path.string();
    }

    const fs::path& Dir() const { return m_path; }

private:
    fs::path m_path;
};

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Stderr without the sanitizer's own warnings (a sanitizer build notes, for
// instance, that it cannot follow the interpreter's stack switches); an actual
// sanitizer report is a test failure.
std::string WithoutSanitizerNotices(const std::string& err) {
    EXPECT_EQ(err.find("==ERROR: "), std::string::npos) << err;
    EXPECT_EQ(err.find(": runtime error: "), std::string::npos) << err;
    std::string out;
    size_t start = 0;
    while (start < err.size()) {
        size_t end = err.find('\n', start);
        end = end == std::string::npos ? err.size() : end + 1;
        std::string line = err.substr(start, end - start);
        bool notice = line.rfind("==", 0) == 0 && line.find("==WARNING: ") != std::string::npos;
        if (!notice) out += line;
        start = end;
    }
    return out;
}

// Starts the runner in `dir` with `args`, stdin from `input` (nothing: /dev/null),
// and waits for it at most the time limit (then it is killed).
Outcome RunRunner(const WorkDir& dir, const std::vector<std::string>& args, const std::string& input = "") {
    std::string inPath = dir.Write(".stdin", input);
    std::string outPath = dir.Path(".stdout"), errPath = dir.Path(".stderr");
    std::string runner = std::string(OB_BUILD_DIR) + "/orvobasic";
    std::vector<std::string> argvStore{runner};
    argvStore.insert(argvStore.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : argvStore) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = ::fork();
    if (pid == 0) {
        if (::chdir(dir.Dir().c_str()) != 0) ::_exit(127);
        int in = ::open(inPath.c_str(), O_RDONLY);
        int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (in < 0 || out < 0 || err < 0) ::_exit(127);
        ::dup2(in, 0);
        ::dup2(out, 1);
        ::dup2(err, 2);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    Outcome outcome;
    int wstatus = 0;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(kTimeLimitSeconds);
    while (::waitpid(pid, &wstatus, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &wstatus, 0);
            ADD_FAILURE() << "runner killed after " << kTimeLimitSeconds << " s";
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    outcome.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : -1;
    outcome.out = ReadFile(outPath);
    outcome.err = WithoutSanitizerNotices(ReadFile(errPath));
    return outcome;
}

// Runs a script written into a fresh directory under the name "s.bas".
Outcome RunScript(const std::string& source, const std::vector<std::string>& options = {"--on-error=continue"},
                  const std::string& input = "") {
    WorkDir dir;
    dir.Write("s.bas", source);
    std::vector<std::string> args = options;
    args.push_back("s.bas");
    return RunRunner(dir, args, input);
}

TEST(Runner, HelpAndVersionExitZero) {
    WorkDir dir;
    Outcome help = RunRunner(dir, {"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--on-error"), std::string::npos);
    Outcome version = RunRunner(dir, {"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_FALSE(version.out.empty());
}

TEST(Runner, BadCommandLineIs64) {
    WorkDir dir;
    dir.Write("s.bas", "print 1\n");
    EXPECT_EQ(RunRunner(dir, {}).status, 64);
    EXPECT_EQ(RunRunner(dir, {"--no-such-option", "s.bas"}).status, 64);
    EXPECT_EQ(RunRunner(dir, {"--on-error=maybe", "s.bas"}).status, 64);
    EXPECT_EQ(RunRunner(dir, {"-e"}).status, 64);
    // What follows the script is the script's own, not a second script.
    EXPECT_EQ(RunRunner(dir, {"s.bas", "s.bas", "--no-such-option"}).status, 0);
}

TEST(Runner, CleanScriptExitsZeroWithQuietStderr) {
    Outcome o = RunScript("print \"hi\"; 2.5\nprint 7\n");
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out, "hi2.500000\n7.000000\n");
    EXPECT_EQ(o.err, "");
}

TEST(Runner, MissingScriptIsExitTwoWithError17) {
    WorkDir dir;
    Outcome o = RunRunner(dir, {"--on-error=continue", "missing.bas"});
    EXPECT_EQ(o.status, 2);
    EXPECT_EQ(o.out, "");
    EXPECT_NE(o.err.find("missing.bas:"), std::string::npos);
    EXPECT_NE(o.err.find(": error 17: Not enough memory to load source file\n"), std::string::npos);
}

// One report: "SCRIPT:LINE: error N: MESSAGE", then the source line indented by four blanks.
TEST(Runner, ErrorReportFormat) {
    Outcome o = RunScript("print \"a\"\n  goto nowhere\nprint \"b\"\n");
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.out, "a\nb\n");
    EXPECT_EQ(o.err, "s.bas:2: error 7: Duplicate label\n      goto nowhere\n           ^~~~~~~\n"
                     "    no label \"nowhere\"\n");
}

TEST(Runner, ScriptPathIsShownAsTyped) {
    WorkDir dir;
    dir.Write("sub/dir/x.bas", "y = nothing_here\n");
    Outcome o = RunRunner(dir, {"--on-error=continue", "./sub/dir/x.bas"});
    EXPECT_EQ(o.err.rfind("./sub/dir/x.bas:1: error 37: Undefined variable\n", 0), 0u) << o.err;
}

// Error 0 has no message: the fallback notice on its own line, then the report.
TEST(Runner, ErrorZeroShowsFallbackLine) {
    Outcome o = RunScript("if 1 >= 0 then\nendif\n");
    EXPECT_EQ(o.status, 1);
    std::string expected = std::string(kFallbackText) + "\ns.bas:1: error 0: \n    if 1 >= 0 then\n";
    EXPECT_EQ(o.err.substr(0, expected.size()), expected);
}

TEST(Runner, AbortStopsAtTheFirstError) {
    const std::string script = "print \"a\"\nx = nope\nprint \"b\"\n";
    Outcome o = RunScript(script, {"--on-error=abort"});
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.out, "a\n");
    EXPECT_EQ(o.err, "s.bas:2: error 37: Undefined variable\n    x = nope\n        ^~~~\n    \"nope\" is not defined\n");
}

TEST(Runner, DefaultWithoutTerminalIsAbort) {
    Outcome o = RunScript("x = nope\nprint \"b\"\n", {});
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.out, "");
}

TEST(Runner, AskReadsTheAnswerFromStdin) {
    const std::string script = "goto x\nprint \"b\"\ngoto y\nprint \"c\"\n";
    Outcome yes = RunScript(script, {"--on-error=ask"}, "y\n\n");
    EXPECT_EQ(yes.status, 1);
    EXPECT_EQ(yes.out, "b\nc\n");
    Outcome no = RunScript(script, {"--on-error=ask"}, "n\n");
    EXPECT_EQ(no.status, 1);
    EXPECT_EQ(no.out, "");
    Outcome eof = RunScript(script, {"--on-error=ask"}, "");
    EXPECT_EQ(eof.out, "");
}

// The line of a statement is where it began, even when a literal spans lines.
TEST(Runner, LineOfAStatementSpanningLines) {
    Outcome o = RunScript("x = 1\ns = \"one\ntwo\" - \"b\"\nprint s\n");
    EXPECT_EQ(o.err.rfind("s.bas:2: error 14: ", 0), 0u) << o.err;
    EXPECT_EQ(o.out, "one\ntwo\n");
}

TEST(Runner, UnterminatedLiteralReportedOnItsStatementLine) {
    Outcome o = RunScript("print 1\nprint \"open\nx = 2\n");
    EXPECT_EQ(o.err.rfind("s.bas:2: error 1: Syntax error\n", 0), 0u) << o.err;
}

// Errors found by the label pre-pass carry the line where it found them.
TEST(Runner, DuplicateLabelReportedOnItsLine) {
    Outcome o = RunScript("print 1\nend\na:\nb:\na:\nend\n");
    EXPECT_EQ(o.err, "s.bas:5: error 6: Lable table full\n    a:\n    ^\n");
    EXPECT_EQ(o.out, "1.000000\n");
}

// A script mixing statements, blocks, loops, functions, labels and errors.
const char kMixedScript[] =
    "# mixed\n"
    "\n"
    "print \"start\"\n"
    "\n"
    "\n"
    "x = 2\n"
    "if x = 2 then\n"
    "  print \"yes\"\n"
    "else\n"
    "  print \"no\"\n"
    "endif\n"
    "for i = 1 to 3\n"
    "  print i;\n"
    "  y = undefinedname\n"
    "next\n"
    "do while x < 4\n"
    "  x = x + 1\n"
    "loop\n"
    "print x, f(3)\n"
    "if 1 >= 2 then\n"
    "endif\n"
    "goto there\n"
    "end\n"
    "there:\n"
    "print \"there\"\n"
    "end\n"
    "function f(n)\n"
    "\n"
    "  f = n * n + q\n"
    "endfunction\n";

// Replaces every LF by the given line end.
std::string WithLineEnds(const std::string& text, const std::string& eol) {
    std::string out;
    for (char c : text) {
        if (c == '\n') out += eol;
        else out += c;
    }
    return out;
}

TEST(Runner, CrLfAndLfBehaveIdentically) {
    Outcome lf = RunScript(kMixedScript);
    Outcome crlf = RunScript(WithLineEnds(kMixedScript, "\r\n"));
    EXPECT_EQ(lf.status, 1);
    EXPECT_FALSE(lf.err.empty());
    EXPECT_EQ(crlf.status, lf.status);
    EXPECT_EQ(crlf.out, lf.out);
    EXPECT_EQ(crlf.err, lf.err);
}

TEST(Runner, EmptyScriptRunsClean) {
    Outcome o = RunScript("");
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out, "");
    EXPECT_EQ(o.err, "");
}

}  // namespace
