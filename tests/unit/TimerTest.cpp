// Timers: the desktop's message loop, "timerstart"/"timerstop" in scripts,
// and ticks that arrive for a freed interpreter.
#include <gtest/gtest.h>

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"
#include "engine/EventTable.h"
#include "platform/Clock.h"
#include "ui/headless/MessageLoop.h"

#include <ctime>
#include <thread>
#include <vector>

namespace {

using ob::platform::MonotonicMs;
using ob::test::ScopedDesktop;
using ob::test::TempDir;

// Tick times recorded by a timer proc; the context is a vector<uint64_t>.
void RecordTick(void* context, unsigned) { static_cast<std::vector<uint64_t>*>(context)->push_back(MonotonicMs()); }

TEST(MessageLoop, TicksFollowTheIntervalWithoutSpinning) {
    ob::ui::MessageLoop loop;
    std::vector<uint64_t> ticks;
    uint64_t start = MonotonicMs();
    ASSERT_NE(loop.SetTimer(100, RecordTick, &ticks), 0u);
    std::clock_t cpu = std::clock();
    EXPECT_FALSE(loop.Run(450));
    double cpuMs = 1000.0 * static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC;
    ASSERT_GE(ticks.size(), 3u);
    ASSERT_LE(ticks.size(), 5u);
    EXPECT_NEAR(static_cast<double>(ticks[0] - start), 100, 60);
    for (size_t i = 1; i < ticks.size(); ++i) EXPECT_NEAR(static_cast<double>(ticks[i] - ticks[i - 1]), 100, 60);
    EXPECT_LT(cpuMs, 100.0);   // waiting, not polling
}

// A proc that kills its own timer on the second tick.
struct SelfKill {
    ob::ui::MessageLoop* loop;
    unsigned id = 0;
    int ticks = 0;
};
void KillOnSecond(void* context, unsigned id) {
    auto* s = static_cast<SelfKill*>(context);
    if (++s->ticks == 2) {
        EXPECT_TRUE(s->loop->KillTimer(id));
    }
}

TEST(MessageLoop, ATimerCanStopItselfAndUnknownIdsAreRefused) {
    ob::ui::MessageLoop loop;
    SelfKill state{&loop};
    state.id = loop.SetTimer(10, KillOnSecond, &state);
    loop.Run(150);
    EXPECT_EQ(state.ticks, 2);
    EXPECT_EQ(loop.TimerCount(), 0u);
    EXPECT_FALSE(loop.KillTimer(state.id));
    EXPECT_EQ(loop.SetTimer(10, nullptr, nullptr), 0u);
}

TEST(MessageLoop, QuitEndsTheLoopFromAnotherThreadAndIsKeptUntilALoopRuns) {
    ob::ui::MessageLoop loop;
    uint64_t start = MonotonicMs();
    std::thread quitter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        loop.Quit();
    });
    EXPECT_TRUE(loop.Run(-1));
    quitter.join();
    EXPECT_LT(MonotonicMs() - start, 1000u);
    loop.Quit();
    EXPECT_TRUE(loop.Run(5000));   // returns at once
    EXPECT_FALSE(loop.Run(0));
}

class ScriptTimer : public ::testing::Test {
protected:
    OB_HANDLE Run(const std::string& text) {
        return OB_ExecuteScriptFileUtf8(dir.Write("timer.bas", text).c_str(), nullptr);
    }
    // Runs the loop until `count` lines were printed or `limitMs` passed.
    void RunUntilPrinted(size_t count, int limitMs) {
        uint64_t end = MonotonicMs() + static_cast<uint64_t>(limitMs);
        while (desktop.Printed().size() < count && MonotonicMs() < end) OB_RunMessageLoop(20);
    }

    TempDir dir;
    ScopedDesktop desktop;
};

// "tickat()" records when each "OnTimer" handler ran.
std::vector<uint64_t> g_tickTimes;
void TickAt(OB_HANDLE, const VARIANT*, int32_t, VARIANT*, void*) { g_tickTimes.push_back(MonotonicMs()); }

TEST_F(ScriptTimer, TimerStart500TicksAboutTwiceASecond) {
    g_tickTimes.clear();
    OB_AddCustomFunctionUtf8("tickat", TickAt, 0, nullptr);
    uint64_t start = MonotonicMs();
    OB_HANDLE s = Run("event create OnTimer, tick\ntimerstart 500\nstayresident\nend\n"
                      "function tick(unset)\n  call tickat()\n  print \"tick\"\nendfunction\n");
    RunUntilPrinted(3, 3000);
    ASSERT_EQ(g_tickTimes.size(), 3u);
    EXPECT_NEAR(static_cast<double>(g_tickTimes[0] - start), 500, 150);
    EXPECT_NEAR(static_cast<double>(g_tickTimes[1] - g_tickTimes[0]), 500, 150);
    EXPECT_NEAR(static_cast<double>(g_tickTimes[2] - g_tickTimes[1]), 500, 150);
    OB_FreeScript(s);
}

TEST_F(ScriptTimer, TimerStopEndsTicksAndASecondStartReplacesTheFirst) {
    OB_HANDLE s = Run("global n\nn = 0\nevent create OnTimer, tick\ntimerstart 100000\ntimerstart 20\n"
                      "stayresident\nend\n"
                      "function tick(unset)\n  n = n + 1\n  print n\n  if n = 3 then\n    timerstop\n"
                      "  endif\nendfunction\n");
    RunUntilPrinted(3, 2000);
    OB_RunMessageLoop(150);   // stopped: no fourth tick
    EXPECT_EQ(desktop.Printed(), std::vector<std::string>({"1.000000", "2.000000", "3.000000"}));
    OB_FreeScript(s);
}

TEST_F(ScriptTimer, AHandlerMayRestartTheTimerDuringItsTick) {
    OB_HANDLE s = Run("global n\nn = 0\nevent create OnTimer, tick\ntimerstart 10\nstayresident\nend\n"
                      "function tick(unset)\n  n = n + 1\n  print n\n  timerstart 10\n"
                      "  if n = 3 then\n    timerstop\n  endif\nendfunction\n");
    RunUntilPrinted(3, 2000);
    OB_RunMessageLoop(60);
    EXPECT_EQ(desktop.Printed().size(), 3u);
    OB_FreeScript(s);
}

TEST_F(ScriptTimer, OddIntervalsStillMakeOneTimer) {
    for (const char* interval : {"0", "-5", "\"abc\"", "1e30"}) {
        OB_HANDLE s = Run(std::string("event create OnTimer, tick\ntimerstart ") + interval +
                          "\nstayresident\nend\nfunction tick(u)\n  print \"t\"\n  timerstop\nendfunction\n");
        OB_RunMessageLoop(40);
        OB_FreeScript(s);
    }
    EXPECT_EQ(desktop.Printed().size(), 3u);   // 1e30 is capped to 24 days: no tick here
}

TEST_F(ScriptTimer, NoTickReachesAFreedScript) {
    OB_HANDLE s = Run("event create OnTimer, tick\ntimerstart 10\nstayresident\nend\n"
                      "function tick(u)\n  print \"tick\"\nendfunction\n");
    OB_FreeScript(s);
    OB_RunMessageLoop(80);
    EXPECT_TRUE(desktop.Printed().empty());

    // The timer window itself: a tick after its interpreter is gone does nothing.
    auto* basic = new COrvoBasic;
    ob::CTimerWindow window(basic);
    delete basic;
    window.OnTimer();
    EXPECT_EQ(window.Owner(), nullptr);
    ob::CTimerWindow::TimerProc(nullptr, 1);
}

}  // namespace
