// Statements compiled on their first execution.
//
// An assignment of a numeric expression and the condition of an "if" are
// parsed once, with the interpreter's own tokenizer, into a small tree whose
// leaves name the text positions of their variables. Running the tree reads
// the variables through the same position bindings the text path uses and
// computes with the same arithmetic. Whenever the text path could report an
// error or behave differently (a name not defined, a value that is no
// number, an array where a single value is read, a subscript out of range,
// a watched target, budgets, a line hook, a stop request, deep nesting),
// nothing has been written yet and the statement runs on the text path from
// its start instead.
#pragma once

#include <orvobasic/COrvoBasic.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace ob {

// False when the environment variable OB_ENGINE is "text": every statement
// then runs on the text path (the differential tests compare both).
bool CompiledEngineWanted();

enum class NodeKind : uint8_t { Number, Variable, Element, Negate, Binary, Text, Call, ScriptCall };

// A variable name written at a fixed text position, with the store bindings
// that position looks it up through once they are known.
struct VariableRef {
    uint32_t position = 0;
    CString name;
    void* global = nullptr;   // the binding of the name as a global
    void* local = nullptr;    // the name's symbol, for the local of the current level
    unsigned level = 0;       // the scope level `levelBinding` belongs to (0: none yet)
    void* levelBinding = nullptr;
};

// The cursor and current token as the text path leaves them at a fixed point
// of a statement (they depend on the text alone).
struct TokenState {
    uint32_t position = 0;
    CString token;
    BASIC_TOKEN_TYPE type = TOKEN_NONE;
    BASIC_TOKEN_TYPE previousType = TOKEN_NONE;
    COMMAND_TYPE command = CMD_NONE;
    KEYWORD_TYPE keyword = KW_NONE;
    int pendingIndex = 0;
    FUNCTION_TYPE function = FT_NONE;
};

// A call of a script function: its arguments, and the token state the text
// path has when it enters the function (the argument list read, its ")"
// put back).
struct ScriptCallSite {
    static constexpr size_t kMaxArguments = 4;   // more: the call is not compiled
    std::vector<uint32_t> arguments;
    uint8_t computed = 0;   // bit i: argument i is arithmetic on numbers alone (no lone variable)
    TokenState atCall;
};

// One node of an expression tree; children are indices into the same vector.
struct ExprNode {
    NodeKind kind = NodeKind::Number;
    int op = 0;               // Binary: the arithmetic operation
    char16_t symbol = 0;      // Binary: its operator character
    uint32_t left = 0;        // Negate, Binary: operand; Element: subscript
    uint32_t right = 0;       // Binary: right operand
    double number = 0;        // Number
    VariableRef variable;     // Variable, Element
    // Text: the literal. Call: the built-in (its descriptor as found when
    // compiled, valid while the function table's epoch is unchanged), its
    // lower-case name, and its arguments in left, right, third.
    CString text;
    uint32_t third = 0;
    uint8_t argc = 0;
    FUNCTION_TYPE function = FT_NONE;
    const CFuncDesc* desc = nullptr;
    uint64_t epoch = 0;
    // ScriptCall: the function as above (`variable.position` is where its
    // name starts), its arguments and entry state.
    std::unique_ptr<ScriptCallSite> site;
};

// A value computed by a compiled expression with strings: a number (a
// double, or an integer as "len" and "instr" give them, which prints
// without decimals), or a text, read in place (a variable's or a literal's)
// or made here (`own`).
struct Scalar {
    enum class Kind : uint8_t { Double, Integer, Text };
    Kind kind = Kind::Double;
    // False for a stored value with more than its value (a field name or a
    // text buffer), which a copy of the whole variable would carry along.
    bool plain = true;
    double number = 0;
    const CString* text = nullptr;
    CString own;
    bool IsText() const { return kind == Kind::Text; }
    bool OwnsText() const { return text == &own; }
    void SetText(CString&& made) {
        kind = Kind::Text;
        own = std::move(made);
        text = &own;
    }
};

// Sets `target` (a variable of one value) to `value`.
void StoreScalar(CBasicVariable& target, const Scalar& value);
void StoreDouble(CBasicVariable& target, double value);

// TokenState::pendingIndex when the statement reads no variable token and so
// leaves the pending subscript as it was.
constexpr int kKeepPendingIndex = -0x5eed;

enum class StatementKind : uint8_t { Assignment, If, DoWhile };

