// The memory budget and the checks inside long operations.
//
// Every variable of the store and every map entry is attached to the
// interpreter's meter, which each write keeps up to date (a size difference
// added to a counter). What a statement builds or copies before it stores
// anything is counted by MayAllocate until the statement ends (or, for the
// statements of a called function, until the call returns). The budget is
// compared with the sum before each statement and before each such
// allocation, so a script that keeps growing its data ends with
// OB_E_MEMORY_LIMIT before it has the memory, not after.
#include <orvobasic/COrvoBasic.h>

#include <memory>

#include <new>

using namespace ob;

namespace {

// Long-operation work (bytes built, copied or scanned) between two readings
// of the clock: a few hundred microseconds of copying.
constexpr uint64_t kWorkPerClockRead = uint64_t{1} << 20;

// What a table entry costs beyond its key and value: node, hash bucket,
// pointers.
constexpr int64_t kEntryOverhead = 64;

}  // namespace

uint64_t COrvoBasic::MemoryInUse() const {
    int64_t held = m_meter.bytes > 0 ? m_meter.bytes : 0;
    uint64_t flow = m_flowStack.size() * sizeof(CStackData) + m_returnStack.size() * sizeof(uint32_t);
    return static_cast<uint64_t>(held) + m_transient + flow + m_inheritedMemory;
}

bool COrvoBasic::LongOperationAllowed(uint64_t bytes, uint64_t work) {
    if (m_halted) return false;
    if (m_stopRequested.load(std::memory_order_relaxed) ||
        (m_parentStop && m_parentStop->load(std::memory_order_relaxed))) {
        EndRun(OB_E_STOPPED);
        return false;
    }
    m_transient += bytes;
    if (m_budgets.maxMemory && MemoryInUse() > m_budgets.maxMemory) {
        EndRun(OB_E_MEMORY_LIMIT);
        return false;
    }
    m_work += work;
    if (m_budgets.timeoutMs && m_work >= kWorkPerClockRead) {
        m_work = 0;
        if (std::chrono::steady_clock::now() >= m_deadline) {
            EndRun(OB_E_TIMEOUT);
            return false;
        }
    }
    return true;
}

int64_t COrvoBasic::EntryBytes(const CString& key) {
    return static_cast<int64_t>((key.capacity() + 1) * sizeof(char16_t)) + kEntryOverhead;
}

// Puts a new variable into the store, counted on the meter with its name.
void COrvoBasic::AdoptVariable(const CString& key, std::unique_ptr<CBasicVariable> variable) {
    AdoptVariable(key, std::move(variable), BindingFor(key));
}

void COrvoBasic::AdoptVariable(const CString& key, std::unique_ptr<CBasicVariable> variable, Binding& binding) {
    variable->AttachMeter(&m_meter, EntryBytes(key));
    std::unique_ptr<CBasicVariable>& slot = m_variables[key];
    if (binding.spare) {   // the entry was dormant
        binding.spare.reset();
        --m_dormant;
    }
    slot = std::move(variable);
    binding.variable = slot.get();
    binding.slot = &slot;
}

// AdoptVariable of a copy of `value` into the spare entry of `binding`: the
// variable there is made anew in place, so that it is charged and holds
// exactly what a new one would.
void COrvoBasic::ReviveVariable(const CString& key, const CBasicVariable& value, Binding& binding) {
    CBasicVariable* variable = binding.spare.get();
    std::destroy_at(variable);
    std::construct_at(variable, value);
    PlaceSpare(binding, EntryBytes(key));
}

// Puts the spare entry of `binding`, its variable holding its new value,
// back into the store.
void COrvoBasic::PlaceSpare(Binding& binding, int64_t entryBytes) {
    binding.spare->AttachMeter(&m_meter, entryBytes);
    *binding.slot = std::move(binding.spare);
    binding.variable = binding.slot->get();
    --m_dormant;
}

// The run ends as a budget ends it. Whatever the failed allocation was for
// has been unwound by now, so reporting has memory again; if it has not,
// the run still ends, unreported.
void COrvoBasic::OutOfMemory() {
    m_transient = m_transientBase = 0;
    try {
        EndRun(OB_E_NO_MEMORY);
    } catch (const std::bad_alloc&) {
        m_runResult = OB_E_NO_MEMORY;
        m_stop = m_halted = m_exprAbandoned = true;
    }
}
