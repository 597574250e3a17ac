// The expression evaluator: recursive descent straight from the token
// stream. Levels: + - (level2), * / % (level3), ^ right-associative (level4),
// unary sign (level5), parentheses (level6), primaries. Comparisons are not
// expressions; ExecLogicalStatement reads one comparison for conditions.
#include <orvobasic/COrvoBasic.h>

#include "platform/NumberFormat.h"
#include "platform/StackGuard.h"

#include <cmath>

using namespace ob;

namespace {

enum ARITHMETIC_OPERATION { AO_NONE = 0, AO_ADD = 1, AO_SUB = 2, AO_MUL = 3, AO_DIV = 4, AO_POW = 5, AO_MOD = 6 };
enum LOGICAL_OPERATION { LO_NONE, LO_EQ, LO_GT, LO_LT, LO_NE, LO_GE, LO_LE, LO_APPROX };

// Keeps the nesting count of the recursive levels and restores it on exit,
// also when an abort unwinds through.
struct DepthGuard {
    int& depth;
    explicit DepthGuard(int& d) : depth(++d) {}
    ~DepthGuard() { --depth; }
};

// Multiplications the power loop performs: the exponent less one, rounded up.
double RepeatedPower(double a, double b) {
    if (b == 0) return 1;
    double counter = b - 1;
    if (!(counter > 0)) return a;
    double steps = std::ceil(counter);
    if (steps > 1e6) return std::pow(a, steps + 1);   // same limit the loop would approach
    double r = a;
    for (long i = 0; i < static_cast<long>(steps); ++i) r *= a;
    return r;
}

}  // namespace

int COrvoBasic::GetArithOperation(char16_t c) {
    switch (c) {
    case u'+': return AO_ADD;
    case u'-': return AO_SUB;
    case u'*': return AO_MUL;
    case u'/': return AO_DIV;
    case u'^': return AO_POW;
    case u'%': return AO_MOD;
    default: return AO_NONE;
    }
}

// True when the expression nesting or the C++ stack has reached its bound;
// reports it once and abandons the rest of the statement, which then
// unwinds without further reports.
bool COrvoBasic::ExpressionTooDeep() {
    if (m_exprAbandoned || m_halted) return true;
    if (m_exprDepth <= kMaxExprDepth && (m_exprDepth < kStackCheckDepth || !platform::StackNearlyExhausted(1)))
        return false;
    ReportError(1);
    m_exprAbandoned = true;
    FindEOL();
    m_token.clear();
    m_tokenType = TOKEN_NONE;
    return true;
}

void COrvoBasic::get_exp(CBasicVariable& result) {
    DepthGuard guard(m_exprDepth);
    if (ExpressionTooDeep()) return;
    size_t outerStart = m_exprOperandStart;
    m_exprOperandStart = m_operands.size();
    get_token();
    if (m_token.empty() && m_tokenType != QUOTE) {
        ReportError(2);
    } else {
        level2(result);
        putback();
    }
    m_exprOperandStart = outerStart;
}

// A left-associative level: `next`, then while the token begins with one of
// `operators`, another `next` combined into the result.
void COrvoBasic::LeftAssociative(CBasicVariable& result, std::u16string_view operators,
                                 void (COrvoBasic::*next)(CBasicVariable&)) {
    (this->*next)(result);
    while (!m_exprAbandoned && !m_token.empty() && operators.find(m_token[0]) != operators.npos) {
        int op = GetArithOperation(m_token[0]);
        get_token();
        CBasicVariable right;
        (this->*next)(right);
        ComputeOperation(op, result, right);
    }
}

void COrvoBasic::level2(CBasicVariable& result) { LeftAssociative(result, u"+-", &COrvoBasic::level3); }

void COrvoBasic::level3(CBasicVariable& result) { LeftAssociative(result, u"*/%", &COrvoBasic::level4); }

void COrvoBasic::level4(CBasicVariable& result) {
    level5(result);
    while (!m_exprAbandoned && m_token == u"^") {
        DepthGuard guard(m_exprDepth);
        if (ExpressionTooDeep()) return;
        get_token();
        CBasicVariable right;
        level4(right);
        ComputeOperation(AO_POW, result, right);
    }
}

// A sign binds tighter than "^": -2^2 is 4.
void COrvoBasic::level5(CBasicVariable& result) {
    char16_t op = 0;
    if (m_tokenType == DELIMITER && (m_token == u"+" || m_token == u"-")) {
        op = m_token[0];
        get_token();
    }
    level6(result);
    if (op) unary(op, result);
}

