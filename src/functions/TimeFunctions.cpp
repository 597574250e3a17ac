#include <orvobasic/COrvoBasic.h>

// Clock built-ins are not available yet.
bool COrvoBasic::ExecTimeFunc(CBasicVariable&, CArgArray&, ob::FUNCTION_TYPE) {
    ReportError(21);
    return false;
}
