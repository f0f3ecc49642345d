#pragma once

#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "controls/Fakes.h"
#include "privacy/KG_IECache.h"

namespace kestrelguard {

/// A cache in memory that behaves like the platform's: exact record sizes, last errors, groups. It writes
/// down every call, keeps the books of memory and handles, and can let any one call fail.
class FakeCache : public UrlCache, public UrlCacheGroups, public LocalMemory, public PlatformText {
 public:
    static constexpr std::uint32_t kNotFound = 2;
    static constexpr std::uint32_t kInvalidHandle = 6;
    static constexpr std::uint32_t kInsufficientBuffer = 122;
    static constexpr std::uint32_t kNoMoreItems = 259;

    struct Entry {
        std::string address;
        std::uint32_t type = kNormalCacheEntry;
        bool locked = false;
        bool gone = false;
    };

    FakeCache() = default;
    FakeCache(const FakeCache&) = delete;
    FakeCache& operator=(const FakeCache&) = delete;
    ~FakeCache() override = default;

    void Add(const std::string& address, std::uint32_t type = kNormalCacheEntry) {
        entries.push_back(Entry{address, type});
    }
    std::vector<std::string> Left() const {
        std::vector<std::string> left;
        for (const Entry& entry : entries) {
            if (!entry.gone) {
                left.push_back(entry.address);
            }
        }
        return left;
    }
    bool Has(const std::string& address) const {
        for (const Entry& entry : entries) {
            if (!entry.gone && entry.address == address) {
                return true;
            }
        }
        return false;
    }
    /// Whether all memory and all handles of entry walks were given back.
    bool BooksAreEven() const { return m_blocks.empty() && m_finds.empty(); }
    int Calls(std::string_view start) const {
        int count = 0;
        for (const std::string& call : calls) {
            count += call.compare(0, start.size(), start) == 0 ? 1 : 0;
        }
        return count;
    }

    void* FindFirstUrlCacheEntryA(const char* pattern, void* entry, std::uint32_t& size) override {
        Log(std::string("FindFirst ") + (pattern == nullptr ? "null" : pattern) + Buffer(entry), size);
        if (Fail()) {
            return nullptr;
        }
        std::size_t position = 0;
        if (!Fetch(position, entry, size)) {
            return nullptr;
        }
        m_finds[++m_handle] = position;
        return Handle(m_handle);
    }
    bool FindNextUrlCacheEntryA(void* find, void* entry, std::uint32_t& size) override {
        Log("FindNext " + Name(find) + Buffer(entry), size);
        if (Fail()) {
            return false;
        }
        const auto open = m_finds.find(Number(find));
        if (open == m_finds.end()) {
            lastError = kInvalidHandle;
            return false;
        }
        return Fetch(open->second, entry, size);
    }
    bool FindCloseUrlCache(void* find) noexcept override {
        Log("FindClose " + Name(find));
        lastError = kInvalidHandle;
        return m_finds.erase(Number(find)) == 1;
    }
    bool DeleteUrlCacheEntryA(const char* address) override {
        Log(std::string("Delete ") + address);
        if (Fail()) {
            return false;
        }
        for (std::size_t step = 0; step < entries.size(); ++step) {
            // Entries are mostly deleted one behind the other.
            Entry& entry = entries[(m_lastDeleted + step) % entries.size()];
            if (!entry.gone && entry.address == address) {
                m_lastDeleted = (m_lastDeleted + step) % entries.size();
                if (entry.locked) {
                    lastError = 32;
                    return false;
                }
                entry.gone = true;
                return true;
            }
        }
        lastError = kNotFound;
        return false;
    }
    std::uint32_t LastError() const override { return lastError; }

