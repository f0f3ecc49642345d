#pragma once

#include <cstdint>
#include <string>

#include "privacy/CachePlatform.h"
#include "runtime/System.h"
#include "runtime/TextSet.h"

namespace kestrelguard {

/// Walks the browser's cache.
class CacheWalk {
 public:
    virtual ~CacheWalk() = default;
    /// Visits every cache entry once, deletes what is asked for and fills the open cache window's list.
    /// Sets ShowList when that window is found. Throws kOverflow when a counter runs over.
    virtual void LoadCacheEntries(bool& ShowList, bool& ClearFiles, bool& ClearCookies,
                                  bool& CookiesOnly) = 0;
};

/// The one routine through which the program reads and cleans the browser's cache. Pages and cookies lie in
/// the same cache; a cookie is an entry whose address contains "Cookie:". A saved cookie is never deleted.
class KG_IECache final : public CacheWalk {
 public:
    /// All of it belongs to the caller and outlives this object.
    struct Platform {
        UrlCache& cache;
        UrlCacheGroups& groups;
        LocalMemory& memory;
        PlatformText& text;
        CacheWindows& windows;
        const Locale& locale;
        /// `SavedCookies`: the addresses that are spared.
        const TextSet& savedCookies;
    };

    /// An enumeration that never ends must not take the program with it. A damaged index that leads in
    /// circles is told by its addresses. Behind that stands a plain limit: an index maps its entries in
    /// blocks of 128 bytes into the 2 GB that a process has, so that nothing beyond this number can be true.
    /// Messages are not served during a walk: a handler that ran then could start a second walk over the same
    /// counters and the same list.
    static constexpr std::uint32_t kMostEntries = 0x80000000U / 128U;

    explicit KG_IECache(const Platform& platform, std::uint32_t mostEntries = kMostEntries)
        : m_platform(platform), m_mostEntries(mostEntries) {}

    void LoadCacheEntries(bool& ShowList, bool& ClearFiles, bool& ClearCookies, bool& CookiesOnly) override;

    /// Deletes one entry and takes it off its counter; the first failure of a walk deletes all cache groups.
    /// Throws kOverflow.
    void DeleteCacheEntry(const std::wstring& SourceUrl);

    /// Program text from a zero-terminated 8-bit text.
    std::wstring StringFromPointer(const char* p);

    /// "Files": the normal entries of the last walk, cookies included, less those deleted since.
    std::int32_t CacheFileCount = 0;
    /// "Cookies": the cookies of the last listing walk, less those deleted since.
    std::int32_t CacheCookieCount = 0;
    /// Whether this walk has deleted the cache groups.
    bool GroupsFlushed = false;

 private:
    class EntryBuffer;
    class EntryFind;
    class HiddenList;
    struct Task;

    CacheWindow* FindCacheWindow();
    void WalkEntries(EntryFind& find, EntryBuffer& buffer, const Task& task);
    bool Visit(const CacheEntryHead& head, const Task& task, class CircleDetector& circle);
    void CopyText(const char* p, std::wstring& text);
    void Delete(const std::wstring& address, const char* bytes);
    bool ToBeDeleted(const std::wstring& address, const Task& task) const;
    void FlushGroups();

    Platform m_platform;
    std::uint32_t m_mostEntries;
    /// The present entry's address in both forms: their memory serves one entry after the other.
    std::string m_ansiAddress;
    std::wstring m_address;
};

}  // namespace kestrelguard
