// The Qt controls: which widget stands for which control, and the widgets'
// answers to the window messages the dialog logic sends.
#include "ui/qt/QtWindow.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSlider>
#include <QTabBar>
#include <QTreeWidget>

#include <algorithm>
#include <string>

namespace ob::ui {

QString ToQString(const CString& text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

CString FromQString(const QString& text) {
    return CString(std::u16string(reinterpret_cast<const char16_t*>(text.utf16()), static_cast<size_t>(text.size())));
}

CString QtTitle(const QtWindow& window) {
    if (window.type == WindowType::Prompt) return window.text;
    return window.widget ? FromQString(window.widget->windowTitle()) : CString();
}

namespace {

using common::FindPrefix;
using common::ItemText;
using common::TextOut;
using common::TextParam;

bool IsMulti(const QtWindow& w) { return (w.style & LBS_MULTIPLESEL) != 0; }

// The texts of items 0 to count - 1 of a list, combo box or tab bar.
template <class TextOf>
std::vector<CString> Texts(int count, TextOf textOf) {
    std::vector<CString> texts;
    texts.reserve(static_cast<size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) texts.push_back(FromQString(textOf(i)));
    return texts;
}

// ---- list box ----

std::vector<CString> ListItems(const QListWidget* list) {
    return Texts(list->count(), [list](int i) { return list->item(i)->text(); });
}

intptr_t ListBoxMessage(QtWindow& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    auto* list = static_cast<QListWidget*>(w.widget.data());
    intptr_t index = static_cast<intptr_t>(wParam);
    bool valid = index >= 0 && index < list->count();
    switch (message) {
    case LB_ADDSTRING:
        list->addItem(ToQString(TextParam(lParam)));
        return list->count() - 1;
    case LB_RESETCONTENT: list->clear(); return 0;
    case LB_SETCURSEL:
        if (IsMulti(w)) return LB_ERR;
        list->setCurrentRow(valid ? static_cast<int>(index) : -1);
        if (!valid) list->clearSelection();
        return valid ? index : intptr_t{LB_ERR};
    case LB_GETCURSEL:   // a multi-selection list answers with its caret
        if (IsMulti(w)) return list->count() == 0 ? LB_ERR : std::max(list->currentRow(), 0);
        return list->selectedItems().isEmpty() ? -1 : list->currentRow();
    case LB_SETSEL:
        if (!IsMulti(w)) return LB_ERR;
        if (lParam == -1) {
            for (int i = 0; i < list->count(); ++i) list->item(i)->setSelected(wParam != 0);
        } else if (lParam >= 0 && lParam < list->count()) {
            list->item(static_cast<int>(lParam))->setSelected(wParam != 0);
        } else {
            return LB_ERR;
        }
        return 0;
    case LB_GETSEL:
        if (!valid) return LB_ERR;
        if (IsMulti(w)) return list->item(static_cast<int>(index))->isSelected() ? 1 : 0;
        return !list->selectedItems().isEmpty() && index == list->currentRow() ? 1 : 0;
    case LB_GETTEXT: return ItemText(ListItems(list), wParam, lParam);
    case LB_GETCOUNT: return list->count();
    case LB_SELECTSTRING: {
        if (IsMulti(w)) return LB_ERR;
        int found = FindPrefix(ListItems(list), index, TextParam(lParam));
        if (found >= 0) list->setCurrentRow(found);
        return found;
    }
    default: return 0;
    }
}

// ---- combo box ----

std::vector<CString> ComboItems(const QComboBox* combo) {
    return Texts(combo->count(), [combo](int i) { return combo->itemText(i); });
}

intptr_t ComboBoxMessage(QtWindow& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    auto* combo = static_cast<QComboBox*>(w.widget.data());
    intptr_t index = static_cast<intptr_t>(wParam);
    bool valid = index >= 0 && index < combo->count();
    switch (message) {
    case CB_ADDSTRING: {
        bool wasEmpty = combo->count() == 0;
        combo->addItem(ToQString(TextParam(lParam)));
        if (wasEmpty) combo->setCurrentIndex(-1);   // adding an item selects nothing
        return combo->count() - 1;
    }
    case CB_RESETCONTENT: combo->clear(); return 0;
    case CB_SETCURSEL:
        combo->setCurrentIndex(valid ? static_cast<int>(index) : -1);
        return valid ? index : intptr_t{LB_ERR};
    case CB_GETCURSEL: return combo->currentIndex();
    case CB_GETLBTEXT: return ItemText(ComboItems(combo), wParam, lParam);
    case CB_GETCOUNT: return combo->count();
    case CB_SELECTSTRING: {
        int found = FindPrefix(ComboItems(combo), index, TextParam(lParam));
        if (found >= 0) combo->setCurrentIndex(found);
        return found;
    }
    default: return 0;
    }
}

intptr_t ButtonMessage(QtWindow& w, unsigned message, uintptr_t wParam, intptr_t) {
    bool checkable = w.kind == ControlType::CheckBox || w.kind == ControlType::RadioButton;
    auto* button = qobject_cast<QAbstractButton*>(w.widget.data());
    if (!checkable || !button) return 0;
    if (message == BM_GETCHECK) return button->isChecked() ? 1 : 0;
    if (message == BM_SETCHECK) button->setChecked(wParam != 0);
    return 0;
}

intptr_t TabMessage(QtWindow& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    auto* bar = static_cast<QTabBar*>(w.widget.data());
    intptr_t index = static_cast<intptr_t>(wParam);
    bool valid = index >= 0 && index < bar->count();
    switch (message) {
    case TCM_GETITEMCOUNT: return bar->count();
    case TCM_DELETEALLITEMS:
        while (bar->count() > 0) bar->removeTab(bar->count() - 1);
        return 1;
    case TCM_INSERTITEMW: {
        int at = static_cast<int>(std::clamp<intptr_t>(index, 0, bar->count()));
        return bar->insertTab(at, ToQString(TextParam(lParam)));
    }
    case TCM_GETCURSEL: return bar->currentIndex();
    case TCM_SETCURSEL: {
        if (!valid) return -1;
        int previous = bar->currentIndex();
        bar->setCurrentIndex(static_cast<int>(index));
        return previous;
    }
    case TCM_GETITEMW:
        if (!valid) return 0;
        if (CString* out = TextOut(lParam)) *out = FromQString(bar->tabText(static_cast<int>(index)));
        return 1;
    default: return 0;
    }
}

// ---- tree ----

TreeItem HandleOf(const QTreeWidgetItem* item) {
    return item ? static_cast<TreeItem>(item->data(0, Qt::UserRole).toLongLong()) : 0;
}

QTreeWidgetItem* FindTreeItem(QtWindow& w, TreeItem handle) {
    auto it = w.treeItems.find(handle);
    return it == w.treeItems.end() ? nullptr : it->second;
}

intptr_t TreeInsertItem(QtWindow& w, const TreeInsert* insert) {
    auto* tree = static_cast<QTreeWidget*>(w.widget.data());
    if (!insert) return 0;
    TreeItem parentHandle = insert->parent == 0 ? TVI_ROOT : insert->parent;
    QTreeWidgetItem* parent = parentHandle == TVI_ROOT ? tree->invisibleRootItem() : FindTreeItem(w, parentHandle);
    if (!parent) return 0;
    int at;
    if (insert->insertAfter == TVI_FIRST) {
        at = 0;
    } else if (insert->insertAfter == TVI_LAST || insert->insertAfter == TVI_ROOT) {
        at = parent->childCount();
    } else {
        QTreeWidgetItem* sibling = FindTreeItem(w, insert->insertAfter);
        if (!sibling || (sibling->parent() ? sibling->parent() : tree->invisibleRootItem()) != parent) return 0;
        at = parent->indexOfChild(sibling) + 1;
    }
    TreeItem handle = w.nextTreeHandle++;
    auto* item = new QTreeWidgetItem(QStringList{ToQString(TextParam(reinterpret_cast<intptr_t>(insert->text)))});
    item->setData(0, Qt::UserRole, static_cast<qlonglong>(handle));
    parent->insertChild(at, item);
    item->setExpanded(true);
    parent->setExpanded(true);
    w.treeItems[handle] = item;
    return handle;
}

void ForgetSubtree(QtWindow& w, QTreeWidgetItem* item) {
    w.treeItems.erase(HandleOf(item));
    for (int i = 0; i < item->childCount(); ++i) ForgetSubtree(w, item->child(i));
}

intptr_t TreeDeleteItem(QtWindow& w, TreeItem handle) {
    auto* tree = static_cast<QTreeWidget*>(w.widget.data());
    if (handle == TVI_ROOT || handle == 0) {
        tree->clear();
        w.treeItems.clear();
        return 1;
    }
    QTreeWidgetItem* item = FindTreeItem(w, handle);
    if (!item) return 0;
    ForgetSubtree(w, item);
    delete item;
    return 1;
}

intptr_t TreeNextItem(QtWindow& w, unsigned code, TreeItem handle) {
    auto* tree = static_cast<QTreeWidget*>(w.widget.data());
    if (code == TVGN_CARET) return HandleOf(QtTreeSelection(tree));
    if (code == TVGN_ROOT) return HandleOf(tree->topLevelItem(0));
    QTreeWidgetItem* item = FindTreeItem(w, handle);
    if (!item) return 0;
    if (code == TVGN_PARENT) return HandleOf(item->parent());
    if (code == TVGN_CHILD) return HandleOf(item->child(0));
    if (code == TVGN_NEXT) {
        QTreeWidgetItem* parent = item->parent() ? item->parent() : tree->invisibleRootItem();
        return HandleOf(parent->child(parent->indexOfChild(item) + 1));
    }
    return 0;
}

intptr_t TreeMessage(QtWindow& w, unsigned message, uintptr_t wParam, intptr_t lParam) {
    auto* tree = static_cast<QTreeWidget*>(w.widget.data());
    switch (message) {
    case TVM_INSERTITEMW: return TreeInsertItem(w, reinterpret_cast<const TreeInsert*>(lParam));
    case TVM_DELETEITEM: return TreeDeleteItem(w, lParam);
    case TVM_GETNEXTITEM: return TreeNextItem(w, static_cast<unsigned>(wParam), lParam);
    case TVM_GETCOUNT: return static_cast<intptr_t>(w.treeItems.size());
    case TVM_SELECTITEM: {
        if (wParam != TVGN_CARET) return 0;
        QTreeWidgetItem* item = lParam ? FindTreeItem(w, lParam) : nullptr;
        if (lParam && !item) return 0;
        tree->clearSelection();
        tree->setCurrentItem(item);
        return 1;
    }
    case TVM_GETITEMW: {
        auto* out = reinterpret_cast<TreeItemText*>(lParam);
        QTreeWidgetItem* item = out ? FindTreeItem(w, out->item) : nullptr;
        if (!item) return 0;
        out->text = FromQString(item->text(0));
        return 1;
    }
    default: return 0;
    }
}

intptr_t SliderMessage(QtWindow& w, unsigned message, uintptr_t, intptr_t lParam) {
    auto* slider = static_cast<QSlider*>(w.widget.data());
    switch (message) {
    case TBM_GETPOS: return slider->value();
    case TBM_GETRANGEMIN: return slider->minimum();
    case TBM_GETRANGEMAX: return slider->maximum();
    case TBM_SETPOS:
        slider->setValue(static_cast<int>(std::clamp<intptr_t>(lParam, slider->minimum(), slider->maximum())));
        return 0;
    case TBM_SETRANGE: {
        int low = static_cast<int16_t>(lParam & 0xFFFF);
        int high = static_cast<int16_t>((lParam >> 16) & 0xFFFF);
        slider->setRange(low, std::max(low, high));
        return 0;
    }
    default: return 0;
    }
}

SystemTime TimeOf(const QDateTimeEdit* edit) {
    QDateTime t = edit->dateTime();
    return SystemTime{t.date().year(), t.date().month(), t.date().day(), t.time().hour(), t.time().minute(),
                      t.time().second()};
}

intptr_t DateTimeMessage(QtWindow& w, unsigned message, uintptr_t, intptr_t lParam) {
    auto* edit = static_cast<QDateTimeEdit*>(w.widget.data());
    if (message == DTM_GETSYSTEMTIME) {
        if (auto* out = reinterpret_cast<SystemTime*>(lParam)) *out = TimeOf(edit);
        return 0;
    }
    if (message == DTM_SETSYSTEMTIME) {
        const auto* in = reinterpret_cast<const SystemTime*>(lParam);
        if (!in || !ValidTime(*in)) return 0;
        QtSetTime(w, *in);
        return 1;
    }
    return 0;
}

using MessageHandler = intptr_t (*)(QtWindow&, unsigned, uintptr_t, intptr_t);

struct TypeHandler {
    ControlType type;
    MessageHandler handler;
};

const TypeHandler kHandlers[] = {
    {ControlType::PushButton, ButtonMessage}, {ControlType::CheckBox, ButtonMessage},
    {ControlType::RadioButton, ButtonMessage}, {ControlType::ListBox, ListBoxMessage},
    {ControlType::ComboBox, ComboBoxMessage}, {ControlType::TabControl, TabMessage},
    {ControlType::TreeView, TreeMessage},     {ControlType::Slider, SliderMessage},
    {ControlType::DateTime, DateTimeMessage},
};

// Pre-order: each item with its depth.
void TreeOrder(const QTreeWidgetItem* item, size_t depth, std::vector<std::pair<const QTreeWidgetItem*, size_t>>& out) {
    for (int i = 0; i < item->childCount(); ++i) {
        out.emplace_back(item->child(i), depth);
        TreeOrder(item->child(i), depth + 1, out);
    }
}

CString ListValue(const QtWindow& w) {
    auto* list = static_cast<const QListWidget*>(w.widget.data());
    std::vector<CString> items = ListItems(list);
    if (!IsMulti(w)) {
        return common::ListValue(items, list->selectedItems().isEmpty() ? -1 : list->currentRow());
    }
    std::vector<CString> chosen;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->isSelected()) chosen.push_back(items[static_cast<size_t>(i)]);
    return common::MultiListValue(items, chosen);
}

CString TreeValue(const QtWindow& w) {
    auto* tree = static_cast<const QTreeWidget*>(w.widget.data());
    std::vector<std::pair<const QTreeWidgetItem*, size_t>> order;
    TreeOrder(tree->invisibleRootItem(), 0, order);
    std::vector<std::pair<size_t, CString>> nodes;
    for (const auto& [item, depth] : order) nodes.emplace_back(depth, FromQString(item->text(0)));
    const QTreeWidgetItem* current = QtTreeSelection(tree);
    CString selected = current ? FromQString(current->text(0)) : CString();
    return common::TreeValue(nodes, current ? &selected : nullptr);
}

}  // namespace

// Dates are kept as given, free of the local time zone's gaps.
void QtSetTime(QtWindow& control, const SystemTime& t) {
    auto* edit = static_cast<QDateTimeEdit*>(control.widget.data());
    edit->setDateTime(QDateTime(QDate(t.year, t.month, t.day), QTime(t.hour, t.minute, t.second), Qt::UTC));
}

namespace {

QWidget* MakeEdit(const QtWindow& c, QWidget* owner) {
    if (c.style & ES_MULTILINE) return new QPlainTextEdit(owner);
    auto* edit = new QLineEdit(owner);
    if (c.style & ES_NUMBER)   // the field refuses keys other than digits
        edit->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), edit));
    return edit;
}

