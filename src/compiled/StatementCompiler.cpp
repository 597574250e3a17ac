// Parses an assignment or an "if" condition into a compiled statement. The
// parse follows the evaluator's levels step by step and reads every token
// with the interpreter's own tokenizer, so that it ends exactly where the
// text path ends; it gives up (the statement stays on the text path) at the
// first token the evaluator would treat in any other way than a number, a
// variable, an element, a sign, parentheses or an arithmetic operator.
#include "compiled/CompiledStatements.h"

#include "platform/CharClass.h"
#include "platform/NumberFormat.h"

using namespace ob;
namespace pf = ob::platform;

namespace {

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }
bool IsSkippedControl(char16_t c) { return c <= 9 || c == 11 || (c >= 14 && c <= 31); }
bool IsComparisonChar(char16_t c) { return c == u'=' || c == u'<' || c == u'>' || c == u'!' || c == u'~'; }

ExprNode MakeNode(NodeKind kind, int op, char16_t symbol, uint32_t left, uint32_t right, double number) {
    ExprNode node;
    node.kind = kind;
    node.op = op;
    node.symbol = symbol;
    node.left = left;
    node.right = right;
    node.number = number;
    return node;
}

}  // namespace

TokenState StatementCompiler::Save() const {
    const COrvoBasic& b = m_basic;
    return TokenState{b.m_pos, b.m_token, b.m_tokenType, b.m_prevTokenType, b.m_command, b.m_keyword,
                      b.m_pendingIndex, b.m_function};
}

uint32_t CompiledStatements::TokenStartFrom(const COrvoBasic& b, uint32_t position) {
    while (position < b.m_endIndex && IsBlank(b.m_text[position])) ++position;
    while (position < b.m_endIndex && IsSkippedControl(b.m_text[position])) ++position;
    return position;
}

uint32_t StatementCompiler::SkipBlanks(uint32_t position) const { return CompiledStatements::TokenStartFrom(m_basic, position); }

// True when reading the token at `position` has no effect beyond the cursor
// and the current token: no string literal (it may report an unclosed
// text when no quote closes it on its line), no dotted name (its kind
// depends on the store). A call's name is looked up in the function table,
// which sets what the current call is: Attempt puts that back.
bool StatementCompiler::SafeAt(uint32_t position) const {
    COrvoBasic& b = m_basic;
    if (position >= b.m_endIndex) return true;
    char16_t c = b.m_text[position];
    if (c == u'"') {
        for (uint32_t at = position + 1; at < b.m_endIndex; ++at) {
            if (b.m_text[at] == u'"') return true;
            if (b.m_text[at] == u'\n') return false;
        }
        return false;
    }
    if (!pf::IsAlpha(c)) return true;
    return b.IdentAt(position).dot < 0;
}

void StatementCompiler::Next() {
    if (!SafeAt(SkipBlanks(m_basic.m_pos))) throw Failed{};
    m_basic.get_token();
}

uint32_t StatementCompiler::Add(ExprNode node) {
    m_out->nodes.push_back(std::move(node));
    return static_cast<uint32_t>(m_out->nodes.size() - 1);
}

// One more nesting level of the evaluator (an expression, a parenthesis, a power).
void StatementCompiler::Enter() {
    ++m_depth;
    if (m_depth > m_out->depth) m_out->depth = m_depth;
}

// get_exp: an expression, then the token after it put back.
uint32_t StatementCompiler::Expression() {
    Enter();
    Next();
    if (m_basic.m_token.empty() && m_basic.m_tokenType != QUOTE) throw Failed{};
    uint32_t root = Sum();
    m_basic.putback();
    --m_depth;
    return root;
}

uint32_t StatementCompiler::Sum() {
    uint32_t left = Product();
    const CString& token = m_basic.m_token;
    while (!token.empty() && (token[0] == u'+' || token[0] == u'-')) {
        char16_t symbol = token[0];
        Next();
        uint32_t right = Product();
        left = Add(MakeNode(NodeKind::Binary, COrvoBasic::GetArithOperation(symbol), symbol, left, right, 0));
    }
    return left;
}

