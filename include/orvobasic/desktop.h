// The Desktop: every user-facing service of the interpreter goes through one
// process-wide object implementing this interface (message boxes, timers and
// the message loop that delivers them; dialogs as they arrive). The library's
// default is the headless desktop, which answers every box with OK and keeps
// no window; the command-line runner installs its console desktop.
//
// Scripts on several threads share the desktop: its members are called from
// whichever thread runs a script, possibly at the same time, so a desktop
// must be thread-safe (the built-in ones are).
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/dialogs.h>
#include <orvobasic/export.h>
#include <orvobasic/hostcontrol.h>

#include <memory>
#include <vector>

namespace ob::ui {

class MessageLoop;
class WindowSystem;

// A timer's tick: called from the message loop on the loop's thread with the
// context and the id that SetTimer gave.
using TimerProc = void (*)(void* context, unsigned timerId);

// Button results of message boxes.
enum { IDOK = 1, IDCANCEL = 2, IDABORT = 3, IDRETRY = 4, IDIGNORE = 5, IDYES = 6, IDNO = 7 };
// Styles the interpreter uses.
enum : unsigned { MB_OK = 0x0, MB_OKCANCEL = 0x1, MB_YESNO = 0x4, MB_ICONSTOP = 0x10 };

// Everything known about one reported error, for desktops that show more
// than the plain box text.
struct ErrorReport {
    int id = 0;              // message number, 0 when the text could not be loaded
    CString message;         // the message text alone
    CString text;            // what the box shows: message, "\n", source line
    CString script;          // the script path as the host gave it
    int line = 0;            // 1-based line where the failing statement began
    CString sourceLine;      // that line's text, without its line end
    // The full record (column, the chain of user-function calls), valid
    // during the call; null when the reporter has none.
    const ob::ErrorRecord* record = nullptr;
};

// What a file dialog is asked to show.
struct FileDialogRequest {
    bool save = false;            // the save dialog (else the open dialog)
    CString fileName;             // the initial file name
    CString defaultExtension;     // added to a chosen name that has none
    CString filter;               // "description|pattern|description|pattern..."
    CString initialFolder;        // empty: the current folder
};

class OB_API Desktop {
public:
    Desktop();
    virtual ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    // A modal message box; returns one of the ID* results. A desktop
    // without a window system answers MB_YESNO boxes with AnswerQuestion.
    virtual int MessageBox(const CString& text, unsigned style) = 0;
    // The text of a "print" statement (a box of the default style).
    virtual void PrintBox(const CString& text) { MessageBox(text, MB_OK); }
    // A reported error (OK/Cancel, stop icon): IDOK goes on, IDCANCEL aborts.
    virtual int ErrorBox(const ErrorReport& report) {
        return MessageBox(report.text, MB_OKCANCEL | MB_ICONSTOP);
    }
    // Shown when a message number has no text.
    virtual void ResourceFallbackBox(const CString& text) { MessageBox(text, MB_OK); }

    // Timers and the message loop. The defaults run a loop of their own on
    // the monotonic clock; a desktop with a window system overrides all four
    // with its own timers and event loop.

    // Starts a repeating timer: proc(context, id) runs from the message loop
    // every intervalMs (at least 10). The timer belongs to the calling
    // thread: only that thread's loop delivers it. Returns the timer's id (never 0), or 0
    // when no timer could be made.
    virtual unsigned SetTimer(unsigned intervalMs, TimerProc proc, void* context);
    // Stops a timer: its proc is not called again, even when this is called
    // from inside its own tick. False when the id is unknown.
    virtual bool KillTimer(unsigned timerId);
    // Runs the message loop on the calling thread, delivering this thread's
    // ticks as they fall due, until timeoutMs has passed (negative: no limit) or
    // QuitMessageLoop is called. True when ended by QuitMessageLoop.
    virtual bool RunMessageLoop(int timeoutMs);
    // Ends the running loop, or the next one to start when none runs.
    // Async-signal-safe, callable from any thread.
    virtual void QuitMessageLoop();

