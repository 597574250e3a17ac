#include "platform/StackGuard.h"

#include "platform/LargeStack.h"

#include <cstddef>
#include <cstdint>

namespace ob::platform {
namespace {

#if defined(__SANITIZE_ADDRESS__)
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
