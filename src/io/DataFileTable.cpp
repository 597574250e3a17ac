#include "io/DataFileTable.h"

namespace ob {

int CDataFileTable::Add(std::unique_ptr<CDataFile> file) {
    m_files.push_back(std::move(file));
    return static_cast<int>(m_files.size() - 1);
}

CDataFile* CDataFileTable::Find(int64_t handle) {
    if (handle < 0 || static_cast<uint64_t>(handle) >= m_files.size()) return nullptr;
    return m_files[static_cast<size_t>(handle)].get();
}

bool CDataFileTable::Close(int64_t handle) {
    if (!Find(handle)) return false;
    m_files.erase(m_files.begin() + static_cast<std::ptrdiff_t>(handle));
    return true;
}

void CDataFileTable::CloseAll() { m_files.clear(); }

}  // namespace ob
