// Serialises the uses of one interpreter across threads. Each live
// interpreter has a gate: a lock that the thread holding it may take again,
// taken by whatever uses it from outside (a run, a host event, a timer tick,
// a host query, its destruction). The gate outlives the interpreter, so a
// thread that waited on it while another thread freed the interpreter finds
// it closed.
//
// The holder is recorded explicitly rather than left to a recursive mutex:
// a script runs on a stack of its own (LargeStack.h), and a mutex held
// across that switch would look, to a thread checker that follows each
// stack separately, like a mutex taken by two threads at once.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

class COrvoBasic;

namespace ob {

class ScriptGate {
public:
    // Takes the gate: again at once when this thread holds it; otherwise
    // waits for it when `wait`, else gives up when another thread holds it.
    bool Enter(bool wait);
    void Leave();
    // Open until the interpreter is being destroyed; the holder closes it.
    bool IsOpen();
    void Close();

private:
    std::mutex m_lock;   // guards the fields below; held only for a few instructions
    std::condition_variable m_left;
    std::thread::id m_holder;   // none when free
    unsigned m_depth = 0;
    bool m_open = true;
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
