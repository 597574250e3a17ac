// The windows of a desktop and the action-script verbs played on them,
// written once for both desktops. WindowDriver<W> keeps the windows (by
// handle), the modal stack and the action script, and checks each verb the
// same way on every desktop: which window or control it addresses, whether
// that can take it, and what to say when not. What the verb then does to a
// window is the desktop's own (the hooks below): the headless desktop
// changes its in-memory state, the Qt desktop sends input to its widgets.
#pragma once

#include "ui/ActionScript.h"
#include "ui/DesktopCommon.h"
#include "ui/WindowRules.h"

#include <orvobasic/desktop.h>

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ob::ui {

template <class W>
class WindowDriver : public UiDriver {
public:
    // Handles start at `firstHandle`, so that a desktop can tell its windows
    // from another's.
    WindowDriver(Desktop& desktop, WindowHandle firstHandle) : m_desktop(desktop), m_nextHandle(firstHandle) {}

    // New actions start afresh: an earlier failure no longer ends every loop.
    bool LoadActions(const CString& text, const CString& name, CString& error) {
        if (!m_actions.Load(text, name, error)) return false;
        m_failed = false;
        return true;
    }
    bool ActionsFailed() const { return m_failed; }

    // The text of a snapshot of `window`.
    CString Describe(const W& window) const {
        if (window.type != WindowType::Prompt) return DescribeWindow(window);
        return common::DescribePrompt({window.prompt, window.text, window.x, window.y, &MenuItems(window), &window.file});
    }

    // ---- the verbs (UiDriver), applied to the innermost modal window ----

    CString ExpectDialog(const CString& title) override { return ExpectTitle(Innermost(), title); }

    CString Type(int id, const CString& text) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, ControlType::Edit, u"edit field", why);
        if (!c) return why;
        CString typed = text;
        if (c->style & ES_NUMBER)   // the field refuses keys other than digits
            typed.erase(std::remove_if(typed.begin(), typed.end(), [](char16_t ch) { return ch < u'0' || ch > u'9'; }),
                        typed.end());
        if (c->parent) c->parent->focus = c;
        EnterText(*c, typed);
        return CString();
    }

    CString Click(int id) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, why);
        if (c) why = common::ClickRefusal(TypeOf(*c), id);
        if (c && why.empty()) ClickControl(*c);
        return why;
    }

    CString Check(int id, bool checked) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, why);
        if (c) why = common::CheckRefusal(TypeOf(*c), id, checked);
        if (c && why.empty() && IsChecked(*c) != checked) ClickControl(*c);
        return why;
    }

    CString SelectText(int id, const CString& item) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, why);
        int index = c ? ItemByText(*c, item, why) : -1;
        return index < 0 ? why : SelectItem(*c, index);
    }

    CString SelectIndex(int id, int index) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, why);
        return !c || ItemByIndex(*c, index, why) < 0 ? why : SelectItem(*c, index);
    }

    CString Tab(int id, int index) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, ControlType::TabControl, u"tab control", why);
        if (!c) return why;
        if (index < 0 || static_cast<size_t>(index) >= ItemsOf(*c).size())
            return u"no tab " + common::Number(index) + u" in control " + common::Number(id);
        return SelectItem(*c, index);
    }

    CString Slide(int id, int position) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, ControlType::Slider, u"slider", why);
        if (c) SetSliderPosition(*c, position);
        return why;
    }

    CString Date(int id, const SystemTime& time) override {
        CString why;
        W* c = ReachableControl(Innermost(), id, ControlType::DateTime, u"date-time picker", why);
        if (!c) return why;
        if (!ValidTime(time)) return u"no such date";
        SetDate(*c, time);
        return CString();
    }

    CString Page(int index) override {
        CString why = PageRefusal(Innermost(), index);
        if (why.empty()) ChoosePage(*Innermost(), index);
        return why;
    }

    CString Wait(int milliseconds) override {
        WaitWhileOpen(Innermost(), m_desktop, milliseconds);
        return CString();
    }

    CString Snapshot() override {
        if (W* top = Innermost()) m_desktop.UiOutput(Describe(*top));
        return CString();
    }

    // Enter: a file dialog takes the name in its name field (the initial
    // file name); a question and a menu have nothing to take.
    CString Ok() override {
        W* top = Innermost();
        if (top && top->type == WindowType::Prompt) {
            CString why = common::PromptOkRefusal(top->prompt, top->file);
            return why.empty() ? File(top->file.fileName) : why;
        }
        if (top) PressEnter(*top);
        return CString();
    }

    // Escape: a prompt ends unanswered (question: IDCANCEL, menu: 0, file
    // dialog: no path).
    CString Cancel() override {
        W* top = Innermost();
        if (top && top->type == WindowType::Prompt) {
            top->result = IDCANCEL;
            EndPrompt(*top);
        } else if (top) {
            PressEscape(*top);
        }
        return CString();
    }

    CString Close() override {
        W* top = Innermost();
        if (top && top->type == WindowType::Prompt) return Cancel();
        if (top) CloseBox(*top);
        return CString();
    }

    CString Answer(int button) override {
        CString why;
        W* w = FindPrompt(Innermost(), PromptKind::Question, why);
        if (w) TakeAnswer(*w, button);
        return why;
    }

    CString MenuIndex(int number) override {
        CString why;
        W* w = FindPrompt(Innermost(), PromptKind::Menu, why);
        if (w) why = common::MenuNumberRefusal(MenuItems(*w), number);
        if (w && why.empty()) ChooseMenuItem(*w, number);
        return why;
    }

    CString MenuText(const CString& item) override {
        CString why;
        W* w = FindPrompt(Innermost(), PromptKind::Menu, why);
        if (!w) return why;
        int number = 0;
        why = common::MenuItemByText(MenuItems(*w), item, number);
        return why.empty() ? MenuIndex(number) : why;
    }

    // The name is checked as the dialog checks it; the path it makes is the
    // answer, whatever the dialog itself makes of it.
    CString File(const CString& path) override {
        CString why;
        W* w = FindPrompt(Innermost(), PromptKind::File, why);
        if (w) why = common::ChooseFile(path, w->file, w->chosen);
        if (!w || !why.empty()) return why;
        w->ended = true;
        FinishFileDialog(*w, true);
        return CString();
    }

    CString FileCancel() override {
        CString why;
        W* w = FindPrompt(Innermost(), PromptKind::File, why);
        if (!w) return why;
        w->chosen.clear();
        w->result = IDCANCEL;
        FinishFileDialog(*w, false);
        return CString();
    }

