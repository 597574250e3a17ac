// Loading the Qt desktop: the library is looked for where the loader finds
// libraries for the runner, then beside the interpreter library. It stays
// loaded for the life of the process (Qt does not unload cleanly).
#include "GuiDesktop.h"

#include <orvobasic/orvobasic.h>
#include <orvobasic/qtdesktop.h>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace ob::runner {

namespace {

constexpr const char* kQtLibrary = "libOrvoBasic_Qt.so.1";

void* OpenQtLibrary() {
    if (void* lib = dlopen(kQtLibrary, RTLD_NOW | RTLD_LOCAL)) return lib;
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&OB_CreateScript), &info) || !info.dli_fname) return nullptr;
    std::string path = info.dli_fname;
    size_t slash = path.rfind('/');
    if (slash == std::string::npos) return nullptr;
    return dlopen((path.substr(0, slash + 1) + kQtLibrary).c_str(), RTLD_NOW | RTLD_LOCAL);
}

bool HasDisplayVariable() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value && *value) return true;
    }
    return false;
}

void Note(const std::string& why) {
    std::fprintf(stderr, "orvobasic: %s; dialogs stay headless\n", why.c_str());
}

}  // namespace

GuiDesktop::GuiDesktop(UiChoice choice, ConsoleDesktop& console) : m_console(console) {
    if (choice == UiChoice::Headless || (choice == UiChoice::Auto && !HasDisplayVariable())) return;
    void* lib = OpenQtLibrary();
    auto create = lib ? reinterpret_cast<OB_CreateQtDesktopFn>(dlsym(lib, "OB_CreateQtDesktop")) : nullptr;
    auto destroy = lib ? reinterpret_cast<OB_DestroyQtDesktopFn>(dlsym(lib, "OB_DestroyQtDesktop")) : nullptr;
    if (!create || !destroy) {
        if (choice == UiChoice::Gui) Note(std::string("the Qt desktop (") + kQtLibrary + ") is not installed");
        return;
    }
    char reason[256] = "";
    m_qt = create(&console, reason, sizeof reason);
    if (m_qt) m_destroy = destroy;
    else Note(reason);
}

GuiDesktop::~GuiDesktop() {
    if (m_qt) m_destroy(m_qt);
}

}  // namespace ob::runner
