// The headless desktop's window system: dialogs, sheets and controls kept in
// memory, modal loops that play the action script, and the notifications a
// person's actions cause. Every Desktop uses it unless it overrides the
// dialog members.
#pragma once

#include "ui/ActionScript.h"
#include "ui/headless/Window.h"

#include <unordered_map>

namespace ob::ui {

class Desktop;

class WindowSystem : public UiDriver {
public:
    explicit WindowSystem(Desktop& desktop) : m_desktop(desktop) {}

    int DoModalDialog(const uint8_t* templ, size_t length, DialogSink& sink);
    int DoModalPropertySheet(const CString& caption, const std::vector<SheetPage>& pages, DialogSink& sheetSink);
    bool EndDialog(WindowHandle dialog, int result);
    WindowHandle GetDlgItem(WindowHandle dialog, int id);
    CString GetClassName(WindowHandle window);
    intptr_t SendMessage(WindowHandle window, unsigned message, uintptr_t wParam, intptr_t lParam);
    CString GetWindowText(WindowHandle window);
    void SetWindowText(WindowHandle window, const CString& text);
    void EnableWindow(WindowHandle window, bool enable);
    void ShowWindow(WindowHandle window, int command);
    void SetFocus(WindowHandle window);
    void SetFont(WindowHandle window, const FontDescription& font);

    // Prompts, played from the action script like dialogs: the question
    // returns IDYES, IDNO or IDCANCEL, the menu the chosen item's number
    // (0: dismissed), the file dialog the full path ("" : cancelled).
    int Question(const CString& text);
    int PopupMenu(int x, int y, const std::vector<CString>& items);
    CString FileDialog(const FileDialogRequest& request);

    // New actions start afresh: an earlier failure no longer ends every loop.
    bool LoadActions(const CString& text, const CString& name, CString& error) {
        if (!m_actions.Load(text, name, error)) return false;
        m_failed = false;
        return true;
    }
    bool ActionsFailed() const { return m_failed; }

    // The user's actions (UiDriver), applied to the innermost modal window.
    CString ExpectDialog(const CString& title) override;
    CString Type(int id, const CString& text) override;
    CString Click(int id) override;
    CString SelectText(int id, const CString& item) override;
    CString SelectIndex(int id, int index) override;
    CString Check(int id, bool checked) override;
    CString Tab(int id, int index) override;
    CString Slide(int id, int position) override;
    CString Date(int id, const SystemTime& time) override;
    CString Page(int index) override;
    CString Wait(int milliseconds) override;
    CString Snapshot() override;
    CString Ok() override;
    CString Cancel() override;
    CString Close() override;
    CString Answer(int button) override;
    CString MenuIndex(int number) override;
    CString MenuText(const CString& item) override;
    CString File(const CString& path) override;
    CString FileCancel() override;

    // The text of a snapshot of `window` (exposed for tests).
    CString Describe(const Window& window) const;

private:
    Window* Find(WindowHandle handle);
    Window* NewWindow(WindowType type, Window* parent);
    Window* CreateFromTemplate(const uint8_t* templ, size_t length, WindowType type, Window* parent,
                               DialogSink* sink);
    void AddControl(Window& owner, const DialogItem& item);
    void InitDialog(Window& window);
    void ShowPage(Window& sheet, int index);
    void Destroy(Window* window);
    void RunModal(Window& window);
    Window* Innermost() { return m_modal.empty() ? nullptr : m_modal.back(); }
    Window* UserTarget(int id, CString& why);
    Window* TypedTarget(int id, ControlType type, const char16_t* what, CString& why);
    void NotifyCommand(Window& control, unsigned code);
    void ClickButton(Window& control);
    CString SelectItem(Window& control, int index);
    void EndByUser(Window& window, int id);
    Window* NewPrompt(PromptKind kind, const CString& text);
    Window* PromptTarget(PromptKind kind, CString& why);
    CString PromptOk(Window& prompt);
    CString DescribePrompt(const Window& prompt) const;

    Desktop& m_desktop;
    std::unordered_map<WindowHandle, std::unique_ptr<Window>> m_windows;
    std::vector<Window*> m_modal;
    WindowHandle m_nextHandle = 0x100;
    ActionScript m_actions;
    bool m_failed = false;
};

}  // namespace ob::ui