QWidget* MakeStatic(const QtWindow& c, const QString& text, QWidget* owner) {
    auto* label = new QLabel(owner);
    if ((c.style & 0x1F) == SS_BITMAP) {
        label->setPixmap(QPixmap(text));   // the text names the image file
        label->setScaledContents(true);
    } else {
        label->setText(text);
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        label->setWordWrap(true);
    }
    return label;
}

QWidget* MakeDateTime(QWidget* owner) {
    auto* edit = new QDateTimeEdit(owner);
    edit->setTimeSpec(Qt::UTC);
    edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    edit->setMinimumDateTime(QDateTime(QDate(100, 1, 1), QTime(0, 0), Qt::UTC));
    edit->setMaximumDateTime(QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59), Qt::UTC));
    // The picker starts at the local time now.
    QDateTime now = QDateTime::currentDateTime();
    edit->setDateTime(QDateTime(now.date(), QTime(now.time().hour(), now.time().minute(), now.time().second()),
                                Qt::UTC));
    return edit;
}

QWidget* MakeButton(const QtWindow& c, const QString& text, QWidget* owner) {
    switch (c.kind) {
    case ControlType::CheckBox: return new QCheckBox(text, owner);
    case ControlType::RadioButton: {
        auto* radio = new QRadioButton(text, owner);
        radio->setAutoExclusive(false);   // groups end at WS_GROUP, handled on the click
        return radio;
    }
    case ControlType::GroupBox: return new QGroupBox(text, owner);
    default: {
        auto* push = new QPushButton(text, owner);
        push->setAutoDefault(false);
        push->setDefault((c.style & BS_TYPEMASK) == BS_DEFPUSHBUTTON);
        return push;
    }
    }
}

}  // namespace

