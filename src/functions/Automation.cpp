// Automation objects in scripts: "createobject", calls written
// object.method(...), property reads object.property and writes
// object.property = value, and the release of the objects that a function's
// locals still hold when the outermost call returns.
#include <orvobasic/CAutomationObject.h>
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "functions/AutomationConvert.h"
#include "platform/NumberFormat.h"

#include <vector>

using namespace ob;

namespace {

using DeferredFillIn = HRESULT (*)(EXCEPINFO*);

// Shows a failed automation call the way the platform reports its
// exceptions: a box with the source, the description and the code.
void ShowAutomationFailure(const CString& source, const CString& description, const CString& code) {
    CString text = source;
    if (!text.empty()) text += u": ";
    text += description.empty() ? CString(u"Automation error") : description;
    text += u" (";
    text += code;
    text += u")";
    ui::GetDesktop().MessageBox(text, ui::MB_OK | ui::MB_ICONSTOP);
}

CString TakeString(BSTR& text) {
    CString copy(text ? text : u"", SysStringLen(text));
    SysFreeString(text);
    text = nullptr;
    return copy;
}

// Keeps an object alive for the length of a call, which may run script
// code that overwrites the variable it came from.
class ObjectHold {
public:
    explicit ObjectHold(IDispatch* object) : m_object(object) {
        if (m_object) m_object->AddRef();
    }
    ~ObjectHold() {
        if (m_object) m_object->Release();
    }
    ObjectHold(const ObjectHold&) = delete;
    ObjectHold& operator=(const ObjectHold&) = delete;

private:
    IDispatch* m_object;
};

// The VARIANT arguments of one call, last argument first, cleared at the end.
class InvokeArgs {
public:
    explicit InvokeArgs(const CArgArray& args) : m_values(args.size()) {
        for (size_t i = 0; i < args.size(); ++i) BasicVarToVariant(args[args.size() - 1 - i].GetCurrent(), m_values[i]);
    }
    explicit InvokeArgs(const CBasicVariable& value) : m_values(1) { BasicVarToVariant(value.GetCurrent(), m_values[0]); }
    ~InvokeArgs() {
        for (VARIANT& value : m_values) VariantClear(&value);
    }
    InvokeArgs(const InvokeArgs&) = delete;
    InvokeArgs& operator=(const InvokeArgs&) = delete;

    VARIANT* Data() { return m_values.data(); }
    uint32_t Count() const { return static_cast<uint32_t>(m_values.size()); }

private:
    std::vector<VARIANT> m_values;
};

// A host object that throws is a failed call, not the end of the process;
// a script abort raised inside it (an error box answered with Cancel in a
// nested script event) still ends the run.
HRESULT SafeInvoke(IDispatch* object, DISPID id, uint16_t kind, DISPPARAMS& params, VARIANT* result,
                   EXCEPINFO& exception) {
    uint32_t argError = 0;
    try {
        return object->Invoke(id, LOCALE_SYSTEM_DEFAULT, kind, &params, result, &exception, &argError);
    } catch (const ScriptAbort&) {
        throw;
    } catch (...) {
        return E_FAIL;
    }
}

// The level encoded in a variable's key ("name__#3"); 0 for a global.
unsigned LevelOfKey(const CString& key) {
    size_t mark = key.rfind(u"__#");
    if (mark == CString::npos) return 0;
    unsigned level = 0;
    for (size_t i = mark + 3; i < key.size(); ++i) {
        if (key[i] < u'0' || key[i] > u'9') return 0;
        level = level * 10 + static_cast<unsigned>(key[i] - u'0');
    }
    return level;
}

// The object held by the variable before the first point of `dotted`, with
// the member after it: error 37 when no such variable, 31 when it holds no
// object. The null object passes: it has no members.
bool FindObject(COrvoBasic& basic, const CString& dotted, IDispatch*& object, CString& member) {
    int dot = dotted.Find(u'.');
    CString name = dotted.Left(dot);
    member = dotted.Mid(dot + 1);
    CBasicVariable* var = basic.FindVariable(name);
    if (!var) {
        basic.ReportError(37);
        return false;
    }
    if (var->GetType() != BVT_OBJECT) {
        basic.ReportError(31);
        return false;
    }
    object = var->GetObjectValue();
    return true;
}

}  // namespace

