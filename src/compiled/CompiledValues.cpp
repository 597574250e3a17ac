// Compiled expressions with texts and calls of the string built-ins. Values
// are Scalars; every conversion and every built-in uses the same functions
// the text path uses (CVarBase's number forms, CString's Left, Mid, Right,
// Find, the saturating argument conversion), so that the results are the
// same to the byte. Whatever the text path would report, or treat through
// its checked slices (texts of a megabyte and more), is left to it.
#include "compiled/CompiledStatements.h"

#include "engine/Capabilities.h"
#include "engine/Registry.h"
#include "platform/NumberFormat.h"

#include <cmath>
#include <new>

using namespace ob;
namespace pf = ob::platform;

namespace {

// Longest text a compiled expression makes or stores, in characters: the
// text path copies longer ones in slices, looking at the clock in between.
constexpr size_t kLongText = size_t{1} << 20;

double ToNumber(const Scalar& value) {
    return value.IsText() ? pf::ParseDouble(*value.text) : value.number;
}

// The text form of a value, as GetStringValue gives it.
const CString& ToText(const Scalar& value, CString& converted) {
    if (value.IsText()) return *value.text;
    converted = value.kind == Scalar::Kind::Integer ? CVarBase(static_cast<long>(value.number)).GetStringValue()
                                                    : CVarBase(value.number).GetStringValue();
    return converted;
}

// The arguments of one built-in call, each made as it is evaluated: most
// calls have fewer than the most any of them takes.
class Arguments {
public:
    Arguments() = default;
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    ~Arguments() {
        for (size_t i = 0; i < m_count; ++i) (*this)[i].~Scalar();
    }
    Scalar& Add() { return *new (m_storage + sizeof(Scalar) * m_count++) Scalar(); }
    Scalar& operator[](size_t i) { return *std::launder(reinterpret_cast<Scalar*>(m_storage + sizeof(Scalar) * i)); }

private:
    alignas(Scalar) unsigned char m_storage[3 * sizeof(Scalar)];
    size_t m_count = 0;
};

void SetNumber(Scalar& out, double number, Scalar::Kind kind = Scalar::Kind::Double) {
    out.kind = kind;
    out.number = number;
}

// A stored value read in place; false for what the compiled form does not
// handle (unset values, truth values, objects).
bool Read(const CVarBase& item, Scalar& out) {
    out.plain = item.GetFieldName().empty() && !item.HasStringBuffer();
    switch (item.GetVarType()) {
    case VT_R8: SetNumber(out, item.GetDoubleValue()); return true;
    case VT_I4: SetNumber(out, item.GetDoubleValue(), Scalar::Kind::Integer); return true;
    case VT_BSTR:
        out.kind = Scalar::Kind::Text;
        out.text = &item.StringRef();
        return true;
    default: return false;
    }
}

// The comparisons as GetLogOperation numbers them.
constexpr int kApproxComparison = 7;

template <typename T>
bool CompareAs(int op, const T& a, const T& b) {
    switch (op) {
    case 1: return a == b;
    case 2: return a > b;
    case 3: return a < b;
    case 4: return a != b;
    case 5: return a >= b;
    case 6: return a <= b;
    default: return false;
    }
}

bool CompareNumbers(int op, double a, double b) {
    return op == kApproxComparison ? std::fabs(a - b) < 1e-12 : CompareAs(op, a, b);
}

bool CompareTexts(int op, const CString& a, const CString& b) { return CompareAs(op, a, b); }

}  // namespace

// The name still finds the built-in it was compiled against (no host
// function has come to shadow it; after a change of the function table,
// looked up again) and the sandbox lets it be called.
bool CompiledStatements::StillBuiltIn(COrvoBasic& basic, ExprNode& call) {
    if (FindHostFunction(call.text)) return false;
    if (basic.m_functions.Epoch() != call.epoch) {
        const CFuncDesc* desc = basic.FindFuncDesc(call.text);
        if (!desc || desc->type != call.function || desc->handler != &COrvoBasic::ExecStringOperation) return false;
        call.desc = desc;
        call.epoch = basic.m_functions.Epoch();
    }
    return basic.IsAllowed(CapabilitiesOfCall(*call.desc));
}

