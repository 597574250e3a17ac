// Bounds a hostile script cannot get past: the memory budget and its
// accounting, the deadline and stop requests inside long operations, running
// out of memory as a reported error, and linear time for deeply nested
// blocks and for statements that report many errors on one huge line.
#include "HostTestUtil.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;   // shadow memory: no address-space limit, slower code
#else
constexpr bool kSanitized = false;
#endif

const char kDoubling[] = "s = \"x\"\ndo while 1 = 1\n  s = s + s\nloop\n";
const char kMapGrowth[] =
    "map create \"m\"\nbig = repeat(\"x\", 524288)\ni = 0\ndo while 1 = 1\n"
    "  call mapset(\"m\", str(i), big)\n  i = i + 1\nloop\n";
// Statements of tens of milliseconds each on a few megabytes that stay put.
const char kSlowStatements[] =
    "s = repeat(\"ab\", 4000000)\ndo while 1 = 1\n  t = replace(s, \"a\", \"xyz\")\n  n = instr(t + s, \"q\")\nloop\n";

// One run of the runner as a process.
struct RunnerResult {
    int status = -1;          // exit status; -1 when it did not exit normally
    double seconds = 0;       // wall time until it exited
    long maxRssKb = 0;        // peak resident memory
    std::string err;          // what it wrote to stderr
};

// Runs the runner on `script` with `args`; `addressLimit` (bytes, 0 for none)
// becomes its RLIMIT_AS; `signalAfterMs` (>= 0) sends SIGTERM that long
// after the start.
RunnerResult RunRunner(const ob::test::TempDir& dir, const std::string& script, std::vector<std::string> args,
                       rlim_t addressLimit = 0, int signalAfterMs = -1) {
    std::string path = dir.Write("s.bas", script);
    std::string errPath = dir.Path("err.txt");
    std::vector<std::string> store{std::string(OB_BUILD_DIR) + "/orvobasic"};
    store.insert(store.end(), args.begin(), args.end());
    store.push_back(path);
    std::vector<char*> argv;
    for (std::string& a : store) argv.push_back(a.data());
    argv.push_back(nullptr);
    RunnerResult result;
    auto start = Clock::now();
    pid_t pid = ::fork();
    if (pid == 0) {
        int in = ::open("/dev/null", O_RDONLY);
        int out = ::open("/dev/null", O_WRONLY);
        int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (in < 0 || out < 0 || err < 0) ::_exit(127);
        ::dup2(in, 0);
        ::dup2(out, 1);
        ::dup2(err, 2);
        if (addressLimit) {
            struct rlimit limit {addressLimit, addressLimit};
            ::setrlimit(RLIMIT_AS, &limit);
        }
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    if (signalAfterMs >= 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(signalAfterMs));
        start = Clock::now();   // from here on the stop request counts
        ::kill(pid, SIGTERM);
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(pid, &status, 0, &usage);
    result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.maxRssKb = usage.ru_maxrss;
    std::ifstream in(errPath);
    std::stringstream text;
    text << in.rdbuf();
    result.err = text.str();
    return result;
}

// How much a loaded test machine may add to a run's wall time.
constexpr double kSlackSeconds = kSanitized ? 10.0 : 1.0;

// The deadline and the memory budget are measured from outside by
// tests/budgets/check_runaway.py; a stop request (SIGTERM to the runner)
// must land as soon inside long statements.
TEST(ResourceBounds, StopRequestLandsInsideLongStatements) {
    ob::test::TempDir dir;
    std::vector<const char*> scripts{kSlowStatements};
    if (!kSanitized) scripts.push_back(kDoubling);   // under an address-space limit only
    for (const char* script : scripts) {
        RunnerResult r = RunRunner(dir, script, {}, kSanitized ? 0 : rlim_t{4} << 30, 300);
        EXPECT_EQ(r.status, 1) << script;
        // The doubled string may outgrow the address space first: either way a reported end.
        bool ended = r.err.find("error 101:") != std::string::npos ||
                     r.err.find("error 107: Out of memory") != std::string::npos;
        EXPECT_TRUE(ended) << r.err;
        EXPECT_LT(r.seconds, kSlackSeconds) << script;
    }
}

TEST(ResourceBounds, RunningOutOfMemoryIsAReportedError) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's shadow memory does not fit an address-space limit";
    ob::test::TempDir dir;
    for (const char* script : {kDoubling, kMapGrowth}) {
        RunnerResult r = RunRunner(dir, script, {}, rlim_t{900} << 20);
        EXPECT_EQ(r.status, 1) << "not 2: the script was loaded and ran";
        EXPECT_NE(r.err.find(": error 107: Out of memory"), std::string::npos) << r.err;
    }
}

