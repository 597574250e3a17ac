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

CString Number(long n) {
    std::string digits = std::to_string(n);
    return CString(std::u16string(digits.begin(), digits.end()));
}

CString Quoted(const CString& text) { return u"\"" + text + u"\""; }

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

const char16_t* KindName(const QtWindow& c) {
    switch (c.kind) {
    case QtControlType::PushButton: return u"button";
    case QtControlType::CheckBox: return u"checkbox";
    case QtControlType::RadioButton: return u"radio";
    case QtControlType::GroupBox: return u"groupbox";
    case QtControlType::Edit:
        return (c.style & ES_MULTILINE) ? u"editmultiline" : (c.style & ES_NUMBER) ? u"editnumber" : u"edit";
    case QtControlType::Static: return (c.style & 0x1F) == SS_BITMAP ? u"bitmap" : u"static";
    case QtControlType::ListBox: return (c.style & LBS_MULTIPLESEL) ? u"multilistbox" : u"listbox";
    case QtControlType::ComboBox: return u"combobox";
    case QtControlType::DateTime: return u"datetime";
    case QtControlType::TreeView: return u"treeview";
    case QtControlType::Slider: return u"slider";
    case QtControlType::TabControl: return u"tabcontrol";
    default: return u"control";
    }
}

// A font set on the control: face, height, weight and style words.
CString FontOf(const QtWindow& c) {
    if (!c.hasFont) return CString();
    return u" font=" + Quoted(c.font.face) + u"," + Number(c.font.height) + u"," + Number(c.font.weight) +
           (c.font.italic ? u",italic" : u"") + (c.font.underline ? u",underline" : u"");
}

// Where a person clicks a button: a check box or radio button on its
// indicator (the widget's right part may lie beyond its text), others in the middle.
QPoint ClickPoint(const QtWindow& c) {
    QRect r = c.widget->rect();
    if (c.kind == QtControlType::CheckBox || c.kind == QtControlType::RadioButton)
        return QPoint(std::min(r.height() / 2, r.width() / 2), r.height() / 2);
    return r.center();
}

bool Shown(const QtWindow& c) { return !c.widget->isHidden(); }

bool Enabled(const QtWindow& c) { return c.widget->isEnabledTo(c.widget->parentWidget()); }

CString ControlLine(const QtWindow& c, const QtWindow* focus) {
    return u"  " + CString(KindName(c)) + u" " + Number(c.id) + u" " + Quoted(QtControlText(c)) + QtControlValue(c) +
           FontOf(c) + (Enabled(c) ? u" enabled" : u" disabled") + (Shown(c) ? u" visible" : u" hidden") +
           (&c == focus ? u" focus" : u"") + u"\n";
}

CString TitleOf(const QtWindow& w) { return QtTitle(w); }

