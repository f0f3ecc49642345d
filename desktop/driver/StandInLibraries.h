#pragma once

#include <windows.h>

#include <string>

#include "desktop/driver/Process.h"

namespace kestrelguard::testing {

/// Makes programs named kestrelguard.exe bind to the wininet.dll in their own folder, as the stand-in's is.
/// For the life of the session.
inline bool BindToOwnWinInet() {
    const wchar_t overrides[] = L"Software\\Wine\\AppDefaults\\kestrelguard.exe\\DllOverrides";
    const wchar_t order[] = L"native,builtin";
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, overrides, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) !=
        ERROR_SUCCESS) {
        return false;
    }
    const bool set = RegSetValueExW(key, L"wininet", 0, REG_SZ, reinterpret_cast<const BYTE*>(order),
                                    sizeof order) == ERROR_SUCCESS;
    RegCloseKey(key);
    return set;
}

}  // namespace kestrelguard::testing
