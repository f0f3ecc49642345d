#pragma once

#include <windows.h>

#include "runtime/RunTimeError.h"

/// The functions of WinINet that came later than the cache itself and are looked up when first needed.
namespace kestrelguard::wininet {

/// The library whose functions this program is bound to; a look-up by name may find another one of that name
/// in the process.
HMODULE Library() noexcept;

/// A function that may not be there. Throws kEntryPointNotFound.
template <class Function>
Function* EntryPoint(const char* name) {
    const HMODULE library = Library();
    const FARPROC address = library == nullptr ? nullptr : GetProcAddress(library, name);
    if (address == nullptr) {
        throw RunTimeError(RunTimeError::kEntryPointNotFound);
    }
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

/// The function of that name; its older name without the "A" where that is all there is. Answers 0, or the
/// thread's last error, taken before anything else can set it. Throws kEntryPointNotFound.
DWORD DeleteUrlCacheEntryA(const char* address);

}  // namespace kestrelguard::wininet