QWidget* MakeControlWidget(QtWindow& c, const CString& text, QWidget* owner) {
    QString qtext = ToQString(text);
    switch (c.kind) {
    case ControlType::PushButton: case ControlType::CheckBox: case ControlType::RadioButton:
    case ControlType::GroupBox: return MakeButton(c, qtext, owner);
    case ControlType::Edit: {
        QWidget* edit = MakeEdit(c, owner);
        c.widget = edit;
        QtSetControlText(c, text);
        return edit;
    }
    case ControlType::Static: return MakeStatic(c, qtext, owner);
    case ControlType::ListBox: {
        auto* list = new QListWidget(owner);
        list->setSelectionMode((c.style & LBS_MULTIPLESEL) ? QAbstractItemView::MultiSelection
                                                           : QAbstractItemView::SingleSelection);
        return list;
    }
    case ControlType::ComboBox: return new QComboBox(owner);
    case ControlType::DateTime: return MakeDateTime(owner);
    case ControlType::TreeView: {
        auto* tree = new QTreeWidget(owner);
        tree->setHeaderHidden(true);
        return tree;
    }
    case ControlType::Slider: {
        auto* slider = new QSlider(Qt::Horizontal, owner);
        slider->setRange(0, 100);   // what a new trackbar starts with
        return slider;
    }
    case ControlType::TabControl: {
        auto* bar = new QTabBar(owner);
        bar->setDrawBase(true);
        bar->setExpanding(false);
        return bar;
    }
    case ControlType::ScrollBar: return new QScrollBar(Qt::Horizontal, owner);
    default: return new QWidget(owner);
    }
}

