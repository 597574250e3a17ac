// CBasicVariable: what a script name refers to.
//
// An array of CVarBase values that is never empty, with a current index that
// every plain read and write uses. Element fields double as the fields of a
// record. A variable may carry a change hook: every write then raises a named
// event in the owning interpreter with the variable as the argument.
#pragma once

#include <orvobasic/CVarArray.h>
#include <orvobasic/export.h>
#include <orvobasic/CVarBase.h>

#include <cstdint>
#include <vector>

class COrvoBasic;

namespace ob {
// The bytes held by the values of one interpreter: its variables, map
// entries and records. A variable attached to a meter keeps it up to date on
// every write; detached variables (temporaries) cost nothing.
struct MemoryMeter {
    int64_t bytes = 0;
};
}  // namespace ob

class OB_API CBasicVariable {
public:
    CBasicVariable() { Init(); }
    CBasicVariable(const CString& v) { Init(); m_items[0].SetValue(v); }
    CBasicVariable(const char16_t* v) { Init(); m_items[0].SetValue(v); }
    CBasicVariable(double v) { Init(); m_items[0].SetValue(v); }
    CBasicVariable(int v) { Init(); m_items[0].SetValue(static_cast<long>(v)); }
    CBasicVariable(bool v) { Init(); m_items[0].SetValue(v); }
    CBasicVariable(const CBasicVariable& other) { Init(); Set(other); }
    CBasicVariable(CBasicVariable&& other) noexcept;
    ~CBasicVariable();

    CBasicVariable& operator=(const CBasicVariable& other) { Set(other); return *this; }
    CBasicVariable& operator=(double v) { SetValue(v); return *this; }
    CBasicVariable& operator=(const CString& v) { SetValue(v); return *this; }
    CBasicVariable& operator=(const char16_t* v) { SetValue(v); return *this; }
    CBasicVariable& operator=(int v) { SetValue(v); return *this; }
    CBasicVariable& operator=(bool v) { SetValue(v); return *this; }
    CBasicVariable& operator=(IDispatch* v) { SetValue(v); return *this; }
    CBasicVariable& operator=(const unsigned short& v) { SetValue(static_cast<int>(v)); return *this; }
    CBasicVariable& operator=(const char& v) { SetValue(static_cast<int>(static_cast<signed char>(v))); return *this; }
    CBasicVariable& operator=(const float& v) { SetValue(static_cast<double>(v)); return *this; }

    // Reads, all on the current element.
    BASICVARTYPE GetType() const { return Cur().GetType(); }
    CString GetStringValue() const { return Cur().GetStringValue(); }
    double GetNumberValue() const { return Cur().GetDoubleValue(); }
    long GetLongValue() const { return Cur().GetLongValue(); }
    IDispatch* GetObjectValue() const { return Cur().GetObjectValue(); }
    const CVarBase& GetCurrent() const { return Cur(); }
    const CVarBase& GetItem(int index) const { return m_items[static_cast<size_t>(index)]; }
    bool IsSet() const;
    int GetNumItems() const { return static_cast<int>(m_items.size()); }
    bool IsArray() const { return m_items.size() > 1; }
    // A single bare number: a copy of the variable is that number.
    bool IsBareNumber() const { return m_items.size() == 1 && m_items[0].IsBareNumber(); }
    int GetCurIndex() const { return m_curIndex; }
    const CString& GetFieldName() const { return Cur().GetFieldName(); }

