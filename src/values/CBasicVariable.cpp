#include <orvobasic/CBasicVariable.h>
#include <orvobasic/COrvoBasic.h>

#include <utility>

CBasicVariable::CBasicVariable(CBasicVariable&& other) noexcept
    : m_items(std::move(other.m_items)), m_curIndex(other.m_curIndex) {
    other.Init();
    other.Recharge();
}

CBasicVariable::~CBasicVariable() {
    if (m_meter) m_meter->bytes -= m_charged;
}

void CBasicVariable::AttachMeter(ob::MemoryMeter* meter, int64_t extraBytes) {
    if (m_meter) m_meter->bytes -= m_charged;
    m_meter = meter;
    m_charged = 0;
    m_extra = extraBytes;
    Recharge();
}

int64_t CBasicVariable::ContentBytes() const {
    int64_t total = 0;
    for (const CVarBase& item : m_items) total += ItemBytes(item);
    return total;
}

// After a write to one element: charges the change of that element's size.
void CBasicVariable::Changed(size_t index, int64_t before) {
    if (m_meter) {
        int64_t delta = ItemBytes(m_items[index]) - before;
        m_charged += delta;
        m_meter->bytes += delta;
    }
    OnChange();
}

// After a change of several elements: charges the difference to the whole.
void CBasicVariable::Recharge() {
    if (!m_meter) return;
    int64_t total = ContentBytes() + m_extra;
    m_meter->bytes += total - m_charged;
    m_charged = total;
}

// A fresh variable: one unset element, index 0, no hook (the name is kept).
void CBasicVariable::Init() {
    m_eventOwner = nullptr;
    m_items.emplace_back();
    m_curIndex = 0;
}

bool CBasicVariable::IsSet() const { return m_items.size() >= 2 || m_items[0].IsSet(); }

void CBasicVariable::SetValue(CString&& v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(std::move(v)); });
}

void CBasicVariable::AssignText(std::u16string_view text) {
    WriteCurrent([&](CVarBase& item) { item.AssignText(text); });
}

bool CBasicVariable::AppendInPlace(const CString& tail) {
    size_t i = static_cast<size_t>(m_curIndex);
    int64_t before = Weigh(i);
    if (!Cur().AppendInPlace(tail)) return false;
    Changed(i, before);
    return true;
}

void CBasicVariable::SetValue(const CString& v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(v); });
}
void CBasicVariable::SetValue(const char16_t* v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(v); });
}
void CBasicVariable::SetValue(const double& v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(v); });
}
void CBasicVariable::SetValue(const int& v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(static_cast<long>(v)); });
}
void CBasicVariable::SetValue(bool v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(v); });
}
void CBasicVariable::SetValue(IDispatch* const v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(v); });
}

void CBasicVariable::SetValue(const CString& v, int index) {
    size_t i = static_cast<size_t>(index);
    int64_t before = Weigh(i);
    m_items[i].SetValue(v);
    Changed(i, before);
}
void CBasicVariable::SetValue(const char16_t* v, int index) {
    size_t i = static_cast<size_t>(index);
    int64_t before = Weigh(i);
    m_items[i].SetValue(v);
    Changed(i, before);
}
void CBasicVariable::SetValue(const double& v, int index) {
    size_t i = static_cast<size_t>(index);
    int64_t before = Weigh(i);
    m_items[i].SetValue(v);
    Changed(i, before);
}
void CBasicVariable::SetValue(const int& v, int index) {
    size_t i = static_cast<size_t>(index);
    int64_t before = Weigh(i);
    m_items[i].SetValue(static_cast<long>(v));
    Changed(i, before);
}

void CBasicVariable::SetValue(IDispatch* const v, int index) {
    long asInt = static_cast<long>(static_cast<int32_t>(reinterpret_cast<uintptr_t>(v)));
    size_t i = static_cast<size_t>(index);
    int64_t before = Weigh(i);
    m_items[i].SetValue(asInt);
    Changed(i, before);
}

void CBasicVariable::SetValue(const CBasicVariable& v) {
    WriteCurrent([&](CVarBase& item) { item.SetValue(v.Cur()); });
}

bool CBasicVariable::SetValue(const VARIANT& v) {
    size_t i = static_cast<size_t>(m_curIndex);
    int64_t before = Weigh(i);
    if (!Cur().SetValue(v)) return false;
    Changed(i, before);
    return true;
}

bool CBasicVariable::Increment() {
    size_t i = static_cast<size_t>(m_curIndex);
    int64_t before = Weigh(i);
    if (!Cur().Increment()) return false;
    Changed(i, before);
    return true;
}

// Whole copy of all elements (field names included) and the index; the
// source's change hook is not copied.
void CBasicVariable::Set(const CBasicVariable& other) {
    if (this != &other && IsBareNumber() && other.IsBareNumber()) {
        // One number for another: nothing that is charged changes.
        m_items[0].CopyBareNumber(other.m_items[0]);
        m_curIndex = 0;
        OnChange();
        return;
    }
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
    Recharge();
    OnChange();
}

void CBasicVariable::ReleaseStringBuffer() {
    Cur().ReleaseStringBuffer();
    Recharge();
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
    Changed(m_items.size() - 1, 0);
    return GetNumItems() - 1;
}

// The first value stored into a fresh variable fills element 0.
int CBasicVariable::AddValue(const CVarBase& value) {
    int index = 0;
    int64_t before = 0;
    if (IsSet()) {
        m_items.emplace_back(value);
        index = GetNumItems() - 1;
    } else {
        before = Weigh(0);
        m_items[0].SetValue(value);
    }
    Changed(static_cast<size_t>(index), before);
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
    Recharge();
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
