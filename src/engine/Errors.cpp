// Error reporting: every failure a script causes is shown with its message
// and source line; OK goes on, Cancel ends the run.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include <orvobasic/sources.h>

#include "engine/HostOutput.h"
#include "engine/Messages.h"
#include "engine/SourceMap.h"

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
    case OB_ERR_INCLUDE_CYCLE: return u"Include cycle: a file includes itself, or includes nest too deeply";
    case OB_ERR_ENCRYPTED_SCRIPT: return u"Encrypted script is damaged or was made with another key";
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

const CString& COrvoBasic::LocateSource(uint32_t position, int& line) const {
    SourceLocation location = m_sourceMap->Locate(m_text.empty() ? 0 : LineOfPosition(position));
    line = location.line;
    return location.file ? *location.file : m_scriptPath;
}

// Where the statement being executed began (the file it was written in and
// its line there), the line's text and the calls that led there.
void COrvoBasic::FillErrorRecord(int id, const CString& message) {
    ErrorRecord& r = m_lastErrorRecord;
    r.id = message.IsEmpty() ? 0 : id;
    r.message = message;
    int textLine = m_text.empty() ? 0 : LineOfPosition(m_stmtPos);
    r.script = LocateSource(m_stmtPos, r.line);
    r.column = 0;
    r.sourceLine.clear();
    if (textLine > 0) {
        uint32_t begin = m_lineStarts[static_cast<size_t>(textLine - 1)];
        uint32_t limit = static_cast<uint32_t>(std::min<size_t>(m_length, size_t{begin} + kMaxShownLine));
        uint32_t end = begin;
        while (end < limit && m_text[end] != u'\n' && m_text[end] != u'\r') ++end;
        r.sourceLine = CString(m_text.substr(begin, end - begin));
        uint32_t first = std::max(begin, m_stmtPos);
        while (first < m_length && (m_text[first] == u' ' || m_text[first] == u'\t')) ++first;
        r.column = static_cast<int>(first - begin) + 1;
    }
    r.calls.clear();
    for (const ActiveCall& active : m_callChain) {
        SourceLocation location = m_sourceMap->Locate(LineOfPosition(active.callerPosition));
        r.calls.push_back(CallFrame{active.function, location.line, location.file ? *location.file : m_scriptPath});
    }
    r.runResult = id > kMessageCount ? m_runResult : OB_OK;
    AddDiagnostics(r);
}

// Runs `report` with the subject and errno that the report's record names.
template <typename Report>
void COrvoBasic::WithErrorSubject(const CString& subject, int osError, Report report) {
    m_errorSubject = subject;
    m_errorOsError = osError;
    struct Clear {
        COrvoBasic& b;
        ~Clear() {
            b.m_errorSubject.clear();
            b.m_errorOsError = 0;
        }
    } clear{*this};
    report();
}

void COrvoBasic::ReportErrorAbout(int id, const CString& subject, int osError) {
    WithErrorSubject(subject, osError, [&] { ReportError(id); });
}

void COrvoBasic::ReportError(int id) {
    // An expression past its nesting bound, or a halted run, unwinds quietly.
    if (m_exprAbandoned || m_halted) return;
    CString message = LoadMessage(id);
    ui::Desktop& desktop = ui::GetDesktop();
    if (message.IsEmpty() && m_outputHooks && m_outputHooks->messageBox)
        ShowMessageBox(kMissingMessageText, ui::MB_OK);
    else if (message.IsEmpty())
        desktop.ResourceFallbackBox(kMissingMessageText);
    m_lastError = message;
    m_lastError += u'\n';
    m_lastError += GetCurrentLine();
    FillErrorRecord(id, message);
    DeliverError(message);
}

// A load error has no statement: the record names the file and line given.
void COrvoBasic::ReportLoadError(int id, const CString& file, int line, const CString& sourceLine) {
    CString message = LoadMessage(id);
    if (message.IsEmpty()) ui::GetDesktop().ResourceFallbackBox(kMissingMessageText);
    m_lastError = message;
    m_lastError += u'\n';
    if (line > 0) m_lastError += sourceLine;
    ErrorRecord& r = m_lastErrorRecord;
    r = ErrorRecord{};
    r.id = message.IsEmpty() ? 0 : id;
    r.message = message;
    r.script = file;
    r.line = line;
    if (line > 0) {
        r.sourceLine = sourceLine;
        size_t first = sourceLine.find_first_not_of(u" \t");
        r.column = static_cast<int>(first == CString::npos ? sourceLine.size() : first) + 1;
    }
    AddDiagnostics(r);
    DeliverError(message);
}

void COrvoBasic::ReportLoadErrorAbout(int id, const CString& file, const CString& subject, int osError) {
    WithErrorSubject(subject, osError, [&] { ReportLoadError(id, file, 0, CString()); });
}

// Hands the filled record to the host's handler or the desktop's error box;
// throws ScriptAbort when the answer is to end the run.
void COrvoBasic::DeliverError(const CString& message) {
    ui::Desktop& desktop = ui::GetDesktop();
    if (m_errorHandler) {
        if (m_errorHandler(m_lastErrorRecord) == OB_ABORT) throw ScriptAbort{};
        return;
    }
    ui::ErrorReport report;
    report.id = m_lastErrorRecord.id;
    report.message = message;
    report.text = m_lastError;
    report.script = m_lastErrorRecord.script;
    report.line = m_lastErrorRecord.line;
    report.sourceLine = m_lastErrorRecord.sourceLine;
    report.record = &m_lastErrorRecord;
    if (desktop.ErrorBox(report) == ui::IDCANCEL) throw ScriptAbort{};
}
