#include "functions/NativeCall.h"

namespace ob {

namespace {

struct KindType {
    uint32_t kind;
    ffi_type* type;
};

// The machine type of each kind of value.
const KindType kKindTypes[] = {
    {NF_NONE, &ffi_type_void},     {NF_CHAR, &ffi_type_sint8},    {NF_WORD, &ffi_type_uint16},
    {NF_INTEGER, &ffi_type_sint32}, {NF_FLOAT, &ffi_type_float},   {NF_DOUBLE, &ffi_type_double},
    {NF_UNICODE, &ffi_type_pointer}, {NF_STRING, &ffi_type_pointer},
};

}  // namespace

ffi_type* CNativeCall::TypeOf(uint32_t flags) {
    if (flags & NF_BYREF) return &ffi_type_pointer;
    for (const auto& entry : kKindTypes)
        if (entry.kind == flags) return entry.type;
    return nullptr;
}

bool CNativeCall::Prepare(const std::vector<uint32_t>& paramFlags, uint32_t returnFlags) {
    m_prepared = false;
    if (paramFlags.size() > kMaxNativeArguments) return false;
    m_types.clear();
    for (uint32_t flags : paramFlags) {
        ffi_type* type = TypeOf(flags);
        if (!type || type == &ffi_type_void) return false;
        m_types.push_back(type);
    }
    ffi_type* result = TypeOf(returnFlags & ~uint32_t{NF_BYREF});
    if (!result) return false;
    m_prepared = ffi_prep_cif(&m_cif, FFI_DEFAULT_ABI, static_cast<unsigned>(m_types.size()), result,
                              m_types.empty() ? nullptr : m_types.data()) == FFI_OK;
    return m_prepared;
}

void CNativeCall::Invoke(void** values, NativeCell& result) {
    result = NativeCell{};
    ffi_call(&m_cif, reinterpret_cast<void (*)()>(m_entry), &result, values);
}

}  // namespace ob
