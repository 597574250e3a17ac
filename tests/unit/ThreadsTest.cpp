// Interpreters on many threads: each thread runs its own scripts through the
// C API while the others do the same; the process-wide state they share (the
// registry, host functions, error records, running scripts, the desktop and
// its timers) must hold. Meant to run under the thread and address
// sanitizers as well as plainly.
#include <gtest/gtest.h>

#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using ob::test::ScopedDesktop;
using ob::test::TempDir;
using Clock = std::chrono::steady_clock;

constexpr int kThreads = 100;

// What the scripts of one thread told the host.
enum Kind { kPrinted, kPinged, kTicked, kGreeted, kKinds };

struct Tally {
    std::array<std::atomic<int>, kKinds> counts{};
    std::atomic<int> errors{0};
};

std::array<Tally, kThreads> g_tally;

// tally(ID, KIND): counts what the script of thread ID did.
void TallyFunction(OB_HANDLE, const VARIANT* args, int32_t count, VARIANT*, void*) {
    if (count != 2 || args[0].vt != VT_R8 || args[1].vt != VT_R8) return;
    int id = static_cast<int>(args[0].dblVal), kind = static_cast<int>(args[1].dblVal);
    if (id >= 0 && id < kThreads && kind >= 0 && kind < kKinds) ++g_tally[id].counts[kind];
}

int32_t CountError(OB_HANDLE, const OB_ErrorInfo* error, void* user) {
    if (error->id == 37) ++static_cast<Tally*>(user)->errors;
    return OB_CONTINUE;
}

// A one-shot gate all workers wait at until the main thread opens it.
class Gate {
public:
    void Open() {
        std::lock_guard lock(m_lock);
        m_open = true;
        m_changed.notify_all();
    }
    void Wait() {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [&] { return m_open; });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_open = false;
};

class Threads : public ::testing::Test {
protected:
    void SetUp() override {
        // Keeps the host-function table alive: it empties with the last interpreter.
        m_keeper = OB_CreateScript();
        ASSERT_EQ(OB_AddCustomFunctionUtf8("tally", TallyFunction, 2, nullptr), 1);
        for (Tally& t : g_tally) {
            for (auto& c : t.counts) c = 0;
            t.errors = 0;
        }
        m_loop = m_dir.Write("loop.bas", "n = 0\ndo while 1 = 1\n  n = n + 1\nloop\n");
    }
    void TearDown() override { OB_FreeScript(m_keeper); }

    // A resident script that prints, reports error 37, answers "ping" and
    // "hello" and counts one timer tick, all through tally(ID, KIND).
    std::string ResidentScript(int id) {
        std::string n = std::to_string(id);
        return m_dir.Write("r" + n + ".bas",
                           "event create ping, onping\nevent create hello, onhello\n"
                           "event create OnTimer, ontick\n"
                           "print \"hello from " + n + "\"\nx = tally(" + n + ", 0)\n"
                           "y = nosuchvariable\ntimerstart 10\nstayresident\nend\n"
                           "function onping(k)\n  x = tally(" + n + ", 1)\nendfunction\n"
                           "function onhello()\n  x = tally(" + n + ", 3)\nendfunction\n"
                           "function ontick(u)\n  x = tally(" + n + ", 2)\n  timerstop\nendfunction\n");
    }

    ScopedDesktop m_desktop;
    TempDir m_dir;
    OB_HANDLE m_keeper = nullptr;
    std::string m_loop;
};

// Waits up to five seconds for `done`, running this thread's message loop.
template <typename Done>
bool PumpUntil(Done done) {
    Clock::time_point end = Clock::now() + std::chrono::seconds(5);
    while (!done() && Clock::now() < end) OB_RunMessageLoop(10);
    return done();
}

// The whole life of one worker: a resident script that prints, errs, gets
// events and timer ticks; a wait while the main thread greets every script;
// then a runaway script that only the main thread's stop request ends.
void Worker(int id, const std::string& resident, const std::string& loop, std::atomic<OB_HANDLE>& runaway,
            std::atomic<bool>& stopSent, std::atomic<int>& waiting, Gate& greeted, std::atomic<int>& stopped) {
    OB_HANDLE script = OB_CreateScript();
    OB_SetErrorHandler(script, CountError, &g_tally[id]);
    OB_RunScriptUtf8(script, resident.c_str());
    VARIANT arg;
    arg.vt = VT_I4;
    arg.lVal = id;
    for (int i = 0; i < 3; ++i) OB_SendEventUtf8(script, "ping", &arg, 1);
    PumpUntil([&] { return g_tally[id].counts[kTicked] > 0; });
    ++waiting;
    greeted.Wait();
    OB_HANDLE looping = OB_CreateScript();
    OB_SetBudgets(looping, 0, 60000, 0, 0);   // a lost stop request fails the test, not the run
    runaway.store(looping);
    OB_RunScriptUtf8(looping, loop.c_str());
    if (OB_GetRunResult(looping) == OB_E_STOPPED) ++stopped;
    while (!stopSent.load()) std::this_thread::yield();   // the request must not reach a freed script
    OB_FreeScript(looping);
    OB_FreeScript(script);
}

