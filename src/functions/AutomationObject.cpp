// CAutomationObject: an IDispatch made from a table of named methods and
// properties. Dispatch ids are the table positions plus one.
#include <orvobasic/CAutomationObject.h>

#include "functions/AutomationConvert.h"

#include <exception>

namespace ob {

HRESULT FillException(EXCEPINFO* exception, const CString& source, const CString& description, HRESULT scode) {
    if (!exception) return DISP_E_EXCEPTION;
    *exception = EXCEPINFO{};
    exception->bstrSource = SysAllocStringLen(source.data(), static_cast<uint32_t>(source.size()));
    exception->bstrDescription = SysAllocStringLen(description.data(), static_cast<uint32_t>(description.size()));
    exception->scode = scode;
    return DISP_E_EXCEPTION;
}

CAutomationObject::CAutomationObject(CString source) : m_source(std::move(source)) {}

CAutomationObject::~CAutomationObject() = default;

uint32_t CAutomationObject::AddRef() { return m_refs.fetch_add(1, std::memory_order_acq_rel) + 1; }

uint32_t CAutomationObject::Release() {
    uint32_t left = m_refs.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
}

void CAutomationObject::AddMethod(const CString& name, int arity, Method method) {
    Member member;
    member.name = name;
    member.name.MakeLower();
    member.arity = arity;
    member.method = std::move(method);
    m_members.push_back(std::move(member));
}

void CAutomationObject::AddProperty(const CString& name, Getter get, Setter set) {
    Member member;
    member.name = name;
    member.name.MakeLower();
    member.get = std::move(get);
    member.set = std::move(set);
    m_members.push_back(std::move(member));
}

HRESULT CAutomationObject::GetIDsOfNames(const OLECHAR** names, uint32_t count, LCID, DISPID* ids) {
    if ((!names || !ids) && count) return E_INVALIDARG;
    HRESULT result = S_OK;
    for (uint32_t i = 0; i < count; ++i) {
        ids[i] = DISPID_UNKNOWN;
        if (!names[i]) {
            result = DISP_E_UNKNOWNNAME;
            continue;
        }
        CString wanted = names[i];
        wanted.MakeLower();
        for (size_t m = 0; m < m_members.size(); ++m)
            if (m_members[m].name == wanted) ids[i] = static_cast<DISPID>(m + 1);
        if (ids[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
    }
    return result;
}

HRESULT CAutomationObject::Invoke(DISPID id, LCID, uint16_t flags, DISPPARAMS* params, VARIANT* result,
                                  EXCEPINFO* exception, uint32_t*) {
    if (id < 1 || static_cast<size_t>(id) > m_members.size()) return DISP_E_MEMBERNOTFOUND;
    uint32_t count = params ? params->cArgs : 0;
    if (count && !params->rgvarg) return E_INVALIDARG;
    if (params && params->cNamedArgs && !(flags & DISPATCH_PROPERTYPUT)) return DISP_E_NONAMEDARGS;
    VARIANT unused;
    VariantInit(&unused);
    VARIANT& out = result ? *result : unused;
    try {
        Args args;
        args.reserve(count);
        for (uint32_t i = count; i-- > 0;) args.push_back(VariantToValue(params->rgvarg[i]));   // last one first
        HRESULT hr = Dispatch(m_members[static_cast<size_t>(id - 1)], flags, args, &out);
        VariantClear(&unused);
        return hr;
    } catch (const AutomationError& error) {
        return FillException(exception, m_source, CString::FromUtf8(error.what()), error.Code());
    } catch (const std::exception& error) {
        return FillException(exception, m_source, CString::FromUtf8(error.what()), E_FAIL);
    } catch (...) {
        return FillException(exception, m_source, u"Unknown error", E_FAIL);
    }
}

// A property answers reads (also written as a call without arguments) and,
// with a setter, writes; a method answers calls.
HRESULT CAutomationObject::Dispatch(const Member& member, uint16_t flags, const Args& args, VARIANT* result) {
    VariantInit(result);
    if (flags & DISPATCH_PROPERTYPUT) {
        if (!member.set) return DISP_E_MEMBERNOTFOUND;
        if (args.size() != 1) return DISP_E_BADPARAMCOUNT;
        member.set(args[0]);
        return S_OK;
    }
    if ((flags & DISPATCH_METHOD) && member.method) {
        if (member.arity >= 0 && args.size() != static_cast<size_t>(member.arity)) return DISP_E_BADPARAMCOUNT;
        ValueToVariant(member.method(args), *result);
        return S_OK;
    }
    if ((flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) && member.get) {
        if (!args.empty()) return DISP_E_BADPARAMCOUNT;
        ValueToVariant(member.get(), *result);
        return S_OK;
    }
    return DISP_E_MEMBERNOTFOUND;
}

}  // namespace ob
