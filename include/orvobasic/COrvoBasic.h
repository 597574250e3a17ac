// COrvoBasic: one interpreter, one script run.
//
// The interpreter holds the whole script text in memory and executes it
// statement by statement straight from the text: the tokenizer cuts the next
// token at the cursor, statement handlers read their operands through the
// tokenizer and the expression evaluator, and jumps move the cursor. There is
// no parse tree. Everything a script creates (variables, functions, labels,
// maps, types, events, files, tables) is owned by the interpreter and freed
// when it is destroyed.
#pragma once

#include <orvobasic/CBasicVariable.h>
#include <orvobasic/CString.h>
#include <orvobasic/dialogs.h>
#include <orvobasic/codepage.h>
#include <orvobasic/export.h>
#include <orvobasic/hostcontrol.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ob::ui {
class Desktop;
}

namespace ob {

// Hash for CString keys in the interpreter's tables.
// Not noexcept on purpose: the standard tables then keep each key's hash
// beside it, so that removing an entry or growing a table hashes no key again.
struct CStringHash {
    size_t operator()(const CString& s) const {
        return std::hash<std::u16string_view>()(std::u16string_view(s));
    }
};

// Kinds of token, as get_token classifies them.
enum BASIC_TOKEN_TYPE : int {
    TOKEN_NONE = 0,
    DELIMITER = 1,
    VARIABLE = 2,
    STRUCT_MEMBER = 3,
    UNKNOWN_MEMBER = 4,
    NUMBER = 5,
    COMMAND = 6,
    IDENTIFIER = 7,
    QUOTE = 8,
    LABEL = 9,
    FUNCTION = 10,
    COMMENT = 11,
    KEYWORD = 12,
};

// Statement words. EOL and FINISHED are tokenizer markers, not statements.
enum COMMAND_TYPE : int {
    CMD_NONE = 0, CMD_PRINT = 1, CMD_IF = 2, CMD_DO = 3, CMD_LOOP = 4, CMD_THEN = 5,
    CMD_FOR = 6, CMD_NEXT = 7, CMD_TO = 8, CMD_GOTO = 9, CMD_EOL = 10, CMD_FINISHED = 11,
    CMD_GOSUB = 12, CMD_RETURN = 13, CMD_END = 14, CMD_ELSE = 15, CMD_ENDIF = 16,
    CMD_DIM = 17, CMD_FUNCTION = 18, CMD_ENDFUNCTION = 19, CMD_SUB = 20, CMD_ENDSUB = 21,
    CMD_DECLARE = 22, CMD_DIALOG = 23, CMD_ENDDIALOG = 24, CMD_INCLUDE = 25,
    CMD_LIBRARY = 26, CMD_REM = 27, CMD_MAP = 28, CMD_CALL = 29, CMD_RUN = 30,
    CMD_RUNEXE = 31, CMD_OPEN = 32, CMD_CLOSE = 33, CMD_TYPE = 34, CMD_ENDTYPE = 35,
    CMD_EVENT = 36, CMD_THROW = 37, CMD_WATCH = 38, CMD_CLOSEDIALOG = 39, CMD_ALTER = 40,
    CMD_ENDALTER = 41, CMD_GLOBAL = 42, CMD_STAYRESIDENT = 43, CMD_PLAYSOUND = 44,
    CMD_TIMERSTART = 45, CMD_TIMERSTOP = 46, CMD_SETFOCUS = 47, CMD_PAGE = 48,
    CMD_ENDPAGE = 49, CMD_PROPERTYSHEET = 50, CMD_ENCRYPT = 51,
};

// Secondary keywords.
enum KEYWORD_TYPE : int {
    KW_NONE = 0, KW_ALIAS = 1, KW_AS = 2, KW_WHILE = 3, KW_LIB = 4, KW_BYVAL = 5,
    KW_INTEGER = 6, KW_DOUBLE = 7, KW_FLOAT = 8, KW_CHAR = 9, KW_STRING = 10,
    KW_UNICODE = 11, KW_TITLE = 14, KW_CALLING = 15, KW_CONTROL = 16, KW_BUTTON = 17,
    KW_EDITTEXT = 18, KW_CHECKBOX = 19, KW_LISTBOX = 20, KW_OKBUTTON = 21,
    KW_STATICTEXT = 22, KW_BITMAP = 23, KW_GROUPBOX = 24, KW_MULTILISTBOX = 25,
    KW_DATETIME = 26, KW_EDITMULTILINE = 27, KW_CANCELBUTTON = 28, KW_COMBOBOX = 29,
    KW_EDITNUMBER = 30, KW_RADIOGROUP = 31, KW_TREEVIEW = 32, KW_FONT = 33,
    KW_WINDOW = 34, KW_CLEAR = 35, KW_CREATE = 36, KW_INPUT = 37, KW_OUTPUT = 38,
    KW_APPEND = 39, KW_REMOVE = 40, KW_ONINIT = 41, KW_ONEXIT = 42, KW_SHOW = 43,
    KW_ENABLE = 44, KW_VALUE = 45, KW_SELECTION = 46, KW_TEXT = 47, KW_MENUITEM = 48,
    KW_POSITION = 49, KW_SLIDERHORZ = 50, KW_SLIDERVERT = 51, KW_TABCONTROL = 52,
};

// Callable names: built-ins 1..88 and 93, then the kinds of non-built-in.
enum FUNCTION_TYPE : int {
    FT_NONE = 0,
    FT_SIN = 1, FT_COS = 2, FT_TAN = 3, FT_ABS = 4, FT_SQR = 5, FT_LOG2 = 6, FT_LOG10 = 7,
    FT_LOG = 8, FT_ASIN = 9, FT_ACOS = 10, FT_ATAN = 11, FT_LEN = 12, FT_ISNAN = 13,
    FT_LOWORD = 15, FT_HIWORD = 16, FT_MAPSET = 17, FT_MAPGET = 18, FT_MAPHAS = 19,
    FT_MAPREMOVE = 20, FT_MAPGETKEYS = 21, FT_MAPGETVALUES = 22, FT_LEFT = 23,
    FT_RIGHT = 24, FT_MID = 25, FT_INSTR = 26, FT_LCASE = 27, FT_UCASE = 28,
    FT_REPLACE = 29, FT_INT = 30, FT_MAX = 31, FT_MIN = 32, FT_VAL = 33, FT_REPEAT = 34,
    FT_FORMAT = 35, FT_WEEKDAY = 36, FT_MONTH = 37, FT_YEAR = 38, FT_DAY = 39,
    FT_HOUR = 40, FT_MINUTE = 41, FT_SECOND = 42, FT_STR = 43, FT_UBOUND = 44,
    FT_FILEOPENDLG = 45, FT_FILESAVEASDLG = 46, FT_CONTROLVALUE = 47, FT_READ = 48,
    FT_WRITE = 49, FT_READLINE = 50, FT_READLIST = 51, FT_WRITELINE = 52, FT_SEEK = 53,
    FT_FILESIZE = 54, FT_ISEOF = 55, FT_GETFILEPOS = 56, FT_POPUPMENU = 57,
    FT_SENDMESSAGE = 58, FT_ASK = 59, FT_FINDFILES = 60, FT_GETPATH = 61,
    FT_GETNAME = 62, FT_POINTOFFSET = 65, FT_GETWINDOWHANDLE = 66, FT_COPYDATA = 67,
    FT_RAD2DMS = 68, FT_DMS2RAD = 69, FT_SWAP = 70, FT_DBFOPEN = 71, FT_DBFCREATE = 72,
    FT_DBFCLOSE = 73, FT_DBFREAD = 74, FT_DBFWRITE = 75, FT_DBFAPPEND = 76,
    FT_DBFSEEK = 77, FT_DBFDELETE = 78, FT_DBFNUMRECORDS = 79, FT_DBFNUMFIELDS = 80,
    FT_DBFFIELDNAMES = 81, FT_CREATEOBJECT = 82, FT_GETVARSTATS = 83,
    FT_GARBAGECOLLECTION = 84, FT_COMPORTOPEN = 85, FT_COMPORTCLOSE = 86,
    FT_COMPORTREAD = 87, FT_COMPORTWRITE = 88,
    FT_USER = 89, FT_CUSTOM = 90, FT_DECLARED = 91, FT_AUTOMATION = 92, FT_RAND = 93,
};

// Thrown by ReportError when the user refuses to go on; caught by ExecuteProgram.
struct ScriptAbort {};

// One entry of the control-flow stack ("for" and "do").
struct CStackData {
    CString name;          // loop variable of a "for", empty for a "do"
    double value = 0;      // limit of a "for"
    uint32_t position = 0; // where the loop goes back to
    bool inUse = false;
    const void* binding = nullptr;   // the store binding "next" found `name` in, once it has
};

class CUserTypes;
class CMapDirectory;
class CEventTable;
class CFileSlotTable;
class CDataFileTable;
struct CDialogState;
struct CPropertyPageInfo;
class CNativeCall;
struct CDeclaredArg;
class CSerialPort;
class CSerialPortTable;
class CSourceMap;
class CompiledStatements;
class StatementCompiler;
struct SourceRequest;
struct OutputHooks;

}  // namespace ob