uint32_t StatementCompiler::Product() {
    uint32_t left = Power();
    const CString& token = m_basic.m_token;
    while (!token.empty() && (token[0] == u'*' || token[0] == u'/' || token[0] == u'%')) {
        char16_t symbol = token[0];
        Next();
        uint32_t right = Power();
        left = Add(MakeNode(NodeKind::Binary, COrvoBasic::GetArithOperation(symbol), symbol, left, right, 0));
    }
    return left;
}

// "^" groups to the right.
uint32_t StatementCompiler::Power() {
    uint32_t left = Signed();
    while (m_basic.m_token == u"^") {
        Enter();
        Next();
        uint32_t right = Power();
        --m_depth;
        left = Add(MakeNode(NodeKind::Binary, COrvoBasic::GetArithOperation(u'^'), u'^', left, right, 0));
    }
    return left;
}

// A sign; "+" changes nothing, not even the type of what follows.
uint32_t StatementCompiler::Signed() {
    char16_t sign = 0;
    if (m_basic.m_tokenType == DELIMITER && (m_basic.m_token == u"+" || m_basic.m_token == u"-")) {
        sign = m_basic.m_token[0];
        Next();
    }
    uint32_t operand = Group();
    if (sign == u'-') return Add(MakeNode(NodeKind::Negate, 0, 0, operand, 0, 0));
    return operand;
}

uint32_t StatementCompiler::Group() {
    if (m_basic.m_tokenType != DELIMITER || m_basic.m_token != u"(") return Primary();
    Enter();
    Next();
    uint32_t inner = Sum();
    if (m_basic.m_token != u")") throw Failed{};
    Next();
    --m_depth;
    return inner;
}

uint32_t StatementCompiler::Primary() {
    COrvoBasic& b = m_basic;
    if (b.m_tokenType == QUOTE) return Literal();
    if (b.m_tokenType == FUNCTION) return Call();
    if (b.m_tokenType == NUMBER) {
        uint32_t node = Add(MakeNode(NodeKind::Number, 0, 0, 0, 0, pf::ParseDouble(b.m_token)));
        Next();
        return node;
    }
    if (b.m_tokenType != VARIABLE) throw Failed{};
    ++m_exposedReads;
    ExprNode node = MakeNode(NodeKind::Variable, 0, 0, 0, 0, 0);
    node.variable.position = b.m_pos - static_cast<uint32_t>(b.m_token.size());
    node.variable.name = b.m_token;
    if (b.CurChar() == u'[') {
        Next();
        node.kind = NodeKind::Element;
        node.left = Subscript();
    }
    uint32_t at = Add(std::move(node));
    Next();
    return at;
}

uint32_t StatementCompiler::Literal() {
    ExprNode node;
    node.kind = NodeKind::Text;
    node.text = m_basic.m_token;
    uint32_t at = Add(std::move(node));
    m_out->general = true;
    Next();
    return at;
}

namespace {

// The built-ins a compiled call runs itself, with the number of arguments
// each takes ("len", "lcase" and "ucase" would ignore further ones; such a
// call stays on the text path).
struct CompiledBuiltIn {
    FUNCTION_TYPE type;
    uint8_t argc;
};
constexpr CompiledBuiltIn kCompiledBuiltIns[] = {
    {FT_LEN, 1}, {FT_LEFT, 2}, {FT_RIGHT, 2}, {FT_MID, 3}, {FT_INSTR, 2}, {FT_LCASE, 1}, {FT_UCASE, 1},
};

}  // namespace

// A call of a string built-in, read as GetParamList and ExecFunction read
// it: "(" arguments ")", the ")" put back and read again.
uint32_t StatementCompiler::Call() {
    COrvoBasic& b = m_basic;
    if (b.m_function == FT_USER && m_scriptCalls) return ScriptCall();
    const CompiledBuiltIn* builtIn = nullptr;
    for (const auto& candidate : kCompiledBuiltIns)
        if (candidate.type == b.m_function) builtIn = &candidate;
    if (!builtIn) throw Failed{};
    CString lower = b.m_token;
    lower.MakeLower();
    const CFuncDesc* desc = b.FindFuncDesc(lower);
    if (!desc || desc->type != builtIn->type || desc->handler != &COrvoBasic::ExecStringOperation) throw Failed{};
    ExprNode node;
    node.kind = NodeKind::Call;
    node.function = builtIn->type;
    node.desc = desc;
    node.epoch = b.m_functions.Epoch();
    node.text = std::move(lower);
    node.argc = builtIn->argc;
    uint32_t at = Add(std::move(node));
    m_out->general = true;
    m_out->lastCall = static_cast<int>(at);
    Next();
    if (b.m_token != u"(") throw Failed{};
    Next();
    if (b.m_token == u")") throw Failed{};
    b.putback();
    uint32_t args[3] = {0, 0, 0};
    size_t count = 0;
    do {
        if (count == builtIn->argc) throw Failed{};
        args[count++] = Expression();
        Next();
    } while (b.m_token == u",");
    if (count != builtIn->argc || b.m_token != u")") throw Failed{};
    b.putback();
    Next();
    Next();
    ExprNode& call = m_out->nodes[at];
    call.left = args[0];
    call.right = args[1];
    call.third = args[2];
    return at;
}

