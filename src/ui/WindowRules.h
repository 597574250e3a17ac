// What every desktop's windows have in common, and the dialog manager's
// rules written once over them: which control an id names, which control a
// person can reach, radio groups, WM_COMMAND and WM_NOTIFY to the owner,
// the modal loop that plays an action script, and the snapshot's layout.
//
// A desktop's window type W derives from WindowCore<W> and provides, in
// namespace ob::ui, the facts kept differently by each desktop:
//   ControlType TypeOf(const W&);        bool IsShown(const W&);
//   bool IsEnabled(const W&);            CString TitleOf(const W&);
//   bool& NotifyingOf(W&);               CString ControlLine(const W&, const W* focus);
//   std::vector<CString> ItemsOf(const W&);   // what "select" picks from
#pragma once

#include "ui/ActionScript.h"
#include "ui/ControlKinds.h"
#include "ui/DesktopCommon.h"

#include <orvobasic/desktop.h>
#include <orvobasic/dialogs.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace ob::ui {

template <class W>
struct WindowCore {
    WindowType type = WindowType::Control;
    WindowHandle handle = 0;
    W* parent = nullptr;
    CString className;
    CString text;                     // what a desktop keeps outside its widgets (a prompt's text at least)
    uint32_t style = 0;
    int id = 0;
    FontDescription font;
    bool hasFont = false;
    std::vector<W*> children;         // controls; a sheet's own buttons

    // Dialogs, pages and sheets.
    DialogSink* sink = nullptr;
    W* focus = nullptr;
    bool ended = false;
    int result = 0;

    // Sheets: the pages' templates and sinks, and the page windows shown
    // so far (null until a page is first shown).
    std::vector<SheetPage> pageSources;
    std::vector<W*> pages;
    int activePage = -1;

    // Prompts: the kind; a menu's point; a file dialog's request and the
    // path chosen.
    PromptKind prompt = PromptKind::None;
    int x = 0, y = 0;
    FileDialogRequest file;
    CString chosen;
};

// The buttons a property sheet makes below its pages, `cx` by `cy` dialog
// units each (the headless desktop places nothing, so gives them no size).
inline std::vector<DialogItem> SheetButtons(int16_t cx, int16_t cy) {
    constexpr uint16_t kApplyId = 0x3021;
    return {DialogItem{0x10010001, 0, 0, 0, cx, cy, IDC_OK, u"Button", u"OK"},
            DialogItem{0x10010000, 0, 0, 0, cx, cy, IDC_CANCEL, u"Button", u"Cancel"},
            DialogItem{0x18010000, 0, 0, 0, cx, cy, kApplyId, u"Button", u"Apply"}};
}

// GetDlgItem: a control of the dialog or page; a sheet looks among its own
// buttons, then on its current page, then on the other pages shown so far.
template <class W>
W* FindDlgItem(W& window, int id) {
    if (window.type == WindowType::Control) return nullptr;
    for (W* c : window.children)
        if (c->id == id) return c;
    if (window.type != WindowType::Sheet) return nullptr;
    std::vector<W*> order;
    if (window.activePage >= 0) order.push_back(window.pages[static_cast<size_t>(window.activePage)]);
    order.insert(order.end(), window.pages.begin(), window.pages.end());
    for (W* page : order)
        if (page)
            for (W* c : page->children)
                if (c->id == id) return c;
    return nullptr;
}

// The control a person can reach: in the innermost window `top`, or in a
// sheet among its buttons and on its current page; visible and enabled.
template <class W>
W* ReachableControl(W* top, int id, CString& why) {
    using common::Number;
    if (!top) {
        why = u"no dialog is open";
        return nullptr;
    }
    std::vector<W*> owners{top};
    if (top->type == WindowType::Sheet && top->activePage >= 0)
        owners.push_back(top->pages[static_cast<size_t>(top->activePage)]);
    for (W* owner : owners)
        for (W* c : owner ? owner->children : std::vector<W*>{})
            if (c->id == id) {
                if (!IsShown(*c)) why = u"control " + Number(id) + u" is hidden";
                else if (!IsEnabled(*c)) why = u"control " + Number(id) + u" is disabled";
                return why.empty() ? c : nullptr;
            }
    why = u"no control " + Number(id) + u" in " + common::Quoted(TitleOf(*top));
    return nullptr;
}

