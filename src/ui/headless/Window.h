// The in-memory windows of the headless desktop: dialogs, property sheets,
// pages and controls, each control with the state its real counterpart keeps.
#pragma once

#include "ui/WindowRules.h"

#include <orvobasic/desktop.h>
#include <orvobasic/dialogs.h>

#include <memory>
#include <vector>

namespace ob::ui {

struct TreeNode {
    TreeItem handle;
    TreeItem parent;   // TVI_ROOT for a top-level item
    CString text;
};

// Everything a control remembers; each type uses its part.
struct ControlState {
    ControlType type = ControlType::Other;
    int check = 0;                        // buttons
    std::vector<CString> items;           // list box, combo box
    std::vector<bool> selected;           // multi-selection list box
    int current = -1;                     // list/combo selection (or a multi list's caret), tab selection
    SystemTime time;                      // date-time picker
    std::vector<TreeNode> tree;           // in display order: parents before their children
    TreeItem treeSelection = 0;
    TreeItem nextTreeHandle = 1;
    std::vector<CString> tabs;
    int position = 0, rangeMin = 0, rangeMax = 100;   // slider
    bool notifying = false;               // an EN_CHANGE of this control is being delivered
};

// An in-memory window: the common part, whether it is shown and enabled,
// and its control state.
struct Window : WindowCore<Window> {
    bool enabled = true;
    bool visible = true;
    ControlState control;   // a menu prompt's items are control.items
};

// Answers a window message from the control's state. Sends no
// notification: those come from the user's actions (WindowSystem).
intptr_t ControlMessage(Window& control, unsigned message, uintptr_t wParam, intptr_t lParam);
// The text a control shows as its window text (a combo box: its selection).
CString ControlText(const Window& control);

// What the shared window rules ask of a window (see WindowRules.h).
inline ControlType TypeOf(const Window& w) { return w.control.type; }
inline bool IsShown(const Window& w) { return w.visible; }
inline bool IsEnabled(const Window& w) { return w.enabled; }
inline CString TitleOf(const Window& w) { return w.text; }
inline bool& NotifyingOf(Window& w) { return w.control.notifying; }
CString ControlLine(const Window& control, const Window* focus);
std::vector<CString> ItemsOf(const Window& control);

}  // namespace ob::ui
