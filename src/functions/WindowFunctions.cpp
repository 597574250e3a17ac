// The built-ins that talk to the user without a dialog of the script's own
// ("ask", "popupmenu", "fileopendlg", "filesaveasdlg"), the plane geometry
// of "pointoffset", the reserved "sendmessage" and the "playsound"
// statement. The prompts go through the desktop, so a window system shows
// them and the headless desktop answers them from the action script; an
// action that failed there ends the run, as it does in a dialog.
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "platform/Sound.h"

#include <cmath>
#include <climits>

using namespace ob;

namespace {

// Truncated toward zero into the int range; NaN gives 0.
int ScreenCoordinate(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483647.0) return INT_MAX;
    if (value <= -2147483648.0) return INT_MIN;
    return static_cast<int>(value);
}

}  // namespace

// ask(question): a Yes/No message box, so a host's message-box handler
// answers it like any other box; 1 for Yes, else 0.
bool COrvoBasic::ExecAsk(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.empty()) {
        ReportError(24);
        return false;
    }
    int answer = ShowMessageBox(args[0].GetStringValue(), ui::MB_YESNO);
    if (m_desktop->UiActionsFailed()) m_halted = m_stop = true;   // as after a dialog
    result = answer == ui::IDYES ? 1 : 0;
    return true;
}

// popupmenu(x, y, item ...): the chosen item's number (1 for the first),
// 0 when the menu was dismissed. Without items the result is left as it was.
bool COrvoBasic::ExecPopupMenu(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.size() < 2) {
        ReportError(24);
        return false;
    }
    int x = ScreenCoordinate(args[0].GetNumberValue());
    int y = ScreenCoordinate(args[1].GetNumberValue());
    if (args.size() == 2) return true;
    std::vector<CString> items;
    items.reserve(args.size() - 2);
    for (size_t i = 2; i < args.size(); ++i) items.push_back(args[i].GetStringValue());
    int chosen = m_desktop->TrackPopupMenu(x, y, items);
    if (m_desktop->UiActionsFailed()) m_halted = m_stop = true;
    if (chosen < 0) return false;   // no window to own the menu
    result = chosen;
    return true;
}

// fileopendlg / filesaveasdlg(file name, default extension, filter
// [, initial folder]): the chosen full path, "" when cancelled.
bool COrvoBasic::ExecFileDlg(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE type) {
    if (args.size() < 3) {
        ReportError(24);
        return false;
    }
    ui::FileDialogRequest request;
    request.save = type != FT_FILEOPENDLG;
    request.fileName = args[0].GetStringValue();
    request.defaultExtension = args[1].GetStringValue();
    request.filter = args[2].GetStringValue();
    if (args.size() > 3) request.initialFolder = args[3].GetStringValue();
    result = m_desktop->FileDialog(request);
    if (m_desktop->UiActionsFailed()) m_halted = m_stop = true;
    return true;
}

// pointoffset(x1, y1, x2, y2, px, py, d): the point at distance d from
// (px, py), perpendicular to the direction from (x1, y1) to (x2, y2) and to
// its left. A direction of no length gives (x1, y1) and fails.
bool COrvoBasic::ExecPointOffset(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.size() < 7) return false;
    double v[7];
    for (size_t i = 0; i < 7; ++i) v[i] = args[i].GetNumberValue();
    double dx = v[2] - v[0], dy = v[3] - v[1];
    double length = std::sqrt(dx * dx + dy * dy);
    CBasicVariable point;
    bool degenerate = !(length >= 1e-12);
    point.AddItem(degenerate ? v[0] : v[4] - v[6] * dy / length);
    point.AddItem(degenerate ? v[1] : v[5] + v[6] * dx / length);
    result = point;
    return !degenerate;
}

// A reserved name that does nothing.
bool COrvoBasic::ExecSendMessage(CBasicVariable&, CArgArray&, FUNCTION_TYPE) { return true; }

// playsound FILE: starts the sound and goes on at once. A file that cannot
// be played, or no sound service at all, is silence and no error; a path
// the host's resolver refuses is error 47.
bool COrvoBasic::ExecPlaySound() {
    CBasicVariable file;
    get_exp(file);
    if (m_halted) return false;
    CString path = file.GetStringValue();
    if (!ResolvePath(path)) {
        ReportError(47);
        return false;
    }
    platform::PlaySoundFile(path.ToUtf8());
    return true;
}