struct CompiledStatement {
    StatementKind kind = StatementKind::Assignment;
    std::vector<ExprNode> nodes;
    // Assignment: the target and its subscript (when `indexed`), the value.
    VariableRef target;
    bool indexed = false;
    uint32_t subscript = 0;
    uint32_t value = 0;
    // If, DoWhile: the two sides of the comparison and its operation.
    uint32_t left = 0;
    uint32_t right = 0;
    int comparison = 0;
    int depth = 0;            // expression nesting the text path would reach
    TokenState end;           // after the statement (If: after "then")
    // Assignment ending at a line end: the state after that line end too,
    // for the statement loop, which would read it as a statement of its own.
    bool foldsLine = false;
    TokenState afterLine;
    // The value has texts or calls: computed as Scalar values.
    bool general = false;
    // "name = name + tail": appended in place when it may be; `value` is
    // then the "+" node and `tail` its right side.
    bool appends = false;
    uint32_t tail = 0;
    // The last call the text path reads, whose name and kind it leaves
    // current; -1 when there is none.
    int lastCall = -1;
    // The value is a lone variable or element, which the text path copies
    // whole: compiled only while that copy is the bare value.
    bool lone = false;
    // The value calls script functions. Their arguments are the only
    // variables read before a call, so that nothing read earlier can be
    // changed by a call; the target is found after the value, as the text
    // path finds it.
    bool callsScript = false;
    TokenState start;         // after the target's name (callsScript only)
};

