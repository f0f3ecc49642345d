// Measures the cache walk side by side with a bare enumeration that makes the same platform calls, in the
// platform's own cache, and reports ratios. The competitors take turns, round by round.
//
//   CacheWalkBench [--quick] [--rounds N] [--entries N] [--report FILE]
//
// It empties the cache: run it in a prefix of its own, with the stand-in's wininet.dll beside it.

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "CacheContents.h"
#include "Report.h"
#include "controls/win32/Win32Controls.h"
#include "privacy/KG_IECache.h"
#include "privacy/win32/WinInetCache.h"

namespace kestrelguard::bench {
namespace {

// --- the walk

class PlainLocale final : public Locale {
 public:
    std::wstring GeneralDateNow() const override { return {}; }
    std::wstring ThousandsSeparator() const override { return L","; }
};

class PlainDetails final : public CacheDetails {
 public:
    std::wstring CacheEntryDetails(const std::string& address) override {
        return {address.begin(), address.end()};
    }
};

class WindowVisibility final : public Visibility {
 public:
    explicit WindowVisibility(HWND window) : m_window(window) {}
    void SetVisible(bool visible) override { ShowWindow(m_window, visible ? SW_SHOW : SW_HIDE); }

 private:
    HWND m_window;
};

/// A window like the cache window: the caption, the list, two labels.
class ListWindow {
 public:
    explicit ListWindow(DesktopCacheWindows& windows)
        : m_windows(windows),
          m_frame(CreateWindowExA(0, "STATIC", kCacheWindowCaption, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 10, 10,
                                  700, 400, nullptr, nullptr, nullptr, nullptr)),
          m_list(ChildOf(m_frame, "LISTBOX", WS_VSCROLL | LBS_NOINTEGRALHEIGHT, {10, 40, 510, 290})),
          m_countLabel(ChildOf(m_frame, "STATIC", 0, {10, 10, 510, 30})),
          m_details(ChildOf(m_frame, "STATIC", 0, {10, 300, 510, 350})),
          m_visibility(m_list) {
        m_rows.Attach(m_list);
        m_count.Attach(m_countLabel);
        m_detailsLabel.Attach(m_details);
        m_windows.SetOwn(&m_window);
    }
    ~ListWindow() {
        m_windows.SetOwn(nullptr);
        DestroyWindow(m_frame);
    }
    ListWindow(const ListWindow&) = delete;
    ListWindow& operator=(const ListWindow&) = delete;

    HWND List() const { return m_list; }

    /// What a filled window shows besides the rows.
    void ShowOutcome() const {
        SetWindowTextA(m_countLabel, "Internet Explorer Cache 32,764 Files; 8,191 Cookies...");
        SetWindowTextA(m_details, "http://site0.example/pictures/item0.gif");
        SendMessageA(m_list, LB_SETCURSEL, 0, 0);
    }

 private:
    DesktopCacheWindows& m_windows;
    HWND m_frame;
    HWND m_list;
    HWND m_countLabel;
    HWND m_details;
    ListBoxControl m_rows;
    WindowVisibility m_visibility;
    CaptionControl m_count;
    CaptionControl m_detailsLabel;
    PlainDetails m_detailsText;
    CacheWindow m_window{m_rows, m_rows, m_visibility, m_count, m_detailsLabel, m_detailsText};
};

/// An enumeration out of memory, to see what the walk and the list cost without the platform's cache.
class MemoryCache final : public UrlCache {
 public:
    explicit MemoryCache(const std::vector<std::string>& addresses) : m_addresses(addresses) {}
    void* FindFirstUrlCacheEntryA(const char*, void* entry, std::uint32_t& size) override {
        m_next = 0;
        return Fetch(entry, size) ? this : nullptr;
    }
    bool FindNextUrlCacheEntryA(void*, void* entry, std::uint32_t& size) override {
        return Fetch(entry, size);
    }
    bool FindCloseUrlCache(void*) noexcept override { return true; }
    bool DeleteUrlCacheEntryA(const char*) override { return true; }
    std::uint32_t LastError() const override { return m_lastError; }

 private:
    bool Fetch(void* buffer, std::uint32_t& size) {
        if (m_next == m_addresses.size()) {
            m_lastError = ERROR_NO_MORE_ITEMS;
            return false;
        }
        const std::string& address = m_addresses[m_next];
        const auto needed = static_cast<std::uint32_t>(sizeof(CacheEntryHead) + address.size() + 1);
        if (buffer == nullptr || size < needed) {
            size = needed;
            m_lastError = ERROR_INSUFFICIENT_BUFFER;
            return false;
        }
        auto* const head = static_cast<CacheEntryHead*>(buffer);
        char* const text = static_cast<char*>(buffer) + sizeof *head;
        head->CacheEntryType = kNormalCacheEntry;
        head->lpszSourceUrlName = text;
        std::memcpy(text, address.c_str(), address.size() + 1);
        ++m_next;
        return true;
    }

    const std::vector<std::string>& m_addresses;
    std::size_t m_next = 0;
    std::uint32_t m_lastError = 0;
};

/// A walk with all that it needs.
class Walker {
 public:
    explicit Walker(UrlCache* other = nullptr) : m_walk(Platform(other)) {}

    void Save(const std::string& address) {
        const std::wstring text(address.begin(), address.end());
        m_saved.Add(text);
    }
    std::int32_t Walk(bool clearFiles = false, bool clearCookies = false) {
        bool showList = false;
        bool cookiesOnly = false;
        m_walk.LoadCacheEntries(showList, clearFiles, clearCookies, cookiesOnly);
        return m_walk.CacheFileCount;
    }
    DesktopCacheWindows& Windows() { return m_windows; }

