// Cleaning through the unchanged program: real entries of the platform's cache with real files on disk, the
// history of the stand-in desktop, the saved cookies' file, and the schedule with posted ticks.

#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>
#include <shlguid.h>
#include <urlhist.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "desktop/Com.h"
#include "desktop/Desktop.h"
#include "desktop/driver/CacheFiller.h"
#include "desktop/driver/Guard.h"
#include "desktop/driver/StandInLibraries.h"

namespace kestrelguard::testing {
namespace {

using Texts = std::vector<std::string>;
using WideTexts = std::vector<std::wstring>;

constexpr wchar_t kCacheCaption[] = L"Kestrelguard v2.0 - IE Cache Details and Advanced Configuration";
constexpr wchar_t kScheduleBox[] = L"Clear Automatically every";
constexpr wchar_t kHistoryFile[] = L"C:\\history.txt";
constexpr char kHeader[] = "'#\r\n'#\r\n'#\r\n'#\r\n";
constexpr UINT_PTR kWasherTimer = 1;

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

Texts Lines(const std::string& text) {
    Texts lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

class PrivacyTest : public ::testing::Test {
 protected:
    /// The program binds to the stand-in's wininet.dll in its own folder, and finds the stand-in's history.
    static void SetUpTestSuite() {
        ASSERT_TRUE(BindToOwnWinInet());
        const HMODULE library = LoadLibraryW((OwnFolder() + L"\\url_history.dll").c_str());
        ASSERT_NE(nullptr, library);
        const auto registration = reinterpret_cast<HRESULT(WINAPI*)()>(
            reinterpret_cast<void*>(GetProcAddress(library, "DllRegisterServer")));
        ASSERT_NE(nullptr, registration);
        ASSERT_EQ(S_OK, registration());
    }

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
        m_folder = std::make_unique<GuardFolder>(settings, file);
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
    static void VisitPages() {
        desktop::ComPtr<IUrlHistoryStg2> history;
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_CUrlHistory, nullptr, CLSCTX_INPROC_SERVER,
                                         IID_IUrlHistoryStg2, history.PutVoid()));
        for (const wchar_t* const address : {L"http://news.example/", L"http://shop.example/"}) {
            ASSERT_EQ(S_OK, history->AddUrl(address, L"A page", 0));
        }
    }
    static std::size_t Visited() { return Lines(ReadBytes(kHistoryFile)).size(); }

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

    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    std::string m_page;
    std::string m_cookie;
    std::string m_saved;
    std::unique_ptr<GuardFolder> m_folder;
    std::unique_ptr<Guard> m_guard;
};

// --- cleaning at once

TEST_F(PrivacyTest, ClearCacheNowDeletesFilesAndSparesAllCookies) {
    Start({}, {});
    ASSERT_EQ("pcs", There());
    Press(L"Clear Internet Explorer Cache Now");
    EXPECT_EQ("cs", There());
    EXPECT_FALSE(BoxShown());
}

TEST_F(PrivacyTest, ClearCookiesNowSparesTheSavedOnes) {
    Start();
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("ps", There());
    EXPECT_FALSE(BoxShown());
}

TEST_F(PrivacyTest, ClearCookiesNowDeletesAllWhenNoneIsSaved) {
    Start({}, {});
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("p", There());
}

TEST_F(PrivacyTest, ACookieOnAHeaderLineOfTheFileIsNotSaved) {
    m_folder = std::make_unique<GuardFolder>(
        std::nullopt, "'#\r\n'#\r\nCookie:jane@bank.example/\r\nCookie:jane@news.example/\r\n");
    m_folder->Add(OwnFolder() + L"\\wininet.dll");
    m_guard = std::make_unique<Guard>(*m_folder);
    ASSERT_TRUE(m_guard->WaitReady());
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("p", There());
}

TEST_F(PrivacyTest, EntriesThatAreNotNormalStay) {
    const std::string odd = CacheFiller::Add("http://odd.example/", "not a normal entry");
    INTERNET_CACHE_ENTRY_INFOA type{};
    type.dwStructSize = sizeof type;
    type.CacheEntryType = STICKY_CACHE_ENTRY;
    ASSERT_TRUE(SetUrlCacheEntryInfoA("http://odd.example/", &type, CACHE_ENTRY_ATTRIBUTE_FC));
    Start();
    Press(L"Clear Internet Explorer Cache Now");
    EXPECT_EQ("cs", There());
    EXPECT_TRUE(kestrelguard::FileExists(odd));
}

TEST_F(PrivacyTest, TheTrayMenuClearsCacheAndCookies) {
    Start("MIN/:/:n\r\n");
    ASSERT_TRUE(m_guard->Minimise());
    ASSERT_TRUE(m_guard->ChooseFromTrayMenu(L"Clear Internet Cache"));
    EXPECT_TRUE(WaitUntil([this] { return There() == "cs"; }));
    ASSERT_TRUE(m_guard->ChooseFromTrayMenu(L"Clear Internet Cookies"));
    EXPECT_TRUE(WaitUntil([this] { return There() == "s"; }));
}

TEST_F(PrivacyTest, ClearHistoryNowEmptiesTheHistory) {
    VisitPages();
    ASSERT_EQ(2u, Visited());
    Start();
    Press(L"Clear Internet Eplorer History Now");
    EXPECT_EQ(0u, Visited());
    EXPECT_EQ("pcs", There());
    EXPECT_FALSE(BoxShown());
}

TEST_F(PrivacyTest, AHistoryThatCannotBeClearedIsNotReported) {
    VisitPages();
    const StandInSetting fail(L"KESTRELGUARD_HISTORY_FAIL", L"ClearHistory");
    Start();
    Press(L"Clear Internet Eplorer History Now");
    EXPECT_EQ(2u, Visited());
    EXPECT_FALSE(BoxShown());
}

// --- the calls themselves

TEST_F(PrivacyTest, TheWalkMakesThePlatformsCallsInTheirOrder) {
    CacheFiller::Empty();
    CacheFiller::Add("http://locked.example/", "a locked page");
    const TemporaryFolder folder;
    const std::wstring log = folder.Path() + L"\\calls.txt";
    const StandInSetting logging(L"KESTRELGUARD_WININET_LOG", log);
    const StandInSetting locked(L"KESTRELGUARD_WININET_LOCKED", L"locked.example");
    const StandInSetting groups(L"KESTRELGUARD_WININET_GROUPS", L"2");
    Start();
    EXPECT_FALSE(FileExists(log)) << "nothing is cleaned before anybody asks for it";
    Press(L"Clear Internet Explorer Cache Now");
    EXPECT_EQ(
        (Texts{"FindFirstUrlCacheEntryA \"0\" null", "FindFirstUrlCacheEntryA null buffer",
               "DeleteUrlCacheEntryA \"http://locked.example/\"", "FindFirstUrlCacheGroup 0 0 null 0 null",
               "DeleteUrlCacheGroup 1 2 null", "FindNextUrlCacheGroup null", "DeleteUrlCacheGroup 2 2 null",
               "FindNextUrlCacheGroup null", "FindNextUrlCacheEntryA null", "FindNextUrlCacheEntryA buffer",
               "FindCloseUrlCache"}),
        Lines(ReadBytes(log)));
}

TEST_F(PrivacyTest, AnEmptyCacheIsAskedOnce) {
    CacheFiller::Empty();
    const TemporaryFolder folder;
    const std::wstring log = folder.Path() + L"\\calls.txt";
    const StandInSetting logging(L"KESTRELGUARD_WININET_LOG", log);
    Start();
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ((Texts{"FindFirstUrlCacheEntryA \"0\" null", "FindCloseUrlCache null"}), Lines(ReadBytes(log)));
}

TEST_F(PrivacyTest, AnEnumerationThatGoesInCirclesIsSurvived) {
    const StandInSetting circle(L"KESTRELGUARD_WININET_CIRCLE", L"1");
    Start();
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    EXPECT_GT(ListRows(Entries(window)).size(), 3u);
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("ps", There());
}

/// Each of the platform's calls fails once; the program lives on and the saved cookie stays.
TEST_F(PrivacyTest, NoFailingCallCostsASavedCookie) {
    for (int call = 1; call <= 11; ++call) {
        Refill();
        const StandInSetting fail(L"KESTRELGUARD_WININET_FAIL", std::to_wstring(call));
        Start(Schedule(true, false, true, true, "1/:/:m"));
        Tick();
        EXPECT_TRUE(SavedThere()) << call;
        EXPECT_FALSE(BoxShown()) << call;
        // The failure is over with that one call: the next wash cleans.
        Tick();
        EXPECT_EQ("s", There()) << call;
        m_guard.reset();
    }
}

// --- the schedule

TEST_F(PrivacyTest, AWashIsDueAfterTheInterval) {
    VisitPages();
    Start(Schedule(true, true, true, true, "3/:/:m"));
    Tick(2);
    EXPECT_EQ("pcs", There());
    EXPECT_EQ(2u, Visited());
    Tick();
    EXPECT_EQ("s", There());
    EXPECT_EQ(0u, Visited());
    EXPECT_FALSE(BoxShown());
    Refill();
    Tick(2);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("s", There());
}

TEST_F(PrivacyTest, PostedTicksWash) {
    VisitPages();
    Start(Schedule(true, true, true, true, "1/:/:h"));
    PostTicks(60);
    EXPECT_TRUE(WaitUntil([this] { return There() == "s" && Visited() == 0; })) << There();
}

TEST_F(PrivacyTest, SixtyMinutesAreSixtyTicks) {
    Start(Schedule(true, false, false, true, "60/:/:m"));
    Tick(59);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, TwoDaysAre2880Ticks) {
    Start(Schedule(true, false, false, true, "2/:/:d"));
    Tick(2879);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, AWashClearsOnlyWhatIsTicked) {
    VisitPages();
    Start(Schedule(false, true, false, true, "1/:/:m"));
    Tick();
    EXPECT_EQ("pcs", There());
    EXPECT_EQ(0u, Visited());

    ClickAndWait(m_guard->WashBoxes().at(1));
    ClickAndWait(m_guard->WashBoxes().at(2));
    VisitPages();
    Tick();
    EXPECT_EQ("ps", There());
    EXPECT_EQ(2u, Visited());

    ClickAndWait(m_guard->WashBoxes().at(2));
    ClickAndWait(m_guard->WashBoxes().at(0));
    Refill();
    Tick();
    EXPECT_EQ("cs", There());
    EXPECT_EQ(2u, Visited());
}

TEST_F(PrivacyTest, UntickingTheScheduleStopsItUntilApply) {
    Start(Schedule(true, false, false, true, "1/:/:m"));
    ClickAndWait(ScheduleBox());
    ASSERT_FALSE(Checked(ScheduleBox()));
    Tick();
    EXPECT_EQ("pcs", There());
    // Ticked again but not applied: the timer is still off.
    ClickAndWait(ScheduleBox());
    Tick(3);
    EXPECT_EQ("pcs", There());
    ClickAndWait(m_guard->Apply());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, TheTimerRunsExactlyWhenTheAppliedScheduleIsTicked) {
    Start(Schedule(true, false, false, false, "1/:/:m"));
    Tick(3);
    EXPECT_EQ("pcs", There());
    ClickAndWait(ScheduleBox());
    ClickAndWait(m_guard->Apply());
    Tick();
    EXPECT_EQ("cs", There());
    Refill();
    ClickAndWait(ScheduleBox());
    ClickAndWait(m_guard->Apply());
    Tick(3);
    EXPECT_EQ("pcs", There());
}

TEST_F(PrivacyTest, AFailingHistoryDoesNotStopTheSchedule) {
    VisitPages();
    const StandInSetting fail(L"KESTRELGUARD_HISTORY_FAIL", L"EnumUrls");
    Start(Schedule(true, true, false, true, "1/:/:m"));
    Tick();
    EXPECT_EQ("cs", There());
    EXPECT_FALSE(BoxShown());
    Refill();
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, TypingTheMinutesThemselvesDoesNotRecomputeTheInterval) {
    Start(Schedule(true, false, false, true, "2/:/:h"));
    ASSERT_FALSE(Enabled(m_guard->Apply()));
    TypeText(IntervalField(), L"120");
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    TypeText(IntervalField(), L"soon");
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    TypeText(IntervalField(), L"1");
    EXPECT_TRUE(Enabled(m_guard->Apply()));
    Tick(59);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, ANewUnitTakesTheTextAsItIs) {
    Start(Schedule(true, false, false, true, "30/:/:m"));
    TypeText(IntervalField(), L"soon");
    SelectDropDown(m_guard->UnitDropDown(), 2);
    EXPECT_TRUE(WaitUntil([this] { return Enabled(m_guard->Apply()); }));
    // No digits: an interval of 0, which washes on every tick.
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, AnIntervalOutOfRangeIsARunTimeError) {
    Start(Schedule(true, false, false, true, "1/:/:d"));
    const HWND field = IntervalField();
    SendNotifyMessageW(field, EM_SETSEL, 0, -1);
    for (const wchar_t digit : std::wstring(L"9999999")) {
        PostMessageW(field, WM_CHAR, static_cast<WPARAM>(digit), 1);
    }
    const MessageBoxSeen box = WaitMessageBox(m_guard->Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Run-time error '6':\r\n\r\nOverflow", box.text);
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(m_guard->Program().Running());
}

// --- the cache window and the saved cookies

TEST_F(PrivacyTest, ShowCacheListsEverything) {
    Start();
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/", L"Cookie:jane@news.example/",
                         L"http://news.example/index.html"}),
              Sorted(ListRows(Entries(window))));
    EXPECT_EQ(L"Internet Explorer Cache 3 Files; 2 Cookies...", CountLabel(window));
    EXPECT_EQ(0, SelectedRow(Entries(window)));
    EXPECT_EQ(L"Cache File: C:", Label(window, L"Cache File:").substr(0, 14));
    EXPECT_EQ("pcs", There());
}

