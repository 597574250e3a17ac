// Interpreter lifecycle: construction, destruction, loading a script and the
// statement loop.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "compiled/CompiledStatements.h"
#include "engine/Capabilities.h"
#include "engine/EventTable.h"
#include "engine/SourceMap.h"
#include "engine/ScriptGate.h"
#include "io/DataFileTable.h"
#include "io/FileSlots.h"
#include "io/SerialPorts.h"
#include "platform/CodePage.h"
#include "platform/DynamicLibrary.h"
#include "platform/LargeStack.h"
#include "ui/ScriptDialog.h"
#include "values/Maps.h"
#include "values/UserTypes.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <new>

using namespace ob;

COrvoBasic::COrvoBasic()
    : m_sourceMap(std::make_unique<CSourceMap>()),
      m_types(std::make_unique<CUserTypes>()),
      m_maps(std::make_unique<CMapDirectory>(&m_meter)),
      m_events(std::make_unique<CEventTable>()),
      m_fileSlots(std::make_unique<CFileSlotTable>()),
      m_dataFiles(std::make_unique<CDataFileTable>()),
      m_dialogs(std::make_unique<CDialogState>()),
      m_libraries(std::make_unique<platform::CLibrarySet>()),
      m_comPorts(std::make_unique<CSerialPortTable>()) {
    BuildCommandTable();
    BuildFunctionTable();
    BuildKeywordTable();
    m_scopeLevel = 1;
    m_desktop = &ui::GetDesktop();
    ApplyHostDefaults();
    AddToNotifyList();
    CBasicVariable nothing;
    nothing.SetValue(static_cast<IDispatch*>(nullptr));
    SetVariableDirect(u"Nothing", nothing, 0, true);
    SetVariableDirect(u"True", CBasicVariable(true), 0, true);
    SetVariableDirect(u"False", CBasicVariable(false), 0, true);
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    if (CompiledEngineWanted()) m_compiled = std::make_unique<CompiledStatements>();
}

COrvoBasic::~COrvoBasic() {
    ScriptUse closing(this, ScriptUse::Wait::Always);   // waits while another thread uses it
    closing.Close();
    ExecTimerStop();
    RemoveFromNotifyList();
    LabelsFree();
    VariablesFree();
    FunctionsFree();
    MapsFree();
    TypesFree();
    EventsFree();
    FileCloseAll();
    FileFormatCloseAll();
    GDIObjectsFree();
    m_libraries.reset();   // after the descriptors whose entry points lie in them
    COMPortCloseAll();
}

// Script bytes as text, appended to `out` with one line feed after them.
// The bytes are taken as one zero-terminated 8-bit string: a NUL byte ends the text.
void COrvoBasic::DecodeScript(const std::string& bytes, CString& out) const {
    platform::DecodeScriptText(std::string_view(bytes).substr(0, bytes.find('\0')), m_codePage, out);
    out.push_back(u'\n');
}

// Line starts of the program text, for error locations. A line ends at LF,
// at CR LF, or at a lone CR.
void COrvoBasic::BuildLineIndex() {
    m_lineStarts.assign(1, 0);
    m_textHasNul = m_text.find(u'\0') != CString::npos;
    for (uint32_t i = 0; i < m_length; ++i) {
        char16_t c = m_text[i];
        if (c == u'\n' || (c == u'\r' && (i + 1 >= m_length || m_text[i + 1] != u'\n')))
            m_lineStarts.push_back(i + 1);
    }
}

int COrvoBasic::LineOfPosition(uint32_t position) const {
    if (m_lineStarts.empty()) return 0;
    auto it = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), position);
    return static_cast<int>(it - m_lineStarts.begin());
}

void COrvoBasic::ForgetTextCaches() {
    m_factIndex.clear();
    m_facts.clear();
    m_pairCache.clear();
    m_blockEnds.clear();
    if (m_compiled) m_compiled->Clear();
}

void COrvoBasic::SetProgramText(const CString& text) {
    ForgetTextCaches();
    m_text = text;
    m_text.push_back(u'\n');
    m_length = static_cast<uint32_t>(m_text.size());
    m_endIndex = m_length - 1;
    m_sourceMap->Reset(m_scriptPath);
    BuildLineIndex();
    Rewind();
}

