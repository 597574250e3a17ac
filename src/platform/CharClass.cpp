#include "platform/CharClass.h"

#include <locale.h>
#include <wctype.h>

namespace ob::platform {
namespace {

// One C.UTF-8 locale for the whole process, made on first use. When the
// system lacks it, "C" still classifies ASCII correctly.
locale_t Utf8Locale() {
    static locale_t loc = [] {
        locale_t l = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
        if (!l) l = newlocale(LC_CTYPE_MASK, "C", static_cast<locale_t>(nullptr));
        return l;
    }();
    return loc;
}

inline bool IsAscii(char16_t c) { return c < 128; }

// Surrogate halves and private-use characters belong to no class.
inline bool Unclassified(char16_t c) { return c >= 0xD800 && c <= 0xF8FF; }

}  // namespace

bool IsAlpha(char16_t c) {
    if (IsAscii(c)) return (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
    return !Unclassified(c) && iswalpha_l(c, Utf8Locale());
}

bool IsDigit(char16_t c) {
    if (IsAscii(c)) return c >= '0' && c <= '9';
    return !Unclassified(c) && iswdigit_l(c, Utf8Locale());
}

bool IsPunct(char16_t c) {
    if (IsAscii(c)) return c > 32 && c < 127 && !IsAlpha(c) && !IsDigit(c);
    return !Unclassified(c) && iswpunct_l(c, Utf8Locale());
}

bool IsSpace(char16_t c) {
    if (IsAscii(c)) return c == ' ' || (c >= 9 && c <= 13);
    return !Unclassified(c) && iswspace_l(c, Utf8Locale());
}

bool IsUpper(char16_t c) {
    if (IsAscii(c)) return c >= 'A' && c <= 'Z';
    return !Unclassified(c) && iswupper_l(c, Utf8Locale());
}

bool IsLower(char16_t c) {
    if (IsAscii(c)) return c >= 'a' && c <= 'z';
    return !Unclassified(c) && iswlower_l(c, Utf8Locale());
}

char16_t ToLower(char16_t c) {
    if (IsAscii(c)) return (c >= 'A' && c <= 'Z') ? static_cast<char16_t>(c + 32) : c;
    wint_t r = towlower_l(c, Utf8Locale());
    return r <= 0xFFFF ? static_cast<char16_t>(r) : c;
}

char16_t ToUpper(char16_t c) {
    if (IsAscii(c)) return (c >= 'a' && c <= 'z') ? static_cast<char16_t>(c - 32) : c;
    wint_t r = towupper_l(c, Utf8Locale());
    return r <= 0xFFFF ? static_cast<char16_t>(r) : c;
}

}  // namespace ob::platform
