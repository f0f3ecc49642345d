// Measures the cache window on as many entries as it lists: opening it, switching its views, a search that
// finds nothing, one deletion. Each is compared with the least that does the same with the platform's cache
// and a list box.
//
//   CacheWindowBench [--quick] [--rounds N] [--entries N] [--report FILE]
//
// It empties the cache: run it in a prefix of its own, with the stand-in's wininet.dll beside it.

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "CacheContents.h"
#include "Report.h"
#include "app/win32/CacheWindowHost.h"
#include "controls/win32/PlatformMessageLoop.h"
#include "privacy/KG_IECache.h"
#include "runtime/win32/Win32Locale.h"
#include "runtime/win32/Win32ProgramFolder.h"

namespace kestrelguard::bench {
namespace {

/// Answers every message box of this thread at once, and notes when it came and when it went.
class Boxes {
 public:
    explicit Boxes(int answer) {
        s_answer = answer;
        s_came = s_went = 0;
        m_hook = SetWindowsHookExA(WH_CBT, Hook, nullptr, GetCurrentThreadId());
    }
    ~Boxes() { UnhookWindowsHookEx(m_hook); }
    Boxes(const Boxes&) = delete;
    Boxes& operator=(const Boxes&) = delete;

    /// Nanoseconds; 0: there was none.
    static std::uint64_t Came() { return s_came; }
    static std::uint64_t Went() { return s_went; }

 private:
    static LRESULT CALLBACK Hook(int code, WPARAM window, LPARAM lParam) noexcept {
        char name[16] = {};
        if (code >= 0) {
            GetClassNameA(reinterpret_cast<HWND>(window), name, 16);
        }
        if (lstrcmpA(name, "#32770") == 0) {
            if (code == HCBT_CREATEWND) {
                s_came = Nanoseconds();
            } else if (code == HCBT_ACTIVATE) {
                PostMessageA(reinterpret_cast<HWND>(window), WM_COMMAND, static_cast<WPARAM>(s_answer), 0);
            } else if (code == HCBT_DESTROYWND) {
                s_went = Nanoseconds();
            }
        }
        return CallNextHookEx(nullptr, code, window, lParam);
    }

    static inline int s_answer = 0;
    static inline std::uint64_t s_came = 0;
    static inline std::uint64_t s_went = 0;
    HHOOK m_hook;
};

/// The program's cache window, wired as in the program.
class Window {
 public:
    void Open() {
        m_host.ShowCacheWindow();
        m_window = ::FindWindowA(nullptr, kCacheWindowCaption);
        if (m_window == nullptr) {
            Fail("the cache window does not open");
        }
        Paint();
    }
    void Close() {
        m_host.Unload();
        m_window = nullptr;
    }
    void Click(const char* button) const {
        SendMessageA(FindWindowExA(m_window, nullptr, "Button", button), BM_CLICK, 0, 0);
        Paint();
    }
    HWND List() const { return FindWindowExA(m_window, nullptr, "ListBox", nullptr); }
    int Rows() const { return static_cast<int>(SendMessageA(List(), LB_GETCOUNT, 0, 0)); }
    void SearchFor(const char* text) const {
        SetWindowTextA(FindWindowExA(m_window, nullptr, "Edit", nullptr), text);
    }
    void DoubleClick(int row) const {
        SendMessageA(List(), LB_SETCURSEL, static_cast<WPARAM>(row), 0);
        SendMessageA(m_window, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(List()), LBN_DBLCLK),
                     reinterpret_cast<LPARAM>(List()));
        Paint();
    }

 private:
    void Paint() const { RedrawWindow(m_window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN); }

    bool m_cookiesOnly = false;
    TextSet m_savedCookies;
    WinInetCache m_cache;
    KernelMemory m_memory;
    KernelText m_text;
    DesktopCacheWindows m_windows;
    Win32Locale m_locale;
    PlatformMessageLoop m_messages;
    Win32ProgramFolder m_folder{FolderOfProgram()};
    SavedCookiesStore m_savedCookiesFile{m_folder, m_locale, m_savedCookies};
    KG_IECache m_walk{{m_cache, m_cache, m_memory, m_text, m_windows, m_locale, m_savedCookies}};
    CacheWindowHost m_host{{WindowIcons{}, m_walk, m_windows, m_locale, m_messages, m_savedCookies,
                            m_savedCookiesFile, m_cookiesOnly,
                            [](HWND, const RunTimeError&) { Fail("a handler fails"); }}};
    HWND m_window = nullptr;
};

/// A frame with a list box, filled by a bare walk.
class PlainWindow {
 public:
    void Open() {
        m_frame = CreateWindowExA(0, "STATIC", "plain", WS_OVERLAPPEDWINDOW, 10, 10, 700, 400, nullptr,
                                  nullptr, nullptr, nullptr);
        m_list = ChildOf(m_frame, "LISTBOX", WS_VSCROLL | LBS_NOINTEGRALHEIGHT | LBS_HASSTRINGS,
                         {10, 40, 510, 290});
        Fill(false);
        ShowWindow(m_frame, SW_SHOW);
        Paint();
    }
    void Close() { DestroyWindow(m_frame); }
    void Fill(bool cookiesOnly) const {
        const PlainList list(m_list);
        list.BeginFill();
        BareWalk([&](const char* address) {
            if (!cookiesOnly || std::strstr(address, "Cookie:") != nullptr) {
                list.Append(address);
            }
            return false;
        });
        list.EndFill();
        Paint();
    }
    int RowsWith(const char* text) const {
        int found = 0;
        const auto rows = SendMessageA(m_list, LB_GETCOUNT, 0, 0);
        char buffer[4096];
        for (LRESULT row = 0; row < rows; ++row) {
            SendMessageA(m_list, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(buffer));
            found += std::strstr(buffer, text) != nullptr ? 1 : 0;
        }
        return found;
    }
    void Delete(int row) const {
        char buffer[4096];
        SendMessageA(m_list, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(buffer));
        if (!DeleteUrlCacheEntryA(buffer)) {
            Fail("an entry cannot be deleted");
        }
        SendMessageA(m_list, LB_DELETESTRING, static_cast<WPARAM>(row), 0);
        Paint();
    }

