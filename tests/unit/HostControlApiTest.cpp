// Host control through the C API: the two-step create/run form, stopping a
// runaway script from another thread, budgets and their result codes, the
// error callback and record, the path resolver and the line hook.
#include <gtest/gtest.h>

#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using ob::test::ScopedDesktop;
using ob::test::TempDir;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

// A reported error copied out of its callback.
struct Seen {
    int id = 0;
    int line = 0;
    int column = 0;
    int runResult = 0;
    std::string message, script, sourceLine;
    std::vector<std::pair<std::string, int>> calls;
};

Seen Copy(const OB_ErrorInfo& e) {
    Seen s{e.id, e.line, e.column, e.runResult, e.message, e.script, e.sourceLine, {}};
    for (int i = 0; i < e.callCount; ++i) s.calls.emplace_back(e.calls[i].function, e.calls[i].line);
    return s;
}

// What the error handler records, and what it answers.
struct ErrorLog {
    std::vector<Seen> errors;
    int32_t answer = OB_CONTINUE;

    std::vector<int> Ids() const {
        std::vector<int> ids;
        for (const Seen& s : errors) ids.push_back(s.id);
        return ids;
    }
};

int32_t LogError(OB_HANDLE, const OB_ErrorInfo* error, void* user) {
    auto* log = static_cast<ErrorLog*>(user);
    log->errors.push_back(Copy(*error));
    return log->answer;
}

class HostControlApi : public ::testing::Test {
protected:
    void SetUp() override {
        m_script = OB_CreateScript();
        ASSERT_NE(m_script, nullptr);
        OB_SetErrorHandler(m_script, LogError, &m_log);
    }
    void TearDown() override { OB_FreeScript(m_script); }

    // Writes `text` as "s.bas" and runs it in the prepared interpreter.
    int32_t Run(const std::string& text) { return OB_RunScriptUtf8(m_script, m_dir.Write("s.bas", text).c_str()); }

    TempDir m_dir;
    ScopedDesktop m_desktop;
    OB_HANDLE m_script = nullptr;
    ErrorLog m_log;
};

TEST_F(HostControlApi, CreateThenRunKeepsTheHandleEitherWay) {
    EXPECT_EQ(OB_RunScriptUtf8(m_script, m_dir.Path("missing.bas").c_str()), 0);
    EXPECT_EQ(m_log.Ids(), std::vector<int>{17});
    EXPECT_EQ(Run("print \"ran\"\nstayresident\n"), 1);   // the same handle, loaded this time
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"ran"});
    EXPECT_EQ(OB_IsResident(m_script), 1);
    EXPECT_EQ(OB_GetRunResult(m_script), OB_OK);
    EXPECT_EQ(OB_RunScriptUtf8(nullptr, "x.bas"), 0);
    EXPECT_EQ(OB_RunScript(nullptr, u"x.bas"), 0);
}

// When the stop report was made (it is made the moment the stop lands).
Clock::time_point g_stopReported;

int32_t NoteStop(OB_HANDLE, const OB_ErrorInfo* error, void* user) {
    if (error->id == OB_ERR_STOPPED) g_stopReported = Clock::now();
    return LogError(nullptr, error, user);
}

// The stop lands within 100 ms, and the run returns within 100 ms of the
// request too, except after a deep recursion, whose unwinding (about 20000
// levels) takes longer on its own.
TEST_F(HostControlApi, RunawaysStopFromAnotherThreadWithin100ms) {
    struct Runaway {
        const char* text;
        double returnMs;
    };
    const Runaway runaways[] = {
        {"do while 1 = 1\nloop\n", 100.0},
        {"goto top\nend\ntop:\ngoto top\n", 100.0},
        {"x = f(1)\nend\nfunction f(n)\n  f = f(n + 1)\nendfunction\n", 2000.0},   // until error 13, again and again
    };
    for (const Runaway& r : runaways) {
        OB_HANDLE script = OB_CreateScript();
        ErrorLog log;
        OB_SetErrorHandler(script, NoteStop, &log);
        std::atomic<bool> started{false};
        Clock::time_point requested;
        std::thread stopper([&] {
            while (!started.load()) std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            requested = Clock::now();
            OB_RequestStop(script);
        });
        started = true;
        EXPECT_EQ(OB_RunScriptUtf8(script, m_dir.Write("r.bas", r.text).c_str()), 1);
        auto returned = Clock::now();
        stopper.join();
        auto ms = [&](Clock::time_point t) { return std::chrono::duration<double, std::milli>(t - requested).count(); };
        EXPECT_LT(ms(g_stopReported), 100.0) << r.text;
        EXPECT_LT(ms(returned), r.returnMs) << r.text;
        EXPECT_EQ(OB_GetRunResult(script), OB_E_STOPPED) << r.text;
        ASSERT_FALSE(log.errors.empty()) << r.text;
        EXPECT_EQ(log.errors.back().id, OB_ERR_STOPPED) << r.text;
        OB_FreeScript(script);
    }
}

