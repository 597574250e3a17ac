// What the windows of every desktop are: the kind of window, the kind of
// control (decided from its class and style when it is created) and the
// prompts a script shows without a dialog of its own. Both desktops keep
// their windows in these terms, so the rules in WindowRules.h serve both.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/dialogs.h>
#include <orvobasic/export.h>

#include <cstdint>

namespace ob::ui {

enum class ControlType {
    PushButton, CheckBox, RadioButton, GroupBox, Edit, Static, ListBox, ComboBox,
    DateTime, TreeView, Slider, TabControl, ScrollBar, Other,
};

enum class WindowType { Dialog, Sheet, Page, Control, Prompt };

enum class PromptKind { None, Question, Menu, File };

// The control type of a class and style; Other for a class no desktop knows
// (a template with such a control is refused). Class names ignore case.
OB_API ControlType ControlTypeOf(const CString& className, uint32_t style);

// Dates a date-time picker takes: years 100 to 9999, real days, times of day.
OB_API bool ValidTime(const SystemTime& time);

}  // namespace ob::ui
