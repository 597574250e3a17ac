// The C host API: running, freeing and signalling scripts, host functions
// written in C, the message loop, and host control (stop, budgets, error
// records, capabilities, path resolver, line hook). No exception leaves
// these functions.
#include <orvobasic/orvobasic.h>

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "engine/EventTable.h"
#include "engine/HostOutput.h"
#include "engine/HostValues.h"
#include "engine/Registry.h"
#include "engine/ScriptGate.h"
#include "platform/NumberFormat.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

namespace {

CString FromUtf16(const char16_t* text) { return text ? CString(text) : CString(); }

CString FromUtf8(const char* text) { return text ? CString::FromUtf8(text) : CString(); }

// Integer text of the integer VARIANT types the script value has no room for.
bool IntegerText(const VARIANT& v, CString& text) {
    switch (v.vt) {
    case VT_I1: text = ob::platform::FormatInt(v.cVal); return true;
    case VT_UI1: text = ob::platform::FormatInt(v.bVal); return true;
    case VT_I8: text = CString::FromUtf8(std::to_string(v.llVal)); return true;
    case VT_UI8: text = CString::FromUtf8(std::to_string(v.ullVal)); return true;
    default: return false;
    }
}

}  // namespace

namespace ob {

// A host value as a script value: empty and null stay unset, numbers,
// truth values, strings and objects map directly, the other integer types
// become their text, anything else (arrays, references, dates) stays unset.
CBasicVariable ToScriptValue(const VARIANT& v) {
    CBasicVariable value;
    CString text;
    if (v.vt == VT_EMPTY || v.vt == VT_NULL) return value;
    if (IntegerText(v, text)) value.SetValue(text);
    else value.SetValue(v);
    return value;
}

// The current element of a script value as a VARIANT the callee may read;
// the caller clears it.
void ToHostValue(const CBasicVariable& value, VARIANT& out) {
    VariantInit(&out);
    const CVarBase& item = value.GetCurrent();
    switch (item.GetVarType()) {
    case VT_I4: out.vt = VT_I4; out.lVal = static_cast<int32_t>(item.GetLongValue()); break;
    case VT_R8: out.vt = VT_R8; out.dblVal = item.GetDoubleValue(); break;
    case VT_BOOL: out.vt = VT_BOOL; out.boolVal = item.GetLongValue() ? VARIANT_TRUE : VARIANT_FALSE; break;
    case VT_BSTR: {
        const CString& s = item.StringRef();
        out.vt = VT_BSTR;
        out.bstrVal = SysAllocStringLen(s.c_str(), static_cast<uint32_t>(s.size()));
        break;
    }
    case VT_DISPATCH:
        out.vt = VT_DISPATCH;
        out.pdispVal = item.GetObjectValue();
        if (out.pdispVal) out.pdispVal->AddRef();
        break;
    default: break;
    }
}

}  // namespace ob

