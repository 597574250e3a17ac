// The Qt desktop's process side: making the application object (only once
// a display is known to answer), message boxes, timers and the message loop,
// and the entry points a host finds with dlsym.
#include "ui/qt/QtDesktop.h"

#include "ui/qt/DisplayProbe.h"

#include <orvobasic/qtdesktop.h>

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QPushButton>
#include <QSocketNotifier>
#include <QStyleFactory>
#include <QThread>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace ob::ui {

struct QtDesktop::Timer {
    QTimer* timer = nullptr;
    TimerProc proc = nullptr;
    void* context = nullptr;
    bool running = false;   // its proc is being called (a nested loop does not call it again)
    bool killed = false;    // killed from inside its own tick: removed once the tick returns
};

namespace {

int g_argc = 1;
char g_name[] = "orvobasic";
char* g_argv[] = {g_name, nullptr};

QtMessageHandler g_hostHandler = nullptr;

// Qt complains on stderr when the session has no runtime directory (a root
// shell, a service) and then uses one under /tmp itself: nothing is wrong,
// so that one warning is dropped; every other message goes where it went.
void QuietStartup(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtWarningMsg && text.startsWith(QStringLiteral("QStandardPaths: XDG_RUNTIME_DIR not set"))) return;
    if (g_hostHandler) g_hostHandler(type, context, text);
    else qt_message_output(type, context, text);
}

QApplication* MakeApplication() {
    g_hostHandler = qInstallMessageHandler(QuietStartup);
    auto* app = new QApplication(g_argc, g_argv);
    qInstallMessageHandler(g_hostHandler);
    return app;
}

}  // namespace

QtDesktop::QtDesktop(Desktop* console) : WindowDriver(*this, kFirstHandle), m_console(console) {
    if (!QApplication::instance()) {
        m_ownApp = MakeApplication();
        // One look everywhere, so dialogs look the same on every machine.
        if (QStyle* fusion = QStyleFactory::create(QStringLiteral("Fusion"))) QApplication::setStyle(fusion);
        QApplication::setQuitOnLastWindowClosed(false);
    }
    m_context = std::make_unique<QObject>();
    if (::pipe2(m_quitPipe, O_CLOEXEC | O_NONBLOCK) == 0) {
        m_quitNotifier = new QSocketNotifier(m_quitPipe[0], QSocketNotifier::Read, m_context.get());
        QObject::connect(m_quitNotifier, &QSocketNotifier::activated, m_context.get(), [this] { OnQuitSignal(); });
    }
}

QtDesktop::~QtDesktop() {
    m_timers.clear();
    m_context.reset();
    // Windows closed last are still waiting for the loop to delete them.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (int fd : m_quitPipe)
        if (fd >= 0) ::close(fd);
    delete m_ownApp;
}

