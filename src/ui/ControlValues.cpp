// Reading and changing the controls of the innermost running dialog:
// "alter" ... "endalter", "setfocus" and the built-in "controlvalue". What
// a value is depends on the control's window class.
#include "ui/ScriptDialog.h"

#include <orvobasic/desktop.h>

#include <cmath>
#include <cstdint>

using namespace ob;

namespace {

constexpr int kMaxClassName = 127;

// The classes whose values differ; the rest have their window text.
enum class ValueClass { ListBox, ComboBox, DateTime, TreeView, TabControl, Trackbar, Button, Other };

ValueClass ClassOf(ui::Desktop& desk, ui::WindowHandle control) {
    struct Row {
        const char16_t* name;
        ValueClass value;
    };
    static const Row kRows[] = {
        {u"listbox", ValueClass::ListBox},       {u"combobox", ValueClass::ComboBox},
        {u"sysdatetimepick32", ValueClass::DateTime}, {u"systreeview32", ValueClass::TreeView},
        {u"systabcontrol32", ValueClass::TabControl}, {u"msctls_trackbar32", ValueClass::Trackbar},
        {u"button", ValueClass::Button},
    };
    CString name = desk.GetClassName(control).Left(kMaxClassName);
    name.MakeLower();
    for (const Row& row : kRows)
        if (name == row.name) return row.value;
    return ValueClass::Other;
}

int Truncated(double value) {
    if (!(value > -2147483648.0 && value < 2147483648.0)) return std::isnan(value) ? 0 : (value < 0 ? INT32_MIN : INT32_MAX);
    return static_cast<int>(std::trunc(value));
}

intptr_t Text(const CString& s) { return reinterpret_cast<intptr_t>(s.c_str()); }

// The text of item `index` of a list or combo box; empty for -1.
CString ItemText(ui::Desktop& desk, ui::WindowHandle control, bool list) {
    intptr_t index = desk.SendMessage(control, list ? ui::LB_GETCURSEL : ui::CB_GETCURSEL, 0, 0);
    CString text;
    if (index != -1)
        desk.SendMessage(control, list ? ui::LB_GETTEXT : ui::CB_GETLBTEXT, static_cast<uintptr_t>(index),
                         reinterpret_cast<intptr_t>(&text));
    return text;
}

// A value that empties a list: a single unset item.
bool IsEmptyValue(const CBasicVariable& v) { return v.GetNumItems() == 1 && v.GetItem(0).GetType() == BVT_UNSET; }

void FillList(ui::Desktop& desk, ui::WindowHandle control, const CBasicVariable& v, bool list) {
    desk.SendMessage(control, list ? ui::LB_RESETCONTENT : ui::CB_RESETCONTENT, 0, 0);
    if (IsEmptyValue(v)) return;
    for (int i = 0; i < v.GetNumItems(); ++i)
        desk.SendMessage(control, list ? ui::LB_ADDSTRING : ui::CB_ADDSTRING, 0, Text(v.GetItem(i).GetStringValue()));
    desk.SendMessage(control, list ? ui::LB_SETCURSEL : ui::CB_SETCURSEL, 0, 0);
}

// Day, month, year, hour, minute, second: at least six items.
bool SetDate(ui::Desktop& desk, ui::WindowHandle control, const CBasicVariable& v) {
    if (v.GetNumItems() < 6) return false;
    int part[6];
    for (int i = 0; i < 6; ++i) part[i] = Truncated(v.GetItem(i).GetDoubleValue());
    ui::SystemTime time{part[2], part[1], part[0], part[3], part[4], part[5]};
    return desk.SendMessage(control, ui::DTM_SETSYSTEMTIME, 0, reinterpret_cast<intptr_t>(&time)) != 0;
}

// Each parameter: its first item at the root, the others as its children.
void FillTree(ui::Desktop& desk, ui::WindowHandle control, const CArgArray& values) {
    for (const CBasicVariable& v : values) {
        CString first = v.GetItem(0).GetStringValue();
        ui::TreeInsert insert{ui::TVI_ROOT, ui::TVI_LAST, first.c_str()};
        ui::TreeItem parent = desk.SendMessage(control, ui::TVM_INSERTITEMW, 0, reinterpret_cast<intptr_t>(&insert));
        for (int i = 1; i < v.GetNumItems(); ++i) {
            CString text = v.GetItem(i).GetStringValue();
            ui::TreeInsert child{parent, ui::TVI_LAST, text.c_str()};
            desk.SendMessage(control, ui::TVM_INSERTITEMW, 0, reinterpret_cast<intptr_t>(&child));
        }
    }
}

// The style words of a "font" line.
void ApplyStyleWord(const CString& word, ui::FontDescription& font) {
    CString upper = word;
    upper.MakeUpper();
    if (upper == u"BOLD") font.weight = 700;
    else if (upper == u"HEAVY") font.weight = 900;
    else if (upper == u"ITALIC") font.italic = true;
    else if (upper == u"UNDERLINE") font.underline = true;
}

}  // namespace