intptr_t QtControlMessage(QtWindow& control, unsigned message, uintptr_t wParam, intptr_t lParam) {
    if (!control.widget) return 0;
    QSignalBlocker quiet(control.widget.data());
    for (const TypeHandler& h : kHandlers)
        if (h.type == control.kind) {
            intptr_t result = h.handler(control, message, wParam, lParam);
            if (control.kind == ControlType::TreeView)   // the selection the next notification starts from
                control.treeSelected = HandleOf(QtTreeSelection(static_cast<QTreeWidget*>(control.widget.data())));
            return result;
        }
    return 0;
}

// A tree's selection is its selected item: the current item alone (which
// Qt sets when the tree gets the focus) selects nothing.
QTreeWidgetItem* QtTreeSelection(const QTreeWidget* tree) {
    QList<QTreeWidgetItem*> selected = tree->selectedItems();
    return selected.isEmpty() ? nullptr : selected.front();
}

CString QtControlText(const QtWindow& c) {
    QWidget* w = c.widget.data();
    if (!w) return CString();
    switch (c.kind) {
    case ControlType::ComboBox: {
        auto* combo = static_cast<QComboBox*>(w);
        return combo->currentIndex() >= 0 ? FromQString(combo->currentText()) : CString();
    }
    case ControlType::Edit:
        if (auto* line = qobject_cast<QLineEdit*>(w)) return FromQString(line->text());
        return FromQString(static_cast<QPlainTextEdit*>(w)->toPlainText());
    case ControlType::PushButton: case ControlType::CheckBox: case ControlType::RadioButton:
        return FromQString(static_cast<QAbstractButton*>(w)->text());
    case ControlType::GroupBox: return FromQString(static_cast<QGroupBox*>(w)->title());
    default: return FromQString(w->windowTitle());
    }
}

