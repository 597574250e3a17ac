// Automation value types: a binary-compatible subset of OLE Automation's
// VARIANT, BSTR and IDispatch, so that hosts can hand values and objects to
// scripts (event arguments, automation objects) with the usual type codes.
//
// Ownership follows the OLE rules: a VARIANT owns its BSTR and holds one
// reference on its IDispatch; VariantClear releases both; VariantCopy makes
// an independent copy (new BSTR, extra reference).
#pragma once

#include <orvobasic/export.h>

#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h> /* char16_t for C hosts */
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint16_t VARTYPE;
typedef int32_t HRESULT;
typedef int16_t VARIANT_BOOL;
typedef char16_t OLECHAR;
typedef OLECHAR* BSTR;
typedef int32_t DISPID;
typedef uint32_t LCID;

enum {
    VT_EMPTY = 0, VT_NULL = 1, VT_I2 = 2, VT_I4 = 3, VT_R4 = 4, VT_R8 = 5,
    VT_CY = 6, VT_DATE = 7, VT_BSTR = 8, VT_DISPATCH = 9, VT_ERROR = 10,
    VT_BOOL = 11, VT_VARIANT = 12, VT_UNKNOWN = 13, VT_DECIMAL = 14,
    VT_I1 = 16, VT_UI1 = 17, VT_UI2 = 18, VT_UI4 = 19, VT_I8 = 20, VT_UI8 = 21,
    VT_INT = 22, VT_UINT = 23,
    VT_ARRAY = 0x2000, VT_BYREF = 0x4000
};

#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

#define S_OK ((HRESULT)0)
#define E_FAIL ((HRESULT)0x80004005L)
#define E_INVALIDARG ((HRESULT)0x80070057L)
#define E_OUTOFMEMORY ((HRESULT)0x8007000EL)
#define DISP_E_MEMBERNOTFOUND ((HRESULT)0x80020003L)
#define DISP_E_UNKNOWNNAME ((HRESULT)0x80020006L)
#define DISP_E_TYPEMISMATCH ((HRESULT)0x80020005L)
#define DISP_E_BADPARAMCOUNT ((HRESULT)0x8002000EL)
#define DISP_E_EXCEPTION ((HRESULT)0x80020009L)
#define DISP_E_NONAMEDARGS ((HRESULT)0x80020007L)
#define CO_E_CLASSSTRING ((HRESULT)0x800401F3L)

/* Invoke kinds, the named argument of a property write, the locale scripts use. */
#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPID_UNKNOWN ((DISPID)-1)
#define DISPID_PROPERTYPUT ((DISPID)-3)
#define LOCALE_SYSTEM_DEFAULT 2048

#ifdef __cplusplus
struct IDispatch;
#else
typedef struct IDispatch IDispatch;
#endif

typedef struct tagVARIANT {
    VARTYPE vt;
    uint16_t wReserved1, wReserved2, wReserved3;
    union {
        int64_t llVal;
        int32_t lVal;
        uint8_t bVal;
        int16_t iVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        double date;
        BSTR bstrVal;
        IDispatch* pdispVal;
        int8_t cVal;
        uint16_t uiVal;
        uint32_t ulVal;
        uint64_t ullVal;
        int32_t intVal;
        uint32_t uintVal;
        void* byref;
    };
} VARIANT;

typedef struct tagDISPPARAMS {
    VARIANT* rgvarg;          // arguments in reverse order, as OLE passes them
    DISPID* rgdispidNamedArgs;
    uint32_t cArgs;
    uint32_t cNamedArgs;
} DISPPARAMS;

typedef struct tagEXCEPINFO {
    uint16_t wCode;
    uint16_t wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    uint32_t dwHelpContext;
    void* pvReserved;
    void* pfnDeferredFillIn;
    HRESULT scode;
} EXCEPINFO;

// The helpers below keep the generic names of the automation API so that
// code written against it works unchanged. They are part of this library's
// API: exported with the symbol version ORVOBASIC_1.0 like every OB_*
// function, and the library's own calls always reach its own definitions.
//
// BSTR: length-prefixed, zero-terminated UTF-16. NULL counts as "".
OB_API BSTR SysAllocString(const OLECHAR* text);
OB_API BSTR SysAllocStringLen(const OLECHAR* text, uint32_t length);
OB_API void SysFreeString(BSTR text);
OB_API uint32_t SysStringLen(BSTR text);

