// What a person does in the Qt dialogs: the widgets' signals turned into
// the notifications the dialog logic receives, and the action-script verbs
// played as input events on the widgets (mouse clicks, key presses).
#include "ui/qt/QtDesktop.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>

#include <algorithm>
#include <string>

namespace ob::ui {

namespace {

using common::Number;

// Where a person clicks a button: a check box or radio button on its
// indicator (the widget's right part may lie beyond its text), others in the middle.
QPoint ClickPoint(const QtWindow& c) {
    QRect r = c.widget->rect();
    if (c.kind == ControlType::CheckBox || c.kind == ControlType::RadioButton)
        return QPoint(std::min(r.height() / 2, r.width() / 2), r.height() / 2);
    return r.center();
}

}  // namespace

CString ControlLine(const QtWindow& c, const QtWindow* focus) {
    return common::SnapshotLine({c.kind, c.style, c.id, QtControlText(c), QtControlValue(c), c.hasFont ? &c.font : nullptr,
                                 IsEnabled(c), IsShown(c), &c == focus});
}

// ---- from the widgets to the dialog logic ----

void QtDesktop::Connect(QtWindow& c) {
    QWidget* w = c.widget.data();
    WindowHandle handle = c.handle;
    auto with = [this, handle](auto action) {
        return [this, handle, action](auto&&...) {
            if (QtWindow* control = Find(handle)) action(*control);
        };
    };
    switch (c.kind) {
    case ControlType::PushButton: case ControlType::CheckBox: case ControlType::RadioButton:
        QObject::connect(static_cast<QAbstractButton*>(w), &QAbstractButton::clicked, w,
                         with([this](QtWindow& control) { OnButtonClicked(control); }));
        break;
    case ControlType::Edit:
        if (auto* line = qobject_cast<QLineEdit*>(w))
            QObject::connect(line, &QLineEdit::textEdited, w,
                             with([this](QtWindow& control) { NotifyCommand(control, EN_CHANGE); }));
        else
            QObject::connect(static_cast<QPlainTextEdit*>(w), &QPlainTextEdit::textChanged, w,
                             with([this](QtWindow& control) { NotifyCommand(control, EN_CHANGE); }));
        break;
    case ControlType::ListBox:
        QObject::connect(static_cast<QListWidget*>(w), &QAbstractItemView::clicked, w,
                         with([this](QtWindow& control) { NotifyCommand(control, LBN_SELCHANGE); }));
        break;
    case ControlType::ComboBox:
        QObject::connect(static_cast<QComboBox*>(w), &QComboBox::activated, w,
                         with([this](QtWindow& control) { NotifyCommand(control, CBN_SELCHANGE); }));
        break;
    case ControlType::TabControl:
        QObject::connect(static_cast<QTabBar*>(w), &QTabBar::currentChanged, w, with([this](QtWindow& control) {
                             NotifyHeader header{0, 0, TCN_SELCHANGE};
                             ui::Notify(control, header);
                         }));
        break;
    case ControlType::TreeView:
        QObject::connect(static_cast<QTreeWidget*>(w), &QTreeWidget::itemSelectionChanged, w,
                         with([this](QtWindow& control) {
                             QTreeWidgetItem* now = QtTreeSelection(static_cast<QTreeWidget*>(control.widget.data()));
                             TreeItem item = now ? static_cast<TreeItem>(now->data(0, Qt::UserRole).toLongLong()) : 0;
                             if (item == control.treeSelected) return;
                             TreeViewNotify notify{{0, 0, TVN_SELCHANGEDW}, control.treeSelected, item};
                             control.treeSelected = item;
                             ui::Notify(control, notify.header);
                         }));
        break;
    default: break;
    }
}

// After the widget's own click: an automatic check box has toggled; an
// automatic radio button is checked and the others of its group (up to the
// controls with WS_GROUP) are cleared; the other kinds keep their state.
// Every button then reports BN_CLICKED.
void QtDesktop::OnButtonClicked(QtWindow& c) {
    QtWindow* owner = c.parent;
    unsigned kind = c.style & BS_TYPEMASK;
    auto* button = static_cast<QAbstractButton*>(c.widget.data());
    if (c.kind == ControlType::CheckBox && kind != BS_AUTOCHECKBOX && kind != BS_AUTO3STATE) {
        QSignalBlocker quiet(button);
        button->setChecked(!button->isChecked());
    }
    if (c.kind == ControlType::RadioButton) {
        QSignalBlocker quiet(button);
        button->setChecked(!button->isChecked());   // undo Qt's toggle; the group rule decides
        if (kind == BS_AUTORADIOBUTTON && owner) {
            for (QtWindow* other : RadioGroup(c)) {
                QSignalBlocker still(other->widget.data());
                static_cast<QAbstractButton*>(other->widget.data())->setChecked(false);
            }
            button->setChecked(true);
        }
    }
    if (owner && owner->type != WindowType::Sheet) owner->focus = &c;
    NotifyCommand(c, BN_CLICKED);
}

// Enter, Escape and the close box end the window through its commands, as
// the dialog manager turns them into WM_COMMAND with IDOK or IDCANCEL (Enter
// chooses the default push button when there is one).
void QtDesktop::EndByUser(QtWindow& window, int id) {
    QtWindow* control = CommandControl(window, id);
    SendCommand(*this, window, id, BN_CLICKED, control);
}

// ---- the action verbs, played on the widgets ----

// A key typed on `widget` (with the text it enters): press and release.
void QtDesktop::SendKey(QWidget* widget, int key, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &release);
}