// ... and of the given type (`what` names it in the refusal).
template <class W>
W* ReachableControl(W* top, int id, ControlType type, const char16_t* what, CString& why) {
    W* c = ReachableControl(top, id, why);
    if (c && TypeOf(*c) != type) {
        why = u"control " + common::Number(id) + u" is no " + what;
        return nullptr;
    }
    return c;
}

// The innermost window `top` when it is a prompt of `kind`.
template <class W>
W* FindPrompt(W* top, PromptKind kind, CString& why) {
    if (top && top->type == WindowType::Prompt && top->prompt == kind) return top;
    CString title = top ? TitleOf(*top) : CString();
    why = common::NoPromptOpen(kind, top ? &title : nullptr);
    return nullptr;
}

template <class W>
CString ExpectTitle(W* top, const CString& title) {
    CString open = top ? TitleOf(*top) : CString();
    return common::ExpectRefusal(title, top ? &open : nullptr);
}

// The automatic radio buttons of c's group (the controls between the ones
// with WS_GROUP), c among them when it is one.
template <class W>
std::vector<W*> RadioGroup(W& c) {
    std::vector<W*> group;
    if (!c.parent) return group;
    auto& all = c.parent->children;
    auto at = std::find(all.begin(), all.end(), &c) - all.begin();
    ptrdiff_t first = at, last = at;
    while (first > 0 && !(all[static_cast<size_t>(first)]->style & WS_GROUP)) --first;
    while (last + 1 < static_cast<ptrdiff_t>(all.size()) && !(all[static_cast<size_t>(last) + 1]->style & WS_GROUP))
        ++last;
    for (ptrdiff_t i = first; i <= last; ++i) {
        W* other = all[static_cast<size_t>(i)];
        if ((other->style & BS_TYPEMASK) == BS_AUTORADIOBUTTON && TypeOf(*other) == ControlType::RadioButton)
            group.push_back(other);
    }
    return group;
}

// Enter, Escape and the close box as the dialog manager turns them into a
// command: IDOK chooses the default push button when there is one (its id
// replaces `id`); the control is null when none has the id.
template <class W>
W* CommandControl(W& window, int& id) {
    for (W* c : window.children)
        if (id == IDC_OK ? (c->style & BS_TYPEMASK) == BS_DEFPUSHBUTTON && TypeOf(*c) == ControlType::PushButton
                         : c->id == id) {
            if (id == IDC_OK) id = c->id;
            return c;
        }
    return nullptr;
}

// WM_COMMAND to a dialog or page; a sheet handles its own buttons (through
// the desktop's EndDialog).
template <class Desk, class W>
void SendCommand(Desk& desk, W& dialog, int id, unsigned code, W* control) {
    if (dialog.type == WindowType::Sheet) {
        if (id == IDC_OK || id == IDC_CANCEL) desk.EndDialog(dialog.handle, id);
        return;
    }
    if (dialog.sink)
        dialog.sink->OnCommand(static_cast<uintptr_t>(id & 0xFFFF) | (static_cast<uintptr_t>(code) << 16),
                               control ? static_cast<intptr_t>(control->handle) : 0);
}

// A control's WM_COMMAND notification, not while it is delivering one
// already (so a handler that sets its own field does not recurse without
// end). The handler may destroy the control: `find` looks it up again.
template <class Desk, class W, class Find>
void NotifyCommand(Desk& desk, W& control, unsigned code, Find find) {
    if (NotifyingOf(control) || !control.parent) return;
    NotifyingOf(control) = true;
    WindowHandle self = control.handle;
    SendCommand(desk, *control.parent, control.id, code, &control);
    if (W* still = find(self)) NotifyingOf(*still) = false;
}