// Sets the text as the window text of the control (a single-line edit field
// reports the change through its signal; the caller decides the rest).
void QtSetControlText(QtWindow& c, const CString& text) {
    QWidget* w = c.widget.data();
    if (!w) return;
    QString q = ToQString(text);
    switch (c.kind) {
    case ControlType::Edit:
        if (auto* line = qobject_cast<QLineEdit*>(w)) {
            line->setText(q);
        } else {
            QSignalBlocker quiet(w);
            static_cast<QPlainTextEdit*>(w)->setPlainText(q);
        }
        break;
    case ControlType::PushButton: case ControlType::CheckBox: case ControlType::RadioButton:
        static_cast<QAbstractButton*>(w)->setText(q);
        break;
    case ControlType::GroupBox: static_cast<QGroupBox*>(w)->setTitle(q); break;
    case ControlType::Static: {
        auto* label = static_cast<QLabel*>(w);
        if ((c.style & 0x1F) == SS_BITMAP) label->setPixmap(QPixmap(q));
        else label->setText(q);
        break;
    }
    default: break;
    }
    w->setWindowTitle(q);   // every control keeps its window text
}

std::vector<CString> QtControlItems(const QtWindow& c) {
    QWidget* w = c.widget.data();
    switch (w ? c.kind : ControlType::Other) {
    case ControlType::ListBox: return ListItems(static_cast<QListWidget*>(w));
    case ControlType::ComboBox: return ComboItems(static_cast<QComboBox*>(w));
    case ControlType::TabControl: {
        auto* bar = static_cast<QTabBar*>(w);
        return Texts(bar->count(), [bar](int i) { return bar->tabText(i); });
    }
    case ControlType::TreeView: {
        std::vector<std::pair<const QTreeWidgetItem*, size_t>> order;
        TreeOrder(static_cast<QTreeWidget*>(w)->invisibleRootItem(), 0, order);
        std::vector<CString> texts;
        for (const auto& entry : order) texts.push_back(FromQString(entry.first->text(0)));
        return texts;
    }
    default: return {};
    }
}

CString QtControlValue(const QtWindow& c) {
    QWidget* w = c.widget.data();
    switch (w ? c.kind : ControlType::Other) {
    case ControlType::CheckBox:
    case ControlType::RadioButton: return common::CheckValue(static_cast<QAbstractButton*>(w)->isChecked());
    case ControlType::ListBox: return ListValue(c);
    case ControlType::ComboBox: {
        auto* combo = static_cast<QComboBox*>(w);
        return common::ListValue(ComboItems(combo), combo->currentIndex());
    }
    case ControlType::DateTime: return common::TimeValue(TimeOf(static_cast<QDateTimeEdit*>(w)));
    case ControlType::TreeView: return TreeValue(c);
    case ControlType::Slider: {
        auto* slider = static_cast<QSlider*>(w);
        return common::SliderValue(slider->value(), slider->minimum(), slider->maximum());
    }
    case ControlType::TabControl:
        return common::TabsValue(QtControlItems(c), static_cast<QTabBar*>(w)->currentIndex());
    default: return CString();
    }
}

}  // namespace ob::ui
