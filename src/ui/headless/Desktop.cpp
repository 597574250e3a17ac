// The Desktop's defaults shared by every desktop that has no window system
// of its own (headless, console): timers and the message loop, and the
// in-memory dialogs that action scripts drive.
#include <orvobasic/desktop.h>

#include "ui/headless/MessageLoop.h"
#include "ui/headless/WindowSystem.h"

#include <cstdio>

namespace ob::ui {

Desktop::Desktop() : m_loop(std::make_unique<MessageLoop>()), m_windows(std::make_unique<WindowSystem>(*this)) {}

Desktop::~Desktop() = default;

DialogSink::~DialogSink() = default;

unsigned Desktop::SetTimer(unsigned intervalMs, TimerProc proc, void* context) {
    return m_loop->SetTimer(intervalMs, proc, context);
}

bool Desktop::KillTimer(unsigned timerId) { return m_loop->KillTimer(timerId); }

bool Desktop::RunMessageLoop(int timeoutMs) { return m_loop->Run(timeoutMs); }

void Desktop::QuitMessageLoop() { m_loop->Quit(); }

int Desktop::DoModalDialog(const uint8_t* templ, size_t length, DialogSink& sink) {
    return m_windows->DoModalDialog(templ, length, sink);
}

int Desktop::DoModalPropertySheet(const CString& caption, const std::vector<SheetPage>& pages,
                                  DialogSink& sheetSink) {
    return m_windows->DoModalPropertySheet(caption, pages, sheetSink);
}

bool Desktop::EndDialog(WindowHandle dialog, int result) { return m_windows->EndDialog(dialog, result); }

WindowHandle Desktop::GetDlgItem(WindowHandle dialog, int id) { return m_windows->GetDlgItem(dialog, id); }

CString Desktop::GetClassName(WindowHandle window) { return m_windows->GetClassName(window); }

intptr_t Desktop::SendMessage(WindowHandle window, unsigned message, uintptr_t wParam, intptr_t lParam) {
    return m_windows->SendMessage(window, message, wParam, lParam);
}

CString Desktop::GetWindowText(WindowHandle window) { return m_windows->GetWindowText(window); }

void Desktop::SetWindowText(WindowHandle window, const CString& text) { m_windows->SetWindowText(window, text); }

void Desktop::EnableWindow(WindowHandle window, bool enable) { m_windows->EnableWindow(window, enable); }

void Desktop::ShowWindow(WindowHandle window, int command) { m_windows->ShowWindow(window, command); }

void Desktop::SetFocus(WindowHandle window) { m_windows->SetFocus(window); }

void Desktop::SetFont(WindowHandle window, const FontDescription& font) { m_windows->SetFont(window, font); }

int Desktop::TrackPopupMenu(int x, int y, const std::vector<CString>& items) {
    return m_windows->PopupMenu(x, y, items);
}

CString Desktop::FileDialog(const FileDialogRequest& request) { return m_windows->FileDialog(request); }

int Desktop::AnswerQuestion(const CString& text) { return m_windows->Question(text); }

bool Desktop::LoadUiActions(const CString& text, const CString& name, CString& error) {
    return m_windows->LoadActions(text, name, error);
}

bool Desktop::UiActionsFailed() const { return m_windows->ActionsFailed(); }

void Desktop::UiNote(const CString& line) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n", line.ToUtf8().c_str());
}

void Desktop::UiOutput(const CString& text) {
    std::fputs(text.ToUtf8().c_str(), stdout);
    std::fflush(stdout);
}

}  // namespace ob::ui
