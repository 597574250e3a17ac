// The Qt desktop's windows: a dialog, sheet or page is a QWidget with its
// controls as child widgets; each window also remembers what the dialog
// logic asks about it (id, style, class, sink, the dialog's focus control).
#pragma once

#include "ui/WindowRules.h"

#include <orvobasic/desktop.h>
#include <orvobasic/dialogs.h>

#include <QPointer>
#include <QWidget>

#include <map>
#include <vector>

class QEventLoop;
class QTabWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace ob::ui {

// A Qt window: the common part, its widget, and what the widget does not
// keep (a tree's item handles, the dialog units, a sheet's tabs, a menu's
// items and choice).
struct QtWindow : WindowCore<QtWindow> {
    QPointer<QWidget> widget;
    ControlType kind = ControlType::Other;
    bool notifying = false;                 // an EN_CHANGE of this control is being delivered

    // Tree controls: item handles, given out in order and never reused.
    std::map<TreeItem, QTreeWidgetItem*> treeItems;
    TreeItem nextTreeHandle = 1;
    TreeItem treeSelected = 0;              // the selection last reported or set

    QEventLoop* loop = nullptr;             // the loop waiting for a person, while one runs
    double unitX = 1.5, unitY = 1.625;      // pixels per dialog unit
    QTabWidget* tabs = nullptr;             // a sheet's pages

    // Prompts: `text` is what the prompt shows (a question's text, "menu",
    // the file dialog's title); a menu's items and the chosen number (0: none).
    std::vector<CString> items;
    int chosenItem = 0;
};

// Makes the widget of a control (its child of `owner`), unconnected.
QWidget* MakeControlWidget(QtWindow& control, const CString& text, QWidget* owner);
// Answers a window message from the control's widget, sending no
// notification (the widget's signals are blocked meanwhile).
intptr_t QtControlMessage(QtWindow& control, unsigned message, uintptr_t wParam, intptr_t lParam);
// A tree's selected item, or null.
QTreeWidgetItem* QtTreeSelection(const QTreeWidget* tree);
// The text a control shows as its window text (a combo box: its selection).
CString QtControlText(const QtWindow& control);
void QtSetControlText(QtWindow& control, const CString& text);
// The items a person can pick in a list, combo box, tree (in display
// order) or tab control.
std::vector<CString> QtControlItems(const QtWindow& control);
// The value part of a control's snapshot line.
CString QtControlValue(const QtWindow& control);
void QtSetTime(QtWindow& control, const SystemTime& time);

// What a window is called: a prompt's text, else its window title.
CString QtTitle(const QtWindow& window);

// What the shared window rules ask of a window (see WindowRules.h).
inline ControlType TypeOf(const QtWindow& w) { return w.kind; }
inline bool IsShown(const QtWindow& w) { return !w.widget->isHidden(); }
inline bool IsEnabled(const QtWindow& w) { return w.widget->isEnabledTo(w.widget->parentWidget()); }
inline CString TitleOf(const QtWindow& w) { return QtTitle(w); }
inline bool& NotifyingOf(QtWindow& w) { return w.notifying; }
CString ControlLine(const QtWindow& control, const QtWindow* focus);
inline std::vector<CString> ItemsOf(const QtWindow& w) { return QtControlItems(w); }

// Text conversions.
QString ToQString(const CString& text);
CString FromQString(const QString& text);

}  // namespace ob::ui
