#pragma once

#include <windows.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "BrowserTraces.h"
#include "DesktopTest.h"
#include "desktop/driver/CacheFiller.h"

namespace kestrelguard::testing {

using Texts = std::vector<std::string>;
using WideTexts = std::vector<std::wstring>;

inline constexpr wchar_t kScheduleBox[] = L"Clear Automatically every";

/// A setting of the stand-in's libraries that holds for programs started meanwhile.
class StandInSetting {
 public:
    StandInSetting(const wchar_t* name, const std::wstring& value) : m_name(name) {
        SetEnvironmentVariableW(name, value.c_str());
    }
    ~StandInSetting() { SetEnvironmentVariableW(m_name, nullptr); }
    StandInSetting(const StandInSetting&) = delete;
    StandInSetting& operator=(const StandInSetting&) = delete;

 private:
    const wchar_t* m_name;
};

class PrivacyTest : public OneGuardTest {
 protected:
    /// The program binds to the stand-in's wininet.dll in its own folder, and finds the stand-in's history.
    static void SetUpTestSuite() { ASSERT_TRUE(UseStandInLibraries()); }

    PrivacyTest() {
        CacheFiller::Empty();
        DeleteFileW(kHistoryFile);
        m_page = CacheFiller::Add("http://news.example/index.html", "a page");
        m_cookie = CacheFiller::Add("Cookie:jane@news.example/", "a cookie");
        m_saved = CacheFiller::Add("Cookie:jane@bank.example/", "a saved cookie");
    }
    ~PrivacyTest() override {
        m_guard.reset();
        CacheFiller::Empty();
    }

    /// `cookies`: the saved ones; none means that there is no file.
    void Start(const std::string& settings = {}, const Texts& cookies = {"Cookie:jane@bank.example/"}) {
        std::optional<std::string> file;
        if (!cookies.empty()) {
            file = kHeader;
            for (const std::string& cookie : cookies) {
                *file += cookie + "\r\n";
            }
        }
        StartWithFiles(settings, file);
    }
    /// With these contents of the two files; without one there is no such file.
    void StartWithFiles(const std::optional<std::string>& settings,
                        const std::optional<std::string>& cookies) {
        m_folder = std::make_unique<GuardFolder>(settings, cookies);
        m_folder->Add(OwnFolder() + L"\\wininet.dll");
        m_guard = std::make_unique<Guard>(*m_folder);
        ASSERT_TRUE(m_guard->WaitReady());
        ClickTab(m_guard->Tabs(), 2);
        ASSERT_TRUE(WaitUntil([this] { return SelectedTab(m_guard->Tabs()) == 2; }));
    }
    static std::string Schedule(bool cache, bool history, bool cookies, bool automatic,
                                const char* interval) {
        const auto letter = [](bool yes) { return yes ? "y\r\n" : "n\r\n"; };
        return std::string("MIN/:/:n\r\nPP1/:/:") + letter(cache) + "PP2/:/:" + letter(history) +
               "PP3/:/:" + letter(cookies) + "PP4/:/:" + (automatic ? "y" : "n") + "/:/:" + interval + "\r\n";
    }

    void Press(const wchar_t* caption) const {
        const HWND button = m_guard->Button(caption);
        ASSERT_NE(nullptr, button) << std::string(caption, caption + lstrlenW(caption));
        ClickAndWait(button);
    }
    HWND ScheduleBox() const { return m_guard->Button(kScheduleBox); }
    HWND IntervalField() const { return m_guard->Edits().at(2); }
    bool BoxShown() const { return static_cast<bool>(FindMessageBox(m_guard->Program().Id())); }

    /// Ticks of the one-minute timer, each sent and waited for: a wash serves messages in its midst, so that
    /// nothing posted tells its end.
    void Tick(int ticks = 1) const {
        for (int tick = 0; tick < ticks; ++tick) {
            LRESULT answer = 0;
            ASSERT_TRUE(Ask(m_guard->Window(), WM_TIMER, kWasherTimer, 0, answer));
        }
    }
    /// Ticks as the system posts them.
    void PostTicks(int ticks) const {
        for (int tick = 0; tick < ticks; ++tick) {
            PostMessageW(m_guard->Window(), WM_TIMER, kWasherTimer, 0);
        }
    }

    // The cache and the history as they are.
    bool PageThere() const { return kestrelguard::FileExists(m_page); }
    bool CookieThere() const { return kestrelguard::FileExists(m_cookie); }
    bool SavedThere() const { return kestrelguard::FileExists(m_saved); }
    /// Which of the three are there, as "p", "c" and "s".
    std::string There() const {
        return std::string(PageThere() ? "p" : "") + (CookieThere() ? "c" : "") + (SavedThere() ? "s" : "");
    }
    void Refill() {
        m_page = CacheFiller::Add("http://news.example/index.html", "a page");
        m_cookie = CacheFiller::Add("Cookie:jane@news.example/", "a cookie");
    }
    static void VisitPages() { ASSERT_TRUE(VisitTwoPages()); }

    // The cache window.
    HWND CacheWindow() const {
        return FindTop(m_guard->Program().Id(), [](HWND window) {
            return TextOf(window) == kCacheCaption && IsWindowVisible(window);
        });
    }
    HWND OpenCacheWindow(const wchar_t* button) const {
        Click(m_guard->Button(button));
        HWND window = nullptr;
        WaitUntil([&] { return (window = CacheWindow()) != nullptr; });
        return window;
    }
    static std::vector<HWND> Lists(HWND window) {
        std::vector<HWND> lists;
        for (const HWND child : testing::Inside(window)) {
            if (lstrcmpiW(ClassOf(child).c_str(), L"ListBox") == 0) {
                lists.push_back(child);
            }
        }
        return lists;
    }
    static HWND Entries(HWND window) { return Lists(window).at(0); }
    static HWND SavedList(HWND window) { return Lists(window).at(1); }
    /// The label that begins with the text.
    static std::wstring Label(HWND window, const std::wstring& start) {
        for (const HWND child : testing::Inside(window)) {
            if (lstrcmpiW(ClassOf(child).c_str(), L"Static") == 0 &&
                TextOf(child).compare(0, start.size(), start) == 0) {
                return TextOf(child);
            }
        }
        return {};
    }
    static std::wstring CountLabel(HWND window) { return Label(window, L"Internet Explorer Cache"); }
    /// The page and both cookies are listed and counted, and nothing else is.
    static void ExpectAllListed(HWND window) {
        EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/", L"Cookie:jane@news.example/",
                             L"http://news.example/index.html"}),
                  Sorted(ListRows(Entries(window))));
        EXPECT_EQ(L"Internet Explorer Cache 3 Files; 2 Cookies...", CountLabel(window));
    }
    static WideTexts Sorted(WideTexts texts) {
        std::sort(texts.begin(), texts.end());
        return texts;
    }
    static bool SelectText(HWND list, const std::wstring& text) {
        const WideTexts rows = ListRows(list);
        const auto row = std::find(rows.begin(), rows.end(), text);
        SelectRow(list, row == rows.end() ? -1 : static_cast<int>(row - rows.begin()));
        return row != rows.end();
    }
    bool CloseCacheWindow() const {
        PostMessageW(CacheWindow(), WM_CLOSE, 0, 0);
        return WaitUntil([this] { return CacheWindow() == nullptr; });
    }

    std::string m_page;
    std::string m_cookie;
    std::string m_saved;
};

}  // namespace kestrelguard::testing
