// Script events: handler lists by event name, and the interpreter's timer.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/COrvoBasic.h>

#include <memory>
#include <unordered_map>
#include <vector>

namespace ob {

namespace ui {
class Desktop;
}

// Receives the ticks of an interpreter's timer (the "timer window"): holds
// the interpreter it raises "OnTimer" in, and forgets it once it is no
// longer a live interpreter.
class CTimerWindow {
public:
    explicit CTimerWindow(COrvoBasic* owner) : m_owner(owner) {}

    // One tick: raises "OnTimer" with one unset argument while the owner is
    // registered; afterwards the tick does nothing. Never throws.
    void OnTimer();
    // The desktop's timer callback; the context is a CTimerWindow.
    static void TimerProc(void* context, unsigned timerId);

    COrvoBasic* Owner() const { return m_owner; }

private:
    COrvoBasic* m_owner;
};

// Everything an interpreter keeps for events and its timer.
class CEventTable {
public:
    // Handler names (lower case) by lower-cased event name, in attach order.
    std::unordered_map<CString, std::vector<CString>, CStringHash> handlers;

    // The running timer: its id on the desktop (0 when none), the window
    // receiving its ticks, and the desktop it runs on.
    unsigned timerId = 0;
    std::unique_ptr<CTimerWindow> timerWindow;
    ui::Desktop* timerDesktop = nullptr;
};

// True while `interpreter` has a running timer ("timerstart" without a later
// "timerstop"); false for null and for freed interpreters.
bool HasRunningTimer(const COrvoBasic* interpreter);

}  // namespace ob
