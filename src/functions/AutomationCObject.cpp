// Automation objects for C hosts: an IDispatch around a table of member
// functions and the host's state, and reference counting callable from C.
#include <orvobasic/automation.h>

#include "functions/AutomationConvert.h"

#include <atomic>
#include <vector>

namespace {

class CTableObject final : public IDispatch {
public:
    CTableObject(const OB_AutomationMember* members, uint32_t count, void* state, void (*destroy)(void*))
        : m_state(state), m_destroy(destroy) {
        m_members.reserve(count);
        for (uint32_t i = 0; i < count; ++i) {
            Member member{CString::FromUtf8(members[i].name ? members[i].name : ""), members[i].kinds,
                          members[i].function};
            member.name.MakeLower();
            m_members.push_back(std::move(member));
        }
    }
    CTableObject(const CTableObject&) = delete;
    CTableObject& operator=(const CTableObject&) = delete;

    uint32_t AddRef() override { return m_refs.fetch_add(1, std::memory_order_acq_rel) + 1; }
    uint32_t Release() override {
        uint32_t left = m_refs.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) delete this;
        return left;
    }

    HRESULT GetIDsOfNames(const OLECHAR** names, uint32_t count, LCID, DISPID* ids) override {
        if ((!names || !ids) && count) return E_INVALIDARG;
        HRESULT result = S_OK;
        for (uint32_t i = 0; i < count; ++i) {
            ids[i] = DISPID_UNKNOWN;
            CString wanted = names[i] ? CString(names[i]) : CString();
            wanted.MakeLower();
            for (size_t m = 0; m < m_members.size(); ++m)
                if (!wanted.empty() && m_members[m].name == wanted) ids[i] = static_cast<DISPID>(m + 1);
            if (ids[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
        }
        return result;
    }

    HRESULT Invoke(DISPID id, LCID, uint16_t flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                   uint32_t*) override {
        if (id < 1 || static_cast<size_t>(id) > m_members.size()) return DISP_E_MEMBERNOTFOUND;
        const Member& member = m_members[static_cast<size_t>(id - 1)];
        uint16_t kind = KindFor(member, flags);
        if (!kind || !member.function) return DISP_E_MEMBERNOTFOUND;
        uint32_t count = params ? params->cArgs : 0;
        if (count && !params->rgvarg) return E_INVALIDARG;
        if (params && params->cNamedArgs && kind != DISPATCH_PROPERTYPUT) return DISP_E_NONAMEDARGS;
        try {
            std::vector<VARIANT> args(params ? params->rgvarg : nullptr, params ? params->rgvarg + count : nullptr);
            std::vector<VARIANT> ordered(args.rbegin(), args.rend());   // borrowed copies, in script order
            VARIANT unused;
            VariantInit(&unused);
            VARIANT* out = result ? result : &unused;
            VariantInit(out);
            HRESULT hr = member.function(m_state, kind, ordered.data(), count, out, exception);
            VariantClear(&unused);
            return hr;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

private:
    struct Member {
        CString name;   // lower case
        uint16_t kinds;
        OB_MemberFunction function;
    };

    // A write is a write; a call prefers the method, a read (or a call that
    // the member answers only as a property) is a read.
    static uint16_t KindFor(const Member& member, uint16_t flags) {
        if (flags & DISPATCH_PROPERTYPUT) return (member.kinds & DISPATCH_PROPERTYPUT) ? DISPATCH_PROPERTYPUT : 0;
        if ((flags & DISPATCH_METHOD) && (member.kinds & DISPATCH_METHOD)) return DISPATCH_METHOD;
        if ((flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) && (member.kinds & DISPATCH_PROPERTYGET))
            return DISPATCH_PROPERTYGET;
        return 0;
    }

    ~CTableObject() {
        if (m_destroy) m_destroy(m_state);
    }

    std::vector<Member> m_members;
    void* m_state;
    void (*m_destroy)(void*);
    std::atomic<uint32_t> m_refs{1};
};

}  // namespace

extern "C" {

IDispatch* OB_CreateAutomationObject(const OB_AutomationMember* members, uint32_t count, void* state,
                                     void (*destroy)(void* state)) {
    if (!members && count) return nullptr;
    try {
        return new CTableObject(members, count, state, destroy);
    } catch (...) {
        return nullptr;
    }
}

uint32_t OB_AddRefObject(IDispatch* object) { return object ? object->AddRef() : 0; }

uint32_t OB_ReleaseObject(IDispatch* object) { return object ? object->Release() : 0; }

HRESULT OB_SetAutomationException(EXCEPINFO* exception, const char* source, const char* description) {
    try {
        return ob::FillException(exception, CString::FromUtf8(source ? source : ""),
                                 CString::FromUtf8(description ? description : ""), E_FAIL);
    } catch (...) {
        return DISP_E_EXCEPTION;
    }
}

}  // extern "C"