void COrvoBasic::level6(CBasicVariable& result) {
    if (m_tokenType == DELIMITER && m_token == u"(") {
        DepthGuard guard(m_exprDepth);
        if (ExpressionTooDeep()) return;
        get_token();
        level2(result);
        if (m_exprAbandoned) return;
        if (m_token != u")") ReportError(1);
        get_token();
        return;
    }
    primitive(result);
}

void COrvoBasic::unary(char16_t op, CBasicVariable& value) {
    if (op == u'-') value.SetValue(-value.GetNumberValue());
}

void COrvoBasic::primitive(CBasicVariable& result) {
    switch (m_tokenType) {
    case VARIABLE:
        PrimitiveVariable(result);
        return;
    case STRUCT_MEMBER: {
        m_operands.emplace_back();
        CString name = m_token.Left(m_token.Find(u'.'));
        m_pendingIndex = 0;
        if (CurChar() == u'[') {
            get_token();
            if (!GetIndex(m_pendingIndex)) ReportError(1);
        }
        FindStructVariable(name, m_memberName, result, true);
        get_token();
        return;
    }
    case UNKNOWN_MEMBER:
        PrimitiveUnknownMember(result);
        return;
    case NUMBER: {
        m_operands.emplace_back();
        uint32_t start = m_pos - static_cast<uint32_t>(m_token.size());
        PositionFacts& facts = FactsAt(start);
        if (!facts.hasNumber) {
            facts.number = platform::ParseDouble(m_token);
            facts.hasNumber = true;
        }
        result.SetValue(facts.number);
        get_token();
        return;
    }
    case QUOTE:
        m_operands.emplace_back();
        result.SetValue(m_token);
        get_token();
        return;
    case FUNCTION:
        m_operands.emplace_back();
        ExecFunction(result);
        get_token();
        return;
    default:
        ReportError(0);   // id 0 has no text: the fallback box, then the line
        return;
    }
}

// A variable primary, optionally subscripted. An unknown name is reported
// and leaves the token in place.
void COrvoBasic::PrimitiveVariable(CBasicVariable& result) {
    bool first = m_operands.size() == m_exprOperandStart;
    uint32_t start = m_pos - static_cast<uint32_t>(m_token.size());
    CString name = m_token;
    if (first) {
        const CString* key = nullptr;
        FindVariableAt(start, name, &key);
        m_operands.emplace_back(key ? *key : GetVariableName(name));
    } else {
        m_operands.emplace_back();
    }
    bool indexed = CurChar() == u'[';
    int index = 0;
    if (indexed) {
        get_token();
        if (!GetIndex(index)) ReportError(1);
    }
    CBasicVariable* var = FindVariableAt(start, name);
    if (!var) {
        ReportErrorAbout(37, name);
        return;
    }
    if (!indexed) {
        if (!MayAllocate(static_cast<uint64_t>(var->ChargedBytes()))) return;
        result = *var;
    } else if (index < 0 || index >= var->GetNumItems()) {
        ReportError(36);
    } else {
        var->SetCurIndex(index);
        if (!MayAllocate(var->GetCurrent().HeapBytes())) return;
        result.SetValue(*var);
    }
    get_token();
}

// name.member that is no record field: a property of the automation object
// the variable holds.
void COrvoBasic::PrimitiveUnknownMember(CBasicVariable& result) {
    int dot = m_token.Find(u'.');
    CString name = m_token.Left(dot);
    CBasicVariable* var = FindVariable(name);
    if (!IsAllowed(OB_CAP_AUTOMATION)) {
        ReportError(21);   // like a denied method call
    } else if (!var) {
        ReportErrorAbout(37, name);
    } else if (var->GetType() != BVT_OBJECT) {
        m_operands.emplace_back();
        ReportError(31);
    } else {
        m_operands.emplace_back();
        GetObjectProperty(result, var->GetObjectValue(), m_token.Mid(dot + 1));
    }
    get_token();
}

