// The Desktop's default timers and message loop, shared by every desktop
// that has no event loop of its own (headless, console).
#include <orvobasic/desktop.h>

#include "ui/headless/MessageLoop.h"

namespace ob::ui {

Desktop::Desktop() : m_loop(std::make_unique<MessageLoop>()) {}

Desktop::~Desktop() = default;

unsigned Desktop::SetTimer(unsigned intervalMs, TimerProc proc, void* context) {
    return m_loop->SetTimer(intervalMs, proc, context);
}

bool Desktop::KillTimer(unsigned timerId) { return m_loop->KillTimer(timerId); }

bool Desktop::RunMessageLoop(int timeoutMs) { return m_loop->Run(timeoutMs); }

void Desktop::QuitMessageLoop() { m_loop->Quit(); }

}  // namespace ob::ui
