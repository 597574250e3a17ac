/* Host control: how a host stops a script, bounds what a run may consume,
 * restricts what a script may reach outside the process, and watches it
 * statement by statement. Usable from C (the constants) and C++ (the
 * record types used by COrvoBasic). A host that sets none of this gets the
 * behaviour scripts have always had. */
#pragma once

/* How a run ended, readable after it (COrvoBasic::GetRunResult). */
enum {
    OB_OK = 0,            /* ran to its end, or ended by "end"/"stop" or an error answered with abort */
    OB_E_STOPPED = 1,     /* the host asked it to stop */
    OB_E_STEP_LIMIT = 2,  /* the statement budget was used up */
    OB_E_TIMEOUT = 3,     /* the wall-clock deadline passed */
    OB_E_DEPTH = 4,       /* the call-depth budget was exceeded */
    OB_E_MEMORY = 5,      /* the budget of variables plus array elements was exceeded */
    OB_E_MEMORY_LIMIT = 6, /* the budget of bytes held by the script's values was exceeded */
    OB_E_NO_MEMORY = 7    /* the system had no memory left for the script */
};

/* Message numbers under which the host-control outcomes are reported through
 * the error path (the script's own errors use 1..59). */
enum {
    OB_ERR_STOPPED = 101,
    OB_ERR_STEP_LIMIT = 102,
    OB_ERR_TIMEOUT = 103,
    OB_ERR_DEPTH = 104,
    OB_ERR_MEMORY = 105,
    OB_ERR_MEMORY_LIMIT = 106,
    OB_ERR_NO_MEMORY = 107
};

/* Capabilities: what a script may reach outside the process. All allowed by
 * default. A denied statement reports error 40 "Unsupported keyword", a
 * denied function error 21 "Undefined function name"; neither does anything
 * else. */
enum {
    OB_CAP_FILES = 0x01,       /* open, close, the file built-ins, findfiles, dBase tables */
    OB_CAP_PROCESS = 0x02,     /* run, runexe */
    OB_CAP_NATIVE = 0x04,      /* declare */
    OB_CAP_SERIAL = 0x08,      /* serial ports */
    OB_CAP_AUTOMATION = 0x10,  /* automation objects */
    OB_CAP_DIALOGS = 0x20,     /* dialogs, windows, menus, file dialogs, ask */
    OB_CAP_SOUND = 0x40,       /* playsound */
    OB_CAP_ALL = 0x7F,
    /* everything that reaches outside the process */
    OB_CAP_NONE = 0x00
};

/* What an error handler or line hook asks for. */
enum { OB_CONTINUE = 0, OB_ABORT = 1 };

#ifdef __cplusplus
#include <orvobasic/CString.h>

#include <cstdint>
#include <vector>

namespace ob {

// One user-function call that was active when an error was reported.
struct CallFrame {
    CString function;   // the name as called
    int line = 0;       // line of the statement that made the call
    CString script;     // the file that statement stands in
};

// Everything known about a reported error.
struct ErrorRecord {
    int id = 0;                     // message number; 0 when the text could not be loaded
    CString message;                // message text alone
    CString script;                 // script path as the host gave it, or the included file's path
    int line = 0;                   // 1-based line in `script` where the failing statement began; 0 before loading
    int column = 0;                 // 1-based column of that statement's first character
    CString sourceLine;             // that line, without its line end
    std::vector<CallFrame> calls;   // outermost call first; empty in the main program
    int runResult = OB_OK;          // the host-control outcome this report announces, if any
    // Details for people reading the report; the message text stays as it is.
    CString subject;                // the name or path the error is about; empty when none
    int subjectColumn = 0;          // 1-based column of the offending text on sourceLine; 0 when unknown
    CString osReason;               // the system's reason after a failed file operation; empty otherwise
    CString suggestion;             // a defined name close to a misspelt subject; empty when none is close
    CString hint;                   // one line on a known trap of the dialect; empty when none applies
};

// Budgets of one interpreter; 0 means unlimited.
struct Budgets {
    uint64_t maxSteps = 0;       // statements executed
    uint64_t timeoutMs = 0;      // wall clock from the start of ExecuteProgram (or from setting it mid-run)
    int maxDepth = 0;            // nested user-function calls
    uint64_t maxCells = 0;       // variables plus array elements
    uint64_t maxMemory = 0;      // bytes held by the script's values (strings, elements, map entries,
                                 // records) and by the copies a statement makes of them
};

}  // namespace ob
#endif
