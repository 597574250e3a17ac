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

#include "ui/WindowDriver.h"
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

class QtDesktop : public Desktop, private WindowDriver<QtWindow> {
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
    void ShowPage(QtWindow& sheet, int index) override;

private:
    struct Timer;

    // The verbs' effects on the widgets (WindowDriver): input events as a
    // person's, the widgets' signals bringing the notifications.
    void EnterText(QtWindow& edit, const CString& typed) override;
    void ClickControl(QtWindow& button) override;
    bool IsChecked(const QtWindow& button) const override;
    CString SelectItem(QtWindow& control, int index) override;
    void SetSliderPosition(QtWindow& slider, int position) override;
    void SetDate(QtWindow& picker, const SystemTime& time) override { QtSetTime(picker, time); }
    void ChoosePage(QtWindow& sheet, int index) override;
    void PressEnter(QtWindow& window) override;
    void PressEscape(QtWindow& window) override;
    void CloseBox(QtWindow& window) override { window.widget->close(); }
    void EndPrompt(QtWindow& prompt) override;
    void TakeAnswer(QtWindow& question, int button) override;
    void ChooseMenuItem(QtWindow& menu, int number) override;
    const std::vector<CString>& MenuItems(const QtWindow& menu) const override { return menu.items; }
    void FinishFileDialog(QtWindow& dialog, bool accepted) override;

    bool OnGuiThread() const;
    int Question(const CString& text);
    QtWindow* NewPrompt(PromptKind kind, const CString& text, QWidget* widget);
    void RunPrompt(QtWindow& prompt);
    bool Mine(WindowHandle handle) const { return handle >= kFirstHandle; }
    QtWindow* CreateFromTemplate(const uint8_t* templ, size_t length, WindowType type, QtWindow* parent,
                                 DialogSink* sink, QWidget* host);
    void AddControl(QtWindow& owner, const DialogItem& item, QFont font);
    void Connect(QtWindow& control);
    void InitDialog(QtWindow& window) override;
    void Release(QtWindow& window) override;
    void RunModal(QtWindow& window) override;
    void WaitForPerson(QtWindow& window);
    void NotifyCommand(QtWindow& control, unsigned code) { NotifyOwner(*this, control, code); }
    void OnButtonClicked(QtWindow& control);
    void ClickWidget(QWidget* widget, QPoint at);
    static void SendKey(QWidget* widget, int key, const QString& text = QString());
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
};

}  // namespace ob::ui
