#include <orvobasic/CVarBase.h>

#include "engine/Messages.h"
#include "platform/NumberFormat.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <utility>

namespace {
constexpr int kTrueMessage = 58;
constexpr int kFalseMessage = 59;
// Values of the whole process that hold an object reference; touched only
// on the object paths.
std::atomic<long> g_heldObjects{0};

// A text's storage is kept for the next text unless it is large: a value
// that once held megabytes must not hold on to them.
constexpr size_t kKeptStorage = 4096;   // characters

void KeepSmallStorage(CString& text, size_t needed) {
    if (text.capacity() > kKeptStorage && needed < text.capacity() / 4) CString().swap(text);
}
}  // namespace

long CVarBase::HeldObjectCount() { return g_heldObjects.load(std::memory_order_relaxed); }

CVarBase::CVarBase(const char16_t* text) { SetValue(text); }
CVarBase::CVarBase(const CString& text) { SetValue(text); }
CVarBase::CVarBase(const double& number) { SetValue(number); }
CVarBase::CVarBase(long number) { SetValue(number); }
CVarBase::CVarBase(bool truth) { SetValue(truth); }
CVarBase::CVarBase(IDispatch* const object) { SetValue(object); }
CVarBase::CVarBase(const CVarBase& other) { CopyValueFrom(other); }

CVarBase::CVarBase(CVarBase&& other) noexcept
    : m_fieldName(std::move(other.m_fieldName)), m_vt(other.m_vt), m_str(std::move(other.m_str)),
      m_buffer(std::move(other.m_buffer)) {
    std::memcpy(&m_double, &other.m_double, sizeof m_double);   // the widest member carries every kind
    other.m_vt = VT_EMPTY;
}

CVarBase& CVarBase::operator=(CVarBase&& other) noexcept {
    if (this != &other) {
        Clear();
        m_vt = other.m_vt;
        std::memcpy(&m_double, &other.m_double, sizeof m_double);
        m_str = std::move(other.m_str);
        m_buffer = std::move(other.m_buffer);
        other.m_vt = VT_EMPTY;
    }
    return *this;
}

CVarBase::~CVarBase() { Clear(); }

const CString& CVarBase::EmptyString() {
    static const CString empty;
    return empty;
}

// Releases an object reference and forgets the value.
void CVarBase::Clear() {
    if (m_vt == VT_DISPATCH && m_object) {
        g_heldObjects.fetch_sub(1, std::memory_order_relaxed);
        m_object->Release();
    }
    if (m_vt == VT_BSTR) {
        m_str.clear();
        KeepSmallStorage(m_str, 0);
    }
    m_vt = VT_EMPTY;
    m_double = 0;
}

// Copies the value (an object gains a reference); field name untouched.
void CVarBase::CopyValueFrom(const CVarBase& other) {
    if (this == &other) return;
    if (other.m_vt == VT_DISPATCH && other.m_object) {
        other.m_object->AddRef();
        g_heldObjects.fetch_add(1, std::memory_order_relaxed);
    }
    Clear();
    m_vt = other.m_vt;
    std::memcpy(&m_double, &other.m_double, sizeof m_double);
    if (m_vt == VT_BSTR) m_str = other.m_str;   // Clear has let go of large storage
}

void CVarBase::SetValue(const char16_t* text) {
    Clear();
    m_vt = VT_BSTR;
    m_str = text ? text : u"";
}

void CVarBase::SetValue(CString&& text) {
    if (m_vt != VT_BSTR) {
        Clear();
        m_vt = VT_BSTR;
    }
    m_str = std::move(text);
}

void CVarBase::SetValue(const CString& text) {
    if (m_vt == VT_BSTR) {
        KeepSmallStorage(m_str, text.size());
        m_str = text;   // reuses the existing capacity
        return;
    }
    Clear();
    m_vt = VT_BSTR;
    m_str = text;
}

void CVarBase::AssignText(std::u16string_view text) {
    const char16_t* own = m_str.data();
    if (std::greater_equal<>()(text.data(), own) && std::less_equal<>()(text.data(), own + m_str.capacity())) {
        // part of this value's own text, which clearing would lose
        AssignText(CString(text));
        return;
    }
    Clear();
    m_vt = VT_BSTR;
    m_str.assign(text);   // grows as copying a string of that text would
    m_buffer.clear();
}

