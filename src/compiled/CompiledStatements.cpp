// Running compiled statements, and the cache of them by text position.
#include "compiled/CompiledStatements.h"

#include "platform/NumberFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

using namespace ob;

namespace {

// The comparison operations as GetLogOperation numbers them.
enum { kEq = 1, kGt = 2, kLt = 3, kNe = 4, kGe = 5, kLe = 6, kApprox = 7 };

bool Compare(int op, double a, double b) {
    switch (op) {
    case kEq: return a == b;
    case kGt: return a > b;
    case kLt: return a < b;
    case kNe: return a != b;
    case kGe: return a >= b;
    case kLe: return a <= b;
    case kApprox: return std::fabs(a - b) < 1e-12;
    default: return false;
    }
}

}  // namespace

bool ob::CompiledEngineWanted() {
    const char* engine = std::getenv("OB_ENGINE");
    return !engine || std::strcmp(engine, "text") != 0;
}

void CompiledStatements::Clear() {
    m_calls.clear();
    m_callCount = 0;
    m_replayable = 0;
    m_index.clear();
    m_entries.clear();
    m_entryList.clear();
    m_tokenIndex.clear();
    m_knownTokens.clear();
    m_statements.clear();
}

void CompiledStatements::Restore(COrvoBasic& basic, const TokenState& state) {
    basic.m_pos = state.position;
    basic.m_token.assign(state.token);
    basic.m_tokenType = state.type;
    basic.m_prevTokenType = state.previousType;
    basic.m_command = state.command;
    basic.m_keyword = state.keyword;
    if (state.pendingIndex != kKeepPendingIndex) basic.m_pendingIndex = state.pendingIndex;
}

void CompiledStatements::NoteToken(COrvoBasic& basic, uint32_t start) {
    if (m_notingPaused) return;
    switch (basic.m_tokenType) {
    case DELIMITER:
        if (basic.m_command == CMD_FINISHED) return;   // the end of a text that may grow
        break;
    case QUOTE: {
        // Only a literal closed by its quote: any other end may be reported.
        uint32_t open = TokenStartFrom(basic, start);
        uint32_t close = open + 1 + static_cast<uint32_t>(basic.m_token.size());
        if (close >= basic.m_length || basic.m_text[close] != u'"' || basic.m_pos != close + 1) return;
        break;
    }
    case NUMBER: case COMMAND: case KEYWORD: case VARIABLE: case LABEL: case COMMENT:
        break;
    default:   // calls and dotted names depend on the tables and the store
        return;
    }
    if (start >= m_tokenIndex.size()) m_tokenIndex.resize(std::max<size_t>(basic.m_length, start) + 1, 0);
    if (!SecondSight(m_tokenIndex[start])) return;
    m_knownTokens.push_back(TokenState{basic.m_pos, basic.m_token, basic.m_tokenType, TOKEN_NONE, basic.m_command,
                                       basic.m_keyword, basic.m_tokenType == VARIABLE ? 0 : kKeepPendingIndex,
                                       FT_NONE});
    m_tokenIndex[start] = static_cast<uint32_t>(m_knownTokens.size());
}

void CompiledStatements::ApplyKnownToken(COrvoBasic& basic, const TokenState& token) {
    basic.m_prevTokenType = basic.m_tokenType;
    basic.m_pos = token.position;
    basic.m_token.assign(token.token);
    basic.m_tokenType = token.type;
    basic.m_command = token.command;
    basic.m_keyword = token.keyword;
    if (token.pendingIndex != kKeepPendingIndex) basic.m_pendingIndex = token.pendingIndex;
}

