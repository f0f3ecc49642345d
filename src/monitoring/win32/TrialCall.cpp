#include "monitoring/win32/TrialCall.h"

#include <servprov.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "runtime/win32/Owners.h"

namespace kestrelguard {

namespace {

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

bool ToBeginning(IStream& stream) {
    return SUCCEEDED(stream.Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
}

/// A call that was not back in time counts as an answer once it has come, if it began so many milliseconds
/// ago at most: whoever takes calls in only now and then would miss the time again and again.
constexpr DWORD kStillCounts = 5000;

/// A thread whose call was not back in time.
struct Waiting {
    std::uint32_t place;
    DWORD since;
    Handle thread;
};
std::vector<Waiting>& AllWaiting() {
    static std::vector<Waiting> waiting;
    return waiting;
}

bool HasEnded(const Handle& thread, DWORD patience) {
    return WaitForSingleObject(thread.Get(), patience) != WAIT_TIMEOUT;
}

DWORD WINAPI Call(void* marshalled) noexcept {
    auto stream = ComPtr<IStream>::Attach(static_cast<IStream*>(marshalled));
    if (SUCCEEDED(CoInitialize(nullptr))) {
        ComPtr<IUnknown> object;
        if (SUCCEEDED(CoUnmarshalInterface(stream.Get(), IID_IUnknown, object.PutVoid()))) {
            // What no reference to it has asked for yet: the object itself has to answer.
            static_cast<void>(object.As<IServiceProvider>());
        }
        object.Reset();
        stream.Reset();
        CoUninitialize();
    }
    return 0;
}

}  // namespace

std::optional<ForeignReference> ReferenceTo(IUnknown* object) {
    // Only what stands for an object of another process has this interface.
    const auto proxy = ComPtr<IUnknown>(object).As<IClientSecurity>();
    if (!proxy) {
        return std::nullopt;
    }
    ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put())) ||
        FAILED(CoMarshalInterface(stream.Get(), IID_IDispatch, object, MSHCTX_LOCAL, nullptr,
                                  MSHLFLAGS_TABLEWEAK)) ||
        !ToBeginning(*stream)) {
        return std::nullopt;
    }
    StandardReference reference{};
    ULONG read = 0;
    if (FAILED(stream->Read(&reference, sizeof(reference), &read)) || read != sizeof(reference) ||
        reference.signature != kReferenceSignature || reference.kind != kStandardKind ||
        !ToBeginning(*stream)) {
        return std::nullopt;
    }
    return ForeignReference{std::move(stream), reference.interfacePointer.Data2,
                            reference.interfacePointer.Data3};
}

bool TrialCallReturns(const ForeignReference& reference, DWORD patience) {
    const DWORD now = GetTickCount();
    const auto samePlace =
        std::find_if(AllWaiting().begin(), AllWaiting().end(),
                     [&reference](const Waiting& one) { return one.place == reference.Place(); });
    if (samePlace != AllWaiting().end()) {
        if (!HasEnded(samePlace->thread, 0)) {
            return false;
        }
        const bool counts = now - samePlace->since <= kStillCounts;
        AllWaiting().erase(samePlace);
        if (counts) {
            return true;
        }
    }
    ComPtr<IStream> stream = reference.marshalled;
    DWORD id = 0;
    Handle thread(CreateThread(nullptr, 0, Call, stream.Get(), 0, &id));
    if (!thread) {
        return true;
    }
    // The thread's own from now on.
    static_cast<void>(stream.Detach());
    if (HasEnded(thread, patience)) {
        return true;
    }
    AllWaiting().push_back({reference.Place(), now, std::move(thread)});
    return false;
}

bool TrialCallsUnderWay() noexcept {
    return std::any_of(AllWaiting().begin(), AllWaiting().end(),
                       [](const Waiting& one) { return !HasEnded(one.thread, 0); });
}

}  // namespace kestrelguard
