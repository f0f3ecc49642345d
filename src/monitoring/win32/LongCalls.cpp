#include "monitoring/win32/LongCalls.h"

#include <objidl.h>

#include <cstdlib>
#include <utility>

#include "controls/win32/PlatformMessageLoop.h"

namespace kestrelguard {

namespace {

/// How long a call may take, in milliseconds, before the program goes on inside it.
constexpr DWORD kLimit = 1500;
constexpr DWORD kTickEvery = 250;
constexpr UINT kTick = WM_APP;

// There is one thread that calls, and one that ticks for it.
std::atomic<CallUnderWay*> inmost = nullptr;
std::atomic<bool> tickerSleeps = false;
/// Never closed: calls are made until the end of the process.
HANDLE wakeTicker = nullptr;

}  // namespace

CallUnderWay::CallUnderWay(const void* identity) noexcept : m_identity(identity), m_outer(inmost) {
    inmost = this;
    if (tickerSleeps.exchange(false)) {
        SetEvent(wakeTicker);
    }
}

CallUnderWay::~CallUnderWay() {
    inmost = m_outer;
}

bool CallUnderWay::IsHeldUp(const void* identity) noexcept {
    for (const CallUnderWay* call = inmost; call != nullptr; call = call->m_outer) {
        if (call->m_isHeldUp && call->m_identity == identity) {
            return true;
        }
    }
    return false;
}

class LongCalls::Filter final : public ComObject<Filter, IMessageFilter> {
 public:
    explicit Filter(LongCalls& calls) : m_calls(calls) {}

    void* Find(REFIID iid) noexcept {
        return iid == IID_IUnknown || iid == __uuidof(IMessageFilter) ? static_cast<IMessageFilter*>(this)
                                                                      : nullptr;
    }
    DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD /*type*/, HTASK /*caller*/, DWORD /*elapsed*/,
                                               LPINTERFACEINFO /*info*/) noexcept override {
        return SERVERCALL_ISHANDLED;
    }
    DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK /*callee*/, DWORD /*elapsed*/,
                                              DWORD /*rejection*/) noexcept override {
        // The call fails, as without a filter.
        return static_cast<DWORD>(-1);
    }
    DWORD STDMETHODCALLTYPE MessagePending(HTASK /*callee*/, DWORD elapsed,
                                           DWORD /*type*/) noexcept override {
        m_calls.MessagePending(elapsed);
        return PENDINGMSG_WAITDEFPROCESS;
    }

 private:
    LongCalls& m_calls;
};

LongCalls::LongCalls() {
    Create(WindowKind{.name = "Kestrelguard.LongCalls"}, WindowFrame{});
    if (wakeTicker == nullptr) {
        wakeTicker = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    }
    Check(CoRegisterMessageFilter(MakeCom<Filter>(*this).Get(), nullptr));
    DWORD id = 0;
    // Without the ticker the program runs as well, and waits where a call stalls.
    if (wakeTicker != nullptr) {
        m_thread = kestrelguard::Handle(CreateThread(nullptr, 0, Tick, this, 0, &id));
    }
}

LongCalls::~LongCalls() {
    CoRegisterMessageFilter(nullptr, nullptr);
    m_ending = true;
    SetEvent(wakeTicker);
    WaitForSingleObject(m_thread.Get(), INFINITE);
}

void LongCalls::Serve(HWND window, std::function<void()> goOn) {
    m_goOn = std::move(goOn);
    m_served = window;
}

void LongCalls::MessagePending(DWORD elapsed) noexcept {
    if (elapsed < kLimit || m_served == nullptr) {
        return;
    }
    LeaveIfGone();
    CallUnderWay* const call = inmost;
    // Without the list of windows there is nothing to go on with.
    if (call != nullptr && call->m_identity != nullptr && !std::exchange(call->m_isHeldUp, true)) {
        m_goOn();
    }
    PlatformMessageLoop().DoEvents();
    LeaveIfGone();
}

void LongCalls::LeaveIfGone() const noexcept {
    if (!IsWindow(m_served)) {
        ExitProcess(EXIT_SUCCESS);
    }
}

DWORD WINAPI LongCalls::Tick(void* self) noexcept {
    LongCalls& calls = *static_cast<LongCalls*>(self);
    while (!calls.m_ending) {
        if (inmost == nullptr) {
            tickerSleeps = true;
            // A call that began in between has seen that this thread sleeps, or is seen here.
            if (inmost == nullptr && !calls.m_ending) {
                WaitForSingleObject(wakeTicker, INFINITE);
            }
            tickerSleeps = false;
        } else if (WaitForSingleObject(wakeTicker, kTickEvery) == WAIT_TIMEOUT && inmost != nullptr) {
            // Also when an earlier one still waits: only a message that has just come wakes the wait. They
            // are left to the message loop: who takes out one kind of message may take WM_QUIT with it.
            PostMessageA(calls.Handle(), kTick, 0, 0);
        }
    }
    return 0;
}

}  // namespace kestrelguard
