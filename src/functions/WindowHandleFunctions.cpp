// "getwindowhandle" and "copydata": the windows of the session registry
// (script dialogs of any OrvoBasic process, receivers that hosts publish).
#include <orvobasic/COrvoBasic.h>

#include "platform/SessionRegistry.h"
#include "ui/ScriptDialog.h"

#include <cmath>

using namespace ob;

namespace {

// Titles are compared over their first 200 characters.
constexpr int kTitleLength = 200;
// The window-data index that reads the publishing process's id; every
// other positive index reads 0.
constexpr long kProcessIdIndex = 1;

long Truncated(const CBasicVariable& value) {
    double number = value.GetNumberValue();
    if (!(std::fabs(number) < 9.2e18)) return 0;
    return static_cast<long>(std::trunc(number));
}

long WindowData(const platform::PublishedWindow& window, long index) {
    return index == kProcessIdIndex ? window.pid : 0;
}

// The handle of the innermost running dialog or sheet, when it is published.
int64_t SenderOf(COrvoBasic& basic) {
    const auto& active = basic.Dialogs().active;
    for (auto it = active.rbegin(); it != active.rend(); ++it)
        if ((*it)->m_publication) return (*it)->m_publication->Handle();
    return 0;
}

}  // namespace

// getwindowhandle(title [, index, value]): the first published window, in
// publication order, whose title contains `title` (case-sensitive); with an
// index of 1 or more only a window whose data at that index equals `value`.
bool COrvoBasic::ExecWindowHandle(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.empty()) {
        ReportError(24);
        return false;
    }
    CString title = args[0].GetStringValue();
    long index = args.size() >= 3 ? Truncated(args[1]) : 0;
    long value = args.size() >= 3 ? Truncated(args[2]) : 0;
    result = 0.0;
    for (const platform::PublishedWindow& window : platform::SessionRegistry::List()) {
        if (window.title.empty() || window.title.Left(kTitleLength).Find(title) < 0) continue;
        if (index >= 1 && WindowData(window, index) != value) continue;
        result = static_cast<double>(window.handle);
        break;
    }
    return true;
}

// copydata(handle, code, text): the receiver's answer, or 0 when it is
// gone, refuses, or does not answer within the copy-data time-out.
bool COrvoBasic::ExecCopyData(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.size() < 3) {
        ReportError(24);
        return false;
    }
    platform::copydata::Request message;
    int64_t target = Truncated(args[0]);
    message.code = static_cast<uint32_t>(static_cast<int64_t>(Truncated(args[1])));
    message.text = args[2].GetStringValue();
    message.sender = SenderOf(*this);
    int64_t answer;
    if (CDialogPublication* own = CDialogPublication::OnThisThread(target)) answer = own->Deliver(message);
    else answer = platform::SessionRegistry::Send(target, message, platform::CopyDataTimeout());
    result = static_cast<double>(answer);
    return true;
}