protected:
    // ---- what a verb does on this desktop, once it is checked ----
    virtual void EnterText(W& edit, const CString& typed) = 0;   // digits only for a number field
    virtual void ClickControl(W& button) = 0;
    virtual bool IsChecked(const W& button) const = 0;
    // Selects item `index` (which exists) as a click on it does; the
    // refusal when the control has no items.
    virtual CString SelectItem(W& control, int index) = 0;
    virtual void SetSliderPosition(W& slider, int position) = 0;   // clamped to the range
    virtual void SetDate(W& picker, const SystemTime& time) = 0;   // a valid date
    virtual void ChoosePage(W& sheet, int index) = 0;               // an existing page
    virtual void PressEnter(W& window) = 0;
    virtual void PressEscape(W& window) = 0;
    virtual void CloseBox(W& window) = 0;
    virtual void EndPrompt(W& prompt) = 0;
    virtual void TakeAnswer(W& question, int button) = 0;          // IDYES, IDNO or IDCANCEL
    virtual void ChooseMenuItem(W& menu, int number) = 0;          // 0 dismisses
    virtual const std::vector<CString>& MenuItems(const W& menu) const = 0;
    // Ends a file dialog: with the chosen path taken, or cancelled.
    virtual void FinishFileDialog(W& dialog, bool accepted) = 0;

    // ---- the windows' life ----
    // WM_INITDIALOG and the initial focus.
    virtual void InitDialog(W& window) = 0;
    // Shows page `index` of a sheet, made (and initialised) when first shown.
    virtual void ShowPage(W& sheet, int index) = 0;
    // Runs the window's modal loop (it is the innermost meanwhile).
    virtual void RunModal(W& window) = 0;
    // Lets go of what a window holds outside this table, before it goes.
    virtual void Release(W&) {}

    // Runs a dialog made from a template until it is ended, then removes it.
    int RunDialog(W& dialog) {
        m_modal.push_back(&dialog);   // controls are reachable from OnInitDialog on
        InitDialog(dialog);
        m_modal.pop_back();
        return RunToEnd(dialog);
    }

    // ... a property sheet, its first page shown.
    int RunSheet(W& sheet) {
        sheet.sink->OnCreate(sheet.handle);
        m_modal.push_back(&sheet);
        ShowPage(sheet, 0);
        m_modal.pop_back();
        return RunToEnd(sheet);
    }

    int RunToEnd(W& window) {
        RunModal(window);
        int result = window.result;
        Destroy(&window);
        return result;
    }

    // Removes a window after telling its sink; its controls exist until then.
    void Destroy(W* window) {
        for (W* page : window->pages)
            if (page) Destroy(page);
        if (window->sink) window->sink->OnDestroy();
        Release(*window);
        for (W* child : window->children) m_byHandle.erase(child->handle);
        m_byHandle.erase(window->handle);
    }

    // ---- the windows ----
    W* Find(WindowHandle handle) {
        auto it = m_byHandle.find(handle);
        return it == m_byHandle.end() ? nullptr : it->second.get();
    }

    W* NewWindow(WindowType type, W* parent) {
        auto window = std::make_unique<W>();
        window->type = type;
        window->handle = m_nextHandle++;
        window->parent = parent;
        W* raw = window.get();
        m_byHandle.emplace(raw->handle, std::move(window));
        if (parent && type == WindowType::Control) parent->children.push_back(raw);
        return raw;
    }

    W* Innermost() { return m_modal.empty() ? nullptr : m_modal.back(); }

    // Plays the action script until `window` is ended.
    void PlayModal(W& window) { ui::PlayActions(window, m_desktop, m_actions, *this, m_failed); }

    // A control's WM_COMMAND notification to its owner (see NotifyCommand
    // in WindowRules.h); `desk` ends a sheet its buttons end.
    template <class Desk>
    void NotifyOwner(Desk& desk, W& control, unsigned code) {
        ui::NotifyCommand(desk, control, code, [this](WindowHandle h) { return Find(h); });
    }

    Desktop& m_desktop;
    std::unordered_map<WindowHandle, std::unique_ptr<W>> m_byHandle;
    std::vector<W*> m_modal;
    WindowHandle m_nextHandle;
    ActionScript m_actions;
    bool m_failed = false;
};

}  // namespace ob::ui
