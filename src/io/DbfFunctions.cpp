#include "io/DataFileTable.h"

#include <orvobasic/COrvoBasic.h>

// dBase tables are not available to scripts yet.
bool COrvoBasic::ExecDBFOperation(CBasicVariable&, CArgArray&, ob::FUNCTION_TYPE) {
    ReportError(21);
    return false;
}

bool COrvoBasic::FileFormatCloseAll() { return true; }
