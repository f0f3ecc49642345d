#include "privacy/KG_IECache.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "privacy/CircleDetector.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr wchar_t kCookieMark[] = L"Cookie:";
/// Kept: the single delete tells cookies by a looser text than the walk does.
constexpr wchar_t kLooseCookieMark[] = L"Cookie";

constexpr wchar_t kLabelStart[] = L"Internet Explorer Cache ";
constexpr wchar_t kLabelFiles[] = L" Files; ";
constexpr wchar_t kLabelCookies[] = L" Cookies...";

/// Kept: the first call searches for the text of the number zero.
constexpr char kSizingPattern[] = "0";

constexpr std::uint32_t kFileNotFoundError = 2;
constexpr std::uint32_t kInsufficientBufferError = 122;
constexpr std::uint32_t kFixedMemory = 0;
constexpr std::uint32_t kSearchAllGroups = 0;
constexpr std::uint32_t kFlushUrlOnDelete = 2;

/// From this entry on none is listed: list windows of old systems take 32,767 rows.
constexpr std::int32_t kFirstUnlistedEntry = 32765;

/// Each group is gone once it was found: an enumeration of more never ends.
constexpr std::uint32_t kMostGroups = 0x10000;

}  // namespace

/// The record of one entry: taken for it, given back after it.
class KG_IECache::EntryBuffer {
 public:
    explicit EntryBuffer(LocalMemory& memory) : m_memory(memory) {}
    EntryBuffer(const EntryBuffer&) = delete;
    EntryBuffer& operator=(const EntryBuffer&) = delete;
    ~EntryBuffer() {
        if (m_block != nullptr) {
            Free();
        }
    }

    /// Takes the memory and writes its size into it. False when there is none.
    bool Allocate(std::uint32_t size) {
        m_block = m_memory.LocalAlloc(kFixedMemory, size);
        m_size = size;
        // The platform also asks for records of no size at all: at the end of the cache.
        if (m_block != nullptr && size >= sizeof size) {
            std::memcpy(m_block, &size, sizeof size);
        }
        return m_block != nullptr;
    }

    /// Gives the memory back; the platform takes a null as well.
    void Free() noexcept {
        m_memory.LocalFree(std::exchange(m_block, nullptr));
        m_size = 0;
    }

    void* Get() const noexcept { return m_block; }

    /// The head of the record; nothing when the memory cannot hold one.
    std::optional<CacheEntryHead> Head() const {
        if (m_block == nullptr || m_size < sizeof(CacheEntryHead)) {
            return std::nullopt;
        }
        CacheEntryHead head;
        std::memcpy(&head, m_block, sizeof head);
        return head;
    }

 private:
    LocalMemory& m_memory;
    void* m_block = nullptr;
    std::uint32_t m_size = 0;
};

/// The handle of the enumeration.
class KG_IECache::EntryFind {
 public:
    explicit EntryFind(UrlCache& cache) : m_cache(cache) {}
    EntryFind(const EntryFind&) = delete;
    EntryFind& operator=(const EntryFind&) = delete;
    ~EntryFind() {
        if (m_handle != nullptr) {
            Close();
        }
    }

    void First(const char* pattern, void* entry, std::uint32_t& size) {
        m_handle = m_cache.FindFirstUrlCacheEntryA(pattern, entry, size);
    }
    bool Next(void* entry, std::uint32_t& size) {
        return m_cache.FindNextUrlCacheEntryA(m_handle, entry, size);
    }
    /// Closes the walk; the platform refuses a null and is asked all the same.
    void Close() noexcept { m_cache.FindCloseUrlCache(std::exchange(m_handle, nullptr)); }

    explicit operator bool() const noexcept { return m_handle != nullptr; }

 private:
    UrlCache& m_cache;
    void* m_handle = nullptr;
};