namespace ob::platform {
class CLibrarySet;
}

class COrvoBasic;
struct CFuncDesc;

// A function the host adds to the language: receives the calling
// interpreter, the evaluated arguments and the user value it was registered
// with, and returns the call's value.
using OB_CustomFunction = CBasicVariable (*)(COrvoBasic* interpreter, CArgArray& args, int userData);

// Handler of a built-in family.
using FuncHandler = bool (COrvoBasic::*)(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);

// One callable name.
struct CFuncDesc {
    CString name;                          // lower case
    ob::FUNCTION_TYPE type = ob::FT_USER;
    FuncHandler handler = nullptr;         // built-ins only
    unsigned capabilities = 0;             // OB_CAP_* bits a call needs (built-ins)
    int bodyPosition = 0;                  // script functions: just behind the name
    // Host custom functions.
    OB_CustomFunction custom = nullptr;
    int paramCount = 0;
    int userData = 0;
    // Declared library functions.
    CString library;
    CString entry;
    std::vector<uint32_t> paramFlags;
    uint32_t returnFlags = 0;
    bool isSub = false;
    std::shared_ptr<ob::CNativeCall> native;   // the call interface prepared from the flags
};

namespace ob {
// The interpreter's table of callable names. Every change of it counts in
// Epoch(), so that a call compiled against one descriptor knows whether the
// name may mean something else now. Only the operations listed are offered:
// a new kind of change has to count itself as well.
class FunctionMap : private std::unordered_map<CString, std::unique_ptr<CFuncDesc>, CStringHash> {
    using Base = std::unordered_map<CString, std::unique_ptr<CFuncDesc>, CStringHash>;

public:
    using Base::begin;
    using Base::count;
    using Base::empty;
    using Base::end;
    using Base::find;
    using Base::reserve;
    using Base::size;
    template <typename... Args>
    auto emplace(Args&&... args) {
        ++m_epoch;
        return Base::emplace(std::forward<Args>(args)...);
    }
    void clear() {
        ++m_epoch;
        Base::clear();
    }
    uint64_t Epoch() const { return m_epoch; }

private:
    uint64_t m_epoch = 0;
};
}  // namespace ob

class OB_API COrvoBasic {
public:
    COrvoBasic();
    virtual ~COrvoBasic();
    COrvoBasic(const COrvoBasic&) = delete;
    COrvoBasic& operator=(const COrvoBasic&) = delete;

