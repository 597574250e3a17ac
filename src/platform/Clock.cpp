#include "platform/Clock.h"

#include <time.h>

namespace ob::platform {

uint64_t MonotonicMs() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<uint64_t>(ts.tv_sec) * 1000u + static_cast<uint64_t>(ts.tv_nsec) / 1000000u;
}

uint32_t GetTickCount() { return static_cast<uint32_t>(MonotonicMs()); }

}  // namespace ob::platform
