// CNativeCall: the machine side of one declared library function.
//
// A declaration's parameter and return flags say how script values travel:
//   1 char (8-bit), 2 unsigned 16-bit, 4 signed 32-bit, 8 32-bit float,
//   16 double, 32 UTF-16 text, 64 8-bit text; 0x1000 by reference.
// Text always goes by reference. One libffi call interface is prepared per
// declaration from these flags and reused for every call, so floats, doubles
// and pointers travel where the platform's calling convention puts them.
#pragma once

#include <ffi.h>

#include <cstdint>
#include <vector>

namespace ob {

// Parameter and return type flags of declared functions.
enum NativeFlags : uint32_t {
    NF_NONE = 0,
    NF_CHAR = 1,
    NF_WORD = 2,
    NF_INTEGER = 4,
    NF_FLOAT = 8,
    NF_DOUBLE = 16,
    NF_UNICODE = 32,
    NF_STRING = 64,
    NF_BYREF = 0x1000,
    NF_KIND_MASK = 0x7F,
};

// The most arguments a declared function can be called with.
constexpr size_t kMaxNativeArguments = 32;
// Characters a "string" or "unicode" buffer holds at least.
constexpr size_t kNativeTextBuffer = 256;

// One argument or result slot: wide enough for any kind, so a callee that
// writes a whole word through a narrower pointer still stays inside it.
union NativeCell {
    int8_t c;
    uint16_t w;
    int32_t i;
    float f;
    double d;
    void* p;
    uint64_t raw[2];
};

class CNativeCall {
public:
    // Prepares the call interface; false (and unusable) when a flag names no
    // kind or there are more than kMaxNativeArguments parameters.
    bool Prepare(const std::vector<uint32_t>& paramFlags, uint32_t returnFlags);
    bool IsPrepared() const { return m_prepared; }

    // The entry point, resolved once per declaration; null until then.
    void* Entry() const { return m_entry; }
    void SetEntry(void* entry) { m_entry = entry; }

    // Calls the entry point; values[i] points at argument i as its ffi type
    // expects (a by-reference argument: at the pointer). The result lands in `result`.
    void Invoke(void** values, NativeCell& result);

    // The ffi type of one flag word: a pointer for anything by reference.
    static ffi_type* TypeOf(uint32_t flags);

private:
    ffi_cif m_cif{};
    std::vector<ffi_type*> m_types;
    void* m_entry = nullptr;
    bool m_prepared = false;
};

}  // namespace ob
