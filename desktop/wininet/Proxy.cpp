/// The wininet.dll of the stand-in desktop. It hands everything to the platform's own one and evens out one
/// difference: Wine takes the search pattern "0" at its word and lists nothing, where Windows ignores it.
///
/// Environment variables of the program that loads it, for tests:
///   KESTRELGUARD_WININET_LOG=FILE     each call of the functions below is appended to FILE as one line
///   KESTRELGUARD_WININET_CIRCLE=1     the enumeration of entries starts again after the last one, for ever
///   KESTRELGUARD_WININET_MADE=N       the cache holds N made-up entries and nothing else
///   KESTRELGUARD_WININET_GROUPS=N     there are N cache groups (the platform has none)
///   KESTRELGUARD_WININET_LOCKED=TEXT  entries whose address contains TEXT cannot be deleted
///   KESTRELGUARD_WININET_FAIL=N       the Nth logged call, counted from 1, fails with "access denied"
#include <windows.h>

#include <wininet.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <string>

namespace {

struct Export {
    const char* name;
    WORD ordinal;
};

constexpr Export kExports[] = {
#include "exports.inc"
};

/// The platform's own library, whatever lies beside the program.
HMODULE RealLibrary() {
    static const HMODULE library = [] {
        char path[MAX_PATH + sizeof "\\wininet.dll"] = {};
        GetSystemDirectoryA(path, MAX_PATH);
        std::strcat(path, "\\wininet.dll");
        return LoadLibraryA(path);
    }();
    return library;
}

[[noreturn]] void Missing(const char* name) {
    OutputDebugStringA(name);
    OutputDebugStringA(": the platform's wininet.dll does not have it\n");
    TerminateProcess(GetCurrentProcess(), 0xC0000139);
    for (;;) {
        Sleep(INFINITE);
    }
}

template <class Function>
Function* Real(const char* name) {
    const FARPROC address = GetProcAddress(RealLibrary(), name);
    if (address == nullptr) {
        Missing(name);
    }
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

const char* Setting(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? nullptr : value;
}

/// A number; 0 when it is not set.
int NumberSetting(const char* name) {
    const char* const value = Setting(name);
    return value == nullptr ? 0 : static_cast<int>(std::strtol(value, nullptr, 10));
}

std::string Quoted(const char* text) {
    return text == nullptr ? "null" : '"' + std::string(text) + '"';
}

std::string Buffer(const void* buffer) {
    return buffer == nullptr ? " null" : " buffer";
}

/// Writes one call down; true when this one is to fail.
bool Call(const std::string& line) {
    static int calls = 0;
    ++calls;
    if (const char* const file = Setting("KESTRELGUARD_WININET_LOG")) {
        const HANDLE log = CreateFileA(file, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                       OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (log != INVALID_HANDLE_VALUE) {
            const std::string text = line + "\n";
            DWORD written = 0;
            WriteFile(log, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
            CloseHandle(log);
        }
    }
    if (NumberSetting("KESTRELGUARD_WININET_FAIL") == calls) {
        SetLastError(ERROR_ACCESS_DENIED);
        return true;
    }
    return false;
}

GROUPID GroupCount() {
    return NumberSetting("KESTRELGUARD_WININET_GROUPS");
}

bool Locked(const char* address) {
    const char* const locked = Setting("KESTRELGUARD_WININET_LOCKED");
    return locked != nullptr && address != nullptr && std::strstr(address, locked) != nullptr;
}

/// The enumeration that goes on behind a handle which has come to its end once, by that handle. The program
/// under test walks the cache on one thread.
std::map<HANDLE, HANDLE>& Circles() {
    static std::map<HANDLE, HANDLE> circles;
    return circles;
}

/// The enumeration of the made-up entries.
char madeWalk;
int nextMade = 0;

int MadeEntries() {
    return NumberSetting("KESTRELGUARD_WININET_MADE");
}

/// The next made-up entry as the platform would hand it over.
bool FetchMade(INTERNET_CACHE_ENTRY_INFOA* entry, DWORD* size) {
    if (nextMade >= MadeEntries()) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return false;
    }
    const std::string address = "http://made.up/" + std::to_string(nextMade + 1);
    const DWORD needed = sizeof *entry + address.size() + 1;
    if (entry == nullptr || *size < needed) {
        *size = needed;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return false;
    }
    *entry = INTERNET_CACHE_ENTRY_INFOA{};
    entry->dwStructSize = needed;
    entry->CacheEntryType = NORMAL_CACHE_ENTRY;
    entry->lpszSourceUrlName = reinterpret_cast<char*>(entry + 1);
    std::memcpy(entry->lpszSourceUrlName, address.c_str(), address.size() + 1);
    *size = needed;
    ++nextMade;
    return true;
}

/// The handle of the made-up groups.
char groupWalk;
GROUPID lastGroup = 0;

}  // namespace

extern "C" {

/// The address of the platform's function of a stub's number. Called by PassOn.S.
void* real_function(unsigned number) {
    static void* addresses[std::size(kExports)];
    if (addresses[number] == nullptr) {
        const DWORD error = GetLastError();
        const Export& wanted = kExports[number];
        const char* const name = wanted.name != nullptr ? wanted.name : MAKEINTRESOURCEA(wanted.ordinal);
        addresses[number] = reinterpret_cast<void*>(GetProcAddress(RealLibrary(), name));
        if (addresses[number] == nullptr) {
            Missing(wanted.name != nullptr ? wanted.name : "a function without name");
        }
        SetLastError(error);
    }
    return addresses[number];
}

HANDLE WINAPI Proxy_FindFirstUrlCacheEntryA(const char* pattern, INTERNET_CACHE_ENTRY_INFOA* entry,
                                            DWORD* size) {
    static const auto real = Real<decltype(FindFirstUrlCacheEntryA)>("FindFirstUrlCacheEntryA");
    if (Call("FindFirstUrlCacheEntryA " + Quoted(pattern) + Buffer(entry))) {
        return nullptr;
    }
    if (MadeEntries() > 0) {
        nextMade = 0;
        return FetchMade(entry, size) ? &madeWalk : nullptr;
    }
    const bool ignored = pattern != nullptr && std::strcmp(pattern, "0") == 0;
    return real(ignored ? nullptr : pattern, entry, size);
}

BOOL WINAPI Proxy_FindNextUrlCacheEntryA(HANDLE find, INTERNET_CACHE_ENTRY_INFOA* entry, DWORD* size) {
    static const auto real = Real<decltype(FindNextUrlCacheEntryA)>("FindNextUrlCacheEntryA");
    static const auto first = Real<decltype(FindFirstUrlCacheEntryA)>("FindFirstUrlCacheEntryA");
    if (Call("FindNextUrlCacheEntryA" + Buffer(entry))) {
        return FALSE;
    }
    if (find == &madeWalk) {
        return FetchMade(entry, size);
    }
    const bool circle = Setting("KESTRELGUARD_WININET_CIRCLE") != nullptr;
    const auto goesOn = circle ? Circles().find(find) : Circles().end();
    const HANDLE current = circle && goesOn != Circles().end() ? goesOn->second : find;
    if (real(current, entry, size)) {
        return TRUE;
    }
    if (!circle || GetLastError() != ERROR_NO_MORE_ITEMS) {
        return FALSE;
    }
    const HANDLE again = first(nullptr, entry, size);
    if (again == nullptr) {
        return FALSE;
    }
    if (current != find) {
        static const auto close = Real<decltype(FindCloseUrlCache)>("FindCloseUrlCache");
        close(current);
    }
    Circles()[find] = again;
    return TRUE;
}

BOOL WINAPI Proxy_FindCloseUrlCache(HANDLE find) {
    static const auto real = Real<decltype(FindCloseUrlCache)>("FindCloseUrlCache");
    if (Call(find == nullptr ? "FindCloseUrlCache null" : "FindCloseUrlCache")) {
        return FALSE;
    }
    if (find == &madeWalk) {
        return TRUE;
    }
    if (Setting("KESTRELGUARD_WININET_CIRCLE") != nullptr) {
        const auto circle = Circles().find(find);
        if (circle != Circles().end()) {
            real(circle->second);
            Circles().erase(circle);
        }
    }
    return real(find);
}

BOOL WINAPI Proxy_DeleteUrlCacheEntryA(const char* address) {
    static const auto real = Real<decltype(DeleteUrlCacheEntryA)>("DeleteUrlCacheEntryA");
    if (Call("DeleteUrlCacheEntryA " + Quoted(address))) {
        return FALSE;
    }
    if (Locked(address)) {
        SetLastError(ERROR_SHARING_VIOLATION);
        return FALSE;
    }
    return real(address);
}

BOOL WINAPI Proxy_GetUrlCacheEntryInfoA(const char* address, INTERNET_CACHE_ENTRY_INFOA* entry, DWORD* size) {
    static const auto real = Real<decltype(GetUrlCacheEntryInfoA)>("GetUrlCacheEntryInfoA");
    if (Call("GetUrlCacheEntryInfoA " + Quoted(address))) {
        return FALSE;
    }
    return real(address, entry, size);
}

HANDLE WINAPI Proxy_FindFirstUrlCacheGroup(DWORD flags, DWORD filter, void* condition, DWORD conditionSize,
                                           GROUPID* group, void* reserved) {
    static const auto real = Real<decltype(FindFirstUrlCacheGroup)>("FindFirstUrlCacheGroup");
    if (Call("FindFirstUrlCacheGroup " + std::to_string(flags) + " " + std::to_string(filter) +
             Buffer(condition) + " " + std::to_string(conditionSize) + Buffer(reserved))) {
        return nullptr;
    }
    if (GroupCount() == 0) {
        return real(flags, filter, condition, conditionSize, group, reserved);
    }
    lastGroup = 1;
    *group = lastGroup;
    return &groupWalk;
}

BOOL WINAPI Proxy_FindNextUrlCacheGroup(HANDLE find, GROUPID* group, void* reserved) {
    static const auto real = Real<decltype(FindNextUrlCacheGroup)>("FindNextUrlCacheGroup");
    if (Call("FindNextUrlCacheGroup" + Buffer(reserved))) {
        return FALSE;
    }
    if (find != &groupWalk) {
        return real(find, group, reserved);
    }
    if (lastGroup >= GroupCount()) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    *group = ++lastGroup;
    return TRUE;
}

BOOL WINAPI Proxy_DeleteUrlCacheGroup(GROUPID group, DWORD flags, void* reserved) {
    static const auto real = Real<decltype(DeleteUrlCacheGroup)>("DeleteUrlCacheGroup");
    if (Call("DeleteUrlCacheGroup " + std::to_string(group) + " " + std::to_string(flags) +
             Buffer(reserved))) {
        return FALSE;
    }
    return GroupCount() > 0 ? TRUE : real(group, flags, reserved);
}

}  // extern "C"
