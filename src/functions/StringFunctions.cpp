#include <orvobasic/COrvoBasic.h>

// String built-ins are not available yet.
bool COrvoBasic::ExecStringOperation(CBasicVariable&, CArgArray&, ob::FUNCTION_TYPE) {
    ReportError(21);
    return false;
}