    void* FindFirstUrlCacheGroup(std::uint32_t flags, std::uint32_t filter, void* condition,
                                 std::uint32_t conditionSize, std::int64_t& group, void* reserved) override {
        Log("FindFirstGroup " + std::to_string(flags) + " " + std::to_string(filter) + Buffer(condition) +
            " " + std::to_string(conditionSize) + Buffer(reserved));
        Missing("FindFirstGroup");
        if (Fail()) {
            return nullptr;
        }
        if (groups.empty()) {
            lastError = kNotFound;
            return nullptr;
        }
        lastError = 0;
        m_nextGroup = 0;
        group = groups[m_nextGroup++];
        return Handle(1000);
    }
    bool FindNextUrlCacheGroup(void* find, std::int64_t& group, void* reserved) override {
        Log("FindNextGroup " + Name(find) + Buffer(reserved));
        Missing("FindNextGroup");
        if (Fail()) {
            return false;
        }
        if (endlessGroups) {
            lastError = 0;
            return true;
        }
        if (m_nextGroup >= groups.size()) {
            lastError = kNotFound;
            return false;
        }
        group = groups[m_nextGroup++];
        lastError = nextGroupLeaves;
        return true;
    }
    bool DeleteUrlCacheGroup(std::int64_t group, std::uint32_t flags, void* reserved) override {
        Log("DeleteGroup " + std::to_string(group) + " " + std::to_string(flags) + Buffer(reserved));
        Missing("DeleteGroup");
        if (Fail()) {
            return false;
        }
        deletedGroups.push_back(group);
        return true;
    }

    void* LocalAlloc(std::uint32_t flags, std::uint32_t size) override {
        Log("LocalAlloc " + std::to_string(flags), size);
        if (Fail()) {
            return nullptr;
        }
        auto block = std::make_unique<char[]>(size);
        void* const start = block.get();
        m_blocks[start] = std::move(block);
        m_sizes[start] = size;
        return start;
    }
    void LocalFree(void* block) noexcept override {
        Log(std::string("LocalFree") + Buffer(block));
        if (block != nullptr && m_blocks.erase(block) != 1) {
            freedTwice = true;
        }
    }

    std::int32_t lstrlenA(const char* text) override {
        return text == nullptr ? 0 : static_cast<std::int32_t>(std::strlen(text));
    }
    void lstrcpyA(char* to, const char* from) override {
        if (from != nullptr) {
            std::memcpy(to, from, std::strlen(from) + 1);
        }
    }
    std::wstring FromAnsi(std::string_view text) override {
        std::wstring wide;
        for (const char letter : text) {
            wide += static_cast<wchar_t>(static_cast<unsigned char>(letter));
        }
        return wide;
    }
    std::string ToAnsi(std::wstring_view text) override {
        std::string narrow;
        for (const wchar_t letter : text) {
            narrow += lossyText && letter > 0x7F ? '?' : static_cast<char>(letter);
        }
        return narrow;
    }

    std::deque<Entry> entries;
    std::vector<std::int64_t> groups;
    bool endlessGroups = false;
    /// Whether letters beyond the 7 bits are lost on their way back into 8-bit text.
    bool lossyText = false;
    /// The last error value behind a next group that was found.
    std::uint32_t nextGroupLeaves = 0;
    std::vector<std::int64_t> deletedGroups;
    /// The functions that this platform lacks, by their names in the record.
    std::set<std::string> missing;
    /// The record of all calls; sizes are left out unless asked for.
    bool recording = true;
    bool recordSizes = false;
    std::vector<std::string> calls;
    std::uint32_t lastError = 0;
    /// The call that fails, counted from 0 over all calls that can fail, and its last error value.
    int failAt = -1;
    std::uint32_t failure = 5;
    int fallibleCalls = 0;
    bool freedTwice = false;
    /// Whether each buffer held its own size before it was filled.
    bool sizesWritten = true;
    /// Runs before an entry is fetched into a buffer, with the entry's position.
    std::function<void(std::size_t)> beforeFetch;
    /// When set, the enumeration starts again at this position after the last entry.
    int circleTo = -1;
    /// When set, the enumeration makes up ever new entries of this type.
    bool endless = false;
    std::uint32_t endlessType = kNormalCacheEntry;