    // Dialogs, property sheets and their controls. The defaults keep every
    // window in memory with the state the real control keeps, and let an
    // action script (below) play the user; a desktop with a window system
    // overrides all of them together.

    // Runs a modal dialog made from template bytes, reporting its window
    // events to `sink` on this thread; returns the value given to EndDialog,
    // or -1 when the template is refused (nothing was created).
    virtual int DoModalDialog(const uint8_t* templ, size_t length, DialogSink& sink);
    // Runs a modal property sheet with these pages; the sheet's own sink
    // receives OnCreate and OnDestroy only. Returns as DoModalDialog.
    virtual int DoModalPropertySheet(const CString& caption, const std::vector<SheetPage>& pages,
                                     DialogSink& sheetSink);
    // Makes the modal loop of a dialog or sheet return `result`.
    virtual bool EndDialog(WindowHandle dialog, int result);
    // The control with this id in a dialog or page; in a sheet, its own
    // buttons first, then the controls of the current page, then of the
    // other pages shown so far. 0 when there is none.
    virtual WindowHandle GetDlgItem(WindowHandle dialog, int id);
    virtual CString GetClassName(WindowHandle window);
    virtual intptr_t SendMessage(WindowHandle window, unsigned message, uintptr_t wParam, intptr_t lParam);
    virtual CString GetWindowText(WindowHandle window);
    virtual void SetWindowText(WindowHandle window, const CString& text);
    virtual void EnableWindow(WindowHandle window, bool enable);
    virtual void ShowWindow(WindowHandle window, int command);
    virtual void SetFocus(WindowHandle window);
    virtual void SetFont(WindowHandle window, const FontDescription& font);

    // Prompts: a pop-up menu and the file dialogs. The defaults play the
    // action script ("menu", "file" lines; see the README) on an in-memory
    // prompt; with no action left the prompt is cancelled (menu: 0, file
    // dialog: "") and a note says so. A desktop with a window system
    // overrides both.
    //
    // The yes/no question of "ask" has no member of its own: it is
    // MessageBox(text, MB_YESNO), so a host's message-box handler sees it.
    // Desktops without a window system answer such boxes with
    // AnswerQuestion below.

    // A pop-up menu at screen point (x, y) listing `items`; returns the
    // chosen item's number (1 for the first), 0 when the menu was
    // dismissed, -1 when no menu can be shown (no window to own it).
    virtual int TrackPopupMenu(int x, int y, const std::vector<CString>& items);
    // The file open or save dialog; returns the chosen full path, or ""
    // when it was cancelled. The open dialog takes only a file that exists,
    // the save dialog only a name in a folder that exists.
    virtual CString FileDialog(const FileDialogRequest& request);
    // A Yes/No question played from the action script ("answer" lines):
    // IDYES, IDNO, or IDCANCEL when it was closed. With no action left it
    // is closed and a note says so; when no action script was ever loaded
    // it is answered IDOK without a note, as every other box is.
    int AnswerQuestion(const CString& text);

    // Action scripts: what a person does in the in-memory dialogs, one
    // action per line (see the README). Loading replaces the actions left
    // and clears an earlier failure;
    // `name` is what notes and errors call the file. False, with the
    // reason in `error` ("NAME:LINE: ..."), when a line is malformed.
    virtual bool LoadUiActions(const CString& text, const CString& name, CString& error);
    // True once an action failed (a missing control, another dialog than
    // expected): every modal loop then ends at once.
    virtual bool UiActionsFailed() const;
    // A one-line note about the actions (a dialog cancelled for want of
    // actions, an action that failed); default: stderr.
    virtual void UiNote(const CString& line);
    // The text of a "snapshot" action; default: stdout.
    virtual void UiOutput(const CString& text);

private:
    std::unique_ptr<MessageLoop> m_loop;
    std::unique_ptr<WindowSystem> m_windows;
};

// The process-wide desktop. SetDesktop(nullptr) restores the headless one.
// The desktop must outlive every interpreter that uses it.
OB_API Desktop& GetDesktop();
OB_API void SetDesktop(Desktop* desktop);

}  // namespace ob::ui