TEST_F(Threads, HundredInterpretersPrintErrReceiveEventsAndAreStopped) {
    std::vector<std::string> scripts;
    for (int i = 0; i < kThreads; ++i) scripts.push_back(ResidentScript(i));
    std::array<std::atomic<OB_HANDLE>, kThreads> runaway{};
    std::array<std::atomic<bool>, kThreads> stopSent{};
    std::atomic<int> waiting{0}, stopped{0};
    Gate greeted;
    std::vector<std::thread> workers;
    for (int i = 0; i < kThreads; ++i)
        workers.emplace_back(Worker, i, std::cref(scripts[static_cast<size_t>(i)]), std::cref(m_loop),
                             std::ref(runaway[static_cast<size_t>(i)]), std::ref(stopSent[static_cast<size_t>(i)]),
                             std::ref(waiting), std::ref(greeted),
                             std::ref(stopped));

    // Every worker's resident script is idle now: one broadcast reaches all.
    Clock::time_point end = Clock::now() + std::chrono::seconds(120);
    while (waiting < kThreads && Clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    OB_SendEventUtf8(nullptr, "hello", nullptr, 0);
    greeted.Open();
    // Stops each runaway script as soon as it exists; they compete for the
    // processor, so whichever comes first is served first.
    for (int left = kThreads; left > 0 && Clock::now() < end;) {
        for (size_t i = 0; i < runaway.size(); ++i)
            if (!stopSent[i] && runaway[i].load()) {
                OB_RequestStop(runaway[i].load());
                stopSent[i] = true;
                --left;
            }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    for (auto& sent : stopSent) sent = true;   // out of time: let every worker finish
    for (auto& w : workers) w.join();

    EXPECT_EQ(stopped, kThreads);
    for (int i = 0; i < kThreads; ++i) {
        SCOPED_TRACE("thread " + std::to_string(i));
        EXPECT_EQ(g_tally[i].counts[kPrinted], 1);
        EXPECT_EQ(g_tally[i].counts[kPinged], 3);
        EXPECT_EQ(g_tally[i].counts[kTicked], 1);
        EXPECT_EQ(g_tally[i].counts[kGreeted], 1);
        EXPECT_EQ(g_tally[i].errors, 1);
    }
    size_t hellos = 0;
    for (const std::string& text : m_desktop.Printed()) hellos += text.rfind("hello from ", 0) == 0;
    EXPECT_EQ(hellos, static_cast<size_t>(kThreads));
}

// A host function that broadcasts while another thread's script is busy:
// the busy one is skipped instead of waited for, so two threads that do
// this at once cannot block each other.
void Broadcast(OB_HANDLE, const VARIANT*, int32_t, VARIANT*, void*) {
    OB_SendEventUtf8(nullptr, "hello", nullptr, 0);
}

TEST_F(Threads, BroadcastFromInsideAScriptSkipsInterpretersBusyElsewhere) {
    ASSERT_EQ(OB_AddCustomFunctionUtf8("broadcast", Broadcast, 0, nullptr), 1);
    std::atomic<OB_HANDLE> busy{nullptr};
    std::thread other([&] {
        OB_HANDLE looping = OB_CreateScript();
        busy.store(looping);
        OB_RunScriptUtf8(looping, m_loop.c_str());
        OB_FreeScript(looping);
    });
    while (!busy.load()) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));   // let it start looping

    std::string sender = m_dir.Write("s.bas", "event create hello, onhello\nx = broadcast()\nend\n"
                                              "function onhello()\n  x = tally(0, 3)\nendfunction\n");
    OB_HANDLE script = OB_CreateScript();
    auto started = Clock::now();
    EXPECT_EQ(OB_RunScriptUtf8(script, sender.c_str()), 1);
    EXPECT_LT(Clock::now() - started, std::chrono::seconds(2));
    EXPECT_EQ(g_tally[0].counts[kGreeted], 1);   // its own handler ran
    OB_FreeScript(script);
    OB_RequestStop(busy.load());
    other.join();
}

// A timer belongs to the thread that started it: another thread's message
// loop does not run its handlers, the starting thread's loop does.
TEST_F(Threads, TimersTickOnTheThreadThatStartedThem) {
    std::string path = ResidentScript(1);
    Gate started, checked;
    std::thread owner([&] {
        OB_HANDLE script = OB_CreateScript();
        OB_RunScriptUtf8(script, path.c_str());
        started.Open();
        checked.Wait();
        EXPECT_TRUE(PumpUntil([] { return g_tally[1].counts[kTicked] > 0; }));
        OB_FreeScript(script);
    });
    started.Wait();
    OB_RunMessageLoop(100);
    EXPECT_EQ(g_tally[1].counts[kTicked], 0);
    checked.Open();
    owner.join();
    EXPECT_EQ(g_tally[1].counts[kTicked], 1);
}

}  // namespace
