// What every desktop says and decides the same way, whatever its windows
// are made of: the texts of notes and snapshots, item lookup by text,
// the answers a file dialog gives to a typed name, and the prompts' texts.
// The Qt desktop calls these from its own library, hence the exports.
#pragma once

#include "ui/ControlKinds.h"

#include <orvobasic/CString.h>
#include <orvobasic/desktop.h>
#include <orvobasic/dialogs.h>
#include <orvobasic/export.h>

#include <cstdint>
#include <filesystem>
#include <utility>
#include <vector>

namespace ob::ui::common {

// ---- texts ----

OB_API CString Number(long n);
OB_API CString Quoted(const CString& text);
// "[\"a\", \"b\"]"
OB_API CString ItemList(const std::vector<CString>& items);

// ---- items ----

// The item equal to `text`, else the first equal ignoring case; -1 when none.
OB_API int FindItem(const std::vector<CString>& items, const CString& text);
// The first item from after `start` on (wrapping round; from the top when
// `start` is no item) that begins with `prefix`, ignoring case; -1 when none.
OB_API int FindPrefix(const std::vector<CString>& items, intptr_t start, const CString& prefix);

// ---- window message arguments ----

// A text argument (null reads as empty).
inline const char16_t* TextParam(intptr_t lParam) {
    const char16_t* text = reinterpret_cast<const char16_t*>(lParam);
    return text ? text : u"";
}
// Where a message that answers with a text puts it (may be null).
inline CString* TextOut(intptr_t lParam) { return reinterpret_cast<CString*>(lParam); }
// LB_GETTEXT / CB_GETLBTEXT: the item's length, its text to `lParam`; LB_ERR
// for no such item.
OB_API intptr_t ItemText(const std::vector<CString>& items, uintptr_t index, intptr_t lParam);

// ---- file dialogs ----

// The full path a file dialog makes of a typed name: relative names are
// taken from the initial folder (else the current one), and a name without
// an extension gets the default one.
OB_API std::filesystem::path ResolveFileName(const CString& typed, const FileDialogRequest& request);
// Why the dialog refuses `path`, or empty when it takes it: the open dialog
// wants an existing file, the save dialog an existing folder to save in.
OB_API CString FileRefusal(const std::filesystem::path& path, bool save);
// A typed name as the dialog takes it: empty with the full path in `chosen`,
// else why it is refused.
OB_API CString ChooseFile(const CString& typed, const FileDialogRequest& request, CString& chosen);

// ---- prompts ----

// Why no prompt of `kind` can be answered; `open` is the innermost
// window's title, null when none is open.
OB_API CString NoPromptOpen(PromptKind kind, const CString* open);
// Enter on a prompt: empty when a file dialog can take its initial name,
// else why the prompt takes no "ok".
OB_API CString PromptOkRefusal(PromptKind kind, const FileDialogRequest& file);
// Menu item `text` (exact, else ignoring case) as its 1-based number in
// `number`; why not when there is none.
OB_API CString MenuItemByText(const std::vector<CString>& items, const CString& text, int& number);
// A menu's item number 0 (dismiss) to the count; why not otherwise.
OB_API CString MenuNumberRefusal(const std::vector<CString>& items, int number);

// What a prompt shows, for a snapshot.
struct PromptView {
    PromptKind kind = PromptKind::None;
    CString text;                        // a question's text
    int x = 0, y = 0;                    // a menu's point
    const std::vector<CString>* items = nullptr;   // a menu's items
    const FileDialogRequest* file = nullptr;       // a file dialog's request
};
OB_API CString DescribePrompt(const PromptView& prompt);

// ---- snapshots ----

// The word a snapshot line starts with for a control of this type and style.
OB_API const char16_t* ControlKindName(ControlType type, uint32_t style);

// One control as a snapshot shows it.
struct ControlView {
    ControlType type = ControlType::Other;
    uint32_t style = 0;
    int id = 0;
    CString text;
    CString value;                       // from the *Value functions below
    const FontDescription* font = nullptr;   // null: no font set on the control
    bool enabled = true;
    bool visible = true;
    bool focus = false;
};
OB_API CString SnapshotLine(const ControlView& control);

// The value parts of a snapshot line.
OB_API CString CheckValue(int check);
OB_API CString ListValue(const std::vector<CString>& items, int selected);
OB_API CString MultiListValue(const std::vector<CString>& items, const std::vector<CString>& chosen);
// Tree nodes in display order as (depth, text); `selected` null for none.
OB_API CString TreeValue(const std::vector<std::pair<size_t, CString>>& nodes, const CString* selected);
OB_API CString TimeValue(const SystemTime& time);
OB_API CString SliderValue(int position, int low, int high);
OB_API CString TabsValue(const std::vector<CString>& tabs, int selected);

// The sheet's own page heading and a dialog's or sheet's first line.
OB_API CString WindowHeading(WindowType type, const CString& title);
OB_API CString PageHeading(int index, const CString& title);

// ---- the user's actions ----

// Why a control of this type cannot take a click, check or uncheck; empty
// when it can.
OB_API CString ClickRefusal(ControlType type, int id);
OB_API CString CheckRefusal(ControlType type, int id, bool checked);
// "expect-dialog": empty when `open` (null: none) is the expected title.
OB_API CString ExpectRefusal(const CString& title, const CString* open);

}  // namespace ob::ui::common
