// The C API of action scripts: loading them into the process-wide desktop.
#include <orvobasic/desktop.h>
#include <orvobasic/orvobasic.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

namespace {

// Copies `text` into a caller's buffer, cut to fit with its zero.
template <typename Text, typename Unit>
void CopyReason(const Text& text, Unit* buffer, int32_t size) {
    if (!buffer || size <= 0) return;
    size_t n = std::min(text.size(), static_cast<size_t>(size) - 1);
    std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(n), buffer);
    buffer[n] = 0;
}

bool Load(const CString& text, const CString& name, CString& error) {
    return ob::ui::GetDesktop().LoadUiActions(text, name, error);
}

}  // namespace

extern "C" {

int32_t OB_SetUiActions(const char16_t* text, const char16_t* name, char16_t* error, int32_t size) {
    try {
        CString reason;
        if (Load(CString(text ? text : u""), CString(name ? name : u""), reason)) return 1;
        CopyReason(reason, error, size);
    } catch (...) {
        CopyReason(std::u16string(u"out of memory"), error, size);
    }
    return 0;
}

int32_t OB_SetUiActionsUtf8(const char* text, const char* name, char* error, int32_t size) {
    try {
        CString reason;
        if (Load(CString::FromUtf8(text ? text : ""), CString::FromUtf8(name ? name : ""), reason)) return 1;
        CopyReason(reason.ToUtf8(), error, size);
    } catch (...) {
        CopyReason(std::string("out of memory"), error, size);
    }
    return 0;
}

int32_t OB_LoadUiActionsFile(const char* path, char* error, int32_t size) {
    try {
        std::ifstream file(path ? path : "", std::ios::binary);
        std::ostringstream content;
        if (file) content << file.rdbuf();
        if (!file || file.bad()) {
            CopyReason(std::string(path ? path : "") + ": cannot be read", error, size);
            return 0;
        }
        return OB_SetUiActionsUtf8(content.str().c_str(), path, error, size);
    } catch (...) {
        CopyReason(std::string("out of memory"), error, size);
        return 0;
    }
}

int32_t OB_UiActionsFailed(void) {
    try {
        return ob::ui::GetDesktop().UiActionsFailed() ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

}  // extern "C"
