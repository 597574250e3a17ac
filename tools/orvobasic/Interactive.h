// The interactive session: a prompt on the terminal where each statement
// runs as soon as it is complete, in one live interpreter.
#pragma once

#include <orvobasic/orvobasic.h>

#include <string>

namespace ob::runner {

// How much a line opens (+) or closes (-) the blocks of the language; a
// chunk is complete when its lines add up to zero or less. Words inside
// strings and comments do not count.
int BlockBalance(const std::string& line);

// Runs the session until :quit or the end of input.
void RunInteractive(OB_HANDLE script);

}  // namespace ob::runner