bool COrvoBasic::ComputeOperation(int op, CBasicVariable& left, CBasicVariable& right) {
    switch (left.GetType()) {
    case BVT_NUMBER: {
        double a = left.GetNumberValue();
        bool ok = ComputeArithmetic(op, a, right.GetNumberValue());
        left.SetValue(a);
        return ok;
    }
    case BVT_STRING: {
        CString converted;
        const CString& b = right.GetType() == BVT_STRING ? right.GetCurrent().StringRef()
                                                         : (converted = right.GetStringValue());
        CString a;
        if (op == AO_ADD && !BuildConcatenation(left.GetCurrent().StringRef(), b, a)) return false;
        if (op != AO_ADD) a = left.GetStringValue();
        bool ok = ComputeString(op, a, b);
        left.SetValue(std::move(a));
        return ok;
    }
    default:
        ReportError(18);
        return false;
    }
}

// Division by zero gives infinity or NaN; "%" is a - (a / b) * b without
// truncation; "^" repeats the multiplication (see RepeatedPower).
bool COrvoBasic::ComputeArithmetic(int op, double& a, double b) {
    switch (op) {
    case AO_ADD: a += b; return true;
    case AO_SUB: a -= b; return true;
    case AO_MUL: a *= b; return true;
    case AO_DIV: a /= b; return true;
    case AO_POW: a = RepeatedPower(a, b); return true;
    case AO_MOD: a = a - (a / b) * b; return true;
    default: ReportError(14); return false;
    }
}

// Copies `left` into `out`, with room for `right` too, in slices so that a
// huge concatenation still notices the budgets and a stop request in time.
bool COrvoBasic::BuildConcatenation(const CString& left, const CString& right, CString& out) {
    if (!MayAllocate((left.size() + right.size()) * sizeof(char16_t))) return false;
    out.reserve(left.size() + right.size());
    for (size_t at = 0; at < left.size(); at += kConcatSlice) {
        if (at && !MayContinue(kConcatSlice * sizeof(char16_t))) return false;
        out.append(left, at, kConcatSlice);
    }
    return true;
}

bool COrvoBasic::ComputeString(int op, CString& a, const CString& b) {
    if (op == AO_ADD) {
        for (size_t at = 0; at < b.size(); at += kConcatSlice) {
            if (at && !MayContinue(kConcatSlice * sizeof(char16_t))) return false;
            a.append(b, at, kConcatSlice);
        }
        return true;
    }
    ReportError(14);
    return false;
}

// Reads a comparison operator. Greater-or-equal is spelled "=>" in this
// language; ">=" and "=<" are not operators.
int COrvoBasic::GetLogOperation() {
    static constexpr std::u16string_view kSpellings = u"=<>!=<==>~~";
    if (get_token() != DELIMITER) return LO_NONE;
    CString op = m_token;
    get_token();
    if (m_tokenType == DELIMITER && m_token.size() == 1 && kSpellings.find(m_token[0]) != kSpellings.npos)
        op += m_token;
    else
        putback();
    size_t at = op.empty() ? kSpellings.npos : kSpellings.find(op);
    if (at == kSpellings.npos) return LO_NONE;
    static constexpr int kOne[] = {LO_EQ, LO_LT, LO_GT, LO_NONE, 0, 0, 0, 0, 0, LO_NONE};
    static constexpr int kTwo[] = {LO_NONE, LO_NE, LO_NONE, LO_NE, 0, LO_LE, LO_EQ, LO_GE, 0, LO_APPROX};
    if (at >= std::size(kOne)) return LO_NONE;
    return op.size() == 1 ? kOne[at] : kTwo[at];
}

namespace {

template <typename T>
bool Compare(int op, const T& a, const T& b) {
    switch (op) {
    case LO_EQ: return a == b;
    case LO_GT: return a > b;
    case LO_LT: return a < b;
    case LO_NE: return a != b;
    case LO_GE: return a >= b;
    case LO_LE: return a <= b;
    default: return false;
    }
}

}  // namespace

bool COrvoBasic::ExecLogicalStatement() {
    CBasicVariable left;
    get_exp(left);
    int op = GetLogOperation();
    if (op == LO_NONE) {
        ReportError(0);
        return false;
    }
    CBasicVariable right;
    get_exp(right);
    switch (left.GetType()) {
    case BVT_NUMBER: {
        double a = left.GetNumberValue(), b = right.GetNumberValue();
        if (op == LO_APPROX) return std::fabs(a - b) < 1e-12;
        return Compare(op, a, b);
    }
    case BVT_STRING: {
        CString a = left.GetStringValue(), b = right.GetStringValue();
        if (op == LO_APPROX) return a.find(b) != CString::npos;
        return Compare(op, a, b);
    }
    default:
        return false;
    }
}
