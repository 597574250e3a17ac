// The runner's choice of desktop: the Qt desktop (libOrvoBasic_Qt, loaded
// with dlopen only when wanted) or the console desktop alone.
#pragma once

#include "ConsoleDesktop.h"

#include <orvobasic/desktop.h>

namespace ob::runner {

enum class UiChoice { Auto, Gui, Headless };

class GuiDesktop {
public:
    // Auto: the Qt desktop when DISPLAY or WAYLAND_DISPLAY is set and the
    // library is found; Gui: the Qt desktop, else the console one with a
    // one-line note on stderr. The console desktop keeps printed text and
    // error reports either way.
    GuiDesktop(UiChoice choice, ConsoleDesktop& console);
    ~GuiDesktop();
    GuiDesktop(const GuiDesktop&) = delete;
    GuiDesktop& operator=(const GuiDesktop&) = delete;

    ob::ui::Desktop& Active() { return m_qt ? *m_qt : m_console; }

private:
    ConsoleDesktop& m_console;
    ob::ui::Desktop* m_qt = nullptr;
    void (*m_destroy)(ob::ui::Desktop*) = nullptr;
};

}  // namespace ob::runner
