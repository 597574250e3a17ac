// The process-wide list of live interpreters and the host's function table.
#include <orvobasic/COrvoBasic.h>

#include <algorithm>

std::list<void*> COrvoBasic::m_List;
std::mutex COrvoBasic::m_Door;
int32_t COrvoBasic::m_nNumberOfCopies = 0;
std::unordered_map<CString, CFuncDesc*, ob::CStringHash> COrvoBasic::m_ExtFunctionTable;

// True when `interpreter` is a live interpreter of this process.
bool COrvoBasic::IsValidInterpreter(void* interpreter) {
    return std::find(m_List.begin(), m_List.end(), interpreter) != m_List.end();
}

// Raises an event in every live interpreter, in order of creation.
bool COrvoBasic::SendEvent(const CString& name, CArgArray& args) {
    std::vector<void*> targets(m_List.begin(), m_List.end());
    for (void* p : targets)
        if (IsValidInterpreter(p)) static_cast<COrvoBasic*>(p)->EventThrow(name, args);
    return true;
}

bool COrvoBasic::SendEvent(const CString& name, CBasicVariable* arg) {
    std::vector<void*> targets(m_List.begin(), m_List.end());
    for (void* p : targets)
        if (IsValidInterpreter(p)) static_cast<COrvoBasic*>(p)->EventThrow(name, arg);
    return true;
}

// Adds a host function; the first registration of a name wins.
bool COrvoBasic::AddCustomFunction(const CString& name, OB_CustomFunction function, int paramCount,
                                   int userData) {
    if (name.IsEmpty() || !function) return false;
    CString key = name;
    key.MakeLower();
    if (m_ExtFunctionTable.count(key)) return true;
    auto* desc = new CFuncDesc;
    desc->name = key;
    desc->type = ob::FT_CUSTOM;
    desc->custom = function;
    desc->paramCount = paramCount;
    desc->userData = userData;
    m_ExtFunctionTable.emplace(key, desc);
    return true;
}

bool COrvoBasic::ExecCustomFunction(const CFuncDesc& desc, CBasicVariable& result, CArgArray& args) {
    if (!desc.custom) {
        ReportError(21);
        return false;
    }
    result = desc.custom(this, args, desc.userData);
    return true;
}

void COrvoBasic::AddToNotifyList() { m_List.push_back(this); }

// Removes the first entry equal to this interpreter; nothing when absent.
void COrvoBasic::RemoveFromNotifyList() {
    auto it = std::find(m_List.begin(), m_List.end(), static_cast<void*>(this));
    if (it != m_List.end()) m_List.erase(it);
}
