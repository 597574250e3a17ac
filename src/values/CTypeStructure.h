// CTypeStructure: the layout of a record type declared with "type" ... "endtype",
// and a record of that layout.
//
// A record is a packed byte buffer, field after field with no alignment
// padding, so that it can be handed to functions of external libraries as a
// structure. A type description and every record variable are each a
// CTypeStructure: a variable is a copy of its type's field list with a buffer
// of its own. Field values are converted to and from the language's values on
// every access; no access ever reaches outside the buffer.
#pragma once

#include <orvobasic/CBasicVariable.h>
#include <orvobasic/CString.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace ob {

// Field element types; the values are those "type" declarations map the
// keywords to (KeywordToType).
enum TYPE_DEFINITION : int {
    TD_NONE = 0,
    TD_CHAR = 1,      // signed 8-bit integer
    TD_WORD = 2,      // unsigned 16-bit integer (no keyword reaches it)
    TD_INTEGER = 3,   // signed 32-bit integer
    TD_FLOAT = 4,     // 32-bit IEEE float
    TD_DOUBLE = 5,    // 64-bit IEEE double
    TD_STRING = 6,    // pointer to a zero-terminated UTF-16 string
};

// One declared field.
struct CFieldDescriptor {
    CString name;             // as written in the declaration
    size_t offset = 0;        // byte offset in the record
    TYPE_DEFINITION type = TD_NONE;
    int count = 1;            // elements, 1..kMaxCount
    // A single "string": the record holds a pointer to the text. A "string"
    // array instead holds the UTF-16 text itself, in count pointer-sized slots.
    bool indirect = false;
};

class CTypeStructure {
public:
    static constexpr int kMaxCount = 16000;
    // Ceiling of one record's size; a declaration that would pass it is refused.
    static constexpr size_t kMaxRecordSize = size_t{64} << 20;

    CTypeStructure() = default;
    // A record of the same layout with its own buffer, cleared to zero (so an
    // unset "string" pointer reads as an empty text).
    CTypeStructure(const CTypeStructure& layout);
    CTypeStructure& operator=(const CTypeStructure&) = delete;

    // Bytes of one element: 1, 2, 4, 4, 8 and pointer-sized for "string"; 0 for TD_NONE.
    static size_t ElementSize(TYPE_DEFINITION type);

    // Appends a field at the current end of the record. False (nothing added)
    // for TD_NONE, a count outside 1..kMaxCount or a record past kMaxRecordSize.
    bool AddField(const CString& name, TYPE_DEFINITION type, int count);
    // Sizes the buffer to the record (zero-filled); done once all fields are in.
    void AllocateBuffer();

    // The field named `name`, compared without regard to case; null when absent.
    const CFieldDescriptor* FindField(const CString& name) const;

    // Reads element `index` of a field into `value`. False, `value` untouched,
    // for an unknown field or an index outside the field.
    bool Read(const CString& field, int index, CBasicVariable& value) const;
    // Writes element `index` of a field from `value`: numbers are truncated
    // (char keeps the low byte, integer saturates at 32 bits), narrowed to
    // float, or stored as double; "string" fields are left as they are. False
    // for an unknown field or an index outside the field.
    bool Write(const CString& field, int index, const CBasicVariable& value);

    const std::vector<CFieldDescriptor>& Fields() const { return m_fields; }
    size_t Size() const { return m_size; }
    // The record's bytes (Size() of them once allocated), for library calls and hosts.
    unsigned char* Data() { return m_buffer.data(); }
    const unsigned char* Data() const { return m_buffer.data(); }

private:
    // Address of element `index` of a field, or null when it lies outside.
    const unsigned char* ElementAt(const CFieldDescriptor& field, int index) const;
    CString ReadString(const CFieldDescriptor& field) const;

    std::vector<CFieldDescriptor> m_fields;
    size_t m_size = 0;
    std::vector<unsigned char> m_buffer;
};

}  // namespace ob
