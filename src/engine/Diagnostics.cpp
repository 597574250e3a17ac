// Details that make an error report readable: the name or path it is about
// and where that stands on the line, the system's reason after a failed
// file operation, a defined name close to a misspelt one, and a hint for the
// traps of the dialect that catch people coming from other BASICs. None of
// it changes the message texts; it is computed only when an error is
// reported.
#include <orvobasic/COrvoBasic.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

using namespace ob;

namespace {

CString Lowered(CString text) {
    text.MakeLower();
    return text;
}

// Edit distance with transpositions, stopping early above `limit`.
size_t Distance(const CString& a, const CString& b, size_t limit) {
    if ((a.size() > b.size() ? a.size() - b.size() : b.size() - a.size()) > limit) return limit + 1;
    std::vector<size_t> before(b.size() + 1), previous(b.size() + 1), current(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) previous[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t cost = a[i - 1] == b[j - 1] ? 0 : 1;
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + cost});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                current[j] = std::min(current[j], before[j - 2] + 1);
        }
        before.swap(previous);
        previous.swap(current);
    }
    return previous[b.size()];
}

bool IsWordChar(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_';
}

// The first word of a source line, lower-cased.
CString FirstWord(const CString& line) {
    size_t begin = 0;
    while (begin < line.size() && (line[begin] == u' ' || line[begin] == u'\t')) ++begin;
    size_t end = begin;
    while (end < line.size() && IsWordChar(line[end])) ++end;
    return Lowered(CString(line.substr(begin, end - begin)));
}

// What follows the first word, without blanks in front.
CString AfterFirstWord(const CString& line) {
    CString word = FirstWord(line);
    size_t at = Lowered(line).find(word) + word.size();
    while (at < line.size() && (line[at] == u' ' || line[at] == u'\t')) ++at;
    return CString(line.substr(std::min(at, line.size())));
}

bool Contains(const CString& text, const char16_t* part) { return text.find(part) != CString::npos; }

// Words that start statements or join them; using one as a variable name is
// a trap the message alone does not explain.
const char16_t* const kReservedWords[] = {
    u"next", u"to", u"loop", u"then", u"else", u"endif", u"do", u"for", u"if", u"end", u"stop",
    u"print", u"dim", u"global", u"goto", u"return", u"call", u"open", u"close", u"run", u"type",
    u"map", u"event", u"throw", u"watch", u"include", u"library",
};

bool IsReservedWord(const CString& word) {
    for (const char16_t* reserved : kReservedWords)
        if (word == reserved) return true;
    return false;
}

}  // namespace

// A defined variable (for error 37), function (21) or label (7) whose name
// is within two edits of `name`, or the same name in another letter case
// (globals and labels keep theirs); empty when nothing is close.
CString COrvoBasic::ClosestDefinedName(int id, const CString& name) const {
    CString wanted = Lowered(name);
    size_t limit = wanted.size() <= 3 ? 1 : 2;
    CString best;
    size_t bestDistance = limit + 1;
    auto consider = [&](const CString& candidate) {
        if (candidate == name) return;
        size_t d = Distance(wanted, Lowered(candidate), limit);
        if (d < bestDistance) {
            bestDistance = d;
            best = candidate;
        }
    };
    if (id == 21) {
        for (const auto& entry : m_functions) consider(entry.first);
        for (const auto& entry : m_ExtFunctionTable) consider(entry.first);
        return best;
    }
    if (id == 7) {
        for (const auto& entry : m_labels) consider(entry.first);
        return best;
    }
    CString suffix = CString(u"__#") + CString::FromUtf8(std::to_string(m_scopeLevel));
    for (const auto& entry : m_variables) {
        const CString& key = entry.first;
        if (!entry.second) continue;
        size_t mark = key.find(u"__#");
        if (mark == CString::npos) consider(key);   // a global, as declared
        else if (key.size() - mark == suffix.size() && key.compare(mark, suffix.size(), suffix) == 0)
            consider(CString(key.substr(0, mark)));
    }
    return best;
}

// One line on the trap a report most likely comes from.
CString COrvoBasic::HintFor(const ErrorRecord& r) const {
    CString first = FirstWord(r.sourceLine);
    CString rest = AfterFirstWord(r.sourceLine);
    bool assignsToWord = !rest.empty() && rest[0] == u'=' && (rest.size() < 2 || rest[1] != u'=');
    if ((r.id == 18 || r.id == 55 || r.id == 3) && assignsToWord && IsReservedWord(first))
        return CString(u"\"" + first + u"\" is a statement word and cannot name a variable");
    switch (r.id) {
    case 0:
        if (Contains(r.sourceLine, u">=")) return u"greater-or-equal is written \"=>\" in this language";
        if (first == u"print") return u"a \";\" or \",\" at the end of a print line expects another item";
        return CString();
    case 3:
    case 18:
        if (first == u"print") return u"print items are joined with \";\" or \",\", not with an operator";
        if (rest.size() > 0 && rest[0] == u'(') return u"a call as a statement is written \"call NAME(...)\"";
        if (rest.size() > 0 && rest[0] == u':')
            return u"labels and functions belong after the main program's \"end\"";
        return CString();
    case 28: return u"end the main program with \"end\" before the first function or sub";
    case 56: return u"every \"if\" needs its own \"endif\", also an \"if\" written on one line";
    case 20: return u"a function or sub is missing its \"endfunction\" or \"endsub\"";
    case 54: return u"a loop is written \"do while CONDITION\" ... \"loop\"";
    case 9: return Contains(r.sourceLine, u">=") ? u"greater-or-equal is written \"=>\" in this language" : CString();
    case 37:
        if (m_scopeLevel > 1 && !r.subject.empty() &&
            IsStored(CString(Lowered(r.subject) + u"__#1")))
            return u"variables of the main program are not visible in functions unless declared \"global\"";
        return CString();
    case 31:
        if (first == u"open") return u"open is written: open NAME for input|output|append as N [text]";
        return CString();
    default: return CString();
    }
}

// Fills the readable details of a record whose place is already known.
void COrvoBasic::AddDiagnostics(ErrorRecord& r) const {
    r.subject = m_errorSubject;
    r.osReason = m_errorOsError ? CString::FromUtf8(std::strerror(m_errorOsError)) : CString();
    r.subjectColumn = 0;
    if (!r.subject.empty() && r.column > 0) {
        size_t at = Lowered(r.sourceLine).find(Lowered(r.subject), static_cast<size_t>(r.column - 1));
        if (at != CString::npos) r.subjectColumn = static_cast<int>(at) + 1;
    }
    bool named = r.id == 37 || r.id == 21 || r.id == 7;
    r.suggestion = named && !r.subject.empty() ? ClosestDefinedName(r.id, r.subject) : CString();
    r.hint = HintFor(r);
}
