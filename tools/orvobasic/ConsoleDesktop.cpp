#include "ConsoleDesktop.h"

#include "ErrorDetails.h"


#include <orvobasic/hostcontrol.h>

#include <string>

namespace ob::runner {

using ob::ui::IDCANCEL;
using ob::ui::IDOK;

int ConsoleDesktop::MessageBox(const CString& text, unsigned style) {
    std::string out = text.ToUtf8();
    std::fwrite(out.data(), 1, out.size(), stdout);
    if (out.empty() || out.back() != '\n') std::fputc('\n', stdout);
    std::fflush(stdout);
    return (style & 0xF) == ob::ui::MB_YESNO ? AnswerQuestion(text) : IDOK;
}

void ConsoleDesktop::PrintBox(const CString& text) {
    std::string out = text.ToUtf8();
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fflush(stdout);
}

// The calls active at an error, innermost first, one line each under the
// source line; nothing for an error in the main program. A run of identical
// calls (a recursion) shows once, with how often it repeats.
void ConsoleDesktop::PrintCallChain(const ob::ui::ErrorReport& report) {
    if (!report.record) return;
    const auto& calls = report.record->calls;
    std::string script = report.script.ToUtf8();
    for (auto call = calls.rbegin(); call != calls.rend();) {
        auto same = call + 1;
        while (same != calls.rend() && same->line == call->line && same->function == call->function &&
               same->script == call->script)
            ++same;
        std::string file = call->script.IsEmpty() ? script : call->script.ToUtf8();
        std::fprintf(stderr, "    in %s, called at %s:%d\n", call->function.ToUtf8().c_str(), file.c_str(),
                     call->line);
        if (same - call > 1) std::fprintf(stderr, "    (the call above %ld more times)\n", long(same - call - 1));
        call = same;
    }
}

// Line feeds inside a message are shown as spaces so that each report
// starts with one parsable line.
int ConsoleDesktop::ErrorBox(const ob::ui::ErrorReport& report) {
    ++m_errors;
    std::string message = report.message.ToUtf8();
    for (char& c : message)
        if (c == '\n' || c == '\r') c = ' ';
    std::fflush(stdout);
    std::fprintf(stderr, "%s:%d: error %d: %s\n", report.script.ToUtf8().c_str(), report.line, report.id,
                 message.c_str());
    if (report.line > 0) std::fprintf(stderr, "    %s\n", report.sourceLine.ToUtf8().c_str());
    if (report.record) PrintErrorDetails(stderr, *report.record);
    PrintCallChain(report);
    std::fflush(stderr);
    switch (m_mode) {
    case OnError::Continue: return IDOK;
    case OnError::Abort: return IDCANCEL;
    case OnError::Ask: return AskToContinue() ? IDOK : IDCANCEL;
    }
    return IDCANCEL;
}

void ConsoleDesktop::ResourceFallbackBox(const CString& text) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n", text.ToUtf8().c_str());
    std::fflush(stderr);
}

// Asks on the terminal; end of input counts as "abort".
bool ConsoleDesktop::AskToContinue() {
    std::fprintf(stderr, "Continue the script? [Y/n] ");
    std::fflush(stderr);
    char line[64];
    if (!std::fgets(line, sizeof line, stdin)) return false;
    return line[0] != 'n' && line[0] != 'N';
}

}  // namespace ob::runner
