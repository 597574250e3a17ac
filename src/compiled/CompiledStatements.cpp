// Running compiled statements, and the cache of them by text position.
#include "compiled/CompiledStatements.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

using namespace ob;

namespace {

// A subscript from a number: truncated toward zero, saturated at the 32-bit
// range (NaN gives 0), as the text path reads one.
int TruncateToInt(double d) {
    if (!(d == d)) return 0;
    if (d >= 2147483647.0) return 2147483647;
    if (d <= -2147483648.0) return -2147483647 - 1;
    return static_cast<int>(d);
}

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
    m_index.clear();
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

// The compiled form of the statement at `key`, compiled on first sight;
// null when it cannot be compiled.
CompiledStatement* CompiledStatements::Lookup(COrvoBasic& basic, uint32_t key, StatementKind kind) {
    if (key >= m_index.size()) m_index.resize(std::max<size_t>(basic.m_length, key) + 1, 0);
    if (m_index[key] == 0) {
        StatementCompiler compiler(basic);
        auto statement = kind == StatementKind::If ? compiler.CompileIf() : compiler.CompileAssignment();
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

// The value of node `at`; false when the text path would treat any operand
// differently (and nothing but the current element of arrays read has changed).
bool CompiledStatements::Evaluate(COrvoBasic& basic, const std::vector<ExprNode>& nodes, uint32_t at,
                                  double& out) {
    const ExprNode& node = nodes[at];
    switch (node.kind) {
    case NodeKind::Number:
        out = node.number;
        return true;
    case NodeKind::Variable: {
        CBasicVariable* var = basic.FindVariableAt(node.position, node.name);
        if (!var || var->GetNumItems() != 1 || var->GetType() != BVT_NUMBER) return false;
        out = var->GetNumberValue();
        return true;
    }
    case NodeKind::Element: {
        double subscript = 0;
        if (!Evaluate(basic, nodes, node.left, subscript)) return false;
        int index = TruncateToInt(subscript);
        CBasicVariable* var = basic.FindVariableAt(node.position, node.name);
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
        if (!Evaluate(basic, nodes, node.left, out) || !Evaluate(basic, nodes, node.right, right)) return false;
        return basic.ComputeArithmetic(node.op, out, right);
    }
    }
    return false;
}

bool CompiledStatements::RunAssignment(COrvoBasic& basic) {
    uint32_t key = basic.m_pos - static_cast<uint32_t>(basic.m_token.size());
    CompiledStatement* statement = Lookup(basic, key, StatementKind::Assignment);
    if (!statement || !MayRun(basic, *statement)) return false;
    double subscript = 0, value = 0;
    if (statement->indexed && !Evaluate(basic, statement->nodes, statement->subscript, subscript)) return false;
    if (!Evaluate(basic, statement->nodes, statement->value, value)) return false;
    CBasicVariable* var = basic.FindVariableAt(statement->targetPosition, statement->target);
    if (!var || var->HasChangeEvent()) return false;
    int index = statement->indexed ? TruncateToInt(subscript) : 0;
    if (statement->indexed ? (index < 0 || index >= var->GetNumItems()) : var->GetNumItems() != 1) return false;
    var->SetCurIndex(index);
    m_value.SetValue(value);
    var->SetValue(m_value);
    Restore(basic, statement->end);
    return true;
}

int CompiledStatements::RunIf(COrvoBasic& basic) {
    CompiledStatement* statement = Lookup(basic, basic.m_pos, StatementKind::If);
    if (!statement || !MayRun(basic, *statement)) return -1;
    double left = 0, right = 0;
    if (!Evaluate(basic, statement->nodes, statement->left, left) ||
        !Evaluate(basic, statement->nodes, statement->right, right))
        return -1;
    Restore(basic, statement->end);
    if (Compare(statement->comparison, left, right)) return 1;
    COMMAND_TYPE stopped = basic.FindLastPair(CMD_IF, CMD_ENDIF, CMD_ELSE);
    if (stopped != CMD_ELSE && stopped != CMD_ENDIF) basic.ReportError(56);
    return 1;
}
