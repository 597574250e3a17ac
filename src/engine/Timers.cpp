// The interpreter's timer: "timerstart" and "timerstop", and the timer
// window that turns the desktop's ticks into "OnTimer" events.
#include "engine/EventTable.h"
#include "engine/ScriptGate.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include <cmath>
#include <mutex>
#include <unordered_set>

using namespace ob;

namespace {

// The interval in milliseconds: truncated; NaN and values below 1 become 0
// (the desktop raises it to its minimum), values beyond 32 bits signed are
// capped.
unsigned IntervalOf(double value) {
    if (!(value >= 1)) return 0;
    if (value > 2147483647.0) return 2147483647u;
    return static_cast<unsigned>(std::trunc(value));
}

// The interpreters whose timer runs; kept by ExecTimerStart/ExecTimerStop,
// so a destroyed interpreter (its destructor stops the timer) is never here.
// Interpreters on every thread share it.
class TimerOwners {
public:
    void Add(const COrvoBasic* owner) {
        std::lock_guard lock(m_lock);
        m_owners.insert(owner);
    }
    void Remove(const COrvoBasic* owner) {
        std::lock_guard lock(m_lock);
        m_owners.erase(owner);
    }
    bool Has(const COrvoBasic* owner) {
        std::lock_guard lock(m_lock);
        return m_owners.count(owner) > 0;
    }

private:
    std::mutex m_lock;
    std::unordered_set<const COrvoBasic*> m_owners;
};

TimerOwners& Owners() {
    static TimerOwners owners;
    return owners;
}

}  // namespace

bool ob::HasRunningTimer(const COrvoBasic* interpreter) { return Owners().Has(interpreter); }

// Only the pointer to the owner is read before the event runs: a handler may
// stop or restart the timer, which destroys this object.
void CTimerWindow::OnTimer() {
    COrvoBasic* owner = m_owner;
    if (!owner) return;
    ScriptUse use(owner);
    if (!use) {
        // Freed: later ticks do nothing. Busy on another thread while this
        // one is inside a script: this tick is skipped.
        if (!COrvoBasic::IsValidInterpreter(owner)) m_owner = nullptr;
        return;
    }
    CBasicVariable unset;
    try {
        owner->EventThrow(u"OnTimer", &unset);
    } catch (...) {
        // An aborted handler ends this tick only.
    }
}

void CTimerWindow::TimerProc(void* context, unsigned) {
    if (context) static_cast<CTimerWindow*>(context)->OnTimer();
}

// "timerstart MS": replaces any running timer with one ticking every MS.
bool COrvoBasic::ExecTimerStart() {
    ExecTimerStop();
    auto window = std::make_unique<CTimerWindow>(this);
    CBasicVariable interval;
    get_exp(interval);
    if (IsHalted()) return false;
    unsigned id = m_desktop->SetTimer(IntervalOf(interval.GetNumberValue()), &CTimerWindow::TimerProc,
                                      window.get());
    m_events->timerId = id;
    m_events->timerWindow = std::move(window);
    m_events->timerDesktop = m_desktop;
    if (id > 0) Owners().Add(this);
    return true;
}

// "timerstop": stops the timer if one runs; always true.
bool COrvoBasic::ExecTimerStop() {
    if (m_events->timerId > 0 && m_events->timerWindow && m_events->timerDesktop)
        m_events->timerDesktop->KillTimer(m_events->timerId);
    m_events->timerWindow.reset();
    m_events->timerId = 0;
    m_events->timerDesktop = nullptr;
    Owners().Remove(this);
    return true;
}