namespace {

// The expression whose nodes begin at `first` (its root last) computes a
// number from numbers and variables: no text, no call, no lone variable.
bool IsComputedNumber(const std::vector<ExprNode>& nodes, size_t first) {
    NodeKind root = nodes.back().kind;
    if (root == NodeKind::Variable || root == NodeKind::Element) return false;
    for (size_t i = first; i < nodes.size(); ++i) {
        NodeKind kind = nodes[i].kind;
        if (kind == NodeKind::Text || kind == NodeKind::Call || kind == NodeKind::ScriptCall) return false;
    }
    return true;
}

}  // namespace

// A call of a script function, read as GetParamList reads it. Nothing read
// before it may be read again after it (a variable the call could change):
// only its own arguments read variables, and they hold no calls.
uint32_t StatementCompiler::ScriptCall() {
    COrvoBasic& b = m_basic;
    if (m_exposedReads > 0 || b.m_capabilities != OB_CAP_ALL) throw Failed{};
    CString lower = b.m_token;
    lower.MakeLower();
    const CFuncDesc* desc = b.FindFuncDesc(lower);
    if (!desc || desc->type != FT_USER || desc->handler) throw Failed{};
    ExprNode node;
    node.kind = NodeKind::ScriptCall;
    node.function = FT_USER;
    node.desc = desc;
    node.epoch = b.FunctionEpoch();
    node.text = std::move(lower);
    node.variable.position = b.m_pos - static_cast<uint32_t>(b.m_token.size());
    node.site = std::make_unique<ScriptCallSite>();
    uint32_t at = Add(std::move(node));
    m_out->general = true;
    m_out->callsScript = true;
    Next();
    if (b.m_token != u"(") throw Failed{};
    Next();
    std::vector<uint32_t> arguments;
    uint8_t computed = 0;
    bool empty = b.m_token == u")";
    b.putback();
    if (!empty) {
        do {
            if (arguments.size() == ScriptCallSite::kMaxArguments) throw Failed{};
            size_t first = m_out->nodes.size();
            arguments.push_back(Expression());
            if (IsComputedNumber(m_out->nodes, first)) computed |= static_cast<uint8_t>(1u << (arguments.size() - 1));
            Next();
        } while (b.m_token == u",");
        if (b.m_token != u")") throw Failed{};
        b.putback();
    }
    for (size_t i = at + 1; i < m_out->nodes.size(); ++i)
        if (m_out->nodes[i].kind == NodeKind::Call || m_out->nodes[i].kind == NodeKind::ScriptCall) throw Failed{};
    ScriptCallSite& site = *m_out->nodes[at].site;
    site.arguments = std::move(arguments);
    site.computed = computed;
    site.atCall = Save();
    Next();
    Next();
    m_exposedReads = 0;
    // The function leaves the current call and the pending subscript as its
    // body left them; only what is read after it counts from here on.
    m_out->lastCall = -1;
    b.m_pendingIndex = kKeepPendingIndex;
    return at;
}

// GetIndex: "expression ]".
uint32_t StatementCompiler::Subscript() {
    uint32_t index = Expression();
    Next();
    if (m_basic.m_tokenType != DELIMITER || m_basic.m_token != u"]") throw Failed{};
    return index;
}

