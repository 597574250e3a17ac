// Compiled, not run: with -DEXPECT_ASAN or -DEXPECT_TSAN and the matching
// -fsanitize option, each compiler must turn on the fiber annotations of
// the script stack (a clang address-sanitizer build without them reports
// false errors on every switch); without either, both must be off.
#include "platform/Sanitizers.h"

#if defined(EXPECT_ASAN)
static_assert(OB_ASAN == 1 && OB_TSAN == 0, "address sanitizer not recognised");
#elif defined(EXPECT_TSAN)
static_assert(OB_TSAN == 1 && OB_ASAN == 0, "thread sanitizer not recognised");
#else
static_assert(OB_ASAN == 0 && OB_TSAN == 0, "a sanitizer recognised where none is");
#endif

int main() { return 0; }
