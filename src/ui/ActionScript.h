// Action scripts: a person's use of dialogs written down, one action per
// line, so that a run needs no display. Every desktop plays them through the
// UiDriver it implements; the language itself (the verbs and their
// arguments) lives here, in one table that new verbs join.
//
//   # a comment; blank lines are ignored
//   expect-dialog "Title"      the innermost dialog has this caption
//   type 100 "text"            types into an edit field (replacing its text)
//   click 1                    clicks a button, check box or radio button
//   select 101 "item"          selects a list, combo, tree or tab item by text
//   select 101 2               ... or by index
//   check 102 / uncheck 102    sets a check box by clicking it when needed
//   tab 103 1                  selects a tab by index
//   slide 104 40               moves a slider
//   date 105 2026-11-23 [14:30[:15]]
//   page 1                     shows a property sheet's page by index
//   wait-ms 200                lets time pass (timers fire)
//   snapshot                   prints the innermost dialog's controls
//   ok / cancel / close        Enter, Escape, the close box
//   answer yes|no|cancel       answers a Yes/No question ("ask")
//   menu 2 / menu "text"       chooses a pop-up menu item (1 is the first;
//                              menu 0 dismisses the menu, as cancel does)
//   file "/path" / file cancel chooses a file in a file dialog, or cancels
//                              it (a relative path is taken from the
//                              dialog's initial folder)
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/dialogs.h>
#include <orvobasic/export.h>

#include <cstddef>
#include <vector>

namespace ob::ui {

// What a desktop does for each verb. Every member returns an empty string on
// success, else what went wrong (the caller adds the file and line).
class UiDriver {
public:
    virtual ~UiDriver() = default;
    virtual CString ExpectDialog(const CString& title) = 0;
    virtual CString Type(int id, const CString& text) = 0;
    virtual CString Click(int id) = 0;
    virtual CString SelectText(int id, const CString& item) = 0;
    virtual CString SelectIndex(int id, int index) = 0;
    virtual CString Check(int id, bool checked) = 0;
    virtual CString Tab(int id, int index) = 0;
    virtual CString Slide(int id, int position) = 0;
    virtual CString Date(int id, const SystemTime& time) = 0;
    virtual CString Page(int index) = 0;
    virtual CString Wait(int milliseconds) = 0;
    virtual CString Snapshot() = 0;
    virtual CString Ok() = 0;
    virtual CString Cancel() = 0;
    virtual CString Close() = 0;
    // Prompts: the Yes/No question, the pop-up menu and the file dialogs.
    virtual CString Answer(int button) = 0;              // IDYES, IDNO or IDCANCEL
    virtual CString MenuIndex(int number) = 0;           // 1-based; 0 dismisses
    virtual CString MenuText(const CString& item) = 0;
    virtual CString File(const CString& path) = 0;
    virtual CString FileCancel() = 0;
};

// One argument of an action.
struct ActionArg {
    bool isText = false;   // a quoted string or a bare word
    CString text;
    long number = 0;
    SystemTime time;       // for dates
};

struct ActionVerb;

// One parsed line.
struct Action {
    const ActionVerb* verb = nullptr;
    std::vector<ActionArg> args;
    int line = 0;
};

// A verb: its name, the arguments it takes, and what it asks of the driver.
// Argument kinds, one letter each: 'n' an integer, 's' a quoted string,
// 'v' a quoted string or an integer, 'd' a date with an optional time,
// 'w' a bare word, 'y' one of the bare words yes, no and cancel (read as
// IDYES, IDNO, IDCANCEL), 'c' a quoted string or the bare word cancel.
struct ActionVerb {
    const char16_t* name;
    const char* args;
    CString (*run)(UiDriver& driver, const Action& action);
};

class OB_API ActionScript {
public:
    // Parses `text`; on a malformed line returns false with "NAME:LINE: ..."
    // in `error` and keeps the actions it had.
    bool Load(const CString& text, const CString& name, CString& error);
    // The next action to play, or null when none is left.
    const Action* Next();
    // Runs an action; empty on success, else "NAME:LINE: what went wrong".
    CString Run(const Action& action, UiDriver& driver) const;
    const CString& Name() const { return m_name; }
    bool Loaded() const { return m_loaded; }

private:
    std::vector<Action> m_actions;
    size_t m_next = 0;
    CString m_name;
    bool m_loaded = false;
};

// The verb with this name, or null.
OB_API const ActionVerb* FindActionVerb(const CString& name);

}  // namespace ob::ui
