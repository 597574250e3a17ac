// The headless prompts: a Yes/No question, a pop-up menu and the file
// dialogs. Each is an in-memory modal window that the action script answers
// ("answer", "menu", "file"), so a run needs no display; "expect-dialog",
// "wait-ms", "snapshot" and "cancel" work on them as on dialogs.
#include "ui/headless/WindowSystem.h"

#include <orvobasic/desktop.h>

namespace ob::ui {

Window* WindowSystem::NewPrompt(PromptKind kind, const CString& text) {
    Window* w = NewWindow(WindowType::Prompt, nullptr);
    w->prompt = kind;
    w->text = text;
    return w;
}

// A host that never loaded actions gets its boxes answered with OK, this
// one too, and nothing written anywhere.
int WindowSystem::Question(const CString& text) {
    if (!m_actions.Loaded()) return IDOK;
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

Window* WindowSystem::PromptTarget(PromptKind kind, CString& why) { return FindPrompt(Innermost(), kind, why); }

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
    why = common::MenuNumberRefusal(w->control.items, number);
    if (!why.empty()) return why;
    w->control.current = number;
    w->ended = true;
    return CString();
}

CString WindowSystem::MenuText(const CString& item) {
    CString why;
    Window* w = PromptTarget(PromptKind::Menu, why);
    if (!w) return why;
    int number = 0;
    why = common::MenuItemByText(w->control.items, item, number);
    return why.empty() ? MenuIndex(number) : why;
}

CString WindowSystem::File(const CString& path) {
    CString why;
    Window* w = PromptTarget(PromptKind::File, why);
    if (!w) return why;
    why = common::ChooseFile(path, w->file, w->chosen);
    if (!why.empty()) return why;
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
    CString why = common::PromptOkRefusal(prompt.prompt, prompt.file);
    return why.empty() ? File(prompt.file.fileName) : why;
}

CString WindowSystem::DescribePrompt(const Window& prompt) const {
    return common::DescribePrompt({prompt.prompt, prompt.text, prompt.x, prompt.y, &prompt.control.items, &prompt.file});
}

}  // namespace ob::ui
