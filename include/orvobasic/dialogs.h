// Dialog windows as the Desktop sees them: the description a dialog template
// reads into, the window messages and notifications the interpreter's dialog
// logic uses, and the sink through which a desktop reports a dialog's window
// events back to that logic.
//
// Message numbers and notification codes are the classic window-system ones,
// so every desktop answers the same set. Where a message carries text, the
// text travels as a zero-terminated UTF-16 string (`const char16_t*` in
// lParam) when it goes to the control, and as a `CString*` in lParam when the
// control fills it in; the result is then the text's length, or -1 (LB_ERR)
// when there is no such item.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/export.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ob::ui {

// A window of the desktop: a dialog, a property sheet, a page or a control.
// 0 is no window. Handles are never reused while the desktop lives.
using WindowHandle = std::uintptr_t;

// ---- the dialog description ------------------------------------------------

// One control of a dialog template.
struct DialogItem {
    uint32_t style = 0;
    uint32_t exStyle = 0;
    int16_t x = 0, y = 0, cx = 0, cy = 0;   // dialog units
    uint16_t id = 0;
    CString className;   // "Button", "Edit", "Static", "ListBox", "ScrollBar", "ComboBox" for the atoms
    CString text;
};

// A whole dialog template, as ReadDialogTemplate finds it.
struct DialogDescription {
    uint32_t style = 0;
    uint32_t exStyle = 0;
    int16_t x = 0, y = 0, cx = 0, cy = 0;
    CString caption;
    bool hasFont = false;   // DS_SETFONT
    uint16_t pointSize = 0;
    CString faceName;
    std::vector<DialogItem> items;
};

// Reads template bytes (the header and its item records, little-endian
// UTF-16) into `out`. False, with `out` unspecified, when the bytes end
// before what the header and records announce, a record does not start on a
// 4-byte boundary, or a menu, window class or creation data is present that
// this reader does not support (a template the dialog manager refuses).
OB_API bool ReadDialogTemplate(const uint8_t* bytes, size_t length, DialogDescription& out);

// ---- styles ----------------------------------------------------------------

enum : uint32_t {
    WS_VISIBLE = 0x10000000, WS_DISABLED = 0x08000000, WS_GROUP = 0x00020000, WS_TABSTOP = 0x00010000,
    DS_SETFONT = 0x40,
    BS_TYPEMASK = 0x0F, BS_PUSHBUTTON = 0, BS_DEFPUSHBUTTON = 1, BS_CHECKBOX = 2, BS_AUTOCHECKBOX = 3,
    BS_RADIOBUTTON = 4, BS_3STATE = 5, BS_AUTO3STATE = 6, BS_GROUPBOX = 7, BS_AUTORADIOBUTTON = 9,
    SS_BITMAP = 0x0E, ES_MULTILINE = 0x4, ES_NUMBER = 0x2000, LBS_MULTIPLESEL = 0x8,
};

// ---- messages and notifications ---------------------------------------------

enum : unsigned {
    BM_GETCHECK = 0x00F0, BM_SETCHECK = 0x00F1,
    CB_GETCOUNT = 0x0146, CB_ADDSTRING = 0x0143, CB_GETCURSEL = 0x0147, CB_GETLBTEXT = 0x0148,
    CB_RESETCONTENT = 0x014B, CB_SELECTSTRING = 0x014D, CB_SETCURSEL = 0x014E,
    LB_ADDSTRING = 0x0180, LB_RESETCONTENT = 0x0184, LB_SETSEL = 0x0185, LB_SETCURSEL = 0x0186,
    LB_GETSEL = 0x0187, LB_GETCURSEL = 0x0188, LB_GETTEXT = 0x0189, LB_GETCOUNT = 0x018B,
    LB_SELECTSTRING = 0x018C,
    TBM_GETPOS = 0x0400, TBM_GETRANGEMIN = 0x0401, TBM_GETRANGEMAX = 0x0402, TBM_SETPOS = 0x0405,
    TBM_SETRANGE = 0x0406,
    DTM_GETSYSTEMTIME = 0x1001, DTM_SETSYSTEMTIME = 0x1002,
    TVM_DELETEITEM = 0x1101, TVM_GETCOUNT = 0x1105, TVM_GETNEXTITEM = 0x110A, TVM_SELECTITEM = 0x110B,
    TVM_INSERTITEMW = 0x1132, TVM_GETITEMW = 0x113E,
    TCM_GETITEMCOUNT = 0x1304, TCM_DELETEALLITEMS = 0x1309, TCM_GETCURSEL = 0x130B,
    TCM_SETCURSEL = 0x130C, TCM_GETITEMW = 0x133C, TCM_INSERTITEMW = 0x133E,
};

