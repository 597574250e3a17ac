#include "engine/EventTable.h"

#include <orvobasic/COrvoBasic.h>

// Events are not available yet: no handler can be attached, so raising an
// event runs nothing.
bool COrvoBasic::EventAdd(const CString&, const CString&) { return false; }
bool COrvoBasic::EventRemove(const CString&, const CString&) { return false; }
bool COrvoBasic::EventRemove(const CString&) { return false; }
bool COrvoBasic::EventThrow(const CString&, CArgArray&) { return true; }
bool COrvoBasic::EventThrow(const CString&, CBasicVariable*) { return true; }
bool COrvoBasic::EventsFree() { return true; }

bool COrvoBasic::ExecEvent() { ReportError(40); FindEOL(); return false; }
bool COrvoBasic::ExecThrow() { ReportError(40); FindEOL(); return false; }
bool COrvoBasic::ExecWatch() { ReportError(40); FindEOL(); return false; }
bool COrvoBasic::ExecTimerStart() { ReportError(40); FindEOL(); return false; }
bool COrvoBasic::ExecTimerStop() { return true; }
bool COrvoBasic::ExecRun(bool) { ReportError(40); FindEOL(); return false; }