// The compiled form of the statement at `key`, compiled on its second
// sight; null before that and when it cannot be compiled.
CompiledStatement* CompiledStatements::Lookup(COrvoBasic& basic, uint32_t key, StatementKind kind) {
    if (key >= m_index.size()) m_index.resize(std::max<size_t>(basic.m_length, key) + 1, 0);
    if (m_index[key] == 0 || m_index[key] == kSeenOnce) {
        if (!SecondSight(m_index[key])) return nullptr;
        StatementCompiler compiler(basic);
        auto statement = kind == StatementKind::Assignment ? compiler.CompileAssignment()
                                                           : compiler.CompileCondition(kind);
        if (!statement) {
            m_index[key] = 1;
        } else {
            m_statements.push_back(std::move(statement));
            m_index[key] = static_cast<uint32_t>(m_statements.size() + 1);
        }
    }
    if (m_index[key] == 1) return nullptr;
    CompiledStatement* statement = m_statements[m_index[key] - 2].get();
    return statement->kind == kind ? statement : nullptr;
}

// Nothing that the text path checks between statements or inside an
// expression can come into play.
bool CompiledStatements::MayRun(const COrvoBasic& basic, const CompiledStatement& statement) {
    return !basic.m_controlActive && !basic.m_stopRequested.load(std::memory_order_relaxed) && !basic.m_halted &&
           !basic.m_exprAbandoned && basic.m_exprDepth + statement.depth < COrvoBasic::kStackCheckDepth;
}

// FindVariableAt for a name at a fixed position: the global of that spelling
// when there is one, else the local of the current level. The bindings live
// as long as the interpreter, so the reference keeps them.
CBasicVariable* CompiledStatements::FindBinding(COrvoBasic& basic, VariableRef& ref) {
    if (!ref.global) {
        basic.FindVariableAt(ref.position, ref.name);
        COrvoBasic::PositionFacts& facts = basic.FactsAt(ref.position);
        ref.global = facts.global;
        ref.local = facts.local;
    }
    auto* global = static_cast<COrvoBasic::Binding*>(ref.global);
    if (global->variable) return global->variable;
    if (ref.level != basic.m_scopeLevel) {
        ref.levelBinding = &basic.LocalBinding(*static_cast<COrvoBasic::Symbol*>(ref.local));
        ref.level = basic.m_scopeLevel;
    }
    return static_cast<COrvoBasic::Binding*>(ref.levelBinding)->variable;
}

// The value of node `at`; false when the text path would treat any operand
// differently (and nothing but the current element of arrays read has changed).
bool CompiledStatements::Evaluate(COrvoBasic& basic, std::vector<ExprNode>& nodes, uint32_t at, double& out) {
    ExprNode& node = nodes[at];
    switch (node.kind) {
    case NodeKind::Number:
        out = node.number;
        return true;
    case NodeKind::Variable: return EvaluateOperand(basic, nodes, at, out);
    case NodeKind::Element: {
        double subscript = 0;
        if (!Evaluate(basic, nodes, node.left, subscript)) return false;
        int index = ob::platform::TruncateToInt32(subscript);
        CBasicVariable* var = Find(basic, node.variable);
        if (!var || index < 0 || index >= var->GetNumItems()) return false;
        const CVarBase& item = var->GetItem(index);
        if (item.GetType() != BVT_NUMBER) return false;
        var->SetCurIndex(index);
        out = item.GetDoubleValue();
        return true;
    }
    case NodeKind::Negate:
        if (!Evaluate(basic, nodes, node.left, out)) return false;
        out = -out;
        return true;
    case NodeKind::Binary: {
        double right = 0;
        // Number operands are read in place: most operations have one.
        const ExprNode& second = nodes[node.right];
        if (!EvaluateOperand(basic, nodes, node.left, out)) return false;
        if (second.kind == NodeKind::Number)
            right = second.number;
        else if (!EvaluateOperand(basic, nodes, node.right, right))
            return false;
        switch (node.symbol) {
        case u'+': out += right; return true;
        case u'-': out -= right; return true;
        case u'*': out *= right; return true;
        case u'/': out /= right; return true;
        default: return basic.ComputeArithmetic(node.op, out, right);
        }
    }
    case NodeKind::Text: case NodeKind::Call: case NodeKind::ScriptCall:   // evaluated as Scalars
        return false;
    }
    return false;
}

