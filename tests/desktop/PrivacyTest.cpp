// Cleaning through the unchanged program: real entries of the platform's cache with real files on disk, the
// history of the stand-in desktop, the saved cookies' file, and the schedule with posted ticks.

#include "PrivacyFixture.h"

namespace kestrelguard::testing {
namespace {

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
    StartWithFiles({}, "'#\r\n'#\r\nCookie:jane@bank.example/\r\nCookie:jane@news.example/\r\n");
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("p", There());
}

TEST_F(PrivacyTest, EntriesThatAreNotNormalStay) {
    std::vector<std::string> odd;
    for (const char* address : {"http://odd.example/", "Cookie:odd@odd.example/"}) {
        odd.push_back(CacheFiller::Add(address, "not a normal entry"));
        INTERNET_CACHE_ENTRY_INFOA type{};
        type.dwStructSize = sizeof type;
        type.CacheEntryType = STICKY_CACHE_ENTRY;
        ASSERT_TRUE(SetUrlCacheEntryInfoA(address, &type, CACHE_ENTRY_ATTRIBUTE_FC));
    }
    Start();
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    ExpectAllListed(window);
    Press(L"Clear Internet Explorer Cache Now");
    EXPECT_EQ("cs", There());
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("s", There());
    for (const std::string& file : odd) {
        EXPECT_TRUE(kestrelguard::FileExists(file)) << file;
    }
    EXPECT_EQ((WideTexts{L"Cookie:jane@bank.example/"}), ListRows(Entries(window)));
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

}  // namespace
}  // namespace kestrelguard::testing