namespace {

using ob::ToHostValue;
using ob::ToScriptValue;

// A host function written in C, reached through the C++ custom-function
// table: the descriptor's user value is the index of its entry here.
struct HostFunctionEntry {
    OB_HostFunction function;
    void* userData;
};

// Entries live for the process; the same function and data reuse one entry,
// so registering again after the table was emptied does not grow this.
// Scripts on any thread read it while hosts add to it: always under the lock.
std::mutex g_hostFunctionsLock;

std::vector<HostFunctionEntry>& HostFunctions() {
    static std::vector<HostFunctionEntry> entries;
    return entries;
}

int HostFunctionIndex(OB_HostFunction function, void* userData) {
    std::lock_guard lock(g_hostFunctionsLock);
    auto& entries = HostFunctions();
    for (size_t i = 0; i < entries.size(); ++i)
        if (entries[i].function == function && entries[i].userData == userData) return static_cast<int>(i);
    entries.push_back({function, userData});
    return static_cast<int>(entries.size() - 1);
}

bool HostFunctionAt(int index, HostFunctionEntry& entry) {
    std::lock_guard lock(g_hostFunctionsLock);
    const auto& entries = HostFunctions();
    if (index < 0 || static_cast<size_t>(index) >= entries.size()) return false;
    entry = entries[static_cast<size_t>(index)];
    return true;
}

// Converts the arguments, calls the C function and takes over its result.
CBasicVariable CallHostFunction(COrvoBasic* script, CArgArray& args, int index) {
    CBasicVariable value;
    HostFunctionEntry entry{};
    if (!HostFunctionAt(index, entry)) return value;
    std::vector<VARIANT> hostArgs(args.size());
    for (size_t i = 0; i < args.size(); ++i) ToHostValue(args[i], hostArgs[i]);
    VARIANT result;
    VariantInit(&result);
    entry.function(script, hostArgs.data(), static_cast<int32_t>(hostArgs.size()), &result, entry.userData);
    value = ToScriptValue(result);
    VariantClear(&result);
    for (VARIANT& v : hostArgs) VariantClear(&v);
    return value;
}

bool AddCFunction(const CString& name, OB_HostFunction function, int32_t paramCount, void* userData) {
    if (name.IsEmpty() || !function) return false;
    try {
        return ob::AddHostFunction(name, &CallHostFunction, paramCount, HostFunctionIndex(function, userData));
    } catch (...) {
        return false;
    }
}

OB_HANDLE ExecuteScript(const CString& path, int32_t* resident) {
    try {
        auto script = std::make_unique<COrvoBasic>();
        if (!script->ExecuteProgram(path)) return nullptr;
        if (resident) *resident = script->IsResident() ? 1 : 0;
        return script.release();
    } catch (...) {
        return nullptr;
    }
}

// Converts the arguments and delivers the event; see OB_SendEvent.
int32_t SendEvent(OB_HANDLE script, const CString& name, const VARIANT* args, int32_t count) {
    try {
        CArgArray values;
        for (int32_t i = 0; args && i < count; ++i) values.push_back(ToScriptValue(args[i]));
        if (!script) {
            COrvoBasic::SendEvent(name, values);
        } else if (ob::ScriptUse use(script); use) {
            script->EventThrow(name, values);
        }
    } catch (const std::bad_alloc&) {
        if (script && COrvoBasic::IsValidInterpreter(script)) script->OutOfMemory();
    } catch (...) {
        // An aborted handler ends the delivery; the host is not told.
    }
    return 1;
}

// Copies `text` into a zero-terminated buffer of `size` units; returns its full length.
template <typename Unit, typename Text>
int32_t CopyOut(const Text& text, Unit* buffer, int32_t size) {
    if (buffer && size > 0) {
        size_t n = std::min(text.size(), static_cast<size_t>(size - 1));
        std::memcpy(buffer, text.data(), n * sizeof(Unit));
        buffer[n] = 0;
    }
    return static_cast<int32_t>(text.size());
}

// The message, a line feed and the line where the failing statement began,
// as recorded when the error was reported (the cursor may have moved on,
// into another line or out of a function, since).
CString LastErrorOf(OB_HANDLE script) {
    ob::ScriptUse use(script);
    if (!use || script->GetLastError().IsEmpty()) return CString();
    const ob::ErrorRecord& record = script->GetLastErrorRecord();
    return record.message + u'\n' + record.sourceLine;
}

// ---- host control ----

// An error record in the C form, with the UTF-8 strings its pointers refer
// to. Not copyable: the pointers point into this object.
class ErrorInfoStore {
public:
    explicit ErrorInfoStore(const ob::ErrorRecord& r)
        : m_message(r.message.ToUtf8()), m_script(r.script.ToUtf8()), m_sourceLine(r.sourceLine.ToUtf8()),
          m_subject(r.subject.ToUtf8()), m_osReason(r.osReason.ToUtf8()), m_suggestion(r.suggestion.ToUtf8()),
          m_hint(r.hint.ToUtf8()) {
        for (const ob::CallFrame& frame : r.calls) {
            m_names.push_back(frame.function.ToUtf8());
            m_files.push_back(frame.script.ToUtf8());
        }
        for (size_t i = 0; i < r.calls.size(); ++i)
            m_calls.push_back({m_names[i].c_str(), r.calls[i].line, m_files[i].c_str()});
        m_info = {r.id, m_message.c_str(), m_script.c_str(), r.line, r.column, m_sourceLine.c_str(),
                  r.runResult, static_cast<int32_t>(m_calls.size()), m_calls.empty() ? nullptr : m_calls.data(),
                  m_subject.c_str(), r.subjectColumn, m_osReason.c_str(), m_suggestion.c_str(), m_hint.c_str()};
    }
    ErrorInfoStore(const ErrorInfoStore&) = delete;
    ErrorInfoStore& operator=(const ErrorInfoStore&) = delete;

