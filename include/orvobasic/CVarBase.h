// CVarBase: the single tagged value of the language.
//
// Holds nothing (unset), a 32-bit integer, a double, a string, a truth value
// or a counted reference to an automation object, with the conversions every
// part of the interpreter relies on: integers print with "%i", doubles with
// "%f" (six decimals), truth values as "True"/"False"; strings read as doubles
// with full floating-point syntax but as integers with a decimal prefix only.
#pragma once

#include <orvobasic/CString.h>
#include <orvobasic/export.h>
#include <orvobasic/automation.h>

#include <cstdint>
#include <cstring>

enum BASICVARTYPE { BVT_UNSET = 0, BVT_NUMBER = 1, BVT_STRING = 2, BVT_OBJECT = 3 };

class OB_API CVarBase {
public:
    CVarBase() = default;
    CVarBase(const char16_t* text);
    CVarBase(const CString& text);
    CVarBase(const double& number);
    CVarBase(long number);
    CVarBase(int number) : CVarBase(static_cast<long>(number)) {}
    CVarBase(bool truth);
    CVarBase(IDispatch* const object);
    // Copies the value only: the new value's field name and buffer stay empty.
    CVarBase(const CVarBase& other);
    CVarBase(CVarBase&& other) noexcept;
    ~CVarBase();

    void SetValue(const char16_t* text);
    void SetValue(const CString& text);
    // Takes the text over without copying it.
    void SetValue(CString&& text);
    void SetValue(const double& number);
    void SetValue(long number);
    void SetValue(bool truth);
    void SetValue(IDispatch* const object);
    // Copies value and string buffer; the field name of this value is kept.
    void SetValue(const CVarBase& other);
    // Maps a foreign VARIANT; false (value unchanged) for unsupported codes.
    bool SetValue(const VARIANT& value);

    CVarBase& operator=(const double& v) { SetValue(v); return *this; }
    CVarBase& operator=(const CString& v) { SetValue(v); return *this; }
    CVarBase& operator=(const char16_t* v) { SetValue(v); return *this; }
    CVarBase& operator=(long v) { SetValue(v); return *this; }
    CVarBase& operator=(bool v) { SetValue(v); return *this; }
    CVarBase& operator=(IDispatch* v) { SetValue(v); return *this; }
    CVarBase& operator=(const CVarBase& v) { SetValue(v); return *this; }
    CVarBase& operator=(CVarBase&& v) noexcept;

    BASICVARTYPE GetType() const {
        switch (m_vt) {
        case VT_I4: case VT_R8: case VT_BOOL: return BVT_NUMBER;
        case VT_BSTR: return BVT_STRING;
        case VT_DISPATCH: return BVT_OBJECT;
        default: return BVT_UNSET;
        }
    }
    bool IsSet() const { return GetType() != BVT_UNSET; }
    VARTYPE GetVarType() const { return m_vt; }

    CString GetStringValue() const;
    double GetDoubleValue() const { return m_vt == VT_R8 ? m_double : OtherDoubleValue(); }
    // Adds to a double in place, as Increment does; false for any other
    // kind of value.
    bool AddToDouble(double step) {
        if (m_vt != VT_R8) return false;
        m_double += step;
        return true;
    }
    // Replaces a double by a double in place, as SetValue(const CVarBase&)
    // with a double would; false for any other kind of value.
    bool ReplaceDouble(double number) {
        if (m_vt != VT_R8 || !m_buffer.empty()) return false;
        m_double = number;
        return true;
    }
    // One number and nothing else (no field name, no text buffer).
    bool IsBareNumber() const { return (m_vt == VT_R8 || m_vt == VT_I4) && m_buffer.empty() && m_fieldName.empty(); }
    // Between two bare numbers: the number of `other`, as SetValue(const
    // CVarBase&) would copy it. The texts are untouched, so the storage
    // stays as it was.
    void CopyBareNumber(const CVarBase& other) {
        m_vt = other.m_vt;
        std::memcpy(&m_double, &other.m_double, sizeof m_double);
    }
    long GetLongValue() const;
    IDispatch* GetObjectValue() const;   // borrowed, no reference added
    // Direct access to a stored string, without copying; empty for non-strings.
    const CString& StringRef() const { return m_vt == VT_BSTR ? m_str : EmptyString(); }

    bool Increment();
    // Appends `tail` to a stored string when storing the joined text would
    // leave exactly this storage (it fits the capacity, which an assignment
    // keeps, and no text buffer is pending); false, nothing changed, otherwise.
    bool AppendInPlace(const CString& tail);
    // Stores a text exactly as SetValue(const CVarBase&) stores a value
    // holding that text and no buffer, without making that value first.
    // The text may be part of this value's own.
    void AssignText(std::u16string_view text);

    // In-place editing of the text form for code that fills a character buffer.
    char16_t* GetStringBuffer(int length);
    void ReleaseStringBuffer();
    bool HasStringBuffer() const { return !m_buffer.empty(); }

    const CString& GetFieldName() const { return m_fieldName; }
    void SetFieldName(const CString& name) { m_fieldName = name; }

    // Empties the value (back to unset), releasing an object.
    void Clear();

    // How many values in the whole process hold an object reference now
    // (cheap: lets callers skip looking for objects when there are none).
    static long HeldObjectCount();
    // Heap bytes the value's texts occupy (its string, buffer and field name);
    // texts short enough to live inside the object count nothing.
    size_t HeapBytes() const { return TextBytes(m_str) + TextBytes(m_buffer) + TextBytes(m_fieldName); }

private:
    static const CString& EmptyString();
    double OtherDoubleValue() const;
    static size_t TextBytes(const CString& s) {
        static constexpr size_t inlineCapacity = std::u16string().capacity();
        return s.capacity() > inlineCapacity ? (s.capacity() + 1) * sizeof(char16_t) : 0;
    }
    void CopyValueFrom(const CVarBase& other);

    CString m_fieldName;
    VARTYPE m_vt = VT_EMPTY;
    union {
        int32_t m_long;
        double m_double = 0;
        int16_t m_bool;
        IDispatch* m_object;
    };
    CString m_str;
    CString m_buffer;
};