bool COrvoBasic::ExecuteProgram(const CString& path) {
    ScriptUse use(this);
    if (!use) return false;   // busy on another thread, and this thread is inside a script
    ForgetTextCaches();
    m_text.clear();
    m_scriptPath = path;
    m_runResult = OB_OK;
    m_halted = false;
    SetBudgets(m_budgets);   // budgets count from the start of the run
    m_stmtPos = 0;
    m_lineStarts.clear();
    bool aborted = false;
    if (!LoadSources(path, aborted)) return false;
    m_length = static_cast<uint32_t>(m_text.size());
    m_endIndex = m_length - 1;
    m_prevTokenType = DELIMITER;
    BuildLineIndex();
    DefineScriptArguments();
    // The run gets a stack of its own, so deep script recursion does not
    // depend on the host thread's stack.
    platform::RunOnLargeStack([this, aborted] {
        if (aborted) return;
        try {
            LabelsScan();
            m_stop = false;
            CArgArray args(1, CBasicVariable(m_scriptPath));
            EventThrow(u"OnStart", args);
            RunMainLoop();
            if (!m_halted) EventThrow(u"OnStop", args);
        } catch (const ScriptAbort&) {
            m_stop = true;
        } catch (const std::bad_alloc&) {
            OutOfMemory();
        }
    });
    return true;
}

void COrvoBasic::RunMainLoop() {
    Rewind();
    do {
        ExecStatement();
    } while (!m_stop && m_command != CMD_FINISHED);
}

// Reads one token and executes the statement it begins.
void COrvoBasic::ExecStatement() {
    m_stmtPos = m_pos;
    if (m_compiled && m_compiled->RunStatementAt(*this, true)) return;
    BASIC_TOKEN_TYPE type = get_token();
    if (m_compiled) m_compiled->NoteStatementToken(*this, m_stmtPos);
    DispatchStatement(type);
}

// Executes the statement whose first token (of `type`) has just been read. A
// token that cannot begin a statement ends the run.
void COrvoBasic::DispatchStatement(BASIC_TOKEN_TYPE type) {
    if (m_halted) return;
    if (m_exprDepth == 0) m_exprAbandoned = false;
    if (m_compiled) m_compiled->StartStatement(m_callDepth);
    size_t operandMark = m_operands.size();   // a statement's operands die with it
    switch (type) {
    case VARIABLE:
    case COMMAND:
    case UNKNOWN_MEMBER:   // object.property = value
        if (m_controlActive || m_stopRequested.load(std::memory_order_relaxed)) {
            HostChecks();
            if (m_halted) return;
        }
        Exec_command();
        m_operands.resize(std::min(operandMark, m_operands.size()));
        break;
    case DELIMITER:
    case COMMENT:
        break;
    default:
        ReportError(18);
        m_stop = true;
        break;
    }
}

bool COrvoBasic::ExecCommandStatement() {
    FindEOL();
    return true;
}

// Statements whose subsystem this build does not provide.
bool COrvoBasic::ExecUnsupported() {
    ReportError(40);
    FindEOL();
    return false;
}

