#include "functions/NativeArguments.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <cfloat>
#include <cstring>
#include <limits>

namespace ob {

namespace {

// A text a function returns is read up to its terminator, at most this many characters.
constexpr size_t kMaxReturnedText = size_t{1} << 20;

// Narrowing to float; values beyond its range become infinities.
float NarrowToFloat(double d) {
    if (d > FLT_MAX) return std::numeric_limits<float>::infinity();
    if (d < -FLT_MAX) return -std::numeric_limits<float>::infinity();
    return static_cast<float>(d);
}

// A zero-filled buffer holding `text`, of max(kNativeTextBuffer, length + 1)
// characters plus one terminator beyond them that the callee is not told of.
template <typename Char>
std::basic_string<Char> MakeBuffer(std::basic_string_view<Char> text) {
    size_t capacity = std::max(kNativeTextBuffer, text.size() + 1);
    std::basic_string<Char> buffer(capacity + 1, Char{0});
    std::copy(text.begin(), text.end(), buffer.begin());
    return buffer;
}

// The text in a buffer: up to its first terminator, or all of it when the
// callee filled it to the end.
template <typename Char>
std::basic_string_view<Char> BufferText(const std::basic_string<Char>& buffer) {
    std::basic_string_view<Char> whole(buffer.data(), buffer.size() - 1);
    size_t end = whole.find(Char{0});
    return end == whole.npos ? whole : whole.substr(0, end);
}

// The zero-terminated text at an address a function returned; empty for null.
template <typename Char>
std::basic_string_view<Char> ReturnedText(const void* address) {
    if (!address) return {};
    const Char* text = static_cast<const Char*>(address);
    size_t length = 0;
    while (length < kMaxReturnedText && text[length] != Char{0}) ++length;
    return {text, length};
}

// An integral result as the call left it: widened to a whole register slot.
ffi_arg IntegralResult(const NativeCell& cell) {
    ffi_arg word;
    std::memcpy(&word, &cell, sizeof word);
    return word;
}

}  // namespace

// The code page is the interpreter's: scripts, 8-bit files and these buffers
// agree on it.
std::string ToScriptCodePage(const COrvoBasic& basic, std::u16string_view text) {
    (void)basic;
    return platform::WideToAnsi(text);
}

CString FromScriptCodePage(const COrvoBasic& basic, std::string_view bytes) {
    (void)basic;
    return platform::AnsiToWide(bytes);
}

void CNativeArguments::SetScalar(Slot& slot, uint32_t kind, const CBasicVariable& value) {
    switch (kind) {
    case NF_CHAR: slot.cell.c = static_cast<int8_t>(value.GetLongValue() & 0xFF); break;
    case NF_WORD: slot.cell.w = static_cast<uint16_t>(value.GetLongValue() & 0xFFFF); break;
    case NF_INTEGER: slot.cell.i = static_cast<int32_t>(value.GetLongValue()); break;
    case NF_FLOAT: slot.cell.f = NarrowToFloat(value.GetNumberValue()); break;
    case NF_DOUBLE: slot.cell.d = value.GetNumberValue(); break;
    default: break;
    }
    slot.pointer = &slot.cell;
}

void CNativeArguments::SetText(Slot& slot, uint32_t kind, const CBasicVariable& value) {
    CString text = value.GetStringValue();
    if (kind == NF_STRING) {
        slot.bytes = MakeBuffer<char>(ToScriptCodePage(m_basic, text));
        slot.pointer = slot.bytes.data();
    } else {
        slot.wide = MakeBuffer<char16_t>(text);
        slot.pointer = slot.wide.data();
    }
}

bool CNativeArguments::Add(uint32_t flags, const CBasicVariable& value) {
    if (m_count >= m_slots.size()) return false;
    Slot& slot = m_slots[m_count];
    slot.flags = flags;
    uint32_t kind = flags & NF_KIND_MASK;
    bool text = kind == NF_STRING || kind == NF_UNICODE;
    if (text)
        SetText(slot, kind, value);
    else
        SetScalar(slot, kind, value);
    bool byPointer = text || (flags & NF_BYREF);
    m_values[m_count] = byPointer ? static_cast<void*>(&slot.pointer) : static_cast<void*>(&slot.cell);
    ++m_count;
    return true;
}

bool CNativeArguments::AddBlock(uint32_t flags, void* block) {
    if (m_count >= m_slots.size() || !(flags & NF_BYREF)) return false;
    Slot& slot = m_slots[m_count];
    slot.flags = flags;
    slot.block = true;
    slot.pointer = block;
    m_values[m_count] = &slot.pointer;
    ++m_count;
    return true;
}

bool CNativeArguments::ReadBack(size_t i, CBasicVariable& value) const {
    if (i >= m_count) return false;
    const Slot& slot = m_slots[i];
    if (slot.block || !(slot.flags & NF_BYREF)) return false;
    switch (slot.flags & NF_KIND_MASK) {
    case NF_CHAR: value.SetValue(static_cast<int>(slot.cell.c)); return true;
    case NF_WORD: value.SetValue(static_cast<int>(slot.cell.w)); return true;
    case NF_INTEGER: value.SetValue(static_cast<int>(slot.cell.i)); return true;
    case NF_FLOAT: value.SetValue(static_cast<double>(slot.cell.f)); return true;
    case NF_DOUBLE: value.SetValue(slot.cell.d); return true;
    case NF_STRING: value.SetValue(FromScriptCodePage(m_basic, BufferText(slot.bytes))); return true;
    case NF_UNICODE: value.SetValue(CString(BufferText(slot.wide))); return true;
    default: return false;
    }
}

bool CNativeArguments::ConvertResult(const COrvoBasic& basic, uint32_t flags, const NativeCell& cell,
                                     CBasicVariable& value) {
    switch (flags) {
    case NF_CHAR: value.SetValue(static_cast<int>(static_cast<int8_t>(IntegralResult(cell)))); return true;
    case NF_WORD: value.SetValue(static_cast<int>(static_cast<uint16_t>(IntegralResult(cell)))); return true;
    case NF_INTEGER: value.SetValue(static_cast<int>(static_cast<int32_t>(IntegralResult(cell)))); return true;
    case NF_FLOAT: value.SetValue(static_cast<double>(cell.f)); return true;
    case NF_DOUBLE: value.SetValue(cell.d); return true;
    case NF_UNICODE: value.SetValue(CString(ReturnedText<char16_t>(cell.p))); return true;
    case NF_STRING: value.SetValue(FromScriptCodePage(basic, ReturnedText<char>(cell.p))); return true;
    default: return false;
    }
}

}  // namespace ob
