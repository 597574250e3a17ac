// The process-wide list of live interpreters and the host's function table.
//
// The registry is used from the host's thread only. Each operation builds a
// guard on m_Door without locking it, so the guard object stays in place
// while no mutual exclusion takes place (deliberately: events nest, and a
// lock would deadlock a handler that sends an event).
#include "engine/Registry.h"

#include <algorithm>

std::list<void*> COrvoBasic::m_List;
std::mutex COrvoBasic::m_Door;
int32_t COrvoBasic::m_nNumberOfCopies = 0;
std::unordered_map<CString, CFuncDesc*, ob::CStringHash> COrvoBasic::m_ExtFunctionTable;

namespace {

using DoorGuard = std::unique_lock<std::mutex>;

// Raises an event in one interpreter on behalf of the host: an aborted or
// failing handler ends only this delivery.
void DeliverTo(void* target, const CString& name, CArgArray& args) {
    try {
        static_cast<COrvoBasic*>(target)->EventThrow(name, args);
    } catch (...) {
    }
}

}  // namespace

// True when `interpreter` is a live interpreter of this process.
bool COrvoBasic::IsValidInterpreter(void* interpreter) {
    DoorGuard guard(m_Door, std::defer_lock);
    return interpreter && std::find(m_List.begin(), m_List.end(), interpreter) != m_List.end();
}

// Raises an event in every live interpreter, in order of creation. The list
// is copied first and each entry checked again before delivery, because a
// handler may create or free interpreters.
bool COrvoBasic::SendEvent(const CString& name, CArgArray& args) {
    DoorGuard guard(m_Door, std::defer_lock);
    std::vector<void*> targets(m_List.begin(), m_List.end());
    for (void* target : targets)
        if (IsValidInterpreter(target)) DeliverTo(target, name, args);
    return true;
}

// Broadcast with a single argument; a null argument raises nothing.
bool COrvoBasic::SendEvent(const CString& name, CBasicVariable* arg) {
    if (!arg) return false;
    CArgArray args(1, *arg);
    return SendEvent(name, args);
}

bool ob::AddHostFunction(const CString& name, OB_CustomFunction function, int paramCount, int userData) {
    if (name.IsEmpty() || !function) return false;
    CString key = name;
    key.MakeLower();
    if (COrvoBasic::m_ExtFunctionTable.count(key)) return true;
    auto* desc = new CFuncDesc;
    desc->name = key;
    desc->type = ob::FT_CUSTOM;
    desc->custom = function;
    desc->paramCount = paramCount;
    desc->userData = userData;
    COrvoBasic::m_ExtFunctionTable.emplace(key, desc);
    return true;
}

// Adds a host function; the first registration of a name wins.
bool COrvoBasic::AddCustomFunction(const CString& name, OB_CustomFunction function, int paramCount,
                                   int userData) {
    return ob::AddHostFunction(name, function, paramCount, userData);
}

// Calls a host function with this interpreter, the arguments and its user value.
bool COrvoBasic::ExecCustomFunction(const CFuncDesc& desc, CBasicVariable& result, CArgArray& args) {
    if (!desc.custom) {
        ReportError(21);
        return false;
    }
    result = desc.custom(this, args, desc.userData);
    return true;
}

void COrvoBasic::AddToNotifyList() {
    DoorGuard guard(m_Door, std::defer_lock);
    m_List.push_back(this);
}

// Removes the first entry equal to this interpreter; nothing when absent.
void COrvoBasic::RemoveFromNotifyList() {
    DoorGuard guard(m_Door, std::defer_lock);
    auto it = std::find(m_List.begin(), m_List.end(), static_cast<void*>(this));
    if (it != m_List.end()) m_List.erase(it);
}
