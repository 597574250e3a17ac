// The Qt 6 desktop (libOrvoBasic_Qt.so): dialogs, property sheets and
// message boxes as real windows. A host links the library, or loads it with
// dlopen and finds these two functions with dlsym, then installs the
// desktop with ob::ui::SetDesktop.
#pragma once

#include <orvobasic/desktop.h>

#include <cstdint>

extern "C" {

// Makes the Qt desktop on the calling thread, which becomes its GUI thread
// (a host that already has a QApplication keeps it). `console`, when not
// null, receives what a console shows: printed text, error reports, action
// notes and snapshots, and (through UiOutput) the text of each message box
// the Qt desktop shows. Returns null, with the reason in `reason` (cut to
// `size` bytes with its zero), when no display answers: the process goes on
// and the host can keep the headless desktop.
__attribute__((visibility("default"))) ob::ui::Desktop* OB_CreateQtDesktop(ob::ui::Desktop* console, char* reason,
                                                                           int32_t size);
// Uninstall the desktop (SetDesktop(nullptr)) before destroying it.
__attribute__((visibility("default"))) void OB_DestroyQtDesktop(ob::ui::Desktop* desktop);

// The types of the two entry points, for dlsym.
typedef ob::ui::Desktop* (*OB_CreateQtDesktopFn)(ob::ui::Desktop*, char*, int32_t);
typedef void (*OB_DestroyQtDesktopFn)(ob::ui::Desktop*);
}