/// Hides the window's list while it is filled, since a shown one would repaint for each row. Shows it again
/// even when the walk ends in an error.
class KG_IECache::HiddenList {
 public:
    explicit HiddenList(CacheWindow& window) : m_window(window) {
        m_window.entries.Clear();
        m_window.visibility.SetVisible(false);
        m_fill.emplace(m_window.entries);
    }
    HiddenList(const HiddenList&) = delete;
    HiddenList& operator=(const HiddenList&) = delete;
    ~HiddenList() {
        if (m_hidden) {
            static_cast<void>(ErrorOf([this] { Show(); }));
        }
    }

    void Show() {
        m_fill.reset();
        m_window.visibility.SetVisible(true);
        m_hidden = false;
    }

 private:
    CacheWindow& m_window;
    std::optional<ListFill> m_fill;
    bool m_hidden = true;
};

/// What one walk was asked for.
struct KG_IECache::Task {
    bool clearFiles;
    bool clearCookies;
    bool cookiesOnly;
    /// Null when nothing is listed.
    CacheWindow* list;
};

void KG_IECache::LoadCacheEntries(bool& ShowList, bool& ClearFiles, bool& ClearCookies, bool& CookiesOnly) {
    GroupsFlushed = false;
    CacheWindow* const window = FindCacheWindow();
    std::optional<HiddenList> hidden;
    if (window != nullptr) {
        hidden.emplace(*window);
        ShowList = true;
    }

    std::uint32_t size = 0;
    CacheFileCount = 0;
    CacheCookieCount = 0;
    EntryFind find(m_platform.cache);
    EntryBuffer buffer(m_platform.memory);
    find.First(kSizingPattern, nullptr, size);
    if (!find && m_platform.cache.LastError() == kInsufficientBufferError && buffer.Allocate(size)) {
        find.First(nullptr, buffer.Get(), size);
        if (find) {
            WalkEntries(find, buffer,
                        Task{ClearFiles, ClearCookies, CookiesOnly, ShowList ? window : nullptr});
        }
    }
    buffer.Free();
    find.Close();

    if (window == nullptr) {
        return;
    }
    const std::wstring separator = m_platform.locale.ThousandsSeparator();
    window->countLabel.SetCaption(kLabelStart + Grouped(CacheFileCount, separator) + kLabelFiles +
                                  Grouped(CacheCookieCount, separator) + kLabelCookies);
    hidden->Show();
    if (window->entries.Count() > 0) {
        window->detailsLabel.SetCaption(window->details.CacheEntryDetails(window->entries.Address(0)));
        window->selection.SelectRow(0);
    }
}

/// The window counts as open when the platform finds it and it is ours.
CacheWindow* KG_IECache::FindCacheWindow() {
    const bool found = m_platform.windows.FindWindowA(nullptr, kCacheWindowCaption) > 0;
    return found ? m_platform.windows.KG_Cache() : nullptr;
}

/// An entry that somebody else removed, or that grew, between the question for its size and its fetch makes
/// the fetch fail; that ends the walk like any other failure, with all that was visited so far done.
void KG_IECache::WalkEntries(EntryFind& find, EntryBuffer& buffer, const Task& task) {
    CircleDetector circle;
    std::uint32_t entries = 0;
    bool found = true;
    while (found) {
        const std::optional<CacheEntryHead> head = buffer.Head();
        if (!head || ++entries > m_mostEntries || !Visit(*head, task, circle)) {
            return;
        }
        buffer.Free();
        std::uint32_t size = 0;
        // Neither the answer to the question nor the memory is tested: the fetch fails without them.
        static_cast<void>(find.Next(nullptr, size));
        static_cast<void>(buffer.Allocate(size));
        found = find.Next(buffer.Get(), size);
    }
}