OB_API void VariantInit(VARIANT* value);
OB_API HRESULT VariantClear(VARIANT* value);
OB_API HRESULT VariantCopy(VARIANT* destination, const VARIANT* source);
/* Converts `source` to type `vt` into `destination` (which may be `source`
 * itself). Targets VT_BSTR, VT_I4, VT_R8 and VT_BOOL; sources are the
 * scalar types, VT_CY and VT_DATE (text "YYYY-MM-DD", "HH:MM:SS" or both),
 * and VT_BSTR. A truth value becomes "-1" or "0". Anything else (objects,
 * VT_ERROR, arrays, references) gives DISP_E_TYPEMISMATCH and leaves
 * `destination` unchanged. `flags` is accepted for compatibility and unused. */
OB_API HRESULT VariantChangeType(VARIANT* destination, const VARIANT* source, uint16_t flags, VARTYPE vt);

/* ---- automation classes --------------------------------------------------
 * "createobject"(progid) asks the process-wide registry for a factory under
 * that identifier (matched without regard to case). The factory gets the
 * identifier as it was registered and returns a new object with one
 * reference, which the caller takes over, or NULL when it cannot make one.
 * The registry is locked: classes may be registered from any thread. */
typedef IDispatch* (*OB_AutomationFactory)(const char16_t* progid);

/* Registers (or replaces) the factory of `progid`; a NULL factory removes
 * it. Returns 0 for an empty identifier, else 1. */
OB_API int32_t OB_RegisterAutomationClass(const char16_t* progid, OB_AutomationFactory factory);
OB_API int32_t OB_RegisterAutomationClassUtf8(const char* progid, OB_AutomationFactory factory);

/* ---- automation objects written in C --------------------------------------
 * A C host describes an object by a table of members; the library makes the
 * IDispatch around it. A member's function gets the host's state, the kind
 * of access (DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT),
 * the arguments in the order the script wrote them (a property write: the
 * value alone), and `result` as VT_EMPTY; what it stores there belongs to
 * the caller. It returns S_OK, or an error code; to show the script's user
 * a description, return OB_SetAutomationException(exception, ...). */
typedef HRESULT (*OB_MemberFunction)(void* state, uint16_t kind, const VARIANT* args, uint32_t count,
                                     VARIANT* result, EXCEPINFO* exception);

typedef struct OB_AutomationMember {
    const char* name;          /* UTF-8, matched without regard to ASCII case */
    uint16_t kinds;            /* the DISPATCH_* kinds it answers, or-ed */
    OB_MemberFunction function;
} OB_AutomationMember;

/* Makes an object with one reference from `count` members (copied; the
 * table may be temporary). `destroy`, when not NULL, is called with `state`
 * when the last reference goes. NULL when `members` is NULL with a count. */
OB_API IDispatch* OB_CreateAutomationObject(const OB_AutomationMember* members, uint32_t count, void* state,
                                            void (*destroy)(void* state));

/* Reference counting for C code, which cannot call the interface itself.
 * Both return the new count; NULL gives 0. */
OB_API uint32_t OB_AddRefObject(IDispatch* object);
OB_API uint32_t OB_ReleaseObject(IDispatch* object);

/* Fills `exception` (may be NULL) with a source and a description (UTF-8,
 * either may be NULL) and returns DISP_E_EXCEPTION, for a member function
 * to return. */
OB_API HRESULT OB_SetAutomationException(EXCEPINFO* exception, const char* source, const char* description);

#ifdef __cplusplus
}

// An automation object. Hosts implement it; scripts hold counted references.
struct IDispatch {
    virtual uint32_t AddRef() = 0;
    virtual uint32_t Release() = 0;
    virtual HRESULT GetIDsOfNames(const OLECHAR** names, uint32_t count, LCID locale, DISPID* ids) = 0;
    virtual HRESULT Invoke(DISPID member, LCID locale, uint16_t flags, DISPPARAMS* params,
                           VARIANT* result, EXCEPINFO* exception, uint32_t* argError) = 0;
protected:
    ~IDispatch() = default;
};
#endif
