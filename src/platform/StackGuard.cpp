#include "platform/StackGuard.h"

#include <pthread.h>

#include <cstddef>
#include <cstdint>

namespace ob::platform {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr size_t kMargin = 1024 * 1024;   // sanitizer reports need room of their own
#else
constexpr size_t kMargin = 256 * 1024;
#endif

// Lowest address of this thread's stack; 0 when unknown.
uintptr_t ComputeBase() {
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) != 0) return 0;
    void* base = nullptr;
    size_t size = 0;
    int rc = pthread_attr_getstack(&attr, &base, &size);
    pthread_attr_destroy(&attr);
    if (rc != 0 || size <= kMargin * 4) return 0;
    return reinterpret_cast<uintptr_t>(base);
}

}  // namespace

bool StackNearlyExhausted(int margins) {
    thread_local uintptr_t base = ComputeBase();
    char probe;
    return base != 0 && reinterpret_cast<uintptr_t>(&probe) < base + kMargin * static_cast<size_t>(margins);
}

}  // namespace ob::platform
