// The in-memory desktop: no windows, every box answered by a scripted
// result (OK by default) and remembered, so tests can read what was shown.
#pragma once

#include <orvobasic/desktop.h>

#include <deque>
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
    void QueueAnswer(int result) { m_answers.push_back(result); }
    const std::vector<Box>& Boxes() const { return m_boxes; }
    void ClearBoxes() { m_boxes.clear(); }

private:
    std::deque<int> m_answers;
    std::vector<Box> m_boxes;
};

}  // namespace ob::ui