class CompiledStatements {
public:
    // The statement beginning with the variable token just read: true when it
    // ran compiled; false when the text path must run it (nothing was done).
    bool RunAssignment(COrvoBasic& basic);
    // The statement loop is about to read a statement at the cursor: true
    // when a compiled assignment known to begin there ran, with the line end
    // after it read as well; false when the loop must read it (nothing done).
    // With `tokens`, a line end or statement word read there before is
    // taken as read again (without reading the text) and dispatched. With
    // `bodyEnds` (in a function body), a word that ends the body is taken
    // as read again and *bodyEnds set.
    bool RunStatementAt(COrvoBasic& basic, bool tokens, bool* bodyEnds = nullptr);
    // The statement loop has read the first token of the statement starting
    // at `start`: a line end or a statement word is remembered.
    void NoteStatementToken(COrvoBasic& basic, uint32_t start);
    // "if" just read: 1 or 0 as ExecIf returns, -1 when the text path must run it.
    int RunIf(COrvoBasic& basic);
    // "do" just read: as RunIf, for ExecDoWhile.
    int RunDoWhile(COrvoBasic& basic);
    // get_token at the cursor: true when the token read there before was
    // one whose reading depends on the text alone; the cursor and current
    // token are then set as reading it would set them.
    bool TakeKnownToken(COrvoBasic& basic) {
        uint32_t at = basic.GetPosition();
        if (at >= m_tokenIndex.size() || m_tokenIndex[at] == 0 || m_tokenIndex[at] == kSeenOnce) return false;
        ApplyKnownToken(basic, m_knownTokens[m_tokenIndex[at] - 1]);
        return true;
    }
    // get_token has read a token from `start`: remembered when its reading
    // depends on the text alone and reports nothing.
    void NoteToken(COrvoBasic& basic, uint32_t start);
    // While paused, tokens read are not remembered: the load-time scan reads
    // the whole text once, which says nothing about what runs often.
    void PauseNoting(bool paused) { m_notingPaused = paused; }
    // The text path is about to run the call whose name is the current
    // token: true when a compiled statement that then fell back to the text
    // path has run it already. `result` is then its value, and the cursor,
    // token and current call are as the function's return left them.
    bool TakeLoggedCall(COrvoBasic& basic, CBasicVariable& result) {
        return m_replayable > 0 && TakeLogged(basic, result);
    }
    // The text path starts a statement at call depth `depth`: calls logged
    // by statements at that depth or deeper are done with.
    void StartStatement(int depth) {
        if (m_callCount > 0) DropLogged(depth);
    }
    // The text changed: every compiled form is void.
    void Clear();
    // Sets the cursor and the current token to `state` (the function kind
    // of the last call read is left alone).
    static void Restore(COrvoBasic& basic, const TokenState& state);
    // Where get_token starts reading a token when the cursor is at `position`.
    static uint32_t TokenStartFrom(const COrvoBasic& basic, uint32_t position);

private:
    // The slots of the per-position tables below hold kSeenOnce after the
    // first sight of a position: what runs once is not worth remembering,
    // so a token, statement or entry is kept from its second sight on.
    static constexpr uint32_t kSeenOnce = UINT32_MAX;
    // True when `slot` is to be filled now (its second sight).
    static bool SecondSight(uint32_t& slot) {
        if (slot == 0) slot = kSeenOnce;
        else if (slot == kSeenOnce) return true;
        return false;
    }
    CompiledStatement* Lookup(COrvoBasic& basic, uint32_t key, StatementKind kind);
    static bool MayRun(const COrvoBasic& basic, const CompiledStatement& statement);
    static bool Evaluate(COrvoBasic& basic, std::vector<ExprNode>& nodes, uint32_t at, double& out);
    // Evaluate, with a number or a variable read here: most operands are one.
    static bool EvaluateOperand(COrvoBasic& basic, std::vector<ExprNode>& nodes, uint32_t at, double& out) {
        ExprNode& node = nodes[at];
        if (node.kind == NodeKind::Number) {
            out = node.number;
            return true;
        }
        if (node.kind != NodeKind::Variable) return Evaluate(basic, nodes, at, out);
        CBasicVariable* var = Find(basic, node.variable);
        if (!var || var->GetNumItems() != 1 || var->GetType() != BVT_NUMBER) return false;
        out = var->GetNumberValue();
        return true;
    }
    // The variable `ref` names now; bindings found before are read here,
    // also those of other levels (a recursive function reads its names at
    // a new level at every call).
    static CBasicVariable* Find(COrvoBasic& basic, VariableRef& ref) {
        if (ref.global) {
            auto* global = static_cast<COrvoBasic::Binding*>(ref.global);
            if (global->variable) return global->variable;
            unsigned level = basic.m_scopeLevel;
            if (ref.level != level) {
                const auto& byLevel = static_cast<COrvoBasic::Symbol*>(ref.local)->byLevel;
                if (level >= byLevel.size() || !byLevel[level]) return FindBinding(basic, ref);
                ref.levelBinding = byLevel[level];
                ref.level = level;
            }
            return static_cast<COrvoBasic::Binding*>(ref.levelBinding)->variable;
        }
        return FindBinding(basic, ref);
    }
    static CBasicVariable* FindBinding(COrvoBasic& basic, VariableRef& ref);
    // Values with texts and calls (CompiledValues.cpp).
    static bool EvaluateValue(COrvoBasic& basic, std::vector<ExprNode>& nodes, uint32_t at, Scalar& out);
    static bool CallBuiltIn(COrvoBasic& basic, std::vector<ExprNode>& nodes, ExprNode& call, Scalar& out,
                            std::optional<std::u16string_view>* part = nullptr);
    static bool Combine(COrvoBasic& basic, const ExprNode& node, Scalar& left, const Scalar& right);
    static bool StillBuiltIn(COrvoBasic& basic, ExprNode& call);
    static bool ConditionValue(COrvoBasic& basic, CompiledStatement& statement, bool& holds);
    static void NoteLastCall(COrvoBasic& basic, const ExprNode& call);
    bool AssignValue(COrvoBasic& basic, CompiledStatement& statement);
    static bool Create(COrvoBasic& basic, CompiledStatement& statement, const Scalar& value);
    // Calls of script functions (ScriptCalls.cpp).
    static bool CallScript(COrvoBasic& basic, std::vector<ExprNode>& nodes, ExprNode& call, Scalar& out);
    static bool StillScriptFunction(COrvoBasic& basic, ExprNode& call);
    bool RunCalling(COrvoBasic& basic, CompiledStatement& statement);
    bool TakeLogged(COrvoBasic& basic, CBasicVariable& result);
    void DropLogged(int depth);
    bool Append(COrvoBasic& basic, CompiledStatement& statement, CBasicVariable* var);
    bool Store(COrvoBasic& basic, CompiledStatement& statement, CBasicVariable* var, int index, Scalar& value,
               const std::optional<std::u16string_view>& part = std::nullopt);
    bool Assign(COrvoBasic& basic, CompiledStatement& statement);
    bool Condition(COrvoBasic& basic, uint32_t key, StatementKind kind, bool& holds);
    // Evaluates a compiled condition without moving the cursor; false when
    // the text path must run the statement.
    static bool Holds(COrvoBasic& basic, CompiledStatement& statement, bool& holds);

