// Calls of script functions inside compiled assignments.
//
// The arguments are computed compiled; the function then runs exactly as
// the text path runs it (ExecScriptFunction, with the cursor and the token
// as the text path has them on entering it). A call cannot be taken back:
// when the statement has to go to the text path after a call ran (a value
// the compiled form does not handle, an error or the end of the run inside
// the function), the calls that ran are kept, and the text path, reading the
// statement again from its start, takes each of them from here instead of
// running it a second time. Nothing read before a call is read again after
// it (the compiler allows variables before a call only inside its own
// arguments, which the text path then skips), so the text path arrives at
// each call in the same state and leaves it in the same state.
#include "compiled/CompiledStatements.h"

using namespace ob;

namespace {

bool IsLone(const ExprNode& node) { return node.kind == NodeKind::Variable || node.kind == NodeKind::Element; }

}  // namespace

// The name still finds the script function it was compiled against, and
// nothing (a sandbox, budgets, a line hook) asks for the text path's checks.
bool CompiledStatements::StillScriptFunction(COrvoBasic& basic, ExprNode& call) {
    uint64_t epoch = basic.FunctionEpoch();
    if (epoch != call.epoch) {
        const CFuncDesc* desc = basic.FindFuncDesc(call.text);
        if (!desc || desc->type != FT_USER || desc->handler) return false;
        call.desc = desc;
        call.epoch = epoch;
    }
    return basic.m_capabilities == OB_CAP_ALL && !basic.m_controlActive;
}

// ExecFunction for a script function. False when the statement must go to
// the text path: before the call with nothing done, after it with the call
// logged.
bool CompiledStatements::CallScript(COrvoBasic& basic, std::vector<ExprNode>& nodes, ExprNode& call, Scalar& out) {
    if (!StillScriptFunction(basic, call)) return false;
    const ScriptCallSite& site = *call.site;
    size_t count = site.arguments.size();
    // The arguments go straight into this depth's list: nothing evaluated
    // here calls a script function, which would use the list as well.
    CallFrame& frame = basic.m_compiled->FrameAt(basic.m_callDepth);
    CArgArray& args = frame.args;
    if (args.size() != count) args.resize(count);
    for (size_t i = 0; i < count; ++i) {
        uint32_t at = site.arguments[i];
        // Arithmetic on numbers alone is computed as a double; anything else
        // (a text in a variable) as a value, from the start again.
        double number = 0;
        if ((site.computed >> i & 1) && Evaluate(basic, nodes, at, number)) {
            StoreDouble(args[i], number);
            continue;
        }
        Scalar value;
        if (!EvaluateValue(basic, nodes, at, value)) return false;
        if (IsLone(nodes[at]) && !value.plain) return false;   // the text path passes the whole variable
        StoreScalar(args[i], value);
    }
    size_t bufferMark = basic.m_argBuffers;
    // As reading the call's name and arguments leaves the interpreter.
    Restore(basic, site.atCall);
    NoteLastCall(basic, call);
    COrvoBasic::NumberResult number;
    bool ok = basic.ExecScriptFunction(*call.desc, call.desc->name, frame.result, args, false, &number);
    basic.m_argBuffers = bufferMark;
    LoggedCall& logged = basic.m_compiled->Log(call.variable.position, basic.m_callDepth, site.atCall.position);
    logged.numeric = ok && number.taken;
    if (logged.numeric) {
        out.kind = number.integer ? Scalar::Kind::Integer : Scalar::Kind::Double;
        out.number = number.value;
        out.plain = true;
        logged.result = out;
        return !basic.m_halted;
    }
    // Any other value came as a copy; a call that failed leaves the text
    // path's value as it was made: new.
    logged.value = ok ? frame.result : CBasicVariable();
    return false;
}

// The arguments and value of calls made at call depth `depth`, kept from
// call to call: the arguments only ever hold one number or text, which each
// call sets, and the value is only read after a call that set it.
CompiledStatements::CallFrame& CompiledStatements::FrameAt(int depth) {
    auto index = static_cast<size_t>(depth);
    while (m_frames.size() <= index) m_frames.push_back(std::make_unique<CallFrame>());
    return *m_frames[index];
}

