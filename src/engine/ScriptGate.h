// Serialises the uses of one interpreter across threads. Each live
// interpreter has a gate: a recursive lock taken by whatever uses it from
// outside (a run, a host event, a timer tick, a host query, its
// destruction). The gate outlives the interpreter, so a thread that waited
// on it while another thread freed the interpreter finds it closed.
#pragma once

#include <memory>
#include <mutex>

class COrvoBasic;

namespace ob {

struct ScriptGate {
    std::recursive_mutex use;
    bool open = true;   // false once the interpreter is being destroyed; read and written under `use`
};

// Holds an interpreter's gate for its lifetime. A thread that holds no gate
// waits for one that another thread holds; a thread that already holds a
// gate (a host function, a handler, a nested run) only tries, so two threads
// can never wait on each other: a busy interpreter is then skipped.
class ScriptUse {
public:
    enum class Wait { Auto, Always };

    explicit ScriptUse(const void* script, Wait wait = Wait::Auto);
    ~ScriptUse();
    ScriptUse(const ScriptUse&) = delete;
    ScriptUse& operator=(const ScriptUse&) = delete;

    // True when the interpreter is live and this thread holds its gate.
    explicit operator bool() const { return m_held; }
    // Marks the interpreter as being destroyed: later uses find it closed.
    void Close();

private:
    std::shared_ptr<ScriptGate> m_gate;
    bool m_held = false;
};

// Gates of live interpreters, kept by the registry.
std::shared_ptr<ScriptGate> OpenGate(const void* script);
std::shared_ptr<ScriptGate> FindGate(const void* script);
void ForgetGate(const void* script);

}  // namespace ob
