// The statements "dialog", "propertysheet" (with its "page" blocks) and
// "closedialog", and the "control" lines of their blocks.
#include "ui/ScriptDialog.h"

#include <orvobasic/desktop.h>

#include <algorithm>

using namespace ob;

namespace {

// True when the rest of the line holds nothing; the cursor does not move.
bool AtLineEnd(COrvoBasic& b) {
    b.get_token();
    bool end = b.Command() == CMD_EOL || b.Command() == CMD_FINISHED;
    b.putback();
    return end;
}

// Reads the next token, stepping over a character that begins none, so
// that readers of blocks always advance.
BASIC_TOKEN_TYPE NextToken(COrvoBasic& b) {
    uint32_t before = b.GetPosition();
    BASIC_TOKEN_TYPE type = b.get_token();
    if (type == TOKEN_NONE && b.GetPosition() == before) b.NextChar();
    return type;
}

// True when the reader of a block stands at its end: one of its end
// statements, or the end of the program text.
bool BlockEnds(COrvoBasic& b, COMMAND_TYPE end, COMMAND_TYPE alsoEnd) {
    return b.Command() == end || b.Command() == alsoEnd || b.Command() == CMD_FINISHED || b.IsEndOfProgram();
}

// Skips to the end of a block without running anything in it.
void SkipBlock(COrvoBasic& b, COMMAND_TYPE end) {
    while (!BlockEnds(b, end, end)) NextToken(b);
}

// The header parameters of "dialog" and "page": title, x, y, cx, cy and,
// with seven or more, the point size (8 when unset) and face name.
struct DialogHeader {
    CString title;
    int16_t x = 0, y = 0, cx = 0, cy = 0;
    bool hasFont = false;
    uint16_t pointSize = 8;
    CString face;
};

bool ReadDialogHeader(COrvoBasic& b, DialogHeader& h) {
    CArgArray p;
    if (AtLineEnd(b) || b.GetParamGroup(p) < 5) return false;
    h.title = p[0].GetStringValue();
    h.x = ui::ToWord(p[1].GetNumberValue());
    h.y = ui::ToWord(p[2].GetNumberValue());
    h.cx = ui::ToWord(p[3].GetNumberValue());
    h.cy = ui::ToWord(p[4].GetNumberValue());
    if (p.size() >= 7) {
        h.hasFont = true;
        if (p[5].IsSet()) h.pointSize = static_cast<uint16_t>(ui::ToWord(p[5].GetNumberValue()));
        h.face = p[6].GetStringValue();
    }
    return true;
}

std::unique_ptr<ui::CDialogTemplate> NewTemplate(const DialogHeader& h) {
    return std::make_unique<ui::CDialogTemplate>(h.title, h.x, h.y, h.cx, h.cy, h.hasFont, h.pointSize, h.face);
}

// Reads the lines of a dialog or page block up to its end: "control" lines
// go into the template, "oninit"/"onexit" name the events; everything else
// is skipped. False once an error has been reported (the number is in
// `error`: 1 for a bad line, 42 for a template past 65,535 controls).
bool ReadDialogBlock(COrvoBasic& b, ui::CDialogTemplate& templ, CScriptWindowEvents& events, COMMAND_TYPE alsoEnd,
                     int& error) {
    while (!BlockEnds(b, CMD_ENDDIALOG, alsoEnd)) {
        if (NextToken(b) != KEYWORD) continue;
        KEYWORD_TYPE keyword = b.Keyword();
        if (keyword == KW_CONTROL || keyword == KW_ONINIT || keyword == KW_ONEXIT)
            b.SetStatementStart(b.GetPosition() - static_cast<uint32_t>(b.Token().size()));
        if (keyword == KW_CONTROL) {
            std::unique_ptr<uint16_t[]> record;
            size_t length = 0;
            CString handler;
            int id = 0;
            if (!b.ExecControl(record, length, handler, id) || !record) return error = 1, false;
            if (!templ.AppendItem(record.get(), length)) return error = 42, false;
            if (!handler.empty()) events.m_controlEvents[static_cast<uint16_t>(id)] = handler;
        } else if (keyword == KW_ONINIT || keyword == KW_ONEXIT) {
            b.get_token();
            if (b.Token().empty() || b.Command() == CMD_EOL || b.Command() == CMD_FINISHED) return error = 1, false;
            (keyword == KW_ONINIT ? events.m_initEvent : events.m_exitEvent) = b.Token();
        }
    }
    return true;
}

// Keeps a window in the running list while its modal loop runs.
struct ActiveGuard {
    std::vector<CScriptWindow*>& list;
    CScriptWindow* window;
    ActiveGuard(std::vector<CScriptWindow*>& l, CScriptWindow* w) : list(l), window(w) { list.push_back(w); }
    ~ActiveGuard() {
        auto it = std::find(list.rbegin(), list.rend(), window);
        if (it != list.rend()) list.erase(std::next(it).base());
    }
};

}  // namespace

