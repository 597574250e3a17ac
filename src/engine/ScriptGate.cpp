// The gate of one interpreter: a lock its holder may take again.
#include "engine/ScriptGate.h"

namespace ob {

bool ScriptGate::Enter(bool wait) {
    std::thread::id self = std::this_thread::get_id();
    std::unique_lock lock(m_lock);
    if (m_holder != self) {
        if (m_depth && !wait) return false;
        m_left.wait(lock, [this] { return m_depth == 0; });
        m_holder = self;
    }
    ++m_depth;
    return true;
}

void ScriptGate::Leave() {
    {
        std::lock_guard lock(m_lock);
        if (--m_depth) return;
        m_holder = std::thread::id();
    }
    m_left.notify_one();
}

bool ScriptGate::IsOpen() {
    std::lock_guard lock(m_lock);
    return m_open;
}

void ScriptGate::Close() {
    std::lock_guard lock(m_lock);
    m_open = false;
}

}  // namespace ob
