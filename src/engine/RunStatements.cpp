// "run" and "runexe": running another script to its end in a fresh
// interpreter, or starting a program without waiting for it.
#include <orvobasic/COrvoBasic.h>

#include "platform/Process.h"

#include <memory>

using namespace ob;

// "run PATH" / "runexe PATH [, PARAMETERS]". Without an operand: false, no
// message. "run" returns whether the script could be loaded; the inner
// interpreter is destroyed afterwards even when it stayed resident.
// "runexe" passes the parameters as one argument and always returns true.
bool COrvoBasic::ExecRun(bool script) {
    BASIC_TOKEN_TYPE first = get_token();
    if (first == COMMENT || m_command == CMD_EOL || m_command == CMD_FINISHED) {
        if (m_command == CMD_EOL) putback();
        return false;
    }
    putback();
    CArgArray args;
    GetParamGroup(args);
    if (IsHalted()) return false;
    CString path = args[0].GetStringValue();
    if (script) {
        auto inner = std::make_unique<COrvoBasic>();
        inner->InheritHostControl(*this);   // a sandbox or budget must not end at "run"
        return inner->ExecuteProgram(path);
    }
    std::vector<std::string> parameters;
    if (args.size() >= 2) parameters.push_back(args[1].GetStringValue().ToUtf8());
    platform::ShellOpen(path.ToUtf8(), parameters);
    return true;
}
