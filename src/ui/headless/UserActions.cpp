// What a person does in the headless dialogs: each action of an action
// script changes the controls as the real ones change and sends the
// notifications they send. Also the snapshot of a dialog's controls.
#include "ui/headless/WindowSystem.h"

#include <orvobasic/desktop.h>

#include <algorithm>
#include <string>

namespace ob::ui {

namespace {

using common::Number;

// The tree's nodes in display order with their depths.
std::vector<std::pair<size_t, CString>> TreeNodes(const ControlState& c) {
    std::vector<std::pair<size_t, CString>> nodes;
    std::vector<TreeItem> path;
    for (const TreeNode& node : c.tree) {
        while (!path.empty() && path.back() != node.parent) path.pop_back();
        nodes.emplace_back(path.size(), node.text);
        path.push_back(node.handle);
    }
    return nodes;
}

const CString* TreeSelection(const ControlState& c) {
    for (const TreeNode& node : c.tree)
        if (node.handle == c.treeSelection) return &node.text;
    return nullptr;
}

// The value part of a control's snapshot line.
CString ValueOf(const Window& w) {
    const ControlState& c = w.control;
    switch (c.type) {
    case ControlType::CheckBox:
    case ControlType::RadioButton: return common::CheckValue(c.check);
    case ControlType::ListBox:
        if (w.style & LBS_MULTIPLESEL) {
            std::vector<CString> chosen;
            for (size_t i = 0; i < c.items.size(); ++i)
                if (c.selected[i]) chosen.push_back(c.items[i]);
            return common::MultiListValue(c.items, chosen);
        }
        return common::ListValue(c.items, c.current);
    case ControlType::ComboBox: return common::ListValue(c.items, c.current);
    case ControlType::DateTime: return common::TimeValue(c.time);
    case ControlType::TreeView: return common::TreeValue(TreeNodes(c), TreeSelection(c));
    case ControlType::Slider: return common::SliderValue(c.position, c.rangeMin, c.rangeMax);
    case ControlType::TabControl: return common::TabsValue(c.tabs, c.current);
    default: return CString();
    }
}

}  // namespace

CString ControlLine(const Window& c, const Window* focus) {
    return common::SnapshotLine({c.control.type, c.style, c.id, ControlText(c), ValueOf(c),
                                 c.hasFont ? &c.font : nullptr, c.enabled, c.visible, &c == focus});
}

std::vector<CString> ItemsOf(const Window& w) {
    const ControlState& s = w.control;
    if (s.type == ControlType::TabControl) return s.tabs;
    if (s.type != ControlType::TreeView) return s.items;
    std::vector<CString> texts;
    for (const TreeNode& node : s.tree) texts.push_back(node.text);
    return texts;
}

void WindowSystem::EnterText(Window& edit, const CString& typed) {
    edit.text = typed;
    NotifyCommand(edit, EN_CHANGE);
}

// A click: an automatic check box toggles, an automatic radio button is
// checked and the others of its group (up to the controls with WS_GROUP)
// are cleared; every button then reports BN_CLICKED.
void WindowSystem::ClickButton(Window& c) {
    Window* owner = c.parent;
    unsigned kind = c.style & BS_TYPEMASK;
    if (kind == BS_AUTOCHECKBOX || kind == BS_AUTO3STATE) c.control.check = c.control.check ? 0 : 1;
    if (kind == BS_AUTORADIOBUTTON && owner) {
        for (Window* other : RadioGroup(c)) other->control.check = 0;
        c.control.check = 1;
    }
    if (owner && owner->type != WindowType::Sheet) owner->focus = &c;
    NotifyCommand(c, BN_CLICKED);
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
        ui::Notify(c, header);
        break;
    }
    case ControlType::TreeView: {
        TreeItem item = s.tree[static_cast<size_t>(index)].handle;
        if (s.treeSelection == item) break;
        TreeViewNotify notify{{0, 0, TVN_SELCHANGEDW}, s.treeSelection, item};
        s.treeSelection = item;
        ui::Notify(c, notify.header);
        break;
    }
    default: return u"control " + Number(c.id) + u" has no items";
    }
    return CString();
}

void WindowSystem::SetSliderPosition(Window& slider, int position) {
    slider.control.position = std::clamp(position, slider.control.rangeMin, slider.control.rangeMax);
}

// Enter, Escape and the close box end the window through its commands, as
// the dialog manager turns them into WM_COMMAND with IDOK or IDCANCEL (Enter
// chooses the default push button when there is one).
void WindowSystem::EndByUser(Window& window, int id) {
    Window* control = CommandControl(window, id);
    SendCommand(*this, window, id, BN_CLICKED, control);
}

}  // namespace ob::ui
