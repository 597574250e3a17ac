// The in-memory windows of the headless desktop: dialogs, property sheets,
// pages and controls, each control with the state its real counterpart keeps.
#pragma once

#include <orvobasic/desktop.h>
#include <orvobasic/dialogs.h>

#include <memory>
#include <vector>

namespace ob::ui {

// What a control is, decided from its class and style when it is created.
enum class ControlType {
    PushButton, CheckBox, RadioButton, GroupBox, Edit, Static, ListBox, ComboBox,
    DateTime, TreeView, Slider, TabControl, Other,
};

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

enum class WindowType { Dialog, Sheet, Page, Control, Prompt };

// The prompts a script shows without a dialog of its own.
enum class PromptKind { None, Question, Menu, File };

struct Window {
    WindowType type = WindowType::Control;
    WindowHandle handle = 0;
    Window* parent = nullptr;
    CString className;
    CString text;
    uint32_t style = 0;
    int id = 0;
    bool enabled = true;
    bool visible = true;
    FontDescription font;
    bool hasFont = false;
    std::vector<Window*> children;        // controls; a sheet's own buttons
    ControlState control;

    // Dialogs, pages and sheets.
    DialogSink* sink = nullptr;
    Window* focus = nullptr;
    bool ended = false;
    int result = 0;

    // Sheets: the pages' templates and sinks, and the page windows shown
    // so far (null until a page is first shown).
    std::vector<SheetPage> pageSources;
    std::vector<Window*> pages;
    int activePage = -1;

    // Prompts: the kind; a menu's point (its items are control.items); a
    // file dialog's request and the path chosen.
    PromptKind prompt = PromptKind::None;
    int x = 0, y = 0;
    FileDialogRequest file;
    CString chosen;
};

// The control type of a created control.
ControlType ControlTypeOf(const CString& className, uint32_t style);
// Answers a window message from the control's state. Sends no
// notification: those come from the user's actions (WindowSystem).
intptr_t ControlMessage(Window& control, unsigned message, uintptr_t wParam, intptr_t lParam);
// Dates a date-time picker takes: years 100 to 9999, real days, times of day.
bool ValidTime(const SystemTime& time);
// The text a control shows as its window text (a combo box: its selection).
CString ControlText(const Window& control);

}  // namespace ob::ui
