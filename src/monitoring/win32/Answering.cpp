#include "monitoring/win32/Answering.h"

#include <objbase.h>

#include <algorithm>
#include <list>
#include <memory>
#include <new>
#include <unordered_map>
#include <utility>

#include "runtime/RunTimeError.h"
#include "runtime/win32/FrameAnswers.h"

namespace kestrelguard {

namespace {

/// How long a thread may take, in milliseconds. One that is merely busy keeps its sink and its place.
constexpr UINT kPatience = 250;

/// The head of a marshalled reference, as it stands in the stream.
struct StandardReference {
    DWORD signature;
    DWORD kind;
    GUID iid;
    DWORD flags;
    DWORD publicReferences;
    ULONGLONG apartment;
    ULONGLONG object;
    GUID interfacePointer;
};
static_assert(sizeof(StandardReference) == 64);
constexpr DWORD kReferenceSignature = 0x574F454D;  // "MEOW"
constexpr DWORD kStandardKind = 1;

/// The reference to an object of another process; false for an object of this one, and when COM will not say.
bool ReferenceTo(IUnknown* object, StandardReference& reference) {
    // Only what stands for an object of another process has this interface.
    const auto proxy = ComPtr<IUnknown>(object).As<IClientSecurity>();
    if (!proxy) {
        return false;
    }
    ComPtr<IStream> stream;
    // A weak reference is made up on this side alone.
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put())) ||
        FAILED(CoMarshalInterface(stream.Get(), IID_IDispatch, object, MSHCTX_LOCAL, nullptr,
                                  MSHLFLAGS_TABLEWEAK))) {
        return false;
    }
    ULONG read = 0;
    const LARGE_INTEGER start{};
    return SUCCEEDED(stream->Seek(start, STREAM_SEEK_SET, nullptr)) &&
           SUCCEEDED(stream->Read(&reference, sizeof(reference), &read)) && read == sizeof(reference) &&
           reference.signature == kReferenceSignature && reference.kind == kStandardKind;
}

struct Search {
    // The low halves of the process's number are in the reference, in one of these places.
    WORD one;
    WORD other;
    bool answers = true;
};

BOOL CALLBACK LookAt(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    const WORD low = LOWORD(process);
    if ((low == search.one || low == search.other) && process != GetCurrentProcessId() &&
        IsWindowVisible(window) != FALSE && !FrameAnswers(window, kPatience)) {
        search.answers = false;
    }
    return search.answers ? TRUE : FALSE;
}

struct KnownFrame {
    HWND frame;
    int times;
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
    StandardReference reference{};
    if (!ReferenceTo(object, reference)) {
        return true;
    }
    Search search{reference.interfacePointer.Data2, reference.interfacePointer.Data3};
    const std::uint32_t server = std::uint32_t{search.one} << 16 | search.other;
    if (const auto asked = m_asked.find(server); asked != m_asked.end()) {
        return asked->second;
    }
    EnumWindows(LookAt, reinterpret_cast<LPARAM>(&search));
    m_asked.emplace(server, search.answers);
    return search.answers;
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
    // One out of sight may belong to a thread that never looks for messages.
    const bool answers = frame == nullptr ? Servers().Answer(identity)
                                          : !IsWindowVisible(frame) || FrameAnswers(frame, kPatience);
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
    return anythingCutOff || !Store().empty();
}

}  // namespace kestrelguard