// GetLogOperation, once both of the characters it may read are known to be
// harmless to read.
int StatementCompiler::Comparison() {
    COrvoBasic& b = m_basic;
    uint32_t at = SkipBlanks(b.m_pos);
    if (at >= b.m_endIndex || !IsComparisonChar(b.m_text[at])) throw Failed{};
    if (!SafeAt(SkipBlanks(at + 1))) throw Failed{};
    int op = b.GetLogOperation();
    if (op == 0) throw Failed{};
    return op;
}

// Compiles one statement with `body`, which throws Failed where the text
// path must run it. The tokenizer is put back where it was either way: the
// statement runs next, compiled or not, from its start.
template <typename Body>
std::unique_ptr<CompiledStatement> StatementCompiler::Attempt(Body body) {
    COrvoBasic& b = m_basic;
    TokenState start = Save();
    CString functionName = b.m_curFuncName;
    int functionPosition = b.m_curFuncPos;
    const CFuncDesc* functionDesc = b.m_curFuncDesc;
    uint64_t functionEpoch = b.m_curFuncEpoch;
    auto statement = std::make_unique<CompiledStatement>();
    m_out = statement.get();
    bool ok = true;
    b.m_pendingIndex = kKeepPendingIndex;
    try {
        body(*statement);
    } catch (const Failed&) {
        ok = false;
    }
    bool readVariable = b.m_pendingIndex != kKeepPendingIndex;
    CompiledStatements::Restore(b, start);
    b.m_pendingIndex = start.pendingIndex;
    b.m_function = start.function;
    b.m_curFuncName = std::move(functionName);
    b.m_curFuncPos = functionPosition;
    b.m_curFuncDesc = functionDesc;
    b.m_curFuncEpoch = functionEpoch;
    if (!ok) return nullptr;
    statement->end.pendingIndex = readVariable ? 0 : kKeepPendingIndex;
    return statement;
}

std::unique_ptr<CompiledStatement> StatementCompiler::CompileAssignment() {
    return Attempt([this](CompiledStatement& compiled) {
        COrvoBasic& b = m_basic;
        CompiledStatement* statement = &compiled;
        statement->kind = StatementKind::Assignment;
        statement->start = Save();
        statement->start.pendingIndex = 0;   // as reading the target left it
        m_scriptCalls = true;
        statement->target.name = b.m_token;
        statement->target.position = b.m_pos - static_cast<uint32_t>(b.m_token.size());
        statement->indexed = b.CurChar() == u'[';
        if (statement->indexed) {
            Next();
            statement->subscript = Subscript();
        }
        Next();
        if (b.m_token.empty() || b.m_token[0] != u'=') throw Failed{};
        statement->value = Expression();
        // A lone variable (in parentheses or after "+" too) is copied whole:
        // compiled as a value, stored only while it is the bare value.
        NodeKind root = statement->nodes[statement->value].kind;
        if (root == NodeKind::Variable || root == NodeKind::Element) {
            statement->lone = true;
            statement->general = true;
        }
        const ExprNode& value = statement->nodes[statement->value];
        if (statement->general && !statement->indexed && value.kind == NodeKind::Binary && value.symbol == u'+' &&
            statement->nodes[value.left].kind == NodeKind::Variable) {
            statement->appends = true;
            statement->tail = value.right;
        }
        bool ends = (b.m_tokenType == DELIMITER && (b.m_command == CMD_EOL || b.m_command == CMD_FINISHED)) ||
                    b.m_tokenType == COMMENT;
        if (!ends) throw Failed{};
        statement->end = Save();
        if (b.m_command == CMD_EOL) {
            Next();
            statement->foldsLine = true;
            statement->afterLine = Save();
        }
    });
}

std::unique_ptr<CompiledStatement> StatementCompiler::CompileCondition(StatementKind kind) {
    return Attempt([this, kind](CompiledStatement& compiled) {
        COrvoBasic& b = m_basic;
        CompiledStatement* statement = &compiled;
        statement->kind = kind;
        if (kind == StatementKind::DoWhile) {
            Next();
            if (b.m_tokenType != KEYWORD || b.m_keyword != KW_WHILE) throw Failed{};
        }
        statement->left = Expression();
        statement->comparison = Comparison();
        statement->right = Expression();
        if (kind == StatementKind::If) {
            Next();
            if (b.m_tokenType != COMMAND || b.m_command != CMD_THEN) throw Failed{};
        }
        statement->end = Save();
    });
}
