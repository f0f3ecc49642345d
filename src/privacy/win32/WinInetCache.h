#pragma once

#include <windows.h>

#include "privacy/CachePlatform.h"

namespace kestrelguard {

/// The cache of WinINet. Its group functions came later than the cache itself: they are looked up when first
/// needed.
class WinInetCache final : public UrlCache, public UrlCacheGroups {
 public:
    void* FindFirstUrlCacheEntryA(const char* pattern, void* entry, std::uint32_t& size) override;
    bool FindNextUrlCacheEntryA(void* find, void* entry, std::uint32_t& size) override;
    bool FindCloseUrlCache(void* find) noexcept override;
    bool DeleteUrlCacheEntryA(const char* address) override;
    void* FindFirstUrlCacheGroup(std::uint32_t flags, std::uint32_t filter, void* condition,
                                 std::uint32_t conditionSize, std::int64_t& group, void* reserved) override;
    bool FindNextUrlCacheGroup(void* find, std::int64_t& group, void* reserved) override;
    bool DeleteUrlCacheGroup(std::int64_t group, std::uint32_t flags, void* reserved) override;
    std::uint32_t LastError() const override { return m_lastError; }

 private:
    DWORD m_lastError = ERROR_SUCCESS;
};

/// The process's own heap, as platform records are taken from it.
class KernelMemory final : public LocalMemory {
 public:
    void* LocalAlloc(std::uint32_t flags, std::uint32_t size) override;
    void LocalFree(void* block) noexcept override;
};

/// 8-bit texts in the system code page.
class KernelText final : public PlatformText {
 public:
    std::int32_t lstrlenA(const char* text) override;
    void lstrcpyA(char* to, const char* from) override;
    std::wstring FromAnsi(std::string_view text) override;
    std::string ToAnsi(std::wstring_view text) override;
};

/// The desktop's windows and this program's own cache window.
class DesktopCacheWindows final : public CacheWindows {
 public:
    /// The cache window from its creation to its end; null when it goes. It belongs to the caller.
    void SetOwn(CacheWindow* window) noexcept { m_own = window; }

    std::int32_t FindWindowA(const char* className, const char* caption) override;
    CacheWindow* KG_Cache() override { return m_own; }

 private:
    CacheWindow* m_own = nullptr;
};

}  // namespace kestrelguard
