#include "values/CTypeStructure.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace ob {

namespace {

// Truncation toward zero into 64 bits, saturating; NaN gives 0.
int64_t TruncateToInt64(double d) {
    if (std::isnan(d)) return 0;
    if (d >= 9223372036854775807.0) return INT64_MAX;
    if (d <= -9223372036854775808.0) return INT64_MIN;
    return static_cast<int64_t>(d);
}

// Truncation into a signed 32-bit integer, saturating at its range.
int32_t SaturateInt32(double d) {
    int64_t n = TruncateToInt64(d);
    return n > INT32_MAX ? INT32_MAX : n < INT32_MIN ? INT32_MIN : static_cast<int32_t>(n);
}

// Unsigned conversion that saturates: negative and NaN give 0, too large gives the maximum.
uint32_t SaturateUint32(double d) {
    if (!(d > 0.0)) return 0;
    return d >= 4294967295.0 ? UINT32_MAX : static_cast<uint32_t>(d);
}

// Narrowing to float; values beyond its range become infinities instead of
// undefined behaviour.
float NarrowToFloat(double d) {
    if (d > FLT_MAX) return std::numeric_limits<float>::infinity();
    if (d < -FLT_MAX) return -std::numeric_limits<float>::infinity();
    return static_cast<float>(d);
}

template <typename T>
T Load(const unsigned char* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <typename T>
void Store(unsigned char* p, T v) {
    std::memcpy(p, &v, sizeof v);
}

CString Lower(CString s) { return s.MakeLower(); }

}  // namespace

CTypeStructure::CTypeStructure(const CTypeStructure& layout) : m_fields(layout.m_fields), m_size(layout.m_size) {
    AllocateBuffer();
}

size_t CTypeStructure::ElementSize(TYPE_DEFINITION type) {
    static constexpr size_t kSizes[] = {0, 1, 2, 4, 4, 8, sizeof(void*)};
    return type >= TD_NONE && type <= TD_STRING ? kSizes[type] : 0;
}

bool CTypeStructure::AddField(const CString& name, TYPE_DEFINITION type, int count) {
    size_t element = ElementSize(type);
    if (element == 0 || count < 1 || count > kMaxCount) return false;
    size_t bytes = element * static_cast<size_t>(count);
    if (bytes > kMaxRecordSize - m_size) return false;
    m_fields.push_back({name, m_size, type, count, type == TD_STRING && count == 1});
    m_size += bytes;
    return true;
}

void CTypeStructure::AllocateBuffer() { m_buffer.assign(m_size, 0); }

const CFieldDescriptor* CTypeStructure::FindField(const CString& name) const {
    CString wanted = Lower(name);
    for (const auto& field : m_fields)
        if (field.name.size() == wanted.size() && Lower(field.name) == wanted) return &field;
    return nullptr;
}

const unsigned char* CTypeStructure::ElementAt(const CFieldDescriptor& field, int index) const {
    if (index < 0 || index >= field.count) return nullptr;
    size_t element = ElementSize(field.type);
    size_t at = field.offset + static_cast<size_t>(index) * element;
    if (at + element > m_buffer.size()) return nullptr;   // buffer not allocated yet
    return m_buffer.data() + at;
}

// A "string" field's text: through the stored pointer (null reads as empty)
// for a single one; for an array, the UTF-16 text held in the field itself,
// up to its zero or to the end of the field, whichever comes first.
CString CTypeStructure::ReadString(const CFieldDescriptor& field) const {
    const unsigned char* p = m_buffer.data() + field.offset;
    if (field.indirect) {
        const char16_t* text = Load<const char16_t*>(p);
        return text ? CString(text) : CString();
    }
    size_t units = ElementSize(TD_STRING) * static_cast<size_t>(field.count) / sizeof(char16_t);
    CString text;
    for (size_t i = 0; i < units; ++i) {
        char16_t c = Load<char16_t>(p + i * sizeof(char16_t));
        if (c == 0) break;
        text += c;
    }
    return text;
}

bool CTypeStructure::Read(const CString& name, int index, CBasicVariable& value) const {
    const CFieldDescriptor* field = FindField(name);
    if (!field) return false;
    const unsigned char* p = ElementAt(*field, index);
    if (!p) return false;
    switch (field->type) {
    case TD_CHAR: value.SetValue(static_cast<int>(Load<int8_t>(p))); break;
    case TD_WORD: value.SetValue(static_cast<int>(Load<uint16_t>(p))); break;
    case TD_INTEGER: value.SetValue(static_cast<int>(Load<int32_t>(p))); break;
    case TD_FLOAT: value.SetValue(static_cast<double>(Load<float>(p))); break;
    case TD_DOUBLE: value.SetValue(Load<double>(p)); break;
    case TD_STRING: value.SetValue(ReadString(*field)); break;
    default: return false;
    }
    return true;
}

bool CTypeStructure::Write(const CString& name, int index, const CBasicVariable& value) {
    const CFieldDescriptor* field = FindField(name);
    if (!field) return false;
    unsigned char* p = const_cast<unsigned char*>(ElementAt(*field, index));
    if (!p) return false;
    double d = value.GetNumberValue();
    switch (field->type) {
    case TD_CHAR: Store(p, static_cast<uint8_t>(static_cast<uint64_t>(TruncateToInt64(d)) & 0xFFu)); break;
    case TD_WORD: Store(p, static_cast<uint16_t>(SaturateUint32(d) & 0xFFFFu)); break;
    case TD_INTEGER: Store(p, SaturateInt32(d)); break;
    case TD_FLOAT: Store(p, NarrowToFloat(d)); break;
    case TD_DOUBLE: Store(p, d); break;
    case TD_STRING: break;   // string fields are not assigned from values
    default: return false;
    }
    return true;
}

}  // namespace ob