    // ---- lifecycle (engine) ----
    // Loads and runs a script; false only when the file could not be loaded.
    bool ExecuteProgram(const CString& path);
    // Runs a script held in memory (its bytes as a script file holds them)
    // under `name`, which reports and the "OnStart" event show as its path.
    bool ExecuteProgramText(const CString& name, const std::string& bytes);
    // Adds statements (script-file bytes) to the text of a live session and
    // runs them at once, keeping every variable, function and file of the
    // chunks before. A chunk that defines a function or sub is only
    // entered; false then, and true when statements ran.
    bool ExecuteInteractive(const CString& name, const std::string& bytes);
    // Arguments for the script: when there is at least one, the run starts
    // with the global array ARGV holding them (ARGV[0] the first).
    void SetScriptArguments(std::vector<CString> arguments) { m_scriptArguments = std::move(arguments); }
    // The script bytes handed over by ExecuteProgramText while they load; null otherwise.
    const std::string* ScriptBytesInMemory() const { return m_sourceBytes; }
    // A load error about a file, with the system's errno (0: none).
    void ReportLoadErrorAbout(int id, const CString& file, const CString& subject, int osError);
    // Calls `visit` with each variable of the main program and each global
    // (name as the script writes it, the variable), in name order.
    void ForEachMainVariable(const std::function<void(const CString&, const CBasicVariable&)>& visit) const;
    bool IsResident() const { return m_resident; }
    CString GetLastError() const { return m_lastError; }
    const CString& GetScriptPath() const { return m_scriptPath; }

    // ---- error reporting ----
    // Shows message `id` with the current source line; throws ob::ScriptAbort
    // when the user cancels.
    void ReportError(int id);
    // ReportError for an error about a name or path, with the system's
    // errno after a failed file operation (0: none); the report's record
    // then names it, suggests a close defined name and adds a hint.
    void ReportErrorAbout(int id, const CString& subject, int osError = 0);
    CString GetCurrentLine();
    // Longest source line text an error report shows; longer lines are cut.
    static constexpr size_t kMaxShownLine = 1000;
    static CString LoadMessage(int id);
    // 1-based line of a text position.
    int LineOfPosition(uint32_t position) const;
    // The file a text position was written in (the script, or a file it
    // includes or uses as a library) and, in `line`, its 1-based line there.
    const CString& LocateSource(uint32_t position, int& line) const;
    // Reports an error met while loading the program, at `line` of `file`
    // (0: the file as a whole); throws ob::ScriptAbort when the user cancels.
    void ReportLoadError(int id, const CString& file, int line, const CString& sourceLine);

    // ---- registry and host interface ----
    static std::list<void*> m_List;
    static std::mutex m_Door;   // guards m_List, m_nNumberOfCopies and the gates; held briefly
    static int32_t m_nNumberOfCopies;
    static std::unordered_map<CString, CFuncDesc*, ob::CStringHash> m_ExtFunctionTable;
    static bool IsValidInterpreter(void* interpreter);
    void AddToNotifyList();
    void RemoveFromNotifyList();
    static bool SendEvent(const CString& name, CArgArray& args);
    static bool SendEvent(const CString& name, CBasicVariable* arg);
    bool AddCustomFunction(const CString& name, OB_CustomFunction function, int paramCount, int userData);

    // ---- events ----
    bool EventAdd(const CString& event, const CString& function);
    bool EventRemove(const CString& event, const CString& function);
    bool EventRemove(const CString& event);
    bool EventThrow(const CString& event, CArgArray& args);
    bool EventThrow(const CString& event, CBasicVariable* arg);
    bool EventThrow(const CString& event, CArgArray& args, CBasicVariable& lastResult);
    bool EventsFree();

    // ---- variable store (public for hosts) ----
    CBasicVariable* FindVariable(CString& name);
    bool SetVariable(const CString& name, const CBasicVariable& value, int index);
    bool SetVariable(const CString& name, double value, int index);
    bool SetVariable(const CString& name, const CString& value, int index);
    bool SetVariableDirect(const CString& name, const CBasicVariable& value, int index, bool global);
    bool CopyVariable(const CString& name, const CBasicVariable& value, bool global = false);
    int GetVariableSize(const CString& name);
    bool FindStructVariable(const CString& name, const CString& field, CBasicVariable& value, bool report);
    bool SetStructVariable(const CString& name, const CString& field, CBasicVariable& value);

    // ---- host control ----
    // Asks the running script to stop at its next statement. The one member
    // that is safe from any thread and from a signal handler.
    void RequestStop() { m_stopRequested.store(true, std::memory_order_relaxed); }
    // Budgets take effect at once, also mid-run (call from the script's thread).
    void SetBudgets(const ob::Budgets& budgets);
    const ob::Budgets& GetBudgets() const { return m_budgets; }
    // OB_OK, or the OB_E_* code that ended the last run.
    int GetRunResult() const { return m_runResult; }
    // The last reported error in full; empty until the first report.
    const ob::ErrorRecord& GetLastErrorRecord() const { return m_lastErrorRecord; }
    // Replaces the desktop's error box: returns OB_CONTINUE or OB_ABORT.
    using ErrorHandler = std::function<int(const ob::ErrorRecord&)>;
    void SetErrorHandler(ErrorHandler handler) { m_errorHandler = std::move(handler); }
    // OB_CAP_* bits of what the script may reach; all by default.
    void SetCapabilities(unsigned allowed) { m_capabilities = allowed; }
    unsigned GetCapabilities() const { return m_capabilities; }
    bool IsAllowed(unsigned capability) const { return (m_capabilities & capability) == capability; }
    // May rewrite each path a script opens, or refuse it (return false).
    using PathResolver = std::function<bool(CString& path)>;
    void SetPathResolver(PathResolver resolver) { m_pathResolver = std::move(resolver); }
    // Applies the resolver; false when the path is refused (callers report error 47).
    bool ResolvePath(CString& path);
    // Called before each statement with the script, line and scope level;
    // returning OB_ABORT stops the run as RequestStop does.
    using LineHook = std::function<int(const CString& script, int line, unsigned level)>;
    void SetLineHook(LineHook hook);
    // Gives a script started by "run" the capabilities, budgets, resolver,
    // hooks, error handler, code page and output hooks of `parent`, and makes it stop when `parent`
    // is asked to stop. `parent` must outlive this interpreter.
    void InheritHostControl(const COrvoBasic& parent);

