// What a host receives in place of the desktop's boxes, and the settings a
// host makes once for every interpreter created afterwards (the C API's
// NULL handle).
#pragma once

#include <orvobasic/COrvoBasic.h>

#include <functional>
#include <memory>

namespace ob {

// An empty member leaves that kind of box to the desktop.
struct OutputHooks {
    // The text of one "print" statement, with its line end.
    std::function<void(COrvoBasic& script, const CString& text)> print;
    // Any other message box; returns the button (ui::IDOK ...).
    std::function<int(COrvoBasic& script, const CString& text, unsigned style)> messageBox;
};

using DefaultErrorHandler = std::function<int(COrvoBasic& script, const ErrorRecord& error)>;

// Process-wide defaults, taken by each interpreter when it is made.
struct HostDefaults {
    CodePage codePage = CodePage::Windows1252;
    std::shared_ptr<const OutputHooks> output;
    DefaultErrorHandler errorHandler;
};

HostDefaults GetHostDefaults();
void SetDefaultCodePage(CodePage codePage);
void SetDefaultOutputHooks(std::shared_ptr<const OutputHooks> hooks);
void SetDefaultErrorHandler(DefaultErrorHandler handler);

}  // namespace ob
