// What a person does in the headless dialogs: each action of an action
// script changes the controls as the real ones change and sends the
// notifications they send. Also the snapshot of a dialog's controls.
#include "ui/headless/WindowSystem.h"

#include <orvobasic/desktop.h>

#include <algorithm>
#include <string>

namespace ob::ui {

namespace {

CString Number(long n) {
    std::string digits = std::to_string(n);
    return CString(std::u16string(digits.begin(), digits.end()));
}

CString Quoted(const CString& text) { return u"\"" + text + u"\""; }

CString TwoDigits(int n) { return n < 10 ? u"0" + Number(n) : Number(n); }

// Exact text first, then ignoring case; -1 when no item matches.
int FindItem(const std::vector<CString>& items, const CString& text) {
    for (size_t i = 0; i < items.size(); ++i)
        if (items[i] == text) return static_cast<int>(i);
    CString lower = text;
    lower.MakeLower();
    for (size_t i = 0; i < items.size(); ++i) {
        CString item = items[i];
        if (item.MakeLower() == lower) return static_cast<int>(i);
    }
    return -1;
}

const char16_t* KindName(const Window& c) {
    switch (c.control.type) {
    case ControlType::PushButton: return u"button";
    case ControlType::CheckBox: return u"checkbox";
    case ControlType::RadioButton: return u"radio";
    case ControlType::GroupBox: return u"groupbox";
    case ControlType::Edit:
        return (c.style & ES_MULTILINE) ? u"editmultiline" : (c.style & ES_NUMBER) ? u"editnumber" : u"edit";
    case ControlType::Static: return (c.style & 0x1F) == SS_BITMAP ? u"bitmap" : u"static";
    case ControlType::ListBox: return (c.style & LBS_MULTIPLESEL) ? u"multilistbox" : u"listbox";
    case ControlType::ComboBox: return u"combobox";
    case ControlType::DateTime: return u"datetime";
    case ControlType::TreeView: return u"treeview";
    case ControlType::Slider: return u"slider";
    case ControlType::TabControl: return u"tabcontrol";
    default: return u"control";
    }
}

CString ItemList(const std::vector<CString>& items) {
    CString out = u"[";
    for (size_t i = 0; i < items.size(); ++i) out += (i ? u", " : u"") + Quoted(items[i]);
    return out + u"]";
}

// Tree items in display order, each prefixed with ">" per level below the top.
CString TreeList(const ControlState& c) {
    std::vector<CString> shown;
    std::vector<TreeItem> path;
    for (const TreeNode& node : c.tree) {
        while (!path.empty() && path.back() != node.parent) path.pop_back();
        shown.push_back(CString(path.size(), u'>') + node.text);
        path.push_back(node.handle);
    }
    return ItemList(shown);
}

CString TreeSelection(const ControlState& c) {
    for (const TreeNode& node : c.tree)
        if (node.handle == c.treeSelection) return Quoted(node.text);
    return u"none";
}

CString Selected(const std::vector<CString>& items, int index) {
    return index >= 0 && static_cast<size_t>(index) < items.size() ? Quoted(items[static_cast<size_t>(index)])
                                                                    : CString(u"none");
}

// The value part of a control's snapshot line.
CString ValueOf(const Window& w) {
    const ControlState& c = w.control;
    switch (c.type) {
    case ControlType::CheckBox:
    case ControlType::RadioButton: return u" checked=" + Number(c.check);
    case ControlType::ListBox:
        if (w.style & LBS_MULTIPLESEL) {
            std::vector<CString> chosen;
            for (size_t i = 0; i < c.items.size(); ++i)
                if (c.selected[i]) chosen.push_back(c.items[i]);
            return u" items=" + ItemList(c.items) + u" selected=" + ItemList(chosen);
        }
        return u" items=" + ItemList(c.items) + u" selected=" + Selected(c.items, c.current);
    case ControlType::ComboBox: return u" items=" + ItemList(c.items) + u" selected=" + Selected(c.items, c.current);
    case ControlType::DateTime:
        return u" value=" + Number(c.time.year) + u"-" + TwoDigits(c.time.month) + u"-" + TwoDigits(c.time.day) +
               u" " + TwoDigits(c.time.hour) + u":" + TwoDigits(c.time.minute) + u":" + TwoDigits(c.time.second);
    case ControlType::TreeView: return u" items=" + TreeList(c) + u" selected=" + TreeSelection(c);
    case ControlType::Slider:
        return u" position=" + Number(c.position) + u" range=" + Number(c.rangeMin) + u".." + Number(c.rangeMax);
    case ControlType::TabControl: return u" tabs=" + ItemList(c.tabs) + u" selected=" + Selected(c.tabs, c.current);
    default: return CString();
    }
}

// A font set on the control: face, height, weight and style words.
CString FontOf(const Window& c) {
    if (!c.hasFont) return CString();
    return u" font=" + Quoted(c.font.face) + u"," + Number(c.font.height) + u"," + Number(c.font.weight) +
           (c.font.italic ? u",italic" : u"") + (c.font.underline ? u",underline" : u"");
}

CString ControlLine(const Window& c, const Window* focus) {
    return u"  " + CString(KindName(c)) + u" " + Number(c.id) + u" " + Quoted(ControlText(c)) + ValueOf(c) + FontOf(c) +
           (c.enabled ? u" enabled" : u" disabled") + (c.visible ? u" visible" : u" hidden") +
           (&c == focus ? u" focus" : u"") + u"\n";
}

}  // namespace

CString WindowSystem::Describe(const Window& window) const {
    CString out;
    if (window.type == WindowType::Prompt) return DescribePrompt(window);
    if (window.type == WindowType::Sheet) {
        out = u"propertysheet " + Quoted(window.text) + u"\n";
        for (const Window* c : window.children) out += ControlLine(*c, nullptr);
        if (window.activePage < 0) return out;
        const Window* page = window.pages[static_cast<size_t>(window.activePage)];
        if (!page) return out;
        out += u"page " + Number(window.activePage) + u" " + Quoted(page->text) + u"\n";
        for (const Window* c : page->children) out += ControlLine(*c, page->focus);
        return out;
    }
    out = u"dialog " + Quoted(window.text) + u"\n";
    for (const Window* c : window.children) out += ControlLine(*c, window.focus);
    return out;
}

// The control a person can reach: in the innermost window, or in a sheet
// among its buttons and on its current page; visible and enabled.
Window* WindowSystem::UserTarget(int id, CString& why) {
    Window* top = Innermost();
    if (!top) {
        why = u"no dialog is open";
        return nullptr;
    }
    std::vector<Window*> owners{top};
    if (top->type == WindowType::Sheet && top->activePage >= 0)
        owners.push_back(top->pages[static_cast<size_t>(top->activePage)]);
    for (Window* owner : owners)
        for (Window* c : owner ? owner->children : std::vector<Window*>{})
            if (c->id == id) {
                if (!c->visible) why = u"control " + Number(id) + u" is hidden";
                else if (!c->enabled) why = u"control " + Number(id) + u" is disabled";
                return why.empty() ? c : nullptr;
            }
    why = u"no control " + Number(id) + u" in " + Quoted(top->text);
    return nullptr;
}

Window* WindowSystem::TypedTarget(int id, ControlType type, const char16_t* what, CString& why) {
    Window* c = UserTarget(id, why);
    if (c && c->control.type != type) {
        why = u"control " + Number(id) + u" is no " + what;
        return nullptr;
    }
    return c;
}

CString WindowSystem::ExpectDialog(const CString& title) {
    Window* top = Innermost();
    if (!top) return u"expected " + Quoted(title) + u", but no dialog is open";
    if (top->text != title) return u"expected " + Quoted(title) + u", but " + Quoted(top->text) + u" is open";
    return CString();
}

CString WindowSystem::Type(int id, const CString& text) {
    CString why;
    Window* c = TypedTarget(id, ControlType::Edit, u"edit field", why);
    if (!c) return why;
    CString typed = text;
    if (c->style & ES_NUMBER)   // the field refuses keys other than digits
        typed.erase(std::remove_if(typed.begin(), typed.end(), [](char16_t ch) { return ch < u'0' || ch > u'9'; }),
                    typed.end());
    if (c->parent) c->parent->focus = c;
    c->text = typed;
    NotifyCommand(*c, EN_CHANGE);
    return CString();
}

// A click: an automatic check box toggles, an automatic radio button is
// checked and the others of its group (up to the controls with WS_GROUP)
// are cleared; every button then reports BN_CLICKED.
void WindowSystem::ClickButton(Window& c) {
    Window* owner = c.parent;
    unsigned kind = c.style & BS_TYPEMASK;
    if (kind == BS_AUTOCHECKBOX || kind == BS_AUTO3STATE) c.control.check = c.control.check ? 0 : 1;
    if (kind == BS_AUTORADIOBUTTON && owner) {
        auto& all = owner->children;
        auto at = std::find(all.begin(), all.end(), &c) - all.begin();
        ptrdiff_t first = at, last = at;
        while (first > 0 && !(all[static_cast<size_t>(first)]->style & WS_GROUP)) --first;
        while (last + 1 < static_cast<ptrdiff_t>(all.size()) && !(all[static_cast<size_t>(last) + 1]->style & WS_GROUP))
            ++last;
        for (ptrdiff_t i = first; i <= last; ++i)
            if ((all[static_cast<size_t>(i)]->style & BS_TYPEMASK) == BS_AUTORADIOBUTTON &&
                all[static_cast<size_t>(i)]->control.type == ControlType::RadioButton)
                all[static_cast<size_t>(i)]->control.check = 0;
        c.control.check = 1;
    }
    if (owner && owner->type != WindowType::Sheet) owner->focus = &c;
    NotifyCommand(c, BN_CLICKED);
}

CString WindowSystem::Click(int id) {
    CString why;
    Window* c = UserTarget(id, why);
    if (!c) return why;
    ControlType t = c->control.type;
    if (t != ControlType::PushButton && t != ControlType::CheckBox && t != ControlType::RadioButton)
        return u"control " + Number(id) + u" cannot be clicked";
    ClickButton(*c);
    return CString();
}

// Selects item `index` of a list, combo box, tree or tab control as a click
// on it does, with the notification the control sends.
CString WindowSystem::SelectItem(Window& c, int index) {
    ControlState& s = c.control;
    switch (s.type) {
    case ControlType::ListBox:
        if (c.style & LBS_MULTIPLESEL) s.selected[static_cast<size_t>(index)] = !s.selected[static_cast<size_t>(index)];
        s.current = index;
        NotifyCommand(c, LBN_SELCHANGE);
        break;
    case ControlType::ComboBox:
        s.current = index;
        NotifyCommand(c, CBN_SELCHANGE);
        break;
    case ControlType::TabControl: {
        if (s.current == index) break;   // the current tab: nothing changes
        s.current = index;
        NotifyHeader header{0, 0, TCN_SELCHANGE};
        Notify(c, header);
        break;
    }
    case ControlType::TreeView: {
        TreeItem item = s.tree[static_cast<size_t>(index)].handle;
        if (s.treeSelection == item) break;
        TreeViewNotify notify{{0, 0, TVN_SELCHANGEDW}, s.treeSelection, item};
        s.treeSelection = item;
        Notify(c, notify.header);
        break;
    }
    default: return u"control " + Number(c.id) + u" has no items";
    }
    return CString();
}

namespace {

std::vector<CString> ItemsOf(const ControlState& s) {
    if (s.type == ControlType::TabControl) return s.tabs;
    if (s.type != ControlType::TreeView) return s.items;
    std::vector<CString> texts;
    for (const TreeNode& node : s.tree) texts.push_back(node.text);
    return texts;
}

}  // namespace

CString WindowSystem::SelectText(int id, const CString& item) {
    CString why;
    Window* c = UserTarget(id, why);
    if (!c) return why;
    int index = FindItem(ItemsOf(c->control), item);
    if (index < 0) return u"no item " + Quoted(item) + u" in control " + Number(id);
    return SelectItem(*c, index);
}

CString WindowSystem::SelectIndex(int id, int index) {
    CString why;
    Window* c = UserTarget(id, why);
    if (!c) return why;
    if (index < 0 || static_cast<size_t>(index) >= ItemsOf(c->control).size())
        return u"no item " + Number(index) + u" in control " + Number(id);
    return SelectItem(*c, index);
}

CString WindowSystem::Check(int id, bool checked) {
    CString why;
    Window* c = UserTarget(id, why);
    if (!c) return why;
    ControlType t = c->control.type;
    if (t != ControlType::CheckBox && !(t == ControlType::RadioButton && checked))
        return u"control " + Number(id) + (checked ? u" cannot be checked" : u" cannot be unchecked");
    if ((c->control.check != 0) != checked) ClickButton(*c);
    return CString();
}

CString WindowSystem::Tab(int id, int index) {
    CString why;
    Window* c = TypedTarget(id, ControlType::TabControl, u"tab control", why);
    if (!c) return why;
    if (index < 0 || static_cast<size_t>(index) >= c->control.tabs.size())
        return u"no tab " + Number(index) + u" in control " + Number(id);
    return SelectItem(*c, index);
}

CString WindowSystem::Slide(int id, int position) {
    CString why;
    Window* c = TypedTarget(id, ControlType::Slider, u"slider", why);
    if (!c) return why;
    c->control.position = std::clamp(position, c->control.rangeMin, c->control.rangeMax);
    return CString();
}

CString WindowSystem::Date(int id, const SystemTime& time) {
    CString why;
    Window* c = TypedTarget(id, ControlType::DateTime, u"date-time picker", why);
    if (!c) return why;
    if (!ValidTime(time)) return u"no such date";
    c->control.time = time;
    return CString();
}

CString WindowSystem::Page(int index) {
    Window* top = Innermost();
    if (!top || top->type != WindowType::Sheet) return u"no property sheet is open";
    if (index < 0 || static_cast<size_t>(index) >= top->pages.size()) return u"no page " + Number(index);
    ShowPage(*top, index);
    return CString();
}

// Lets time pass in short slices, so that an ended dialog stops the wait.
CString WindowSystem::Wait(int milliseconds) {
    constexpr int kSlice = 10;
    Window* top = Innermost();
    for (int left = std::max(milliseconds, 0); left > 0 && top && !top->ended && !Abandoned(*top); left -= kSlice)
        if (m_desktop.RunMessageLoop(std::min(left, kSlice))) break;
    return CString();
}

CString WindowSystem::Snapshot() {
    if (Window* top = Innermost()) m_desktop.UiOutput(Describe(*top));
    return CString();
}

// Enter, Escape and the close box end the window through its commands, as
// the dialog manager turns them into WM_COMMAND with IDOK or IDCANCEL (Enter
// chooses the default push button when there is one).
void WindowSystem::EndByUser(Window& window, int id) {
    Window* control = nullptr;
    for (Window* c : window.children)
        if (id == IDC_OK ? (c->style & BS_TYPEMASK) == BS_DEFPUSHBUTTON && c->control.type == ControlType::PushButton
                         : c->id == id) {
            control = c;
            break;
        }
    if (id == IDC_OK && control) id = control->id;
    SendCommand(window, id, BN_CLICKED, control);
}

CString WindowSystem::Ok() {
    Window* top = Innermost();
    if (top && top->type == WindowType::Prompt) return PromptOk(*top);
    if (top) EndByUser(*top, IDC_OK);
    return CString();
}

// Escape: a prompt ends unanswered (question: IDCANCEL, menu: 0, file
// dialog: no path).
CString WindowSystem::Cancel() {
    Window* top = Innermost();
    if (top && top->type == WindowType::Prompt) {
        top->result = IDCANCEL;
        top->ended = true;
    } else if (top) {
        EndByUser(*top, IDC_CANCEL);
    }
    return CString();
}

CString WindowSystem::Close() { return Cancel(); }

}  // namespace ob::ui