 private:
    KG_IECache::Platform Platform(UrlCache* other) {
        UrlCache& cache = other == nullptr ? m_cache : *other;
        return KG_IECache::Platform{cache, m_cache, m_memory, m_text, m_windows, m_locale, m_saved};
    }

    WinInetCache m_cache;
    KernelMemory m_memory;
    KernelText m_text;
    DesktopCacheWindows m_windows;
    PlainLocale m_locale;
    TextSet m_saved;
    KG_IECache m_walk;
};

/// Ours and the other's turns, each answering milliseconds.
std::vector<Values> Duel(std::size_t rounds, const std::function<void()>& ours,
                         const std::function<void()>& other, FirstTurn first = FirstTurn::NotCounted) {
    return Turns(rounds, {[&] { return Milliseconds(ours); }, [&] { return Milliseconds(other); }}, first);
}

/// The walk and the bare enumeration over so many entries. Answers the walk's milliseconds.
double Walking(Report& report, std::size_t rounds, int entries) {
    Walker walker;
    const auto expectAll = [entries](int walked) {
        if (walked != entries) {
            Fail("the cache does not hold what was put into it");
        }
    };
    // A walk over many takes half a minute: it needs no turn to warm up.
    const std::vector<Values> values = Duel(
        rounds, [&] { expectAll(walker.Walk()); }, [&] { expectAll(BareWalk()); },
        entries > 10000 ? FirstTurn::Counted : FirstTurn::NotCounted);
    report.Compare("cache walk over " + std::to_string(entries) + " entries", "ms", values[0],
                   "a bare enumeration", values[1], 1.10);
    report.Point("walk", "cache walk", entries, Median(values[0]));
    report.Point("walk", "bare enumeration", entries, Median(values[1]));
    return Median(values[0]);
}

/// The same with every entry deleted, files included.
void Clearing(Report& report, std::size_t rounds, int entries) {
    Walker walker;
    const auto filled = [entries](const std::function<void()>& run) {
        PutEntries(0, entries, true);
        return Milliseconds(run);
    };
    const std::vector<Values> values =
        Turns(rounds, {[&] { return filled([&] { walker.Walk(true, true); }); },
                       [&] { return filled([] { BareWalk([](const char*) { return true; }); }); }});
    report.Compare("clearing " + std::to_string(entries) + " entries", "ms", values[0],
                   "a bare enumeration that deletes", values[1], 1.10);
}

/// A clearing of cookies that finds every one of them saved, against a walk that deletes nothing.
void LookingUp(Report& report, std::size_t rounds) {
    Walker walker;
    std::vector<int> cookies;
    for (int number = 3; cookies.size() < 1000; number += 4) {
        PutEntries(number, number + 1);
        walker.Save(AddressOf(number));
        cookies.push_back(number);
    }
    const std::vector<Values> values = Duel(
        rounds, [&] { walker.Walk(false, true); }, [&] { walker.Walk(); });
    if (BareWalk() != 1000) {
        Fail("a saved cookie is gone");
    }
    report.Compare("cache walk over 1000 saved cookies", "ms", values[0], "the same without looking them up",
                   values[1], 1.02);
}

/// As many rows as the list takes, from an enumeration out of memory: what the list adds to the walk.
void Filling(Report& report, std::size_t rounds) {
    std::vector<std::string> addresses;
    addresses.reserve(kMostRows);
    for (int number = 0; number < kMostRows; ++number) {
        addresses.push_back(AddressOf(number));
    }
    MemoryCache cache(addresses);
    Walker walker(&cache);
    Walker withoutList(&cache);
    ListWindow window(walker.Windows());
    const auto plainly = [&] {
        const PlainList list(window.List());
        list.BeginFill();
        for (const std::string& address : addresses) {
            list.Append(address.c_str());
        }
        list.EndFill();
        window.ShowOutcome();
    };
    std::vector<Values> values = Turns(
        rounds, {[&] { return Milliseconds([&] { walker.Walk(); }); }, [&] { return Milliseconds(plainly); },
                 [&] { return Milliseconds([&] { withoutList.Walk(); }); }});
    for (std::size_t round = 0; round < rounds; ++round) {
        values[0][round] -= values[2][round];
    }
    if (SendMessageA(window.List(), LB_GETCOUNT, 0, 0) != kMostRows) {
        Fail("the list does not hold all rows");
    }
    report.Compare("what a list of " + std::to_string(kMostRows) + " rows adds to a walk", "ms", values[0],
                   "the same rows put into a hidden list", values[1], 1.3);
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    using namespace kestrelguard::bench;
    const Options options(count, arguments);
    const std::size_t rounds = options.RoundsOr(9, 3);
    const int many = options.entries > 10000 ? static_cast<int>(options.entries)
                     : options.quick         ? 15000
                                             : 33000;
    Report report(options);
    EmptyCache();
    Filling(report, rounds);
    LookingUp(report, rounds);
    EmptyCache();
    Clearing(report, rounds, 1000);
    EmptyCache();
    int entries = 0;
    Values each;
    // A walk over the largest takes half a minute: the machine's hiccups have no weight in it.
    for (const auto& [size, usual] : {std::pair<int, std::size_t>{1000, 9}, {10000, 5}, {many, 2}}) {
        PutEntries(entries, size);
        entries = size;
        const double time = Walking(report, options.RoundsOr(usual, std::min<std::size_t>(usual, 3)), size);
        each.push_back(time / size * 1000);
    }
    const double growth = each.back() / each.front();
    report.Compare("an entry of a walk over " + std::to_string(many), "us", each.back(), "one of 1000",
                   each.front(), 1.5, {growth, growth, growth});
    EmptyCache();
    return 0;
}
