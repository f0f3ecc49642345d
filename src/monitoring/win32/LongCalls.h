#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <optional>

#include "controls/win32/WindowBase.h"
#include "runtime/win32/Com.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// A call of the program's one thread to another process, from its beginning to its end. Calls lie in each
/// other: while one waits others come in, and their handlers call out again.
class CallUnderWay {
 public:
    /// To a browser, given its identity, or, null, to the list of windows.
    explicit CallUnderWay(const void* identity) noexcept;
    ~CallUnderWay();
    CallUnderWay(const CallUnderWay&) = delete;
    CallUnderWay& operator=(const CallUnderWay&) = delete;

    /// Whether a call to it takes too long and has not come back yet.
    static bool IsHeldUp(const void* identity) noexcept;

 private:
    friend class LongCalls;

    const void* const m_identity;
    CallUnderWay* const m_outer;
    bool m_isHeldUp = false;
};

/// Lives on inside a call that does not come back. It cannot be cut off (Wine waits on), but COM asks its
/// message filter whenever a message arrives during the wait, and a thread sees to it that one arrives now
/// and then as long as a call is under way. Once the call has taken too long its window counts as one that
/// does not answer, the program is told to go on without it, and its messages run inside the wait. The frames
/// below it go on whenever the call returns, and find that others have done their work.
class LongCalls final : private WindowBase {
 public:
    /// For the thread that makes it. Throws RunTimeError.
    LongCalls();
    ~LongCalls() override;
    LongCalls(const LongCalls&) = delete;
    LongCalls& operator=(const LongCalls&) = delete;

    /// From now on messages run inside long calls. `goOn` is told once of each window that holds the program
    /// up, and does not throw. When the program's window has gone inside such a call the process ends:
    /// everything is done by then, and the call may never return.
    void Serve(HWND window, std::function<void()> goOn);

 private:
    class Filter;

    std::optional<LRESULT> OnMessage(UINT, WPARAM, LPARAM) override { return std::nullopt; }
    void MessagePending(DWORD elapsed) noexcept;
    void LeaveIfGone() const noexcept;
    static DWORD WINAPI Tick(void* self) noexcept;

    HWND m_served = nullptr;
    std::function<void()> m_goOn;
    kestrelguard::Handle m_thread;
    std::atomic<bool> m_ending = false;
};

}  // namespace kestrelguard
