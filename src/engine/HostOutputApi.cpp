// The C host API for the script's code page, what it shows (print text and
// message boxes as UTF-8 callbacks) and its variables. No exception leaves
// these functions.
#include <orvobasic/orvobasic.h>

#include <orvobasic/COrvoBasic.h>

#include "engine/HostOutput.h"
#include "engine/HostValues.h"

#include <memory>
#include <string>

namespace {

CString FromUtf8(const char* text) { return text ? CString::FromUtf8(text) : CString(); }

bool IsKnownCodePage(int32_t codePage) { return codePage == OB_CODEPAGE_1252 || codePage == OB_CODEPAGE_UTF8; }

// The C handlers behind the engine's hooks; the script handle a hook gets
// is the interpreter that shows the box.
std::shared_ptr<const ob::OutputHooks> WrapOutputHandlers(const OB_OutputHandlers* handlers) {
    if (!handlers || (!handlers->print && !handlers->messageBox)) return nullptr;
    auto hooks = std::make_shared<ob::OutputHooks>();
    OB_OutputHandlers c = *handlers;
    if (c.print)
        hooks->print = [c](COrvoBasic& script, const CString& text) {
            std::string utf8 = text.ToUtf8();
            c.print(&script, utf8.c_str(), static_cast<int32_t>(utf8.size()), c.userData);
        };
    if (c.messageBox)
        hooks->messageBox = [c](COrvoBasic& script, const CString& text, unsigned style) {
            return static_cast<int>(c.messageBox(&script, text.ToUtf8().c_str(), style, c.userData));
        };
    return hooks;
}

int32_t GetVariable(OB_HANDLE script, const CString& name, int32_t index, VARIANT* value) {
    if (!value || !COrvoBasic::IsValidInterpreter(script)) return 0;
    CBasicVariable element;
    if (!script->GetVariableValue(name, index, element)) return 0;
    VariantClear(value);
    ob::ToHostValue(element, *value);
    return 1;
}

int32_t SetVariable(OB_HANDLE script, const CString& name, int32_t index, const VARIANT* value) {
    if (!COrvoBasic::IsValidInterpreter(script)) return 0;
    VARIANT empty;
    VariantInit(&empty);
    return script->SetVariableValue(name, index, ob::ToScriptValue(value ? *value : empty)) ? 1 : 0;
}

int32_t GetVariableSize(OB_HANDLE script, const CString& name) {
    if (!COrvoBasic::IsValidInterpreter(script)) return 0;
    CString key = name;
    const CBasicVariable* var = script->FindVariable(key);
    return var ? var->GetNumItems() : 0;
}

}  // namespace

extern "C" {

int32_t OB_SetCodePage(OB_HANDLE script, int32_t codePage) {
    if (!IsKnownCodePage(codePage)) return 0;
    auto value = static_cast<ob::CodePage>(codePage);
    if (!script) {
        ob::SetDefaultCodePage(value);
        return 1;
    }
    if (!COrvoBasic::IsValidInterpreter(script)) return 0;
    script->SetCodePage(value);
    return 1;
}

void OB_SetOutputHandlers(OB_HANDLE script, const OB_OutputHandlers* handlers) {
    try {
        if (!script) return ob::SetDefaultOutputHooks(WrapOutputHandlers(handlers));
        if (COrvoBasic::IsValidInterpreter(script)) script->SetOutputHooks(WrapOutputHandlers(handlers));
    } catch (...) {
    }
}

int32_t OB_GetVariable(OB_HANDLE script, const char16_t* name, int32_t index, VARIANT* value) {
    if (!name) return 0;
    try {
        return GetVariable(script, CString(name), index, value);
    } catch (...) {
        return 0;
    }
}

int32_t OB_GetVariableUtf8(OB_HANDLE script, const char* name, int32_t index, VARIANT* value) {
    if (!name) return 0;
    try {
        return GetVariable(script, FromUtf8(name), index, value);
    } catch (...) {
        return 0;
    }
}

int32_t OB_SetVariable(OB_HANDLE script, const char16_t* name, int32_t index, const VARIANT* value) {
    if (!name) return 0;
    try {
        return SetVariable(script, CString(name), index, value);
    } catch (...) {
        return 0;
    }
}

int32_t OB_SetVariableUtf8(OB_HANDLE script, const char* name, int32_t index, const VARIANT* value) {
    if (!name) return 0;
    try {
        return SetVariable(script, FromUtf8(name), index, value);
    } catch (...) {
        return 0;
    }
}

int32_t OB_GetVariableSize(OB_HANDLE script, const char16_t* name) {
    if (!name) return 0;
    try {
        return GetVariableSize(script, CString(name));
    } catch (...) {
        return 0;
    }
}

int32_t OB_GetVariableSizeUtf8(OB_HANDLE script, const char* name) {
    if (!name) return 0;
    try {
        return GetVariableSize(script, FromUtf8(name));
    } catch (...) {
        return 0;
    }
}

}  // extern "C"
