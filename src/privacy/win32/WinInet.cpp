#include "privacy/win32/WinInet.h"

#include <wininet.h>

namespace kestrelguard::wininet {

namespace {

using DeleteEntry = BOOL WINAPI(LPCSTR);

DeleteEntry* DeletionEntryPoint() {
    try {
        return EntryPoint<DeleteEntry>("DeleteUrlCacheEntryA");
    } catch (const RunTimeError&) {
        return EntryPoint<DeleteEntry>("DeleteUrlCacheEntry");
    }
}

}  // namespace

HMODULE Library() noexcept {
    MEMORY_BASIC_INFORMATION place{};
    const auto function = reinterpret_cast<const void*>(&::FindFirstUrlCacheEntryA);
    return VirtualQuery(function, &place, sizeof place) == 0 ? nullptr
                                                             : static_cast<HMODULE>(place.AllocationBase);
}

DWORD DeleteUrlCacheEntryA(const char* address) {
    static DeleteEntry* const function = DeletionEntryPoint();
    if (function(address) != FALSE) {
        return ERROR_SUCCESS;
    }
    const DWORD error = GetLastError();
    return error != ERROR_SUCCESS ? error : static_cast<DWORD>(ERROR_GEN_FAILURE);
}

}  // namespace kestrelguard::wininet
