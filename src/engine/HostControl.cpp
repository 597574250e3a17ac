// Host control: stop requests, budgets, capabilities and the line hook.
// None of it changes what a script sees while the host uses none of it; the
// statement loop pays one flag test per statement.
#include <orvobasic/COrvoBasic.h>

#include "engine/Capabilities.h"

using namespace ob;

namespace {

// How often (in statements) the clock and the cell count are looked at.
constexpr uint64_t kClockEvery = 64;
constexpr uint64_t kCellsEvery = 256;

}  // namespace

void COrvoBasic::UpdateControlActive() {
    m_controlActive = m_budgets.maxSteps || m_budgets.timeoutMs || m_budgets.maxDepth || m_budgets.maxCells ||
                      m_budgets.maxMemory || static_cast<bool>(m_lineHook) || m_parentStop != nullptr;
}

void COrvoBasic::InheritHostControl(const COrvoBasic& parent) {
    m_capabilities = parent.m_capabilities;
    m_budgets = parent.m_budgets;
    m_pathResolver = parent.m_pathResolver;
    m_lineHook = parent.m_lineHook;
    m_errorHandler = parent.m_errorHandler;
    m_parentStop = &parent.m_stopRequested;
    m_codePage = parent.m_codePage;
    m_outputHooks = parent.m_outputHooks;
    m_inheritedMemory = parent.MemoryInUse();
    UpdateControlActive();
}

void COrvoBasic::SetBudgets(const Budgets& budgets) {
    m_budgets = budgets;
    m_steps = 0;
    m_work = 0;
    if (budgets.timeoutMs)
        m_deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(budgets.timeoutMs);
    UpdateControlActive();
}

void COrvoBasic::SetLineHook(LineHook hook) {
    m_lineHook = std::move(hook);
    UpdateControlActive();
}

bool COrvoBasic::ResolvePath(CString& path) { return !m_pathResolver || m_pathResolver(path); }

uint64_t COrvoBasic::CountCells() const {
    uint64_t cells = 0;
    for (const auto& entry : m_variables)
        if (entry.second) cells += static_cast<uint64_t>(entry.second->GetNumItems());
    return cells;
}

// Reports how the run ends and ends it; the report's answer cannot resume it.
// Instead of unwinding by exception (slow through thousands of nested
// calls), the interpreter is halted: every level returns at once, nothing
// more is reported, and no further statement runs.
void COrvoBasic::EndRun(int runResult) {
    m_runResult = runResult;
    m_stopRequested.store(false, std::memory_order_relaxed);
    m_exprAbandoned = false;
    try {
        ReportError(OB_ERR_STOPPED + runResult - OB_E_STOPPED);
    } catch (const ScriptAbort&) {
    }
    m_stop = true;
    m_halted = true;
    m_exprAbandoned = true;
}

// Runs before every statement while a stop request, a budget or a hook is set.
void COrvoBasic::HostChecks() {
    if (m_stopRequested.load(std::memory_order_relaxed) ||
        (m_parentStop && m_parentStop->load(std::memory_order_relaxed)))
        return EndRun(OB_E_STOPPED);
    ++m_steps;
    m_transient = m_transientBase;   // the copies of the statement before are gone
    if (m_budgets.maxSteps && m_steps > m_budgets.maxSteps) return EndRun(OB_E_STEP_LIMIT);
    if (m_budgets.maxMemory && MemoryInUse() > m_budgets.maxMemory) return EndRun(OB_E_MEMORY_LIMIT);
    if (m_budgets.timeoutMs && m_steps % kClockEvery == 0 && std::chrono::steady_clock::now() >= m_deadline)
        return EndRun(OB_E_TIMEOUT);
    if (m_budgets.maxCells && m_steps % kCellsEvery == 0 && CountCells() > m_budgets.maxCells)
        return EndRun(OB_E_MEMORY);
    if (m_lineHook) {
        int line = 0;
        const CString& file = LocateSource(m_stmtPos, line);
        if (m_lineHook(file, line, m_scopeLevel) == OB_ABORT) return EndRun(OB_E_STOPPED);
    }
}

// Checked where a loop or a call goes back or deeper.
bool COrvoBasic::StopRequestedAtJump() {
    if (!m_stopRequested.load(std::memory_order_relaxed)) return false;
    EndRun(OB_E_STOPPED);
    return true;
}

// A denied statement reports error 40 and its line (a block statement: its
// block) is skipped.
bool COrvoBasic::StatementAllowed(COMMAND_TYPE command) {
    auto needed = StatementCapabilities(command);
    if (!needed || IsAllowed(*needed)) return true;
    ReportError(40);
    SkipDeniedStatement(command);
    return false;
}

// A denied function reports error 21 and its argument list is skipped
// without being evaluated. A dotted name is a method of an automation object.
bool COrvoBasic::FunctionAllowed(FUNCTION_TYPE type, const CString& name) {
    unsigned needed = OB_CAP_AUTOMATION;
    if (type != FT_AUTOMATION) {
        const CFuncDesc* desc = FindFuncDesc(name);
        needed = desc ? CapabilitiesOfCall(*desc) : 0;
    }
    if (IsAllowed(needed)) return true;
    ReportError(21);
    SkipArgumentList();
    return false;
}

// The one check every call of a descriptor passes, however it is reached: an
// expression, "call", an event or timer handler, a script started by "run".
bool COrvoBasic::CallAllowed(const CFuncDesc& desc) {
    if (IsAllowed(CapabilitiesOfCall(desc))) return true;
    ReportError(21);
    return false;
}

// Skips "( ... )" up to its matching ")" (or the line end); the ")" is put back.
void COrvoBasic::SkipArgumentList() {
    int depth = 0;
    for (;;) {
        uint32_t before = m_pos;
        if (get_token() == TOKEN_NONE && m_pos == before) NextChar();
        if (m_command == CMD_EOL || m_command == CMD_FINISHED) break;
        if (m_tokenType != DELIMITER) continue;
        if (m_token == u"(") ++depth;
        if (m_token == u")" && --depth <= 0) break;
    }
    putback();
}
