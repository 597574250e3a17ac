// What each entry of the statement and function tables needs from the
// sandbox. The decision is a constructor argument without a default, so a
// table entry written without one does not compile; the tests enumerate both
// tables as well.
#pragma once

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/hostcontrol.h>

#include <optional>
#include <vector>

namespace ob {

struct Needs {
    explicit constexpr Needs(unsigned bits) : capabilities(bits) {}
    unsigned capabilities;
};

// Stays inside the process: computation, the variable store, the console.
inline constexpr Needs kInside{0};
inline constexpr Needs kFiles{OB_CAP_FILES};
inline constexpr Needs kProcess{OB_CAP_PROCESS};
inline constexpr Needs kNative{OB_CAP_NATIVE};
inline constexpr Needs kSerial{OB_CAP_SERIAL};
inline constexpr Needs kAutomation{OB_CAP_AUTOMATION};
inline constexpr Needs kDialogs{OB_CAP_DIALOGS};
inline constexpr Needs kSound{OB_CAP_SOUND};

// The capabilities a statement word needs; empty for a command value that has
// no entry in the statement table (a table fault the tests look for).
std::optional<unsigned> StatementCapabilities(COMMAND_TYPE command);

// One built-in as the function table enters it.
struct BuiltInFacts {
    CString name;
    FUNCTION_TYPE type;
    unsigned capabilities;
};
std::vector<BuiltInFacts> BuiltInTable();

// What calling a descriptor needs: a built-in carries its table entry's
// decision; a declared function reaches native code; script and host
// functions need nothing themselves (what they call is checked on its own).
inline unsigned CapabilitiesOfCall(const CFuncDesc& desc) {
    return desc.capabilities | (desc.type == FT_DECLARED ? unsigned(OB_CAP_NATIVE) : 0u);
}

}  // namespace ob
