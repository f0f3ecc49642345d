#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "controls/Fakes.h"
#include "privacy/UrlHistory.h"

namespace kestrelguard {

/// A history in memory. It keeps the books of texts and objects, writes down every call, and can let any one
/// call fail (Faults).
class FakeHistory : public HistoryPlatform, public HistoryValues, public Fallible {
 public:
    struct Entry {
        std::u16string url;
        std::u16string title;
        FileTime visited{0, 1000};
        FileTime updated{0, 2000};
        FileTime expires{0, 3000};
        std::uint32_t flags = 0;
        bool untitled = false;
    };

    FakeHistory() = default;
    FakeHistory(const FakeHistory&) = delete;
    FakeHistory& operator=(const FakeHistory&) = delete;
    ~FakeHistory() override = default;

    bool BooksAreEven() const { return m_texts.empty() && stores == 0 && enumerators == 0; }

    std::unique_ptr<HistoryStore> Create() override {
        Log("create");
        Call();
        return std::make_unique<Store>(*this);
    }
    HistoryValues& Values() override { return *this; }

    void CoTaskMemFree(void* text) noexcept override {
        if (text == nullptr) {
            return;
        }
        freed.push_back(std::u16string(static_cast<char16_t*>(text)));
        freedTwice = freedTwice || m_texts.erase(static_cast<char16_t*>(text)) != 1;
    }
    std::int32_t lstrlenW(const char16_t* text) override {
        return static_cast<std::int32_t>(std::u16string(text).size());
    }
    void FileTimeToLocalFileTime(const FileTime& time, FileTime& localTime) override {
        Call();
        inPlace = inPlace && &time == &localTime;
        localTime = FileTime{time.low, time.high + zone};
    }
    void FileTimeToSystemTime(const FileTime& time, CalendarTime& calendar) override {
        Call();
        calendar = CalendarTime{};
        calendar.year = static_cast<std::uint16_t>(time.high);
    }
    double SystemTimeToVariantTime(const CalendarTime& calendar) override {
        Call();
        return calendar.year;
    }

    std::vector<Entry> entries;
    /// After the last entry the enumeration goes on with this one; -1: it ends.
    int circleTo = -1;
    /// What ClearHistory leaves behind.
    std::size_t stubborn = 0;
    std::uint32_t zone = 2;
    std::vector<std::string> calls;
    std::vector<std::u16string> freed;
    bool freedTwice = false;
    bool inPlace = true;
    int stores = 0;
    int enumerators = 0;

 private:
    static std::u16string Narrow(const std::wstring& text) {
        return std::u16string(text.begin(), text.end());
    }
    static std::string Plain(const std::wstring& text) {
        std::string plain;
        for (const wchar_t letter : text) {
            plain += static_cast<char>(letter);
        }
        return plain;
    }
    void Log(const std::string& call) { calls.push_back(call); }
    char16_t* NewText(const std::u16string& text) {
        auto copy = std::make_unique<char16_t[]>(text.size() + 1);
        char16_t* const start = copy.get();
        text.copy(start, text.size());
        m_texts[start] = std::move(copy);
        return start;
    }

    class Enumerator : public HistoryEnumerator {
     public:
        explicit Enumerator(FakeHistory& history) : m_history(history) { ++m_history.enumerators; }
        Enumerator(const Enumerator&) = delete;
        Enumerator& operator=(const Enumerator&) = delete;
        ~Enumerator() override { --m_history.enumerators; }
        void SetFilter(const std::wstring& startsWith, std::uint32_t flags) override {
            m_history.Log("filter " + Plain(startsWith) + " " + std::to_string(flags));
            m_history.Call();
            m_filter = Narrow(startsWith);
        }
        std::uint32_t Next(HistoryRecord& record) override {
            m_history.Call();
            while (m_position < m_history.entries.size() &&
                   m_history.entries[m_position].url.compare(0, m_filter.size(), m_filter) != 0) {
                ++m_position;
            }
            if (m_position == m_history.entries.size() && m_history.circleTo >= 0) {
                m_position = static_cast<std::size_t>(m_history.circleTo);
            }
            if (m_position == m_history.entries.size()) {
                return 0;
            }
            const Entry& entry = m_history.entries[m_position++];
            record.pwcsUrl = m_history.NewText(entry.url);
            record.pwcsTitle = entry.untitled ? nullptr : m_history.NewText(entry.title);
            record.ftLastVisited = entry.visited;
            record.ftLastUpdated = entry.updated;
            record.ftExpires = entry.expires;
            record.dwFlags = entry.flags;
            return 1;
        }

     private:
        FakeHistory& m_history;
        std::u16string m_filter;
        std::size_t m_position = 0;
    };

    class Store : public HistoryStore {
     public:
        explicit Store(FakeHistory& history) : m_history(history) { ++m_history.stores; }
        Store(const Store&) = delete;
        Store& operator=(const Store&) = delete;
        ~Store() override { --m_history.stores; }
        void AddUrl(const std::wstring& url, const std::wstring& title, std::uint32_t flags) override {
            m_history.Log("add " + Plain(url) + " " + Plain(title) + " " + std::to_string(flags));
            m_history.Call();
            m_history.entries.push_back(Entry{Narrow(url), Narrow(title)});
        }
        void DeleteUrl(const std::wstring& url, std::uint32_t flags) override {
            m_history.Log("delete " + Plain(url) + " " + std::to_string(flags));
            m_history.Call();
            std::erase_if(m_history.entries, [&](const Entry& entry) { return entry.url == Narrow(url); });
        }
        std::unique_ptr<HistoryEnumerator> EnumUrls() override {
            m_history.Log("enum");
            m_history.Call();
            return std::make_unique<Enumerator>(m_history);
        }
        void ClearHistory() override {
            m_history.Log("clear");
            m_history.Call();
            m_history.entries.resize(std::min(m_history.entries.size(), m_history.stubborn));
        }

     private:
        FakeHistory& m_history;
    };

    std::map<char16_t*, std::unique_ptr<char16_t[]>> m_texts;
};

}  // namespace kestrelguard
