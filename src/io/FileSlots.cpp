#include "io/FileSlots.h"

namespace ob {

void CFileSlotTable::Add(uint16_t number, std::unique_ptr<CFileHolder> holder) {
    m_slots.erase(number);
    m_slots.emplace(number, std::move(holder));
}

// Numbers outside 0..65535 find nothing instead of wrapping onto a slot.
CFileHolder* CFileSlotTable::Find(int64_t number) {
    if (number < 0 || number > UINT16_MAX) return nullptr;
    auto it = m_slots.find(static_cast<uint16_t>(number));
    return it == m_slots.end() ? nullptr : it->second.get();
}

bool CFileSlotTable::Close(int64_t number) {
    if (number < 0 || number > UINT16_MAX) return false;
    return m_slots.erase(static_cast<uint16_t>(number)) > 0;
}

void CFileSlotTable::CloseAll() { m_slots.clear(); }

}  // namespace ob
