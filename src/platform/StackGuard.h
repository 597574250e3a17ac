// Tells whether the current thread's stack is close to its end, so that the
// recursive parts of the interpreter (expressions, user-function calls) can
// refuse to go deeper instead of overflowing the C++ stack.
#pragma once

namespace ob::platform {

// True when less than `margins` safety margins remain on this thread's stack.
bool StackNearlyExhausted(int margins);

}  // namespace ob::platform