TEST_F(HostControlApi, EachBudgetEndsTheRunWithItsOwnCode) {
    struct Case {
        uint64_t steps, timeoutMs;
        int32_t depth;
        uint64_t cells;
        const char* text;
        int result;
    };
    const Case cases[] = {
        {1000, 0, 0, 0, "do while 1 = 1\nloop\n", OB_E_STEP_LIMIT},
        {0, 100, 0, 0, "do while 1 = 1\nloop\n", OB_E_TIMEOUT},
        {0, 0, 50, 0, "x = f(1)\nend\nfunction f(n)\n  f = f(n + 1)\nendfunction\n", OB_E_DEPTH},
        {0, 0, 0, 1000, "i = 0\ndo while 1 = 1\n  dim a[10 + i]\n  i = i + 1\nloop\n", OB_E_MEMORY},
    };
    for (const Case& c : cases) {
        OB_HANDLE script = OB_CreateScript();
        ErrorLog log;
        OB_SetErrorHandler(script, LogError, &log);
        OB_SetBudgets(script, c.steps, c.timeoutMs, c.depth, c.cells);
        EXPECT_EQ(OB_RunScriptUtf8(script, m_dir.Write("b.bas", c.text).c_str()), 1);
        EXPECT_EQ(OB_GetRunResult(script), c.result) << c.text;
        ASSERT_EQ(log.errors.size(), 1u) << c.text;
        EXPECT_EQ(log.errors[0].id, OB_ERR_STOPPED + c.result - OB_E_STOPPED);
        EXPECT_EQ(log.errors[0].runResult, c.result);
        OB_FreeScript(script);
    }
}

// Budgets set from inside the run (here: by the line hook at line 2) apply at once.
TEST_F(HostControlApi, BudgetsSetDuringTheRunTakeEffect) {
    OB_SetLineHook(
        m_script,
        [](OB_HANDLE script, const char*, int32_t line, int32_t, void*) -> int32_t {
            if (line == 2) {
                OB_SetBudgets(script, 10, 0, 0, 0);
                OB_SetLineHook(script, nullptr, nullptr);
            }
            return OB_CONTINUE;
        },
        nullptr);
    EXPECT_EQ(Run("x = 0\ndo while 1 = 1\n  x = x + 1\nloop\n"), 1);
    EXPECT_EQ(OB_GetRunResult(m_script), OB_E_STEP_LIMIT);
}

TEST_F(HostControlApi, ErrorRecordCarriesTheCallChain) {
    Run("x = 1\ncall outer()\nend\nsub outer()\n  call inner()\nendsub\nsub inner()\n    z = nothere\nendsub\n");
    ASSERT_FALSE(m_log.errors.empty());
    const Seen& e = m_log.errors[0];
    EXPECT_EQ(e.id, 37);
    EXPECT_EQ(e.message, "Undefined variable");
    EXPECT_EQ(e.script, m_dir.Path("s.bas"));
    EXPECT_EQ(e.line, 8);
    EXPECT_EQ(e.column, 5);
    EXPECT_EQ(e.sourceLine, "    z = nothere");
    EXPECT_EQ(e.runResult, OB_OK);
    using Call = std::pair<std::string, int>;
    EXPECT_EQ(e.calls, (std::vector<Call>{{"outer", 2}, {"inner", 5}}));

    // The last record is there after the run, in the same form.
    OB_ErrorInfo info{};
    ASSERT_EQ(OB_GetLastErrorInfo(m_script, &info), 1);
    Seen last = Copy(info);
    EXPECT_EQ(last.id, m_log.errors.back().id);
    EXPECT_EQ(last.line, m_log.errors.back().line);
    EXPECT_EQ(last.calls, m_log.errors.back().calls);
    EXPECT_EQ(OB_GetLastErrorInfo(m_script, nullptr), 0);
    EXPECT_EQ(OB_GetLastErrorInfo(nullptr, &info), 0);
}

TEST_F(HostControlApi, ErrorHandlerAbortEndsTheRunAndNullRestoresTheDesktop) {
    m_log.answer = OB_ABORT;
    Run("print 1\ny = nothere\nprint 2\n");
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"1.000000"});
    EXPECT_EQ(m_log.Ids(), std::vector<int>{37});
    EXPECT_TRUE(m_desktop.Errors().empty());

    OB_SetErrorHandler(m_script, nullptr, nullptr);
    Run("goto nowhere\n");
    EXPECT_EQ(m_desktop.Errors().size(), 1u);
    EXPECT_EQ(m_log.errors.size(), 1u);
}

