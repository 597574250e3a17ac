// BSTR and VARIANT helpers for hosts and the automation layer.
#include <orvobasic/automation.h>

#include <cstdlib>
#include <cstring>

extern "C" {

// A BSTR is preceded by its length in bytes (32 bits) and ends with a zero.
BSTR SysAllocStringLen(const OLECHAR* text, uint32_t length) {
    if (length > 0x3FFFFFF0u) return nullptr;
    auto* block = static_cast<char*>(std::malloc(sizeof(uint32_t) + (length + 1) * sizeof(OLECHAR)));
    if (!block) return nullptr;
    uint32_t bytes = length * static_cast<uint32_t>(sizeof(OLECHAR));
    std::memcpy(block, &bytes, sizeof bytes);
    auto* str = reinterpret_cast<BSTR>(block + sizeof(uint32_t));
    if (text) std::memcpy(str, text, length * sizeof(OLECHAR));
    else std::memset(str, 0, length * sizeof(OLECHAR));
    str[length] = 0;
    return str;
}

BSTR SysAllocString(const OLECHAR* text) {
    if (!text) return nullptr;
    uint32_t n = 0;
    while (text[n]) ++n;
    return SysAllocStringLen(text, n);
}

void SysFreeString(BSTR text) {
    if (text) std::free(reinterpret_cast<char*>(text) - sizeof(uint32_t));
}

uint32_t SysStringLen(BSTR text) {
    if (!text) return 0;
    uint32_t bytes;
    std::memcpy(&bytes, reinterpret_cast<char*>(text) - sizeof(uint32_t), sizeof bytes);
    return bytes / sizeof(OLECHAR);
}

void VariantInit(VARIANT* value) {
    if (!value) return;
    std::memset(value, 0, sizeof *value);
    value->vt = VT_EMPTY;
}

HRESULT VariantClear(VARIANT* value) {
    if (!value) return E_INVALIDARG;
    if (!(value->vt & VT_BYREF)) {
        if (value->vt == VT_BSTR) SysFreeString(value->bstrVal);
        else if (value->vt == VT_DISPATCH && value->pdispVal) value->pdispVal->Release();
    }
    VariantInit(value);
    return S_OK;
}

HRESULT VariantCopy(VARIANT* destination, const VARIANT* source) {
    if (!destination || !source) return E_INVALIDARG;
    if (destination == source) return S_OK;
    VARIANT copy = *source;
    if (source->vt == VT_BSTR && source->bstrVal) {
        copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
        if (!copy.bstrVal) return E_OUTOFMEMORY;
    } else if (source->vt == VT_DISPATCH && source->pdispVal) {
        source->pdispVal->AddRef();
    }
    VariantClear(destination);
    *destination = copy;
    return S_OK;
}

}  // extern "C"
