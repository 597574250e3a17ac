// CNativeArguments: the argument slots of one call of a declared function.
//
// Each argument is converted by its parameter's flags (see NativeCall.h):
// numbers truncated to 32-bit integers, a "char" keeping the low byte,
// float and double narrowed to a 32-bit float; a by-reference scalar is
// stored in a cell of its own whose address is passed. Text is passed as a
// buffer of at least kNativeTextBuffer characters (more when the text is
// longer): 8-bit text in the script code page for "string", UTF-16 for
// "unicode". After the call the cells and buffers are read back, a buffer
// only up to its own end whatever the callee wrote.
#pragma once

#include <orvobasic/CBasicVariable.h>
#include <orvobasic/CString.h>

#include "functions/NativeCall.h"

#include <array>
#include <string>
#include <string_view>

class COrvoBasic;

namespace ob {

// The 8-bit text of "string" buffers and results, in the script's code page.
// Every conversion of declared calls goes through these two.
std::string ToScriptCodePage(const COrvoBasic& basic, std::u16string_view text);
CString FromScriptCodePage(const COrvoBasic& basic, std::string_view bytes);

class CNativeArguments {
public:
    explicit CNativeArguments(const COrvoBasic& basic) : m_basic(basic) {}
    CNativeArguments(const CNativeArguments&) = delete;
    CNativeArguments& operator=(const CNativeArguments&) = delete;

    // Appends a script value converted by `flags`; false when all slots are taken.
    bool Add(uint32_t flags, const CBasicVariable& value);
    // Appends the address of a caller-owned block (a record's buffer) for a
    // by-reference parameter; false for a by-value one or when slots are full.
    bool AddBlock(uint32_t flags, void* block);

    // What ffi_call wants: for argument i, the address of its value.
    void** Values() { return m_values.data(); }
    size_t Count() const { return m_count; }

    // The value by-reference argument i holds after the call; false for a
    // by-value argument or a block.
    bool ReadBack(size_t i, CBasicVariable& value) const;

    // A result of kind `flags` (no by-reference bit) as a script value;
    // false for "no result".
    static bool ConvertResult(const COrvoBasic& basic, uint32_t flags, const NativeCell& cell, CBasicVariable& value);

private:
    struct Slot {
        uint32_t flags = 0;
        NativeCell cell{};
        void* pointer = nullptr;   // what a by-reference argument passes
        bool block = false;
        std::string bytes;         // "string" buffer, one hidden terminator beyond its capacity
        std::u16string wide;       // "unicode" buffer, likewise
    };
    void SetScalar(Slot& slot, uint32_t kind, const CBasicVariable& value);
    void SetText(Slot& slot, uint32_t kind, const CBasicVariable& value);

    const COrvoBasic& m_basic;
    std::array<Slot, kMaxNativeArguments> m_slots;
    std::array<void*, kMaxNativeArguments> m_values{};
    size_t m_count = 0;
};

}  // namespace ob
