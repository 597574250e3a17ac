#include <orvobasic/CBasicVariable.h>
#include <orvobasic/COrvoBasic.h>

#include <utility>

CBasicVariable::CBasicVariable(CBasicVariable&& other) noexcept
    : m_items(std::move(other.m_items)), m_curIndex(other.m_curIndex) {
    other.Init();
}

// A fresh variable: one unset element, index 0, no hook (the name is kept).
void CBasicVariable::Init() {
    m_eventOwner = nullptr;
    m_items.emplace_back();
    m_curIndex = 0;
}

bool CBasicVariable::IsSet() const { return m_items.size() >= 2 || m_items[0].IsSet(); }

void CBasicVariable::SetValue(const CString& v) { Cur().SetValue(v); OnChange(); }
void CBasicVariable::SetValue(const char16_t* v) { Cur().SetValue(v); OnChange(); }
void CBasicVariable::SetValue(const double& v) { Cur().SetValue(v); OnChange(); }
void CBasicVariable::SetValue(const int& v) { Cur().SetValue(static_cast<long>(v)); OnChange(); }
void CBasicVariable::SetValue(bool v) { Cur().SetValue(v); OnChange(); }
void CBasicVariable::SetValue(IDispatch* const v) { Cur().SetValue(v); OnChange(); }

void CBasicVariable::SetValue(const CString& v, int index) { m_items[static_cast<size_t>(index)].SetValue(v); OnChange(); }
void CBasicVariable::SetValue(const char16_t* v, int index) { m_items[static_cast<size_t>(index)].SetValue(v); OnChange(); }
void CBasicVariable::SetValue(const double& v, int index) { m_items[static_cast<size_t>(index)].SetValue(v); OnChange(); }
void CBasicVariable::SetValue(const int& v, int index) {
    m_items[static_cast<size_t>(index)].SetValue(static_cast<long>(v));
    OnChange();
}

void CBasicVariable::SetValue(IDispatch* const v, int index) {
    long asInt = static_cast<long>(static_cast<int32_t>(reinterpret_cast<uintptr_t>(v)));
    m_items[static_cast<size_t>(index)].SetValue(asInt);
    OnChange();
}

void CBasicVariable::SetValue(const CBasicVariable& v) {
    Cur().SetValue(v.Cur());
    OnChange();
}

bool CBasicVariable::SetValue(const VARIANT& v) {
    if (!Cur().SetValue(v)) return false;
    OnChange();
    return true;
}

bool CBasicVariable::Increment() {
    if (!Cur().Increment()) return false;
    OnChange();
    return true;
}

// Whole copy of all elements (field names included) and the index; the
// source's change hook is not copied.
void CBasicVariable::Set(const CBasicVariable& other) {
    if (this != &other && m_items.size() == 1 && other.m_items.size() == 1) {
        m_items[0].SetValue(other.m_items[0]);
        m_items[0].SetFieldName(other.m_items[0].GetFieldName());
        m_curIndex = 0;
    } else if (this != &other) {
        m_items.clear();
        m_items.reserve(other.m_items.size());
        for (const CVarBase& item : other.m_items) {
            m_items.emplace_back(item);
            m_items.back().SetFieldName(item.GetFieldName());
        }
        m_curIndex = other.m_curIndex;
    }
    OnChange();
}

void CBasicVariable::ReleaseStringBuffer() {
    Cur().ReleaseStringBuffer();
    OnChange();
}

void CBasicVariable::SetCurIndex(int index) {
    if (index >= 0 && index < GetNumItems()) m_curIndex = index;
}

// Field names compare without regard to case, like local variable names.
bool CBasicVariable::SetCurField(const CString& name) {
    CString wanted = name;
    wanted.MakeLower();
    for (int i = 0; i < GetNumItems(); ++i) {
        CString field = m_items[static_cast<size_t>(i)].GetFieldName();
        if (field.MakeLower() == wanted) {
            m_curIndex = i;
            return true;
        }
    }
    return false;
}

int CBasicVariable::AddItem() {
    m_items.emplace_back();
    OnChange();
    return GetNumItems() - 1;
}

// The first value stored into a fresh variable fills element 0.
int CBasicVariable::AddValue(const CVarBase& value) {
    int index = 0;
    if (IsSet()) {
        m_items.emplace_back(value);
        index = GetNumItems() - 1;
    } else {
        m_items[0].SetValue(value);
    }
    OnChange();
    return index;
}

int CBasicVariable::AddItem(const CBasicVariable& src) {
    if (m_curIndex < src.GetNumItems()) return AddValue(src.GetItem(m_curIndex));
    return AddValue(CVarBase());
}

void CBasicVariable::SetArraySize(int count) {
    while (GetNumItems() < count) AddItem();
}

void CBasicVariable::Redim(int count) {
    if (count >= 1 && count < kMaxItems) m_items.resize(static_cast<size_t>(count));
    m_curIndex = 0;
    OnChange();
}

void CBasicVariable::SetChangeEvent(COrvoBasic* owner, const CString& name) {
    m_eventOwner = owner;
    m_eventName = name;
}

// Raises the change event with this variable as its single argument.
void CBasicVariable::OnChange() {
    if (m_eventOwner) m_eventOwner->EventThrow(m_eventName, this);
}

void CBasicVariable::ReleaseObjects() {
    for (size_t i = 0; i < m_items.size(); ++i)
        if (m_items[i].GetType() == BVT_OBJECT) m_items[i].Clear();
}