 private:
    void Paint() const { RedrawWindow(m_frame, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN); }

    HWND m_frame = nullptr;
    HWND m_list = nullptr;
};

/// Windows that come and go leave messages.
void Settle() {
    PlatformMessageLoop().DoEvents();
}

double Took(const std::function<void()>& run) {
    const double time = Milliseconds(run);
    Settle();
    return time;
}

void Run(const Options& options) {
    // A walk over all of them takes half a minute, and three of the measures walk. Turns of that length
    // hardly differ: each takes one, and several runs show the noise.
    const std::size_t rounds = options.RoundsOr(1, 1);
    const int entries = options.entries != 0 ? static_cast<int>(options.entries)
                        : options.quick      ? 5000
                                             : kMostRows;
    Report report(options);
    const std::string listed = " of " + std::to_string(entries) + " entries";
    EmptyCache();
    PutEntries(0, entries);
    Window window;
    PlainWindow plain;
    constexpr char kPlain[] = "a bare walk into a hidden list";

    std::vector<Values> values = Turns(rounds,
                                       {[&] {
                                            const double time = Took([&] { window.Open(); });
                                            window.Close();
                                            return time;
                                        },
                                        [&] {
                                            const double time = Took([&] { plain.Open(); });
                                            plain.Close();
                                            return time;
                                        }},
                                       FirstTurn::Counted);
    report.Compare("opening the cache window" + listed, "ms", values[0], kPlain, values[1], 1.3);

    window.Open();
    plain.Open();
    values = Turns(rounds,
                   {[&] { return Took([&] { window.Click("Cookies"); }); },
                    [&] { return Took([&] { plain.Fill(true); }); }},
                   FirstTurn::Counted);
    report.Compare("switching to the cookies" + listed, "ms", values[0], kPlain, values[1], 1.3);
    values = Turns(rounds,
                   {[&] { return Took([&] { window.Click("All Cache"); }); },
                    [&] { return Took([&] { plain.Fill(false); }); }},
                   FirstTurn::Counted);
    report.Compare("switching to all" + listed, "ms", values[0], kPlain, values[1], 1.3);
    if (window.Rows() != entries) {
        Fail("the cache window does not list all");
    }

    int searches = 0;
    const auto search = [&] {
        const Boxes boxes(IDOK);
        // The same text would go on from the last place. And the caption changes after a search.
        window.SearchFor(("nowhere" + std::to_string(++searches)).c_str());
        const std::uint64_t begin = Nanoseconds();
        window.Click(searches == 1 ? "<- Find" : "<- Find ");
        if (Boxes::Came() == 0) {
            Fail("a search that finds nothing does not say so");
        }
        Settle();
        return static_cast<double>(Boxes::Came() - begin) / 1e6;
    };
    values = Turns(
        std::max<std::size_t>(rounds, 5),
        {search, [&] { return Took([&] { Use(static_cast<std::size_t>(plain.RowsWith("nowhere"))); }); }});
    report.Compare("a search without a match" + listed, "ms", values[0], "reading every row of the list",
                   values[1]);

    // Each deletes what the other still lists, far from its own.
    int ours = 100;
    int others = entries / 2;
    const auto remove = [&] {
        const Boxes boxes(IDYES);
        const int before = window.Rows();
        window.DoubleClick(ours);
        const std::uint64_t end = Nanoseconds();
        ours += 10;
        if (Boxes::Went() == 0 || window.Rows() != before - 1) {
            Fail("an entry is not deleted");
        }
        Settle();
        return static_cast<double>(end - Boxes::Went()) / 1e6;
    };
    values = Turns(std::max<std::size_t>(rounds, 9), {remove, [&] {
                                                          others += 10;
                                                          return Took([&] { plain.Delete(others); });
                                                      }});
    report.Compare("deleting one entry" + listed, "ms", values[0], "the deletion and a row less", values[1]);
    window.Close();
    plain.Close();
    EmptyCache();
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    kestrelguard::bench::Run(kestrelguard::bench::Options(count, arguments));
    return 0;
}
