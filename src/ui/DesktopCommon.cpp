// The texts and decisions every desktop shares (see DesktopCommon.h).
#include "ui/DesktopCommon.h"

#include <string>
#include <system_error>

namespace ob::ui::common {

namespace fs = std::filesystem;

CString Number(long n) {
    std::string digits = std::to_string(n);
    return CString(std::u16string(digits.begin(), digits.end()));
}

CString Quoted(const CString& text) { return u"\"" + text + u"\""; }

CString ItemList(const std::vector<CString>& items) {
    CString out = u"[";
    for (size_t i = 0; i < items.size(); ++i) out += (i ? u", " : u"") + Quoted(items[i]);
    return out + u"]";
}

int FindItem(const std::vector<CString>& items, const CString& text) {
    for (size_t i = 0; i < items.size(); ++i)
        if (items[i] == text) return static_cast<int>(i);
    CString lower = text;
    lower.MakeLower();
    for (size_t i = 0; i < items.size(); ++i) {
        CString item = items[i];
        if (item.MakeLower() == lower) return static_cast<int>(i);
    }
    return -1;
}

int FindPrefix(const std::vector<CString>& items, intptr_t start, const CString& prefix) {
    CString lowerPrefix = prefix;
    lowerPrefix.MakeLower();
    size_t n = items.size();
    size_t first = start >= 0 && static_cast<size_t>(start) < n ? static_cast<size_t>(start) + 1 : 0;
    for (size_t k = 0; k < n; ++k) {
        size_t i = (first + k) % n;
        CString lower = items[i];
        lower.MakeLower();
        if (lower.compare(0, lowerPrefix.size(), lowerPrefix) == 0) return static_cast<int>(i);
    }
    return -1;
}

intptr_t ItemText(const std::vector<CString>& items, uintptr_t index, intptr_t lParam) {
    if (index >= items.size()) return LB_ERR;
    if (CString* out = TextOut(lParam)) *out = items[index];
    return static_cast<intptr_t>(items[index].size());
}

// ---- file dialogs ----

fs::path ResolveFileName(const CString& typed, const FileDialogRequest& request) {
    fs::path path = fs::path(typed.ToUtf8());
    if (path.is_relative() && !request.initialFolder.IsEmpty()) path = fs::path(request.initialFolder.ToUtf8()) / path;
    std::error_code ec;
    fs::path full = fs::absolute(path, ec);
    if (ec) full = path;
    full = full.lexically_normal();
    std::string extension = request.defaultExtension.ToUtf8();
    if (!extension.empty() && extension.front() == '.') extension.erase(0, 1);
    if (!extension.empty() && full.has_filename() && !full.has_extension()) full += "." + extension;
    return full;
}

CString FileRefusal(const fs::path& path, bool save) {
    std::error_code ec;
    CString shown = Quoted(CString::FromUtf8(path.string()));
    if (!path.has_filename() || fs::is_directory(path, ec)) return shown + u" is a folder";
    if (save) return fs::is_directory(path.parent_path(), ec) ? CString() : u"no folder for " + shown;
    return fs::is_regular_file(path, ec) ? CString() : u"no file " + shown;
}

CString ChooseFile(const CString& typed, const FileDialogRequest& request, CString& chosen) {
    if (typed.IsEmpty()) return u"no file name";
    fs::path full = ResolveFileName(typed, request);
    CString why = FileRefusal(full, request.save);
    if (why.empty()) chosen = CString::FromUtf8(full.string());
    return why;
}

// ---- prompts ----

namespace {

const char16_t* PromptName(PromptKind kind) {
    switch (kind) {
    case PromptKind::Question: return u"question";
    case PromptKind::Menu: return u"menu";
    case PromptKind::File: return u"file dialog";
    default: return u"prompt";
    }
}

}  // namespace

CString NoPromptOpen(PromptKind kind, const CString* open) {
    CString why = CString(u"no ") + PromptName(kind) + u" is open";
    if (open) why += u" (" + Quoted(*open) + u" is)";
    return why;
}

CString PromptOkRefusal(PromptKind kind, const FileDialogRequest& file) {
    switch (kind) {
    case PromptKind::File: return file.fileName.IsEmpty() ? u"the file dialog has no file name to take" : CString();
    case PromptKind::Menu: return u"a menu takes \"menu N\", not \"ok\"";
    default: return u"a question takes \"answer yes|no\", not \"ok\"";
    }
}

CString MenuItemByText(const std::vector<CString>& items, const CString& text, int& number) {
    number = FindItem(items, text) + 1;
    return number == 0 ? u"no item " + Quoted(text) + u" in the menu" : CString();
}

CString MenuNumberRefusal(const std::vector<CString>& items, int number) {
    if (number >= 0 && static_cast<size_t>(number) <= items.size()) return CString();
    return u"no item " + Number(number) + u" in the menu";
}

CString DescribePrompt(const PromptView& prompt) {
    switch (prompt.kind) {
    case PromptKind::Question: return u"question " + Quoted(prompt.text) + u"\n";
    case PromptKind::Menu: {
        CString out = u"menu at " + Number(prompt.x) + u"," + Number(prompt.y) + u"\n";
        for (size_t i = 0; prompt.items && i < prompt.items->size(); ++i)
            out += u"  " + Number(static_cast<long>(i) + 1) + u" " + Quoted((*prompt.items)[i]) + u"\n";
        return out;
    }
    case PromptKind::File: {
        if (!prompt.file) return CString();
        const FileDialogRequest& r = *prompt.file;
        return CString(r.save ? u"filesave " : u"fileopen ") + Quoted(r.fileName) + u" extension " +
               Quoted(r.defaultExtension) + u" filter " + Quoted(r.filter) + u" folder " + Quoted(r.initialFolder) +
               u"\n";
    }
    default: return CString();
    }
}

// ---- snapshots ----

const char16_t* ControlKindName(ControlType type, uint32_t style) {
    switch (type) {
    case ControlType::PushButton: return u"button";
    case ControlType::CheckBox: return u"checkbox";
    case ControlType::RadioButton: return u"radio";
    case ControlType::GroupBox: return u"groupbox";
    case ControlType::Edit:
        return (style & ES_MULTILINE) ? u"editmultiline" : (style & ES_NUMBER) ? u"editnumber" : u"edit";
    case ControlType::Static: return (style & 0x1F) == SS_BITMAP ? u"bitmap" : u"static";
    case ControlType::ListBox: return (style & LBS_MULTIPLESEL) ? u"multilistbox" : u"listbox";
    case ControlType::ComboBox: return u"combobox";
    case ControlType::DateTime: return u"datetime";
    case ControlType::TreeView: return u"treeview";
    case ControlType::Slider: return u"slider";
    case ControlType::TabControl: return u"tabcontrol";
    default: return u"control";
    }
}

namespace {

CString TwoDigits(int n) { return n < 10 ? u"0" + Number(n) : Number(n); }

CString Selected(const std::vector<CString>& items, int index) {
    return index >= 0 && static_cast<size_t>(index) < items.size() ? Quoted(items[static_cast<size_t>(index)])
                                                                    : CString(u"none");
}

// A font set on the control: face, height, weight and style words.
CString FontText(const FontDescription* font) {
    if (!font) return CString();
    return u" font=" + Quoted(font->face) + u"," + Number(font->height) + u"," + Number(font->weight) +
           (font->italic ? u",italic" : u"") + (font->underline ? u",underline" : u"");
}

}  // namespace

CString SnapshotLine(const ControlView& c) {
    return u"  " + CString(ControlKindName(c.type, c.style)) + u" " + Number(c.id) + u" " + Quoted(c.text) + c.value +
           FontText(c.font) + (c.enabled ? u" enabled" : u" disabled") + (c.visible ? u" visible" : u" hidden") +
           (c.focus ? u" focus" : u"") + u"\n";
}

CString CheckValue(int check) { return u" checked=" + Number(check); }

CString ListValue(const std::vector<CString>& items, int selected) {
    return u" items=" + ItemList(items) + u" selected=" + Selected(items, selected);
}

CString MultiListValue(const std::vector<CString>& items, const std::vector<CString>& chosen) {
    return u" items=" + ItemList(items) + u" selected=" + ItemList(chosen);
}

// Each node is prefixed with ">" per level below the top.
CString TreeValue(const std::vector<std::pair<size_t, CString>>& nodes, const CString* selected) {
    std::vector<CString> shown;
    shown.reserve(nodes.size());
    for (const auto& [depth, text] : nodes) shown.push_back(CString(depth, u'>') + text);
    return u" items=" + ItemList(shown) + u" selected=" + (selected ? Quoted(*selected) : CString(u"none"));
}

CString TimeValue(const SystemTime& t) {
    return u" value=" + Number(t.year) + u"-" + TwoDigits(t.month) + u"-" + TwoDigits(t.day) + u" " +
           TwoDigits(t.hour) + u":" + TwoDigits(t.minute) + u":" + TwoDigits(t.second);
}

CString SliderValue(int position, int low, int high) {
    return u" position=" + Number(position) + u" range=" + Number(low) + u".." + Number(high);
}

CString TabsValue(const std::vector<CString>& tabs, int selected) {
    return u" tabs=" + ItemList(tabs) + u" selected=" + Selected(tabs, selected);
}

CString WindowHeading(WindowType type, const CString& title) {
    return CString(type == WindowType::Sheet ? u"propertysheet " : u"dialog ") + Quoted(title) + u"\n";
}

CString PageHeading(int index, const CString& title) {
    return u"page " + Number(index) + u" " + Quoted(title) + u"\n";
}

// ---- the user's actions ----

CString ClickRefusal(ControlType t, int id) {
    if (t == ControlType::PushButton || t == ControlType::CheckBox || t == ControlType::RadioButton) return CString();
    return u"control " + Number(id) + u" cannot be clicked";
}

CString CheckRefusal(ControlType t, int id, bool checked) {
    if (t == ControlType::CheckBox || (t == ControlType::RadioButton && checked)) return CString();
    return u"control " + Number(id) + (checked ? u" cannot be checked" : u" cannot be unchecked");
}

CString ExpectRefusal(const CString& title, const CString* open) {
    if (!open) return u"expected " + Quoted(title) + u", but no dialog is open";
    if (*open != title) return u"expected " + Quoted(title) + u", but " + Quoted(*open) + u" is open";
    return CString();
}

}  // namespace ob::ui::common
