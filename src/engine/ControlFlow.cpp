// Labels, goto, if/else/endif, for/next, do while/loop and return. Control
// flow runs on the program text: a jump moves the cursor, a skipped block is
// read token by token, a loop goes back to a saved position.
#include <orvobasic/COrvoBasic.h>

#include "compiled/CompiledStatements.h"

using namespace ob;

bool COrvoBasic::LabelsFree() {
    m_labels.clear();
    return true;
}

bool COrvoBasic::LabelAdd(const CString& name, uint32_t position) {
    return m_labels.emplace(name, position).second;
}

bool COrvoBasic::LabelGet(const CString& name, uint32_t& position) const {
    auto it = m_labels.find(name);
    if (it == m_labels.end()) return false;
    position = it->second;
    return true;
}

// The load-time pass: enters labels and the definitions of functions and
// subs. A duplicate label is reported with message 6 and ends the scan.
bool COrvoBasic::LabelsScan() {
    LabelsFree();
    return ScanDefinitions(0);
}

// Enters the labels and the functions and subs defined from `from` on.
bool COrvoBasic::ScanDefinitions(uint32_t from) {
    if (from == 0 || !Rewind(from)) Rewind();
    struct QuietScan {
        ob::CompiledStatements* compiled;
        explicit QuietScan(ob::CompiledStatements* c) : compiled(c) { if (compiled) compiled->PauseNoting(true); }
        ~QuietScan() { if (compiled) compiled->PauseNoting(false); }
    } quiet(m_compiled.get());
    for (;;) {
        m_stmtPos = m_pos;
        uint32_t before = m_pos;
        BASIC_TOKEN_TYPE type = get_token();
        if (m_command == CMD_FINISHED) break;
        if (type == TOKEN_NONE && m_pos == before) NextChar();   // a character no token begins with
        if (type == LABEL && !LabelAdd(m_token, m_pos)) {
            ReportError(6);
            Rewind();
            return false;
        }
        if ((m_command == CMD_FUNCTION || m_command == CMD_SUB) && m_prevTokenType == DELIMITER) {
            get_token();
            auto desc = std::make_unique<CFuncDesc>();
            desc->name = m_token;
            desc->name.MakeLower();
            desc->bodyPosition = static_cast<int>(m_pos);
            if (AddFunction(desc.get())) desc.release();
        }
    }
    Rewind();
    return true;
}

bool COrvoBasic::ExecGoto() {
    if (StopRequestedAtJump()) return false;
    get_token();
    uint32_t position = 0;
    if (LabelGet(m_token, position) && Rewind(position)) return true;
    ReportErrorAbout(7, m_token);
    return false;
}

// Skips forward to the end of a block; returns the command that stopped it.
// Where a block ends depends on the text alone, so the answer for a start
// position is remembered and a loop that skips the same block again jumps.
// Blocks nested inside the skipped one are remembered by their opening word
// too: a later skip of an enclosing block jumps over them, so skipping out
// of deeply nested blocks one level after another stays linear.
COMMAND_TYPE COrvoBasic::FindLastPair(COMMAND_TYPE open, COMMAND_TYPE close, COMMAND_TYPE stop) {
    uint64_t key = (uint64_t{m_pos} << 18) | (uint64_t(open) << 12) | (uint64_t(close) << 6) | uint64_t(stop);
    auto cached = m_pairCache.find(key);
    if (cached != m_pairCache.end()) {
        const PairEnd& end = cached->second;
        m_pos = end.position;
        m_prevTokenType = m_tokenType;
        m_tokenType = end.tokenType;
        m_command = end.command;
        m_keyword = KW_NONE;
        m_token = end.token;
        return m_command;
    }
    std::vector<uint32_t> nested;   // openers of the inner blocks not yet closed
    for (;;) {
        uint32_t before = m_pos;
        if (get_token() == TOKEN_NONE && m_pos == before) NextChar();
        if (m_command == open) {
            uint64_t opener = BlockKey(m_pos - static_cast<uint32_t>(m_token.size()), open);
            auto known = m_blockEnds.find(opener);
            if (known != m_blockEnds.end())
                m_pos = known->second;
            else
                nested.push_back(m_pos - static_cast<uint32_t>(m_token.size()));
            continue;
        }
        if (m_command == close && !nested.empty()) {
            m_blockEnds.emplace(BlockKey(nested.back(), open), m_pos);
            nested.pop_back();
            continue;
        }
        if ((stop != CMD_NONE && nested.empty() && m_command == stop) || m_command == CMD_FINISHED ||
            m_command == CMD_ENDSUB || m_command == close) {
            m_pairCache.emplace(key, PairEnd{m_pos, m_tokenType, m_command, m_token});
            return m_command;
        }
    }
}

