// Error reporting: every failure a script causes is shown with its message
// and source line; OK goes on, Cancel ends the run.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "engine/Messages.h"

using namespace ob;

namespace {

inline bool IsLineEnd(char16_t c) { return c == u'\n' || c == u'\r' || c == 0; }

// Texts of the outcomes a host's controls end a run with.
CString HostControlMessage(int id) {
    switch (id) {
    case OB_ERR_STOPPED: return u"Script stopped by the host";
    case OB_ERR_STEP_LIMIT: return u"Statement limit reached";
    case OB_ERR_TIMEOUT: return u"Time limit reached";
    case OB_ERR_DEPTH: return u"Call depth limit reached";
    case OB_ERR_MEMORY: return u"Variable limit reached";
    case OB_ERR_MEMORY_LIMIT: return u"Memory limit reached";
    case OB_ERR_NO_MEMORY: return u"Out of memory";
    default: return CString();
    }
}

}  // namespace

CString COrvoBasic::LoadMessage(int id) {
    if (id > kMessageCount) return HostControlMessage(id);
    return Message(id).Left(127);
}

// The source line around the cursor. Except on the first line the text
// begins with the line end before it; the search for the line's end starts
// two characters in (a one-character line therefore runs to the next one).
// A line longer than kMaxShownLine is cut there, so that a statement that
// reports many errors on one huge line costs no more per report than a
// short one.
CString COrvoBasic::GetCurrentLine() {
    if (m_text.empty()) return CString();
    uint32_t p = std::min<uint32_t>(m_pos, m_endIndex);
    while (p > 0 && IsLineEnd(m_text[p])) --p;
    p = LineEndBefore(p);
    size_t window = std::min<size_t>(m_text.size(), size_t{p} + 2 + kMaxShownLine);
    size_t e = p + 2 >= window ? CString::npos : std::u16string_view(m_text).substr(0, window).find(u'\n', p + 2);
    if (e == CString::npos && p + 2 < window && window < m_text.size()) e = window;   // cut: the line goes on
    if (e != CString::npos && e - p > 1) return CString(m_text.substr(p, std::min<size_t>(e - p, kMaxShownLine)));
    return CString();
}

// From a position on a line's text, back to the line end before that line
// (or 0), as a character-by-character walk would stop. The line index finds
// it at once unless the text holds NUL characters, which end lines here too.
uint32_t COrvoBasic::LineEndBefore(uint32_t p) const {
    if (m_textHasNul || m_lineStarts.empty()) {
        while (p > 0 && !IsLineEnd(m_text[p])) --p;
        return p;
    }
    if (IsLineEnd(m_text[p])) return p;
    uint32_t start = m_lineStarts[static_cast<size_t>(LineOfPosition(p) - 1)];
    return start > 0 ? start - 1 : 0;
}

// Where the statement being executed began, its line's text (cut as
// GetCurrentLine cuts it) and the calls that led there.
void COrvoBasic::FillErrorRecord(int id, const CString& message) {
    ErrorRecord& r = m_lastErrorRecord;
    r.id = message.IsEmpty() ? 0 : id;
    r.message = message;
    r.script = m_scriptPath;
    r.line = m_text.empty() ? 0 : LineOfPosition(m_stmtPos);
    r.column = 0;
    r.sourceLine.clear();
    if (r.line > 0) {
        uint32_t begin = m_lineStarts[static_cast<size_t>(r.line - 1)];
        uint32_t limit = static_cast<uint32_t>(std::min<size_t>(m_length, size_t{begin} + kMaxShownLine));
        uint32_t end = begin;
        while (end < limit && m_text[end] != u'\n' && m_text[end] != u'\r') ++end;
        r.sourceLine = CString(m_text.substr(begin, end - begin));
        uint32_t first = std::max(begin, m_stmtPos);
        while (first < m_length && (m_text[first] == u' ' || m_text[first] == u'\t')) ++first;
        r.column = static_cast<int>(first - begin) + 1;
    }
    r.calls = m_callChain;
    r.runResult = id > kMessageCount ? m_runResult : OB_OK;
}

void COrvoBasic::ReportError(int id) {
    // An expression past its nesting bound, or a halted run, unwinds quietly.
    if (m_exprAbandoned || m_halted) return;
    CString message = LoadMessage(id);
    ui::Desktop& desktop = ui::GetDesktop();
    if (message.IsEmpty()) desktop.ResourceFallbackBox(kMissingMessageText);
    m_lastError = message;
    m_lastError += u'\n';
    m_lastError += GetCurrentLine();
    FillErrorRecord(id, message);
    if (m_errorHandler) {
        if (m_errorHandler(m_lastErrorRecord) == OB_ABORT) throw ScriptAbort{};
        return;
    }
    ui::ErrorReport report;
    report.id = m_lastErrorRecord.id;
    report.message = message;
    report.text = m_lastError;
    report.script = m_scriptPath;
    report.line = m_lastErrorRecord.line;
    report.sourceLine = m_lastErrorRecord.sourceLine;
    report.record = &m_lastErrorRecord;
    if (desktop.ErrorBox(report) == ui::IDCANCEL) throw ScriptAbort{};
}
