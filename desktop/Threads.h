#pragma once

#include <windows.h>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>

#include "runtime/win32/Owners.h"

namespace kestrelguard::desktop {

/// Work that another thread does; must not throw.
using Task = std::function<void()>;

/// A lock that its holder may take again.
class Lock {
 public:
    Lock() noexcept { InitializeCriticalSection(&m_section); }
    ~Lock() { DeleteCriticalSection(&m_section); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

 private:
    friend class Hold;
    CRITICAL_SECTION m_section;
};

/// Holds a lock for as long as it lives. Never call out to another process while one lives.
class Hold {
 public:
    explicit Hold(Lock& lock) noexcept : m_lock(lock) { EnterCriticalSection(&m_lock.m_section); }
    ~Hold() { LeaveCriticalSection(&m_lock.m_section); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

 private:
    Lock& m_lock;
};

/// Something that happens once and stays so.
class Signal {
 public:
    Signal() noexcept : m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    void Set() noexcept { SetEvent(m_event.Get()); }
    /// Whether it has happened, or happens within the limit (milliseconds).
    bool Wait(DWORD limit) const noexcept {
        return WaitForSingleObject(m_event.Get(), limit) == WAIT_OBJECT_0;
    }
    HANDLE Get() const noexcept { return m_event.Get(); }

 private:
    Handle m_event;
};

/// A passage that can be closed: whoever comes to it waits until it is open again. Open at first.
class Gate {
 public:
    Gate() noexcept : m_open(CreateEventW(nullptr, TRUE, TRUE, nullptr)) {}
    void Close() noexcept { ResetEvent(m_open.Get()); }
    void Open() noexcept { SetEvent(m_open.Get()); }
    void Pass() noexcept {
        ++m_waiting;
        WaitForSingleObject(m_open.Get(), INFINITE);
        --m_waiting;
    }
    /// How many wait before it.
    int Waiting() const noexcept { return m_waiting; }

 private:
    Handle m_open;
    std::atomic<int> m_waiting{0};
};

/// Runs the task on a thread of its own in the multi-threaded apartment. The thread is nobody's: what the
/// task needs it keeps alive itself. Throws std::runtime_error when the system gives no thread.
void RunDetached(Task task);

/// Does tasks one after the other on a thread that starts with the first one. When the queue goes away,
/// the task in hand is finished and those after it are dropped.
class WorkQueue {
 public:
    WorkQueue();
    ~WorkQueue();
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    void Post(Task task);
    /// Tasks that wait behind the one in hand.
    std::size_t Waiting() const;
    /// Whether nothing is in hand and nothing waits, now or within the limit (milliseconds).
    bool WaitIdle(DWORD limit) const;
    /// Drops what waits and takes nothing more.
    void Stop();

 private:
    struct State;
    std::shared_ptr<State> m_state;
};

/// A thread that owns windows and pumps their messages. It never calls another process, so its windows
/// always answer.
class UiThread {
 public:
    UiThread();
    ~UiThread();
    UiThread(const UiThread&) = delete;
    UiThread& operator=(const UiThread&) = delete;

    /// Runs the task on the thread and waits for it.
    void Call(const Task& task) const;

 private:
    Handle m_thread;
    DWORD m_threadId = 0;
    HWND m_door = nullptr;
    Signal m_ready;

    static DWORD WINAPI Run(void* self) noexcept;
};

}  // namespace kestrelguard::desktop
