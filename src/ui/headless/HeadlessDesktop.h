// The in-memory desktop: no windows, every box answered by a scripted
// result (OK by default) and remembered, so tests can read what was shown.
// Scripts on several threads may show boxes at once.
#pragma once

#include <orvobasic/desktop.h>

#include <deque>
#include <mutex>
#include <vector>

namespace ob::ui {

class HeadlessDesktop : public Desktop {
public:
    struct Box {
        CString text;
        unsigned style;
    };

    int MessageBox(const CString& text, unsigned style) override;

    // Results for the next boxes, in order; IDOK once they are used up.
    void QueueAnswer(int result) {
        std::lock_guard lock(m_lock);
        m_answers.push_back(result);
    }
    // The boxes shown so far (the last 1000), oldest first.
    std::vector<Box> Boxes() const {
        std::lock_guard lock(m_lock);
        return m_boxes;
    }
    void ClearBoxes() {
        std::lock_guard lock(m_lock);
        m_boxes.clear();
    }

private:
    mutable std::mutex m_lock;
    std::deque<int> m_answers;
    std::vector<Box> m_boxes;
};

}  // namespace ob::ui
