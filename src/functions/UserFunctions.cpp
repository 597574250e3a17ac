// Script functions and subs: executed in place by jumping to the definition,
// running its statements one scope level up, and jumping back. A function's
// value is the variable bearing its own name at its level.
#include <orvobasic/COrvoBasic.h>

#include "platform/StackGuard.h"

using namespace ob;

// Binds the arguments to the parameter names of the definition; surplus
// arguments are ignored, missing ones are error 24.
bool COrvoBasic::BindParameters(CArgArray& args) {
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
        CopyVariable(m_token, args[i], false);
        get_token();
        if (m_token == u")") return true;
        if (m_token != u",") {
            ReportError(23);
            return false;
        }
        get_token();
    }
}

// Runs the statements of a body until "endfunction", "endsub" or "return".
bool COrvoBasic::RunFunctionBody() {
    FindEOL();
    for (;;) {
        m_stmtPos = m_pos;
        uint32_t before = m_pos;
        BASIC_TOKEN_TYPE type = get_token();
        if (m_command == CMD_ENDFUNCTION || m_command == CMD_ENDSUB || m_command == CMD_RETURN) return true;
        if (m_command == CMD_FINISHED) {
            ReportError(20);
            return false;
        }
        if (type == VARIABLE || type == COMMAND) {
            Exec_command();
        } else if (type != DELIMITER && type != COMMENT) {
            ReportError(18);
            m_stop = true;
        }
        if (m_stop) return false;
        if (type == TOKEN_NONE && m_pos == before) NextChar();
    }
}

// Leaves a function: one scope level down, back to the saved position.
void COrvoBasic::PerformReturn() {
    if (m_scopeLevel >= 2) --m_scopeLevel;
    uint32_t position = 0;
    if (PopPosition(position)) Rewind(position);
}

bool COrvoBasic::ExecUserFunction(const CString& name, CBasicVariable& result, CArgArray& args, bool isCall) {
    CString lower = name;
    lower.MakeLower();
    const CFuncDesc* desc = FindFuncDesc(lower);
    if (!desc) {
        ReportError(21);
        return false;
    }
    if (desc->type == FT_CUSTOM) return ExecCustomFunction(*desc, result, args);
    if (desc->type == FT_DECLARED) {
        ReportError(25);   // library calls are not part of this build
        return false;
    }
    if (desc->handler) return (this->*desc->handler)(result, args, desc->type);
    if (desc->type != FT_USER) {
        ReportError(21);
        return false;
    }
    if (m_callDepth >= kMaxCallDepth || platform::StackNearlyExhausted(2)) {
        ReportError(13);
        return false;
    }
    int bodyPosition = desc->bodyPosition;
    uint32_t callerStatement = m_stmtPos;
    ++m_callDepth;
    ++m_scopeLevel;
    PushPosition(m_pos);
    Rewind(static_cast<uint32_t>(bodyPosition));
    VariableUndefine(lower);
    bool ok = false;
    try {
        ok = BindParameters(args) && RunFunctionBody();
        if (ok && !isCall) {
            CString resultName = name;
            if (CBasicVariable* var = FindVariable(resultName)) {
                result = *var;
            } else {
                ReportError(19);
                ok = false;
            }
        }
    } catch (...) {
        PerformReturn();
        --m_callDepth;
        m_stmtPos = callerStatement;
        throw;
    }
    PerformReturn();
    --m_callDepth;
    m_stmtPos = callerStatement;
    return ok;
}

bool COrvoBasic::ExecCall() {
    if (get_token() != FUNCTION) {
        ReportError(1);
        return false;
    }
    CString name = m_token;
    size_t bufferMark = m_argBuffers;
    CArgArray args;
    GetParamList(args);
    CBasicVariable unused;
    ExecUserFunction(name, unused, args, true);
    m_argBuffers = bufferMark;
    return true;
}
