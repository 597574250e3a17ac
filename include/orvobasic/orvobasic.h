/* OrvoBasic host API: the C interface of libOrvoBasic_Emb.
 *
 * A host runs a script file with OB_ExecuteScriptFile, keeps the returned
 * handle while the script is resident (it executed "stayresident"), sends it
 * named events with OB_SendEvent, runs the message loop so that its timers
 * tick (OB_RunMessageLoop), and releases it with OB_FreeScript.
 *
 * A host that wants to control the run (stop it, bound it, sandbox it, watch
 * it: "host control" below) creates the interpreter first with
 * OB_CreateScript, sets what it wants, then runs it with OB_RunScript.
 *
 * Threads: every function here, and every script handler, timer tick and
 * host function they lead to, runs on the thread that calls it.
 *   - Any number of scripts may run on any number of threads at once. The
 *     state they share in the process (the list of live scripts, the host
 *     functions, the error records, the desktop) is locked by the library.
 *   - Use each script from one thread at a time. A call that uses a script
 *     another thread is using (running it, sending it an event, reading or
 *     changing its settings, freeing it) waits until that use ends. The
 *     exception is a call made from inside a script (a host function, an
 *     error handler, a line hook): it does not wait, so two threads can never
 *     wait on each other, and a script busy on another thread is then
 *     skipped (OB_SendEvent), reported as not live (the getters and setters)
 *     or left alone (OB_FreeScript, OB_RunScript returns 0).
 *   - A broadcast (OB_SendEvent with NULL) therefore waits for each script
 *     that another thread is running; do not broadcast from outside a script
 *     while another thread runs a script that waits for this thread.
 *   - A script's timer belongs to the thread that ran its "timerstart": its
 *     ticks run in that thread's OB_RunMessageLoop (or a modal loop on it),
 *     never on another thread. Free a script with a timer on its own thread.
 *   - OB_QuitMessageLoop and OB_RequestStop may be called from any thread
 *     or a signal handler.
 *   - Host functions, error handlers, path resolvers and line hooks run on
 *     the thread of the script that calls them, concurrently with those of
 *     other threads' scripts: make them thread-safe when several threads
 *     run scripts.
 *   - The desktop (desktop.h) is shared by all threads; set it before the
 *     first script starts and keep it until the last one is freed.
 *
 * Strings: the plain functions take UTF-16 text (char16_t, zero-terminated);
 * the ...Utf8 twins take UTF-8. Error texts and values are never NULL-only:
 * a NULL string argument counts as "".
 *
 * Exceptions never leave these functions: a script that is aborted (the
 * user answered Cancel to an error box) or fails ends the call normally.
 */
#pragma once

#include <orvobasic/export.h>

#ifndef __cplusplus
#include <uchar.h> /* char16_t for C hosts; automation.h uses it */
#endif
#include <stddef.h>
#include <stdint.h>

#include <orvobasic/automation.h>
#include <orvobasic/codepage.h>
#include <orvobasic/hostcontrol.h>
#include <orvobasic/session.h>
#include <orvobasic/sources.h>

