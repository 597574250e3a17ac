// Runs the interpreter on a stack of its own.
//
// Script recursion nests C++ calls (statement → expression → call → body),
// so how deep a script may recurse would otherwise depend on the stack of
// whatever thread the host happens to call from. RunOnLargeStack switches
// the calling thread to a large, lazily committed stack for the duration of
// `body` (same thread, so thread affinity and thread-locals are kept) and
// back. Calls made while already on it run directly.
#pragma once

#include <cstddef>
#include <functional>

namespace ob::platform {

// Runs `body` on the large stack; an exception thrown by `body` is rethrown
// to the caller after switching back.
void RunOnLargeStack(const std::function<void()>& body);

// True while the current thread runs on the large stack.
bool OnLargeStack();

// Bounds of the stack the current code runs on (the large stack while on
// it); false when unknown.
bool CurrentStackBounds(char*& low, size_t& size);

}  // namespace ob::platform
