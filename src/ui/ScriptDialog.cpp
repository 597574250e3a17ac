// Window events of script dialogs and pages turned into script events.
#include "ui/ScriptDialog.h"

#include <orvobasic/desktop.h>

namespace ob {

namespace {

constexpr size_t kMaxClassName = 127;

bool ClassIs(const CString& className, const char16_t* name) {
    CString a = className.Left(static_cast<int>(kMaxClassName)), b = name;
    return a.MakeLower() == b.MakeLower();
}

}  // namespace

ui::Desktop& CScriptWindowEvents::Desk() const { return m_basic->Desktop(); }

// After an abort, a stop, or a failed action nothing more of the script runs.
bool CScriptWindowEvents::Abandoned() const {
    return m_aborted || m_basic->RunAbandoned() || Desk().UiActionsFailed();
}

// Raises a script event with one argument. An abort inside it ends the
// window (a page ends its sheet).
void CScriptWindowEvents::Raise(const CString& event, CBasicVariable argument) {
    if (event.empty() || Abandoned()) return;
    try {
        m_basic->EventThrow(event, &argument);
    } catch (const ScriptAbort&) {
        m_aborted = true;
        if (m_hWnd) Desk().EndDialog(m_hWnd, ui::IDC_CANCEL);
    }
}

// True with the init event raised; false (no default focus) without one.
bool CScriptWindowEvents::OnInitDialog() {
    if (m_initEvent.empty()) return false;
    Raise(m_initEvent, CBasicVariable());
    return true;
}

void CScriptWindowEvents::OnDestroy() {
    if (!m_exitEvent.empty()) Raise(m_exitEvent, CBasicVariable());
    m_hWnd = 0;
}

// The text of a list or combo box's selected item; false when nothing is
// selected or the control is of another class.
bool CScriptWindowEvents::SelectionEvent(ui::WindowHandle control, CBasicVariable& argument) const {
    ui::Desktop& desk = Desk();
    CString className = desk.GetClassName(control);
    bool list = ClassIs(className, u"LISTBOX");
    if (!list && !ClassIs(className, u"COMBOBOX")) return false;
    intptr_t index = desk.SendMessage(control, list ? ui::LB_GETCURSEL : ui::CB_GETCURSEL, 0, 0);
    if (index == -1) return false;
    CString text;
    desk.SendMessage(control, list ? ui::LB_GETTEXT : ui::CB_GETLBTEXT, static_cast<uintptr_t>(index),
                     reinterpret_cast<intptr_t>(&text));
    argument = text;
    return true;
}

// A control's command raises its event (click: the check state; selection
// change: the selected item's text; edit change: the text); then id 1 is
// OK and id 2 is Cancel, whatever the control did.
bool CScriptWindowEvents::OnCommand(uintptr_t wParam, intptr_t) {
    if (!m_hWnd) return false;
    uint16_t id = static_cast<uint16_t>(wParam & 0xFFFF);
    unsigned code = static_cast<unsigned>((wParam >> 16) & 0xFFFF);
    ui::Desktop& desk = Desk();
    ui::WindowHandle child = desk.GetDlgItem(m_hWnd, id);
    auto event = m_controlEvents.find(id);
    if (child && event != m_controlEvents.end()) {
        CString name = event->second;   // the handler may change the map through nothing, but be safe
        CBasicVariable argument;
        bool raise = true;
        if (code == ui::BN_CLICKED) argument = static_cast<double>(desk.SendMessage(child, ui::BM_GETCHECK, 0, 0));
        else if (code == ui::LBN_SELCHANGE) raise = SelectionEvent(child, argument);
        else if (code == ui::EN_CHANGE) argument = desk.GetWindowText(child);
        else raise = false;
        if (raise) Raise(name, argument);
    }
    if (id == ui::IDC_OK) OnOK();
    else if (id == ui::IDC_CANCEL) OnCancel();
    return true;
}

// Tab and tree selection changes raise the control's event with the new
// tab's index or the new tree item's text.
bool CScriptWindowEvents::OnNotify(uintptr_t wParam, const ui::NotifyHeader* header) {
    auto event = m_controlEvents.find(static_cast<uint16_t>(wParam & 0xFFFF));
    if (!header || event == m_controlEvents.end()) return false;
    CString name = event->second;
    ui::Desktop& desk = Desk();
    if (header->code == ui::TCN_SELCHANGE) {
        Raise(name, CBasicVariable(static_cast<double>(desk.SendMessage(header->from, ui::TCM_GETCURSEL, 0, 0))));
    } else if (header->code == ui::TVN_SELCHANGEDW) {
        const auto* tree = reinterpret_cast<const ui::TreeViewNotify*>(header);
        if (!tree->itemNew) return false;
        ui::TreeItemText item;
        item.item = tree->itemNew;
        desk.SendMessage(header->from, ui::TVM_GETITEMW, 0, reinterpret_cast<intptr_t>(&item));
        Raise(name, CBasicVariable(item.text));
    }
    return false;
}

void CScriptWindowEvents::OnEventAborted() {
    m_aborted = true;
    if (m_hWnd) Desk().EndDialog(m_hWnd, ui::IDC_CANCEL);
}

void CScriptDialog::OnCreate(ui::WindowHandle window) {
    CScriptWindowEvents::OnCreate(window);
    PublishScriptWindow(*m_basic, *this);
}

void CScriptDialog::OnDestroy() {
    UnpublishScriptWindow(*this);
    CScriptWindowEvents::OnDestroy();
}

void CScriptSheet::OnCreate(ui::WindowHandle window) {
    CScriptWindow::OnCreate(window);
    PublishScriptWindow(*m_basic, *this);
}

void CScriptSheet::OnDestroy() {
    UnpublishScriptWindow(*this);
    CScriptWindow::OnDestroy();
}

void CScriptSheet::OnEventAborted() {
    if (m_hWnd) m_basic->Desktop().EndDialog(m_hWnd, ui::IDC_CANCEL);
}

void CScriptDialog::OnOK() {
    if (m_hWnd) Desk().EndDialog(m_hWnd, ui::IDC_OK);
}

void CScriptDialog::OnCancel() {
    if (m_hWnd) Desk().EndDialog(m_hWnd, ui::IDC_CANCEL);
}

}  // namespace ob