    // Called before an operation builds or copies `bytes` of script data
    // that no variable holds yet (a string it concatenates, repeats or
    // reads, a copy of a variable): counts them against the memory budget
    // until the statement ends, and looks at the deadline and at stop
    // requests every megabyte or so of such work. False when the run has to
    // end (it then has ended): the caller gives up without allocating.
    [[nodiscard]] bool MayAllocate(uint64_t bytes) {
        if (!m_controlActive && !m_stopRequested.load(std::memory_order_relaxed)) return !m_halted;
        return LongOperationAllowed(bytes, bytes);
    }
    // The same for work that allocates nothing (scanning, reading).
    [[nodiscard]] bool MayContinue(uint64_t work) {
        if (!m_controlActive && !m_stopRequested.load(std::memory_order_relaxed)) return !m_halted;
        return LongOperationAllowed(0, work);
    }
    // Bytes the memory budget counts now: values held, copies made by the
    // statement being executed, control-flow entries, and what the script
    // that started this one (by "run") held when it did.
    uint64_t MemoryInUse() const;
    ob::MemoryMeter& Meter() { return m_meter; }
    // Ends the run because the system had no memory left (OB_E_NO_MEMORY).
    void OutOfMemory();

    // Scope level: 1 in the main program, +1 per user-function call.
    unsigned GetScopeLevel() const { return m_scopeLevel; }

    // ---- 8-bit text ----
    // The code page of the script's 8-bit text: script files without a
    // UTF-8 sign, 8-bit text files, dBase tables, serial lines, "string"
    // parameters of declared functions. Windows-1252 unless the host sets it.
    void SetCodePage(ob::CodePage codePage) { m_codePage = codePage; }
    ob::CodePage GetCodePage() const { return m_codePage; }
    // Conversions between 8-bit text and CString in that code page; every
    // 8-bit text the script reads or writes goes through these.
    CString AnsiToWide(std::string_view bytes) const;
    void AnsiToWide(std::string_view bytes, CString& out) const;   // appends
    std::string WideToAnsi(std::u16string_view text) const;

    // ---- what the script shows ----
    // A "print" text and any other message box: to the host's output hooks
    // when it set them (OB_SetOutputHandlers), else to the desktop.
    void ShowPrint(const CString& text);
    int ShowMessageBox(const CString& text, unsigned style);
    // Replaces the hooks (null: the desktop shows everything).
    void SetOutputHooks(std::shared_ptr<const ob::OutputHooks> hooks) { m_outputHooks = std::move(hooks); }

    // ---- variables for hosts ----
    // Element `index` (-1: the current element) of the variable `name`,
    // found as a statement at the current scope level finds it: a global by
    // its exact spelling first, then a local of the current level in any
    // case ("r.field" names a record field). False, with nothing reported,
    // when there is no such variable or element.
    bool GetVariableValue(const CString& name, int index, CBasicVariable& value);
    // Stores `value`'s current element there as an assignment does (a watch
    // on it fires). A name not yet defined is created as a local of the
    // current level when `index` is 0 or -1. False, with nothing reported,
    // when the element does not exist and cannot be created.
    bool SetVariableValue(const CString& name, int index, const CBasicVariable& value);

    // Bounds that keep the C++ stack safe.
    static constexpr int kMaxCallDepth = 20000;
    static constexpr int kMaxExprDepth = 2000;
    // Shallower than this, the remaining C++ stack is not measured.
    static constexpr int kStackCheckDepth = 32;

    // ---- statements and built-ins, by family (internal) ----
    // The rest is public so that family files and tests reach it; hosts
    // should use the members above.

    // tokenizer
    char16_t CurChar() const { return m_text[m_pos]; }
    void NextChar() { if (m_pos < m_endIndex) ++m_pos; }
    bool IsEndOfProgram() const { return m_pos >= m_endIndex; }
    bool Rewind();
    bool Rewind(uint32_t position);
    void PushPosition(uint32_t position) { m_returnStack.push_back(position); }
    bool PopPosition(uint32_t& position);
    bool FindEOL();
    bool GoPastEOL();
    ob::BASIC_TOKEN_TYPE get_token();
    void putback();
    uint32_t GetPosition() const { return m_pos; }
    // Loads program text directly (tests and hosts that hold text in memory).
    void SetProgramText(const CString& text);

    // vocabulary
    bool BuildCommandTable();
    bool BuildKeywordTable();
    ob::COMMAND_TYPE LookupCommand(const CString& word) const;
    ob::KEYWORD_TYPE LookupKeyword(const CString& word) const;

    // evaluator
    void get_exp(CBasicVariable& result);
    bool ExecLogicalStatement();
    int GetLogOperation();
    bool ComputeOperation(int op, CBasicVariable& left, CBasicVariable& right);
    bool ComputeArithmetic(int op, double& a, double b);
    bool ComputeString(int op, CString& a, const CString& b);
    bool BuildConcatenation(const CString& left, const CString& right, CString& out);
    // Characters a long concatenation copies between two looks at the budgets.
    static constexpr size_t kConcatSlice = size_t{1} << 20;
    static int GetArithOperation(char16_t c);