    const OB_ErrorInfo& Info() const { return m_info; }

private:
    std::string m_message, m_script, m_sourceLine, m_subject, m_osReason, m_suggestion, m_hint;
    std::vector<std::string> m_names, m_files;
    std::vector<OB_CallInfo> m_calls;
    OB_ErrorInfo m_info{};
};

// The records handed out by OB_GetLastErrorInfo, kept until the script's next
// request, run or free, and the scripts inside OB_RunScript (they may be
// neither run again nor freed). Shared by the scripts of every thread.
class HostRecords {
public:
    const OB_ErrorInfo& KeepErrorInfo(OB_HANDLE script, const ob::ErrorRecord& record) {
        auto store = std::make_unique<ErrorInfoStore>(record);
        std::lock_guard lock(m_lock);
        auto& slot = m_infos[script];
        slot = std::move(store);
        return slot->Info();
    }
    void ForgetErrorInfo(OB_HANDLE script) {
        std::unique_ptr<ErrorInfoStore> dropped;
        std::lock_guard lock(m_lock);
        auto it = m_infos.find(script);
        if (it == m_infos.end()) return;
        dropped = std::move(it->second);
        m_infos.erase(it);
    }
    // False when the script is running already.
    bool StartRun(OB_HANDLE script) {
        std::lock_guard lock(m_lock);
        if (std::find(m_running.begin(), m_running.end(), script) != m_running.end()) return false;
        m_running.push_back(script);
        return true;
    }
    void EndRun(OB_HANDLE script) {
        std::lock_guard lock(m_lock);
        m_running.erase(std::find(m_running.begin(), m_running.end(), script));
    }
    bool IsRunning(OB_HANDLE script) {
        std::lock_guard lock(m_lock);
        return std::find(m_running.begin(), m_running.end(), script) != m_running.end();
    }

private:
    std::mutex m_lock;
    std::map<OB_HANDLE, std::unique_ptr<ErrorInfoStore>> m_infos;
    std::vector<OB_HANDLE> m_running;
};

HostRecords& Records() {
    static HostRecords records;
    return records;
}

// Runs `run` on a created script that is not running yet; see OB_RunScript.
template <typename Run>
int32_t RunGuarded(OB_HANDLE script, Run run) {
    ob::ScriptUse use(script);
    if (!use || !Records().StartRun(script)) return 0;
    Records().ForgetErrorInfo(script);
    bool ran = false;
    try {
        ran = run(*script);
    } catch (...) {
    }
    Records().EndRun(script);
    return ran ? 1 : 0;
}

int32_t RunScript(OB_HANDLE script, const CString& path) {
    return RunGuarded(script, [&](COrvoBasic& s) { return s.ExecuteProgram(path); });
}

// Script bytes handed over by a host: `length` bytes, or up to a NUL.
std::string ScriptBytes(const char* bytes, int32_t length) {
    return length < 0 ? std::string(bytes) : std::string(bytes, static_cast<size_t>(length));
}

// A C error handler behind the engine's C++ one.
COrvoBasic::ErrorHandler WrapErrorHandler(OB_HANDLE script, OB_ErrorHandler handler, void* userData) {
    if (!handler) return nullptr;
    return [script, handler, userData](const ob::ErrorRecord& record) {
        ErrorInfoStore store(record);
        return handler(script, &store.Info(), userData) == OB_ABORT ? OB_ABORT : OB_CONTINUE;
    };
}

// The same for every script created afterwards: the handle is the script
// that reports.
ob::DefaultErrorHandler WrapDefaultErrorHandler(OB_ErrorHandler handler, void* userData) {
    if (!handler) return nullptr;
    return [handler, userData](COrvoBasic& script, const ob::ErrorRecord& record) {
        ErrorInfoStore store(record);
        return handler(&script, &store.Info(), userData) == OB_ABORT ? OB_ABORT : OB_CONTINUE;
    };
}

// A C path resolver behind the engine's C++ one: the path travels as UTF-8
// through a buffer the callback may overwrite; an unterminated buffer refuses.
COrvoBasic::PathResolver WrapPathResolver(OB_HANDLE script, OB_PathResolver resolver, void* userData) {
    if (!resolver) return nullptr;
    return [script, resolver, userData](CString& path) {
        std::string original = path.ToUtf8();
        std::vector<char> buffer(std::max<size_t>(OB_PATH_BUFFER_SIZE, original.size() + 1), '\0');
        std::memcpy(buffer.data(), original.c_str(), original.size() + 1);
        int32_t size = static_cast<int32_t>(buffer.size());
        if (!resolver(script, original.c_str(), buffer.data(), size, userData)) return false;
        if (!std::memchr(buffer.data(), 0, buffer.size())) return false;
        path = CString::FromUtf8(buffer.data());
        return true;
    };
}

// A C line hook behind the engine's C++ one. The script path's UTF-8 form is
// made once and kept while the path stays the same.
COrvoBasic::LineHook WrapLineHook(OB_HANDLE script, OB_LineHook hook, void* userData) {
    if (!hook) return nullptr;
    return [script, hook, userData, path = CString(), utf8 = std::string()](
               const CString& scriptPath, int line, unsigned level) mutable {
        if (utf8.empty() || path != scriptPath) {
            path = scriptPath;
            utf8 = scriptPath.ToUtf8();
        }
        int32_t answer = hook(script, utf8.c_str(), line, static_cast<int32_t>(level), userData);
        return answer == OB_ABORT ? OB_ABORT : OB_CONTINUE;
    };
}

// Runs `set` on a live script; exceptions (allocation) are swallowed.
template <typename Setter>
void WithLiveScript(OB_HANDLE script, Setter set) {
    ob::ScriptUse use(script);
    if (!use) return;
    try {
        set(*script);
    } catch (...) {
    }
}

}  // namespace