bool COrvoBasic::ExecIf() {
    if (m_compiled) {
        int compiled = m_compiled->RunIf(*this);
        if (compiled >= 0) return compiled != 0;
    }
    bool condition = ExecLogicalStatement();
    get_token();
    if (m_command != CMD_THEN) {
        ReportError(9);
        return false;
    }
    if (condition) return true;
    COMMAND_TYPE stopped = FindLastPair(CMD_IF, CMD_ENDIF, CMD_ELSE);
    if (stopped != CMD_ELSE && stopped != CMD_ENDIF) ReportError(56);
    return true;
}

// The true branch ran into its "else": skip to the matching "endif".
bool COrvoBasic::ExecElse() {
    if (FindLastPair(CMD_IF, CMD_ENDIF, CMD_ELSE) != CMD_ENDIF) ReportError(56);
    return true;
}

void COrvoBasic::PushToStack(const CString& name, double value, uint32_t position) {
    m_flowStack.push_back(CStackData{name, value, position, true});
}

bool COrvoBasic::PopFromStack(CStackData& entry) {
    if (m_flowStack.empty()) return false;
    entry = std::move(m_flowStack.back());
    m_flowStack.pop_back();
    return true;
}

// for VAR = START to LIMIT; the step is always 1 and the limit is read once.
bool COrvoBasic::ExecFor() {
    if (get_token() != VARIABLE) {
        ReportError(4);
        return false;
    }
    CString name = m_token;
    get_token();
    if (m_token != u"=") {
        ReportError(4);
        return false;
    }
    CBasicVariable value;
    get_exp(value);
    double start = value.GetNumberValue();
    if (!SetVariable(name, start, 0)) return false;
    get_token();
    if (m_command != CMD_TO) {
        ReportError(10);
        return false;
    }
    CBasicVariable limitValue;
    get_exp(limitValue);
    double limit = limitValue.GetNumberValue();
    if (limit >= start) {
        PushToStack(name, limit, m_pos);
        return true;
    }
    FindLastPair(CMD_FOR, CMD_NEXT, CMD_NONE);
    return true;
}

// Steps the loop variable of the innermost "for". Once the variable has been
// found by name, the entry keeps its binding and the entry stays on the
// stack while the loop goes on; a variable with a watch takes the path by
// name, on which its handler sees the stack without the entry.
bool COrvoBasic::ExecNext() {
    if (m_flowStack.empty()) return ExecNextByName();
    CStackData& top = m_flowStack.back();
    CBasicVariable* var = top.binding ? static_cast<const Binding*>(top.binding)->variable : nullptr;
    if (!var || var->HasChangeEvent()) return ExecNextByName();
    if (!var->Increment()) {
        m_flowStack.pop_back();
        return false;
    }
    if (var->GetNumberValue() > top.value) {
        m_flowStack.pop_back();
        return true;
    }
    if (m_stopRequested.load(std::memory_order_relaxed)) {
        m_flowStack.pop_back();
        return !StopRequestedAtJump();
    }
    Rewind(top.position);
    return true;
}

bool COrvoBasic::ExecNextByName() {
    CStackData entry;
    if (!PopFromStack(entry)) {
        ReportError(55);
        return false;
    }
    CBasicVariable* var = FindVariable(entry.name);
    if (!var) {
        ReportError(55);
        return false;
    }
    entry.binding = &BindingFor(entry.name);   // the name is now the store's key
    if (!var->Increment()) return false;
    if (var->GetNumberValue() > entry.value) return true;
    if (StopRequestedAtJump()) return false;
    uint32_t position = entry.position;
    PushToStack(entry);
    Rewind(position);
    return true;
}

// do while CONDITION; a false condition skips past the matching "loop".
bool COrvoBasic::ExecDoWhile() {
    if (m_compiled) {
        int compiled = m_compiled->RunDoWhile(*this);
        if (compiled >= 0) return compiled != 0;
    }
    uint32_t doPosition = m_pos - static_cast<uint32_t>(m_token.size());
    get_token();
    if (m_tokenType != KEYWORD) ReportError(1);
    if (m_keyword != KW_WHILE) {
        ReportError(54);
        return false;
    }
    if (ExecLogicalStatement())
        PushToStack(CString(), 0, doPosition);
    else
        FindLastPair(CMD_DO, CMD_LOOP, CMD_NONE);
    return true;
}

// Goes back to whatever entry is on top, pushed by "do" or by "for".
bool COrvoBasic::ExecLoop() {
    CStackData entry;
    if (!PopFromStack(entry)) return false;
    if (StopRequestedAtJump()) return false;
    return Rewind(entry.position);
}

bool COrvoBasic::ExecGosub() {
    get_token();
    uint32_t position = 0;
    if (!LabelGet(m_token, position)) {
        ReportError(7);
        return false;
    }
    PushPosition(m_pos);
    return Rewind(position);
}

bool COrvoBasic::ExecReturn() {
    if (m_scopeLevel < 2) {
        ReportError(14);
        return false;
    }
    --m_scopeLevel;
    uint32_t position = 0;
    if (!PopPosition(position)) return false;
    return Rewind(position);
}
