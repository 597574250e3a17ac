// Host control through the C++ interface: stopping a runaway script from
// another thread, budgets with their own result codes, the structured error
// record, sandbox capabilities and the line hook.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "ui/headless/HeadlessDesktop.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

class HostControlTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/ob-control-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        m_dir = pattern;
        ob::ui::SetDesktop(&m_desktop);
        m_basic = std::make_unique<COrvoBasic>();
        m_basic->SetErrorHandler([this](const ob::ErrorRecord& r) {
            m_records.push_back(r);
            return OB_CONTINUE;
        });
    }
    void TearDown() override {
        m_basic.reset();
        ob::ui::SetDesktop(nullptr);
        fs::remove_all(m_dir);
    }

    // Writes `text` as a script and runs it to its end.
    void Run(const std::string& text) {
        std::string path = m_dir + "/script.bas";
        std::ofstream(path, std::ios::binary) << text;
        ASSERT_TRUE(m_basic->ExecuteProgram(CString::FromUtf8(path)));
    }

    std::vector<int> ErrorIds() const {
        std::vector<int> ids;
        for (const auto& r : m_records) ids.push_back(r.id);
        return ids;
    }

    std::vector<std::string> Printed() const {
        std::vector<std::string> out;
        for (const auto& box : m_desktop.Boxes())
            if (box.style == ob::ui::MB_OK) out.push_back(box.text.ToUtf8());
        return out;
    }

    std::string m_dir;
    ob::ui::HeadlessDesktop m_desktop;
    std::unique_ptr<COrvoBasic> m_basic;
    std::vector<ob::ErrorRecord> m_records;
};

// Starts `text`, asks it to stop from another thread after 50 ms, and
// returns how long the stop took to land.
double StopLatencyMs(HostControlTest& test, COrvoBasic& basic, const std::function<void()>& run) {
    std::atomic<bool> started{false};
    Clock::time_point requested;
    std::thread stopper([&] {
        while (!started.load()) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        requested = Clock::now();
        basic.RequestStop();
    });
    started = true;
    run();
    auto finished = Clock::now();
    stopper.join();
    (void)test;
    return std::chrono::duration<double, std::milli>(finished - requested).count();
}

TEST_F(HostControlTest, RunawayScriptsStopWithinMilliseconds) {
    const char* runaways[] = {
        "do while 1 = 1\nloop\n",
        "goto top\nend\ntop:\ngoto top\n",
        "do while 1 = 1\n  x = f(0)\nloop\nend\nfunction f(n)\n  if n < 200 then\n    f = f(n + 1)\n"
        "    return\n  endif\n  f = n\nendfunction\n",
    };
    for (const char* script : runaways) {
        m_records.clear();
        double ms = StopLatencyMs(*this, *m_basic, [&] { Run(script); });
        EXPECT_LT(ms, 100.0) << script;
        EXPECT_EQ(m_basic->GetRunResult(), OB_E_STOPPED) << script;
        EXPECT_EQ(ErrorIds(), std::vector<int>{OB_ERR_STOPPED}) << script;
    }
    m_basic.reset();   // freeing a stopped interpreter is clean
}

TEST_F(HostControlTest, EachBudgetStopsItsOwnRunaway) {
    struct Case {
        ob::Budgets budgets;
        const char* script;
        int result;
    };
    ob::Budgets steps, time, depth, cells;
    steps.maxSteps = 1000;
    time.timeoutMs = 100;
    depth.maxDepth = 50;
    cells.maxCells = 1000;
    const Case cases[] = {
        {steps, "do while 1 = 1\nloop\n", OB_E_STEP_LIMIT},
        {time, "do while 1 = 1\nloop\n", OB_E_TIMEOUT},
        {depth, "x = f(1)\nend\nfunction f(n)\n  f = f(n + 1)\nendfunction\n", OB_E_DEPTH},
        {cells, "dim a[10]\ni = 0\ndo while 1 = 1\n  dim a[10 + i]\n  b = a\n  i = i + 1\nloop\n",
         OB_E_MEMORY},
    };
    for (const Case& c : cases) {
        m_basic = std::make_unique<COrvoBasic>();
        m_records.clear();
        m_basic->SetErrorHandler([this](const ob::ErrorRecord& r) {
            m_records.push_back(r);
            return OB_CONTINUE;
        });
        m_basic->SetBudgets(c.budgets);
        auto start = Clock::now();
        Run(c.script);
        EXPECT_LT(std::chrono::duration<double>(Clock::now() - start).count(), 60.0) << c.script;
        EXPECT_EQ(m_basic->GetRunResult(), c.result) << c.script;
        ASSERT_FALSE(m_records.empty()) << c.script;
        EXPECT_EQ(m_records.back().runResult, c.result);
        EXPECT_EQ(m_records.back().id, OB_ERR_STOPPED + c.result - OB_E_STOPPED);
    }
}

TEST_F(HostControlTest, ScriptsWithinTheirBudgetsRunUnchanged) {
    const char* script =
        "dim a[100]\nfor i = 0 to 99\n  a[i] = i * 2\nnext\nprint a[99]; \" \"; f(10)\nend\n"
        "function f(n)\n  if n < 1 then\n    f = 0\n    return\n  endif\n  f = n + f(n - 1)\nendfunction\n";
    Run(script);
    std::vector<std::string> unlimited = Printed();
    m_desktop.ClearBoxes();
    ob::Budgets generous;
    generous.maxSteps = 100000;
    generous.timeoutMs = 60000;
    generous.maxDepth = 100;
    generous.maxCells = 10000;
    m_basic = std::make_unique<COrvoBasic>();
    m_basic->SetBudgets(generous);
    Run(script);
    EXPECT_EQ(Printed(), unlimited);
    EXPECT_EQ(Printed(), std::vector<std::string>{"198.000000 55.000000\n"});
    EXPECT_EQ(m_basic->GetRunResult(), OB_OK);
}

