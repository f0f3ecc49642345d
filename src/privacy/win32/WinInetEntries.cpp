#include "privacy/win32/WinInetEntries.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "privacy/CacheEntryDetails.h"
#include "privacy/win32/WinInet.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

static_assert(sizeof(INTERNET_CACHE_ENTRY_INFOA) == 80);

/// Nearly every entry's record fits; a larger one is asked for a second time.
constexpr DWORD kBufferSize = 4096;

/// The room for a text of the system's for an error, which does not cut one that is too long.
constexpr DWORD kMessageSize = 200;

template <class Format>
std::wstring Formatted(Format format, DWORD style, const SYSTEMTIME& time) {
    std::array<char, 80> text = {};
    format(LOCALE_USER_DEFAULT, style, &time, nullptr, text.data(), static_cast<int>(text.size()));
    return FromAnsi(text.data());
}

CacheTime CacheTimeOf(const FILETIME& fileTime) {
    SYSTEMTIME time = {};
    CacheTime cacheTime;
    if (!FileTimeToSystemTime(&fileTime, &time)) {
        cacheTime.year = kEmptyYear;
        return cacheTime;
    }
    cacheTime.year = time.wYear;
    cacheTime.date = Formatted(GetDateFormatA, DATE_SHORTDATE | LOCALE_USE_CP_ACP, time);
    cacheTime.time = Formatted(GetTimeFormatA, TIME_NOSECONDS | LOCALE_USE_CP_ACP, time);
    return cacheTime;
}

}  // namespace

std::uint32_t WinInetEntries::DeleteUrlCacheEntryA(const std::string& address) {
    return wininet::DeleteUrlCacheEntryA(address.c_str());
}

std::wstring WinInetEntries::SystemMessage(std::uint32_t error) const {
    std::array<char, kMessageSize> text = {};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    return FromAnsi({text.data(), length});
}

std::wstring WinInetEntries::CacheEntryDetails(const std::string& address) {
    std::vector<char> buffer(kBufferSize);
    DWORD size = kBufferSize;
    BOOL found = GetUrlCacheEntryInfoA(address.c_str(),
                                       reinterpret_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer.data()), &size);
    if (!found && GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
        buffer.assign(std::max<std::size_t>(size, kBufferSize), '\0');
        size = static_cast<DWORD>(buffer.size());
        found = GetUrlCacheEntryInfoA(address.c_str(),
                                      reinterpret_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer.data()), &size);
    }
    INTERNET_CACHE_ENTRY_INFOA entry = {};
    if (found) {
        std::memcpy(&entry, buffer.data(), sizeof entry);
    }
    CacheEntryInfo info;
    info.localFileName = FromAnsi(entry.lpszLocalFileName != nullptr ? entry.lpszLocalFileName : "");
    info.lastAccess = CacheTimeOf(entry.LastAccessTime);
    info.lastModified = CacheTimeOf(entry.LastModifiedTime);
    info.lastSync = CacheTimeOf(entry.LastSyncTime);
    info.expire = CacheTimeOf(entry.ExpireTime);
    info.hitRate = static_cast<std::int32_t>(entry.dwHitRate);
    return CacheEntryDetailsText(info, m_locale.ThousandsSeparator());
}

}  // namespace kestrelguard
