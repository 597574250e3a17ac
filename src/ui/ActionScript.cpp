// The action-script language: the verb table, the line reader and the
// argument parsers.
#include "ui/ActionScript.h"

#include <orvobasic/desktop.h>

#include <cerrno>
#include <climits>
#include <string>

namespace ob::ui {

namespace {

CString Arg0Text(const Action& a) { return a.args[0].text; }
int Num(const Action& a, size_t i) { return static_cast<int>(a.args[i].number); }

// The verbs. A new verb adds a row here and, when it needs the desktop to do
// something new, a member to UiDriver.
const ActionVerb kVerbs[] = {
    {u"expect-dialog", "s", [](UiDriver& d, const Action& a) { return d.ExpectDialog(Arg0Text(a)); }},
    {u"type", "ns", [](UiDriver& d, const Action& a) { return d.Type(Num(a, 0), a.args[1].text); }},
    {u"click", "n", [](UiDriver& d, const Action& a) { return d.Click(Num(a, 0)); }},
    {u"select", "nv",
     [](UiDriver& d, const Action& a) {
         return a.args[1].isText ? d.SelectText(Num(a, 0), a.args[1].text) : d.SelectIndex(Num(a, 0), Num(a, 1));
     }},
    {u"check", "n", [](UiDriver& d, const Action& a) { return d.Check(Num(a, 0), true); }},
    {u"uncheck", "n", [](UiDriver& d, const Action& a) { return d.Check(Num(a, 0), false); }},
    {u"tab", "nn", [](UiDriver& d, const Action& a) { return d.Tab(Num(a, 0), Num(a, 1)); }},
    {u"slide", "nn", [](UiDriver& d, const Action& a) { return d.Slide(Num(a, 0), Num(a, 1)); }},
    {u"date", "nd", [](UiDriver& d, const Action& a) { return d.Date(Num(a, 0), a.args[1].time); }},
    {u"page", "n", [](UiDriver& d, const Action& a) { return d.Page(Num(a, 0)); }},
    {u"wait-ms", "n", [](UiDriver& d, const Action& a) { return d.Wait(Num(a, 0)); }},
    {u"snapshot", "", [](UiDriver& d, const Action&) { return d.Snapshot(); }},
    {u"ok", "", [](UiDriver& d, const Action&) { return d.Ok(); }},
    {u"cancel", "", [](UiDriver& d, const Action&) { return d.Cancel(); }},
    {u"close", "", [](UiDriver& d, const Action&) { return d.Close(); }},
    {u"answer", "y", [](UiDriver& d, const Action& a) { return d.Answer(Num(a, 0)); }},
    {u"menu", "v",
     [](UiDriver& d, const Action& a) { return a.args[0].isText ? d.MenuText(Arg0Text(a)) : d.MenuIndex(Num(a, 0)); }},
    {u"file", "c",
     [](UiDriver& d, const Action& a) { return a.args[0].isText ? d.File(Arg0Text(a)) : d.FileCancel(); }},
};

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r'; }

// Cuts a line into words; a quoted word keeps its blanks, and inside it \"
// and \\ stand for " and \. Quoted words are marked. False for an unclosed
// quote.
bool SplitWords(const CString& line, std::vector<ActionArg>& words) {
    size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && IsBlank(line[i])) ++i;
        if (i >= line.size()) break;
        ActionArg word;
        if (line[i] == u'"') {
            word.isText = true;
            for (++i;; ++i) {
                if (i >= line.size()) return false;
                if (line[i] == u'"') break;
                if (line[i] == u'\\' && i + 1 < line.size() && (line[i + 1] == u'"' || line[i + 1] == u'\\')) ++i;
                word.text.push_back(line[i]);
            }
            ++i;
        } else {
            while (i < line.size() && !IsBlank(line[i])) word.text.push_back(line[i++]);
        }
        words.push_back(std::move(word));
    }
    return true;
}

bool ParseInteger(const CString& text, long& value) {
    std::string ascii;
    for (char16_t c : text) {
        if (c > 127) return false;
        ascii.push_back(static_cast<char>(c));
    }
    if (ascii.empty()) return false;
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(ascii.c_str(), &end, 10);
    if (*end != '\0' || errno != 0 || v < INT_MIN || v > INT_MAX) return false;
    value = v;
    return true;
}

// The buttons of a Yes/No question by name.
bool ParseButton(const CString& word, long& button) {
    if (word == u"yes") button = IDYES;
    else if (word == u"no") button = IDNO;
    else if (word == u"cancel") button = IDCANCEL;
    else return false;
    return true;
}