// "control" type-keyword text, id, x, y, cx, cy [, handler]: one item record.
bool COrvoBasic::ExecControl(std::unique_ptr<uint16_t[]>& record, size_t& length, CString& handler, int& id) {
    if (get_token() != KEYWORD) {
        ReportError(1);
        FindEOL();
        return false;
    }
    KEYWORD_TYPE type = m_keyword;
    CArgArray p;
    if (AtLineEnd(*this) || GetParamGroup(p) < 6) {
        ReportError(1);
        if (m_command != CMD_EOL && m_command != CMD_FINISHED) FindEOL();
        return false;
    }
    const ui::ControlKind* kind = ui::FindControlKind(type);
    if (!kind) {
        ReportError(41);
        return false;
    }
    CString text = p[0].GetStringValue();
    uint16_t word = static_cast<uint16_t>(ui::ToWord(p[1].GetNumberValue()));
    if (type == KW_OKBUTTON) word = ui::IDC_OK;
    if (type == KW_CANCELBUTTON) word = ui::IDC_CANCEL;
    int16_t x = ui::ToWord(p[2].GetNumberValue()), y = ui::ToWord(p[3].GetNumberValue());
    int16_t cx = ui::ToWord(p[4].GetNumberValue()), cy = ui::ToWord(p[5].GetNumberValue());
    handler = p.size() > 6 ? p[6].GetStringValue() : CString();
    id = word;
    record = kind->atom ? ui::CreateItemTemplate(kind->atom, kind->style, word, x, y, cx, cy, text, length)
                        : ui::CreateItemTemplate(CString(kind->className), kind->style, word, x, y, cx, cy, text,
                                                 length);
    return true;
}

// "dialog" title, x, y, cx, cy [, size, face] ... "enddialog": builds the
// template from the block and runs the dialog modally. On an error the rest
// of the block is skipped, so the run goes on after it.
bool COrvoBasic::ExecDialog() {
    CScriptDialog dialog(this);
    size_t operandMark = m_operands.size();
    DialogHeader header;
    int error = 1;
    std::unique_ptr<ui::CDialogTemplate> templ;
    if (ReadDialogHeader(*this, header)) {
        templ = NewTemplate(header);
        if (!ReadDialogBlock(*this, *templ, dialog, CMD_ENDDIALOG, error)) templ.reset();
    }
    if (!templ) {
        ReportError(error);
        SkipBlock(*this, CMD_ENDDIALOG);
        return false;
    }
    templ->Finish();
    if (m_halted) return false;
    if (m_operands.size() > operandMark) m_operands.resize(operandMark);
    int result;
    {
        ActiveGuard active(m_dialogs->active, &dialog);
        result = m_desktop->DoModalDialog(templ->Bytes().data(), templ->Bytes().size(), dialog);
    }
    if (dialog.m_aborted) throw ScriptAbort{};
    if (m_desktop->UiActionsFailed()) {
        m_halted = true;
        m_stop = true;
    }
    if (result == -1) {
        ReportError(42);
        return false;
    }
    return true;
}

// "page" title, x, y, cx, cy [, size, face] ... "endpage": one page of the
// sheet being read; null after an error.
std::unique_ptr<CPropertyPageInfo> COrvoBasic::ExecPropertyPage() {
    DialogHeader header;
    if (!ReadDialogHeader(*this, header)) {
        ReportError(1);
        return nullptr;
    }
    auto info = std::make_unique<CPropertyPageInfo>();
    info->page = std::make_unique<CScriptPropertyPage>(this);
    info->templ = NewTemplate(header);
    int error = 1;
    if (!ReadDialogBlock(*this, *info->templ, *info->page, CMD_ENDPAGE, error)) {
        ReportError(error);
        return nullptr;
    }
    info->templ->Finish();
    return info;
}

// "propertysheet" caption ... "enddialog": reads its "page" blocks and runs
// the sheet modally. Everything between the pages is skipped.
bool COrvoBasic::ExecPropertySheet() {
    CArgArray p;
    if (AtLineEnd(*this) || GetParamGroup(p) < 1) {
        ReportError(1);
        SkipBlock(*this, CMD_ENDDIALOG);
        return false;
    }
    CString caption = p[0].GetStringValue();
    std::vector<std::unique_ptr<CPropertyPageInfo>> pages;
    while (!BlockEnds(*this, CMD_ENDDIALOG, CMD_ENDDIALOG)) {
        NextToken(*this);
        if (m_tokenType == COMMAND && m_command == CMD_PAGE)
            if (auto page = ExecPropertyPage()) pages.push_back(std::move(page));
    }
    if (m_halted) return false;
    std::vector<ui::SheetPage> sources;
    for (const auto& page : pages)
        sources.push_back({page->templ->Bytes().data(), page->templ->Bytes().size(), page->page.get()});
    CScriptSheet sheet(this);
    {
        ActiveGuard active(m_dialogs->active, &sheet);
        m_desktop->DoModalPropertySheet(caption, sources, sheet);
    }
    for (const auto& page : pages)
        if (page->page->m_aborted) throw ScriptAbort{};
    if (m_desktop->UiActionsFailed()) {
        m_halted = true;
        m_stop = true;
    }
    return true;
}

// "closedialog": ends the innermost running dialog or sheet with result 1.
bool COrvoBasic::ExecCloseDialog() {
    if (m_dialogs->active.empty()) {
        ReportError(43);
        return false;
    }
    m_desktop->EndDialog(m_dialogs->active.back()->m_hWnd, ui::IDC_OK);
    return true;
}

// A denied dialog or sheet skips its whole block, a denied "alter" its
// lines up to "endalter"; any other denied statement its line.
void COrvoBasic::SkipDeniedStatement(COMMAND_TYPE command) {
    if (command == CMD_DIALOG || command == CMD_PROPERTYSHEET) SkipBlock(*this, CMD_ENDDIALOG);
    else if (command == CMD_ALTER) SkipBlock(*this, CMD_ENDALTER);
    else FindEOL();
}

bool COrvoBasic::RunAbandoned() const {
    return m_halted || m_stopRequested.load(std::memory_order_relaxed) ||
           (m_parentStop && m_parentStop->load(std::memory_order_relaxed));
}
