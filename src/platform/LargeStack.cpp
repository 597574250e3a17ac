#include "platform/LargeStack.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>
#include <ucontext.h>

#include <cstdint>
#include <exception>

#include "platform/Sanitizers.h"

#if OB_ASAN
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#endif
#if OB_TSAN
#include <sanitizer/tsan_interface.h>
#endif

namespace ob::platform {
namespace {

// Reserved, not committed: pages are backed only as deep recursion touches them.
constexpr size_t kLargeStackSize = size_t{512} * 1024 * 1024;
// The top of the stack a run leaves committed for the next run on the thread.
constexpr size_t kKeptTop = size_t{1} << 20;

// The large stack of one thread, mapped by its first run and reused by the
// later ones: mapping half a gigabyte and faulting in its first pages cost
// more than a short script takes to run. Unmapped when the thread ends.
class ThreadStack {
public:
    ThreadStack() = default;
    ThreadStack(const ThreadStack&) = delete;
    ThreadStack& operator=(const ThreadStack&) = delete;
    ~ThreadStack() {
        if (m_base) munmap(m_base, kLargeStackSize);
    }

    // The stack, mapped on first use; null when there is no room for it.
    char* Get() {
        if (!m_base) {
            void* base = mmap(nullptr, kLargeStackSize, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
            if (base == MAP_FAILED) return nullptr;
            m_base = static_cast<char*>(base);
            // Small pages: a huge one would be zeroed whole for the few
            // kilobytes a run uses, and split by every Trim.
            madvise(m_base, kLargeStackSize, MADV_NOHUGEPAGE);
        }
#if OB_ASAN
        UnpoisonForReuse();
#endif
        return m_base;
    }

    // Gives back what a deep recursion committed below the kept top. A run
    // that stayed above it (nearly every run) costs one mincore call.
    void Trim() {
        if (!m_base || !WentBelowKeptTop()) return;
        madvise(m_base, kLargeStackSize - kKeptTop, MADV_DONTNEED);
        m_deepRun = true;
    }

private:
    // True when pages just below the kept top are resident: the stack grows
    // down page by page, so a run that went deeper went through them.
    bool WentBelowKeptTop() const {
        constexpr size_t kWindow = 64 * 1024;
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        unsigned char resident[kWindow / 4096 + 1] = {};
        if (page > 4096 || mincore(m_base + kLargeStackSize - kKeptTop - kWindow, kWindow, resident) != 0)
            return true;
        for (size_t i = 0; i < kWindow / page; ++i)
            if (resident[i] & 1) return true;
        return false;
    }

#if OB_ASAN
    // Frames left by an earlier run (its entry frame never returns) must not
    // look poisoned to the next one. Writing the shadow of the whole stack
    // would cost tens of megabytes a run: the shadow of the part below the
    // kept top is given back to the system instead (its pages come back as
    // zeros, which the address sanitizer reads as addressable), and only the
    // edges that do not fill a shadow page are written.
    void UnpoisonForReuse() {
        size_t scale = 0, offset = 0;
        __asan_get_shadow_mapping(&scale, &offset);
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t edge = page << scale;   // stack bytes one shadow page covers
        uintptr_t low = reinterpret_cast<uintptr_t>(m_base);
        uintptr_t keptTop = low + kLargeStackSize - kKeptTop;
        uintptr_t shadowLow = ((low >> scale) + offset + page - 1) / page * page;
        uintptr_t shadowHigh = ((keptTop >> scale) + offset) / page * page;
        if (m_deepRun && shadowHigh > shadowLow)
            madvise(reinterpret_cast<void*>(shadowLow), shadowHigh - shadowLow, MADV_DONTNEED);
        m_deepRun = false;
        __asan_unpoison_memory_region(m_base, edge);
        __asan_unpoison_memory_region(reinterpret_cast<void*>(keptTop - edge), kKeptTop + edge);
    }
#endif

    char* m_base = nullptr;
    bool m_deepRun = true;   // the last run went below the kept top (or none ran yet)
};

thread_local ThreadStack t_stack;

struct Fiber {
    ucontext_t caller{};
    ucontext_t callee{};
    const std::function<void()>* body = nullptr;
    std::exception_ptr error;
    char* stack = nullptr;
#if OB_TSAN
    void* callerFiber = nullptr;   // the thread sanitizer's view of the two stacks
    void* calleeFiber = nullptr;
#endif
#if OB_ASAN
    void* fakeStack = nullptr;
    const void* callerBottom = nullptr;
    size_t callerSize = 0;
#endif
};

thread_local Fiber* t_active = nullptr;   // the fiber this thread runs on, if any

// Runs the body on the large stack, then switches back to the caller
// explicitly rather than by returning: the sanitizers have been told of the
// switch already, and an epilogue run after that would be charged to the
// caller's stack (the thread sanitizer would pop the caller's frame).
[[noreturn]] void FiberEntry() {
    Fiber* fiber = t_active;
#if OB_ASAN
    __sanitizer_finish_switch_fiber(nullptr, &fiber->callerBottom, &fiber->callerSize);
#endif
    try {
        (*fiber->body)();
    } catch (...) {
        fiber->error = std::current_exception();
    }
#if OB_ASAN
    __sanitizer_start_switch_fiber(nullptr, fiber->callerBottom, fiber->callerSize);
#endif
#if OB_TSAN
    __tsan_switch_to_fiber(fiber->callerFiber, 0);
#endif
    setcontext(&fiber->caller);
    __builtin_unreachable();
}

}  // namespace

void RunOnLargeStack(const std::function<void()>& body) {
    if (t_active) {
        body();
        return;
    }
    char* stack = t_stack.Get();
    if (!stack) {
        body();   // no room for a stack of its own: run where we are
        return;
    }
    Fiber fiber;
    fiber.body = &body;
    fiber.stack = stack;
    getcontext(&fiber.callee);
    fiber.callee.uc_stack.ss_sp = stack;
    fiber.callee.uc_stack.ss_size = kLargeStackSize;
    fiber.callee.uc_link = nullptr;   // FiberEntry never returns
    makecontext(&fiber.callee, FiberEntry, 0);
    t_active = &fiber;
#if OB_TSAN
    fiber.callerFiber = __tsan_get_current_fiber();
    fiber.calleeFiber = __tsan_create_fiber(0);
#endif
    // getcontext + setcontext rather than swapcontext: the same switch, and the
    // address sanitizer (which we annotate) does not warn on every run. The
    // annotations come right before each switch, as the sanitizers require.
    volatile bool started = false;
    getcontext(&fiber.caller);
    if (!started) {
        started = true;
#if OB_ASAN
        __sanitizer_start_switch_fiber(&fiber.fakeStack, stack, kLargeStackSize);
#endif
#if OB_TSAN
        __tsan_switch_to_fiber(fiber.calleeFiber, 0);
#endif
        setcontext(&fiber.callee);
    }
#if OB_ASAN
    __sanitizer_finish_switch_fiber(fiber.fakeStack, nullptr, nullptr);
#endif
#if OB_TSAN
    __tsan_destroy_fiber(fiber.calleeFiber);
#endif
    t_active = nullptr;
    t_stack.Trim();
    if (fiber.error) std::rethrow_exception(fiber.error);
}

bool OnLargeStack() { return t_active != nullptr; }

bool CurrentStackBounds(char*& low, size_t& size) {
    if (t_active) {
        low = t_active->stack;
        size = kLargeStackSize;
        return true;
    }
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) != 0) return false;
    void* base = nullptr;
    int rc = pthread_attr_getstack(&attr, &base, &size);
    pthread_attr_destroy(&attr);
    low = static_cast<char*>(base);
    return rc == 0;
}

}  // namespace ob::platform
