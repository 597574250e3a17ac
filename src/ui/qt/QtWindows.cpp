// The Qt desktop's windows: dialogs and pages made from templates with
// their controls placed in dialog units, property sheets, the modal loops,
// and the window functions the dialog logic calls.
#include "ui/qt/QtDesktop.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialog>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <cmath>

namespace ob::ui {

namespace {

constexpr int kAbandonCheckMs = 50;

// A dialog or sheet window: Enter, Escape and the close box become the
// commands the dialog manager sends for them.
class DialogWidget : public QDialog {
public:
    DialogWidget(QtDesktop& desktop, WindowHandle handle) : m_desktop(desktop), m_handle(handle) {}

protected:
    void keyPressEvent(QKeyEvent* event) override {
        int key = event->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) End(IDC_OK);
        else if (key == Qt::Key_Escape) End(IDC_CANCEL);
        else QDialog::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        End(IDC_CANCEL);
    }

private:
    void End(int id) {
        if (QtWindow* w = m_desktop.FindWindow(m_handle)) m_desktop.EndByUser(*w, id);
    }
    QtDesktop& m_desktop;
    WindowHandle m_handle;
};

// The font a template asks for, else the application's.
QFont DialogFont(const DialogDescription& d) {
    QFont font = QApplication::font();
    if (d.hasFont && !d.faceName.empty()) {
        font.setFamily(ToQString(d.faceName));
        if (d.pointSize > 0) font.setPointSize(d.pointSize);
    }
    return font;
}

// Dialog units: a horizontal unit is a quarter of the font's average
// character width (over A-Z and a-z), a vertical one an eighth of its height.
void SetUnits(QtWindow& w, const QFont& font) {
    QFontMetrics metrics(font);
    int total = metrics.horizontalAdvance(QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
    int average = (total / 26 + 1) / 2;
    w.unitX = std::max(average, 1) / 4.0;
    w.unitY = std::max(metrics.height(), 1) / 8.0;
}

QRect Pixels(const QtWindow& w, int x, int y, int cx, int cy) {
    auto px = [](double v) { return static_cast<int>(std::lround(v)); };
    return QRect(px(x * w.unitX), px(y * w.unitY), std::max(px(cx * w.unitX), 0), std::max(px(cy * w.unitY), 0));
}

QFont ToQFont(const FontDescription& f, QFont font) {
    if (!f.face.empty()) font.setFamily(ToQString(f.face));
    if (f.height != 0) font.setPixelSize(std::abs(f.height));
    font.setWeight(static_cast<QFont::Weight>(std::clamp(f.weight, 100, 900)));
    font.setItalic(f.italic);
    font.setUnderline(f.underline);
    return font;
}

}  // namespace

QWidget* QtDesktop::WidgetOf(WindowHandle window) {
    QtWindow* w = Find(window);
    return w ? w->widget.data() : nullptr;
}

void QtDesktop::AddControl(QtWindow& owner, const DialogItem& item, QFont font) {
    QtWindow* c = NewWindow(WindowType::Control, &owner);
    c->className = item.className;
    c->style = item.style;
    c->id = item.id;
    c->kind = ControlTypeOf(item.className, item.style);
    QWidget* w = MakeControlWidget(*c, item.text, owner.widget.data());
    c->widget = w;
    w->setWindowTitle(ToQString(item.text));
    w->setFont(font);
    w->setGeometry(Pixels(owner, item.x, item.y, item.cx, item.cy));
    w->setHidden((item.style & WS_VISIBLE) == 0);
    w->setEnabled((item.style & WS_DISABLED) == 0);
    Connect(*c);
}

// Makes a dialog (host null: a window of its own) or a page (inside host)
// with its controls. Null when the template is refused: unreadable bytes,
// or a control of a class no desktop knows.
QtWindow* QtDesktop::CreateFromTemplate(const uint8_t* templ, size_t length, WindowType type, QtWindow* parent,
                                        DialogSink* sink, QWidget* host) {
    DialogDescription d;
    if (!ReadDialogTemplate(templ, length, d)) return nullptr;
    for (const DialogItem& item : d.items)
        if (ControlTypeOf(item.className, item.style) == ControlType::Other) return nullptr;
    QtWindow* w = NewWindow(type, parent);
    w->sink = sink;
    QFont font = DialogFont(d);
    SetUnits(*w, font);
    QWidget* widget = host ? new QWidget(host) : new DialogWidget(*this, w->handle);
    w->widget = widget;
    widget->setWindowTitle(ToQString(d.caption));
    widget->setFont(font);
    QRect area = Pixels(*w, d.x, d.y, d.cx, d.cy);
    if (host) widget->setGeometry(0, 0, area.width(), area.height());
    else widget->resize(area.size());
    w->children.reserve(d.items.size());
    for (const DialogItem& item : d.items) AddControl(*w, item, font);
    return w;
}

// WM_INITDIALOG: when the sink asks for it, the first visible, enabled
// control with WS_TABSTOP gets the focus.
void QtDesktop::InitDialog(QtWindow& window) {
    window.sink->OnCreate(window.handle);
    if (!window.sink->OnInitDialog()) return;
    for (QtWindow* c : window.children)
        if ((c->style & WS_TABSTOP) && !c->widget->isHidden() && c->widget->isEnabled()) {
            window.focus = c;
            c->widget->setFocus();
            return;
        }
}

// The widgets go quietly (no signal from a dying control reaches a sink);
// a page's widget goes with its sheet's.
void QtDesktop::Release(QtWindow& window) {
    for (QtWindow* child : window.children)
        if (child->widget) child->widget->blockSignals(true);
    if (QWidget* widget = window.widget.data()) {
        if (window.tabs) window.tabs->blockSignals(true);
        if (!window.parent) {
            widget->hide();
            widget->deleteLater();
        }
    }
}

// With actions loaded, they play the user until the window is ended; with
// none left, the window is cancelled as if Escape were pressed, and a note
// says so. Without actions a person uses the window.
void QtDesktop::RunModal(QtWindow& window) {
    m_modal.push_back(&window);
    if (window.prompt != PromptKind::Menu) {   // a menu pops up by itself
        window.widget->setWindowModality(Qt::ApplicationModal);
        window.widget->show();
    }
    if (m_actions.Loaded()) PlayModal(window);
    else WaitForPerson(window);
    m_modal.pop_back();
}

void QtDesktop::WaitForPerson(QtWindow& window) {
    QEventLoop loop;
    QTimer watch;   // a script stopped from elsewhere ends its window
    QObject::connect(&watch, &QTimer::timeout, &loop, [this, &window, &loop] {
        if (!Abandoned(window)) return;
        window.ended = true;
        window.result = IDC_CANCEL;
        loop.quit();
    });
    watch.start(kAbandonCheckMs);
    window.loop = &loop;
    while (!window.ended) loop.exec();
    window.loop = nullptr;
}

int QtDesktop::DoModalDialog(const uint8_t* templ, size_t length, DialogSink& sink) {
    if (!OnGuiThread()) return Desktop::DoModalDialog(templ, length, sink);
    QtWindow* w = CreateFromTemplate(templ, length, WindowType::Dialog, nullptr, &sink, nullptr);
    return w ? RunDialog(*w) : -1;
}

void QtDesktop::ShowPage(QtWindow& sheet, int index) {
    QtWindow*& page = sheet.pages[static_cast<size_t>(index)];
    if (!page) {
        const SheetPage& source = sheet.pageSources[static_cast<size_t>(index)];
        page = CreateFromTemplate(source.templ, source.length, WindowType::Page, &sheet, source.sink,
                                  sheet.tabs->widget(index));
        if (!page) {
            QSignalBlocker quiet(sheet.tabs);
            sheet.tabs->setCurrentIndex(std::max(sheet.activePage, 0));
            return;
        }
        page->widget->show();
        InitDialog(*page);
    }
    QSignalBlocker quiet(sheet.tabs);
    sheet.tabs->setCurrentIndex(index);
    sheet.activePage = index;
}

int QtDesktop::DoModalPropertySheet(const CString& caption, const std::vector<SheetPage>& pages,
                                    DialogSink& sheetSink) {
    if (!OnGuiThread()) return Desktop::DoModalPropertySheet(caption, pages, sheetSink);
    if (pages.empty()) return -1;   // a sheet needs a page
    QtWindow* s = NewWindow(WindowType::Sheet, nullptr);
    s->sink = &sheetSink;
    s->pageSources = pages;
    s->pages.assign(pages.size(), nullptr);
    auto* dialog = new DialogWidget(*this, s->handle);
    s->widget = dialog;
    dialog->setWindowTitle(ToQString(caption));
    SetUnits(*s, QApplication::font());
    auto* layout = new QVBoxLayout(dialog);
    s->tabs = new QTabWidget(dialog);
    QSize largest(0, 0);
    for (const SheetPage& page : pages) {
        DialogDescription d;
        bool read = page.templ && ReadDialogTemplate(page.templ, page.length, d);
        auto* holder = new QWidget;
        QtWindow probe;
        SetUnits(probe, DialogFont(d));
        largest = largest.expandedTo(Pixels(probe, 0, 0, d.cx, d.cy).size());
        s->tabs->addTab(holder, read ? ToQString(d.caption) : QString());
    }
    s->tabs->setMinimumSize(largest + QSize(8, 32));
    layout->addWidget(s->tabs);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    layout->addLayout(row);
    for (const DialogItem& button : SheetButtons(50, 14)) {
        AddControl(*s, button, QApplication::font());
        row->addWidget(s->children.back()->widget);
    }
    QObject::connect(s->tabs, &QTabWidget::currentChanged, dialog, [this, handle = s->handle](int index) {
        if (QtWindow* sheet = Find(handle); sheet && index >= 0) ShowPage(*sheet, index);
    });
    return RunSheet(*s);
}

bool QtDesktop::EndDialog(WindowHandle dialog, int result) {
    if (!Mine(dialog)) return Desktop::EndDialog(dialog, result);
    QtWindow* w = Find(dialog);
    if (!w || w->type == WindowType::Control) return false;
    if (w->type == WindowType::Page) w = w->parent;
    w->ended = true;
    w->result = result;
    if (w->loop) w->loop->quit();
    return true;
}

WindowHandle QtDesktop::GetDlgItem(WindowHandle dialog, int id) {
    if (!Mine(dialog)) return Desktop::GetDlgItem(dialog, id);
    QtWindow* w = Find(dialog);
    QtWindow* c = w ? FindDlgItem(*w, id) : nullptr;
    return c ? c->handle : 0;
}

CString QtDesktop::GetClassName(WindowHandle window) {
    if (!Mine(window)) return Desktop::GetClassName(window);
    QtWindow* w = Find(window);
    if (!w) return CString();
    return w->type == WindowType::Control ? w->className : CString(u"#32770");
}

intptr_t QtDesktop::SendMessage(WindowHandle window, unsigned message, uintptr_t wParam, intptr_t lParam) {
    if (!Mine(window)) return Desktop::SendMessage(window, message, wParam, lParam);
    QtWindow* w = Find(window);
    if (!w || w->type != WindowType::Control) return 0;
    return QtControlMessage(*w, message, wParam, lParam);
}

CString QtDesktop::GetWindowText(WindowHandle window) {
    if (!Mine(window)) return Desktop::GetWindowText(window);
    QtWindow* w = Find(window);
    if (!w) return CString();
    return w->type == WindowType::Control ? QtControlText(*w) : FromQString(w->widget->windowTitle());
}

// A single-line edit field reports the change (EN_CHANGE) as the real one
// does; not while it is reporting one already, so a handler that sets its
// own field does not recurse without end.
void QtDesktop::SetWindowText(WindowHandle window, const CString& text) {
    if (!Mine(window)) return Desktop::SetWindowText(window, text);
    QtWindow* w = Find(window);
    if (!w || w->kind == ControlType::ComboBox) return;
    if (w->type != WindowType::Control) {
        w->widget->setWindowTitle(ToQString(text));
        return;
    }
    {
        QSignalBlocker quiet(w->widget.data());
        QtSetControlText(*w, text);
    }
    if (w->kind == ControlType::Edit && !(w->style & ES_MULTILINE)) NotifyCommand(*w, EN_CHANGE);
}

void QtDesktop::EnableWindow(WindowHandle window, bool enable) {
    if (!Mine(window)) return Desktop::EnableWindow(window, enable);
    if (QtWindow* w = Find(window)) w->widget->setEnabled(enable);
}

void QtDesktop::ShowWindow(WindowHandle window, int command) {
    if (!Mine(window)) return Desktop::ShowWindow(window, command);
    if (QtWindow* w = Find(window)) w->widget->setHidden(command == SW_HIDE);
}

void QtDesktop::SetFocus(WindowHandle window) {
    if (!Mine(window)) return Desktop::SetFocus(window);
    QtWindow* w = Find(window);
    if (w && w->type == WindowType::Control && w->parent) {
        w->parent->focus = w;
        w->widget->setFocus();
    }
}

void QtDesktop::SetFont(WindowHandle window, const FontDescription& font) {
    if (!Mine(window)) return Desktop::SetFont(window, font);
    if (QtWindow* w = Find(window)) {
        w->font = font;
        w->hasFont = true;
        w->widget->setFont(ToQFont(font, w->widget->font()));
    }
}

}  // namespace ob::ui