TEST_F(PrivacyTest, ShowCookiesListsCookiesOnly) {
    Start();
    const HWND window = OpenCacheWindow(L"Show Cookies");
    ASSERT_NE(nullptr, window);
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/", L"Cookie:jane@news.example/"}),
              Sorted(ListRows(Entries(window))));
    EXPECT_EQ(L"Internet Explorer Cache 3 Files; 2 Cookies...", CountLabel(window));
}

TEST_F(PrivacyTest, AnEmptyCacheShowsZeroCounts) {
    CacheFiller::Empty();
    Start();
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(L"Internet Explorer Cache 0 Files; 0 Cookies...", CountLabel(window));
    EXPECT_TRUE(ListRows(Entries(window)).empty());
    EXPECT_TRUE(IsWindowVisible(Entries(window)));
}

TEST_F(PrivacyTest, TheListEndsBeforeThe32765thEntry) {
    const StandInSetting made(L"KESTRELGUARD_WININET_MADE", L"40000");
    Start();
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    ASSERT_TRUE(WaitUntil([&] { return IsWindowVisible(Entries(window)) != FALSE; }));
    EXPECT_EQ(32764, Ask(Entries(window), LB_GETCOUNT));
    EXPECT_EQ(L"Internet Explorer Cache 40,000 Files; 0 Cookies...", CountLabel(window));
    EXPECT_EQ(0, SelectedRow(Entries(window)));
}

