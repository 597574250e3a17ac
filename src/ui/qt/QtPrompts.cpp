// The Qt prompts: the Yes/No question (a message box), the pop-up menu
// (QMenu) and the file dialogs (Qt's own file dialog, the same on every
// machine). Each runs as a modal window of the desktop, so action scripts
// answer them ("answer", "menu", "file") and "expect-dialog", "wait-ms",
// "snapshot" and "cancel" work on them as on dialogs.
#include "ui/qt/QtDesktop.h"

#include <QAbstractButton>
#include <QAction>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace ob::ui {

namespace {

// "description|pattern|description|pattern..." as Qt's name filters
// ("description (pattern pattern)"); patterns are separated by ';'.
QStringList NameFilters(const CString& filter) {
    QStringList parts = ToQString(filter).split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        filters << parts[i] + QStringLiteral(" (") + parts[i + 1].split(u';', Qt::SkipEmptyParts).join(u' ') +
                       QStringLiteral(")");
    return filters;
}

}  // namespace

QtWindow* QtDesktop::NewPrompt(PromptKind kind, const CString& text, QWidget* widget) {
    QtWindow* w = NewWindow(WindowType::Prompt, nullptr);
    w->prompt = kind;
    w->text = text;
    w->widget = widget;
    return w;
}

void QtDesktop::EndPrompt(QtWindow& prompt) {
    prompt.ended = true;
    if (prompt.loop) prompt.loop->quit();
}

// Runs the prompt's modal loop, then removes it quietly.
void QtDesktop::RunPrompt(QtWindow& prompt) {
    RunModal(prompt);
    if (QWidget* widget = prompt.widget.data()) {
        widget->blockSignals(true);
        widget->hide();
        widget->deleteLater();
    }
}

int QtDesktop::Question(const CString& text) {
    auto* box = new QMessageBox(QMessageBox::Question, QStringLiteral("OrvoBasic"), ToQString(text),
                                QMessageBox::Yes | QMessageBox::No);
    QtWindow* w = NewPrompt(PromptKind::Question, text, box);
    QObject::connect(box, &QMessageBox::buttonClicked, box, [this, box, handle = w->handle](QAbstractButton* b) {
        QtWindow* q = Find(handle);
        if (!q) return;
        q->result = box->standardButton(b) == QMessageBox::Yes ? IDYES : IDNO;
        EndPrompt(*q);
    });
    RunPrompt(*w);
    int result = w->result;
    m_byHandle.erase(w->handle);
    return result;
}

int QtDesktop::TrackPopupMenu(int x, int y, const std::vector<CString>& items) {
    if (!OnGuiThread()) return Desktop::TrackPopupMenu(x, y, items);
    auto* menu = new QMenu;
    QtWindow* w = NewPrompt(PromptKind::Menu, u"menu", menu);
    w->x = x;
    w->y = y;
    w->items = items;
    for (size_t i = 0; i < items.size(); ++i) menu->addAction(ToQString(items[i]))->setData(static_cast<int>(i) + 1);
    QObject::connect(menu, &QMenu::triggered, menu, [this, handle = w->handle](QAction* action) {
        if (QtWindow* m = Find(handle)) {
            m->chosenItem = action->data().toInt();
            EndPrompt(*m);
        }
    });
    // A menu hidden without a choice (Escape, a click elsewhere) is
    // dismissed; the choice, if any, arrives right after the hiding.
    QObject::connect(menu, &QMenu::aboutToHide, menu, [this, handle = w->handle] {
        QTimer::singleShot(0, m_context.get(), [this, handle] {
            if (QtWindow* m = Find(handle); m && !m->ended) EndPrompt(*m);
        });
    });
    menu->popup(QPoint(x, y));
    RunPrompt(*w);
    int chosen = w->chosenItem;
    m_byHandle.erase(w->handle);
    return chosen;
}

CString QtDesktop::FileDialog(const FileDialogRequest& request) {
    if (!OnGuiThread()) return Desktop::FileDialog(request);
    const char16_t* title = request.save ? u"Save As" : u"Open";
    auto* dialog = new QFileDialog(nullptr, ToQString(title), ToQString(request.initialFolder));
    dialog->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontConfirmOverwrite);
    dialog->setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog->setFileMode(request.save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    QString extension = ToQString(request.defaultExtension);
    if (extension.startsWith(u'.')) extension.remove(0, 1);
    dialog->setDefaultSuffix(extension);
    QStringList filters = NameFilters(request.filter);
    if (!filters.isEmpty()) dialog->setNameFilters(filters);
    if (!request.fileName.IsEmpty()) dialog->selectFile(ToQString(request.fileName));
    QtWindow* w = NewPrompt(PromptKind::File, title, dialog);
    w->file = request;
    QObject::connect(dialog, &QDialog::finished, dialog, [this, dialog, handle = w->handle](int how) {
        QtWindow* f = Find(handle);
        if (!f || f->ended) return;
        if (how == QDialog::Accepted && !dialog->selectedFiles().isEmpty())
            f->chosen = FromQString(dialog->selectedFiles().front());
        EndPrompt(*f);
    });
    RunPrompt(*w);
    CString chosen = w->chosen;
    m_byHandle.erase(w->handle);
    return chosen;
}

// Yes and No are clicked on the box; cancel closes it unanswered.
void QtDesktop::TakeAnswer(QtWindow& w, int button) {
    auto* box = static_cast<QMessageBox*>(w.widget.data());
    QAbstractButton* target = button == IDYES ? box->button(QMessageBox::Yes)
                              : button == IDNO ? box->button(QMessageBox::No)
                                               : nullptr;
    if (target) ClickWidget(target, target->rect().center());
    if (!w.ended) {   // cancel, or a click that did not land
        w.result = target ? button : IDCANCEL;
        EndPrompt(w);
    }
}

// An item is made the menu's active one and Enter chooses it; 0 is Escape.
void QtDesktop::ChooseMenuItem(QtWindow& w, int number) {
    auto* menu = static_cast<QMenu*>(w.widget.data());
    if (number > 0) {
        QAction* action = menu->actions().value(number - 1);
        menu->setActiveAction(action);
        SendKey(menu, Qt::Key_Return);
        if (!w.ended && action) action->trigger();   // a menu not on screen yet takes the choice directly
    }
    if (!w.ended) {
        w.chosenItem = number;
        EndPrompt(w);
    }
}

// The chosen path is given to the dialog, which accepts it; or the dialog
// is rejected.
void QtDesktop::FinishFileDialog(QtWindow& w, bool accepted) {
    auto* dialog = static_cast<QFileDialog*>(w.widget.data());
    if (accepted) {
        dialog->selectFile(ToQString(w.chosen));
        static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
    } else {
        dialog->reject();
    }
    EndPrompt(w);
}

}  // namespace ob::ui