#ifdef __cplusplus
class COrvoBasic;
extern "C" {
#else
typedef struct COrvoBasic COrvoBasic;
#endif

/* A running script: a pointer to its interpreter. NULL means "none" (or, for
 * OB_SendEvent, "every live script"). */
typedef COrvoBasic* OB_HANDLE;

/* The interface version this header describes: OB_Initialize returns it. */
#define OB_INTERFACE_VERSION 0x10000

/* A function the host adds to the language (OB_AddCustomFunction).
 * Called on the host thread while a script runs, with the calling script,
 * its `count` arguments (the library owns them: copy what you keep) and the
 * user data given at registration. Store the call's value in `result`, which
 * arrives as VT_EMPTY; the library takes it over and clears it (a BSTR or
 * IDispatch put there belongs to the library from then on). Leaving it
 * VT_EMPTY gives the script an unset value. The function may call the API,
 * including OB_SendEvent (events nest), but must not free the calling script. */
typedef void (*OB_HostFunction)(OB_HANDLE script, const VARIANT* args, int32_t count, VARIANT* result,
                                void* userData);

/* Returns the interface version, OB_INTERFACE_VERSION (65536). */
OB_API int32_t OB_Initialize(void);

/* Does nothing; kept for hosts that pair it with OB_Initialize. */
OB_API void OB_Uninitialize(void);

/* Loads and runs the script file `path` to the end of its main program.
 * Returns the script's handle, or NULL when the file could not be loaded
 * (error 17 "Not enough memory to load source file" is then shown, and
 * `resident` is left untouched). Otherwise, when `resident` is not NULL, it
 * receives 1 if the script executed "stayresident" and 0 if not. The handle
 * is returned in both cases and must be freed with OB_FreeScript: at once
 * for a script that is not resident, when the host is done with it for one
 * that is. Errors in the script are shown through the desktop and do not
 * make the result NULL. */
OB_API OB_HANDLE OB_ExecuteScriptFile(const char16_t* path, int32_t* resident);
OB_API OB_HANDLE OB_ExecuteScriptFileUtf8(const char* path, int32_t* resident);

/* Destroys a script: its timer stops, its handlers are dropped, its files
 * are closed. NULL, or a handle already freed, is ignored. */
OB_API void OB_FreeScript(OB_HANDLE script);

/* Raises the event `name` (case is ignored) with `count` arguments in the
 * script `script`, or in every live script, in order of creation, when
 * `script` is NULL. The handlers attached with "event create" run one after
 * another, to their end, before this returns. Arguments are converted to
 * script values: VT_EMPTY/VT_NULL unset, VT_I2/VT_I4/VT_R4/VT_R8/VT_BOOL
 * numbers, VT_BSTR strings, VT_DISPATCH objects, other types their text;
 * the caller keeps ownership of `args` (may be NULL when `count` is 0).
 * A handle that is not a live script and an event without handlers do
 * nothing. Always returns 1. */
OB_API int32_t OB_SendEvent(OB_HANDLE script, const char16_t* name, const VARIANT* args, int32_t count);
OB_API int32_t OB_SendEventUtf8(OB_HANDLE script, const char* name, const VARIANT* args, int32_t count);

/* The text of the last error the script reported: the message, a line feed
 * and the line where the failing statement began, without its line end
 * (the message and sourceLine of OB_GetLastErrorInfo); "" when none. Copies at most `size` - 1 units and a
 * terminating zero into `buffer` (nothing when `size` is 0 or `buffer` NULL)
 * and returns the full length in units (char16_t resp. bytes) without the
 * zero, so a result >= size means the text was cut. An invalid handle
 * gives "". */
OB_API int32_t OB_GetLastError(OB_HANDLE script, char16_t* buffer, int32_t size);
OB_API int32_t OB_GetLastErrorUtf8(OB_HANDLE script, char* buffer, int32_t size);

/* 1 when the script executed "stayresident", else 0 (also for an invalid handle). */
OB_API int32_t OB_IsResident(OB_HANDLE script);

/* 1 while the script has a running timer ("timerstart" without a later
 * "timerstop"), else 0 (also for an invalid handle). A resident script
 * without a timer runs only when the host sends it events. */
OB_API int32_t OB_HasTimer(OB_HANDLE script);

/* Adds a host function that scripts call by `name` (case is ignored), like
 * a built-in: `x = name(a, b)` or `call name(a)`. The table is shared by all
 * scripts of the process; the first registration of a name wins (a second
 * one returns 1 and changes nothing). `paramCount` is informative: the
 * function receives the arguments the script actually passed. Returns 0 when
 * the name is empty or `function` is NULL, else 1.
 * The table is emptied when the last live script is freed: register your
 * functions again before running a script after that. With scripts on
 * several threads, keep one script alive (OB_CreateScript) for as long as
 * the functions are needed, so that the table is not emptied in between. */
OB_API int32_t OB_AddCustomFunction(const char16_t* name, OB_HostFunction function, int32_t paramCount,
                                    void* userData);
OB_API int32_t OB_AddCustomFunctionUtf8(const char* name, OB_HostFunction function, int32_t paramCount,
                                        void* userData);

/* Runs the message loop on the calling thread: delivers the ticks of the
 * timers that scripts started on this thread ("timerstart") as they fall due, and returns after
 * `timeoutMs` milliseconds (a negative value: no time limit) or when
 * OB_QuitMessageLoop is called. Returns 1 when ended by OB_QuitMessageLoop,
 * 0 when the time ran out. Waits without using the processor. Timers tick
 * only while a loop runs (this one, or a modal dialog's). */
OB_API int32_t OB_RunMessageLoop(int32_t timeoutMs);

/* Makes the running message loop return (the next one to start, when none
 * runs; one of them when several threads run theirs). Safe to call from any
 * thread and from a signal handler. */
OB_API void OB_QuitMessageLoop(void);

/* ---- host control ------------------------------------------------------
 * Result codes (OB_OK, OB_E_*), message numbers (OB_ERR_*), capability bits
 * (OB_CAP_*) and OB_CONTINUE / OB_ABORT are those of hostcontrol.h. A host
 * that uses none of this gets the behaviour scripts have always had. */

/* Creates an interpreter that has not run yet, for the setters below and
 * OB_RunScript. Returns NULL only when it could not be created. Free it with
 * OB_FreeScript. */
OB_API OB_HANDLE OB_CreateScript(void);

/* Loads the script file `path` into `script` (made by OB_CreateScript) and
 * runs it to the end of its main program, as OB_ExecuteScriptFile does.
 * Returns 1 when the file was loaded and run (errors in the script do not
 * change that; see OB_GetRunResult), 0 when it could not be loaded (error 17
 * is then reported), when `script` is not a live handle, or when `script`
 * is already running (a call from one of its own callbacks). The handle
 * stays valid in every case and is freed with OB_FreeScript; when it
 * executed "stayresident" (OB_IsResident) it keeps serving events.
 * Running a handle again runs the file anew in the same interpreter: the
 * host's settings stay, budgets count again from the start. */
OB_API int32_t OB_RunScript(OB_HANDLE script, const char16_t* path);
OB_API int32_t OB_RunScriptUtf8(OB_HANDLE script, const char* path);

/* Runs a script held in memory, as OB_RunScript runs a file: `bytes` are the
 * script as a file would hold them (`length` bytes; a negative length: up to
 * the first NUL), and `name` (UTF-8; NULL counts as "") stands for the path
 * in error reports and the "OnStart"/"OnStop" events. A relative path the
 * script opens is relative to the working directory. Returns 1 when it ran,
 * 0 for a handle that is not live or is running, or NULL bytes. */
OB_API int32_t OB_RunScriptText(OB_HANDLE script, const char* name, const char* bytes, int32_t length);

/* An interactive session: appends `bytes` (statements, as a script file holds
 * them; `length` as above) to the script's text and runs them at once. What
 * earlier chunks created (variables, functions, open files, maps) stays.
 * Give a chunk whole blocks: an "if" with its "endif", a "function" with its
 * "endfunction". A chunk that begins with "function" or "sub" is entered
 * without running. `name` is used by the first chunk as the path errors
 * show; their line numbers count across the session. Returns 1 when
 * statements ran, 0 for a definition, a handle that is not live or is
 * running, or NULL bytes. */
OB_API int32_t OB_ExecuteInteractive(OB_HANDLE script, const char* name, const char* bytes, int32_t length);

/* Arguments for the script (UTF-8, `count` of them; copied). When there is at
 * least one, runs of the script start with the global array ARGV holding
 * them as strings, ARGV[0] the first; with none, no name is defined, so a
 * script that does not expect arguments runs exactly as before. Does
 * nothing for a handle that is not live. */
OB_API void OB_SetScriptArgumentsUtf8(OB_HANDLE script, int32_t count, const char* const* args);

/* Called once per variable by OB_ListVariablesUtf8: its name as the script
 * writes it, the text of its first element (as "print" shows it; "" when
 * unset) and its number of elements. The strings live during the call. */
typedef void (*OB_VariableVisitor)(const char* name, const char* value, int32_t count, void* userData);

/* Visits the variables of the main program and the globals, in name order
 * (the predefined Nothing, True and False left out). Does nothing for a
 * handle that is not live or a NULL visitor. */
OB_API void OB_ListVariablesUtf8(OB_HANDLE script, OB_VariableVisitor visit, void* userData);

/* Asks the script to stop at its next statement: the run (or the event
 * handler now running) ends as an abort does, with error OB_ERR_STOPPED
 * reported and OB_GetRunResult giving OB_E_STOPPED. Safe from any thread and
 * from a signal handler: it only sets an atomic flag. `script` must be live
 * (not yet freed); NULL is ignored. A request made while nothing runs stops
 * the next run or handler at its first statement. */
OB_API void OB_RequestStop(OB_HANDLE script);

/* Sets the script's budgets; 0 means unlimited for each:
 *   maxSteps   statements executed             -> OB_E_STEP_LIMIT (error 102)
 *   timeoutMs  wall clock, in milliseconds     -> OB_E_TIMEOUT    (error 103)
 *   maxDepth   nested user-function calls      -> OB_E_DEPTH      (error 104)
 *   maxCells   variables plus array elements   -> OB_E_MEMORY     (error 105)
 * Exhausting one ends the run: the error is reported (to the error handler
 * or the desktop) and OB_GetRunResult gives the code. Set them before
 * OB_RunScript, where they count from the start of the run, or during the
 * run from the host thread (in a callback), where they take effect at once
 * and count from then. Does nothing for a handle that is not live. */
OB_API void OB_SetBudgets(OB_HANDLE script, uint64_t maxSteps, uint64_t timeoutMs, int32_t maxDepth,
                          uint64_t maxCells);

/* Sets the script's memory budget in bytes; 0 (the default) means
 * unlimited. It counts what the script's values hold (string bytes, array
 * elements, map entries with their keys and values, records, loop entries)
 * plus the copies the statement being executed makes of them, and refuses
 * an operation (a concatenation, "repeat", "replace", a line read from a
 * file, an enumeration of a map) before it allocates past the budget.
 * Exceeding it ends the run like the budgets above: OB_E_MEMORY_LIMIT,
 * error OB_ERR_MEMORY_LIMIT (106). Keeps the other budgets; takes effect at
 * once like them. A script started by "run" shares the budget with its
 * caller. Independently of any budget, a run during which the system has no
 * memory left ends with OB_E_NO_MEMORY, error OB_ERR_NO_MEMORY (107).
 * Does nothing for a handle that is not live. */
OB_API void OB_SetMaxMemory(OB_HANDLE script, uint64_t maxBytes);

/* How the script's last run ended: OB_OK, or the OB_E_* code of the stop
 * or budget that ended it. OB_OK also for a handle that is not live. */
OB_API int32_t OB_GetRunResult(OB_HANDLE script);

/* One user-function call that was active when an error was reported. */
typedef struct OB_CallInfo {
    const char* function; /* the name as called, UTF-8 */
    int32_t line;         /* 1-based line of the statement that made the call */
    const char* script;   /* the file that statement stands in, UTF-8: the script, or a file it
                             includes or uses as a library */
} OB_CallInfo;

/* A reported error. The strings are UTF-8 and never NULL ("" when empty).
 * Lifetime: in an error handler, valid during the call; from
 * OB_GetLastErrorInfo, until the next OB_GetLastErrorInfo or OB_RunScript
 * for the same script, or OB_FreeScript. Copy what you keep. */
typedef struct OB_ErrorInfo {
    int32_t id;               /* message number (1..59, OB_ERR_*); 0 when its text is missing */
    const char* message;      /* message text alone */
    const char* script;       /* script path as the host gave it; for a statement in an included or
                                 library file, that file's path as the script named it, joined to
                                 the folder of the file that named it */
    int32_t line;             /* 1-based line where the failing statement began, in `script`; 0
                                 before loading */
    int32_t column;           /* 1-based column of that statement's first character; 0 when line is 0 */
    const char* sourceLine;   /* that line's text without its line end */
    int32_t runResult;        /* OB_E_* when this report ends the run (OB_ERR_* ids), else OB_OK */
    int32_t callCount;        /* entries in `calls`; 0 in the main program */
    const OB_CallInfo* calls; /* the active calls, outermost first; NULL when callCount is 0 */
    /* Details for people reading the report (never NULL; "" when absent): */
    const char* subject;      /* the name or path the error is about (an undefined variable, a file) */
    int32_t subjectColumn;    /* 1-based column of the subject on sourceLine; 0 when unknown */
    const char* osReason;     /* the system's reason after a failed file operation */
    const char* suggestion;   /* a defined name close to a misspelt subject ("did you mean") */
    const char* hint;         /* one line on a known trap of the dialect that fits the error */
} OB_ErrorInfo;

/* Called on the host thread for every error the script reports, instead of
 * the desktop's error box. Return OB_CONTINUE to go on with the next
 * statement, OB_ABORT to end the run (any other value counts as continue;
 * a report that ends the run, runResult != OB_OK, ends it either way). The
 * callback may read the script's state through this API but must not free
 * or run it. */
typedef int32_t (*OB_ErrorHandler)(OB_HANDLE script, const OB_ErrorInfo* error, void* userData);

/* Sets the script's error handler; NULL restores the desktop's error box.
 * `userData` is passed to every call. Does nothing for a handle that is not
 * live. With `script` NULL, sets the handler every script created afterwards
 * starts with (and a script started by "run" takes its parent's). */
OB_API void OB_SetErrorHandler(OB_HANDLE script, OB_ErrorHandler handler, void* userData);

/* The last error the script reported, into `*info` (see OB_ErrorInfo for how
 * long its strings live). Returns 1 when there was one, 0 (and leaves `info`
 * untouched) when the script reported none, the handle is not live, or
 * `info` is NULL. */
OB_API int32_t OB_GetLastErrorInfo(OB_HANDLE script, OB_ErrorInfo* info);

/* What the script may reach outside the process: OB_CAP_* bits of what is
 * allowed (OB_CAP_ALL, the default; OB_CAP_NONE for a full sandbox). A
 * denied statement reports error 40, a denied function error 21; neither
 * does anything else. Takes effect at once. Unknown bits are ignored. */
OB_API void OB_SetCapabilities(OB_HANDLE script, uint32_t allowed);

/* The size of the buffer a path resolver receives, at least. */
#define OB_PATH_BUFFER_SIZE 4096

/* Called on the host thread with every path the script opens (UTF-8), before
 * it is used. `buffer` (`size` >= OB_PATH_BUFFER_SIZE bytes) arrives holding
 * the same path: leave it to keep the path, or write a zero-terminated
 * replacement. Return nonzero to go on with the path in `buffer`, 0 to
 * refuse it: the script then gets error 47 and nothing is opened. A buffer
 * left without its terminating zero counts as a refusal. */
typedef int32_t (*OB_PathResolver)(OB_HANDLE script, const char* path, char* buffer, int32_t size,
                                   void* userData);

/* Sets the script's path resolver; NULL removes it (paths are used as
 * given). Does nothing for a handle that is not live. */
OB_API void OB_SetPathResolver(OB_HANDLE script, OB_PathResolver resolver, void* userData);

/* Called on the host thread before each statement the script executes, with
 * the path of the file the statement stands in (the script, or an included
 * or library file; UTF-8, valid during the call), the statement's 1-based
 * line in that file and the scope level (1 in the main program, +1 per user-function
 * call). Return OB_CONTINUE to execute it, OB_ABORT to stop the run as
 * OB_RequestStop does. The hook must not free or run the script. */
typedef int32_t (*OB_LineHook)(OB_HANDLE script, const char* path, int32_t line, int32_t level,
                               void* userData);

/* Sets the script's line hook; NULL removes it (and its cost). Does nothing
 * for a handle that is not live. */
OB_API void OB_SetLineHook(OB_HANDLE script, OB_LineHook hook, void* userData);

/* ---- dialogs without a display ------------------------------------------
 * The library's own desktop keeps dialogs and property sheets in memory and
 * plays an action script in their modal loops: what a person would do, one
 * action per line (type 100 "text", click 1, select 101 "item", wait-ms
 * 200, snapshot, ok, cancel ...; the README lists them). A modal loop with
 * no action left cancels its dialog and notes it on stderr, so a run never
 * waits for a person. The actions belong to the process-wide desktop
 * (ob::ui::GetDesktop): set them after installing a desktop of your own. */

/* Loads the actions from `text`; `name` is how notes and errors call them
 * ("NAME:LINE: ..."). Replaces the actions not played yet. Returns 1, or 0
 * when a line is malformed: then the reason goes to `error` (cut to `size`
 * units with a terminating zero; NULL or size 0 for none) and the actions
 * left before stay. */
OB_API int32_t OB_SetUiActions(const char16_t* text, const char16_t* name, char16_t* error, int32_t size);
OB_API int32_t OB_SetUiActionsUtf8(const char* text, const char* name, char* error, int32_t size);
/* Loads the actions from a UTF-8 text file, named by its path. Returns 0 with
 * a reason when it cannot be read or a line is malformed. */
OB_API int32_t OB_LoadUiActionsFile(const char* path, char* error, int32_t size);
/* 1 once an action failed (it named a missing control, expected another
 * dialog than the open one ...): the failure was noted on stderr with the
 * action's file and line, every open dialog was cancelled and the script
 * stopped. Else 0. */
OB_API int32_t OB_UiActionsFailed(void);
/* ---- serial ports ---------------------------------------------------------
 * A script's port n ("comportopen"(n, ...)) is the device /dev/ttyS(n-1)
 * unless the host maps n to another device. */

/* Maps port `port` (1 or more) to the device `path` (UTF-8) for every script
 * of the process, from their next "comportopen" on. A path without "/" names
 * a device under /dev/ ("ttyUSB0"); NULL or "" removes the mapping. Returns
 * 1, or 0 for a port below 1. Safe from any thread. */
OB_API int32_t OB_SetComPortPath(int32_t port, const char* path);

/* Called on the script's thread when one of its ports fails: the device
 * could not be opened, the line refused the settings, or a write or close
 * failed. `status` (UTF-8, valid during the call) names the device path and
 * the reason, e.g. "/dev/ttyS7: No such file or directory". The script
 * itself is told nothing more than the language says: "comportopen" still
 * answers true, and reads and writes on an unopened port leave their results
 * unset. The handler must not free or run the script. */
typedef void (*OB_ComPortStatusHandler)(OB_HANDLE script, int32_t port, const char* status, void* userData);

/* Sets the script's port status handler; NULL removes it. Does nothing for
 * a handle that is not live. */
OB_API void OB_SetComPortStatusHandler(OB_HANDLE script, OB_ComPortStatusHandler handler, void* userData);

/* The status text (UTF-8) of the script's port `port`, as passed to the
 * status handler: "" when the port works or is not in the script's table.
 * Buffer and result as OB_GetLastErrorUtf8. */
OB_API int32_t OB_GetComPortStatusUtf8(OB_HANDLE script, int32_t port, char* buffer, int32_t size);
/* ---- text, output and variables ----------------------------------------
 * The settings below that take a script handle accept NULL for "every
 * script created from now on": the setting then becomes the default a new
 * interpreter starts with (scripts that exist keep theirs; a script started
 * by "run" takes its parent's). So a host that runs scripts with
 * OB_ExecuteScriptFile sets them once, before the first run. */

/* The code page of the script's 8-bit text: OB_CODEPAGE_1252 (the default)
 * or OB_CODEPAGE_UTF8. It applies to script files (but a file that starts
 * with the UTF-8 mark EF BB BF, or is valid UTF-8 with at least one
 * multi-byte sequence, is always read as UTF-8), 8-bit text files ("open"
 * without a UTF-16 mark, read and written), dBase tables and serial lines.
 * Set it before OB_RunScript. Returns 1, or 0 (nothing changed) for another
 * value or a handle that is neither NULL nor live. */
OB_API int32_t OB_SetCodePage(OB_HANDLE script, int32_t codePage);

/* Message box styles (the Win32 MB_* values scripts use) and the answers. */
enum {
    OB_MB_OK = 0x0, OB_MB_OKCANCEL = 0x1, OB_MB_ABORTRETRYIGNORE = 0x2, OB_MB_YESNOCANCEL = 0x3,
    OB_MB_YESNO = 0x4, OB_MB_RETRYCANCEL = 0x5, OB_MB_TYPEMASK = 0xF,
    OB_MB_ICONSTOP = 0x10, OB_MB_ICONQUESTION = 0x20, OB_MB_ICONEXCLAMATION = 0x30,
    OB_MB_ICONINFORMATION = 0x40
};
enum { OB_IDOK = 1, OB_IDCANCEL = 2, OB_IDABORT = 3, OB_IDRETRY = 4, OB_IDIGNORE = 5, OB_IDYES = 6, OB_IDNO = 7 };

/* The text of one "print" statement, UTF-8: `length` bytes (the text may
 * hold zero bytes) followed by a terminating zero, valid during the call.
 * It ends with the statement's line feed. */
typedef void (*OB_PrintHandler)(OB_HANDLE script, const char* text, int32_t length, void* userData);

/* A message box other than "print" and error boxes (for example "ask"):
 * the text (UTF-8, valid during the call) and its style, OB_MB_* bits.
 * Return the button the user chose, OB_ID* (one the style offers). */
typedef int32_t (*OB_MessageBoxHandler)(OB_HANDLE script, const char* text, uint32_t style, void* userData);

/* Where what a script shows goes. A NULL member leaves that kind of box to
 * the desktop. Error boxes have their handler of their own:
 * OB_SetErrorHandler (message, line, the calls that led there; the handler
 * answers go on or abort). */
typedef struct OB_OutputHandlers {
    OB_PrintHandler print;
    OB_MessageBoxHandler messageBox;
    void* userData; /* passed to both */
} OB_OutputHandlers;

/* Sets the script's output handlers (copied; `handlers` may go away after
 * the call); NULL `handlers` gives everything back to the desktop. Called
 * on the host thread while the script runs, from inside OB_RunScript,
 * OB_SendEvent, OB_RunMessageLoop or OB_SetVariable. A handler may read the
 * script through this API but must not free or run it.
 *
 * A host that sets nothing gets the library's desktop: the headless one,
 * unless a C++ host installed its own with ob::ui::SetDesktop. The headless
 * desktop drops printed text, answers every box with OK and every error box
 * with OK, so an unattended script goes on past an error as a user choosing
 * OK would; the last error stays readable with OB_GetLastError and
 * OB_GetLastErrorInfo. It writes to the process's streams only for dialogs:
 * a dialog cancelled because no UI action is left (or a failed action) gives
 * one note line on stderr, and a `snapshot` action prints on stdout. A host
 * whose stdout or stderr must stay clean (a protocol stream, say) installs
 * a desktop of its own that overrides UiNote and UiOutput. */
OB_API void OB_SetOutputHandlers(OB_HANDLE script, const OB_OutputHandlers* handlers);

/* Reads a script variable into `*value`, which the caller has initialised
 * (VariantInit) and clears afterwards: a number arrives as VT_I4 or VT_R8,
 * a truth value as VT_BOOL, a string as VT_BSTR, an object as VT_DISPATCH
 * (a reference the caller owns), an unset element as VT_EMPTY. `index` is
 * an element (from 0) or -1 for the current element, what the bare name
 * gives in an expression.
 * The name is found as a statement at the script's current scope level
 * finds it: a global by its exact spelling first, then a local of the
 * current level in any letter case. Outside a run that is the main
 * program's level, so after OB_RunScript the main program's variables are
 * readable; from inside a host function, the calling function's locals.
 * Returns 1, or 0 (value untouched) when the handle is not live, `name` or
 * `value` is NULL, no such variable exists or the index is out of range. */
OB_API int32_t OB_GetVariable(OB_HANDLE script, const char16_t* name, int32_t index, VARIANT* value);
OB_API int32_t OB_GetVariableUtf8(OB_HANDLE script, const char* name, int32_t index, VARIANT* value);

/* Writes a script variable, found as OB_GetVariable finds it, as the
 * assignment statement does: `index` -1 is "name = value" (an array becomes
 * the single value), an index from 0 is "name[index] = value", which needs
 * an existing element. A name that does not exist is created as a local of
 * the current level by index -1 or 0. A "watch" on the variable fires.
 * `value` is converted as OB_SendEvent's arguments are (NULL: unset) and
 * stays the caller's. Set before OB_RunScript, a variable is there when the main
 * program starts. Returns 1, or 0 (nothing changed) when the handle is not
 * live, `name` is NULL or not a variable name, or the element does not
 * exist and cannot be created. */
OB_API int32_t OB_SetVariable(OB_HANDLE script, const char16_t* name, int32_t index, const VARIANT* value);
OB_API int32_t OB_SetVariableUtf8(OB_HANDLE script, const char* name, int32_t index, const VARIANT* value);

/* The number of elements of a script variable (1 for a plain variable), 0
 * when there is no such variable or the handle is not live. */
OB_API int32_t OB_GetVariableSize(OB_HANDLE script, const char16_t* name);
OB_API int32_t OB_GetVariableSizeUtf8(OB_HANDLE script, const char* name);

#ifdef __cplusplus
}
#endif