bool COrvoBasic::ExecCreateObject(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE) {
    if (args.size() != 1) {
        ReportError(24);
        return false;
    }
    CString progid = args[0].GetStringValue();
    HRESULT code = S_OK;
    IDispatch* object = CreateAutomationObject(progid, &code);
    result.SetValue(object);   // the null object when none was made; the call succeeds either way
    if (object) {
        object->Release();     // the variable's reference is the one that remains
    } else if (!m_halted) {
        ShowAutomationFailure(progid, AutomationCodeText(code), HexCode(code));
    }
    return true;
}

bool COrvoBasic::ExecAutomationMethod(const CString& name, CBasicVariable& result, CArgArray& args) {
    IDispatch* object = nullptr;
    CString member;
    if (!FindObject(*this, name, object, member)) return false;
    DISPID id = 0;
    if (!GetDispID(object, member, id)) {
        ReportError(34);
        return false;
    }
    ObjectHold hold(object);
    VARIANT value;
    VariantInit(&value);
    EXCEPINFO exception{};
    HRESULT code;
    {
        InvokeArgs invokeArgs(args);
        DISPPARAMS params{invokeArgs.Data(), nullptr, invokeArgs.Count(), 0};
        code = SafeInvoke(object, id, DISPATCH_METHOD, params, &value, exception);
    }
    bool ok = HandleAutomationError(code, exception);
    if (ok) VariantToBasicVar(value, result);
    VariantClear(&value);
    return ok;
}

bool COrvoBasic::GetObjectProperty(CBasicVariable& result, IDispatch* object, const CString& property) {
    result = CBasicVariable();
    DISPID id = 0;
    if (!GetDispID(object, property, id)) return false;
    ObjectHold hold(object);
    VARIANT value;
    VariantInit(&value);
    EXCEPINFO exception{};
    DISPPARAMS params{nullptr, nullptr, 0, 0};
    bool ok = HandleAutomationError(SafeInvoke(object, id, DISPATCH_PROPERTYGET, params, &value, exception), exception);
    if (ok) VariantToBasicVar(value, result);
    VariantClear(&value);
    return ok;
}

bool COrvoBasic::SetObjectProperty(const CString& target, const CBasicVariable& value) {
    IDispatch* object = nullptr;
    CString property;
    if (!FindObject(*this, target, object, property)) return false;
    DISPID id = 0;
    if (!GetDispID(object, property, id)) {
        ReportError(34);
        return false;
    }
    ObjectHold hold(object);
    EXCEPINFO exception{};
    HRESULT code;
    {
        InvokeArgs invokeArgs(value);
        DISPID named = DISPID_PROPERTYPUT;
        DISPPARAMS params{invokeArgs.Data(), &named, 1, 1};
        code = SafeInvoke(object, id, DISPATCH_PROPERTYPUT, params, nullptr, exception);
    }
    return HandleAutomationError(code, exception);
}

bool COrvoBasic::GetDispID(IDispatch* object, const CString& name, DISPID& dispid) {
    if (!object) return false;
    const OLECHAR* names[] = {name.c_str()};
    try {
        return object->GetIDsOfNames(names, 1, LOCALE_SYSTEM_DEFAULT, &dispid) == S_OK;
    } catch (const ScriptAbort&) {
        throw;
    } catch (...) {
        return false;
    }
}

// The call fails without a script error number: the box shows what the
// object said (for an exception) or the code's meaning.
bool COrvoBasic::HandleAutomationError(HRESULT code, EXCEPINFO& exception) {
    if (code == S_OK) return true;
    if (code == DISP_E_EXCEPTION) {
        if (exception.pfnDeferredFillIn) reinterpret_cast<DeferredFillIn>(exception.pfnDeferredFillIn)(&exception);
        CString source = TakeString(exception.bstrSource);
        CString description = TakeString(exception.bstrDescription);
        TakeString(exception.bstrHelpFile);
        CString shown = exception.scode ? HexCode(exception.scode)
                        : exception.wCode ? u"code " + platform::FormatInt(exception.wCode)
                                          : HexCode(code);
        if (!m_halted) ShowAutomationFailure(source, description, shown);
    } else if (!m_halted) {
        ShowAutomationFailure(CString(), AutomationCodeText(code), HexCode(code));
    }
    return false;
}

bool COrvoBasic::ObjectVariablesFree(unsigned level) {
    for (auto& entry : m_variables)
        if (entry.second && LevelOfKey(entry.first) >= level) entry.second->ReleaseObjects();
    return true;
}