ui::WindowHandle COrvoBasic::GetControlWindow(int id) {
    if (m_dialogs->active.empty()) return 0;
    ui::WindowHandle dialog = m_dialogs->active.back()->m_hWnd;
    return dialog ? m_desktop->GetDlgItem(dialog, id) : 0;
}

bool COrvoBasic::GetControlValue(ui::WindowHandle control, CBasicVariable& result) {
    ui::Desktop& desk = *m_desktop;
    switch (ClassOf(desk, control)) {
    case ValueClass::ListBox: result = ItemText(desk, control, true); return true;
    case ValueClass::ComboBox: result = ItemText(desk, control, false); return true;
    case ValueClass::Button: result = static_cast<double>(desk.SendMessage(control, ui::BM_GETCHECK, 0, 0)); return true;
    case ValueClass::DateTime: {
        ui::SystemTime t;
        desk.SendMessage(control, ui::DTM_GETSYSTEMTIME, 0, reinterpret_cast<intptr_t>(&t));
        for (int part : {t.day, t.month, t.year, t.hour, t.minute, t.second}) result.AddItem(static_cast<double>(part));
        return true;
    }
    default:   // tree views, tab controls and sliders read as their window text too
        result = desk.GetWindowText(control);
        return true;
    }
}

bool COrvoBasic::ExecControlValue(ui::WindowHandle control, CArgArray& values) {
    ui::Desktop& desk = *m_desktop;
    const CBasicVariable& v = values[0];
    switch (ClassOf(desk, control)) {
    case ValueClass::ListBox: FillList(desk, control, v, true); return true;
    case ValueClass::ComboBox: FillList(desk, control, v, false); return true;
    case ValueClass::DateTime: return SetDate(desk, control, v);
    case ValueClass::TabControl:
        desk.SendMessage(control, ui::TCM_DELETEALLITEMS, 0, 0);
        for (int i = 0; i < v.GetNumItems(); ++i)
            desk.SendMessage(control, ui::TCM_INSERTITEMW, static_cast<uintptr_t>(i), Text(v.GetItem(i).GetStringValue()));
        return true;
    case ValueClass::Trackbar:
        desk.SendMessage(control, ui::TBM_SETPOS, 1, Truncated(v.GetNumberValue()));
        return true;
    case ValueClass::Button: desk.SendMessage(control, ui::BM_SETCHECK, v.GetNumberValue() != 0 ? 1 : 0, 0); return true;
    case ValueClass::TreeView:
        desk.SendMessage(control, ui::TVM_DELETEITEM, 0, ui::TVI_ROOT);
        if (values.size() == 1 && IsEmptyValue(v)) return true;
        FillTree(desk, control, values);
        break;   // and its window text, as any other class
    default: break;
    }
    desk.SetWindowText(control, v.GetType() == BVT_UNSET ? CString() : v.GetStringValue());
    return true;
}

bool COrvoBasic::ExecControlSelection(ui::WindowHandle control, const CBasicVariable& value) {
    ui::Desktop& desk = *m_desktop;
    bool text = value.GetType() == BVT_STRING;
    uintptr_t index = static_cast<uintptr_t>(static_cast<intptr_t>(Truncated(value.GetNumberValue())));
    switch (ClassOf(desk, control)) {
    case ValueClass::ListBox:
        if (text) desk.SendMessage(control, ui::LB_SELECTSTRING, static_cast<uintptr_t>(-1), Text(value.GetStringValue()));
        else desk.SendMessage(control, ui::LB_SETCURSEL, index, 0);
        return true;
    case ValueClass::ComboBox:
        if (text) desk.SendMessage(control, ui::CB_SELECTSTRING, static_cast<uintptr_t>(-1), Text(value.GetStringValue()));
        else desk.SendMessage(control, ui::CB_SETCURSEL, index, 0);
        return true;
    case ValueClass::TabControl:
        if (!text) desk.SendMessage(control, ui::TCM_SETCURSEL, index, 0);
        return true;
    case ValueClass::Button: desk.SendMessage(control, ui::BM_SETCHECK, value.GetNumberValue() != 0 ? 1 : 0, 0); return true;
    default: return false;
    }
}

