// Script functions and subs: executed in place by jumping to the definition,
// running its statements one scope level up, and jumping back. A function's
// value is the variable bearing its own name at its level.
#include <orvobasic/COrvoBasic.h>

#include "compiled/CompiledStatements.h"
#include "functions/ArgListScope.h"

#include "platform/LargeStack.h"
#include "platform/StackGuard.h"

#include <utility>

using namespace ob;

// Binds the arguments to the parameter names of the definition; surplus
// arguments are ignored, missing ones are error 24. With `record`, the
// names read are noted there.
bool COrvoBasic::BindParameters(CArgArray& args, ParamList* record) {
    get_token();
    if (m_token != u"(") {
        ReportError(23);
        return false;
    }
    get_token();
    if (m_token == u")") return true;
    for (size_t i = 0;; ++i) {
        if (m_tokenType != VARIABLE) {
            ReportError(23);
            return false;
        }
        if (i >= args.size()) {
            ReportError(24);
            return false;
        }
        uint32_t at = m_pos - static_cast<uint32_t>(m_token.size());
        if (record) record->names.emplace_back(at, m_token);
        if (CBasicVariable* var = FindVariableAt(at, m_token)) var->Set(args[i]);
        else CopyVariable(m_token, args[i], false);
        get_token();
        if (m_token == u")") return true;
        if (m_token != u",") {
            ReportError(23);
            return false;
        }
        get_token();
    }
}

// BindParameters for the definition at `bodyPosition`: a list that was read
// without error once is bound from its notes, leaving the cursor and token
// where reading it would; anything else (too few arguments among it) is read.
bool COrvoBasic::BindDecodedParameters(uint32_t bodyPosition, CArgArray& args) {
    uint32_t index = FactsAt(bodyPosition).params;
    if (index == 0) {
        ParamList list;
        if (!BindParameters(args, &list)) return false;
        list.end = m_pos;
        list.previousType = m_prevTokenType;
        m_paramLists.push_back(std::move(list));
        FactsAt(bodyPosition).params = static_cast<uint32_t>(m_paramLists.size());
        return true;
    }
    const ParamList& list = m_paramLists[index - 1];
    if (args.size() < list.names.size()) return BindParameters(args, nullptr);
    for (size_t i = 0; i < list.names.size(); ++i) {
        const auto& [at, name] = list.names[i];
        if (CBasicVariable* var = FindVariableAt(at, name)) var->Set(args[i]);
        else CopyVariable(name, args[i], false);
    }
    m_pos = list.end;
    m_token.assign(1, u')');
    m_prevTokenType = list.previousType;
    m_tokenType = DELIMITER;
    m_command = CMD_NONE;
    m_keyword = KW_NONE;
    if (!list.names.empty()) m_pendingIndex = 0;   // as reading a variable name leaves it
    return true;
}

// Runs the statements of a body until "endfunction", "endsub" or "return".
bool COrvoBasic::RunFunctionBody() {
    FindEOL();
    for (;;) {
        m_stmtPos = m_pos;
        bool ends = false;
        if (m_compiled && m_compiled->RunStatementAt(*this, false, &ends)) {
            if (ends) return true;
            if (m_stop) return false;
            continue;
        }
        uint32_t before = m_pos;
        BASIC_TOKEN_TYPE type = get_token();
        if (m_compiled) m_compiled->NoteStatementToken(*this, m_stmtPos);
        if (m_command == CMD_ENDFUNCTION || m_command == CMD_ENDSUB || m_command == CMD_RETURN) return true;
        if (m_command == CMD_FINISHED) {
            ReportError(20);
            return false;
        }
        DispatchStatement(type);
        if (m_stop) return false;
        if (type == TOKEN_NONE && m_pos == before) NextChar();
    }
}

// Leaves a function: one scope level down, back to the saved position.
void COrvoBasic::PerformReturn() {
    if (m_scopeLevel == 2 && CVarBase::HeldObjectCount() > 0) ObjectVariablesFree(2);   // the outermost call's objects
    if (m_scopeLevel >= 2) --m_scopeLevel;
    uint32_t position = 0;
    if (PopPosition(position)) Rewind(position);
}

bool COrvoBasic::ExecUserFunction(const CString& name, CBasicVariable& result, CArgArray& args, bool isCall) {
    return ExecUserFunction(name, result, args, isCall, CallTarget{});
}

// `target`: what the call site found, taken when no function table has
// changed since; otherwise the name is looked up now.
bool COrvoBasic::ExecUserFunction(const CString& name, CBasicVariable& result, CArgArray& args, bool isCall,
                                  const CallTarget& target) {
    const CFuncDesc* desc = target.desc;
    if (!desc || target.epoch != FunctionEpoch()) {
        CString lower = name;
        lower.MakeLower();
        desc = FindFuncDesc(lower);
    }
    if (!desc) {
        ReportErrorAbout(21, name);
        return false;
    }
    if (!CallAllowed(*desc)) return false;
    if (desc->type == FT_CUSTOM) return ExecCustomFunction(*desc, result, args);
    if (desc->type == FT_DECLARED) return ExecExternalFunction(*desc, result, args);
    if (desc->handler) return (this->*desc->handler)(result, args, desc->type);
    if (desc->type != FT_USER) {
        ReportError(21);
        return false;
    }
    if (!platform::OnLargeStack()) {   // an event or timer from the host: give the call a deep stack
        bool ok = false;
        platform::RunOnLargeStack([&] { ok = ExecUserFunction(name, result, args, isCall, target); });
        return ok;
    }
    return ExecScriptFunction(*desc, name, result, args, isCall);
}

