// Encrypted script files.
//
// Layout (all sizes in bytes):
//   magic     8   89 'O' 'B' 'X' 0D 0A 1A 0A
//   version   1   1
//   iv        8   random, fresh for every file
//   body      8n  the script's bytes plus 1..8 padding bytes (each holding
//                 the padding's length), Blowfish in CBC mode, n >= 1
//   tag       32  HMAC-SHA256 over everything before it
// The cipher key is the script key itself; the tag's key is derived from it
// (SHA-256 of a fixed label and the key), so that a wrong key, a damaged or a
// cut file is recognised before anything is decrypted.
//
// The script key is process-wide: a built-in default until the host sets
// another. Reading and replacing it are safe from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ob {

// True when `bytes` begin with the magic of an encrypted script.
bool IsEncryptedScript(std::string_view bytes);

// The encrypted form of `plain` under the current script key; false when no
// random IV could be had.
bool EncryptScript(std::string_view plain, std::string& out);

// The script bytes inside an encrypted file; false when the version is
// unknown, the file is cut or damaged, or it was made with another key.
bool DecryptScript(std::string_view file, std::string& plain);

// Replaces the script key (1..56 bytes, not a weak key); an empty key
// restores the built-in default. False, and the key unchanged, otherwise.
bool SetScriptKey(const uint8_t* key, size_t length);

}  // namespace ob