namespace {

// Skips to "endalter" (or the end of the text) without running anything.
void SkipAlter(COrvoBasic& b) {
    while (b.Command() != CMD_ENDALTER && b.Command() != CMD_FINISHED && !b.IsEndOfProgram()) {
        uint32_t before = b.GetPosition();
        if (b.get_token() == TOKEN_NONE && b.GetPosition() == before) b.NextChar();
    }
}

// The 0 or 1 of "enable" and "show"; false for any other number.
bool ReadSwitch(COrvoBasic& b, bool& on) {
    CBasicVariable v;
    b.get_exp(v);
    double n = std::trunc(v.GetNumberValue());
    on = n == 1;
    return n == 0 || n == 1;
}

}  // namespace

// The "font" line of "alter": face, size [, style words].
static bool AlterFont(COrvoBasic& b, ui::WindowHandle control) {
    b.get_token();
    bool empty = b.Command() == CMD_EOL || b.Command() == CMD_FINISHED;
    b.putback();
    if (empty) return true;
    CArgArray p;
    if (b.GetParamGroup(p) < 2) {
        b.ReportError(24);
        return false;
    }
    ui::FontDescription font{p[0].GetStringValue(), -Truncated(p[1].GetNumberValue()), 400, false, false};
    for (size_t i = 2; i < p.size(); ++i) ApplyStyleWord(p[i].GetStringValue(), font);
    b.Desktop().SetFont(control, font);
    b.Dialogs().fonts.push_back(font);
    return true;
}

// "alter" id, then "value", "selection", "enable", "show", "title" and
// "font" lines, up to "endalter". Other tokens are skipped.
bool COrvoBasic::ExecAlterControl() {
    CBasicVariable idValue;
    get_exp(idValue);
    ui::WindowHandle control = m_halted ? 0 : GetControlWindow(Truncated(idValue.GetNumberValue()));
    if (!control) {
        if (!m_halted) ReportError(44);
        SkipAlter(*this);
        return false;
    }
    while (m_command != CMD_ENDALTER && m_command != CMD_FINISHED && !IsEndOfProgram() && !m_halted) {
        uint32_t before = m_pos;
        if (get_token() != KEYWORD) {
            if (m_tokenType == TOKEN_NONE && m_pos == before) NextChar();
            continue;
        }
        m_stmtPos = m_pos - static_cast<uint32_t>(m_token.size());   // errors belong to this line
        switch (m_keyword) {
        case KW_VALUE: {
            CArgArray values;
            GetParamGroup(values);
            ExecControlValue(control, values);
            break;
        }
        case KW_SELECTION: {
            CBasicVariable v;
            get_exp(v);
            ExecControlSelection(control, v);
            break;
        }
        case KW_ENABLE:
        case KW_SHOW: {
            bool on = false;
            KEYWORD_TYPE which = m_keyword;
            if (!ReadSwitch(*this, on)) {
                ReportError(45);
                SkipAlter(*this);
                return false;
            }
            if (which == KW_ENABLE) m_desktop->EnableWindow(control, on);
            else m_desktop->ShowWindow(control, on ? ui::SW_SHOW : ui::SW_HIDE);
            break;
        }
        case KW_TITLE: {
            CBasicVariable v;
            get_exp(v);
            m_desktop->SetWindowText(control, v.GetStringValue());
            break;
        }
        case KW_FONT:
            if (!AlterFont(*this, control)) {
                SkipAlter(*this);
                return false;
            }
            break;
        default: break;
        }
    }
    return true;
}

// "setfocus" id: fails without a message when there is no such control.
bool COrvoBasic::ExecSetFocus() {
    CBasicVariable idValue;
    get_exp(idValue);
    ui::WindowHandle control = m_halted ? 0 : GetControlWindow(Truncated(idValue.GetNumberValue()));
    if (!control) return false;
    m_desktop->SetFocus(control);
    return true;
}

// controlvalue(id)
bool COrvoBasic::ExecGetControlValue(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.empty()) {
        ReportError(24);
        return false;
    }
    ui::WindowHandle control = GetControlWindow(Truncated(args[0].GetNumberValue()));
    return control && GetControlValue(control, result);
}

bool COrvoBasic::GDIObjectsFree() {
    m_dialogs->fonts.clear();
    return true;
}