// With `part`, the result of "left", "mid" or "right" of a text that
// outlives the call (a variable's or a literal's) is given there, seen in
// place, instead of being made in `out`.
bool CompiledStatements::CallBuiltIn(COrvoBasic& basic, std::vector<ExprNode>& nodes, ExprNode& call, Scalar& out,
                                     std::optional<std::u16string_view>* part) {
    if (!StillBuiltIn(basic, call)) return false;
    Arguments args;   // as many as the built-in takes, which the compiler saw
    const uint32_t at[3] = {call.left, call.right, call.third};
    for (uint8_t i = 0; i < call.argc; ++i)
        if (!EvaluateValue(basic, nodes, at[i], args.Add())) return false;
    if (call.function == FT_LEN) {
        // the length of a text as an integer; any other value gives the double 0
        if (args[0].IsText()) SetNumber(out, args[0].text->GetLength(), Scalar::Kind::Integer);
        else SetNumber(out, 0.0);
        return true;
    }
    CString converted;
    const CString& text = ToText(args[0], converted);
    std::u16string_view piece;
    switch (call.function) {
    case FT_LEFT: piece = text.MidView(0, pf::TruncateToInt32(ToNumber(args[1]))); break;
    case FT_RIGHT: piece = text.RightView(pf::TruncateToInt32(ToNumber(args[1]))); break;
    case FT_MID:
        piece = text.MidView(pf::TruncateToInt32(ToNumber(args[1])), pf::TruncateToInt32(ToNumber(args[2])));
        break;
    case FT_INSTR: {
        CString sought;
        SetNumber(out, text.Find(ToText(args[1], sought)), Scalar::Kind::Integer);
        return true;
    }
    case FT_LCASE: case FT_UCASE: {
        if (text.size() > kLongText) return false;
        CString copy = text;
        if (call.function == FT_LCASE) copy.MakeLower();
        else copy.MakeUpper();
        out.SetText(std::move(copy));
        return true;
    }
    default: return false;
    }
    if (part && args[0].IsText() && !args[0].OwnsText()) *part = piece;
    else out.SetText(CString(piece));
    return true;
}

// ComputeOperation: a text takes "+" only (the other side as text); a
// number takes the other side as a number, and the result is a double.
bool CompiledStatements::Combine(COrvoBasic& basic, const ExprNode& node, Scalar& left, const Scalar& right) {
    if (left.IsText()) {
        if (node.symbol != u'+') return false;
        CString converted;
        const CString& tail = ToText(right, converted);
        size_t length = left.text->size() + tail.size();
        if (length > kLongText) return false;
        if (left.OwnsText()) {
            left.own.append(tail);
        } else {
            CString joined;
            joined.reserve(length);
            joined.append(*left.text).append(tail);
            left.SetText(std::move(joined));
        }
        return true;
    }
    double a = left.number, b = ToNumber(right);
    switch (node.symbol) {
    case u'+': a += b; break;
    case u'-': a -= b; break;
    case u'*': a *= b; break;
    case u'/': a /= b; break;
    default: basic.ComputeArithmetic(node.op, a, b); break;
    }
    SetNumber(left, a);
    return true;
}

