// Script text: any bytes run as a script, sandboxed (nothing outside the
// process is reachable) and under small budgets. A script that stays
// resident also gets an event from the host.
#include "FuzzSupport.h"

#include <orvobasic/hostcontrol.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ob::fuzz::Environment& env = ob::fuzz::Environment::Get();
    CString path = CString::FromUtf8(env.Write("input.bas", data, size));
    COrvoBasic script;
    script.SetCapabilities(OB_CAP_NONE);
    ob::fuzz::ApplySmallBudgets(script);
    script.ExecuteProgram(path);
    if (script.IsResident()) {
        ob::fuzz::ApplySmallBudgets(script);
        CBasicVariable arg(CString(u"x"));
        try {
            script.EventThrow(u"ping", &arg);
        } catch (...) {
            // an aborted handler ends the delivery, as for a host
        }
    }
    return 0;
}