// Restores the caller's state when a script function ends, also when an
// abort unwinds through it: the return itself, the call chain, the depth
// counters and the statement the caller was executing.
struct COrvoBasic::CallScope {
    COrvoBasic& basic;
    uint32_t callerStatement;
    int callerExprDepth;
    uint64_t callerTransientBase;
    bool chainPopped = false;
    ~CallScope() {
        // The body's copies are gone; the caller's (its arguments) still count.
        basic.m_transient = basic.m_transientBase;
        basic.m_transientBase = callerTransientBase;
        basic.PerformReturn();
        if (!chainPopped) basic.m_callChain.pop_back();
        --basic.m_callDepth;
        basic.m_stmtPos = callerStatement;
        basic.m_exprDepth = callerExprDepth;
        basic.m_exprAbandoned = basic.m_halted;
    }
};

// Runs a script function in place: one scope level up, at its definition,
// then back. Its value is the variable bearing its name at its level.
bool COrvoBasic::ExecScriptFunction(const CFuncDesc& desc, const CString& name, CBasicVariable& result,
                                    CArgArray& args, bool isCall, NumberResult* number) {
    bool keepResult = std::exchange(m_keepCallResult, false);
    if (m_halted || StopRequestedAtJump()) return false;
    if (m_budgets.maxDepth && m_callDepth >= m_budgets.maxDepth) {
        EndRun(OB_E_DEPTH);
        return false;
    }
    if (m_callDepth >= kMaxCallDepth || (m_callDepth >= kStackCheckDepth && platform::StackNearlyExhausted(2))) {
        ReportError(13);
        return false;
    }
    auto bodyPosition = static_cast<uint32_t>(desc.bodyPosition);
    CallScope scope{*this, m_stmtPos, m_exprDepth, m_transientBase};
    m_transientBase = m_transient;
    m_exprDepth = 0;   // expression nesting is counted per function body
    ++m_callDepth;
    m_callChain.push_back(ActiveCall{name, scope.callerStatement});
    ++m_scopeLevel;
    PushPosition(m_pos);
    Rewind(bodyPosition);
    UndefineLocal(bodyPosition, desc.name);
    bool ok = BindDecodedParameters(bodyPosition, args) && RunFunctionBody();
    m_callChain.pop_back();   // what follows (the result) belongs to the caller's statement
    scope.chainPopped = true;
    m_stmtPos = scope.callerStatement;
    m_exprAbandoned = m_halted;
    m_exprDepth = scope.callerExprDepth;
    if (!ok || isCall) {
        if (ok && keepResult) {
            CString lower = desc.name;
            if (CBasicVariable* var = FindVariable(lower)) result = *var;
        }
        return ok;
    }
    if (CBasicVariable* var = FunctionResult(desc, name)) {
        if (!MayAllocate(static_cast<uint64_t>(var->ChargedBytes()))) return false;
        if (number && var->IsBareNumber()) {
            *number = NumberResult{true, var->GetCurrent().GetVarType() == VT_I4, var->GetNumberValue()};
            return true;
        }
        result = *var;
        return true;
    }
    ReportError(19);
    return false;
}

// FindVariable of the function's value: the global of the name as called,
// else the local bearing the function's name. Called with the descriptor's
// own name, both bindings are kept at the definition.
CBasicVariable* COrvoBasic::FunctionResult(const CFuncDesc& desc, const CString& name) {
    if (&name != &desc.name && name != desc.name) {
        CString key = name;
        return FindVariable(key);
    }
    auto bodyPosition = static_cast<uint32_t>(desc.bodyPosition);
    PositionFacts& facts = FactsAt(bodyPosition);
    if (!facts.result) {   // not made by UndefineLocal: the facts were dropped meanwhile
        CString key = name;
        return FindVariable(key);
    }
    if (!facts.global) facts.global = &BindingFor(desc.name);
    if (facts.global->variable) return facts.global->variable;
    return LocalBinding(*facts.result).variable;
}

bool COrvoBasic::ExecCall() {
    if (get_token() != FUNCTION) {
        ReportError(1);
        return false;
    }
    CString name = m_token;
    CallTarget target = m_function == FT_NONE ? CallTarget{} : CurrentCallTarget();
    if (m_function == FT_DECLARED) {   // reads its own arguments: by-reference results need their names
        CBasicVariable unused;
        ExecDeclaredCall(name, unused);
        return true;
    }
    size_t bufferMark = m_argBuffers;
    ArgListScope scope(*this);
    CArgArray& args = scope.Args();
    GetParamList(args);
    CBasicVariable unused;
    ExecUserFunction(name, unused, args, true, target);
    m_argBuffers = bufferMark;
    return true;
}
