#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "desktop/Threads.h"

namespace kestrelguard::desktop {

/// An object that clients call.
class Callee {
 public:
    virtual ~Callee() = default;
    /// Cuts its clients off: every later call of theirs fails.
    virtual void Disconnect() noexcept = 0;
};

/// What goes wrong with one call.
struct Fault {
    /// What the call answers; it does nothing else then. S_OK: it goes its way.
    HRESULT answer = S_OK;
    /// Whether the object cuts its clients off before it answers.
    bool disconnects = false;
    /// Runs first, while the client waits.
    Task before;
};

/// All calls of clients into this process, counted, so that one of them can go wrong.
class Faults {
 public:
    static Faults& Here();

    /// Counts from 0 from now on; the call of that number meets the fault. -1: none does.
    void Arm(int position = -1, Fault fault = {});
    /// Ends that.
    void Disarm();
    /// The calls since `Arm`, by name.
    std::vector<std::string> Calls() const;

 private:
    friend class Watch;
    /// Counts a call; what happens to it.
    Fault Meet(const char* name);

    mutable Lock m_lock;
    bool m_armed = false;
    int m_position = -1;
    Fault m_fault;
    std::vector<std::string> m_calls;
};

/// One kind of call that clients make to one object: counted, and made to go wrong on demand. From any
/// thread.
class Watch {
 public:
    /// `name` is a literal.
    explicit Watch(const char* name) : m_name(name) {}

    int Calls() const;
    void ResetCalls();
    /// Makes the next `times` calls answer `hr`; -1: all from now on; 0: none.
    void Fail(HRESULT hr, int times);
    /// Runs before the next `times` calls are answered, on the thread of the call.
    void Before(Task task, int times);
    /// Lets no call be answered until `LetGo`.
    void Stall();
    void LetGo();
    bool Stalls() const;
    /// How many calls wait.
    int Stalled() const { return m_gate.Waiting(); }

    /// A call has come: what it has to answer, which is S_OK when it may go its way.
    HRESULT Enter(Callee& callee);

 private:
    const char* const m_name;
    mutable Lock m_lock;
    int m_calls = 0;
    HRESULT m_failure = S_OK;
    int m_failures = 0;
    Task m_before;
    int m_beforeTimes = 0;
    bool m_stalls = false;
    Gate m_gate;
};

}  // namespace kestrelguard::desktop
