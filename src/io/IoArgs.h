// Conversions of script numbers to the integers that file and table
// built-ins need. Scripts' numbers are doubles and are truncated toward
// zero; NaN and values beyond the integer range must still give a defined
// result, since a plain cast would be undefined behaviour.
#pragma once

#include <cmath>
#include <cstdint>

namespace ob::io {

// Truncated toward zero; NaN gives 0, values beyond the range saturate.
inline int64_t TruncToInt64(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 9223372036854775807.0) return INT64_MAX;
    if (value <= -9223372036854775808.0) return INT64_MIN;
    return static_cast<int64_t>(value);
}

// Truncated to an unsigned 32-bit integer the way a two's-complement
// conversion does it: -1 gives 4294967295.
inline uint32_t TruncToUint32(double value) { return static_cast<uint32_t>(TruncToInt64(value)); }

}  // namespace ob::io
