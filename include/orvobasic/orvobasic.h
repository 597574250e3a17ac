/* OrvoBasic host API: the C interface of libOrvoBasic_Emb.
 *
 * A host runs a script file with OB_ExecuteScriptFile, keeps the returned
 * handle while the script is resident (it executed "stayresident"), sends it
 * named events with OB_SendEvent, runs the message loop so that its timers
 * tick (OB_RunMessageLoop), and releases it with OB_FreeScript.
 *
 * Threads: every function here, and every script handler, timer tick and
 * host function they lead to, runs on the thread that calls it. Call the
 * library from one thread only (the "host thread"); the one exception is
 * OB_QuitMessageLoop, which may be called from any thread or a signal handler.
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

#ifdef __cplusplus
}
#endif