    // Per text position: 0 not yet seen, 1 not compilable, else 2 + slot.
    std::vector<uint32_t> m_index;
    std::vector<std::unique_ptr<CompiledStatement>> m_statements;
    // What the statement loop finds where it starts a statement: a compiled
    // assignment, or else the token it read there; for "if", "else" and
    // "do" also the compiled condition and where a skip of the block ends,
    // once the text path has found them.
    struct Entry {
        CompiledStatement* assignment = nullptr;
        TokenState token;
        CompiledStatement* condition = nullptr;
        std::optional<TokenState> skip;
    };
    // Per text position: 0, or 1 + the index of its entry.
    std::vector<uint32_t> m_entries;
    // Each on its own: a statement of a row may run script (a call, a
    // watch's event) that adds entries while the row holds on to its own.
    std::vector<std::unique_ptr<Entry>> m_entryList;
    // The token state the statements run in a row would have left; it is
    // put into the interpreter only when the row ends.
    struct Row {
        const TokenState* last = nullptr;   // null: the interpreter's own state is current
        BASIC_TOKEN_TYPE previous = TOKEN_NONE;
        int pendingIndex = kKeepPendingIndex;
        bool ended = false;                 // an error was reported: the statement loop goes on
    };
    static void Advance(COrvoBasic& basic, Row& row, const TokenState& state, bool ownPrevious);
    static void Leave(COrvoBasic& basic, Row& row);
    static void TakeToken(COrvoBasic& basic, Row& row, const TokenState& token);
    bool RunStep(COrvoBasic& basic, Entry& entry, Row& row);
    bool RunWord(COrvoBasic& basic, Entry& entry, Row& row);
    bool RunCallingStep(COrvoBasic& basic, CompiledStatement& statement, Row& row);
    bool RunCondition(COrvoBasic& basic, Entry& entry, Row& row, StatementKind kind);
    bool SkipBlock(COrvoBasic& basic, Entry& entry, Row& row, COMMAND_TYPE open, COMMAND_TYPE close,
                   COMMAND_TYPE stop, bool elseEnds);
    static bool RunNext(COrvoBasic& basic);
    uint32_t& EntryAt(const COrvoBasic& basic, uint32_t start);
    // Tokens by the position get_token started reading at: 0, or 1 + index.
    std::vector<uint32_t> m_tokenIndex;
    bool m_notingPaused = false;
    std::vector<TokenState> m_knownTokens;
    static void ApplyKnownToken(COrvoBasic& basic, const TokenState& token);
    CBasicVariable m_value;   // the computed value, stored as the text path stores its result
    // The calls of script functions that statements being evaluated have
    // run, innermost statement last. When a statement falls back to the
    // text path after a call ran, its calls stay here for the text path to
    // take instead of running them again.
    struct LoggedCall {
        uint32_t position = 0;   // where the call's name starts
        int depth = 0;           // the call depth of the statement
        bool replayable = false;
        // The value: a bare number (as `result` below), else `value`.
        bool numeric = false;
        Scalar result;
        CBasicVariable value;
        // What the function's return left (recorded for the last call of a
        // statement that falls back; an earlier call's is overwritten by
        // the reading of the next call's name before anything sees it).
        TokenState atReturn;
        CString functionName;
        int functionPosition = 0;
        const CFuncDesc* functionDesc = nullptr;
        uint64_t functionEpoch = 0;
        bool halted = false;
    };
    // Entries from m_callCount on are unused, kept to be used again.
    std::vector<LoggedCall> m_calls;
    size_t m_callCount = 0;
    struct CallFrame {
        CArgArray args;
        CBasicVariable result;
    };
    std::vector<std::unique_ptr<CallFrame>> m_frames;
    CallFrame& FrameAt(int depth);
    size_t m_replayable = 0;
    LoggedCall& Log(uint32_t position, int depth, uint32_t returnPosition);
};

// Parses one statement into its compiled form with the interpreter's own
// tokenizer, leaving the cursor and the token as it found them.
class StatementCompiler {
public:
    explicit StatementCompiler(COrvoBasic& basic) : m_basic(basic) {}
    // The variable token starting the statement has just been read.
    std::unique_ptr<CompiledStatement> CompileAssignment();
    // "if" or "do" has just been read.
    std::unique_ptr<CompiledStatement> CompileCondition(StatementKind kind);

private:
    struct Failed {};
    template <typename Body>
    std::unique_ptr<CompiledStatement> Attempt(Body body);
    TokenState Save() const;
    void Next();
    bool SafeAt(uint32_t position) const;
    uint32_t SkipBlanks(uint32_t position) const;
    uint32_t Expression();
    uint32_t Sum();
    uint32_t Product();
    uint32_t Power();
    uint32_t Signed();
    uint32_t Group();
    uint32_t Primary();
    uint32_t Subscript();
    uint32_t Call();
    uint32_t ScriptCall();
    uint32_t Literal();
    uint32_t Add(ExprNode node);
    void Enter();
    int Comparison();

    COrvoBasic& m_basic;
    CompiledStatement* m_out = nullptr;
    int m_depth = 0;
    bool m_scriptCalls = false;   // calls of script functions may be compiled
    int m_exposedReads = 0;       // variables read since the last script call's arguments
};

}  // namespace ob
