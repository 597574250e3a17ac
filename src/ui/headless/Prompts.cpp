// The headless prompts: a Yes/No question, a pop-up menu and the file
// dialogs. Each is an in-memory modal window that the action script answers
// ("answer", "menu", "file"), so a run needs no display; "expect-dialog",
// "wait-ms", "snapshot" and "cancel" work on them as on dialogs.
#include "ui/headless/WindowSystem.h"

#include <orvobasic/desktop.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace ob::ui {

namespace fs = std::filesystem;

namespace {

CString Number(long n) {
    std::string digits = std::to_string(n);
    return CString(std::u16string(digits.begin(), digits.end()));
}

CString Quoted(const CString& text) { return u"\"" + text + u"\""; }

const char16_t* KindName(PromptKind kind) {
    switch (kind) {
    case PromptKind::Question: return u"question";
    case PromptKind::Menu: return u"menu";
    case PromptKind::File: return u"file dialog";
    default: return u"prompt";
    }
}

// Item `text` of a menu, exactly or else ignoring case; 0 when none matches.
int FindMenuItem(const std::vector<CString>& items, const CString& text) {
    for (size_t i = 0; i < items.size(); ++i)
        if (items[i] == text) return static_cast<int>(i) + 1;
    CString lower = text;
    lower.MakeLower();
    for (size_t i = 0; i < items.size(); ++i) {
        CString item = items[i];
        if (item.MakeLower() == lower) return static_cast<int>(i) + 1;
    }
    return 0;
}

// The full path a file dialog makes of a typed name: relative names are
// taken from the initial folder (else the current one), and a name without
// an extension gets the default one.
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

// Why the dialog refuses `path`, or empty when it takes it: the open dialog
// wants an existing file, the save dialog an existing folder to save in.
CString RefusalOf(const fs::path& path, bool save) {
    std::error_code ec;
    CString shown = Quoted(CString::FromUtf8(path.string()));
    if (!path.has_filename() || fs::is_directory(path, ec)) return shown + u" is a folder";
    if (save) return fs::is_directory(path.parent_path(), ec) ? CString() : u"no folder for " + shown;
    return fs::is_regular_file(path, ec) ? CString() : u"no file " + shown;
}

}  // namespace

Window* WindowSystem::NewPrompt(PromptKind kind, const CString& text) {
    Window* w = NewWindow(WindowType::Prompt, nullptr);
    w->prompt = kind;
    w->text = text;
    return w;
}

int WindowSystem::Question(const CString& text) {
    Window* w = NewPrompt(PromptKind::Question, text);
    RunModal(*w);
    int result = w->result;
    Destroy(w);
    return result;
}

int WindowSystem::PopupMenu(int x, int y, const std::vector<CString>& items) {
    Window* w = NewPrompt(PromptKind::Menu, u"menu");
    w->x = x;
    w->y = y;
    w->control.items = items;
    w->control.current = 0;
    RunModal(*w);
    int chosen = w->control.current;
    Destroy(w);
    return chosen;
}

CString WindowSystem::FileDialog(const FileDialogRequest& request) {
    Window* w = NewPrompt(PromptKind::File, request.save ? u"Save As" : u"Open");
    w->file = request;
    RunModal(*w);
    CString chosen = w->chosen;
    Destroy(w);
    return chosen;
}

Window* WindowSystem::PromptTarget(PromptKind kind, CString& why) {
    Window* top = Innermost();
    if (top && top->type == WindowType::Prompt && top->prompt == kind) return top;
    why = CString(u"no ") + KindName(kind) + u" is open";
    if (top) why += u" (" + Quoted(top->text) + u" is)";
    return nullptr;
}

CString WindowSystem::Answer(int button) {
    CString why;
    Window* w = PromptTarget(PromptKind::Question, why);
    if (!w) return why;
    w->result = button;
    w->ended = true;
    return CString();
}

CString WindowSystem::MenuIndex(int number) {
    CString why;
    Window* w = PromptTarget(PromptKind::Menu, why);
    if (!w) return why;
    if (number < 0 || static_cast<size_t>(number) > w->control.items.size())
        return u"no item " + Number(number) + u" in the menu";
    w->control.current = number;
    w->ended = true;
    return CString();
}

CString WindowSystem::MenuText(const CString& item) {
    CString why;
    Window* w = PromptTarget(PromptKind::Menu, why);
    if (!w) return why;
    int number = FindMenuItem(w->control.items, item);
    if (number == 0) return u"no item " + Quoted(item) + u" in the menu";
    return MenuIndex(number);
}

CString WindowSystem::File(const CString& path) {
    CString why;
    Window* w = PromptTarget(PromptKind::File, why);
    if (!w) return why;
    if (path.IsEmpty()) return u"no file name";
    fs::path full = ResolveFileName(path, w->file);
    why = RefusalOf(full, w->file.save);
    if (!why.empty()) return why;
    w->chosen = CString::FromUtf8(full.string());
    w->ended = true;
    return CString();
}

CString WindowSystem::FileCancel() {
    CString why;
    Window* w = PromptTarget(PromptKind::File, why);
    if (!w) return why;
    w->chosen.clear();
    w->result = IDCANCEL;
    w->ended = true;
    return CString();
}

// Enter: a file dialog takes the name in its name field (the initial file
// name); a question and a menu have nothing to take.
CString WindowSystem::PromptOk(Window& prompt) {
    if (prompt.prompt == PromptKind::File) {
        if (prompt.file.fileName.IsEmpty()) return u"the file dialog has no file name to take";
        return File(prompt.file.fileName);
    }
    return prompt.prompt == PromptKind::Menu ? u"a menu takes \"menu N\", not \"ok\""
                                             : u"a question takes \"answer yes|no\", not \"ok\"";
}

CString WindowSystem::DescribePrompt(const Window& prompt) const {
    switch (prompt.prompt) {
    case PromptKind::Question: return u"question " + Quoted(prompt.text) + u"\n";
    case PromptKind::Menu: {
        CString out = u"menu at " + Number(prompt.x) + u"," + Number(prompt.y) + u"\n";
        for (size_t i = 0; i < prompt.control.items.size(); ++i)
            out += u"  " + Number(static_cast<long>(i) + 1) + u" " + Quoted(prompt.control.items[i]) + u"\n";
        return out;
    }
    case PromptKind::File: {
        const FileDialogRequest& r = prompt.file;
        return CString(r.save ? u"filesave " : u"fileopen ") + Quoted(r.fileName) + u" extension " +
               Quoted(r.defaultExtension) + u" filter " + Quoted(r.filter) + u" folder " + Quoted(r.initialFolder) +
               u"\n";
    }
    default: return CString();
    }
}

}  // namespace ob::ui
