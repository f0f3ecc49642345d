// What cleaning shows in the open cache window of the unchanged program, and the saved cookies that it
// spares.

#include "PrivacyFixture.h"

namespace kestrelguard::testing {
namespace {

// --- the cache window and the saved cookies

TEST_F(PrivacyTest, ShowCacheListsEverything) {
    Start();
    const HWND window = OpenCacheWindow(L"Show Cache");
    ASSERT_NE(nullptr, window);
    ExpectAllListed(window);
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

TEST_F(PrivacyTest, AFileOfTheHeaderAloneSavesNothing) {
    const std::string header =
        "'# Kestrelguard v2.0 - Saved Cookies\r\n'# Configuration Modified: (Cookie:jane@bank.example/)\r\n"
        "'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING\r\n'###################\r\n";
    StartWithFiles({}, header);
    const HWND window = OpenCacheWindow(L"Show Cookies");
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(2u, ListRows(Entries(window)).size());
    EXPECT_TRUE(ListRows(SavedList(window)).empty());
    Press(L"Clear Internet Explorer Cookies Now");
    EXPECT_EQ("p", There());
    ASSERT_TRUE(CloseCacheWindow());
    EXPECT_EQ(header, m_folder->Cookies());
}

TEST_F(PrivacyTest, TheTipOfTheSavedCookiesIsTheClickedRow) {
    Start({}, {"Cookie:jane@bank.example/", "Cookie:jane@news.example/"});
    const HWND window = OpenCacheWindow(L"Show Cookies");
    ASSERT_NE(nullptr, window);
    const HWND saved = SavedList(window);
    EXPECT_EQ(L"", TipOf(window, saved));
    SelectRow(saved, 1);
    EXPECT_EQ(L"Cookie:jane@news.example/", TipOf(window, saved));
    SelectRow(saved, 0);
    EXPECT_EQ(L"Cookie:jane@bank.example/", TipOf(window, saved));
    SelectRow(saved, -1);
    EXPECT_EQ(L"", TipOf(window, saved));
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
