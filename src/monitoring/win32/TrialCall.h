#pragma once

#include <windows.h>

#include <objidl.h>
#include <unknwn.h>

#include <cstdint>
#include <optional>

#include "runtime/win32/Com.h"

namespace kestrelguard {

/// A weak reference to an object of another process, and where that lives. Made up on this side alone,
/// without a call.
struct ForeignReference {
    /// Marshalled, for another thread to read from its beginning.
    ComPtr<IStream> marshalled;
    /// The low halves of the numbers of the object's process and of its apartment. Which is first differs.
    WORD one;
    WORD other;

    /// The same for all objects of an apartment.
    std::uint32_t Place() const { return std::uint32_t{one} << 16 | other; }
};

/// For an object that came as IDispatch, as browsers do: asking for another interface would be a call. None
/// for an object of this apartment, and when COM will not say.
std::optional<ForeignReference> ReferenceTo(IUnknown* object);

/// Whether calls to an object come back, found out by one that a thread of its own makes: no window says it
/// of a process that has none on the screen. False when it is not back within `patience` milliseconds; it
/// goes on waiting then, and as long as it does no other one is made to the same place. True also for a call
/// that fails, and when there is no thread to make it.
bool TrialCallReturns(const ForeignReference& reference, DWORD patience);

/// Whether such a call has not come back yet.
bool TrialCallsUnderWay() noexcept;

}  // namespace kestrelguard
