// Script events: the handler table, raising events, and the "event",
// "throw" and "watch" statements.
#include "engine/EventTable.h"

#include <orvobasic/COrvoBasic.h>

#include <algorithm>

using namespace ob;

namespace {

// Where the results of events raised without a result variable would go.
thread_local CBasicVariable t_discarded;

CString Lower(const CString& text) {
    CString lower = text;
    lower.MakeLower();
    return lower;
}

// Reads an event or function name: a plain identifier or a string literal.
bool ReadName(COrvoBasic& basic, CString& name) {
    BASIC_TOKEN_TYPE type = basic.get_token();
    if (type != VARIABLE && type != QUOTE) return false;
    name = basic.Token();
    return true;
}

// Reads a name that may be preceded by a comma ("event create E, f").
bool ReadSecondName(COrvoBasic& basic, CString& name) {
    BASIC_TOKEN_TYPE type = basic.get_token();
    if (type == DELIMITER && basic.Token() == u",") type = basic.get_token();
    if (type != VARIABLE && type != QUOTE) return false;
    name = basic.Token();
    return true;
}

}  // namespace

// Appends a handler to an event; a function already attached stays once.
bool COrvoBasic::EventAdd(const CString& event, const CString& function) {
    std::vector<CString>& list = m_events->handlers[Lower(event)];
    CString name = Lower(function);
    if (std::find(list.begin(), list.end(), name) == list.end()) list.push_back(name);
    return true;
}

// Detaches one handler; false when the event or the handler is unknown.
bool COrvoBasic::EventRemove(const CString& event, const CString& function) {
    auto it = m_events->handlers.find(Lower(event));
    if (it == m_events->handlers.end()) return false;
    auto found = std::find(it->second.begin(), it->second.end(), Lower(function));
    if (found == it->second.end()) return false;
    it->second.erase(found);
    return true;
}

// Drops an event with all its handlers.
bool COrvoBasic::EventRemove(const CString& event) { return m_events->handlers.erase(Lower(event)) > 0; }

// Runs the handlers of an event in attach order, each to its end, with the
// arguments; their results are discarded. The statement that raised the
// event finds its token state, cursor and operand list as it left them.
// Handlers also run after the main program has ended (resident scripts, the
// "OnStop" event): the stop flag is cleared for each one, and a handler that
// executes "end" stops the main program when that is still running.
// An event without handlers does nothing.
bool COrvoBasic::EventThrow(const CString& event, CArgArray& args) { return EventThrow(event, args, t_discarded); }

// The same, keeping what the last handler returned in `lastResult` (left
// as it was when no handler runs).
bool COrvoBasic::EventThrow(const CString& event, CArgArray& args, CBasicVariable& lastResult) {
    auto it = m_events->handlers.find(Lower(event));
    if (it == m_events->handlers.end() || it->second.empty()) return true;
    const bool keepResult = &lastResult != &t_discarded;
    const std::vector<CString> handlers = it->second;   // a handler may change the table

    // Everything a nested run of statements overwrites, restored on the way out.
    struct SavedState {
        COrvoBasic& b;
        CString token = b.m_token, memberName = b.m_memberName, funcName = b.m_curFuncName;
        BASIC_TOKEN_TYPE tokenType = b.m_tokenType, prevTokenType = b.m_prevTokenType;
        COMMAND_TYPE command = b.m_command;
        KEYWORD_TYPE keyword = b.m_keyword;
        FUNCTION_TYPE function = b.m_function;
        int funcPos = b.m_curFuncPos, pendingIndex = b.m_pendingIndex;
        const CFuncDesc* funcDesc = b.m_curFuncDesc;
        uint64_t funcEpoch = b.m_curFuncEpoch;
        uint32_t stmtPos = b.m_stmtPos, pos = b.m_pos;
        size_t operands = b.m_operands.size();
        bool stop = b.m_stop;
        ~SavedState() {
            b.m_token = token; b.m_memberName = memberName; b.m_curFuncName = funcName;
            b.m_tokenType = tokenType; b.m_prevTokenType = prevTokenType;
            b.m_command = command; b.m_keyword = keyword; b.m_function = function;
            b.m_curFuncPos = funcPos; b.m_pendingIndex = pendingIndex; b.m_stmtPos = stmtPos;
            b.m_curFuncDesc = funcDesc; b.m_curFuncEpoch = funcEpoch;
            b.m_pos = pos;
            if (b.m_operands.size() > operands) b.m_operands.resize(operands);
            b.m_stop = stop || b.m_stop;
        }
    } saved{*this};

    bool programEnded = m_stop || IsEndOfProgram();
    for (const CString& name : handlers) {
        m_stop = false;
        // Outside the program's flow, errors before the body runs (missing
        // arguments) are shown on the handler's definition line.
        CFuncDesc desc;
        if (programEnded && LookupFunction(name, desc, true) == FT_USER) m_stmtPos = desc.bodyPosition;
        CBasicVariable result;
        m_keepCallResult = keepResult;
        ExecUserFunction(name, result, args, true);
        m_keepCallResult = false;
        if (keepResult) lastResult = result;
        if (m_operands.size() > saved.operands) m_operands.resize(saved.operands);
    }
    return true;
}

