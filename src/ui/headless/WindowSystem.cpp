// The headless window system: creating windows from templates, the modal
// loops, and the window functions the dialog logic calls.
#include "ui/headless/WindowSystem.h"

#include <orvobasic/desktop.h>

#include <ctime>

namespace ob::ui {

namespace {

// The local time now, as a date-time picker starts.
SystemTime Now() {
    std::time_t t = std::time(nullptr);
    std::tm parts{};
    localtime_r(&t, &parts);
    return SystemTime{parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min,
                      parts.tm_sec};
}

}  // namespace

void WindowSystem::AddControl(Window& owner, const DialogItem& item) {
    Window* c = NewWindow(WindowType::Control, &owner);
    c->className = item.className;
    c->text = item.text;
    c->style = item.style;
    c->id = item.id;
    c->visible = (item.style & WS_VISIBLE) != 0;
    c->enabled = (item.style & WS_DISABLED) == 0;
    c->control.type = ControlTypeOf(item.className, item.style);
    if (c->control.type == ControlType::DateTime) c->control.time = Now();
}

// Makes a dialog or page with its controls. Null when the template is
// refused: unreadable bytes, or a control of a class no desktop knows.
Window* WindowSystem::CreateFromTemplate(const uint8_t* templ, size_t length, WindowType type, Window* parent,
                                         DialogSink* sink) {
    DialogDescription d;
    if (!ReadDialogTemplate(templ, length, d)) return nullptr;
    for (const DialogItem& item : d.items)
        if (ControlTypeOf(item.className, item.style) == ControlType::Other) return nullptr;
    Window* w = NewWindow(type, parent);
    w->text = d.caption;
    w->style = d.style;
    w->sink = sink;
    w->hasFont = d.hasFont;
    w->font.face = d.faceName;
    w->font.height = d.pointSize;
    w->children.reserve(d.items.size());
    for (const DialogItem& item : d.items) AddControl(*w, item);
    return w;
}

// WM_INITDIALOG: when the sink asks for it, the first visible, enabled
// control with WS_TABSTOP gets the focus.
void WindowSystem::InitDialog(Window& window) {
    window.sink->OnCreate(window.handle);
    if (!window.sink->OnInitDialog()) return;
    for (Window* c : window.children)
        if ((c->style & WS_TABSTOP) && c->visible && c->enabled) {
            window.focus = c;
            return;
        }
}

void WindowSystem::RunModal(Window& window) {
    m_modal.push_back(&window);
    PlayModal(window);
    m_modal.pop_back();
}

int WindowSystem::DoModalDialog(const uint8_t* templ, size_t length, DialogSink& sink) {
    Window* w = CreateFromTemplate(templ, length, WindowType::Dialog, nullptr, &sink);
    return w ? RunDialog(*w) : -1;
}

void WindowSystem::ShowPage(Window& sheet, int index) {
    Window*& page = sheet.pages[static_cast<size_t>(index)];
    if (!page) {
        const SheetPage& source = sheet.pageSources[static_cast<size_t>(index)];
        page = CreateFromTemplate(source.templ, source.length, WindowType::Page, &sheet, source.sink);
        if (!page) return;
        InitDialog(*page);
    }
    for (Window* p : sheet.pages)
        if (p) p->visible = p == page;
    sheet.activePage = index;
}

int WindowSystem::DoModalPropertySheet(const CString& caption, const std::vector<SheetPage>& pages,
                                       DialogSink& sheetSink) {
    if (pages.empty()) return -1;   // a sheet needs a page
    Window* s = NewWindow(WindowType::Sheet, nullptr);
    s->text = caption;
    s->sink = &sheetSink;
    s->pageSources = pages;
    s->pages.assign(pages.size(), nullptr);
    for (const DialogItem& button : SheetButtons(0, 0)) AddControl(*s, button);
    return RunSheet(*s);
}

bool WindowSystem::EndDialog(WindowHandle dialog, int result) {
    Window* w = Find(dialog);
    if (!w || w->type == WindowType::Control) return false;
    if (w->type == WindowType::Page) w = w->parent;
    w->ended = true;
    w->result = result;
    return true;
}

WindowHandle WindowSystem::GetDlgItem(WindowHandle dialog, int id) {
    Window* w = Find(dialog);
    Window* c = w ? FindDlgItem(*w, id) : nullptr;
    return c ? c->handle : 0;
}

CString WindowSystem::GetClassName(WindowHandle window) {
    Window* w = Find(window);
    if (!w) return CString();
    return w->type == WindowType::Control ? w->className : CString(u"#32770");
}

intptr_t WindowSystem::SendMessage(WindowHandle window, unsigned message, uintptr_t wParam, intptr_t lParam) {
    Window* w = Find(window);
    if (!w || w->type != WindowType::Control) return 0;
    return ControlMessage(*w, message, wParam, lParam);
}

CString WindowSystem::GetWindowText(WindowHandle window) {
    Window* w = Find(window);
    if (!w) return CString();
    return w->type == WindowType::Control ? ControlText(*w) : w->text;
}

// A single-line edit field reports the change (EN_CHANGE) as the real one
// does; not while it is reporting one already, so a handler that sets its
// own field does not recurse without end.
void WindowSystem::SetWindowText(WindowHandle window, const CString& text) {
    Window* w = Find(window);
    if (!w || w->control.type == ControlType::ComboBox) return;
    w->text = text;
    if (w->type == WindowType::Control && w->control.type == ControlType::Edit && !(w->style & ES_MULTILINE))
        NotifyCommand(*w, EN_CHANGE);
}

void WindowSystem::EnableWindow(WindowHandle window, bool enable) {
    if (Window* w = Find(window)) w->enabled = enable;
}

void WindowSystem::ShowWindow(WindowHandle window, int command) {
    if (Window* w = Find(window)) w->visible = command != SW_HIDE;
}

void WindowSystem::SetFocus(WindowHandle window) {
    Window* w = Find(window);
    if (w && w->type == WindowType::Control && w->parent) w->parent->focus = w;
}

void WindowSystem::SetFont(WindowHandle window, const FontDescription& font) {
    if (Window* w = Find(window)) {
        w->font = font;
        w->hasFont = true;
    }
}

}  // namespace ob::ui
