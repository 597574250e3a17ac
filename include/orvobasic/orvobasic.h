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
 * host function they lead to, runs on the thread that calls it. Call the
 * library from one thread only (the "host thread"); the exceptions are
 * OB_QuitMessageLoop and OB_RequestStop, which may be called from any thread
 * or a signal handler.
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
#include <orvobasic/hostcontrol.h>

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
 * and the source line; "" when none. Copies at most `size` - 1 units and a
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
 * functions again before running a script after that. */
OB_API int32_t OB_AddCustomFunction(const char16_t* name, OB_HostFunction function, int32_t paramCount,
                                    void* userData);
OB_API int32_t OB_AddCustomFunctionUtf8(const char* name, OB_HostFunction function, int32_t paramCount,
                                        void* userData);

/* Runs the message loop on the calling thread: delivers the ticks of the
 * scripts' timers ("timerstart") as they fall due, and returns after
 * `timeoutMs` milliseconds (a negative value: no time limit) or when
 * OB_QuitMessageLoop is called. Returns 1 when ended by OB_QuitMessageLoop,
 * 0 when the time ran out. Waits without using the processor. Timers tick
 * only while a loop runs (this one, or a modal dialog's). */
OB_API int32_t OB_RunMessageLoop(int32_t timeoutMs);

/* Makes the running message loop return (the next one to start, when none
 * runs). Safe to call from any thread and from a signal handler. */
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
} OB_CallInfo;

/* A reported error. The strings are UTF-8 and never NULL ("" when empty).
 * Lifetime: in an error handler, valid during the call; from
 * OB_GetLastErrorInfo, until the next OB_GetLastErrorInfo or OB_RunScript
 * for the same script, or OB_FreeScript. Copy what you keep. */
typedef struct OB_ErrorInfo {
    int32_t id;               /* message number (1..59, OB_ERR_*); 0 when its text is missing */
    const char* message;      /* message text alone */
    const char* script;       /* script path as the host gave it */
    int32_t line;             /* 1-based line where the failing statement began; 0 before loading */
    int32_t column;           /* 1-based column of that statement's first character; 0 when line is 0 */
    const char* sourceLine;   /* that line's text without its line end */
    int32_t runResult;        /* OB_E_* when this report ends the run (OB_ERR_* ids), else OB_OK */
    int32_t callCount;        /* entries in `calls`; 0 in the main program */
    const OB_CallInfo* calls; /* the active calls, outermost first; NULL when callCount is 0 */
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
 * live. */
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
 * the script path (UTF-8, valid during the call), the statement's 1-based
 * line and the scope level (1 in the main program, +1 per user-function
 * call). Return OB_CONTINUE to execute it, OB_ABORT to stop the run as
 * OB_RequestStop does. The hook must not free or run the script. */
typedef int32_t (*OB_LineHook)(OB_HANDLE script, const char* path, int32_t line, int32_t level,
                               void* userData);

/* Sets the script's line hook; NULL removes it (and its cost). Does nothing
 * for a handle that is not live. */
OB_API void OB_SetLineHook(OB_HANDLE script, OB_LineHook hook, void* userData);

#ifdef __cplusplus
}
#endif