bool CVarBase::AppendInPlace(const CString& tail) {
    if (m_vt != VT_BSTR || !m_buffer.empty() || m_str.capacity() > kKeptStorage) return false;
    if (tail.size() > m_str.capacity() - m_str.size()) return false;
    m_str.append(tail);
    return true;
}

void CVarBase::SetValue(const double& number) {
    Clear();
    m_vt = VT_R8;
    m_double = number;
}

void CVarBase::SetValue(long number) {
    Clear();
    m_vt = VT_I4;
    m_long = static_cast<int32_t>(number);
}

void CVarBase::SetValue(bool truth) {
    Clear();
    m_vt = VT_BOOL;
    m_bool = truth ? -1 : 0;
}

void CVarBase::SetValue(IDispatch* const object) {
    if (object) {
        object->AddRef();
        g_heldObjects.fetch_add(1, std::memory_order_relaxed);
    }
    Clear();
    m_vt = VT_DISPATCH;
    m_object = object;
}

void CVarBase::SetValue(const CVarBase& other) {
    if (this == &other) return;
    CopyValueFrom(other);
    m_buffer = other.m_buffer;
}

// Maps a foreign value; arrays, references and codes the language has no
// counterpart for are refused and leave the value as it was.
bool CVarBase::SetValue(const VARIANT& v) {
    if (v.vt & (VT_ARRAY | VT_BYREF)) return false;
    switch (v.vt & 0x0FFF) {
    case VT_I2: SetValue(static_cast<long>(v.iVal)); return true;
    case VT_UI2: SetValue(static_cast<long>(v.uiVal)); return true;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: SetValue(static_cast<long>(v.lVal)); return true;
    case VT_R4: SetValue(static_cast<double>(v.fltVal)); return true;
    case VT_R8: SetValue(v.dblVal); return true;
    case VT_BSTR: SetValue(CString(v.bstrVal ? v.bstrVal : u"", SysStringLen(v.bstrVal))); return true;
    case VT_DISPATCH: SetValue(v.pdispVal); return true;
    case VT_BOOL: SetValue(v.boolVal != 0); return true;
    default: return false;
    }
}

// Pointers print and convert through their low 32 bits, as a signed integer.
static int32_t PointerAsLong(IDispatch* p) {
    return static_cast<int32_t>(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(p)));
}

CString CVarBase::GetStringValue() const {
    switch (m_vt) {
    case VT_I4: return ob::platform::FormatInt(m_long);
    case VT_R8: return ob::platform::FormatDouble(m_double);
    case VT_BSTR: return m_str;
    case VT_DISPATCH: return ob::platform::FormatInt(PointerAsLong(m_object));
    case VT_BOOL: return ob::Message(m_bool ? kTrueMessage : kFalseMessage);
    default: return CString();
    }
}

double CVarBase::OtherDoubleValue() const {
    switch (m_vt) {
    case VT_I4: return m_long;
    case VT_R8: return m_double;
    case VT_BSTR: return ob::platform::ParseDouble(m_str);
    case VT_DISPATCH: return PointerAsLong(m_object);
    case VT_BOOL: return m_bool ? 1.0 : 0.0;
    default: return 0.0;
    }
}

long CVarBase::GetLongValue() const {
    switch (m_vt) {
    case VT_I4: return m_long;
    case VT_DISPATCH: return PointerAsLong(m_object);
    case VT_R8: return ob::platform::TruncateToInt32(m_double);
    case VT_BSTR: return ob::platform::ParseLong(m_str);
    case VT_BOOL: return m_bool ? 1 : 0;
    default: return 0;
    }
}

IDispatch* CVarBase::GetObjectValue() const { return m_vt == VT_DISPATCH ? m_object : nullptr; }

bool CVarBase::Increment() {
    if (m_vt == VT_I4) {
        m_long = static_cast<int32_t>(static_cast<uint32_t>(m_long) + 1u);
        return true;
    }
    if (m_vt == VT_R8) {
        m_double += 1.0;
        return true;
    }
    return false;
}

char16_t* CVarBase::GetStringBuffer(int length) {
    m_buffer = GetStringValue();
    if (length > 0 && m_buffer.size() < static_cast<size_t>(length)) m_buffer.resize(static_cast<size_t>(length));
    m_buffer.reserve(m_buffer.size() + 1);
    return m_buffer.data();
}

void CVarBase::ReleaseStringBuffer() {
    size_t end = m_buffer.find(u'\0');
    if (end != CString::npos) m_buffer.resize(end);
    CString text = m_buffer;
    SetValue(text);
}
