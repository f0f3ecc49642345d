#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "privacy/CachePlatform.h"
#include "runtime/RunTimeError.h"

/// The browser's history of visited addresses as a small object model.
namespace kestrelguard {

/// One history entry as the platform hands it over (`STATURL`, 40 bytes on 32-bit Windows). The two texts
/// belong to whoever holds the record.
struct HistoryRecord {
    std::uint32_t cbSize;
    char16_t* pwcsUrl;
    char16_t* pwcsTitle;
    FileTime ftLastVisited;
    FileTime ftLastUpdated;
    FileTime ftExpires;
    std::uint32_t dwFlags;
};

/// Calendar fields of a moment (`SYSTEMTIME`).
struct CalendarTime {
    std::uint16_t year;
    std::uint16_t month;
    std::uint16_t dayOfWeek;
    std::uint16_t day;
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t milliseconds;
};

/// A walk over the history's entries. All verbs throw RunTimeError with the call's HRESULT.
class HistoryEnumerator {
 public:
    virtual ~HistoryEnumerator() = default;
    virtual void SetFilter(const std::wstring& startsWith, std::uint32_t flags) = 0;
    /// Hands over one entry and its texts. Answers the number of entries fetched, 0 at the end.
    virtual std::uint32_t Next(HistoryRecord& record) = 0;
};

/// The history's store. All verbs throw RunTimeError with the call's HRESULT.
class HistoryStore {
 public:
    virtual ~HistoryStore() = default;
    virtual void AddUrl(const std::wstring& url, const std::wstring& title, std::uint32_t flags) = 0;
    virtual void DeleteUrl(const std::wstring& url, std::uint32_t flags) = 0;
    virtual std::unique_ptr<HistoryEnumerator> EnumUrls() = 0;
    virtual void ClearHistory() = 0;
};

/// Texts and times of history entries.
class HistoryValues {
 public:
    virtual ~HistoryValues() = default;
    virtual void CoTaskMemFree(void* text) noexcept = 0;
    virtual std::int32_t lstrlenW(const char16_t* text) = 0;
    /// The three below throw RunTimeError when the platform refuses the moment.
    virtual void FileTimeToLocalFileTime(const FileTime& time, FileTime& localTime) = 0;
    virtual void FileTimeToSystemTime(const FileTime& time, CalendarTime& calendar) = 0;
    virtual double SystemTimeToVariantTime(const CalendarTime& calendar) = 0;
};

/// Where a CURLHistory takes its store from.
class HistoryPlatform {
 public:
    virtual ~HistoryPlatform() = default;
    /// Creates the history's store. Throws RunTimeError with the call's HRESULT.
    virtual std::unique_ptr<HistoryStore> Create() = 0;
    virtual HistoryValues& Values() = 0;
};

/// One history entry. Created by CURLHistory alone; owns the two texts of its record.
class URLHistoryItem {
    /// What only CURLHistory can make.
    struct Maker {};

 public:
    URLHistoryItem(const Maker&, HistoryValues& values) : m_values(values) {}
    ~URLHistoryItem();
    URLHistoryItem(const URLHistoryItem&) = delete;
    URLHistoryItem& operator=(const URLHistoryItem&) = delete;

    /// The three moments as date-times: days since 30 December 1899, local time. Kept: each read shifts the
    /// stored moment itself to local time, so that a further read gives a value shifted once more.
    double LastVisited();
    double Expires();
    double LastUpdated();
    std::wstring URL() const;
    std::int32_t Flags() const;
    std::wstring Title() const;

 private:
    friend class CURLHistory;

    void SetData(const HistoryRecord& record) noexcept { m_record = record; }
    double DateTime(FileTime& time);
    std::wstring Text(const char16_t* text) const;

    HistoryValues& m_values;
    HistoryRecord m_record{};
};

/// The history as a collection of URLHistoryItem, in the platform's order. A failing platform call throws
/// RunTimeError with its HRESULT.
class CURLHistory {
 public:
    /// An enumeration that never ends must not take the program with it: one that goes in circles is told by
    /// its addresses; behind that stands a plain limit: so many entries would fill the better part of the
    /// 2 GB that a process has.
    static constexpr std::uint32_t kMostEntries = 0x80000000U / 128U;

    /// Creates the store and loads all entries. `platform` outlives the object and its items.
    explicit CURLHistory(HistoryPlatform& platform, std::uint32_t mostEntries = kMostEntries);

    /// Adds an address to the history; the collection is not reloaded.
    void AddURL(const std::wstring& URL, const std::wstring& Title, std::int32_t Flags);
    std::int32_t Count() const;
    /// Empties the whole history and reloads the collection.
    void Clear();
    /// Reloads the collection with the addresses that the platform's filter lets through; an empty text
    /// filters nothing.
    void Refresh(const std::wstring& URLStartsWith, std::int32_t Flags);
    /// The entry of an index that counts from 1. Throws kSubscriptOutOfRange.
    const std::shared_ptr<URLHistoryItem>& Item(std::int32_t Index) const;
    /// Deletes the entry of an index that counts from 1. Throws kSubscriptOutOfRange.
    void Remove(std::int32_t Index);
    /// Kept: the address is a number here; its decimal text is what is deleted.
    void DeleteURL(std::int32_t URL, std::int32_t Flags);

    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

 private:
    std::size_t Position(std::int32_t index) const;

    HistoryPlatform& m_platform;
    std::uint32_t m_mostEntries;
    std::unique_ptr<HistoryStore> m_store;
    std::vector<std::shared_ptr<URLHistoryItem>> m_items;
};

}  // namespace kestrelguard
