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

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#endif
