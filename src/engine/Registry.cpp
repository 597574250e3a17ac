// The process-wide list of live interpreters and the host's function table.
//
// Interpreters may live on any number of threads. m_Door guards the list,
// the count of copies and the gates (ScriptGate.h) that serialise the uses
// of each interpreter; it is only ever held for a few instructions, never
// while a script runs, so a handler may create, free or signal interpreters.
// The host's function table has a reader-writer lock of its own: scripts
// look names up in it on every call.
#include "engine/Registry.h"

#include "engine/ScriptGate.h"

#include <algorithm>
#include <atomic>
#include <shared_mutex>
#include <unordered_map>

std::list<void*> COrvoBasic::m_List;
std::mutex COrvoBasic::m_Door;
int32_t COrvoBasic::m_nNumberOfCopies = 0;
std::unordered_map<CString, CFuncDesc*, ob::CStringHash> COrvoBasic::m_ExtFunctionTable;

namespace {

using DoorGuard = std::lock_guard<std::mutex>;

std::unordered_map<const void*, std::shared_ptr<ob::ScriptGate>>& Gates() {
    static std::unordered_map<const void*, std::shared_ptr<ob::ScriptGate>> gates;
    return gates;
}

// Guards m_ExtFunctionTable; the count lets scripts skip the lock while the
// table is empty, as it is for most hosts.
std::shared_mutex g_hostFunctionsLock;
std::atomic<size_t> g_hostFunctionCount{0};

// Gates this thread holds, counted with repetition.
thread_local int t_gatesHeld = 0;

// Empties the host's function table; called under m_Door when the last
// interpreter goes, so that no interpreter is made meanwhile.
void ClearHostFunctions() {
    std::unique_lock lock(g_hostFunctionsLock);
    for (auto& entry : COrvoBasic::m_ExtFunctionTable) delete entry.second;
    COrvoBasic::m_ExtFunctionTable.clear();
    g_hostFunctionCount.store(0);
}

// Raises an event in one interpreter on behalf of the host: an aborted or
// failing handler ends only this delivery.
void DeliverTo(void* target, const CString& name, CArgArray& args) {
    ob::ScriptUse use(target);
    if (!use) return;
    try {
        static_cast<COrvoBasic*>(target)->EventThrow(name, args);
    } catch (...) {
    }
}

}  // namespace

namespace ob {

std::shared_ptr<ScriptGate> FindGate(const void* script) {
    if (!script) return nullptr;
    DoorGuard guard(COrvoBasic::m_Door);
    auto it = Gates().find(script);
    return it == Gates().end() ? nullptr : it->second;
}

ScriptUse::ScriptUse(const void* script, Wait wait) : m_gate(FindGate(script)) {
    if (!m_gate) return;
    if (!m_gate->Enter(wait == Wait::Always || t_gatesHeld == 0)) return;
    ++t_gatesHeld;
    if (m_gate->IsOpen()) {
        m_held = true;
        return;
    }
    --t_gatesHeld;
    m_gate->Leave();
}

ScriptUse::~ScriptUse() {
    if (!m_held) return;
    --t_gatesHeld;
    m_gate->Leave();
}

void ScriptUse::Close() {
    if (m_held) m_gate->Close();
}

const CFuncDesc* FindHostFunction(const CString& lowerName) {
    if (g_hostFunctionCount.load(std::memory_order_acquire) == 0) return nullptr;
    std::shared_lock lock(g_hostFunctionsLock);
    auto it = COrvoBasic::m_ExtFunctionTable.find(lowerName);
    return it == COrvoBasic::m_ExtFunctionTable.end() ? nullptr : it->second;
}

size_t HostFunctionCount() { return g_hostFunctionCount.load(std::memory_order_acquire); }

bool AddHostFunction(const CString& name, OB_CustomFunction function, int paramCount, int userData) {
    if (name.IsEmpty() || !function) return false;
    CString key = name;
    key.MakeLower();
    std::unique_lock lock(g_hostFunctionsLock);
    if (COrvoBasic::m_ExtFunctionTable.count(key)) return true;
    auto desc = std::make_unique<CFuncDesc>();
    desc->name = key;
    desc->type = FT_CUSTOM;
    desc->custom = function;
    desc->paramCount = paramCount;
    desc->userData = userData;
    COrvoBasic::m_ExtFunctionTable.emplace(key, desc.get());
    desc.release();
    g_hostFunctionCount.store(COrvoBasic::m_ExtFunctionTable.size(), std::memory_order_release);
    return true;
}

}  // namespace ob

// True when `interpreter` is a live interpreter of this process.
bool COrvoBasic::IsValidInterpreter(void* interpreter) {
    DoorGuard guard(m_Door);
    return interpreter && Gates().count(interpreter) > 0;
}

// Raises an event in every live interpreter, in order of creation. The list
// is copied first and each entry checked again before delivery, because a
// handler may create or free interpreters, and so may other threads.
bool COrvoBasic::SendEvent(const CString& name, CArgArray& args) {
    std::vector<void*> targets;
    {
        DoorGuard guard(m_Door);
        targets.assign(m_List.begin(), m_List.end());
    }
    for (void* target : targets) DeliverTo(target, name, args);
    return true;
}

// Broadcast with a single argument; a null argument raises nothing.
bool COrvoBasic::SendEvent(const CString& name, CBasicVariable* arg) {
    if (!arg) return false;
    CArgArray args(1, *arg);
    return SendEvent(name, args);
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
    auto gate = std::make_shared<ob::ScriptGate>();
    DoorGuard guard(m_Door);
    m_List.push_back(this);
    Gates()[this] = std::move(gate);
    ++m_nNumberOfCopies;
}

// Removes this interpreter from the list; nothing when absent. When it was
// the last one, the host's function table is emptied.
void COrvoBasic::RemoveFromNotifyList() {
    DoorGuard guard(m_Door);
    if (!Gates().erase(this)) return;
    auto it = std::find(m_List.begin(), m_List.end(), static_cast<void*>(this));
    if (it != m_List.end()) m_List.erase(it);
    if (--m_nNumberOfCopies == 0) ClearHostFunctions();
}