// Raises an event with one argument; a null argument raises nothing.
bool COrvoBasic::EventThrow(const CString& event, CBasicVariable* arg) {
    if (!arg) return false;
    CArgArray args(1, *arg);
    return EventThrow(event, args);
}

bool COrvoBasic::EventsFree() {
    m_events->handlers.clear();
    return true;
}

// "event create|remove NAME, FUNCTION": attaches or detaches a handler.
bool COrvoBasic::ExecEvent() {
    CString event, function;
    KEYWORD_TYPE keyword = KW_NONE;
    int error = 0;
    if (get_token() != KEYWORD) error = 1;
    else keyword = m_keyword;
    if (!error && (!ReadName(*this, event) || !ReadSecondName(*this, function))) error = 1;
    if (!error && LookupFunction(function) == FT_NONE) error = 21;
    if (!error && keyword != KW_CREATE && keyword != KW_REMOVE) error = 40;
    if (error) {
        ReportError(error);
        FindEOL();
        return false;
    }
    return keyword == KW_CREATE ? EventAdd(event, function) : EventRemove(event, function);
}

// "throw NAME(args)": raises an event in this script.
bool COrvoBasic::ExecThrow() {
    if (get_token() != FUNCTION) {
        ReportError(1);
        FindEOL();
        return false;
    }
    CString event = m_token;
    size_t operands = m_operands.size();
    CArgArray args;
    GetParamList(args);
    if (get_token() != DELIMITER || m_token != u")") {   // GetParamList has reported it
        FindEOL();
        return false;
    }
    EventThrow(event, args);
    if (m_operands.size() > operands) m_operands.resize(operands);
    return true;
}

// "watch create VAR, EVENT" / "watch remove VAR": a change of the variable
// raises the event with the variable as its argument.
bool COrvoBasic::ExecWatch() {
    CString variable, event;
    KEYWORD_TYPE keyword = KW_NONE;
    int error = 0;
    if (get_token() != KEYWORD) error = 1;
    else keyword = m_keyword;
    if (!error && get_token() != VARIABLE) error = 1;
    if (!error) variable = m_token;
    if (!error && keyword == KW_CREATE && !ReadSecondName(*this, event)) error = 1;
    CBasicVariable* target = error ? nullptr : FindVariable(variable);
    if (!error && !target) error = 37;
    if (!error && keyword != KW_CREATE && keyword != KW_REMOVE) error = 40;
    if (error) {
        ReportError(error);
        FindEOL();
        return false;
    }
    if (keyword == KW_CREATE) target->SetChangeEvent(this, event);
    else target->RemoveChangeEvent();
    return true;
}
