// The message loop of the in-memory desktop: repeating timers on the
// monotonic clock, delivered one at a time on the thread that runs the loop.
// Between ticks the loop sleeps in poll() until the next timer falls due or
// Quit() wakes it; it never spins.
//
// A timer belongs to the thread that started it, as a window's timer belongs
// to the thread that made the window: a loop delivers only its own thread's
// timers, so each thread's scripts tick on that thread. Several threads may
// run their loops at once; Quit() ends one of them.
#pragma once

#include <orvobasic/desktop.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <cstdint>
#include <vector>

namespace ob::ui {

class MessageLoop {
public:
    MessageLoop();
    ~MessageLoop();
    MessageLoop(const MessageLoop&) = delete;
    MessageLoop& operator=(const MessageLoop&) = delete;

    unsigned SetTimer(unsigned intervalMs, TimerProc proc, void* context);
    bool KillTimer(unsigned timerId);
    bool Run(int timeoutMs);
    void Quit();
    size_t TimerCount() const {
        std::lock_guard lock(m_lock);
        return m_timers.size();
    }

private:
    struct Timer {
        unsigned id;
        unsigned interval;
        uint64_t due;
        TimerProc proc;
        void* context;
        bool busy;   // its tick is being delivered: not due again until it returns
        std::thread::id thread;   // the thread whose loop delivers it
    };

    Timer* Find(unsigned timerId);
    bool DispatchDue(uint64_t now);
    uint64_t NextDue();
    void Wait(uint64_t now, uint64_t until);
    bool TakeQuit();

    mutable std::mutex m_lock;   // guards m_timers and m_nextId; never held during a tick
    std::vector<Timer> m_timers;
    unsigned m_nextId = 1;
    int m_wakeFd = -1;
    std::atomic<bool> m_quit{false};
};

}  // namespace ob::ui
