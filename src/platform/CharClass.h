// Character classes and case mapping, independent of the user's locale.
//
// Scripts are classified the same way whatever LC_CTYPE the host process has:
// ASCII is answered from a table, everything else by glibc's C.UTF-8 locale
// through the *_l functions.
#pragma once

namespace ob::platform {

bool IsAlpha(char16_t c);
bool IsDigit(char16_t c);
bool IsPunct(char16_t c);
bool IsSpace(char16_t c);
bool IsUpper(char16_t c);
bool IsLower(char16_t c);
char16_t ToLower(char16_t c);
char16_t ToUpper(char16_t c);

}  // namespace ob::platform
