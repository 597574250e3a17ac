// Internal entry points of the interpreter registry for the host API.
// Safe from any thread.
#pragma once

#include <orvobasic/COrvoBasic.h>

namespace ob {

// Adds a host function to the shared table, as COrvoBasic::AddCustomFunction
// does, without needing an interpreter: false for an empty name or a null
// function; a name already in the table keeps its first function (true).
bool AddHostFunction(const CString& name, OB_CustomFunction function, int paramCount, int userData);

// The host function registered under `lowerName`, or null. The descriptor
// stays valid while any interpreter lives.
const CFuncDesc* FindHostFunction(const CString& lowerName);

// How many host functions there are: grows with every addition and falls
// back to 0 only when the last interpreter goes, so that an interpreter can
// tell from it whether a name may now find a host function.
size_t HostFunctionCount();

}  // namespace ob