TEST_F(PrivacyTest, CleaningRefreshesTheOpenCacheWindow) {
    Start();
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    Press(L"Clear Internet Explorer Cache Now");
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/", L"Cookie:jane@news.example/"}),
              Sorted(ListRows(Entries(window))));
    EXPECT_EQ(L"Internet Explorer Cache 2 Files; 2 Cookies...", CountLabel(window));
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/"}), ListRows(Entries(window)));
    EXPECT_EQ(L"Internet Explorer Cache 2 Files; 1 Cookies...", CountLabel(window));
    EXPECT_TRUE(IsWindowVisible(Entries(window)));
}

TEST_F(PrivacyTest, AWashRefreshesTheOpenCacheWindow) {
    Start(Schedule(true, false, true, true, "1/:/:m"));
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    Tick();
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/"}), ListRows(Entries(window)));
    // A fresh walk: the counts of what is there, not of what was met while cleaning.
    EXPECT_EQ(L"Internet Explorer Cache 1 Files; 1 Cookies...", CountLabel(window));
}

TEST_F(PrivacyTest, ASavedCookieSurvivesAndIsWrittenWhenTheWindowCloses) {
    Start({}, {});
    HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    ASSERT_TRUE(SelectText(Entries(window), L"http://news.example/index.html"));
    ClickAndWait(FindInside(window, L"Button", L"Save ->"));
    EXPECT_TRUE(ListRows(SavedList(window)).empty()) << "only cookies can be saved";
    ASSERT_TRUE(SelectText(Entries(window), L"Cookie:jane@bank.example/"));
    ClickAndWait(FindInside(window, L"Button", L"Save ->"));
    ClickAndWait(FindInside(window, L"Button", L"Save ->"));
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/"}), ListRows(SavedList(window))) << "saved once";
    EXPECT_FALSE(FileExists(m_folder->File(L"KestrelC.CFG")));
    ASSERT_TRUE(CloseCacheWindow());
    const Texts lines = Lines(m_folder->Cookies());
    ASSERT_EQ(5u, lines.size());
    EXPECT_EQ("'# Kestrelguard v2.0 - Saved Cookies", lines[0]);
    EXPECT_EQ("'# Configuration Modified: (", lines[1].substr(0, 28));
    EXPECT_EQ(')', lines[1].back());
    EXPECT_EQ("'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING", lines[2]);
    EXPECT_EQ("'###################", lines[3]);
    EXPECT_EQ("Cookie:jane@bank.example/", lines[4]);
    EXPECT_NE(std::string::npos, m_folder->Cookies().find("DOING\r\n'####"));

    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("ps", There());
    window = OpenCacheWindow(L"Show Cookies");
    ASSERT_NE(nullptr, window);
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/"}), ListRows(SavedList(window)));
}