bool CompiledStatements::EvaluateValue(COrvoBasic& basic, std::vector<ExprNode>& nodes, uint32_t at, Scalar& out) {
    ExprNode& node = nodes[at];
    switch (node.kind) {
    case NodeKind::Number: SetNumber(out, node.number); return true;
    case NodeKind::Text:
        out.kind = Scalar::Kind::Text;
        out.text = &node.text;
        return true;
    case NodeKind::Variable: {
        CBasicVariable* var = Find(basic, node.variable);
        return var && var->GetNumItems() == 1 && Read(var->GetCurrent(), out);
    }
    case NodeKind::Element: {
        Scalar subscript;
        if (!EvaluateValue(basic, nodes, node.left, subscript)) return false;
        int index = pf::TruncateToInt32(ToNumber(subscript));
        CBasicVariable* var = Find(basic, node.variable);
        if (!var || index < 0 || index >= var->GetNumItems() || !Read(var->GetItem(index), out)) return false;
        var->SetCurIndex(index);
        return true;
    }
    case NodeKind::Negate:
        if (!EvaluateValue(basic, nodes, node.left, out)) return false;
        SetNumber(out, -ToNumber(out));
        return true;
    case NodeKind::Binary: {
        Scalar right;
        return EvaluateValue(basic, nodes, node.left, out) && EvaluateValue(basic, nodes, node.right, right) &&
               Combine(basic, node, out, right);
    }
    case NodeKind::Call: return CallBuiltIn(basic, nodes, node, out);
    case NodeKind::ScriptCall: return CallScript(basic, nodes, node, out);
    }
    return false;
}

// Stores as StoreAssignment stores a value of one element: `value`, or the
// text `part` when there is one.
bool CompiledStatements::Store(COrvoBasic& basic, CompiledStatement& statement, CBasicVariable* var, int index,
                               Scalar& value, const std::optional<std::u16string_view>& part) {
    size_t length = part ? part->size() : value.IsText() ? value.text->size() : 0;
    if (length > kLongText) return false;
    var->SetCurIndex(index);
    if (part) {
        var->AssignText(*part);
    } else {
        switch (value.kind) {
        case Scalar::Kind::Double:
            if (var->StoreNumber(index, value.number)) break;
            m_value.SetValue(value.number);
            var->SetValue(m_value);
            break;
        case Scalar::Kind::Integer: m_value.SetValue(static_cast<int>(value.number)); var->SetValue(m_value); break;
        case Scalar::Kind::Text:
            // "s = s" stores what is there already; anything else is copied in.
            if (value.text != &var->GetItem(index).StringRef()) var->AssignText(*value.text);
            break;
        }
    }
    if (statement.lastCall >= 0) NoteLastCall(basic, statement.nodes[static_cast<size_t>(statement.lastCall)]);
    return true;
}

// The text path leaves the last call it read as the current one. The name
// is the descriptor's whenever the descriptor and the table's epoch are
// those of the current call, so it is copied only when they are not.
void CompiledStatements::NoteLastCall(COrvoBasic& basic, const ExprNode& call) {
    basic.m_function = call.function;
    if (basic.m_curFuncDesc != call.desc || basic.m_curFuncEpoch != call.epoch) {
        basic.m_curFuncName = call.desc->name;
        basic.m_curFuncDesc = call.desc;
        basic.m_curFuncEpoch = call.epoch;
    }
    basic.m_curFuncPos = call.desc->bodyPosition;
}

// An assignment whose value has texts or calls; false (nothing stored) when
// the text path must run it.
bool CompiledStatements::AssignValue(COrvoBasic& basic, CompiledStatement& statement) {
    Scalar subscript, value;
    if (statement.indexed && !EvaluateValue(basic, statement.nodes, statement.subscript, subscript)) return false;
    // A call may make or remove the target: it is found after the value then.
    CBasicVariable* var = statement.callsScript ? nullptr : Find(basic, statement.target);
    if (var && statement.appends && var->GetNumItems() == 1 && var->GetCurrent().GetVarType() == VT_BSTR) {
        const ExprNode& plus = statement.nodes[statement.value];
        if (Find(basic, statement.nodes[plus.left].variable) == var) return Append(basic, statement, var);
    }
    // A part of a text the value is, is copied once: into the target.
    std::optional<std::u16string_view> part;
    ExprNode& top = statement.nodes[statement.value];
    if (top.kind == NodeKind::Call ? !CallBuiltIn(basic, statement.nodes, top, value, &part)
                                   : !EvaluateValue(basic, statement.nodes, statement.value, value))
        return false;
    if (statement.lone && !value.plain) return false;
    if (statement.callsScript) var = Find(basic, statement.target);
    if (!var) {
        if (part) value.SetText(CString(*part));
        return !statement.indexed && Create(basic, statement, value);
    }
    if (var->HasChangeEvent()) return false;
    int index = statement.indexed ? pf::TruncateToInt32(ToNumber(subscript)) : 0;
    if (statement.indexed ? (index < 0 || index >= var->GetNumItems()) : var->GetNumItems() != 1) return false;
    return Store(basic, statement, var, index, value, part);
}

