// The objects the automation golden scripts drive. Linked into a copy of
// the command-line runner (ob_test_host): the classes are registered before
// main runs, and then scripts run exactly as under orvobasic.
//
//   Test.Calc      a C++ object on the helper base class: properties,
//                  methods, objects returned from methods, exceptions;
//   Test.Variants  a C-style object of raw VARIANT results (dates, currency,
//                  64-bit and 8-bit integers, truth values, null, errors).
#include <orvobasic/CAutomationObject.h>
#include <orvobasic/automation.h>

#include <atomic>
#include <cstring>

namespace {

std::atomic<long> g_liveCalcs{0};

const char16_t* VarTypeName(VARTYPE vt) {
    switch (vt) {
    case VT_EMPTY: return u"EMPTY";
    case VT_I4: return u"I4";
    case VT_R8: return u"R8";
    case VT_BSTR: return u"BSTR";
    case VT_DISPATCH: return u"DISPATCH";
    case VT_BOOL: return u"BOOL";
    default: return u"OTHER";
    }
}

// Turns a fresh object (one reference, ours) into a value holding it.
CVarBase Adopt(IDispatch* fresh) {
    CVarBase value(fresh);
    fresh->Release();
    return value;
}

class Calc : public ob::CAutomationObject {
public:
    Calc() : CAutomationObject(u"Test.Calc") {
        ++g_liveCalcs;
        AddProperty(u"Value", [this] { return m_value; }, [this](const CVarBase& v) { m_value.SetValue(v); });
        AddProperty(u"Name", [this] { return CVarBase(m_name); },
                    [this](const CVarBase& v) { m_name = v.GetStringValue(); });
        AddProperty(u"Peer", [this] { return m_peer; }, [this](const CVarBase& v) { m_peer.SetValue(v); });
        AddProperty(u"Version", [] { return CVarBase(u"1.0"); });
        AddProperty(u"Live", [] { return CVarBase(static_cast<long>(g_liveCalcs.load())); });
        AddMethod(u"Add", 2, [](const Args& a) { return CVarBase(a[0].GetLongValue() + a[1].GetLongValue()); });
        AddMethod(u"Echo", 1, [](const Args& a) { return a[0]; });
        AddMethod(u"TypeOf", 1, [](const Args& a) { return CVarBase(VarTypeName(a[0].GetVarType())); });
        AddMethod(u"Join", -1, [](const Args& a) {
            CString text;
            for (const CVarBase& item : a) text += (text.empty() ? u"" : u",") + item.GetStringValue();
            return CVarBase(text);
        });
        AddMethod(u"Half", 1, [](const Args& a) { return CVarBase(a[0].GetLongValue() / 2.0); });
        AddMethod(u"IsSame", 1, [this](const Args& a) { return CVarBase(a[0].GetObjectValue() == this); });
        AddMethod(u"Make", 0, [](const Args&) { return Adopt(new Calc); });
        AddMethod(u"Nothing", 0, [](const Args&) { return CVarBase(); });
        AddMethod(u"Fail", 1, [](const Args& a) -> CVarBase {
            throw ob::AutomationError(a[0].GetStringValue().ToUtf8());
        });
    }
    ~Calc() override { --g_liveCalcs; }

private:
    CVarBase m_value{0L};
    CString m_name;
    CVarBase m_peer;
};

// ---- Test.Variants, written against the C interface --------------------

HRESULT ReadVariant(void*, uint16_t, const VARIANT*, uint32_t, VARIANT* result, EXCEPINFO*, VARTYPE vt) {
    result->vt = vt;
    switch (vt) {
    case VT_DATE: result->date = 45306.4375; break;   // 2024-01-15 10:30
    case VT_CY: result->llVal = 125000; break;         // 12.5
    case VT_UI1: result->bVal = 200; break;
    case VT_I8: result->llVal = 1099511627776LL; break;
    case VT_BOOL: result->boolVal = VARIANT_TRUE; break;
    case VT_R4: result->fltVal = 2.5f; break;
    case VT_I2: result->iVal = -7; break;
    case VT_ERROR: result->lVal = static_cast<int32_t>(0x80020004L); break;
    default: break;
    }
    return S_OK;
}

template <VARTYPE vt>
HRESULT Read(void* state, uint16_t kind, const VARIANT* args, uint32_t count, VARIANT* result, EXCEPINFO* e) {
    return ReadVariant(state, kind, args, count, result, e, vt);
}

HRESULT Fail(void*, uint16_t, const VARIANT*, uint32_t, VARIANT*, EXCEPINFO* exception) {
    return OB_SetAutomationException(exception, "Test.Variants", "the device is not ready");
}

HRESULT Mismatch(void*, uint16_t, const VARIANT*, uint32_t, VARIANT*, EXCEPINFO*) { return DISP_E_TYPEMISMATCH; }

// Count(a, b, ...): how many arguments arrived, and the first one back.
HRESULT Count(void*, uint16_t, const VARIANT*, uint32_t count, VARIANT* result, EXCEPINFO*) {
    result->vt = VT_I4;
    result->lVal = static_cast<int32_t>(count);
    return S_OK;
}

HRESULT First(void*, uint16_t, const VARIANT* args, uint32_t count, VARIANT* result, EXCEPINFO*) {
    return count ? VariantCopy(result, &args[0]) : DISP_E_BADPARAMCOUNT;
}

IDispatch* MakeVariants(const char16_t*) {
    static const OB_AutomationMember kMembers[] = {
        {"Date", DISPATCH_PROPERTYGET, Read<VT_DATE>},   {"Currency", DISPATCH_PROPERTYGET, Read<VT_CY>},
        {"Byte", DISPATCH_PROPERTYGET, Read<VT_UI1>},    {"Big", DISPATCH_PROPERTYGET, Read<VT_I8>},
        {"Flag", DISPATCH_PROPERTYGET, Read<VT_BOOL>},   {"Single", DISPATCH_PROPERTYGET, Read<VT_R4>},
        {"Short", DISPATCH_PROPERTYGET, Read<VT_I2>},    {"Null", DISPATCH_PROPERTYGET, Read<VT_NULL>},
        {"Error", DISPATCH_PROPERTYGET, Read<VT_ERROR>}, {"Fail", DISPATCH_METHOD, Fail},
        {"Mismatch", DISPATCH_METHOD, Mismatch},         {"Count", DISPATCH_METHOD, Count},
        {"First", DISPATCH_METHOD, First},
    };
    return OB_CreateAutomationObject(kMembers, sizeof kMembers / sizeof kMembers[0], nullptr, nullptr);
}

bool RegisterTestClasses() {
    ob::RegisterAutomationClass(u"Test.Calc", [] { return static_cast<IDispatch*>(new Calc); });
    OB_RegisterAutomationClassUtf8("Test.Variants", MakeVariants);
    return true;
}

const bool kRegistered = RegisterTestClasses();

}  // namespace