extern "C" {

int32_t OB_Initialize(void) { return OB_INTERFACE_VERSION; }

void OB_Uninitialize(void) {}

OB_HANDLE OB_ExecuteScriptFile(const char16_t* path, int32_t* resident) {
    return ExecuteScript(FromUtf16(path), resident);
}

OB_HANDLE OB_ExecuteScriptFileUtf8(const char* path, int32_t* resident) {
    try {
        return ExecuteScript(FromUtf8(path), resident);
    } catch (...) {
        return nullptr;
    }
}

void OB_FreeScript(OB_HANDLE script) {
    ob::ScriptUse use(script);
    if (!use || Records().IsRunning(script)) return;
    try {
        Records().ForgetErrorInfo(script);
        delete script;
    } catch (...) {
    }
}

int32_t OB_SendEvent(OB_HANDLE script, const char16_t* name, const VARIANT* args, int32_t count) {
    return SendEvent(script, FromUtf16(name), args, count);
}

int32_t OB_SendEventUtf8(OB_HANDLE script, const char* name, const VARIANT* args, int32_t count) {
    try {
        return SendEvent(script, FromUtf8(name), args, count);
    } catch (...) {
        return 1;
    }
}

int32_t OB_GetLastError(OB_HANDLE script, char16_t* buffer, int32_t size) {
    try {
        return CopyOut(LastErrorOf(script), buffer, size);
    } catch (...) {
        return CopyOut(std::u16string(), buffer, size);
    }
}

int32_t OB_GetLastErrorUtf8(OB_HANDLE script, char* buffer, int32_t size) {
    try {
        return CopyOut(LastErrorOf(script).ToUtf8(), buffer, size);
    } catch (...) {
        return CopyOut(std::string(), buffer, size);
    }
}

int32_t OB_IsResident(OB_HANDLE script) {
    ob::ScriptUse use(script);
    return use && script->IsResident() ? 1 : 0;
}

int32_t OB_HasTimer(OB_HANDLE script) {
    ob::ScriptUse use(script);
    return use && ob::HasRunningTimer(script) ? 1 : 0;
}

int32_t OB_AddCustomFunction(const char16_t* name, OB_HostFunction function, int32_t paramCount,
                             void* userData) {
    try {
        return AddCFunction(FromUtf16(name), function, paramCount, userData) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

int32_t OB_AddCustomFunctionUtf8(const char* name, OB_HostFunction function, int32_t paramCount,
                                 void* userData) {
    try {
        return AddCFunction(FromUtf8(name), function, paramCount, userData) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

int32_t OB_RunMessageLoop(int32_t timeoutMs) {
    try {
        return ob::ui::GetDesktop().RunMessageLoop(timeoutMs) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

void OB_QuitMessageLoop(void) { ob::ui::GetDesktop().QuitMessageLoop(); }

OB_HANDLE OB_CreateScript(void) {
    try {
        return new COrvoBasic();
    } catch (...) {
        return nullptr;
    }
}

int32_t OB_RunScript(OB_HANDLE script, const char16_t* path) {
    try {
        return RunScript(script, FromUtf16(path));
    } catch (...) {
        return 0;
    }
}

int32_t OB_RunScriptUtf8(OB_HANDLE script, const char* path) {
    try {
        return RunScript(script, FromUtf8(path));
    } catch (...) {
        return 0;
    }
}

int32_t OB_RunScriptText(OB_HANDLE script, const char* name, const char* bytes, int32_t length) {
    if (!bytes) return 0;
    try {
        std::string text = ScriptBytes(bytes, length);
        CString path = FromUtf8(name);
        return RunGuarded(script, [&](COrvoBasic& s) { return s.ExecuteProgramText(path, text); });
    } catch (...) {
        return 0;
    }
}

int32_t OB_ExecuteInteractive(OB_HANDLE script, const char* name, const char* bytes, int32_t length) {
    if (!bytes) return 0;
    try {
        std::string text = ScriptBytes(bytes, length);
        CString path = FromUtf8(name);
        return RunGuarded(script, [&](COrvoBasic& s) { return s.ExecuteInteractive(path, text); });
    } catch (...) {
        return 0;
    }
}

void OB_SetScriptArgumentsUtf8(OB_HANDLE script, int32_t count, const char* const* args) {
    WithLiveScript(script, [&](COrvoBasic& s) {
        std::vector<CString> arguments;
        for (int32_t i = 0; args && i < count; ++i) arguments.push_back(FromUtf8(args[i]));
        s.SetScriptArguments(std::move(arguments));
    });
}

void OB_ListVariablesUtf8(OB_HANDLE script, OB_VariableVisitor visit, void* userData) {
    if (!visit) return;
    WithLiveScript(script, [&](COrvoBasic& s) {
        s.ForEachMainVariable([&](const CString& name, const CBasicVariable& variable) {
            std::string value = variable.GetNumItems() > 0 ? variable.GetItem(0).GetStringValue().ToUtf8() : std::string();
            visit(name.ToUtf8().c_str(), value.c_str(), variable.GetNumItems(), userData);
        });
    });
}

// No look-up in the registry here: that is not safe from a signal handler.
void OB_RequestStop(OB_HANDLE script) {
    if (script) script->RequestStop();
}

void OB_SetBudgets(OB_HANDLE script, uint64_t maxSteps, uint64_t timeoutMs, int32_t maxDepth, uint64_t maxCells) {
    ob::Budgets budgets;
    budgets.maxSteps = maxSteps;
    budgets.timeoutMs = timeoutMs;
    budgets.maxDepth = std::max(maxDepth, 0);
    budgets.maxCells = maxCells;
    WithLiveScript(script, [&](COrvoBasic& s) {
        budgets.maxMemory = s.GetBudgets().maxMemory;
        s.SetBudgets(budgets);
    });
}

void OB_SetMaxMemory(OB_HANDLE script, uint64_t maxBytes) {
    WithLiveScript(script, [&](COrvoBasic& s) {
        ob::Budgets budgets = s.GetBudgets();
        budgets.maxMemory = maxBytes;
        s.SetBudgets(budgets);
    });
}

int32_t OB_GetRunResult(OB_HANDLE script) {
    ob::ScriptUse use(script);
    return use ? script->GetRunResult() : OB_OK;
}

void OB_SetErrorHandler(OB_HANDLE script, OB_ErrorHandler handler, void* userData) {
    if (!script) {
        try {
            ob::SetDefaultErrorHandler(WrapDefaultErrorHandler(handler, userData));
        } catch (...) {
        }
        return;
    }
    WithLiveScript(script, [&](COrvoBasic& s) { s.SetErrorHandler(WrapErrorHandler(script, handler, userData)); });
}

int32_t OB_GetLastErrorInfo(OB_HANDLE script, OB_ErrorInfo* info) {
    if (!info) return 0;
    ob::ScriptUse use(script);
    if (!use || script->GetLastError().IsEmpty()) return 0;
    try {
        *info = Records().KeepErrorInfo(script, script->GetLastErrorRecord());
        return 1;
    } catch (...) {
        return 0;
    }
}

void OB_SetCapabilities(OB_HANDLE script, uint32_t allowed) {
    WithLiveScript(script, [&](COrvoBasic& s) { s.SetCapabilities(allowed & OB_CAP_ALL); });
}

void OB_SetPathResolver(OB_HANDLE script, OB_PathResolver resolver, void* userData) {
    WithLiveScript(script, [&](COrvoBasic& s) { s.SetPathResolver(WrapPathResolver(script, resolver, userData)); });
}

void OB_SetLineHook(OB_HANDLE script, OB_LineHook hook, void* userData) {
    WithLiveScript(script, [&](COrvoBasic& s) { s.SetLineHook(WrapLineHook(script, hook, userData)); });
}

}  // extern "C"