// Reads "N1<sep>N2<sep>N3..." with exactly `count` numbers.
bool ParseFields(const CString& text, char16_t sep, int count, int* out) {
    size_t start = 0;
    for (int i = 0; i < count; ++i) {
        size_t end = i + 1 < count ? text.find(sep, start) : text.size();
        if (end == CString::npos) return false;
        long v = 0;
        if (!ParseInteger(CString(text.substr(start, end - start)), v) || v < 0) return false;
        out[i] = static_cast<int>(v);
        start = end + 1;
    }
    return true;
}

// "YYYY-MM-DD" and, when the next word holds a colon, "HH:MM" or "HH:MM:SS".
bool ParseDate(const std::vector<ActionArg>& words, size_t& w, SystemTime& time) {
    int ymd[3];
    if (words[w].isText || !ParseFields(words[w].text, u'-', 3, ymd)) return false;
    time = SystemTime{ymd[0], ymd[1], ymd[2], 0, 0, 0};
    ++w;
    if (w < words.size() && !words[w].isText && words[w].text.find(u':') != CString::npos) {
        int hms[3] = {0, 0, 0};
        int parts = words[w].text.find(u':') == words[w].text.rfind(u':') ? 2 : 3;
        if (!ParseFields(words[w].text, u':', parts, hms)) return false;
        time.hour = hms[0];
        time.minute = hms[1];
        time.second = hms[2];
        ++w;
    }
    return true;
}

// Fills the action's arguments from the words after the verb, as its
// pattern says; false with a reason.
bool ParseArgs(const ActionVerb& verb, const std::vector<ActionArg>& words, Action& action, CString& why) {
    size_t w = 1;
    for (const char* kind = verb.args; *kind; ++kind) {
        if (w >= words.size()) {
            why = u"missing argument";
            return false;
        }
        size_t at = w;
        ActionArg arg = words[w];
        bool ok = true;
        switch (*kind) {
        case 'n': ok = !arg.isText && ParseInteger(arg.text, arg.number); ++w; break;
        case 's': ok = arg.isText; ++w; break;
        case 'v': ok = arg.isText || ParseInteger(arg.text, arg.number); ++w; break;
        case 'w': ok = !arg.isText; arg.isText = true; ++w; break;
        case 'd': ok = ParseDate(words, w, arg.time); break;
        case 'y': ok = !arg.isText && ParseButton(arg.text, arg.number); ++w; break;
        case 'c': ok = arg.isText || arg.text == u"cancel"; ++w; break;
        default: ok = false; break;
        }
        if (!ok) {
            why = u"bad argument \"" + words[at].text + u"\"";
            return false;
        }
        action.args.push_back(std::move(arg));
    }
    if (w < words.size()) {
        why = u"too many arguments";
        return false;
    }
    return true;
}

CString LineNumber(int line) {
    std::string digits = std::to_string(line);
    return CString(std::u16string(digits.begin(), digits.end()));
}

}  // namespace

const ActionVerb* FindActionVerb(const CString& name) {
    for (const ActionVerb& verb : kVerbs)
        if (name == verb.name) return &verb;
    return nullptr;
}

bool ActionScript::Load(const CString& text, const CString& name, CString& error) {
    std::vector<Action> actions;
    int lineNumber = 0;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(u'\n', start);
        if (end == CString::npos) end = text.size();
        CString line(text.substr(start, end - start));
        start = end + 1;
        ++lineNumber;
        std::vector<ActionArg> words;
        CString why;
        bool ok = SplitWords(line, words);
        if (!ok) why = u"unclosed quote";
        if (ok && (words.empty() || (!words[0].isText && !words[0].text.empty() && words[0].text[0] == u'#')))
            continue;
        const ActionVerb* verb = ok ? FindActionVerb(words[0].isText ? CString() : words[0].text) : nullptr;
        if (ok && !verb) why = u"unknown action \"" + words[0].text + u"\"";
        Action action;
        action.verb = verb;
        action.line = lineNumber;
        if (verb && ParseArgs(*verb, words, action, why)) {
            actions.push_back(std::move(action));
            continue;
        }
        error = name + u":" + LineNumber(lineNumber) + u": " + why;
        return false;
    }
    m_actions = std::move(actions);
    m_next = 0;
    m_name = name;
    m_loaded = true;
    return true;
}

const Action* ActionScript::Next() {
    if (m_next >= m_actions.size()) return nullptr;
    return &m_actions[m_next++];
}

CString ActionScript::Run(const Action& action, UiDriver& driver) const {
    CString why = action.verb->run(driver, action);
    if (why.empty()) return why;
    return m_name + u":" + LineNumber(action.line) + u": " + action.verb->name + u": " + why;
}

}  // namespace ob::ui