    // Writes; each ends by raising the change hook.
    void SetValue(const CString& v);
    void SetValue(CString&& v);
    void SetValue(const char16_t* v);
    void SetValue(const double& v);
    void SetValue(const int& v);
    void SetValue(bool v);
    void SetValue(IDispatch* const v);
    void SetValue(const CString& v, int index);
    void SetValue(const char16_t* v, int index);
    void SetValue(const double& v, int index);
    void SetValue(const int& v, int index);
    // Stores the pointer as an integer, without a reference (kept as designed).
    void SetValue(IDispatch* const v, int index);
    void SetValue(const CBasicVariable& v);
    bool SetValue(const VARIANT& v);
    bool Increment();
    // `s = s + tail` on the current element without copying the text, when
    // that leaves the same storage as the copy would (see CVarBase); false
    // when nothing was done. Raises the change hook like every write.
    bool AppendInPlace(const CString& tail);
    // SetValue(const CBasicVariable&) from a value holding just `text`.
    void AssignText(std::u16string_view text);
    // Stores a number into element `index` (which becomes the current one)
    // when that element holds a double and nothing watches the variable:
    // the same as SetValue with a number, without the bookkeeping a change
    // of size or kind needs. False (nothing done) otherwise.
    bool StoreNumber(int index, double v) {
        if (m_eventOwner || !m_items[static_cast<size_t>(index)].ReplaceDouble(v)) return false;
        m_curIndex = index;
        return true;
    }
    // Increment of a current element holding a double with nothing watching.
    bool IncrementInPlace() { return !m_eventOwner && Cur().AddToDouble(1.0); }
    CBasicVariable& operator++() { Increment(); return *this; }
    void Set(const CBasicVariable& other);
    void SetFieldName(const CString& name) { Cur().SetFieldName(name); }
    void ReleaseStringBuffer();
    // Empties every element that holds an object (releasing it); no change
    // hook is raised.
    void ReleaseObjects();
    char16_t* GetStringBuffer(int length) { return Cur().GetStringBuffer(length); }

    // Positioning and sizing.
    void SetCurIndex(int index);
    bool SetCurField(const CString& name);
    int AddItem();
    int AddItem(double v) { return AddValue(CVarBase(v)); }
    int AddItem(int v) { return AddValue(CVarBase(static_cast<long>(v))); }
    int AddItem(unsigned long v) { return AddValue(CVarBase(static_cast<long>(static_cast<int>(v)))); }
    int AddItem(bool v) { return AddValue(CVarBase(v)); }
    int AddItem(const CString& v) { return AddValue(CVarBase(v)); }
    int AddItem(const char16_t* v) { return AddValue(CVarBase(v)); }
    int AddItem(IDispatch* v) { return AddValue(CVarBase(v)); }
    // Takes src's element at *this* variable's current index (kept as designed).
    int AddItem(const CBasicVariable& src);
    void SetArraySize(int count);
    void Redim(int count);

    // Change hook.
    void SetChangeEvent(COrvoBasic* owner, const CString& name);
    void RemoveChangeEvent() { m_eventOwner = nullptr; }
    bool HasChangeEvent() const { return m_eventOwner != nullptr; }

    // Counts this variable's bytes, plus `extraBytes` for the entry that holds
    // it (its key), on `meter` from now on until it is destroyed. Copies are
    // not attached.
    void AttachMeter(ob::MemoryMeter* meter, int64_t extraBytes);
    // Bytes charged to the meter; 0 when not attached.
    int64_t ChargedBytes() const { return m_charged; }
    // Bytes of the elements' storage and texts, attached or not.
    int64_t ContentBytes() const;

    // The hard ceiling of an array's size.
    static constexpr int kMaxItems = 16000;

private:
    void Init();
    int AddValue(const CVarBase& value);
    void OnChange();
    static int64_t ItemBytes(const CVarBase& item) {
        return static_cast<int64_t>(sizeof(CVarBase) + item.HeapBytes());
    }
    int64_t Weigh(size_t index) const { return m_meter ? ItemBytes(m_items[index]) : 0; }
    void Changed(size_t index, int64_t before);
    // Runs `write` on the current element, then keeps the meter and raises
    // the change hook as every write does.
    template <typename Write>
    void WriteCurrent(Write&& write) {
        size_t i = static_cast<size_t>(m_curIndex);
        int64_t before = Weigh(i);
        write(Cur());
        Changed(i, before);
    }
    void Recharge();
    CVarBase& Cur() { return m_items[static_cast<size_t>(m_curIndex)]; }
    const CVarBase& Cur() const { return m_items[static_cast<size_t>(m_curIndex)]; }

    CVarArray m_items;
    int m_curIndex = 0;
    COrvoBasic* m_eventOwner = nullptr;
    CString m_eventName;
    ob::MemoryMeter* m_meter = nullptr;
    int64_t m_charged = 0;   // bytes this variable has charged to m_meter
    int64_t m_extra = 0;     // of which for the entry that holds it
};

using CArgArray = std::vector<CBasicVariable>;
