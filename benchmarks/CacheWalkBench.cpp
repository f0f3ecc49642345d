// Measures the cache walk side by side with a bare enumeration that makes the same platform calls, in the
// platform's own cache, and prints ratios. The competitors take turns, round by round; a ratio is the median
// over the rounds.
//
//   CacheWalkBench [--rounds N] [--entries N]
//
// It empties the cache: run it in a prefix of its own, with the stand-in's wininet.dll beside it.

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "controls/win32/Win32Controls.h"
#include "privacy/KG_IECache.h"
#include "privacy/win32/WinInetCache.h"

namespace kestrelguard::bench {
namespace {

using Values = std::vector<double>;

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "CacheWalkBench: %s\n", what.c_str());
    std::exit(1);
}

double Median(Values values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

double Ratio(const Values& of, const Values& to) {
    Values ratios;
    for (std::size_t round = 0; round < of.size(); ++round) {
        ratios.push_back(of[round] / to[round]);
    }
    return Median(ratios);
}

int missed = 0;

void Print(const std::string& what, double ratio, double goal) {
    const bool met = ratio <= goal;
    missed += met ? 0 : 1;
    std::printf("  %-62s %8.4f   goal <= %-6g %s\n", what.c_str(), ratio, goal, met ? "met" : "MISSED");
    std::fflush(stdout);
}

/// Runs something and answers the milliseconds.
double Time(const std::function<void()>& run) {
    LARGE_INTEGER frequency{};
    LARGE_INTEGER start{};
    LARGE_INTEGER end{};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    run();
    QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - start.QuadPart) * 1000.0 /
           static_cast<double>(frequency.QuadPart);
}

// --- the cache's contents

std::string Address(int number) {
    const std::string index = std::to_string(number);
    return number % 4 == 3
               ? "Cookie:jane@site" + index + ".example/"
               : "http://site" + std::to_string(number % 97) + ".example/pictures/item" + index + ".gif";
}

/// Entries without files: the walk does not look at these.
void Put(int from, int to, bool withFiles) {
    const FILETIME never{};
    for (int number = from; number < to; ++number) {
        const std::string address = Address(number);
        char path[MAX_PATH] = {};
        if (withFiles) {
            if (!CreateUrlCacheEntryA(address.c_str(), 1, "gif", path, 0)) {
                Fail("cannot make a cache file");
            }
            const HANDLE file =
                CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
            DWORD written = 0;
            WriteFile(file, "x", 1, &written, nullptr);
            CloseHandle(file);
        }
        if (!CommitUrlCacheEntryA(address.c_str(), withFiles ? path : nullptr, never, never,
                                  NORMAL_CACHE_ENTRY, nullptr, 0, "gif", nullptr)) {
            Fail("cannot make a cache entry");
        }
    }
}

/// What the walk does to the platform, and nothing else.
int BareWalk(bool deleting) {
    int entries = 0;
    DWORD size = 0;
    HANDLE find = FindFirstUrlCacheEntryA("0", nullptr, &size);
    if (find != nullptr || GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return 0;
    }
    void* buffer = LocalAlloc(0, size);
    *static_cast<DWORD*>(buffer) = size;
    find = FindFirstUrlCacheEntryA(nullptr, static_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer), &size);
    std::vector<char> text(4096);
    for (bool found = find != nullptr; found;) {
        const char* const address = static_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer)->lpszSourceUrlName;
        if (lstrlenA(address) < 4096) {
            lstrcpyA(text.data(), address);
        }
        ++entries;
        if (deleting) {
            DeleteUrlCacheEntryA(text.data());
        }
        LocalFree(buffer);
        size = 0;
        FindNextUrlCacheEntryA(find, nullptr, &size);
        buffer = LocalAlloc(0, size);
        if (size >= sizeof size) {
            *static_cast<DWORD*>(buffer) = size;
        }
        found =
            FindNextUrlCacheEntryA(find, static_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer), &size) != FALSE;
    }
    LocalFree(buffer);
    FindCloseUrlCache(find);
    return entries;
}

// --- the walk

class PlainLocale final : public Locale {
 public:
    std::wstring GeneralDateNow() const override { return {}; }
    std::wstring ThousandsSeparator() const override { return L","; }
};

class PlainDetails final : public CacheDetails {
 public:
    std::wstring CacheEntryDetails(const std::wstring& address) override { return address; }
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
          m_list(Child("LISTBOX", WS_VSCROLL | LBS_NOINTEGRALHEIGHT, 10, 40, 500, 250)),
          m_countLabel(Child("STATIC", 0, 10, 10, 500, 20)),
          m_details(Child("STATIC", 0, 10, 300, 500, 50)),
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
        ShowWindow(m_list, SW_SHOW);
        SetWindowTextA(m_details, "http://site0.example/pictures/item0.gif");
        SendMessageA(m_list, LB_SETCURSEL, 0, 0);
    }

 private:
    HWND Child(const char* kind, DWORD style, int x, int y, int width, int height) const {
        return CreateWindowExA(0, kind, "", WS_CHILD | WS_VISIBLE | style, x, y, width, height, m_frame,
                               nullptr, nullptr, nullptr);
    }

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
        m_saved.Add(text, text);
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