bool QtDesktop::OnGuiThread() const {
    QCoreApplication* app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

// ---- message boxes ----

int QtDesktop::MessageBox(const CString& text, unsigned style) {
    bool question = (style & 0xF) == MB_YESNO;
    if (!OnGuiThread()) return question ? AnswerQuestion(text) : m_console ? m_console->MessageBox(text, style) : IDOK;
    // The console keeps a record of every box, as it shows boxes itself.
    if (m_console) m_console->UiOutput(text.empty() || text.back() != u'\n' ? CString(text + u"\n") : text);
    if (question) return Question(text);   // the yes/no question of "ask"
    QMessageBox box((style & MB_ICONSTOP) ? QMessageBox::Critical : QMessageBox::NoIcon, QStringLiteral("OrvoBasic"),
                    ToQString(text));
    struct Choice {
        QMessageBox::StandardButton button;
        int result;
    };
    std::vector<Choice> choices;
    if ((style & 0xF) == MB_OKCANCEL) choices = {{QMessageBox::Ok, IDOK}, {QMessageBox::Cancel, IDCANCEL}};
    else if ((style & 0xF) == MB_YESNO) choices = {{QMessageBox::Yes, IDYES}, {QMessageBox::No, IDNO}};
    else choices = {{QMessageBox::Ok, IDOK}};
    for (const Choice& c : choices) box.addButton(c.button);
    box.setDefaultButton(choices.front().button);
    // An unattended run (actions loaded) takes the default answer, as the
    // headless desktop does: the box shows and its default button is pressed.
    if (m_actions.Loaded())
        QTimer::singleShot(0, &box, [&box] {
            if (QAbstractButton* b = box.defaultButton()) b->click();
        });
    box.exec();
    QAbstractButton* pressed = box.clickedButton();
    for (const Choice& c : choices)
        if (pressed && box.standardButton(pressed) == c.button) return c.result;
    return choices.size() > 1 ? choices.back().result : IDOK;   // closed without a choice: the negative one
}

void QtDesktop::PrintBox(const CString& text) {
    if (m_console) m_console->PrintBox(text);
    else MessageBox(text, MB_OK);
}

int QtDesktop::ErrorBox(const ErrorReport& report) {
    return m_console ? m_console->ErrorBox(report) : MessageBox(report.text, MB_OKCANCEL | MB_ICONSTOP);
}

void QtDesktop::ResourceFallbackBox(const CString& text) {
    if (m_console) m_console->ResourceFallbackBox(text);
    else MessageBox(text, MB_OK);
}

void QtDesktop::UiNote(const CString& line) {
    if (m_console) m_console->UiNote(line);
    else Desktop::UiNote(line);
}

void QtDesktop::UiOutput(const CString& text) {
    if (m_console) m_console->UiOutput(text);
    else Desktop::UiOutput(text);
}

// Actions go to both sides: the widgets play them on the GUI thread, the
// in-memory windows on other threads.
bool QtDesktop::LoadUiActions(const CString& text, const CString& name, CString& error) {
    if (!Desktop::LoadUiActions(text, name, error)) return false;
    LoadActions(text, name, error);   // the same text the base desktop has just taken
    return true;
}

bool QtDesktop::UiActionsFailed() const { return ActionsFailed() || Desktop::UiActionsFailed(); }

// ---- timers and the message loop ----

unsigned QtDesktop::SetTimer(unsigned intervalMs, TimerProc proc, void* context) {
    if (!OnGuiThread()) return Desktop::SetTimer(intervalMs, proc, context);
    if (!proc) return 0;
    unsigned id = m_nextTimer++;
    auto timer = std::make_unique<Timer>();
    timer->timer = new QTimer(m_context.get());
    timer->timer->setTimerType(Qt::PreciseTimer);
    timer->timer->setInterval(static_cast<int>(std::clamp(intervalMs, 10u, 0x7FFFFFFFu)));
    timer->proc = proc;
    timer->context = context;
    QObject::connect(timer->timer, &QTimer::timeout, m_context.get(), [this, id] {
        auto it = m_timers.find(id);
        if (it == m_timers.end() || it->second->running) return;
        Timer* t = it->second.get();
        t->running = true;
        t->proc(t->context, id);
        t->running = false;
        if (t->killed) {
            t->timer->deleteLater();
            m_timers.erase(id);
        }
    });
    timer->timer->start();
    m_timers.emplace(id, std::move(timer));
    return id;
}

bool QtDesktop::KillTimer(unsigned timerId) {
    if (!OnGuiThread()) return Desktop::KillTimer(timerId);
    auto it = m_timers.find(timerId);
    if (it == m_timers.end() || it->second->killed) return false;
    Timer* t = it->second.get();
    t->timer->stop();
    if (t->running) {
        t->killed = true;
    } else {
        t->timer->deleteLater();
        m_timers.erase(it);
    }
    return true;
}

bool QtDesktop::RunMessageLoop(int timeoutMs) {
    if (!OnGuiThread()) return Desktop::RunMessageLoop(timeoutMs);
    if (m_quitPending.exchange(false)) return true;
    if (timeoutMs == 0) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        return m_quitPending.exchange(false);
    }
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, &loop, [&loop] { loop.exit(0); });
    if (timeoutMs > 0) limit.start(timeoutMs);
    m_loops.push_back(&loop);
    int how = loop.exec();
    m_loops.pop_back();
    return how == 1;
}

// Only a flag and a byte down a pipe, so that a signal handler may call it;
// the GUI thread reads the byte and ends the innermost loop.
void QtDesktop::QuitMessageLoop() {
    m_quitPending.store(true);
    if (m_quitPipe[1] >= 0) {
        char byte = 'q';
        ssize_t written = ::write(m_quitPipe[1], &byte, 1);
        (void)written;   // a full pipe already holds a wake-up
    }
}

void QtDesktop::OnQuitSignal() {
    char bytes[64];
    while (::read(m_quitPipe[0], bytes, sizeof bytes) > 0) {
    }
    if (!m_loops.empty() && m_quitPending.exchange(false)) m_loops.back()->exit(1);
}

}  // namespace ob::ui

// ---- the entry points ----

namespace {

void CopyReason(const std::string& why, char* reason, int32_t size) {
    if (!reason || size <= 0) return;
    size_t n = std::min(why.size(), static_cast<size_t>(size) - 1);
    std::memcpy(reason, why.data(), n);
    reason[n] = 0;
}

}  // namespace

extern "C" {

ob::ui::Desktop* OB_CreateQtDesktop(ob::ui::Desktop* console, char* reason, int32_t size) {
    try {
        std::string why;
        if (!QApplication::instance() && !ob::ui::DisplayAvailable(why)) {
            CopyReason(why, reason, size);
            return nullptr;
        }
        return new ob::ui::QtDesktop(console);
    } catch (...) {
        CopyReason("out of memory", reason, size);
        return nullptr;
    }
}

void OB_DestroyQtDesktop(ob::ui::Desktop* desktop) {
    try {
        delete desktop;
    } catch (...) {
    }
}

}  // extern "C"
