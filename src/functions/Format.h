// The "format" built-in: printf-style formatting of one value, safe for any
// format text a script passes.
//
// The format is parsed here, never handed to the C library as it stands: the
// first conversion ("%" flags width .precision length letter) is rebuilt from
// the parts that were recognised and applied to the value; "%%" is a literal
// percent sign everywhere; every later conversion, and any "%" that does not
// start a well-formed conversion ("%", "%l", "%n", "%*d"), is copied as text.
//
// The conversion letter decides how the value is passed:
//   d i            the value truncated toward zero, clamped into the signed
//                  range of the length modifier (32 bits without one, 8 for
//                  hh, 16 for h, 64 for ll L q j)
//   u o x X        the same truncation, keeping the low bits of that width
//                  (so -1 with %x gives ffffffff)
//   e E f F g G a A the value as a double (length modifiers are ignored)
//   s S            the value's string form; precision limits its length
//   c C            a string's first character, or the character whose code
//                  is the number (none for codes outside 1..65535)
// Numbers are written with the "C" locale's decimal point whatever the host
// process has chosen.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/CVarBase.h>

#include <string_view>

namespace ob {

// Widest field width and precision a format may ask for; larger requests are
// clamped to it, so "%999999999d" gives a 4096-character field.
inline constexpr int kMaxFormatWidth = 4096;

// Applies `format` (at most one conversion) to `value`.
CString FormatValue(std::u16string_view format, const CVarBase& value);

}  // namespace ob