// A left click at `at` (widget coordinates): press and release.
void QtDesktop::ClickWidget(QWidget* widget, QPoint at) {
    QPointF local(at);
    QPointF global(widget->mapToGlobal(at));
    QMouseEvent press(QEvent::MouseButtonPress, local, global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &release);
}

// Typing replaces the field's text: everything is selected, then the text
// arrives as one key press (as an input method commits it), or Delete
// clears the field. A number field's validator refuses what is no digit,
// so only the digits are typed.
void QtDesktop::EnterText(QtWindow& c, const CString& text) {
    QString typed = ToQString(text);
    QWidget* w = c.widget.data();
    w->setFocus();
    if (auto* line = qobject_cast<QLineEdit*>(w)) line->selectAll();
    else static_cast<QPlainTextEdit*>(w)->selectAll();
    bool printable = !typed.isEmpty() && (typed.at(0).isPrint() || typed.at(0) == u'\t');
    if (typed.isEmpty() || printable) {
        SendKey(w, typed.isEmpty() ? Qt::Key_Delete : Qt::Key_unknown, typed);
    } else if (auto* edit = qobject_cast<QPlainTextEdit*>(w)) {
        edit->insertPlainText(typed);
    } else {
        static_cast<QLineEdit*>(w)->insert(typed);
    }
}

void QtDesktop::ClickControl(QtWindow& c) { ClickWidget(c.widget.data(), ClickPoint(c)); }

bool QtDesktop::IsChecked(const QtWindow& c) const { return static_cast<QAbstractButton*>(c.widget.data())->isChecked(); }

// Selects item `index` of a list, combo box, tree or tab control as a click
// on it does; the widget's signal brings the notification.
CString QtDesktop::SelectItem(QtWindow& c, int index) {
    QWidget* w = c.widget.data();
    switch (c.kind) {
    case ControlType::ListBox: {
        auto* list = static_cast<QListWidget*>(w);
        QListWidgetItem* item = list->item(index);
        list->scrollToItem(item);
        QRect rect = list->visualItemRect(item);
        if (!rect.isEmpty() && list->viewport()->rect().contains(rect.center())) {
            ClickWidget(list->viewport(), rect.center());
        } else {   // too small a list to click in: the click's effect
            if (c.style & LBS_MULTIPLESEL) item->setSelected(!item->isSelected());
            list->setCurrentRow(index, (c.style & LBS_MULTIPLESEL) ? QItemSelectionModel::NoUpdate
                                                                    : QItemSelectionModel::ClearAndSelect);
            emit list->clicked(list->model()->index(index, 0));
        }
        break;
    }
    case ControlType::ComboBox: {
        auto* combo = static_cast<QComboBox*>(w);
        combo->setCurrentIndex(index);
        emit combo->activated(index);   // what choosing in its pop-up reports
        break;
    }
    case ControlType::TabControl: {
        auto* bar = static_cast<QTabBar*>(w);
        if (bar->currentIndex() == index) break;
        QRect rect = bar->tabRect(index);
        if (!rect.isEmpty() && bar->rect().contains(rect.center())) ClickWidget(bar, rect.center());
        if (bar->currentIndex() != index) bar->setCurrentIndex(index);
        break;
    }
    case ControlType::TreeView: {
        auto* tree = static_cast<QTreeWidget*>(w);
        QTreeWidgetItem* item = nullptr;
        int n = 0;
        for (QTreeWidgetItemIterator it(tree); *it && !item; ++it, ++n)
            if (n == index) item = *it;
        if (!item || QtTreeSelection(tree) == item) break;
        tree->scrollToItem(item);
        QRect rect = tree->visualItemRect(item);
        if (!rect.isEmpty() && tree->viewport()->rect().contains(rect.center()))
            ClickWidget(tree->viewport(), rect.center());
        if (QtTreeSelection(tree) != item) tree->setCurrentItem(item);
        break;
    }
    default: return u"control " + Number(c.id) + u" has no items";
    }
    return CString();
}

void QtDesktop::SetSliderPosition(QtWindow& c, int position) {
    auto* slider = static_cast<QSlider*>(c.widget.data());
    slider->setValue(std::clamp(position, slider->minimum(), slider->maximum()));
}

// The page's tab is clicked.
void QtDesktop::ChoosePage(QtWindow& sheet, int index) {
    QTabBar* bar = sheet.tabs->tabBar();
    QRect rect = bar->tabRect(index);
    if (bar->currentIndex() != index && !rect.isEmpty()) ClickWidget(bar, rect.center());
    if (sheet.activePage != index) ShowPage(sheet, index);
}

void QtDesktop::PressEnter(QtWindow& window) { SendKey(window.widget.data(), Qt::Key_Return); }

void QtDesktop::PressEscape(QtWindow& window) { SendKey(window.widget.data(), Qt::Key_Escape); }

}  // namespace ob::ui
