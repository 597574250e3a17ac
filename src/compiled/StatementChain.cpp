// Running statements one after another without the text path in between.
//
// Where the statement loop starts a statement it may find a compiled
// assignment, or the line end or statement word the text path read there
// before. Line ends, "endif", "next", "else", "loop", and "if" or "do" with a
// compiled condition are run here in a row: the cursor moves as the text
// path would move it, but the token the text path would leave behind is
// only put into the interpreter when the row ends. The row ends at the first
// statement it cannot run exactly; the statement loop then reads that one.
#include "compiled/CompiledStatements.h"

using namespace ob;

namespace {

// Words that are no statement by themselves: the text path reads them and
// goes on.
bool IsQuietWord(COMMAND_TYPE command) {
    return command == CMD_ENDIF || command == CMD_THEN || command == CMD_TO;
}

// Words that end the statements of a function or sub.
bool EndsBody(COMMAND_TYPE command) {
    return command == CMD_ENDFUNCTION || command == CMD_ENDSUB || command == CMD_RETURN;
}

}  // namespace

uint32_t& CompiledStatements::EntryAt(const COrvoBasic& basic, uint32_t start) {
    if (start >= m_entries.size()) m_entries.resize(std::max<size_t>(basic.m_length, start) + 1, 0);
    return m_entries[start];
}

void CompiledStatements::NoteStatementToken(COrvoBasic& basic, uint32_t start) {
    bool lineEnd = basic.m_tokenType == DELIMITER && basic.m_command == CMD_EOL;
    if (!lineEnd && basic.m_tokenType != COMMAND) return;
    uint32_t& entry = EntryAt(basic, start);
    if (!SecondSight(entry)) return;
    TokenState token{basic.m_pos, basic.m_token, basic.m_tokenType, TOKEN_NONE, basic.m_command, KW_NONE,
                     kKeepPendingIndex, FT_NONE};
    m_entryList.push_back(std::make_unique<Entry>(Entry{nullptr, std::move(token), nullptr, std::nullopt}));
    entry = static_cast<uint32_t>(m_entryList.size());
}

// `state` is what the text path leaves after the next statement; its own
// previous-token kind counts when it has one (states saved mid-statement).
void CompiledStatements::Advance(COrvoBasic& basic, Row& row, const TokenState& state, bool ownPrevious) {
    row.previous = ownPrevious ? state.previousType : (row.last ? row.last->type : basic.m_tokenType);
    row.last = &state;
    if (state.pendingIndex != kKeepPendingIndex) row.pendingIndex = state.pendingIndex;
    basic.m_pos = state.position;
}

// Leave, then `token` read at the cursor: the token state is that token's,
// with the row's last token as the one before it.
void CompiledStatements::TakeToken(COrvoBasic& basic, Row& row, const TokenState& token) {
    BASIC_TOKEN_TYPE previous = row.last ? row.last->type : basic.m_tokenType;
    if (row.last && token.pendingIndex == kKeepPendingIndex && row.pendingIndex != kKeepPendingIndex)
        basic.m_pendingIndex = row.pendingIndex;
    Restore(basic, token);
    basic.m_prevTokenType = previous;
    row = Row{};
}

// Puts the token state of the row into the interpreter; the cursor stays.
void CompiledStatements::Leave(COrvoBasic& basic, Row& row) {
    if (!row.last) return;
    uint32_t position = basic.m_pos;
    Restore(basic, *row.last);
    basic.m_prevTokenType = row.previous;
    if (row.pendingIndex != kKeepPendingIndex) basic.m_pendingIndex = row.pendingIndex;
    basic.m_pos = position;
    row = Row{};
}

bool CompiledStatements::RunStatementAt(COrvoBasic& basic, bool tokens, bool* bodyEnds) {
    Row row;
    bool ran = false;
    for (;;) {
        uint32_t start = basic.m_pos;
        // The statement loops look at a stop after every statement.
        if (row.ended || start >= m_entries.size() || m_entries[start] == 0 || m_entries[start] == kSeenOnce ||
            basic.m_halted || (ran && basic.m_stop))
            break;
        Entry& entry = *m_entryList[m_entries[start] - 1];
        if (!entry.assignment && entry.token.type == DELIMITER) {   // a line end: nothing to check or run
            if (basic.m_exprDepth == 0) basic.m_exprAbandoned = false;
            Advance(basic, row, entry.token, false);
            ran = true;
            continue;
        }
        if (!RunStep(basic, entry, row)) {
            if (bodyEnds && !entry.assignment && EndsBody(entry.token.command) && !basic.m_controlActive) {
                // Read as the body's statement loop reads it, which then returns.
                basic.m_stmtPos = basic.m_pos;
                TakeToken(basic, row, entry.token);
                *bodyEnds = true;
                return true;
            }
            if (ran || !tokens || entry.assignment) break;
            // A statement word the text path dispatches: it would read it again.
            BASIC_TOKEN_TYPE previous = basic.m_tokenType;
            Restore(basic, entry.token);
            basic.m_prevTokenType = previous;
            basic.DispatchStatement(entry.token.type);
            return true;
        }
        ran = true;
    }
    Leave(basic, row);
    return ran;
}

