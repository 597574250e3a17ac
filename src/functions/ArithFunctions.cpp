#include <orvobasic/COrvoBasic.h>

// Arithmetic built-ins are not available yet.
bool COrvoBasic::ExecArithmetics(CBasicVariable&, CArgArray&, ob::FUNCTION_TYPE) {
    ReportError(21);
    return false;
}
