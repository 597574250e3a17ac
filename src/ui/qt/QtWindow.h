// The Qt desktop's windows: a dialog, sheet or page is a QWidget with its
// controls as child widgets; each window also remembers what the dialog
// logic asks about it (id, style, class, sink, the dialog's focus control).
#pragma once

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

// What a control is, decided from its class and style when it is created.
enum class QtControlType {
    PushButton, CheckBox, RadioButton, GroupBox, Edit, Static, ListBox, ComboBox,
    DateTime, TreeView, Slider, TabControl, ScrollBar, Other,
};

enum class QtWindowType { Dialog, Sheet, Page, Control, Prompt };

// The prompts a script shows without a dialog of its own.
enum class QtPromptKind { None, Question, Menu, File };

struct QtWindow {
    QtWindowType type = QtWindowType::Control;
    WindowHandle handle = 0;
    QtWindow* parent = nullptr;
    QPointer<QWidget> widget;
    CString className;
    uint32_t style = 0;
    int id = 0;
    QtControlType kind = QtControlType::Other;
    FontDescription font;
    bool hasFont = false;
    bool notifying = false;                 // an EN_CHANGE of this control is being delivered
    std::vector<QtWindow*> children;        // controls; a sheet's own buttons

    // Tree controls: item handles, given out in order and never reused.
    std::map<TreeItem, QTreeWidgetItem*> treeItems;
    TreeItem nextTreeHandle = 1;
    TreeItem treeSelected = 0;              // the selection last reported or set

    // Dialogs, pages and sheets.
    DialogSink* sink = nullptr;
    QtWindow* focus = nullptr;
    bool ended = false;
    int result = 0;
    QEventLoop* loop = nullptr;             // the loop waiting for a person, while one runs
    double unitX = 1.5, unitY = 1.625;      // pixels per dialog unit

    // Sheets: the pages' templates and sinks, the page windows shown so far.
    std::vector<SheetPage> pageSources;
    std::vector<QtWindow*> pages;
    int activePage = -1;
    QTabWidget* tabs = nullptr;

    // Prompts: the kind and what it shows (a question's text, "menu", the
    // file dialog's title); a menu's point, items and the chosen number
    // (0: none); a file dialog's request and the path chosen.
    QtPromptKind prompt = QtPromptKind::None;
    CString text;
    int x = 0, y = 0;
    std::vector<CString> items;
    int chosenItem = 0;
    FileDialogRequest file;
    CString chosen;
};

// The control type of a class and style; Other for a class no desktop knows.
QtControlType QtControlTypeOf(const CString& className, uint32_t style);

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
// Dates a date-time control takes: years 100 to 9999, real days, times of day.
bool QtValidTime(const SystemTime& time);
void QtSetTime(QtWindow& control, const SystemTime& time);

// What a window is called: a prompt's text, else its window title.
CString QtTitle(const QtWindow& window);

// Text conversions.
QString ToQString(const CString& text);
CString FromQString(const QString& text);

}  // namespace ob::ui
