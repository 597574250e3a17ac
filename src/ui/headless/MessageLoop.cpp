#include "ui/headless/MessageLoop.h"

#include "platform/Clock.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <climits>

namespace ob::ui {

namespace {
constexpr uint64_t kNever = UINT64_MAX;
// The shortest interval a timer runs at; 0 and smaller values are raised to it.
constexpr unsigned kMinInterval = 10;
constexpr int kNoWakeFdSlice = 100;
}  // namespace

MessageLoop::MessageLoop() { m_wakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC); }

MessageLoop::~MessageLoop() {
    if (m_wakeFd >= 0) close(m_wakeFd);
}

// Starts a repeating timer; the first tick falls due one interval from now.
unsigned MessageLoop::SetTimer(unsigned intervalMs, TimerProc proc, void* context) {
    if (!proc) return 0;
    unsigned interval = std::max(intervalMs, kMinInterval);
    uint64_t due = platform::MonotonicMs() + interval;
    std::lock_guard lock(m_lock);
    unsigned id = m_nextId++;
    if (m_nextId == 0) m_nextId = 1;   // ids wrap but never become 0
    m_timers.push_back({id, interval, due, proc, context, false, std::this_thread::get_id()});
    return id;
}

// Removes a timer; safe inside its own tick (the loop looks it up again afterwards).
bool MessageLoop::KillTimer(unsigned timerId) {
    std::lock_guard lock(m_lock);
    auto it = std::find_if(m_timers.begin(), m_timers.end(), [&](const Timer& t) { return t.id == timerId; });
    if (it == m_timers.end()) return false;
    m_timers.erase(it);
    return true;
}

MessageLoop::Timer* MessageLoop::Find(unsigned timerId) {
    for (Timer& t : m_timers)
        if (t.id == timerId) return &t;
    return nullptr;
}

// Delivers this thread's earliest due timer, if any. Ticks missed while
// nobody ran the loop are coalesced into one; after a slow handler the
// cadence restarts.
bool MessageLoop::DispatchDue(uint64_t now) {
    std::thread::id self = std::this_thread::get_id();
    unsigned id = 0;
    TimerProc proc = nullptr;
    void* context = nullptr;
    {
        std::lock_guard lock(m_lock);
        Timer* next = nullptr;
        for (Timer& t : m_timers)
            if (t.thread == self && !t.busy && t.due <= now && (!next || t.due < next->due)) next = &t;
        if (!next) return false;
        next->busy = true;
        id = next->id;
        proc = next->proc;
        context = next->context;
    }
    proc(context, id);   // may add or kill timers, or run a nested loop
    std::lock_guard lock(m_lock);
    if (Timer* t = Find(id)) {
        uint64_t after = platform::MonotonicMs();
        t->busy = false;
        t->due += t->interval;
        if (t->due <= after) t->due = after + t->interval;
    }
    return true;
}

// When this thread's next timer falls due. Timers other threads start later
// do not concern this loop, so it need not be woken for them.
uint64_t MessageLoop::NextDue() {
    std::thread::id self = std::this_thread::get_id();
    std::lock_guard lock(m_lock);
    uint64_t due = kNever;
    for (const Timer& t : m_timers)
        if (t.thread == self && !t.busy) due = std::min(due, t.due);
    return due;
}

// Sleeps until `until` (kNever: indefinitely) or a wake-up from Quit().
void MessageLoop::Wait(uint64_t now, uint64_t until) {
    int timeout = -1;
    if (until != kNever) timeout = static_cast<int>(std::min<uint64_t>(until - now, INT_MAX));
    // Without a wake-up descriptor Quit() is only seen by looking again.
    if (m_wakeFd < 0 && (timeout < 0 || timeout > kNoWakeFdSlice)) timeout = kNoWakeFdSlice;
    pollfd fd{m_wakeFd, POLLIN, 0};
    if (poll(&fd, m_wakeFd >= 0 ? 1 : 0, timeout) > 0) {
        uint64_t drained;
        while (read(m_wakeFd, &drained, sizeof drained) > 0) {
        }
    }
}

bool MessageLoop::TakeQuit() { return m_quit.exchange(false); }

// Delivers ticks until the time is up or Quit() is called; true on Quit().
// A timeout of 0 delivers at most one tick that is already due.
bool MessageLoop::Run(int timeoutMs) {
    uint64_t start = platform::MonotonicMs();
    uint64_t deadline = timeoutMs < 0 ? kNever : start + static_cast<uint64_t>(timeoutMs);
    for (;;) {
        if (TakeQuit()) return true;
        uint64_t now = platform::MonotonicMs();
        if (DispatchDue(now)) {
            if (platform::MonotonicMs() >= deadline) return false;
            continue;
        }
        if (now >= deadline) return false;
        Wait(now, std::min(NextDue(), deadline));
    }
}

// Async-signal-safe: an atomic store and a write(2).
void MessageLoop::Quit() {
    m_quit.store(true);
    if (m_wakeFd >= 0) {
        uint64_t one = 1;
        ssize_t ignored = write(m_wakeFd, &one, sizeof one);
        (void)ignored;
    }
}

}  // namespace ob::ui
