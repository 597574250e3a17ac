#include "platform/StackGuard.h"

#include "platform/LargeStack.h"
#include "platform/Sanitizers.h"

#include <cstddef>
#include <cstdint>

namespace ob::platform {
namespace {

#if OB_ASAN || OB_TSAN
constexpr size_t kMargin = 1024 * 1024;   // sanitizer reports need room of their own
#else
constexpr size_t kMargin = 256 * 1024;
#endif

}  // namespace

bool StackNearlyExhausted(int margins) {
    char* low = nullptr;
    size_t size = 0;
    if (!CurrentStackBounds(low, size) || size <= kMargin * 4) return false;
    char probe;
    return reinterpret_cast<uintptr_t>(&probe) <
           reinterpret_cast<uintptr_t>(low) + kMargin * static_cast<size_t>(margins);
}

}  // namespace ob::platform
