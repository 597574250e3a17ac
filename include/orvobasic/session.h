/* The session registry of windows: a host publishes receivers that scripts
 * of any OrvoBasic process of the same user find with "getwindowhandle"
 * (by title) and send text to with "copydata". Script dialogs are listed
 * there by their caption while they run. Included by orvobasic.h; usable
 * from C and C++.
 *
 * Callbacks run on the library's registry thread, one message at a time
 * for all the windows of the process, never on the thread that published
 * the window: a callback must not wait for that thread, and what it shares
 * with the host's other threads needs a lock. While a callback runs, the
 * sender waits (at most the copy-data time-out). */
#pragma once

#include <orvobasic/export.h>

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Receives one message: the sender's window handle (0 when the sending
 * script runs no published dialog), the code, and the text in UTF-8
 * (zero-terminated, valid during the call). Its return value is the answer
 * that the sender's "copydata" yields. */
typedef intptr_t (*OB_CopyDataCallback)(void* user, intptr_t sender, uint32_t code, const char* textUtf8);

/* Publishes a window titled `titleUtf8` (the first 200 characters count).
 * Returns its handle, unique in the user's session, or 0 when the title or
 * callback is NULL or the session directory cannot be used. */
OB_API intptr_t OB_PublishWindow(const char* titleUtf8, OB_CopyDataCallback callback, void* user);
/* Withdraws a window of this process. When it returns, its callback is not
 * running and is never called again, so `user` may be freed; called from a
 * callback it returns at once. Returns 1, or 0 for an unknown handle. */
OB_API int32_t OB_UnpublishWindow(intptr_t handle);
/* How long "copydata" waits for an answer before it yields 0, for the whole
 * process: 1 ms to 600000 ms (clamped); 5000 ms by default. */
OB_API void OB_SetCopyDataTimeout(int32_t milliseconds);

#ifdef __cplusplus
}

#include <orvobasic/CString.h>

#include <functional>

namespace ob {

// The C++ form: the text arrives in UTF-16, on the registry thread.
using CopyDataHandler = std::function<intptr_t(intptr_t sender, uint32_t code, const CString& text)>;
OB_API intptr_t PublishWindow(const CString& title, CopyDataHandler handler);
OB_API bool UnpublishWindow(intptr_t handle);

}  // namespace ob
#endif
