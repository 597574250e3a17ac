// Monotonic time for timers and the tick counter.
#pragma once

#include <cstdint>

namespace ob::platform {

// Milliseconds of CLOCK_MONOTONIC: never goes back, not affected by changes
// of the wall clock.
uint64_t MonotonicMs();

// The same clock truncated to 32 bits, as a tick counter that wraps after
// about 49.7 days.
uint32_t GetTickCount();

}  // namespace ob::platform