/// Counts, deletes and lists one entry. False when the enumeration goes in circles.
bool KG_IECache::Visit(const CacheEntryHead& head, const Task& task, CircleDetector& circle) {
    CopyText(head.lpszSourceUrlName, m_address);
    const std::wstring& address = m_address;
    if (circle.Next(address)) {
        return false;
    }
    if ((head.CacheEntryType & kNormalCacheEntry) == 0) {
        return true;
    }
    CacheFileCount = CheckedAdd(CacheFileCount, 1);
    bool hide = CacheFileCount >= kFirstUnlistedEntry;
    if (ToBeDeleted(address, task)) {
        hide = true;
        // Not by the text, which has gone through the code page.
        Delete(address, m_ansiAddress.c_str());
    }
    if (task.list != nullptr) {
        const bool cookie = Contains(address, kCookieMark);
        if (cookie) {
            CacheCookieCount = CheckedAdd(CacheCookieCount, 1);
        }
        if (!hide && (cookie || !task.cookiesOnly)) {
            task.list->entries.AppendAddress(address, m_ansiAddress);
        }
    }
    return true;
}

bool KG_IECache::ToBeDeleted(const std::wstring& address, const Task& task) const {
    if (!task.clearFiles && !task.clearCookies) {
        return false;
    }
    if (Contains(address, kCookieMark)) {
        return task.clearCookies && !m_platform.savedCookies.Contains(address);
    }
    return task.clearFiles;
}

void KG_IECache::DeleteCacheEntry(const std::wstring& SourceUrl) {
    Delete(SourceUrl, m_platform.text.ToAnsi(SourceUrl).c_str());
}

void KG_IECache::Delete(const std::wstring& address, const char* bytes) {
    std::int32_t& count = Contains(address, kLooseCookieMark) ? CacheCookieCount : CacheFileCount;
    count = CheckedSubtract(count, 1);
    bool deleted = false;
    ErrorsIgnored([&] { deleted = m_platform.cache.DeleteUrlCacheEntryA(bytes); });
    if (!deleted && !GroupsFlushed) {
        GroupsFlushed = true;
        FlushGroups();
    }
}

/// Deletes every cache group with its entries. Errors are ignored. The handle of this enumeration has no
/// closing call: the platform's one takes handles of entry enumerations.
void KG_IECache::FlushGroups() {
    std::int64_t group = 0;
    void* find = nullptr;
    ErrorsIgnored([&] {
        find = m_platform.groups.FindFirstUrlCacheGroup(0, kSearchAllGroups, nullptr, 0, group, nullptr);
    });
    // Without a handle there is nothing to do, whether the platform lacks the function or found no group.
    if (find == nullptr) {
        return;
    }
    for (std::uint32_t groups = 0; groups < kMostGroups; ++groups) {
        // A function that is missing is passed over; any other failure is the end of the groups.
        bool deleted = false;
        const std::int32_t error = ErrorOf(
            [&] { deleted = m_platform.groups.DeleteUrlCacheGroup(group, kFlushUrlOnDelete, nullptr); });
        if (!deleted && error != RunTimeError::kEntryPointNotFound) {
            return;
        }
        bool found = false;
        ErrorsIgnored([&] { found = m_platform.groups.FindNextUrlCacheGroup(find, group, nullptr); });
        if (!found || m_platform.groups.LastError() == kFileNotFoundError) {
            return;
        }
    }
}

std::wstring KG_IECache::StringFromPointer(const char* p) {
    std::wstring text;
    CopyText(p, text);
    return text;
}

/// Every code page holds the 7-bit characters, of which nearly all addresses consist, in their own places:
/// only the others are worth asking the platform for.
void KG_IECache::CopyText(const char* p, std::wstring& text) {
    m_ansiAddress.resize(static_cast<std::size_t>(m_platform.text.lstrlenA(p)));
    m_platform.text.lstrcpyA(m_ansiAddress.data(), p);
    text.resize(m_ansiAddress.size());
    unsigned all = 0;
    std::transform(m_ansiAddress.begin(), m_ansiAddress.end(), text.begin(), [&all](char letter) {
        all |= static_cast<unsigned char>(letter);
        return static_cast<wchar_t>(letter);
    });
    if (all >= 0x80) {
        text = m_platform.text.FromAnsi(m_ansiAddress);
    }
}

}  // namespace kestrelguard
