#include "monitoring/win32/Answering.h"

#include <objbase.h>

#include <algorithm>
#include <list>
#include <memory>
#include <new>
#include <unordered_map>
#include <utility>

#include "monitoring/win32/TrialCall.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/FrameAnswers.h"

namespace kestrelguard {

namespace {

/// How long a thread may take, in milliseconds. One that is merely busy keeps its sink and its place.
constexpr UINT kPatience = 250;
/// How long a trial call may. It is made where nothing else tells, and to one that hangs only once.
constexpr DWORD kPatienceForCall = 750;

struct Search {
    // One of them is of the process that is looked for.
    WORD one;
    WORD other;
    bool found = false;
    bool answers = true;
};

BOOL CALLBACK LookAt(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    const WORD low = LOWORD(process);
    if ((low == search.one || low == search.other) && process != GetCurrentProcessId() &&
        IsWindowVisible(window) != FALSE) {
        search.found = true;
        search.answers = FrameAnswers(window, kPatience);
    }
    return search.answers ? TRUE : FALSE;
}

struct KnownFrame {
    HWND frame;
    int times;
    /// Calls come back although it does not answer: one out of sight may belong to a thread that never looks
    /// for messages.
    bool saysNothing = false;
};
std::unordered_map<const void*, KnownFrame>& Frames() {
    static std::unordered_map<const void*, KnownFrame> frames;
    return frames;
}
/// Until when, as GetTickCount counts, browsers count as ones that do not answer.
std::unordered_map<const void*, DWORD>& Silent() {
    static std::unordered_map<const void*, DWORD> silent;
    return silent;
}

bool FrameOrCallAnswers(IUnknown* identity, HWND frame) {
    if (IsWindowVisible(frame)) {
        return FrameAnswers(frame, kPatience);
    }
    const auto known = Frames().find(identity);
    const bool saysNothing = known != Frames().end() && known->second.saysNothing;
    if (!saysNothing && FrameAnswers(frame, kPatience)) {
        return true;
    }
    const auto reference = ReferenceTo(identity);
    const bool returns = !reference || TrialCallReturns(*reference, kPatienceForCall);
    if (known != Frames().end()) {
        known->second.saysNothing = returns;
    }
    return returns;
}

constexpr DWORD kAskAgainAfter = 1000;
constexpr DWORD kCallAgainAfter = 5000;
bool anythingCutOff = false;

struct Kept {
    ComPtr<IUnknown> object;
    DesktopWindowPtr window;
    std::shared_ptr<WindowSink> sink;

    bool Answers() const { return window ? window->Answers() : WindowAnswers(object.Get(), nullptr); }
};
/// Never destroyed: what is in it at the end of the program cannot be let go.
std::list<Kept>& Store() {
    static std::list<Kept>& store = *std::make_unique<std::list<Kept>>().release();
    return store;
}

template <class Which>
void ReleaseThose(Which which) noexcept {
    // Letting go lets other calls in: the search begins anew after each.
    for (auto one = std::find_if(Store().begin(), Store().end(), which); one != Store().end();
         one = std::find_if(Store().begin(), Store().end(), which)) {
        std::list<Kept> released;
        released.splice(released.begin(), Store(), one);
    }
}

}  // namespace

bool Servers::Answer(IUnknown* object) {
    const auto reference = ReferenceTo(object);
    if (!reference) {
        return true;
    }
    if (const auto asked = m_asked.find(reference->Place()); asked != m_asked.end()) {
        return asked->second;
    }
    Search search{reference->one, reference->other};
    EnumWindows(LookAt, reinterpret_cast<LPARAM>(&search));
    const bool answers = search.found ? search.answers : TrialCallReturns(*reference, kPatienceForCall);
    m_asked.emplace(reference->Place(), answers);
    return answers;
}

bool IsSilent(const void* identity) {
    if (CallUnderWay::IsHeldUp(identity)) {
        return true;
    }
    const auto silent = Silent().find(identity);
    if (silent == Silent().end()) {
        return false;
    }
    if (static_cast<LONG>(silent->second - GetTickCount()) > 0) {
        return true;
    }
    Silent().erase(silent);
    return false;
}

bool WindowAnswers(IUnknown* identity, HWND frame) {
    if (IsSilent(identity)) {
        return false;
    }
    const bool answers = frame == nullptr ? Servers().Answer(identity) : FrameOrCallAnswers(identity, frame);
    if (!answers) {
        Silent()[identity] = GetTickCount() + kAskAgainAfter;
    }
    return answers;
}

void CallWindowOutOfSight(IUnknown* browser, void (*call)(void*), void* what) {
    const ComPtr<IUnknown> identity = IdentityOf(browser);
    if (CallUnderWay::IsHeldUp(identity.Get())) {
        throw RunTimeError(RPC_E_CALL_CANCELED);
    }
    const CallUnderWay underWay(identity.Get());
    try {
        call(what);
    } catch (const RunTimeError& error) {
        if (error.Number() == RPC_E_CALL_CANCELED) {
            anythingCutOff = true;
            Silent()[identity.Get()] = GetTickCount() + kCallAgainAfter;
        }
        throw;
    }
}

void Keep(ComPtr<IUnknown> object, DesktopWindowPtr window, std::shared_ptr<WindowSink> sink) noexcept {
    const auto isHeld = [&](const Kept& one) {
        return one.object == object && (one.window || !window) && !sink;
    };
    if (std::any_of(Store().begin(), Store().end(), isHeld)) {
        // This reference is not the last.
        return;
    }
    try {
        Store().push_back({object, std::move(window), std::move(sink)});
    } catch (const std::bad_alloc&) {
        // Better held without a note than let go.
        static_cast<void>(object.Detach());
    }
}

DesktopWindowPtr KeptWindow(const void* identity) {
    for (const Kept& one : Store()) {
        if (one.window && one.window->Identity() == identity) {
            return one.window;
        }
    }
    return nullptr;
}

void ReleaseAnswering() noexcept {
    ReleaseThose([](const Kept& one) { return one.Answers(); });
}

void Release(const void* identity) noexcept {
    ReleaseThose([identity](const Kept& one) { return one.object.Get() == identity; });
}

void RememberFrame(const void* identity, HWND frame) {
    KnownFrame& known = Frames().try_emplace(identity, KnownFrame{frame, 0}).first->second;
    known.frame = frame;
    ++known.times;
}

void ForgetFrame(const void* identity) noexcept {
    const auto found = Frames().find(identity);
    if (found != Frames().end() && --found->second.times == 0) {
        Frames().erase(found);
    }
}

HWND FrameOf(IUnknown* browser) noexcept {
    const auto found = Frames().find(IdentityOf(browser).Get());
    return found == Frames().end() ? nullptr : found->second.frame;
}

bool AnythingHangs() noexcept {
    return anythingCutOff || !Store().empty() || TrialCallsUnderWay();
}

}  // namespace kestrelguard
