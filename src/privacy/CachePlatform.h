#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "controls/Controls.h"
#include "controls/Lists.h"

/// What the cache walk asks of the platform and of the open cache window. The verbs bear the names of the
/// platform's calls and take their arguments, so that a reader can compare the walk with the calls it makes.
namespace kestrelguard {

/// A moment as the platform's files know it: 100 ns steps since 1601.
struct FileTime {
    std::uint32_t low;
    std::uint32_t high;
};

/// The fixed head of a cache entry record (`INTERNET_CACHE_ENTRY_INFOA`, 80 bytes on 32-bit Windows). The
/// texts lie behind it in the same buffer.
struct CacheEntryHead {
    std::uint32_t dwStructSize;
    const char* lpszSourceUrlName;
    const char* lpszLocalFileName;
    std::uint32_t CacheEntryType;
    std::uint32_t dwUseCount;
    std::uint32_t dwHitRate;
    std::uint32_t dwSizeLow;
    std::uint32_t dwSizeHigh;
    FileTime LastModifiedTime;
    FileTime ExpireTime;
    FileTime LastAccessTime;
    FileTime LastSyncTime;
    void* lpHeaderInfo;
    std::uint32_t dwHeaderInfoSize;
    const char* lpszFileExtension;
    std::uint32_t dwExemptDelta;
};

/// The bit of `CacheEntryType` that every page, picture and cookie has.
inline constexpr std::uint32_t kNormalCacheEntry = 1;

/// The browser's cache: its entries one after the other, and the end of one.
class UrlCache {
 public:
    virtual ~UrlCache() = default;
    /// `size` says how large `entry` is and comes back as what the entry needs.
    virtual void* FindFirstUrlCacheEntryA(const char* pattern, void* entry, std::uint32_t& size) = 0;
    virtual bool FindNextUrlCacheEntryA(void* find, void* entry, std::uint32_t& size) = 0;
    virtual bool FindCloseUrlCache(void* find) noexcept = 0;
    virtual bool DeleteUrlCacheEntryA(const char* address) = 0;
    /// The thread's last error value after the last call.
    virtual std::uint32_t LastError() const = 0;
};

/// The cache's groups. Old systems lack some of these functions: then the verb throws kEntryPointNotFound.
class UrlCacheGroups {
 public:
    virtual ~UrlCacheGroups() = default;
    virtual void* FindFirstUrlCacheGroup(std::uint32_t flags, std::uint32_t filter, void* condition,
                                         std::uint32_t conditionSize, std::int64_t& group,
                                         void* reserved) = 0;
    virtual bool FindNextUrlCacheGroup(void* find, std::int64_t& group, void* reserved) = 0;
    virtual bool DeleteUrlCacheGroup(std::int64_t group, std::uint32_t flags, void* reserved) = 0;
    /// The thread's last error value after the last call.
    virtual std::uint32_t LastError() const = 0;
};

/// Memory for platform records.
class LocalMemory {
 public:
    virtual ~LocalMemory() = default;
    /// Null when there is no memory.
    virtual void* LocalAlloc(std::uint32_t flags, std::uint32_t size) = 0;
    virtual void LocalFree(void* block) noexcept = 0;
};

/// 8-bit texts of the platform and their way into program text and back.
class PlatformText {
 public:
    virtual ~PlatformText() = default;
    virtual std::int32_t lstrlenA(const char* text) = 0;
    virtual void lstrcpyA(char* to, const char* from) = 0;
    virtual std::wstring FromAnsi(std::string_view text) = 0;
    virtual std::string ToAnsi(std::wstring_view text) = 0;
};

/// The details text of one cache entry (local file, times, hits).
class CacheDetails {
 public:
    virtual ~CacheDetails() = default;
    virtual std::wstring CacheEntryDetails(const std::string& address) = 0;
};

/// What a walk reads and writes of the open cache window.
struct CacheWindow {
    /// `kg_CLST`: the addresses, its selection, and whether it is shown.
    AddressRows& entries;
    ListSelection& selection;
    Visibility& visibility;
    /// `IECacheLBL` and `CacheDetail`.
    Caption& countLabel;
    Caption& detailsLabel;
    CacheDetails& details;
};

/// The cache window's caption is its identity: by it an open window is found.
inline constexpr char kCacheWindowCaption[] =
    "Kestrelguard v2.0 - IE Cache Details and Advanced Configuration";

/// Finds the open cache window.
class CacheWindows {
 public:
    virtual ~CacheWindows() = default;
    /// The handle of the top-level window of that caption, 0 when there is none.
    virtual std::int32_t FindWindowA(const char* className, const char* caption) = 0;
    /// This program's own cache window; null while there is none.
    virtual CacheWindow* KG_Cache() = 0;
};

}  // namespace kestrelguard
