#include "values/UserTypes.h"

#include <orvobasic/COrvoBasic.h>

// Record types are not available yet: "type" reports an unsupported keyword
// and no record variable can exist.
bool COrvoBasic::ExecType() {
    ReportError(40);
    FindEOL();
    return false;
}

bool COrvoBasic::TypesFree() { return true; }

bool COrvoBasic::DimStructVariable(const CString&, const CString&, bool) {
    ReportError(1);
    return false;
}

bool COrvoBasic::FindStructVariable(const CString&, const CString&, CBasicVariable&, bool report) {
    if (report) ReportError(37);
    return false;
}

bool COrvoBasic::SetStructVariable(const CString&, const CString&, CBasicVariable&) {
    ReportError(37);
    return false;
}
