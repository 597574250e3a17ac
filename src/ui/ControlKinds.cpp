// Control types from class names and styles, and the dates a picker takes.
#include "ui/ControlKinds.h"

namespace ob::ui {

namespace {

bool SameClass(const CString& a, const char16_t* b) {
    CString x = a, y = b;
    return x.MakeLower() == y.MakeLower();
}

bool IsLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

}  // namespace

ControlType ControlTypeOf(const CString& className, uint32_t style) {
    if (SameClass(className, u"Button")) {
        switch (style & BS_TYPEMASK) {
        case BS_CHECKBOX: case BS_AUTOCHECKBOX: case BS_3STATE: case BS_AUTO3STATE: return ControlType::CheckBox;
        case BS_RADIOBUTTON: case BS_AUTORADIOBUTTON: return ControlType::RadioButton;
        case BS_GROUPBOX: return ControlType::GroupBox;
        default: return ControlType::PushButton;
        }
    }
    struct Named {
        const char16_t* name;
        ControlType type;
    };
    static const Named kNamed[] = {
        {u"Edit", ControlType::Edit}, {u"Static", ControlType::Static}, {u"ListBox", ControlType::ListBox},
        {u"ComboBox", ControlType::ComboBox}, {u"SysDateTimePick32", ControlType::DateTime},
        {u"SysTreeView32", ControlType::TreeView}, {u"msctls_trackbar32", ControlType::Slider},
        {u"SysTabControl32", ControlType::TabControl}, {u"ScrollBar", ControlType::ScrollBar},
    };
    for (const Named& n : kNamed)
        if (SameClass(className, n.name)) return n.type;
    return ControlType::Other;
}

bool ValidTime(const SystemTime& t) {
    static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (t.year < 100 || t.year > 9999 || t.month < 1 || t.month > 12 || t.day < 1) return false;
    int days = kDays[t.month - 1] + (t.month == 2 && IsLeap(t.year) ? 1 : 0);
    return t.day <= days && t.hour >= 0 && t.hour < 24 && t.minute >= 0 && t.minute < 60 && t.second >= 0 &&
           t.second < 60;
}

}  // namespace ob::ui