// Evaluates and stores as the text path does; false (nothing stored) when
// the text path must run the statement.
bool CompiledStatements::Assign(COrvoBasic& basic, CompiledStatement& statement) {
    if (!MayRun(basic, statement)) return false;
    if (statement.general) return AssignValue(basic, statement);
    double subscript = 0, value = 0;
    if (statement.indexed && !Evaluate(basic, statement.nodes, statement.subscript, subscript)) return false;
    if (!Evaluate(basic, statement.nodes, statement.value, value)) return false;
    CBasicVariable* var = Find(basic, statement.target);
    if (!var || var->HasChangeEvent()) return false;
    int index = statement.indexed ? ob::platform::TruncateToInt32(subscript) : 0;
    if (statement.indexed ? (index < 0 || index >= var->GetNumItems()) : var->GetNumItems() != 1) return false;
    if (var->StoreNumber(index, value)) return true;
    var->SetCurIndex(index);
    m_value.SetValue(value);
    var->SetValue(m_value);
    return true;
}

bool CompiledStatements::RunAssignment(COrvoBasic& basic) {
    uint32_t key = basic.m_pos - static_cast<uint32_t>(basic.m_token.size());
    CompiledStatement* statement = Lookup(basic, key, StatementKind::Assignment);
    if (!statement || !(statement->callsScript ? RunCalling(basic, *statement) : Assign(basic, *statement)))
        return false;
    Restore(basic, statement->end);
    // Reached from the statement loop: next time the loop can start here.
    uint32_t start = basic.m_stmtPos;
    if (statement->foldsLine && TokenStartFrom(basic, start) == key) {
        uint32_t& entry = EntryAt(basic, start);
        if (entry == 0 || entry == kSeenOnce) {
            m_entryList.push_back(std::make_unique<Entry>(Entry{statement, {}, nullptr, std::nullopt}));
            entry = static_cast<uint32_t>(m_entryList.size());
        }
    }
    return true;
}

// Evaluates the condition of the "if" or "do" at `key` and leaves the
// cursor behind it; false when the text path must run the statement.
bool CompiledStatements::Condition(COrvoBasic& basic, uint32_t key, StatementKind kind, bool& holds) {
    CompiledStatement* statement = Lookup(basic, key, kind);
    if (!statement || !Holds(basic, *statement, holds)) return false;
    Restore(basic, statement->end);
    return true;
}

bool CompiledStatements::Holds(COrvoBasic& basic, CompiledStatement& statement, bool& holds) {
    if (!MayRun(basic, statement)) return false;
    if (statement.general) return ConditionValue(basic, statement, holds);
    double left = 0, right = 0;
    if (!EvaluateOperand(basic, statement.nodes, statement.left, left) ||
        !EvaluateOperand(basic, statement.nodes, statement.right, right))
        return false;
    holds = Compare(statement.comparison, left, right);
    return true;
}

int CompiledStatements::RunIf(COrvoBasic& basic) {
    bool holds = false;
    if (!Condition(basic, basic.m_pos, StatementKind::If, holds)) return -1;
    if (holds) return 1;
    COMMAND_TYPE stopped = basic.FindLastPair(CMD_IF, CMD_ENDIF, CMD_ELSE);
    if (stopped != CMD_ELSE && stopped != CMD_ENDIF) basic.ReportError(56);
    return 1;
}

int CompiledStatements::RunDoWhile(COrvoBasic& basic) {
    uint32_t doPosition = basic.m_pos - static_cast<uint32_t>(basic.m_token.size());
    bool holds = false;
    if (!Condition(basic, basic.m_pos, StatementKind::DoWhile, holds)) return -1;
    if (holds)
        basic.PushToStack(CString(), 0, doPosition);
    else
        basic.FindLastPair(CMD_DO, CMD_LOOP, CMD_NONE);
    return 1;
}
