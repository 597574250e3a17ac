#include "ui/headless/HeadlessDesktop.h"

#include <atomic>

namespace ob::ui {

// A queued answer comes first; else a Yes/No question is answered from the
// action script (outside the lock: timers may show boxes meanwhile) and
// every other box with OK.
int HeadlessDesktop::MessageBox(const CString& text, unsigned style) {
    {
        std::lock_guard lock(m_lock);
        m_boxes.push_back({text, style});
        if (m_boxes.size() > 1000) m_boxes.erase(m_boxes.begin());   // bounded memory for long runs
        if (!m_answers.empty()) {
            int r = m_answers.front();
            m_answers.pop_front();
            return r;
        }
    }
    return (style & 0xF) == MB_YESNO ? AnswerQuestion(text) : IDOK;
}

namespace {
HeadlessDesktop g_headless;
std::atomic<Desktop*> g_current{&g_headless};
}  // namespace

Desktop& GetDesktop() { return *g_current.load(std::memory_order_acquire); }
void SetDesktop(Desktop* desktop) { g_current.store(desktop ? desktop : &g_headless, std::memory_order_release); }

}  // namespace ob::ui
