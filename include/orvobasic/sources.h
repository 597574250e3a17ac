/* Script sources: the key of encrypted scripts and the errors of loading a
 * program from its files ("include", "library", encrypted scripts).
 * Included by orvobasic.h; usable from C and C++. */
#pragma once

#include <orvobasic/export.h>

#include <stdint.h>

/* Message numbers of the load errors that the script's own numbers (1..59)
 * have no text for. A missing or unreadable included or library file is
 * error 47 "File does not exist", a malformed include, library or encrypt
 * line error 1 "Syntax error". Every load error ends the load: the script
 * does not run (OB_RunScript returns 0, the runner exits with status 2). */
enum {
    OB_ERR_INCLUDE_CYCLE = 111,    /* a file includes itself, or includes nest too deeply */
    OB_ERR_ENCRYPTED_SCRIPT = 112  /* an encrypted file is damaged, cut, of an unknown version, or
                                      made with another key */
};

#ifdef __cplusplus
extern "C" {
#endif

/* Sets the key that encrypted scripts are read and written with, for the
 * whole process: `length` bytes (1 to 56) at `key`. NULL or a length of 0
 * restores the built-in default key. Returns 1 when the key was taken, 0
 * (and the key unchanged) for a length outside 1..56 or one of the rare
 * weak keys of the cipher. Safe from any thread; a load already under way
 * keeps the key it started with. */
OB_API int32_t OB_SetScriptKey(const uint8_t* key, int32_t length);

#ifdef __cplusplus
}
#endif