CompiledStatements::LoggedCall& CompiledStatements::Log(uint32_t position, int depth, uint32_t returnPosition) {
    if (m_callCount == m_calls.size()) m_calls.emplace_back();
    LoggedCall& logged = m_calls[m_callCount++];
    logged.position = position;
    logged.depth = depth;
    logged.replayable = false;
    logged.atReturn.position = returnPosition;
    return logged;
}

// An assignment with calls of script functions: true when it ran compiled;
// false when the text path must run it, with the calls that ran (if any)
// kept for it and the cursor back behind the target's name.
bool CompiledStatements::RunCalling(COrvoBasic& basic, CompiledStatement& statement) {
    int depth = basic.m_callDepth;
    DropLogged(depth);
    size_t mark = m_callCount;
    BASIC_TOKEN_TYPE previous = basic.m_prevTokenType;
    if (Assign(basic, statement)) {
        // Its calls, and what statements inside them left, are done with.
        DropLogged(depth);
        return true;
    }
    if (m_callCount == mark) return false;
    LoggedCall& last = m_calls[m_callCount - 1];
    last.atReturn = TokenState{basic.m_pos,     basic.m_token,   basic.m_tokenType,    basic.m_prevTokenType,
                               basic.m_command, basic.m_keyword, basic.m_pendingIndex, basic.m_function};
    last.functionName = basic.m_curFuncName;
    last.functionPosition = basic.m_curFuncPos;
    last.functionDesc = basic.m_curFuncDesc;
    last.functionEpoch = basic.m_curFuncEpoch;
    last.halted = basic.m_halted;
    for (size_t i = mark; i < m_callCount; ++i) {
        LoggedCall& call = m_calls[i];
        if (&call != &last) {
            // Overwritten on the text path before anything reads it.
            call.atReturn.type = TOKEN_NONE;
            call.atReturn.pendingIndex = kKeepPendingIndex;
        }
        call.replayable = true;
        ++m_replayable;
    }
    // The text path reads the statement again, with the run going on until
    // it arrives where a call ended it.
    basic.m_halted = false;
    basic.m_exprAbandoned = false;
    Restore(basic, statement.start);
    basic.m_prevTokenType = previous;
    return false;
}

bool CompiledStatements::TakeLogged(COrvoBasic& basic, CBasicVariable& result) {
    uint32_t position = basic.m_pos - static_cast<uint32_t>(basic.m_token.size());
    int depth = basic.m_callDepth;
    for (size_t i = m_callCount; i > 0 && m_calls[i - 1].depth >= depth; --i) {
        LoggedCall& call = m_calls[i - 1];
        if (!call.replayable || call.depth != depth || call.position != position) continue;
        call.replayable = false;
        --m_replayable;
        if (call.numeric) {
            CBasicVariable number;
            StoreScalar(number, call.result);
            result = number;
        } else {
            result = call.value;
            call.value = CBasicVariable();   // what it holds is the text path's now
        }
        // The function has returned: the cursor is back at the ")" of the
        // argument list, the token what the function's body read last.
        Restore(basic, call.atReturn);
        basic.m_prevTokenType = call.atReturn.previousType;
        basic.m_function = call.atReturn.function;
        basic.m_curFuncName = call.functionName;
        basic.m_curFuncPos = call.functionPosition;
        basic.m_curFuncDesc = call.functionDesc;
        basic.m_curFuncEpoch = call.functionEpoch;
        basic.m_halted = call.halted;
        basic.m_exprAbandoned = call.halted;
        return true;
    }
    return false;
}

void CompiledStatements::DropLogged(int depth) {
    while (m_callCount > 0 && m_calls[m_callCount - 1].depth >= depth) {
        if (m_calls[m_callCount - 1].replayable) --m_replayable;
        --m_callCount;
    }
}
