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
    return RunToEnd(*NewPrompt(PromptKind::Question, text));
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

void WindowSystem::TakeAnswer(Window& question, int button) {
    question.result = button;
    question.ended = true;
}

void WindowSystem::ChooseMenuItem(Window& menu, int number) {
    menu.control.current = number;
    menu.ended = true;
}

}  // namespace ob::ui