TEST_F(PrivacyTest, ARemovedCookieIsNoLongerSpared) {
    Start({}, {"Cookie:jane@bank.example/", "Cookie:jane@gone.example/", "Cookie:jane@bank.example/"});
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/", L"Cookie:jane@gone.example/"}),
              ListRows(SavedList(window)));
    ASSERT_TRUE(SelectText(SavedList(window), L"Cookie:jane@bank.example/"));
    ClickAndWait(FindInside(window, L"Button", L"<- Remove"));
    EXPECT_EQ((WideTexts{L"Cookie:jane@gone.example/"}), ListRows(SavedList(window)));
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("p", There());
    ASSERT_TRUE(CloseCacheWindow());
    const Texts lines = Lines(m_folder->Cookies());
    ASSERT_EQ(5u, lines.size());
    EXPECT_EQ("Cookie:jane@gone.example/", lines[4]);
}

TEST_F(PrivacyTest, AnUnchangedListLeavesTheFileUntouched) {
    Start();
    const std::string before = m_folder->Cookies();
    ASSERT_NE(nullptr, OpenCacheWindow(L"Show Cookies"));
    ASSERT_TRUE(CloseCacheWindow());
    EXPECT_EQ(before, m_folder->Cookies());
    ASSERT_TRUE(m_guard->Minimise());
    EXPECT_TRUE(m_guard->ExitByMenu());
    EXPECT_EQ(before, m_folder->Cookies());
}

TEST_F(PrivacyTest, ExitWritesAChangedList) {
    Start();
    const HWND window = OpenCacheWindow(L"Show Cookies");
    ASSERT_NE(nullptr, window);
    ASSERT_TRUE(SelectText(Entries(window), L"Cookie:jane@news.example/"));
    ClickAndWait(FindInside(window, L"Button", L"Save ->"));
    EXPECT_TRUE(m_guard->Close());
    const Texts lines = Lines(m_folder->Cookies());
    ASSERT_EQ(6u, lines.size());
    EXPECT_EQ("Cookie:jane@news.example/", lines[5]);
}

}  // namespace
}  // namespace kestrelguard::testing