// Runs the statement of `entry` as the text path would; false (nothing
// done) when the text path must run it.
bool CompiledStatements::RunStep(COrvoBasic& basic, Entry& entry, Row& row) {
    if (basic.m_controlActive || basic.m_stopRequested.load(std::memory_order_relaxed)) return false;
    basic.m_stmtPos = basic.m_pos;
    if (basic.m_exprDepth == 0) basic.m_exprAbandoned = false;   // as at the start of every statement
    if (entry.assignment) {
        if (entry.assignment->callsScript) return RunCallingStep(basic, *entry.assignment, row);
        if (!Assign(basic, *entry.assignment)) return false;
        Advance(basic, row, entry.assignment->afterLine, true);
        return true;
    }
    return RunWord(basic, entry, row);
}

// An assignment that calls script functions: they run statements of their
// own, so the row's state goes into the interpreter first, as reading the
// target's name leaves it. When the statement needs the text path, the
// text path runs it here and the row ends.
bool CompiledStatements::RunCallingStep(COrvoBasic& basic, CompiledStatement& statement, Row& row) {
    TakeToken(basic, row, statement.start);
    if (RunCalling(basic, statement)) {
        Advance(basic, row, statement.afterLine, true);
        return true;
    }
    basic.putback();
    basic.assignment();
    row.ended = true;
    return true;
}

bool CompiledStatements::RunWord(COrvoBasic& basic, Entry& entry, Row& row) {
    COMMAND_TYPE command = entry.token.command;
    if (IsQuietWord(command)) {
        Advance(basic, row, entry.token, false);
        return true;
    }
    switch (command) {
    case CMD_IF: return RunCondition(basic, entry, row, StatementKind::If);
    case CMD_DO: return RunCondition(basic, entry, row, StatementKind::DoWhile);
    case CMD_ELSE:
        Advance(basic, row, entry.token, false);
        return SkipBlock(basic, entry, row, CMD_IF, CMD_ENDIF, CMD_ELSE, false);
    case CMD_NEXT: {
        if (basic.m_flowStack.empty()) return false;
        const CStackData& top = basic.m_flowStack.back();
        CBasicVariable* var = top.binding ? static_cast<const COrvoBasic::Binding*>(top.binding)->variable : nullptr;
        if (!var || var->HasChangeEvent()) return false;
        Advance(basic, row, entry.token, false);
        return RunNext(basic);
    }
    case CMD_LOOP:
        if (basic.m_flowStack.empty()) return false;
        Advance(basic, row, entry.token, false);
        basic.Rewind(basic.m_flowStack.back().position);
        basic.m_flowStack.pop_back();
        return true;
    default:
        return false;
    }
}

// "next" of a loop whose variable is bound and not watched: the text path's
// stepping without its stop check (a stop request ends the row before).
bool CompiledStatements::RunNext(COrvoBasic& basic) {
    CStackData& top = basic.m_flowStack.back();
    CBasicVariable* var = static_cast<const COrvoBasic::Binding*>(top.binding)->variable;
    if (!(var->IncrementInPlace() || var->Increment()) || var->GetNumberValue() > top.value) {
        basic.m_flowStack.pop_back();
        return true;
    }
    basic.Rewind(top.position);
    return true;
}

// "if" or "do while" with a compiled condition.
bool CompiledStatements::RunCondition(COrvoBasic& basic, Entry& entry, Row& row, StatementKind kind) {
    if (!entry.condition) {
        uint32_t key = entry.token.position;
        // the text path compiles it first
        if (key >= m_index.size() || m_index[key] < 2 || m_index[key] == kSeenOnce) return false;
        CompiledStatement* statement = m_statements[m_index[key] - 2].get();
        if (statement->kind != kind) return false;
        entry.condition = statement;
    }
    bool holds = false;
    if (!Holds(basic, *entry.condition, holds)) return false;
    uint32_t wordPosition = entry.token.position - static_cast<uint32_t>(entry.token.token.size());
    Advance(basic, row, entry.condition->end, true);
    if (kind == StatementKind::If) {
        return holds || SkipBlock(basic, entry, row, CMD_IF, CMD_ENDIF, CMD_ELSE, true);
    }
    if (holds) {
        basic.PushToStack(CString(), 0, wordPosition);
        return true;
    }
    return SkipBlock(basic, entry, row, CMD_DO, CMD_LOOP, CMD_NONE, false);
}

// Skips a block from the cursor as FindLastPair does. The first time the
// text path's skip runs on the interpreter's state; where it ended is kept
// (it depends on the text alone) when it ended without an error.
bool CompiledStatements::SkipBlock(COrvoBasic& basic, Entry& entry, Row& row, COMMAND_TYPE open,
                                   COMMAND_TYPE close, COMMAND_TYPE stop, bool elseEnds) {
    if (entry.skip) {
        Advance(basic, row, *entry.skip, true);
        return true;
    }
    Leave(basic, row);
    COMMAND_TYPE stopped = basic.FindLastPair(open, close, stop);
    // "if" may end at its "else" or "endif", "else" only at "endif".
    bool unmatched = open == CMD_IF && stopped != CMD_ENDIF && (!elseEnds || stopped != CMD_ELSE);
    if (unmatched) {
        basic.ReportError(56);
        row.ended = true;
        return true;
    }
    entry.skip = TokenState{basic.m_pos,     basic.m_token,   basic.m_tokenType,  basic.m_prevTokenType,
                            basic.m_command, basic.m_keyword, kKeepPendingIndex, FT_NONE};
    return true;
}
