// The headless desktop's window system: dialogs, sheets and controls kept in
// memory, modal loops that play the action script, and the notifications a
// person's actions cause. Every Desktop uses it unless it overrides the
// dialog members.
#pragma once

#include "ui/WindowDriver.h"
#include "ui/headless/Window.h"

namespace ob::ui {

class Desktop;

class WindowSystem : public WindowDriver<Window> {
public:
    explicit WindowSystem(Desktop& desktop) : WindowDriver(desktop, 0x100) {}

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

private:
    // The verbs' effects on the in-memory windows (WindowDriver).
    void EnterText(Window& edit, const CString& typed) override;
    void ClickControl(Window& button) override { ClickButton(button); }
    bool IsChecked(const Window& button) const override { return button.control.check != 0; }
    CString SelectItem(Window& control, int index) override;
    void SetSliderPosition(Window& slider, int position) override;
    void SetDate(Window& picker, const SystemTime& time) override { picker.control.time = time; }
    void ChoosePage(Window& sheet, int index) override { ShowPage(sheet, index); }
    void PressEnter(Window& window) override { EndByUser(window, IDC_OK); }
    void PressEscape(Window& window) override { EndByUser(window, IDC_CANCEL); }
    void CloseBox(Window& window) override { EndByUser(window, IDC_CANCEL); }
    void EndPrompt(Window& prompt) override { prompt.ended = true; }
    void TakeAnswer(Window& question, int button) override;
    void ChooseMenuItem(Window& menu, int number) override;
    const std::vector<CString>& MenuItems(const Window& menu) const override { return menu.control.items; }
    void FinishFileDialog(Window& dialog, bool) override { dialog.ended = true; }

    Window* CreateFromTemplate(const uint8_t* templ, size_t length, WindowType type, Window* parent,
                               DialogSink* sink);
    void AddControl(Window& owner, const DialogItem& item);
    void InitDialog(Window& window) override;
    void ShowPage(Window& sheet, int index) override;
    void RunModal(Window& window) override;
    void NotifyCommand(Window& control, unsigned code) { NotifyOwner(*this, control, code); }
    void ClickButton(Window& control);
    void EndByUser(Window& window, int id);
    Window* NewPrompt(PromptKind kind, const CString& text);
};

}  // namespace ob::ui
