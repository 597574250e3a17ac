// The Qt 6 desktop: dialogs, property sheets and message boxes as real
// windows, timers as Qt timers, the message loop as Qt's event loop.
//
// Widgets live on the thread that owns the QApplication (the GUI thread).
// Scripts running on other threads get the in-memory windows of the base
// Desktop instead; handles say which side a window belongs to (the Qt
// side's handles start at kFirstHandle).
//
// Action scripts drive the widgets as a person would: clicks and key
// presses are sent to the widgets as input events, and the widgets' signals
// bring the notifications, so a dialog behaves the same whether a person or
// an action file uses it.
#pragma once

#include "ui/ActionScript.h"
#include "ui/qt/QtWindow.h"

#include <orvobasic/desktop.h>

#include <QObject>

#include <atomic>
#include <memory>
#include <unordered_map>

class QApplication;
class QSocketNotifier;
class QTimer;

namespace ob::ui {

class QtDesktop : public Desktop, private UiDriver {
public:
    static constexpr WindowHandle kFirstHandle = 0x40000000;

    // `console` (may be null) receives printed text, error reports, action
    // notes, snapshots and a record of each message box's text; without it
    // they are shown in message boxes and on the standard streams as the
    // base desktop does.
    explicit QtDesktop(Desktop* console);
    ~QtDesktop() override;

    int MessageBox(const CString& text, unsigned style) override;
    void PrintBox(const CString& text) override;
    int ErrorBox(const ErrorReport& report) override;
    void ResourceFallbackBox(const CString& text) override;

    unsigned SetTimer(unsigned intervalMs, TimerProc proc, void* context) override;
    bool KillTimer(unsigned timerId) override;
    bool RunMessageLoop(int timeoutMs) override;
    void QuitMessageLoop() override;

    int DoModalDialog(const uint8_t* templ, size_t length, DialogSink& sink) override;
    int DoModalPropertySheet(const CString& caption, const std::vector<SheetPage>& pages,
                             DialogSink& sheetSink) override;
    bool EndDialog(WindowHandle dialog, int result) override;
    WindowHandle GetDlgItem(WindowHandle dialog, int id) override;
    CString GetClassName(WindowHandle window) override;
    intptr_t SendMessage(WindowHandle window, unsigned message, uintptr_t wParam, intptr_t lParam) override;
    CString GetWindowText(WindowHandle window) override;
    void SetWindowText(WindowHandle window, const CString& text) override;
    void EnableWindow(WindowHandle window, bool enable) override;
    void ShowWindow(WindowHandle window, int command) override;
    void SetFocus(WindowHandle window) override;
    void SetFont(WindowHandle window, const FontDescription& font) override;

    int TrackPopupMenu(int x, int y, const std::vector<CString>& items) override;
    CString FileDialog(const FileDialogRequest& request) override;

    bool LoadUiActions(const CString& text, const CString& name, CString& error) override;
    bool UiActionsFailed() const override;
    void UiNote(const CString& line) override;
    void UiOutput(const CString& text) override;

    // The widget of a window of this desktop, or null (for tests and hosts
    // that embed or capture dialogs).
    QWidget* WidgetOf(WindowHandle window);

    QtWindow* FindWindow(WindowHandle handle) { return Find(handle); }
    // Called by the dialog widgets: Enter, Escape and the close box.
    void EndByUser(QtWindow& window, int id);
    // A sheet's tab was chosen.
    void ShowPage(QtWindow& sheet, int index);

private:
    struct Timer;

    // The user's actions (UiDriver), applied to the innermost modal window.
    CString ExpectDialog(const CString& title) override;
    CString Type(int id, const CString& text) override;
    CString Click(int id) override;
    CString SelectText(int id, const CString& item) override;
    CString SelectIndex(int id, int index) override;
    CString Check(int id, bool checked) override;
    CString Tab(int id, int index) override;
    CString Slide(int id, int position) override;
    CString Date(int id, const SystemTime& time) override;
    CString Page(int index) override;
    CString Wait(int milliseconds) override;
    CString Snapshot() override;
    CString Ok() override;
    CString Cancel() override;
    CString Close() override;
    CString Answer(int button) override;
    CString MenuIndex(int number) override;
    CString MenuText(const CString& item) override;
    CString File(const CString& path) override;
    CString FileCancel() override;

    bool OnGuiThread() const;
    int Question(const CString& text);
    QtWindow* NewPrompt(PromptKind kind, const CString& text, QWidget* widget);
    void RunPrompt(QtWindow& prompt);
    void EndPrompt(QtWindow& prompt);
    QtWindow* PromptTarget(PromptKind kind, CString& why);
    CString PromptOk(QtWindow& prompt);
    CString DescribePrompt(const QtWindow& prompt) const;
    bool Mine(WindowHandle handle) const { return handle >= kFirstHandle; }
    QtWindow* Find(WindowHandle handle);
    QtWindow* NewWindow(WindowType type, QtWindow* parent);
    QtWindow* CreateFromTemplate(const uint8_t* templ, size_t length, WindowType type, QtWindow* parent,
                                 DialogSink* sink, QWidget* host);
    void AddControl(QtWindow& owner, const DialogItem& item, QFont font);
    void Connect(QtWindow& control);
    void InitDialog(QtWindow& window);
    void Destroy(QtWindow* window);
    void RunModal(QtWindow& window);
    void WaitForPerson(QtWindow& window);
    QtWindow* Innermost() { return m_modal.empty() ? nullptr : m_modal.back(); }
    QtWindow* UserTarget(int id, CString& why);
    QtWindow* TypedTarget(int id, ControlType type, const char16_t* what, CString& why);
    void NotifyCommand(QtWindow& control, unsigned code);
    void OnButtonClicked(QtWindow& control);
    void ClickWidget(QWidget* widget, QPoint at);
    CString SelectItem(QtWindow& control, int index);
    CString Describe(const QtWindow& window) const;
    void OnQuitSignal();

    Desktop* m_console;
    QApplication* m_ownApp = nullptr;                 // made here, deleted here
    std::unique_ptr<QObject> m_context;               // owns the timers and the quit notifier
    std::unordered_map<unsigned, std::unique_ptr<Timer>> m_timers;
    unsigned m_nextTimer = 0x40000001;
    int m_quitPipe[2] = {-1, -1};
    QSocketNotifier* m_quitNotifier = nullptr;
    std::atomic<bool> m_quitPending{false};
    std::vector<QEventLoop*> m_loops;                 // the running message loops, innermost last

    std::unordered_map<WindowHandle, std::unique_ptr<QtWindow>> m_windows;
    std::vector<QtWindow*> m_modal;
    WindowHandle m_nextHandle = kFirstHandle;
    ActionScript m_actions;
    bool m_failed = false;
};

}  // namespace ob::ui
