// The language's numeric text forms, on UTF-16 and independent of the user's
// locale (a German LC_NUMERIC must not turn 2.5 into "2,500000").
#pragma once

#include <orvobasic/CString.h>

#include <cstdint>

namespace ob::platform {

// "%i": decimal, minus sign when negative.
CString FormatInt(int64_t value);
// "%f": six digits after the point; inf, -inf, nan, -nan as the C library.
CString FormatDouble(double value);
void AppendDouble(CString& out, double value);

// wcstod: leading white space skipped, longest valid prefix (decimal, hex,
// "inf", "nan"), 0 when there is none. `consumed` receives the count of
// characters used (0 when no number was found).
double ParseDouble(std::u16string_view text, size_t* consumed = nullptr);
// _wtol: white space, optional sign, decimal digits; saturates at the
// 32-bit range instead of overflowing.
int32_t ParseLong(std::u16string_view text);

// A number as a subscript, size or whole value: truncated toward zero,
// saturated at the 32-bit range instead of overflowing; NaN gives 0.
inline int32_t TruncateToInt32(double d) {
    if (!(d == d)) return 0;
    if (d >= 2147483647.0) return 2147483647;
    if (d <= -2147483648.0) return -2147483647 - 1;
    return static_cast<int32_t>(d);
}

}  // namespace ob::platform
