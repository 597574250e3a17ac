// The Desktop: every user-facing service of the interpreter goes through one
// process-wide object implementing this interface (message boxes now; dialogs,
// timers and the message loop as they arrive). The library's default is the
// headless desktop, which answers every box with OK and keeps no window; the
// command-line runner installs its console desktop.
#pragma once

#include <orvobasic/CString.h>

namespace ob::ui {

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
};

class Desktop {
public:
    virtual ~Desktop() = default;

    // A modal message box; returns one of the ID* results.
    virtual int MessageBox(const CString& text, unsigned style) = 0;
    // The text of a "print" statement (a box of the default style).
    virtual void PrintBox(const CString& text) { MessageBox(text, MB_OK); }
    // A reported error (OK/Cancel, stop icon): IDOK goes on, IDCANCEL aborts.
    virtual int ErrorBox(const ErrorReport& report) {
        return MessageBox(report.text, MB_OKCANCEL | MB_ICONSTOP);
    }
    // Shown when a message number has no text.
    virtual void ResourceFallbackBox(const CString& text) { MessageBox(text, MB_OK); }
};

// The process-wide desktop. SetDesktop(nullptr) restores the headless one.
// The desktop must outlive every interpreter that uses it.
Desktop& GetDesktop();
void SetDesktop(Desktop* desktop);

}  // namespace ob::ui
