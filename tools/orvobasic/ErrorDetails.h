// The lines the runner shows under a reported error's source line: a marker
// under the offending text, what the error is about (with a close defined
// name, or the system's reason), and a hint for a known trap.
#pragma once

#include <orvobasic/hostcontrol.h>

#include <cstdio>

namespace ob::runner {

void PrintErrorDetails(std::FILE* out, const ob::ErrorRecord& record);

}  // namespace ob::runner