// Refuses paths containing "secret", leaves "keep" alone, moves the rest into
// the test directory, and leaves "bad" without its terminating zero.
int32_t Resolve(OB_HANDLE, const char* path, char* buffer, int32_t size, void* user) {
    std::string p = path;
    if (p.find("secret") != std::string::npos) return 0;
    if (p.find("bad") != std::string::npos) {
        std::fill(buffer, buffer + size, 'x');
        return 1;
    }
    if (p.find("keep") != std::string::npos) return 1;
    std::string moved = *static_cast<std::string*>(user) + "/" + p;
    EXPECT_LT(moved.size(), static_cast<size_t>(size));
    std::copy(moved.c_str(), moved.c_str() + moved.size() + 1, buffer);
    return 1;
}

TEST_F(HostControlApi, PathResolverRewritesAndRefuses) {
    std::string dir = m_dir.Path("");
    dir.pop_back();
    OB_SetPathResolver(m_script, Resolve, &dir);
    std::string kept = m_dir.Path("keep.txt");
    Run("open \"secret.txt\" for output as 1 text\n"
        "open \"bad.txt\" for output as 2 text\n"
        "open \"moved.txt\" for output as 3 text\nclose 3\n"
        "open \"" + kept + "\" for output as 4 text\nclose 4\n");
    EXPECT_EQ(m_log.Ids(), (std::vector<int>{47, 47}));
    EXPECT_TRUE(fs::exists(m_dir.Path("moved.txt")));
    EXPECT_TRUE(fs::exists(kept));
    EXPECT_FALSE(fs::exists("moved.txt"));
    EXPECT_FALSE(fs::exists("secret.txt"));
}

// Records (line, level) and asks to stop at line 3.
int32_t StopAtLine3(OB_HANDLE, const char* path, int32_t line, int32_t level, void* user) {
    auto* seen = static_cast<std::vector<std::pair<int, int>>*>(user);
    EXPECT_NE(std::string(path).find("s.bas"), std::string::npos);
    seen->emplace_back(line, level);
    return line == 3 ? OB_ABORT : OB_CONTINUE;
}

TEST_F(HostControlApi, LineHookSeesEachStatementAndCanStop) {
    std::vector<std::pair<int, int>> seen;
    OB_SetLineHook(m_script, StopAtLine3, &seen);
    Run("x = f(1)\nprint x\nprint \"never\"\nend\nfunction f(n)\n  f = n\nendfunction\n");
    using P = std::pair<int, int>;
    EXPECT_EQ(seen, (std::vector<P>{{1, 1}, {6, 2}, {2, 1}, {3, 1}}));
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"1.000000"});
    EXPECT_EQ(OB_GetRunResult(m_script), OB_E_STOPPED);
    EXPECT_EQ(m_log.Ids(), std::vector<int>{OB_ERR_STOPPED});
}

TEST_F(HostControlApi, CapabilitiesDenyWithoutSideEffects) {
    OB_SetCapabilities(m_script, OB_CAP_ALL & ~OB_CAP_FILES);
    std::string target = m_dir.Path("made.txt");
    Run("open \"" + target + "\" for output as 1 text\nf = findfiles(\"*\", 0)\nprint \"after\"\n");
    EXPECT_EQ(m_log.Ids(), (std::vector<int>{40, 21}));
    EXPECT_EQ(m_desktop.Printed(), std::vector<std::string>{"after"});
    EXPECT_FALSE(fs::exists(target));
}

// Setters and queries on handles that are not live are harmless.
TEST(HostControlApiHandles, InvalidHandlesAreIgnored) {
    int dummy = 0;
    OB_HANDLE bogus = reinterpret_cast<OB_HANDLE>(&dummy);
    OB_SetBudgets(bogus, 1, 1, 1, 1);
    OB_SetCapabilities(bogus, 0);
    OB_SetErrorHandler(bogus, LogError, nullptr);
    OB_SetPathResolver(bogus, Resolve, nullptr);
    OB_SetLineHook(bogus, StopAtLine3, nullptr);
    OB_RequestStop(nullptr);
    EXPECT_EQ(OB_GetRunResult(bogus), OB_OK);
    EXPECT_EQ(OB_RunScriptUtf8(bogus, "x.bas"), 0);
    OB_FreeScript(bogus);
}

}  // namespace