namespace {

using StatementHandler = bool (*)(COrvoBasic&);

struct StatementEntry {
    COMMAND_TYPE command;
    StatementHandler handler;   // null: a word that is no statement by itself
    Needs needs;                // what the statement needs from the sandbox
};

// Statement words and what runs for each; words that are no statement by
// themselves ("then", "endif", ...) do nothing.
const StatementEntry kStatements[] = {
    {CMD_PRINT, [](COrvoBasic& b) { return b.ExecPrint(); }, kInside},
    {CMD_IF, [](COrvoBasic& b) { return b.ExecIf(); }, kInside},
    {CMD_DO, [](COrvoBasic& b) { return b.ExecDoWhile(); }, kInside},
    {CMD_LOOP, [](COrvoBasic& b) { return b.ExecLoop(); }, kInside},
    {CMD_FOR, [](COrvoBasic& b) { return b.ExecFor(); }, kInside},
    {CMD_NEXT, [](COrvoBasic& b) { return b.ExecNext(); }, kInside},
    {CMD_GOTO, [](COrvoBasic& b) { return b.ExecGoto(); }, kInside},
    {CMD_FINISHED, [](COrvoBasic& b) { b.SetStop(); return true; }, kInside},
    {CMD_GOSUB, [](COrvoBasic& b) { return b.ExecGosub(); }, kInside},
    {CMD_RETURN, [](COrvoBasic& b) { return b.ExecReturn(); }, kInside},
    {CMD_END, [](COrvoBasic& b) { b.SetStop(); return true; }, kInside},
    {CMD_ELSE, [](COrvoBasic& b) { return b.ExecElse(); }, kInside},
    {CMD_DIM, [](COrvoBasic& b) { return b.ExecDim(false); }, kInside},
    {CMD_FUNCTION, [](COrvoBasic& b) { b.ReportError(28); return false; }, kInside},
    {CMD_SUB, [](COrvoBasic& b) { b.ReportError(28); return false; }, kInside},
    {CMD_DECLARE, [](COrvoBasic& b) { return b.ExecDeclare(); }, kNative},
    {CMD_DIALOG, [](COrvoBasic& b) { return b.ExecDialog(); }, kDialogs},
    {CMD_INCLUDE, [](COrvoBasic& b) { return b.ExecCommandStatement(); }, kInside},
    {CMD_LIBRARY, [](COrvoBasic& b) { return b.ExecCommandStatement(); }, kInside},
    {CMD_REM, [](COrvoBasic& b) { return b.ExecCommandStatement(); }, kInside},
    {CMD_ENCRYPT, [](COrvoBasic& b) { return b.ExecCommandStatement(); }, kFiles},
    {CMD_MAP, [](COrvoBasic& b) { return b.ExecMap(); }, kInside},
    {CMD_CALL, [](COrvoBasic& b) { return b.ExecCall(); }, kInside},
    {CMD_RUN, [](COrvoBasic& b) { return b.ExecRun(true); }, kProcess},
    {CMD_RUNEXE, [](COrvoBasic& b) { return b.ExecRun(false); }, kProcess},
    {CMD_OPEN, [](COrvoBasic& b) { return b.ExecOpenFile(); }, kFiles},
    {CMD_CLOSE, [](COrvoBasic& b) { return b.ExecCloseFile(); }, kFiles},
    {CMD_TYPE, [](COrvoBasic& b) { return b.ExecType(); }, kInside},
    {CMD_EVENT, [](COrvoBasic& b) { return b.ExecEvent(); }, kInside},
    {CMD_THROW, [](COrvoBasic& b) { return b.ExecThrow(); }, kInside},
    {CMD_WATCH, [](COrvoBasic& b) { return b.ExecWatch(); }, kInside},
    {CMD_CLOSEDIALOG, [](COrvoBasic& b) { return b.ExecCloseDialog(); }, kDialogs},
    {CMD_ALTER, [](COrvoBasic& b) { return b.ExecAlterControl(); }, kDialogs},
    {CMD_GLOBAL, [](COrvoBasic& b) { return b.ExecDim(true); }, kInside},
    {CMD_STAYRESIDENT, [](COrvoBasic& b) { b.SetResident(); return true; }, kInside},
    {CMD_PLAYSOUND, [](COrvoBasic& b) { return b.ExecPlaySound(); }, kSound},
    {CMD_TIMERSTART, [](COrvoBasic& b) { return b.ExecTimerStart(); }, kInside},
    {CMD_TIMERSTOP, [](COrvoBasic& b) { return b.ExecTimerStop(); }, kInside},
    {CMD_SETFOCUS, [](COrvoBasic& b) { return b.ExecSetFocus(); }, kDialogs},
    {CMD_PROPERTYSHEET, [](COrvoBasic& b) { return b.ExecPropertySheet(); }, kDialogs},
    {CMD_THEN, nullptr, kInside},
    {CMD_TO, nullptr, kInside},
    {CMD_EOL, nullptr, kInside},
    {CMD_ENDIF, nullptr, kInside},
    {CMD_ENDFUNCTION, nullptr, kInside},
    {CMD_ENDSUB, nullptr, kInside},
    {CMD_ENDDIALOG, nullptr, kInside},
    {CMD_ENDTYPE, nullptr, kInside},
    {CMD_ENDALTER, nullptr, kInside},
    {CMD_PAGE, nullptr, kInside},
    {CMD_ENDPAGE, nullptr, kInside},
};

// The dispatch table indexed by command value, built once from the list above.
struct StatementTable {
    StatementHandler byCommand[CMD_ENCRYPT + 1] = {};
    std::optional<unsigned> needs[CMD_ENCRYPT + 1];
    StatementTable() {
        for (const auto& e : kStatements) {
            byCommand[e.command] = e.handler;
            needs[e.command] = e.needs.capabilities;
        }
    }
};

const StatementTable& Statements() {
    static const StatementTable table;
    return table;
}

}  // namespace

// Executes the statement whose first token has just been read: a variable
// starts an assignment, a statement word runs its handler.
bool COrvoBasic::Exec_command() {
    static const StatementTable& table = Statements();
    if (m_tokenType == VARIABLE || m_tokenType == STRUCT_MEMBER || m_tokenType == UNKNOWN_MEMBER) {
        if (m_compiled && m_tokenType == VARIABLE && m_compiled->RunAssignment(*this)) return true;
        putback();
        return assignment();
    }
    if (m_tokenType != COMMAND || m_command < 0 || m_command > CMD_ENCRYPT) return false;
    if (m_capabilities != OB_CAP_ALL && !StatementAllowed(m_command)) return false;
    StatementHandler handler = table.byCommand[m_command];
    return handler ? handler(*this) : false;
}

std::optional<unsigned> ob::StatementCapabilities(COMMAND_TYPE command) {
    if (command < 0 || command > CMD_ENCRYPT) return std::nullopt;
    return Statements().needs[command];
}
