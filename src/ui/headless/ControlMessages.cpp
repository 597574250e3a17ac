// The headless controls' answers to window messages, one function per kind
// of control, as the real controls answer them.
#include "ui/headless/Window.h"

#include <algorithm>
#include <iterator>

namespace ob::ui {

namespace {

using common::FindPrefix;
using common::ItemText;
using common::TextOut;
using common::TextParam;

bool Valid(const std::vector<CString>& items, intptr_t index) {
    return index >= 0 && static_cast<size_t>(index) < items.size();
}

bool IsMulti(const Window& w) { return (w.style & LBS_MULTIPLESEL) != 0; }

intptr_t ListBoxMessage(Window& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    ControlState& c = w.control;
    intptr_t index = static_cast<intptr_t>(wParam);
    switch (message) {
    case LB_ADDSTRING:
        c.items.emplace_back(TextParam(lParam));
        c.selected.push_back(false);
        return static_cast<intptr_t>(c.items.size()) - 1;
    case LB_RESETCONTENT:
        c.items.clear();
        c.selected.clear();
        c.current = -1;
        return 0;
    case LB_SETCURSEL:
        if (IsMulti(w)) return LB_ERR;
        c.current = Valid(c.items, index) ? static_cast<int>(index) : -1;
        return c.current >= 0 ? c.current : LB_ERR;
    case LB_GETCURSEL:   // a multi-selection list answers with its caret
        if (IsMulti(w)) return c.items.empty() ? LB_ERR : std::max(c.current, 0);
        return c.current;
    case LB_SETSEL:
        if (!IsMulti(w)) return LB_ERR;
        if (lParam == -1) std::fill(c.selected.begin(), c.selected.end(), wParam != 0);
        else if (Valid(c.items, lParam)) c.selected[static_cast<size_t>(lParam)] = wParam != 0;
        else return LB_ERR;
        return 0;
    case LB_GETSEL:
        if (!Valid(c.items, index)) return LB_ERR;
        return IsMulti(w) ? (c.selected[wParam] ? 1 : 0) : (index == c.current ? 1 : 0);
    case LB_GETTEXT: return ItemText(c.items, wParam, lParam);
    case LB_GETCOUNT: return static_cast<intptr_t>(c.items.size());
    case LB_SELECTSTRING: {
        if (IsMulti(w)) return LB_ERR;
        int found = FindPrefix(c.items, index, TextParam(lParam));
        if (found >= 0) c.current = found;
        return found;
    }
    default: return 0;
    }
}

intptr_t ComboBoxMessage(Window& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    ControlState& c = w.control;
    intptr_t index = static_cast<intptr_t>(wParam);
    switch (message) {
    case CB_ADDSTRING:
        c.items.emplace_back(TextParam(lParam));
        return static_cast<intptr_t>(c.items.size()) - 1;
    case CB_RESETCONTENT:
        c.items.clear();
        c.current = -1;
        return 0;
    case CB_SETCURSEL:
        c.current = Valid(c.items, index) ? static_cast<int>(index) : -1;
        return c.current >= 0 ? c.current : LB_ERR;
    case CB_GETCURSEL: return c.current;
    case CB_GETLBTEXT: return ItemText(c.items, wParam, lParam);
    case CB_GETCOUNT: return static_cast<intptr_t>(c.items.size());
    case CB_SELECTSTRING: {
        int found = FindPrefix(c.items, index, TextParam(lParam));
        if (found >= 0) c.current = found;
        return found;
    }
    default: return 0;
    }
}

intptr_t ButtonMessage(Window& w, unsigned message, uintptr_t wParam, intptr_t) {
    ControlState& c = w.control;
    bool checkable = c.type == ControlType::CheckBox || c.type == ControlType::RadioButton;
    if (message == BM_GETCHECK) return checkable ? c.check : 0;
    if (message == BM_SETCHECK && checkable) c.check = wParam ? 1 : 0;
    return 0;
}

intptr_t TabMessage(Window& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    ControlState& c = w.control;
    intptr_t index = static_cast<intptr_t>(wParam);
    switch (message) {
    case TCM_GETITEMCOUNT: return static_cast<intptr_t>(c.tabs.size());
    case TCM_DELETEALLITEMS:
        c.tabs.clear();
        c.current = -1;
        return 1;
    case TCM_INSERTITEMW: {
        size_t at = std::min(static_cast<size_t>(std::max<intptr_t>(index, 0)), c.tabs.size());
        c.tabs.insert(c.tabs.begin() + static_cast<ptrdiff_t>(at), CString(TextParam(lParam)));
        if (c.current < 0) c.current = 0;   // the first tab becomes the selection
        else if (static_cast<int>(at) <= c.current) ++c.current;
        return static_cast<intptr_t>(at);
    }
    case TCM_GETCURSEL: return c.current;
    case TCM_SETCURSEL: {
        if (!Valid(c.tabs, index)) return -1;
        int previous = c.current;
        c.current = static_cast<int>(index);
        return previous;
    }
    case TCM_GETITEMW:
        if (!Valid(c.tabs, index)) return 0;
        if (CString* out = TextOut(lParam)) *out = c.tabs[wParam];
        return 1;
    default: return 0;
    }
}

// ---- tree view ----

ptrdiff_t FindNode(const ControlState& c, TreeItem item) {
    for (size_t i = 0; i < c.tree.size(); ++i)
        if (c.tree[i].handle == item) return static_cast<ptrdiff_t>(i);
    return -1;
}

// One past the last node of the subtree at `at` (parents precede children).
size_t SubtreeEnd(const ControlState& c, size_t at) {
    std::vector<TreeItem> open{c.tree[at].handle};
    size_t i = at + 1;
    for (; i < c.tree.size(); ++i) {
        while (!open.empty() && open.back() != c.tree[i].parent) open.pop_back();
        if (open.empty()) break;
        open.push_back(c.tree[i].handle);
    }
    return i;
}

intptr_t TreeInsertItem(ControlState& c, const TreeInsert* insert) {
    if (!insert) return 0;
    TreeItem parent = insert->parent == 0 ? TVI_ROOT : insert->parent;
    ptrdiff_t parentAt = parent == TVI_ROOT ? -1 : FindNode(c, parent);
    if (parent != TVI_ROOT && parentAt < 0) return 0;
    size_t at;
    if (insert->insertAfter == TVI_FIRST) {
        at = static_cast<size_t>(parentAt + 1);
    } else if (insert->insertAfter == TVI_LAST || insert->insertAfter == TVI_ROOT) {
        at = parentAt < 0 ? c.tree.size() : SubtreeEnd(c, static_cast<size_t>(parentAt));
    } else {
        ptrdiff_t sibling = FindNode(c, insert->insertAfter);
        if (sibling < 0 || c.tree[static_cast<size_t>(sibling)].parent != parent) return 0;
        at = SubtreeEnd(c, static_cast<size_t>(sibling));
    }
    TreeItem handle = c.nextTreeHandle++;
    c.tree.insert(c.tree.begin() + static_cast<ptrdiff_t>(at), TreeNode{handle, parent, TextParam(
                      reinterpret_cast<intptr_t>(insert->text))});
    return handle;
}

intptr_t TreeDeleteItem(ControlState& c, TreeItem item) {
    if (item == TVI_ROOT || item == 0) {
        c.tree.clear();
        c.treeSelection = 0;
        return 1;
    }
    ptrdiff_t at = FindNode(c, item);
    if (at < 0) return 0;
    size_t end = SubtreeEnd(c, static_cast<size_t>(at));
    for (size_t i = static_cast<size_t>(at); i < end; ++i)
        if (c.tree[i].handle == c.treeSelection) c.treeSelection = 0;
    c.tree.erase(c.tree.begin() + at, c.tree.begin() + static_cast<ptrdiff_t>(end));
    return 1;
}

intptr_t TreeNextItem(const ControlState& c, unsigned code, TreeItem item) {
    if (code == TVGN_CARET) return c.treeSelection;
    if (code == TVGN_ROOT) return c.tree.empty() ? 0 : c.tree[0].handle;
    ptrdiff_t at = FindNode(c, item);
    if (at < 0) return 0;
    const TreeNode& node = c.tree[static_cast<size_t>(at)];
    if (code == TVGN_PARENT) return node.parent == TVI_ROOT ? 0 : node.parent;
    if (code == TVGN_CHILD) {
        size_t next = static_cast<size_t>(at) + 1;
        return next < c.tree.size() && c.tree[next].parent == node.handle ? c.tree[next].handle : 0;
    }
    if (code == TVGN_NEXT) {
        size_t end = SubtreeEnd(c, static_cast<size_t>(at));
        return end < c.tree.size() && c.tree[end].parent == node.parent ? c.tree[end].handle : 0;
    }
    return 0;
}

intptr_t TreeMessage(Window& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    ControlState& c = w.control;
    switch (message) {
    case TVM_INSERTITEMW: return TreeInsertItem(c, reinterpret_cast<const TreeInsert*>(lParam));
    case TVM_DELETEITEM: return TreeDeleteItem(c, lParam);
    case TVM_GETNEXTITEM: return TreeNextItem(c, static_cast<unsigned>(wParam), lParam);
    case TVM_GETCOUNT: return static_cast<intptr_t>(c.tree.size());
    case TVM_SELECTITEM:
        if (wParam != TVGN_CARET || (lParam != 0 && FindNode(c, lParam) < 0)) return 0;
        c.treeSelection = lParam;
        return 1;
    case TVM_GETITEMW: {
        auto* out = reinterpret_cast<TreeItemText*>(lParam);
        ptrdiff_t at = out ? FindNode(c, out->item) : -1;
        if (at < 0) return 0;
        out->text = c.tree[static_cast<size_t>(at)].text;
        return 1;
    }
    default: return 0;
    }
}

intptr_t SliderMessage(Window& w, unsigned message, uintptr_t, intptr_t lParam) {
    ControlState& c = w.control;
    switch (message) {
    case TBM_GETPOS: return c.position;
    case TBM_GETRANGEMIN: return c.rangeMin;
    case TBM_GETRANGEMAX: return c.rangeMax;
    case TBM_SETPOS:
        c.position = static_cast<int>(std::clamp<intptr_t>(lParam, c.rangeMin, c.rangeMax));
        return 0;
    case TBM_SETRANGE:
        c.rangeMin = static_cast<int16_t>(lParam & 0xFFFF);
        c.rangeMax = static_cast<int16_t>((lParam >> 16) & 0xFFFF);
        if (c.rangeMax < c.rangeMin) c.rangeMax = c.rangeMin;
        c.position = std::clamp(c.position, c.rangeMin, c.rangeMax);
        return 0;
    default: return 0;
    }
}

intptr_t DateTimeMessage(Window& w, unsigned message, uintptr_t, intptr_t lParam) {
    if (message == DTM_GETSYSTEMTIME) {
        if (auto* out = reinterpret_cast<SystemTime*>(lParam)) *out = w.control.time;
        return 0;
    }
    if (message == DTM_SETSYSTEMTIME) {
        const auto* in = reinterpret_cast<const SystemTime*>(lParam);
        if (!in || !ValidTime(*in)) return 0;
        w.control.time = *in;
        return 1;
    }
    return 0;
}

using MessageHandler = intptr_t (*)(Window&, unsigned, uintptr_t, intptr_t);

struct TypeHandler {
    ControlType type;
    MessageHandler handler;
};

const TypeHandler kHandlers[] = {
    {ControlType::PushButton, ButtonMessage}, {ControlType::CheckBox, ButtonMessage},
    {ControlType::RadioButton, ButtonMessage}, {ControlType::GroupBox, ButtonMessage},
    {ControlType::ListBox, ListBoxMessage},    {ControlType::ComboBox, ComboBoxMessage},
    {ControlType::TabControl, TabMessage},     {ControlType::TreeView, TreeMessage},
    {ControlType::Slider, SliderMessage},      {ControlType::DateTime, DateTimeMessage},
};

}  // namespace

intptr_t ControlMessage(Window& control, unsigned message, uintptr_t wParam, intptr_t lParam) {
    for (const TypeHandler& h : kHandlers)
        if (h.type == control.control.type) return h.handler(control, message, wParam, lParam);
    return 0;
}

CString ControlText(const Window& control) {
    const ControlState& c = control.control;
    if (c.type == ControlType::ComboBox) return c.current >= 0 ? c.items[static_cast<size_t>(c.current)] : CString();
    return control.text;
}

}  // namespace ob::ui