// WM_COMMAND notification codes (high word of wParam).
enum : unsigned {
    BN_CLICKED = 0, LBN_SELCHANGE = 1, CBN_SELCHANGE = 1, EN_CHANGE = 0x0300,
};

// WM_NOTIFY codes.
enum : int { TCN_SELCHANGE = -551, TVN_SELCHANGEDW = -451 };

// Control ids and results.
enum : int { IDC_OK = 1, IDC_CANCEL = 2, LB_ERR = -1 };

// Tree items: handles, and the special values of the tree messages.
using TreeItem = std::intptr_t;
constexpr TreeItem TVI_ROOT = -0x10000;
constexpr TreeItem TVI_FIRST = -0x0FFFF;
constexpr TreeItem TVI_LAST = -0x0FFFE;
enum : unsigned { TVGN_ROOT = 0, TVGN_NEXT = 1, TVGN_PARENT = 3, TVGN_CHILD = 4, TVGN_CARET = 9 };

// lParam of TVM_INSERTITEMW: the new item's parent (TVI_ROOT for the top),
// where it goes (TVI_LAST, TVI_FIRST or a sibling) and its text.
struct TreeInsert {
    TreeItem parent = TVI_ROOT;
    TreeItem insertAfter = TVI_LAST;
    const char16_t* text = nullptr;
};

// lParam of TVM_GETITEMW: the item asked for and, on return, its text.
struct TreeItemText {
    TreeItem item = 0;
    CString text;
};

// A date and time (DTM_GETSYSTEMTIME, DTM_SETSYSTEMTIME).
struct SystemTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

// lParam of WM_NOTIFY.
struct NotifyHeader {
    WindowHandle from = 0;
    uintptr_t idFrom = 0;
    int code = 0;
};

// TVN_SELCHANGEDW: the header followed by the old and the new selection.
struct TreeViewNotify {
    NotifyHeader header;
    TreeItem itemOld = 0;
    TreeItem itemNew = 0;
};

// ShowWindow commands.
enum : int { SW_HIDE = 0, SW_SHOW = 5 };

// A font for SetFont: character height in logical units (negative: the
// character height without internal leading), weight 100..900.
struct FontDescription {
    CString face;
    int height = 0;
    int weight = 400;
    bool italic = false;
    bool underline = false;
};

// ---- the dialog logic's side ------------------------------------------------

// Receives a modal dialog's or page's window events, on the thread that runs
// the modal loop. The desktop calls OnCreate once the window and its controls
// exist, then OnInitDialog; OnCommand and OnNotify while it runs; OnDestroy
// while the window and its controls still exist, just before they go.
class OB_API DialogSink {
public:
    virtual ~DialogSink();
    virtual void OnCreate(WindowHandle window) = 0;
    // True: the desktop gives the focus to the first control that takes it.
    virtual bool OnInitDialog() = 0;
    // WM_COMMAND: wParam = id | code << 16, lParam = the control's handle.
    virtual bool OnCommand(uintptr_t wParam, intptr_t lParam) = 0;
    // WM_NOTIFY: wParam = the control's id, header = what it reports.
    virtual bool OnNotify(uintptr_t wParam, const NotifyHeader* header) = 0;
    virtual void OnDestroy() = 0;
    // True once the script behind the dialog can no longer run (stopped,
    // aborted): the desktop then ends the modal loop without further events.
    virtual bool Abandoned() const { return false; }
};

// One page of a property sheet: its template and its sink.
struct SheetPage {
    const uint8_t* templ = nullptr;
    size_t length = 0;
    DialogSink* sink = nullptr;
};

}  // namespace ob::ui
