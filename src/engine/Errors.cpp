// Error reporting: every failure a script causes is shown with its message
// and source line; OK goes on, Cancel ends the run.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "engine/Messages.h"

using namespace ob;

namespace {
inline bool IsLineEnd(char16_t c) { return c == u'\n' || c == u'\r' || c == 0; }
}  // namespace

CString COrvoBasic::LoadMessage(int id) { return Message(id).Left(127); }

// The source line around the cursor. Except on the first line the text
// begins with the line end before it; the search for the line's end starts
// two characters in (a one-character line therefore runs to the next one).
CString COrvoBasic::GetCurrentLine() {
    if (m_text.empty()) return CString();
    uint32_t p = std::min<uint32_t>(m_pos, m_endIndex);
    while (p > 0 && IsLineEnd(m_text[p])) --p;
    while (p > 0 && !IsLineEnd(m_text[p])) --p;
    size_t e = m_text.find(u'\n', p + 2);
    if (e != CString::npos && e - p > 1) return CString(m_text.substr(p, e - p));
    return CString();
}

// The physical line `line` (1-based) without its line end.
static CString PhysicalLine(const CString& text, const std::vector<uint32_t>& starts, int line) {
    if (line < 1 || static_cast<size_t>(line) > starts.size()) return CString();
    uint32_t begin = starts[static_cast<size_t>(line - 1)];
    uint32_t end = begin;
    while (end < text.size() && text[end] != u'\n' && text[end] != u'\r') ++end;
    return CString(text.substr(begin, end - begin));
}

void COrvoBasic::ReportError(int id) {
    if (m_exprAbandoned) return;   // an expression past its nesting bound is unwinding quietly
    CString message = LoadMessage(id);
    if (message.IsEmpty()) m_desktop->ResourceFallbackBox(kMissingMessageText);
    m_lastError = message;
    m_lastError += u'\n';
    m_lastError += GetCurrentLine();
    ui::ErrorReport report;
    report.id = message.IsEmpty() ? 0 : id;
    report.message = message;
    report.text = m_lastError;
    report.script = m_scriptPath;
    report.line = m_text.empty() ? 0 : LineOfPosition(m_stmtPos);
    report.sourceLine = PhysicalLine(m_text, m_lineStarts, report.line);
    if (m_desktop->ErrorBox(report) == ui::IDCANCEL) throw ScriptAbort{};
}
