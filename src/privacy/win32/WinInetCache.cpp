#include "privacy/win32/WinInetCache.h"

#include <wininet.h>

#include <cstddef>

#include "privacy/win32/WinInet.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

// The walk copies this head out of the platform's records.
static_assert(sizeof(CacheEntryHead) == 80);
static_assert(sizeof(CacheEntryHead) == sizeof(INTERNET_CACHE_ENTRY_INFOA));
static_assert(offsetof(CacheEntryHead, lpszSourceUrlName) ==
              offsetof(INTERNET_CACHE_ENTRY_INFOA, lpszSourceUrlName));
static_assert(offsetof(CacheEntryHead, lpszLocalFileName) ==
              offsetof(INTERNET_CACHE_ENTRY_INFOA, lpszLocalFileName));
static_assert(offsetof(CacheEntryHead, CacheEntryType) ==
              offsetof(INTERNET_CACHE_ENTRY_INFOA, CacheEntryType));
static_assert(offsetof(CacheEntryHead, dwHitRate) == offsetof(INTERNET_CACHE_ENTRY_INFOA, dwHitRate));
static_assert(offsetof(CacheEntryHead, LastModifiedTime) ==
              offsetof(INTERNET_CACHE_ENTRY_INFOA, LastModifiedTime));
static_assert(offsetof(CacheEntryHead, ExpireTime) == offsetof(INTERNET_CACHE_ENTRY_INFOA, ExpireTime));
static_assert(offsetof(CacheEntryHead, LastAccessTime) ==
              offsetof(INTERNET_CACHE_ENTRY_INFOA, LastAccessTime));
static_assert(offsetof(CacheEntryHead, LastSyncTime) == offsetof(INTERNET_CACHE_ENTRY_INFOA, LastSyncTime));
static_assert(offsetof(CacheEntryHead, lpszFileExtension) ==
              offsetof(INTERNET_CACHE_ENTRY_INFOA, lpszFileExtension));
static_assert(kNormalCacheEntry == NORMAL_CACHE_ENTRY);
static_assert(sizeof(GROUPID) == sizeof(std::int64_t));

INTERNET_CACHE_ENTRY_INFOA* EntryAt(void* buffer) {
    return static_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer);
}

}  // namespace

void* WinInetCache::FindFirstUrlCacheEntryA(const char* pattern, void* entry, std::uint32_t& size) {
    DWORD bytes = size;
    void* const find = ::FindFirstUrlCacheEntryA(pattern, EntryAt(entry), &bytes);
    m_lastError = GetLastError();
    size = bytes;
    return find;
}

bool WinInetCache::FindNextUrlCacheEntryA(void* find, void* entry, std::uint32_t& size) {
    DWORD bytes = size;
    const bool found = ::FindNextUrlCacheEntryA(find, EntryAt(entry), &bytes) != FALSE;
    m_lastError = GetLastError();
    size = bytes;
    return found;
}

bool WinInetCache::FindCloseUrlCache(void* find) noexcept {
    const bool closed = ::FindCloseUrlCache(find) != FALSE;
    m_lastError = GetLastError();
    return closed;
}

bool WinInetCache::DeleteUrlCacheEntryA(const char* address) {
    m_lastError = wininet::DeleteUrlCacheEntryA(address);
    return m_lastError == ERROR_SUCCESS;
}

void* WinInetCache::FindFirstUrlCacheGroup(std::uint32_t flags, std::uint32_t filter, void* condition,
                                           std::uint32_t conditionSize, std::int64_t& group, void* reserved) {
    const auto function = wininet::EntryPoint<decltype(::FindFirstUrlCacheGroup)>("FindFirstUrlCacheGroup");
    SetLastError(ERROR_SUCCESS);
    void* const find = function(flags, filter, condition, conditionSize, &group, reserved);
    m_lastError = GetLastError();
    return find;
}

bool WinInetCache::FindNextUrlCacheGroup(void* find, std::int64_t& group, void* reserved) {
    const auto function = wininet::EntryPoint<decltype(::FindNextUrlCacheGroup)>("FindNextUrlCacheGroup");
    // A call that succeeds may leave the value of an older failure, which would end the flush early.
    SetLastError(ERROR_SUCCESS);
    const bool found = function(find, &group, reserved) != FALSE;
    m_lastError = GetLastError();
    return found;
}

bool WinInetCache::DeleteUrlCacheGroup(std::int64_t group, std::uint32_t flags, void* reserved) {
    const auto function = wininet::EntryPoint<decltype(::DeleteUrlCacheGroup)>("DeleteUrlCacheGroup");
    SetLastError(ERROR_SUCCESS);
    const bool deleted = function(group, flags, reserved) != FALSE;
    m_lastError = GetLastError();
    return deleted;
}

void* KernelMemory::LocalAlloc(std::uint32_t flags, std::uint32_t size) {
    return ::LocalAlloc(flags, size);
}

void KernelMemory::LocalFree(void* block) noexcept {
    ::LocalFree(block);
}

std::int32_t KernelText::lstrlenA(const char* text) {
    return ::lstrlenA(text);
}

void KernelText::lstrcpyA(char* to, const char* from) {
    ::lstrcpyA(to, from);
}

std::wstring KernelText::FromAnsi(std::string_view text) {
    return kestrelguard::FromAnsi(text);
}

std::string KernelText::ToAnsi(std::wstring_view text) {
    return kestrelguard::ToAnsi(text);
}

std::int32_t DesktopCacheWindows::FindWindowA(const char* className, const char* caption) {
    return static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(::FindWindowA(className, caption)));
}

}  // namespace kestrelguard