/// Runs all in turn, so many times, after one turn that is not counted.
std::vector<Values> Turns(std::size_t rounds, const std::vector<std::function<double()>>& subjects) {
    std::vector<Values> values(subjects.size());
    for (std::size_t round = 0; round <= rounds; ++round) {
        for (std::size_t turn = 0; turn < subjects.size(); ++turn) {
            // Nobody always comes first.
            const std::size_t subject = (turn + round) % subjects.size();
            const double value = subjects[subject]();
            if (round > 0) {
                values[subject].push_back(value);
            }
        }
    }
    return values;
}

void Empty() {
    Walker walker;
    walker.Walk(true, true);
    if (BareWalk(false) != 0) {
        Fail("the cache cannot be emptied");
    }
}

/// The walk and the bare enumeration over so many entries. Answers the walk's milliseconds.
double Walking(std::size_t rounds, int entries) {
    Walker walker;
    if (walker.Walk() != entries || BareWalk(false) != entries) {
        Fail("the cache does not hold what was put into it");
    }
    const std::vector<Values> values = Turns(
        rounds, {[] { return Time([] { BareWalk(false); }); }, [&] { return Time([&] { walker.Walk(); }); }});
    std::printf("A walk over %d entries; times of a bare enumeration (%.1f ms)\n", entries,
                Median(values[0]));
    Print("cache walk", Ratio(values[1], values[0]), 1.10);
    return Median(values[1]);
}

/// The same with every entry deleted, files included.
void Clearing(std::size_t rounds, int entries) {
    Walker walker;
    const auto filled = [entries](const std::function<void()>& run) {
        Put(0, entries, true);
        return Time(run);
    };
    const std::vector<Values> values =
        Turns(rounds, {[&] { return filled([] { BareWalk(true); }); },
                       [&] { return filled([&] { walker.Walk(true, true); }); }});
    std::printf("Clearing %d entries; times of a bare enumeration that deletes (%.1f ms)\n", entries,
                Median(values[0]));
    Print("clearing walk", Ratio(values[1], values[0]), 1.10);
}

/// A clearing of cookies that finds every one of them saved, against a walk that deletes nothing.
void LookingUp(std::size_t rounds) {
    Walker walker;
    std::vector<int> cookies;
    for (int number = 3; cookies.size() < 1000; number += 4) {
        Put(number, number + 1, false);
        walker.Save(Address(number));
        cookies.push_back(number);
    }
    const std::vector<Values> values =
        Turns(rounds, {[&] { return Time([&] { walker.Walk(); }); },
                       [&] { return Time([&] { walker.Walk(false, true); }); }});
    if (BareWalk(false) != 1000) {
        Fail("a saved cookie is gone");
    }
    std::printf("A walk over 1000 saved cookies; times of the same without looking them up (%.1f ms)\n",
                Median(values[0]));
    Print("cookies looked up", Ratio(values[1], values[0]), 1.02);
}

/// As many rows as the list takes, from an enumeration out of memory: what the list adds to the walk.
void Filling(std::size_t rounds) {
    constexpr int rows = 32764;
    std::vector<std::string> addresses;
    for (int number = 0; number < rows; ++number) {
        addresses.push_back(Address(number));
    }
    MemoryCache cache(addresses);
    Walker walker(&cache);
    Walker withoutList(&cache);
    ListWindow window(walker.Windows());
    const auto bare = [&] {
        SendMessageA(window.List(), LB_RESETCONTENT, 0, 0);
        ShowWindow(window.List(), SW_HIDE);
        SendMessageA(window.List(), WM_SETREDRAW, FALSE, 0);
        for (const std::string& address : addresses) {
            SendMessageA(window.List(), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(address.c_str()));
        }
        SendMessageA(window.List(), WM_SETREDRAW, TRUE, 0);
        window.ShowOutcome();
    };
    std::vector<Values> values =
        Turns(rounds, {[&] { return Time(bare); }, [&] { return Time([&] { walker.Walk(); }); },
                       [&] { return Time([&] { withoutList.Walk(); }); }});
    for (std::size_t round = 0; round < rounds; ++round) {
        values[1][round] -= values[2][round];
    }
    if (SendMessageA(window.List(), LB_GETCOUNT, 0, 0) != rows) {
        Fail("the list does not hold all rows");
    }
    std::printf(
        "What a list of %d rows adds to a walk; times of the same rows put into a hidden list (%.1f ms)\n",
        rows, Median(values[0]));
    Print("filling", Ratio(values[1], values[0]), 1.3);
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    using namespace kestrelguard::bench;
    std::size_t rounds = 9;
    int entries = 33000;
    for (int at = 1; at + 1 < count; at += 2) {
        const std::string option = arguments[at];
        const int number = std::atoi(arguments[at + 1]);
        if (option == "--rounds" && number > 0) {
            rounds = static_cast<std::size_t>(number);
        } else if (option == "--entries" && number > 1000) {
            entries = number;
        } else {
            Fail("unknown option " + option);
        }
    }
    Empty();
    Filling(rounds);
    LookingUp(rounds);
    Empty();
    Clearing(rounds, 1000);
    Empty();
    Put(0, 1000, false);
    const double small = Walking(rounds, 1000);
    Put(1000, entries, false);
    const double large = Walking(std::min<std::size_t>(rounds, 3), entries);
    std::printf("An entry among %d; times of one among 1000\n", entries);
    Print("cache walk", large / entries / (small / 1000), 1.5);
    Empty();
    if (missed > 0) {
        std::printf("%d goals missed\n", missed);
    }
    return 0;
}
