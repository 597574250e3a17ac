// Automation objects for C++ hosts: a base class that turns a table of named
// methods and properties into an IDispatch, and the process-wide registry
// that "createobject" consults.
//
//   class Counter : public ob::CAutomationObject {
//   public:
//       Counter() : CAutomationObject(u"Host.Counter") {
//           AddProperty(u"Value", [this] { return CVarBase(m_value); },
//                                 [this](const CVarBase& v) { m_value = v.GetLongValue(); });
//           AddMethod(u"Add", 1, [this](const Args& a) { m_value += a[0].GetLongValue(); return CVarBase(m_value); });
//       }
//   private:
//       long m_value = 0;
//   };
//   ob::RegisterAutomationClass(u"Host.Counter", [] { return new Counter; });
//
// A member that throws ob::AutomationError (or any std::exception) fails the
// script's call; the script's user sees the description. Nothing a member
// throws leaves Invoke.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/CVarBase.h>
#include <orvobasic/automation.h>
#include <orvobasic/export.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace ob {

// Thrown by a member to fail the call with a description.
class OB_API AutomationError : public std::runtime_error {
public:
    explicit AutomationError(const std::string& description, HRESULT code = E_FAIL)
        : std::runtime_error(description), m_code(code) {}
    // The code reported with the description (the exception's scode).
    HRESULT Code() const { return m_code; }

private:
    HRESULT m_code;
};

class OB_API CAutomationObject : public IDispatch {
public:
    using Args = std::vector<CVarBase>;                    // in the order the script wrote them
    using Method = std::function<CVarBase(const Args&)>;   // an unset result gives the script no value
    using Getter = std::function<CVarBase()>;
    using Setter = std::function<void(const CVarBase&)>;

    CAutomationObject(const CAutomationObject&) = delete;
    CAutomationObject& operator=(const CAutomationObject&) = delete;

    uint32_t AddRef() override;
    // Deletes the object when the last reference goes.
    uint32_t Release() override;
    HRESULT GetIDsOfNames(const OLECHAR** names, uint32_t count, LCID locale, DISPID* ids) override;
    HRESULT Invoke(DISPID member, LCID locale, uint16_t flags, DISPPARAMS* params, VARIANT* result,
                   EXCEPINFO* exception, uint32_t* argError) override;

    // The current number of references (for hosts and tests that watch them).
    uint32_t RefCount() const { return m_refs.load(std::memory_order_acquire); }

protected:
    // Starts with one reference, owned by whoever made the object. `source`
    // names the object in the descriptions of its failures.
    explicit CAutomationObject(CString source = CString());
    virtual ~CAutomationObject();

    // Member names are matched without regard to ASCII case. `arity` -1
    // accepts any number of arguments; otherwise a call with another number
    // fails with DISP_E_BADPARAMCOUNT.
    void AddMethod(const CString& name, int arity, Method method);
    // Without a setter the property is read-only: a write fails.
    void AddProperty(const CString& name, Getter get, Setter set = Setter());

private:
    struct Member {
        CString name;   // lower case
        int arity = -1;
        Method method;
        Getter get;
        Setter set;
    };
    HRESULT Dispatch(const Member& member, uint16_t flags, const Args& args, VARIANT* result);

    std::vector<Member> m_members;
    CString m_source;
    std::atomic<uint32_t> m_refs{1};
};

// Makes a new object with one reference that the caller takes over, or
// returns null when it cannot.
using AutomationFactory = std::function<IDispatch*()>;

// Registers (or replaces) the factory of a programmatic identifier; an empty
// factory removes it. False for an empty identifier. Thread-safe.
OB_API bool RegisterAutomationClass(const CString& progid, AutomationFactory factory);

// What "createobject" does: the factory's object (one reference, the
// caller's), or null with `*code` set to CO_E_CLASSSTRING for an unknown
// identifier or E_FAIL when the factory made nothing. Thread-safe; the
// factory runs outside the registry's lock.
OB_API IDispatch* CreateAutomationObject(const CString& progid, HRESULT* code = nullptr);

}  // namespace ob