    // variable store
    void AddScopeLevelExtension(CString& name);
    CString GetVariableName(const CString& name);
    bool SetVariableSize(const CString& name, int size, bool global);
    bool VariableUndefine(const CString& name);
    bool GetVariable(CString& name);
    bool GetIndex(int& index);
    bool VariablesFree();
    bool ExecDim(bool global);
    // Field type of a type keyword: 1 char, 3 integer, 4 float, 5 double, 6 string; 0 otherwise.
    static int KeywordToType(ob::KEYWORD_TYPE keyword);
    bool ExecGetVarStats(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecGarbageCollection(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    size_t VariableCount() const { return m_variables.size() - m_dormant; }
    std::vector<CString>& OperandList() { return m_operands; }

    // statement loop
    bool Exec_command();
    bool ExecCommandStatement();
    bool ExecUnsupported();
    bool assignment();
    bool ExecPrint();

    // control flow
    bool LabelsScan();
    bool ScanDefinitions(uint32_t from);
    bool LabelsFree();
    bool LabelAdd(const CString& name, uint32_t position);
    bool LabelGet(const CString& name, uint32_t& position) const;
    bool ExecGoto();
    bool ExecIf();
    bool ExecElse();
    bool ExecFor();
    bool ExecNext();
    bool ExecNextByName();
    bool ExecDoWhile();
    bool ExecLoop();
    bool ExecGosub();
    bool ExecReturn();
    void PushToStack(const ob::CStackData& entry) { m_flowStack.push_back(entry); }
    void PushToStack(const CString& name, double value, uint32_t position);
    bool PopFromStack(ob::CStackData& entry);
    ob::COMMAND_TYPE FindLastPair(ob::COMMAND_TYPE open, ob::COMMAND_TYPE close, ob::COMMAND_TYPE stop);

    // functions
    bool BuildFunctionTable();
    bool AddFunction(CFuncDesc* desc);
    ob::FUNCTION_TYPE LookupFunction(const CString& name);
    ob::FUNCTION_TYPE LookupFunction(const CString& name, CFuncDesc& desc, bool copy);
    int GetParamList(CArgArray& args);
    int GetParamGroup(CArgArray& args);
    bool ExecFunction(CBasicVariable& result);
    bool ExecUserFunction(const CString& name, CBasicVariable& result, CArgArray& args, bool isCall);
    // What the last lookup of a call site found, for the call that follows.
    struct CallTarget {
        const CFuncDesc* desc = nullptr;
        uint64_t epoch = 0;      // FunctionEpoch() when it was found; 0: unknown
    };
    bool ExecUserFunction(const CString& name, CBasicVariable& result, CArgArray& args, bool isCall,
                          const CallTarget& target);
    // Changes whenever a callable name may find another descriptor: this
    // interpreter's table or the host's changed.
    uint64_t FunctionEpoch() const;
    CallTarget CurrentCallTarget() const { return {m_curFuncDesc, m_curFuncEpoch}; }
    bool ExecCall();
    bool FunctionsFree();
    bool ExecCustomFunction(const CFuncDesc& desc, CBasicVariable& result, CArgArray& args);
    // The descriptor of a callable name (host table first), or null.
    const CFuncDesc* FindFuncDesc(const CString& lowerName) const;

    // declared library functions
    bool ExecDeclare();
    // Flags of a type keyword in a declaration (1 char, 4 integer, 8 float
    // and double, 0x1040 string, 0x1020 unicode); 0 for any other keyword.
    static uint32_t GetReturnTypeDef(ob::KEYWORD_TYPE keyword);
    // Calls a declared function. With `sources` (one per argument), arguments
    // written as a bare variable get by-reference results back and record
    // arguments travel as their buffers; without, nothing comes back.
    bool ExecExternalFunction(const CFuncDesc& desc, CBasicVariable& result, CArgArray& args,
                              const std::vector<ob::CDeclaredArg>* sources = nullptr);
    // Reads the argument list of a call to declared function `name` (left at
    // its closing ")") and calls it.
    bool ExecDeclaredCall(const CString& name, CBasicVariable& result);

    // string, arithmetic and clock built-ins
    bool ExecStringOperation(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecArithmetics(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecTimeFunc(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);

    // user-defined types
    bool ExecType();
    bool TypesFree();
    // Creates a record variable of a declared type ("dim v as T"); false and
    // error 1 when the type is unknown.
    bool DimStructVariable(const CString& name, const CString& typeName, bool global);
    ob::CUserTypes& UserTypes() { return *m_types; }

    // named maps
    bool ExecMap();
    bool ExecMapOperation(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool MapsFree();
    ob::CMapDirectory& Maps() { return *m_maps; }

    // events, watches, timers
    bool ExecEvent();
    bool ExecThrow();
    bool ExecWatch();
    bool ExecTimerStart();
    bool ExecTimerStop();

    // automation objects
    bool ExecCreateObject(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    // name is "variable.method"; the arguments are passed by value.
    bool ExecAutomationMethod(const CString& name, CBasicVariable& result, CArgArray& args);
    // An unknown property gives no value and no error.
    bool GetObjectProperty(CBasicVariable& result, IDispatch* object, const CString& property);
    // target is "variable.property".
    bool SetObjectProperty(const CString& target, const CBasicVariable& value);
    bool GetDispID(IDispatch* object, const CString& name, DISPID& dispid);
    // True for success; otherwise the failure is shown to the user.
    bool HandleAutomationError(HRESULT code, EXCEPINFO& exception);
    // Releases the objects held by variables of this scope level and deeper.
    bool ObjectVariablesFree(unsigned level);

    // running other scripts and programs
    bool ExecRun(bool script);

    // files and dBase tables
    bool ExecOpenFile();
    bool ExecCloseFile();
    bool ExecFileOperation(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecFindFiles(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecDBFOperation(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool FileCloseAll();
    bool FileFormatCloseAll();
    ob::CFileSlotTable& FileSlots() { return *m_fileSlots; }
    ob::CDataFileTable& DataFiles() { return *m_dataFiles; }

    // dialogs, property sheets and their controls
    bool ExecControl(std::unique_ptr<uint16_t[]>& record, size_t& length, CString& handler, int& id);
    bool ExecDialog();
    bool ExecPropertySheet();
    std::unique_ptr<ob::CPropertyPageInfo> ExecPropertyPage();
    bool ExecCloseDialog();
    bool ExecAlterControl();
    bool ExecSetFocus();
    bool ExecGetControlValue(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    // windows of the session registry
    bool ExecWindowHandle(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecCopyData(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    // The control with this id in the innermost running dialog, or 0.
    ob::ui::WindowHandle GetControlWindow(int id);
    bool GetControlValue(ob::ui::WindowHandle control, CBasicVariable& result);
    bool ExecControlValue(ob::ui::WindowHandle control, CArgArray& values);
    bool ExecControlSelection(ob::ui::WindowHandle control, const CBasicVariable& value);
    bool GDIObjectsFree();
    // A denied statement: its line, or its whole block for the block statements.
    void SkipDeniedStatement(ob::COMMAND_TYPE command);
    ob::CDialogState& Dialogs() { return *m_dialogs; }
    ob::ui::Desktop& Desktop() { return *m_desktop; }
    // Errors from here on are reported at this text position (a line inside
    // a block statement).
    void SetStatementStart(uint32_t position) { m_stmtPos = position; }
    // True once nothing more of the run may execute: halted, or asked to stop.
    bool RunAbandoned() const;
    // the user-interaction built-ins without a dialog of the script's own,
    // the plane geometry of "pointoffset" and the "playsound" statement
    bool ExecAsk(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecPopupMenu(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecFileDlg(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecPointOffset(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecSendMessage(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    bool ExecPlaySound();
    // serial ports, keyed by the low 16 bits of the port number
    bool ExecComPortOperation(CBasicVariable& result, CArgArray& args, ob::FUNCTION_TYPE type);
    // Closes whatever port has the number, then stores `port`; true.
    bool COMPortAdd(uint16_t key, std::unique_ptr<ob::CSerialPort> port);
    ob::CSerialPort* COMPortFind(uint16_t key);
    // Closes and removes the port; false when the number is unknown.
    bool COMPortClose(uint16_t key);
    bool COMPortCloseAll();
    ob::CSerialPortTable& ComPorts() { return *m_comPorts; }

    // current token (read by statement handlers)
    const CString& Token() const { return m_token; }
    ob::BASIC_TOKEN_TYPE TokenType() const { return m_tokenType; }
    ob::COMMAND_TYPE Command() const { return m_command; }
    ob::KEYWORD_TYPE Keyword() const { return m_keyword; }
    ob::FUNCTION_TYPE CurrentFunction() const { return m_function; }
    const CString& MemberName() const { return m_memberName; }
    const CString& CurrentFunctionName() const { return m_curFuncName; }
    int PendingIndex() const { return m_pendingIndex; }
    void SetStop() { m_stop = true; }
    // True once a stop request or a budget has ended the run: statements
    // that are still completing must have no further effect.
    bool IsHalted() const { return m_halted; }
    void SetResident() { m_resident = true; }
    size_t ArgBufferCount() const { return m_argBuffers; }
    void SetArgBufferCount(size_t n) { m_argBuffers = n; }

private:
    // Statements compiled on first execution read and restore the cursor
    // and the current token exactly as the text path leaves them.
    friend class ob::CompiledStatements;
    friend class ob::StatementCompiler;
    void DecodeScript(const std::string& bytes, CString& out) const;
    void DefineScriptArguments();
    bool LoadSources(const CString& path, bool& aborted);
    void WriteEncryptedCopies(const std::vector<ob::SourceRequest>& requests);
    void DeliverError(const CString& message);
    void ExecStatement();
    void DispatchStatement(ob::BASIC_TOKEN_TYPE type);
    void RunMainLoop();
    void BuildLineIndex();
    bool IsDelimiterChar(char16_t c) const;
    void ReadIdentifier();
    ob::BASIC_TOKEN_TYPE ClassifyIdentifier();
    ob::BASIC_TOKEN_TYPE ReadToken();   // get_token's reading of the text
    void ReadStringLiteral();
    void LeftAssociative(CBasicVariable& result, std::u16string_view operators,
                         void (COrvoBasic::*next)(CBasicVariable&));
    void level2(CBasicVariable& result);
    void level3(CBasicVariable& result);
    void level4(CBasicVariable& result);
    void level5(CBasicVariable& result);
    void level6(CBasicVariable& result);
    void primitive(CBasicVariable& result);
    void unary(char16_t op, CBasicVariable& value);
    void PrimitiveVariable(CBasicVariable& result);
    void PrimitiveUnknownMember(CBasicVariable& result);
    bool StoreAssignment(const CString& target, uint32_t targetPos, ob::BASIC_TOKEN_TYPE kind, bool indexed,
                         int index, const CBasicVariable& value);
    bool DimOne(bool global);
    bool RunFunctionBody();
    struct CallScope;
    // A script function's value when it is one bare number (no field name,
    // no text buffer): handed over as the number instead of copied.
    struct NumberResult {
        bool taken = false;
        bool integer = false;
        double value = 0;
    };
    bool ExecScriptFunction(const CFuncDesc& desc, const CString& name, CBasicVariable& result, CArgArray& args,
                            bool isCall, NumberResult* number = nullptr);
    CBasicVariable* FunctionResult(const CFuncDesc& desc, const CString& name);
    void CreateVariableAt(const CString& name, const CBasicVariable& value, int index);
    bool BindDecodedParameters(uint32_t bodyPosition, CArgArray& args);
    void PerformReturn();
    struct ParamList;
    bool BindParameters(CArgArray& args, ParamList* record);
    void FreeScriptFunctionDescs();
    bool ExpressionTooDeep();
    void HostChecks();
    bool LongOperationAllowed(uint64_t bytes, uint64_t work);
    void AdoptVariable(const CString& key, std::unique_ptr<CBasicVariable> variable);
    void EndRun(int runResult);
    bool StopRequestedAtJump();
    void UpdateControlActive();
    uint64_t CountCells() const;
    bool StatementAllowed(ob::COMMAND_TYPE command);
    bool FunctionAllowed(ob::FUNCTION_TYPE type, const CString& name);
    bool CallAllowed(const CFuncDesc& desc);
    void SkipArgumentList();
    void FillErrorRecord(int id, const CString& message);
    void AddDiagnostics(ob::ErrorRecord& record) const;
    CString ClosestDefinedName(int id, const CString& name) const;
    CString HintFor(const ob::ErrorRecord& record) const;
    template <typename Report>
    void WithErrorSubject(const CString& subject, int osError, Report report);
    void ApplyHostDefaults();
    uint32_t LineEndBefore(uint32_t position) const;

    // Declared before every table of values, so that it outlives them all.
    ob::MemoryMeter m_meter;
    uint64_t m_transient = 0;          // copies made by the statement being executed
    uint64_t m_transientBase = 0;      // of which made by the statements of the callers
    uint64_t m_work = 0;               // long-operation work since the clock was last read
    uint64_t m_inheritedMemory = 0;    // what the script that ran this one held

    // Facts about the program text that never change while it runs, so that
    // loops and calls do not classify the same characters again.
    struct IdentInfo {
        uint32_t end;                 // position after the identifier
        ob::COMMAND_TYPE command;     // statement word, or CMD_NONE
        ob::KEYWORD_TYPE keyword;     // secondary keyword, or KW_NONE
        int dot;                      // index of the first point, or -1
    };
    // One name of the variable store (a global's spelling, or a local's
    // lower-case name with its level suffix) and the variable it names now,
    // or null. Kept for the interpreter's life so that the facts of a text
    // position can point at it: creating or deleting a variable updates its
    // binding instead of invalidating every remembered lookup.
    using VariableMap = std::unordered_map<CString, std::unique_ptr<CBasicVariable>, ob::CStringHash>;
    struct Binding {
        CBasicVariable* variable = nullptr;
        const CString* key = nullptr;   // the store's key (the map node's own)
        // The store's entry of the name while it is bound or dormant.
        std::unique_ptr<CBasicVariable>* slot = nullptr;
        // A function's value leaves the store each time the function
        // starts. Its entry stays in the map, empty (dormant: no variable of
        // that name exists), and the variable waits here, emptied, to be put
        // back when the value is set again instead of being made anew.
        std::unique_ptr<CBasicVariable> spare;
        int64_t createdBytes = 0;   // what CreateVariableAt charged for the name (0: not yet)
    };
    // A lower-cased name and its local binding at each scope level, made the
    // first time a level looks it up.
    struct Symbol {
        const CString* lower = nullptr;
        std::vector<Binding*> byLevel;
    };
    // What is known about the token starting at one text position.
    struct PositionFacts {
        IdentInfo ident{};
        bool hasIdent = false;
        bool hasNumber = false;
        double number = 0;
        Binding* global = nullptr;    // the name as written, looked up as a global
        Symbol* local = nullptr;      // the name as a local
        Symbol* result = nullptr;     // at a function's body: the local bearing its name
        // At a call: what the name found while the tables were at callEpoch.
        const CFuncDesc* callDesc = nullptr;
        uint64_t callEpoch = 0;
        ob::FUNCTION_TYPE callType = ob::FT_NONE;
        uint32_t params = 0;          // at a function's body: 1 + index into m_paramLists, 0 for none
    };
    const IdentInfo& IdentAt(uint32_t start);
    CBasicVariable* FindVariableAt(uint32_t position, const CString& name, const CString** key = nullptr);
    PositionFacts& FactsAt(uint32_t position) {
        if (position < m_factIndex.size() && m_factIndex[position] != 0) return m_facts[m_factIndex[position] - 1];
        return NewFactsAt(position);
    }
    PositionFacts& NewFactsAt(uint32_t position);
    bool UndefineLocal(uint32_t position, const CString& lowerName);
    Binding& BindingFor(const CString& key);
    void AdoptVariable(const CString& key, std::unique_ptr<CBasicVariable> variable, Binding& binding);
    void ReviveVariable(const CString& key, const CBasicVariable& value, Binding& binding);
    void PlaceSpare(Binding& binding, int64_t entryBytes);
    // What a variable's entry under `key` is charged besides its values.
    static int64_t EntryBytes(const CString& key);
    Binding& LocalBinding(Symbol& symbol) {
        unsigned level = m_scopeLevel;
        if (level < symbol.byLevel.size() && symbol.byLevel[level]) return *symbol.byLevel[level];
        return NewLocalBinding(symbol);
    }
    Binding& NewLocalBinding(Symbol& symbol);
    void Unbind(const CString& key);
    void Forget(Binding& binding);
    // A variable of that store key exists (its entry is not dormant).
    bool IsStored(const CString& key) const {
        auto it = m_variables.find(key);
        return it != m_variables.end() && it->second;
    }
    const CString& LevelSuffix(unsigned level);
    void ForgetTextCaches();
    // Compiled forms of statements by start position; null when the
    // compiled engine is switched off (OB_ENGINE=text).
    std::unique_ptr<ob::CompiledStatements> m_compiled;
    std::vector<uint32_t> m_factIndex;    // per text position: 1 + index into m_facts, 0 for none
    std::vector<PositionFacts> m_facts;
    struct PairEnd {
        uint32_t position;
        ob::BASIC_TOKEN_TYPE tokenType;
        ob::COMMAND_TYPE command;
        CString token;
    };
    std::unordered_map<uint64_t, PairEnd> m_pairCache;   // FindLastPair answers by start
    std::unordered_map<uint64_t, uint32_t> m_blockEnds;  // inner blocks: opener -> after its closer
    static uint64_t BlockKey(uint32_t opener, ob::COMMAND_TYPE open) { return (uint64_t{opener} << 6) | open; }
    std::unordered_map<CString, Binding, ob::CStringHash> m_bindings;
    std::unordered_map<CString, Symbol, ob::CStringHash> m_symbols;
    std::vector<CString> m_levelSuffixes;
    mutable CString m_lowerScratch;

    // program text and cursor
    CString m_scriptPath;
    CString m_text;
    uint32_t m_pos = 0;
    uint32_t m_length = 0;
    uint32_t m_endIndex = 0;
    std::vector<uint32_t> m_lineStarts;
    std::unique_ptr<ob::CSourceMap> m_sourceMap;   // text lines to the files they came from
    bool m_textHasNul = false;       // a NUL character ends a line for error reports
    uint32_t m_stmtPos = 0;          // where the statement being executed began

    // tables
    std::unordered_map<CString, ob::COMMAND_TYPE, ob::CStringHash> m_commands;
    ob::FunctionMap m_functions;
    std::unordered_map<CString, ob::KEYWORD_TYPE, ob::CStringHash> m_keywords;
    VariableMap m_variables;
    size_t m_dormant = 0;   // entries of m_variables that hold no variable (see Binding::spare)
    std::unordered_map<CString, uint32_t, ob::CStringHash> m_labels;
    std::vector<CString> m_operands;    // expression operand list
    CString m_scratchName;              // reused by FindVariable
    size_t m_argBuffers = 0;            // pending argument buffers of external calls
    // Argument lists of the calls in progress, one per nesting depth; a list
    // keeps its capacity between calls (its values are cleared after each).
    std::deque<CArgArray> m_argLists;
    // A function's parameter list as binding it read it the first time.
    struct ParamList {
        std::vector<std::pair<uint32_t, CString>> names;   // text position and spelling
        uint32_t end = 0;                                  // after the closing ")"
        ob::BASIC_TOKEN_TYPE previousType = ob::TOKEN_NONE;
    };
    std::vector<ParamList> m_paramLists;
    size_t m_argDepth = 0;
    friend class ArgListScope;
    std::vector<uint32_t> m_returnStack;
    std::vector<ob::CStackData> m_flowStack;
    std::unique_ptr<ob::CUserTypes> m_types;
    std::unique_ptr<ob::CMapDirectory> m_maps;
    std::unique_ptr<ob::CEventTable> m_events;
    std::unique_ptr<ob::CFileSlotTable> m_fileSlots;
    std::unique_ptr<ob::CDataFileTable> m_dataFiles;
    std::unique_ptr<ob::CDialogState> m_dialogs;
    std::unique_ptr<ob::platform::CLibrarySet> m_libraries;   // opened by declared calls, kept open
    std::unique_ptr<ob::CSerialPortTable> m_comPorts;

    // state
    CString m_lastError;
    unsigned m_scopeLevel = 1;
    int m_pendingIndex = 0;
    int m_callDepth = 0;
    int m_exprDepth = 0;
    bool m_exprAbandoned = false;       // nesting bound hit: unwind without further reports
    size_t m_exprOperandStart = 0;      // operand-list length when the expression began
    bool m_stop = false;
    bool m_resident = false;
    ob::ui::Desktop* m_desktop = nullptr;

    // host control
    std::atomic<bool> m_stopRequested{false};
    const std::atomic<bool>* m_parentStop = nullptr;
    bool m_halted = false;              // a stop or a budget ended the run: nothing more runs   // the stop flag of the script that ran this one
    bool m_controlActive = false;       // a budget or a line hook is set
    ob::Budgets m_budgets;
    uint64_t m_steps = 0;
    std::chrono::steady_clock::time_point m_deadline{};
    int m_runResult = OB_OK;
    ob::ErrorRecord m_lastErrorRecord;
    CString m_errorSubject;   // set by ReportErrorAbout for the one report
    const std::string* m_sourceBytes = nullptr;   // a script from memory, while it loads
    std::vector<CString> m_scriptArguments;
    int m_errorOsError = 0;
    ErrorHandler m_errorHandler;
    unsigned m_capabilities = OB_CAP_ALL;
    // The next script function called as a statement keeps its value for
    // the caller when it assigned one (an event whose answer is wanted).
    bool m_keepCallResult = false;
    PathResolver m_pathResolver;
    LineHook m_lineHook;
    // One active script-function call: its name as called and where the
    // calling statement began (the line is found when a report needs it).
    struct ActiveCall {
        CString function;
        uint32_t callerPosition = 0;
    };
    std::vector<ActiveCall> m_callChain;
    ob::CodePage m_codePage = ob::CodePage::Windows1252;
    std::shared_ptr<const ob::OutputHooks> m_outputHooks;

    // current token
    ob::COMMAND_TYPE m_command = ob::CMD_NONE;
    ob::FUNCTION_TYPE m_function = ob::FT_NONE;
    ob::KEYWORD_TYPE m_keyword = ob::KW_NONE;
    ob::BASIC_TOKEN_TYPE m_tokenType = ob::TOKEN_NONE;
    ob::BASIC_TOKEN_TYPE m_prevTokenType = ob::TOKEN_NONE;
    CString m_token;
    CString m_memberName;
    CString m_curFuncName;
    int m_curFuncPos = 0;
    const CFuncDesc* m_curFuncDesc = nullptr;   // found with m_curFuncName, valid at m_curFuncEpoch
    uint64_t m_curFuncEpoch = 0;
};
