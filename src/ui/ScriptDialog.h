// The dialog logic's window classes: a script dialog and a script property
// page turn their window's events into script events; the sheet only
// records its window. Also what the interpreter keeps about dialogs: the
// list of running dialogs and sheets, and the fonts "alter" made.
#pragma once

#include "ui/DialogPublication.h"
#include "ui/DialogTemplate.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/dialogs.h>

#include <memory>
#include <unordered_map>
#include <vector>

namespace ob::ui {
class Desktop;
}

namespace ob {

// A window of the dialog logic: remembers the handle the desktop gave it.
class CScriptWindow : public ui::DialogSink {
public:
    void OnCreate(ui::WindowHandle window) override { m_hWnd = window; }
    bool OnInitDialog() override { return false; }
    bool OnCommand(uintptr_t, intptr_t) override { return false; }
    bool OnNotify(uintptr_t, const ui::NotifyHeader*) override { return false; }
    void OnDestroy() override { m_hWnd = 0; }
    // A handler raised outside the window's own events (a copy-data
    // message) was aborted.
    virtual void OnEventAborted() {}

    ui::WindowHandle m_hWnd = 0;
    // Set while a top-level window is listed in the session registry.
    std::unique_ptr<CDialogPublication> m_publication;
};

// Lists a dialog or sheet in the session registry under its caption, and
// withdraws it.
void PublishScriptWindow(COrvoBasic& basic, CScriptWindow& window);
void UnpublishScriptWindow(CScriptWindow& window);

// A property sheet: only its window, and whether the script still runs.
class CScriptSheet : public CScriptWindow {
public:
    explicit CScriptSheet(COrvoBasic* basic) : m_basic(basic) {}
    bool Abandoned() const override { return m_basic->RunAbandoned(); }
    void OnCreate(ui::WindowHandle window) override;
    void OnDestroy() override;
    void OnEventAborted() override;

private:
    COrvoBasic* m_basic;
};

// The events of a dialog or page: init and exit event names and the event
// of each control that names one. An abort of the run inside an event
// (the user refused to go on after an error) ends the window and is
// remembered, for the statement to pass on once the modal loop returns.
class CScriptWindowEvents : public CScriptWindow {
public:
    explicit CScriptWindowEvents(COrvoBasic* basic) : m_basic(basic) {}

    bool OnInitDialog() override;
    bool OnCommand(uintptr_t wParam, intptr_t lParam) override;
    bool OnNotify(uintptr_t wParam, const ui::NotifyHeader* header) override;
    void OnDestroy() override;
    bool Abandoned() const override;
    void OnEventAborted() override;
    virtual void OnOK() {}
    virtual void OnCancel() {}

    CString m_initEvent;
    CString m_exitEvent;
    COrvoBasic* m_basic;
    std::unordered_map<uint16_t, CString> m_controlEvents;
    bool m_aborted = false;

protected:
    ui::Desktop& Desk() const;
    void Raise(const CString& event, CBasicVariable argument);
    bool SelectionEvent(ui::WindowHandle control, CBasicVariable& argument) const;
};

class CScriptDialog : public CScriptWindowEvents {
public:
    using CScriptWindowEvents::CScriptWindowEvents;
    void OnCreate(ui::WindowHandle window) override;
    void OnDestroy() override;
    void OnOK() override;
    void OnCancel() override;
};

// A page's OK and Cancel end nothing: its sheet ends itself.
class CScriptPropertyPage : public CScriptWindowEvents {
public:
    using CScriptWindowEvents::CScriptWindowEvents;
};

// What "page" hands to the sheet reader: the page and its template, which
// must outlive the page's window.
struct CPropertyPageInfo {
    std::unique_ptr<CScriptPropertyPage> page;
    std::unique_ptr<ui::CDialogTemplate> templ;
};

// The interpreter's dialog state.
struct CDialogState {
    std::vector<CScriptWindow*> active;        // running dialogs and sheets, innermost last
    std::vector<ui::FontDescription> fonts;    // every font "alter" made, until the interpreter goes
};

}  // namespace ob