// WM_NOTIFY from a control to its owner's sink.
template <class W>
void Notify(W& control, NotifyHeader& header) {
    header.from = control.handle;
    header.idFrom = static_cast<uintptr_t>(control.id);
    if (control.parent && control.parent->sink)
        control.parent->sink->OnNotify(static_cast<uintptr_t>(control.id), &header);
}

// A snapshot of a dialog, or of a sheet with its buttons and current page.
template <class W>
CString DescribeWindow(const W& window) {
    CString out = common::WindowHeading(window.type, TitleOf(window));
    if (window.type != WindowType::Sheet) {
        for (const W* c : window.children) out += ControlLine(*c, window.focus);
        return out;
    }
    for (const W* c : window.children) out += ControlLine(*c, nullptr);
    if (window.activePage < 0) return out;
    const W* page = window.pages[static_cast<size_t>(window.activePage)];
    if (!page) return out;
    out += common::PageHeading(window.activePage, TitleOf(*page));
    for (const W* c : page->children) out += ControlLine(*c, page->focus);
    return out;
}

template <class W>
bool Abandoned(const W& window) {
    return window.sink && window.sink->Abandoned();
}

// Plays actions until the window is ended. With no action left, the window
// is cancelled as if Escape were pressed, and a note says so; an action
// that fails is noted and ends every loop (`failed`).
template <class W>
void PlayActions(W& window, Desktop& desktop, ActionScript& actions, UiDriver& driver, bool& failed) {
    while (!window.ended) {
        if (failed || Abandoned(window)) {
            window.ended = true;
            window.result = IDC_CANCEL;
            break;
        }
        desktop.RunMessageLoop(0);   // ticks that fell due meanwhile
        if (window.ended) break;
        const Action* action = actions.Next();
        if (!action) {
            CString from = actions.Loaded() ? actions.Name() + u": no action left" : CString(u"no UI actions");
            desktop.UiNote(from + u": \"" + TitleOf(window) + u"\" cancelled");
            driver.Cancel();
            window.ended = true;   // whatever the cancel handler did
            if (window.result == 0) window.result = IDC_CANCEL;
            break;
        }
        CString error = actions.Run(*action, driver);
        if (!error.empty()) {
            desktop.UiNote(error);
            failed = true;
        }
    }
}

// "wait-ms": lets time pass in short slices, so that an ended window stops
// the wait.
template <class W>
void WaitWhileOpen(W* top, Desktop& desktop, int milliseconds) {
    constexpr int kSlice = 10;
    for (int left = std::max(milliseconds, 0); left > 0 && top && !top->ended && !Abandoned(*top); left -= kSlice)
        if (desktop.RunMessageLoop(std::min(left, kSlice))) break;
}

// "page N": empty when `top` is a sheet with that page.
template <class W>
CString PageRefusal(const W* top, int index) {
    if (!top || top->type != WindowType::Sheet) return u"no property sheet is open";
    if (index < 0 || static_cast<size_t>(index) >= top->pages.size()) return u"no page " + common::Number(index);
    return CString();
}

// "select": item `text` (exact, else ignoring case) or number `index` of
// the items a person can pick; -1 with why when there is none.
template <class W>
int ItemByText(const W& c, const CString& text, CString& why) {
    int index = common::FindItem(ItemsOf(c), text);
    if (index < 0) why = u"no item " + common::Quoted(text) + u" in control " + common::Number(c.id);
    return index;
}

template <class W>
int ItemByIndex(const W& c, int index, CString& why) {
    if (index >= 0 && static_cast<size_t>(index) < ItemsOf(c).size()) return index;
    why = u"no item " + common::Number(index) + u" in control " + common::Number(c.id);
    return -1;
}

}  // namespace ob::ui