// A host function that fails to allocate, as any allocation of a run may.
CBasicVariable Exhausted(COrvoBasic*, CArgArray&, int) { throw std::bad_alloc(); }

TEST(ResourceBounds, HostsSeeOutOfMemoryAsTheRunsResult) {
    ob::test::ScopedDesktop desktop;
    ob::test::TempDir dir;
    std::string path = dir.Write("s.bas", "print \"before\"\nx = exhausted(1)\nprint \"after\"\n");
    OB_HANDLE script = OB_CreateScript();
    ASSERT_TRUE(script->AddCustomFunction(u"exhausted", &Exhausted, 1, 0));
    std::vector<int> reported;
    script->SetErrorHandler([&](const ob::ErrorRecord& r) {
        reported.push_back(r.id);
        return OB_CONTINUE;
    });
    EXPECT_EQ(OB_RunScriptUtf8(script, path.c_str()), 1);
    EXPECT_EQ(OB_GetRunResult(script), OB_E_NO_MEMORY);
    EXPECT_EQ(reported, std::vector<int>{OB_ERR_NO_MEMORY});
    OB_ErrorInfo info;
    ASSERT_EQ(OB_GetLastErrorInfo(script, &info), 1);
    EXPECT_EQ(info.line, 2);
    EXPECT_STREQ(info.message, "Out of memory");
    EXPECT_EQ(desktop.Printed(), std::vector<std::string>{"before"});
    OB_FreeScript(script);
}

class MemoryAccounting : public ::testing::Test {
protected:
    void SetUp() override {
        m_basic.SetErrorHandler([this](const ob::ErrorRecord& r) {
            m_errors.push_back(r.id);
            return OB_CONTINUE;
        });
    }
    void Run(const std::string& text) { ASSERT_TRUE(m_basic.ExecuteProgram(m_dir.WPath(Write(text)))); }
    std::string Write(const std::string& text) {
        m_dir.Write("s.bas", text);
        return "s.bas";
    }
    int64_t Held() { return m_basic.Meter().bytes; }

    ob::test::ScopedDesktop m_desktop;
    ob::test::TempDir m_dir;
    COrvoBasic m_basic;
    std::vector<int> m_errors;
};