void ob::StoreDouble(CBasicVariable& target, double value) {
    if (!target.StoreNumber(target.GetCurIndex(), value)) target.SetValue(value);
}

void ob::StoreScalar(CBasicVariable& target, const Scalar& value) {
    switch (value.kind) {
    case Scalar::Kind::Double: StoreDouble(target, value.number); break;
    case Scalar::Kind::Integer: target.SetValue(static_cast<int>(value.number)); break;
    case Scalar::Kind::Text: target.SetValue(*value.text); break;
    }
}

// A target not defined yet: made as StoreAssignment makes it. A function's
// value, set again at every call, goes back into the entry it had (a new
// variable there, as UndefineLocal left it).
bool CompiledStatements::Create(COrvoBasic& basic, CompiledStatement& statement, const Scalar& value) {
    if (value.IsText() && value.text->size() > kLongText) return false;
    auto* binding = static_cast<COrvoBasic::Binding*>(statement.target.levelBinding);   // set by Find
    if (binding && statement.target.level == basic.m_scopeLevel && binding->spare && binding->createdBytes) {
        StoreScalar(*binding->spare, value);
        basic.PlaceSpare(*binding, binding->createdBytes);
    } else {
        CBasicVariable made;
        StoreScalar(made, value);
        basic.CreateVariableAt(statement.target.name, made, 0);
    }
    if (statement.lastCall >= 0) NoteLastCall(basic, statement.nodes[static_cast<size_t>(statement.lastCall)]);
    return true;
}

// "name = name + tail" with a text in `var`: the tail is appended where it
// is, unless the copy the text path makes would end with other storage.
bool CompiledStatements::Append(COrvoBasic& basic, CompiledStatement& statement, CBasicVariable* var) {
    Scalar tail;
    if (!EvaluateValue(basic, statement.nodes, statement.tail, tail)) return false;
    CString converted;
    const CString& added = ToText(tail, converted);
    if (var->AppendInPlace(added)) {
        if (statement.lastCall >= 0) NoteLastCall(basic, statement.nodes[static_cast<size_t>(statement.lastCall)]);
        return true;
    }
    Scalar joined;
    joined.kind = Scalar::Kind::Text;
    joined.text = &var->GetCurrent().StringRef();
    if (!Combine(basic, statement.nodes[statement.value], joined, tail)) return false;
    return Store(basic, statement, var, 0, joined);
}

// ExecLogicalStatement: the left side's type decides how both compare; a
// text "~" another when it contains it.
bool CompiledStatements::ConditionValue(COrvoBasic& basic, CompiledStatement& statement, bool& holds) {
    Scalar left, right;
    if (!EvaluateValue(basic, statement.nodes, statement.left, left) ||
        !EvaluateValue(basic, statement.nodes, statement.right, right))
        return false;
    if (statement.lastCall >= 0) NoteLastCall(basic, statement.nodes[static_cast<size_t>(statement.lastCall)]);
    if (!left.IsText()) {
        holds = CompareNumbers(statement.comparison, left.number, ToNumber(right));
        return true;
    }
    CString converted;
    const CString& a = *left.text;
    const CString& b = ToText(right, converted);
    holds = statement.comparison == kApproxComparison ? a.find(b) != CString::npos
                                                      : CompareTexts(statement.comparison, a, b);
    return true;
}
