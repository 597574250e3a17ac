// The interpreter's code page and where what a script shows goes: the
// host's output hooks when it set them, else the desktop. Defaults a host
// sets for all interpreters are taken when an interpreter is made.
#include "engine/HostOutput.h"

#include <orvobasic/desktop.h>

#include "platform/CodePage.h"

#include <mutex>

namespace ob {
namespace {

std::mutex g_defaultsLock;

HostDefaults& Defaults() {
    static HostDefaults defaults;
    return defaults;
}

}  // namespace

HostDefaults GetHostDefaults() {
    std::lock_guard<std::mutex> lock(g_defaultsLock);
    return Defaults();
}

void SetDefaultCodePage(CodePage codePage) {
    std::lock_guard<std::mutex> lock(g_defaultsLock);
    Defaults().codePage = codePage;
}

void SetDefaultOutputHooks(std::shared_ptr<const OutputHooks> hooks) {
    std::lock_guard<std::mutex> lock(g_defaultsLock);
    Defaults().output = std::move(hooks);
}

void SetDefaultErrorHandler(DefaultErrorHandler handler) {
    std::lock_guard<std::mutex> lock(g_defaultsLock);
    Defaults().errorHandler = std::move(handler);
}

}  // namespace ob

using namespace ob;

void COrvoBasic::ApplyHostDefaults() {
    HostDefaults defaults = GetHostDefaults();
    m_codePage = defaults.codePage;
    m_outputHooks = std::move(defaults.output);
    if (defaults.errorHandler)
        m_errorHandler = [this, handler = std::move(defaults.errorHandler)](const ErrorRecord& error) {
            return handler(*this, error);
        };
}

CString COrvoBasic::AnsiToWide(std::string_view bytes) const { return platform::AnsiToWide(bytes, m_codePage); }

void COrvoBasic::AnsiToWide(std::string_view bytes, CString& out) const {
    platform::AnsiToWide(bytes, out, m_codePage);
}

std::string COrvoBasic::WideToAnsi(std::u16string_view text) const {
    return platform::WideToAnsi(text, m_codePage);
}

void COrvoBasic::ShowPrint(const CString& text) {
    if (m_outputHooks && m_outputHooks->print) return m_outputHooks->print(*this, text);
    ui::GetDesktop().PrintBox(text);
}

int COrvoBasic::ShowMessageBox(const CString& text, unsigned style) {
    if (m_outputHooks && m_outputHooks->messageBox) return m_outputHooks->messageBox(*this, text, style);
    return ui::GetDesktop().MessageBox(text, style);
}