TEST_F(MemoryAccounting, FollowsWhatValuesHoldBothWays) {
    int64_t empty = Held();
    Run("s = repeat(\"ab\", 500000)\n");
    EXPECT_GE(Held() - empty, 2'000'000);   // one million characters of two bytes
    EXPECT_LT(Held() - empty, 2'200'000);
    Run("s = \"\"\n");
    EXPECT_LT(Held() - empty, 4'000);       // large storage is not kept for a short text
    Run("map create \"m\"\nbig = repeat(\"x\", 100000)\nfor i = 1 to 20\n  call mapset(\"m\", str(i), big)\nnext\n");
    EXPECT_GE(Held() - empty, 21 * 200'000);
    Run("map create \"m\"\nbig = 0\n");    // replacing the map frees its entries
    EXPECT_LT(Held() - empty, 50'000);
    Run("dim a[1000]\nfor i = 0 to 999\n  a[i] = repeat(\"y\", 1000)\nnext\n");
    EXPECT_GE(Held() - empty, 1000 * 2000);
    Run("dim a[1]\na = 0\n");
    EXPECT_LT(Held() - empty, 50'000);
    EXPECT_TRUE(m_errors.empty());
}

TEST_F(MemoryAccounting, GenerousBudgetChangesNothingAndTightOneStopsEarly) {
    const char* script =
        "dim a[100]\nfor i = 0 to 99\n  a[i] = str(i) + \"-\" + repeat(\"z\", i)\nnext\n"
        "s = \"\"\nfor i = 0 to 99\n  s = s + a[i]\nnext\nprint len(s)\n";
    ob::Budgets budgets;
    budgets.maxMemory = 100'000'000;
    m_basic.SetBudgets(budgets);
    Run(script);
    EXPECT_EQ(m_basic.GetRunResult(), OB_OK);
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"5940"});
    budgets.maxMemory = 20'000;
    m_basic.SetBudgets(budgets);
    Run(script);
    EXPECT_EQ(m_basic.GetRunResult(), OB_E_MEMORY_LIMIT);
    EXPECT_EQ(m_errors, std::vector<int>{OB_ERR_MEMORY_LIMIT});
    EXPECT_LT(Held(), 40'000);
}

// Thread CPU seconds spent by `run`: the machine's load does not count.
double CpuSeconds(const std::function<void()>& run) {
    timespec a {}, b {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &a);
    run();
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &b);
    return static_cast<double>(b.tv_sec - a.tv_sec) + static_cast<double>(b.tv_nsec - a.tv_nsec) / 1e9;
}

std::string Repeated(const std::string& piece, int n) {
    std::string out;
    for (int i = 0; i < n; ++i) out += piece;
    return out;
}

TEST_F(MemoryAccounting, DeepNestingOfEveryBlockKindTakesLinearTime) {
    constexpr int n = 100'000;
    const double limit = kSanitized ? 20.0 : 2.0;
    std::string forHeads;
    for (int i = 0; i < n; ++i) forHeads += "for i" + std::to_string(i) + " = 1 to 1\n";
    const std::string scripts[] = {
        // every level runs, then each "loop" goes back to a "do" that now skips its block
        "x = 0\n" + Repeated("do while x < 1\n", n) + "x = 1\n" + Repeated("loop\n", n) + "print \"do\"\n",
        "x = 0\n" + Repeated("if x < 1 then\n", n) + "x = 1\n" + Repeated("else\nx = 2\nendif\n", n) +
            "print \"if\"\n",
        "x = 0\n" + forHeads + "x = 1\n" + Repeated("next\n", n) + "print \"for\"\n",
        "call f(1)\nprint \"function\"\nend\nfunction f(a)\n" + Repeated("do while a < 2\na = a + 1\n", n) +
            Repeated("loop\n", n) + "f = a\nendfunction\n",
    };
    for (const std::string& script : scripts) {
        m_desktop.ClearBoxes();
        double seconds = CpuSeconds([&] { Run(script); });
        EXPECT_LT(seconds, limit) << script.substr(0, 40);
        ASSERT_EQ(m_desktop.Printed().size(), 1u) << script.substr(0, 40);
    }
    EXPECT_TRUE(m_errors.empty());
}

TEST_F(MemoryAccounting, ManyErrorsOnOneHugeLineCostLinearTime) {
    constexpr int n = 100'000;
    std::vector<ob::ErrorRecord> records;
    m_basic.SetErrorHandler([&](const ob::ErrorRecord& r) {
        if (records.size() < 3) records.push_back(r);
        m_errors.push_back(r.id);
        return OB_CONTINUE;
    });
    std::string script = "x = " + Repeated("- ", n) + "1\nprint \"end\"\n";
    double seconds = CpuSeconds([&] { Run(script); });
    EXPECT_LT(seconds, kSanitized ? 20.0 : 2.0);
    EXPECT_EQ(m_errors.size(), size_t{n / 2});   // a sign takes one more sign as no operand
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records[0].sourceLine.size(), COrvoBasic::kMaxShownLine);
    EXPECT_EQ(records[0].sourceLine.substr(0, 8), u"x = - - ");
    // Each report of error 0 shows the fallback box first; the next line still runs.
    std::vector<std::string> printed = m_desktop.Printed();
    ASSERT_FALSE(printed.empty());
    EXPECT_EQ(printed.back(), "end");
}

}  // namespace