void SendKey(QWidget* widget, int key, const QString& text = QString()) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &release);
}

}  // namespace

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
    case QtControlType::PushButton: case QtControlType::CheckBox: case QtControlType::RadioButton:
        QObject::connect(static_cast<QAbstractButton*>(w), &QAbstractButton::clicked, w,
                         with([this](QtWindow& control) { OnButtonClicked(control); }));
        break;
    case QtControlType::Edit:
        if (auto* line = qobject_cast<QLineEdit*>(w))
            QObject::connect(line, &QLineEdit::textEdited, w,
                             with([this](QtWindow& control) { NotifyCommand(control, EN_CHANGE); }));
        else
            QObject::connect(static_cast<QPlainTextEdit*>(w), &QPlainTextEdit::textChanged, w,
                             with([this](QtWindow& control) { NotifyCommand(control, EN_CHANGE); }));
        break;
    case QtControlType::ListBox:
        QObject::connect(static_cast<QListWidget*>(w), &QAbstractItemView::clicked, w,
                         with([this](QtWindow& control) { NotifyCommand(control, LBN_SELCHANGE); }));
        break;
    case QtControlType::ComboBox:
        QObject::connect(static_cast<QComboBox*>(w), &QComboBox::activated, w,
                         with([this](QtWindow& control) { NotifyCommand(control, CBN_SELCHANGE); }));
        break;
    case QtControlType::TabControl:
        QObject::connect(static_cast<QTabBar*>(w), &QTabBar::currentChanged, w, with([this](QtWindow& control) {
                             NotifyHeader header{0, 0, TCN_SELCHANGE};
                             Notify(control, header);
                         }));
        break;
    case QtControlType::TreeView:
        QObject::connect(static_cast<QTreeWidget*>(w), &QTreeWidget::itemSelectionChanged, w,
                         with([this](QtWindow& control) {
                             QTreeWidgetItem* now = QtTreeSelection(static_cast<QTreeWidget*>(control.widget.data()));
                             TreeItem item = now ? static_cast<TreeItem>(now->data(0, Qt::UserRole).toLongLong()) : 0;
                             if (item == control.treeSelected) return;
                             TreeViewNotify notify{{0, 0, TVN_SELCHANGEDW}, control.treeSelected, item};
                             control.treeSelected = item;
                             Notify(control, notify.header);
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
    if (c.kind == QtControlType::CheckBox && kind != BS_AUTOCHECKBOX && kind != BS_AUTO3STATE) {
        QSignalBlocker quiet(button);
        button->setChecked(!button->isChecked());
    }
    if (c.kind == QtControlType::RadioButton) {
        QSignalBlocker quiet(button);
        button->setChecked(!button->isChecked());   // undo Qt's toggle; the group rule decides
        if (kind == BS_AUTORADIOBUTTON && owner) {
            auto& all = owner->children;
            auto at = std::find(all.begin(), all.end(), &c) - all.begin();
            ptrdiff_t first = at, last = at;
            while (first > 0 && !(all[static_cast<size_t>(first)]->style & WS_GROUP)) --first;
            while (last + 1 < static_cast<ptrdiff_t>(all.size()) &&
                   !(all[static_cast<size_t>(last) + 1]->style & WS_GROUP))
                ++last;
            for (ptrdiff_t i = first; i <= last; ++i) {
                QtWindow* other = all[static_cast<size_t>(i)];
                if ((other->style & BS_TYPEMASK) == BS_AUTORADIOBUTTON && other->kind == QtControlType::RadioButton) {
                    QSignalBlocker still(other->widget.data());
                    static_cast<QAbstractButton*>(other->widget.data())->setChecked(false);
                }
            }
            button->setChecked(true);
        }
    }
    if (owner && owner->type != QtWindowType::Sheet) owner->focus = &c;
    NotifyCommand(c, BN_CLICKED);
}

// WM_COMMAND to a dialog or page; a sheet handles its own buttons.
void QtDesktop::SendCommand(QtWindow& dialog, int id, unsigned code, QtWindow* control) {
    if (dialog.type == QtWindowType::Sheet) {
        if (id == IDC_OK || id == IDC_CANCEL) EndDialog(dialog.handle, id);
        return;
    }
    if (dialog.sink)
        dialog.sink->OnCommand(static_cast<uintptr_t>(id & 0xFFFF) | (static_cast<uintptr_t>(code) << 16),
                               control ? static_cast<intptr_t>(control->handle) : 0);
}

void QtDesktop::NotifyCommand(QtWindow& control, unsigned code) {
    if (control.notifying || !control.parent) return;
    control.notifying = true;
    WindowHandle self = control.handle;
    SendCommand(*control.parent, control.id, code, &control);
    if (QtWindow* still = Find(self)) still->notifying = false;
}

void QtDesktop::Notify(QtWindow& control, NotifyHeader& header) {
    header.from = control.handle;
    header.idFrom = static_cast<uintptr_t>(control.id);
    if (control.parent && control.parent->sink)
        control.parent->sink->OnNotify(static_cast<uintptr_t>(control.id), &header);
}

// Enter, Escape and the close box end the window through its commands, as
// the dialog manager turns them into WM_COMMAND with IDOK or IDCANCEL (Enter
// chooses the default push button when there is one).
void QtDesktop::EndByUser(QtWindow& window, int id) {
    QtWindow* control = nullptr;
    for (QtWindow* c : window.children)
        if (id == IDC_OK ? (c->style & BS_TYPEMASK) == BS_DEFPUSHBUTTON && c->kind == QtControlType::PushButton
                         : c->id == id) {
            control = c;
            break;
        }
    if (id == IDC_OK && control) id = control->id;
    SendCommand(window, id, BN_CLICKED, control);
}

// ---- the action verbs, played on the widgets ----

// A left click at `at` (widget coordinates): press and release.
void QtDesktop::ClickWidget(QWidget* widget, QPoint at) {
    QPointF local(at);
    QPointF global(widget->mapToGlobal(at));
    QMouseEvent press(QEvent::MouseButtonPress, local, global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &release);
}

// The control a person can reach: in the innermost window, or in a sheet
// among its buttons and on its current page; visible and enabled.
QtWindow* QtDesktop::UserTarget(int id, CString& why) {
    QtWindow* top = Innermost();
    if (!top) {
        why = u"no dialog is open";
        return nullptr;
    }
    std::vector<QtWindow*> owners{top};
    if (top->type == QtWindowType::Sheet && top->activePage >= 0)
        owners.push_back(top->pages[static_cast<size_t>(top->activePage)]);
    for (QtWindow* owner : owners)
        for (QtWindow* c : owner ? owner->children : std::vector<QtWindow*>{})
            if (c->id == id) {
                if (!Shown(*c)) why = u"control " + Number(id) + u" is hidden";
                else if (!Enabled(*c)) why = u"control " + Number(id) + u" is disabled";
                return why.empty() ? c : nullptr;
            }
    why = u"no control " + Number(id) + u" in " + Quoted(TitleOf(*top));
    return nullptr;
}

QtWindow* QtDesktop::TypedTarget(int id, QtControlType type, const char16_t* what, CString& why) {
    QtWindow* c = UserTarget(id, why);
    if (c && c->kind != type) {
        why = u"control " + Number(id) + u" is no " + what;
        return nullptr;
    }
    return c;
}

CString QtDesktop::ExpectDialog(const CString& title) {
    QtWindow* top = Innermost();
    if (!top) return u"expected " + Quoted(title) + u", but no dialog is open";
    if (TitleOf(*top) != title) return u"expected " + Quoted(title) + u", but " + Quoted(TitleOf(*top)) + u" is open";
    return CString();
}

// Typing replaces the field's text: everything is selected, then the text
// arrives as one key press (as an input method commits it), or Delete
// clears the field. A number field's validator refuses what is no digit,
// so only the digits are typed.
CString QtDesktop::Type(int id, const CString& text) {
    CString why;
    QtWindow* c = TypedTarget(id, QtControlType::Edit, u"edit field", why);
    if (!c) return why;
    QString typed = ToQString(text);
    if (c->style & ES_NUMBER) typed.remove(QRegularExpression(QStringLiteral("[^0-9]")));
    if (c->parent) c->parent->focus = c;
    QWidget* w = c->widget.data();
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
    return CString();
}

CString QtDesktop::Click(int id) {
    CString why;
    QtWindow* c = UserTarget(id, why);
    if (!c) return why;
    QtControlType t = c->kind;
    if (t != QtControlType::PushButton && t != QtControlType::CheckBox && t != QtControlType::RadioButton)
        return u"control " + Number(id) + u" cannot be clicked";
    ClickWidget(c->widget.data(), ClickPoint(*c));
    return CString();
}

// Selects item `index` of a list, combo box, tree or tab control as a click
// on it does; the widget's signal brings the notification.
CString QtDesktop::SelectItem(QtWindow& c, int index) {
    QWidget* w = c.widget.data();
    switch (c.kind) {
    case QtControlType::ListBox: {
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
    case QtControlType::ComboBox: {
        auto* combo = static_cast<QComboBox*>(w);
        combo->setCurrentIndex(index);
        emit combo->activated(index);   // what choosing in its pop-up reports
        break;
    }
    case QtControlType::TabControl: {
        auto* bar = static_cast<QTabBar*>(w);
        if (bar->currentIndex() == index) break;
        QRect rect = bar->tabRect(index);
        if (!rect.isEmpty() && bar->rect().contains(rect.center())) ClickWidget(bar, rect.center());
        if (bar->currentIndex() != index) bar->setCurrentIndex(index);
        break;
    }
    case QtControlType::TreeView: {
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

CString QtDesktop::SelectText(int id, const CString& item) {
    CString why;
    QtWindow* c = UserTarget(id, why);
    if (!c) return why;
    int index = FindItem(QtControlItems(*c), item);
    if (index < 0) return u"no item " + Quoted(item) + u" in control " + Number(id);
    return SelectItem(*c, index);
}

CString QtDesktop::SelectIndex(int id, int index) {
    CString why;
    QtWindow* c = UserTarget(id, why);
    if (!c) return why;
    if (index < 0 || static_cast<size_t>(index) >= QtControlItems(*c).size())
        return u"no item " + Number(index) + u" in control " + Number(id);
    return SelectItem(*c, index);
}

CString QtDesktop::Check(int id, bool checked) {
    CString why;
    QtWindow* c = UserTarget(id, why);
    if (!c) return why;
    QtControlType t = c->kind;
    if (t != QtControlType::CheckBox && !(t == QtControlType::RadioButton && checked))
        return u"control " + Number(id) + (checked ? u" cannot be checked" : u" cannot be unchecked");
    if (static_cast<QAbstractButton*>(c->widget.data())->isChecked() != checked)
        ClickWidget(c->widget.data(), ClickPoint(*c));
    return CString();
}

CString QtDesktop::Tab(int id, int index) {
    CString why;
    QtWindow* c = TypedTarget(id, QtControlType::TabControl, u"tab control", why);
    if (!c) return why;
    if (index < 0 || index >= static_cast<QTabBar*>(c->widget.data())->count())
        return u"no tab " + Number(index) + u" in control " + Number(id);
    return SelectItem(*c, index);
}

CString QtDesktop::Slide(int id, int position) {
    CString why;
    QtWindow* c = TypedTarget(id, QtControlType::Slider, u"slider", why);
    if (!c) return why;
    auto* slider = static_cast<QSlider*>(c->widget.data());
    slider->setValue(std::clamp(position, slider->minimum(), slider->maximum()));
    return CString();
}

CString QtDesktop::Date(int id, const SystemTime& time) {
    CString why;
    QtWindow* c = TypedTarget(id, QtControlType::DateTime, u"date-time picker", why);
    if (!c) return why;
    if (!QtValidTime(time)) return u"no such date";
    QtSetTime(*c, time);
    return CString();
}

CString QtDesktop::Page(int index) {
    QtWindow* top = Innermost();
    if (!top || top->type != QtWindowType::Sheet) return u"no property sheet is open";
    if (index < 0 || static_cast<size_t>(index) >= top->pages.size()) return u"no page " + Number(index);
    QTabBar* bar = top->tabs->tabBar();
    QRect rect = bar->tabRect(index);
    if (bar->currentIndex() != index && !rect.isEmpty()) ClickWidget(bar, rect.center());
    if (top->activePage != index) ShowPage(*top, index);
    return CString();
}

// Lets time pass in short slices, so that an ended dialog stops the wait.
CString QtDesktop::Wait(int milliseconds) {
    constexpr int kSlice = 10;
    QtWindow* top = Innermost();
    for (int left = std::max(milliseconds, 0); left > 0 && top && !top->ended && !Abandoned(*top); left -= kSlice)
        if (RunMessageLoop(std::min(left, kSlice))) break;
    return CString();
}

CString QtDesktop::Describe(const QtWindow& window) const {
    if (window.type == QtWindowType::Prompt) return DescribePrompt(window);
    CString out;
    if (window.type == QtWindowType::Sheet) {
        out = u"propertysheet " + Quoted(TitleOf(window)) + u"\n";
        for (const QtWindow* c : window.children) out += ControlLine(*c, nullptr);
        if (window.activePage < 0) return out;
        const QtWindow* page = window.pages[static_cast<size_t>(window.activePage)];
        if (!page) return out;
        out += u"page " + Number(window.activePage) + u" " + Quoted(TitleOf(*page)) + u"\n";
        for (const QtWindow* c : page->children) out += ControlLine(*c, page->focus);
        return out;
    }
    out = u"dialog " + Quoted(TitleOf(window)) + u"\n";
    for (const QtWindow* c : window.children) out += ControlLine(*c, window.focus);
    return out;
}

CString QtDesktop::Snapshot() {
    if (QtWindow* top = Innermost()) UiOutput(Describe(*top));
    return CString();
}

CString QtDesktop::Ok() {
    QtWindow* top = Innermost();
    if (top && top->type == QtWindowType::Prompt) return PromptOk(*top);
    if (top) SendKey(top->widget.data(), Qt::Key_Return);
    return CString();
}

// Escape: a prompt ends unanswered (question: IDCANCEL, menu: 0, file
// dialog: no path).
CString QtDesktop::Cancel() {
    QtWindow* top = Innermost();
    if (top && top->type == QtWindowType::Prompt) {
        top->result = IDCANCEL;
        EndPrompt(*top);
    } else if (top) {
        SendKey(top->widget.data(), Qt::Key_Escape);
    }
    return CString();
}

CString QtDesktop::Close() {
    QtWindow* top = Innermost();
    if (top && top->type == QtWindowType::Prompt) return Cancel();
    if (top) top->widget->close();
    return CString();
}

}  // namespace ob::ui