 private:
    static void* Handle(std::uintptr_t number) { return reinterpret_cast<void*>(number); }
    static std::uintptr_t Number(void* handle) { return reinterpret_cast<std::uintptr_t>(handle); }
    static std::string Name(void* handle) {
        return handle == nullptr ? "null" : std::to_string(Number(handle));
    }
    static std::string Buffer(const void* buffer) { return buffer == nullptr ? " null" : " buffer"; }

    void Log(const std::string& call) {
        if (recording) {
            calls.push_back(call);
        }
    }
    void Log(const std::string& call, std::uint32_t size) {
        if (recording) {
            calls.push_back(recordSizes ? call + " " + std::to_string(size) : call);
        }
    }
    bool Fail() {
        if (fallibleCalls++ != failAt) {
            return false;
        }
        lastError = failure;
        return true;
    }
    void Missing(const std::string& function) const {
        if (missing.contains(function)) {
            throw RunTimeError(RunTimeError::kEntryPointNotFound);
        }
    }

    /// The next entry into the buffer; position moves on when that worked.
    bool Fetch(std::size_t& position, void* buffer, std::uint32_t& size) {
        if (buffer != nullptr && beforeFetch) {
            beforeFetch(position);
        }
        while (position < entries.size() && entries[position].gone) {
            ++position;
        }
        Entry made;
        const Entry* entry = nullptr;
        if (position < entries.size()) {
            entry = &entries[position];
        } else if (endless) {
            made = Entry{"http://made.up/" + std::to_string(position), endlessType};
            entry = &made;
        } else {
            lastError = kNoMoreItems;
            return false;
        }
        const std::size_t needed = sizeof(CacheEntryHead) + entry->address.size() + 1;
        if (buffer == nullptr || size < needed) {
            size = static_cast<std::uint32_t>(needed);
            lastError = kInsufficientBuffer;
            return false;
        }
        std::uint32_t written = 0;
        std::memcpy(&written, buffer, sizeof written);
        sizesWritten = sizesWritten && written == m_sizes[buffer];
        CacheEntryHead head{};
        head.dwStructSize = size;
        head.CacheEntryType = entry->type;
        char* const text = static_cast<char*>(buffer) + sizeof head;
        std::memcpy(text, entry->address.c_str(), entry->address.size() + 1);
        head.lpszSourceUrlName = text;
        std::memcpy(buffer, &head, sizeof head);
        ++position;
        if (position == entries.size() && circleTo >= 0) {
            position = static_cast<std::size_t>(circleTo);
        }
        return true;
    }

    std::map<void*, std::unique_ptr<char[]>> m_blocks;
    std::map<void*, std::uint32_t> m_sizes;
    std::map<std::uintptr_t, std::size_t> m_finds;
    std::uintptr_t m_handle = 0;
    std::size_t m_nextGroup = 0;
    std::size_t m_lastDeleted = 0;
};

class FakeCacheDetails : public CacheDetails, public Fallible {
 public:
    std::wstring CacheEntryDetails(const std::string& address) override {
        Call();
        asked.push_back(address);
        return L"Details of " + std::wstring(address.begin(), address.end());
    }
    std::vector<std::string> asked;
};

/// A cache window made of fakes, and the desktop that has it or not.
class FakeCacheWindows : public CacheWindows {
 public:
    std::int32_t FindWindowA(const char* className, const char* caption) override {
        asked.push_back(std::string(className == nullptr ? "null" : className) + "|" + caption);
        return handle;
    }
    CacheWindow* KG_Cache() override { return ours ? &window : nullptr; }

    void Open() {
        handle = 0x10024;
        ours = true;
    }
    void SetFaults(Faults* faults) {
        LetFail(faults, entries, selection, visibility, countLabel, detailsLabel, details);
    }

    std::int32_t handle = 0;
    bool ours = false;
    std::vector<std::string> asked;
    FakeAddressRows entries;
    FakeListSelection selection;
    FakeVisibility visibility;
    FakeCaption countLabel;
    FakeCaption detailsLabel;
    FakeCacheDetails details;
    CacheWindow window{entries, selection, visibility, countLabel, detailsLabel, details};
};

}  // namespace kestrelguard