TEST_F(HostControlTest, ErrorRecordLocatesTheStatementAndItsCalls) {
    Run("x = 1\ncall outer()\nend\nsub outer()\n  call inner()\nendsub\nsub inner()\n  y = 1\n    z = nothere\nendsub\n");
    // reading an unknown variable leaves its name to be read again as a
    // statement of its own, which lacks its "=": 37, then 3
    ASSERT_EQ(ErrorIds(), (std::vector<int>{37, 3}));
    const ob::ErrorRecord& r = m_records[0];
    EXPECT_EQ(r.message.ToUtf8(), "Undefined variable");
    EXPECT_EQ(r.line, 9);
    EXPECT_EQ(r.column, 5);
    EXPECT_EQ(r.sourceLine.ToUtf8(), "    z = nothere");
    ASSERT_EQ(r.calls.size(), 2u);
    EXPECT_EQ(r.calls[0].function.ToUtf8(), "outer");
    EXPECT_EQ(r.calls[0].line, 2);
    EXPECT_EQ(r.calls[1].function.ToUtf8(), "inner");
    EXPECT_EQ(r.calls[1].line, 5);
    EXPECT_EQ(m_basic->GetLastErrorRecord().line, 9);
}

TEST_F(HostControlTest, ErrorHandlerCanAbortTheRun) {
    m_basic->SetErrorHandler([](const ob::ErrorRecord&) { return OB_ABORT; });
    Run("print 1\ny = nothere\nprint 2\n");
    EXPECT_EQ(Printed(), std::vector<std::string>{"1.000000\n"});
}

TEST_F(HostControlTest, SandboxDeniesEveryCapabilityAndTouchesNothing) {
    m_basic->SetCapabilities(OB_CAP_NONE);
    std::string target = m_dir + "/made.txt";
    Run("open \"" + target + "\" for output as 1 text\n"
        "n = writeline(1, \"x\")\n"
        "h = dbfcreate(\"" + m_dir + "/t\", \"a\")\n"
        "f = findfiles(\"" + m_dir + "/*\", 0)\n"
        "runexe \"/bin/touch\", \"" + m_dir + "/ran\"\n"
        "run \"" + m_dir + "/script.bas\"\n"
        "playsound \"x.wav\"\n"
        "print \"after\"\n");
    EXPECT_EQ(ErrorIds(), (std::vector<int>{40, 21, 21, 21, 40, 40, 40}));
    EXPECT_EQ(Printed(), std::vector<std::string>{"after\n"});
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::vector<std::string> entries;
    for (const auto& e : fs::directory_iterator(m_dir)) entries.push_back(e.path().filename().string());
    EXPECT_EQ(entries, std::vector<std::string>{"script.bas"});
}

// A script started with "run" gets the same sandbox and stops with its caller.
TEST_F(HostControlTest, RunPassesTheSandboxAndTheStopOn) {
    std::string inner = m_dir + "/inner.bas";
    std::ofstream(inner) << "open \"" << m_dir << "/made.txt\" for output as 1 text\ndo while 1 = 1\nloop\n";
    m_basic->SetCapabilities(OB_CAP_ALL & ~OB_CAP_FILES);
    double ms = StopLatencyMs(*this, *m_basic, [&] { Run("run \"" + inner + "\"\nprint \"after\"\n"); });
    EXPECT_LT(ms, 100.0);
    EXPECT_EQ(ErrorIds(), (std::vector<int>{40, OB_ERR_STOPPED, OB_ERR_STOPPED}));
    EXPECT_TRUE(Printed().empty());
    EXPECT_FALSE(fs::exists(m_dir + "/made.txt"));
}

TEST_F(HostControlTest, PathResolverRewritesOrRefuses) {
    m_basic->SetPathResolver([this](CString& path) {
        if (path.Find(u"secret") >= 0) return false;
        path = CString::FromUtf8(m_dir + "/") + path;
        return true;
    });
    Run("open \"secret.txt\" for output as 1 text\nopen \"fine.txt\" for output as 2 text\nclose 2\n");
    EXPECT_EQ(ErrorIds(), std::vector<int>{47});
    EXPECT_TRUE(fs::exists(m_dir + "/fine.txt"));
}

TEST_F(HostControlTest, LineHookSeesEveryStatementAndCanStop) {
    std::vector<std::pair<int, unsigned>> seen;
    m_basic->SetLineHook([&](const CString&, int line, unsigned level) {
        seen.emplace_back(line, level);
        return line == 3 ? OB_ABORT : OB_CONTINUE;
    });
    Run("x = f(1)\nprint x\nprint \"never\"\nend\nfunction f(n)\n  f = n\nendfunction\n");
    using P = std::pair<int, unsigned>;
    EXPECT_EQ(seen, (std::vector<P>{{1, 1}, {6, 2}, {2, 1}, {3, 1}}));
    EXPECT_EQ(Printed(), std::vector<std::string>{"1.000000\n"});
    EXPECT_EQ(m_basic->GetRunResult(), OB_E_STOPPED);
}

}  // namespace
