#include "values/Maps.h"

#include <orvobasic/COrvoBasic.h>

// Named maps are not available yet.
bool COrvoBasic::ExecMap() {
    ReportError(40);
    FindEOL();
    return false;
}

bool COrvoBasic::ExecMapOperation(CBasicVariable&, CArgArray&, ob::FUNCTION_TYPE) {
    ReportError(21);
    return false;
}

bool COrvoBasic::MapsFree() { return true; }
