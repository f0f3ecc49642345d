#include "privacy/CacheWalkFixture.h"

namespace kestrelguard {
namespace {

TEST_F(KG_IECacheTest, MakesThePlatformCallsInTheirOrder) {
    cache.Add("http://a/");
    cache.Add("http://longer.example/");
    cache.recordSizes = true;
    Walk(false, true, false);
    const std::string head = std::to_string(sizeof(CacheEntryHead) + 10);
    const std::string longer = std::to_string(sizeof(CacheEntryHead) + 23);
    EXPECT_EQ(cache.calls,
              (Texts{"FindFirst 0 null 0", "LocalAlloc 0 " + head, "FindFirst null buffer " + head,
                     "Delete http://a/", "LocalFree buffer", "FindNext 1 null 0", "LocalAlloc 0 " + longer,
                     "FindNext 1 buffer " + longer, "Delete http://longer.example/", "LocalFree buffer",
                     "FindNext 1 null 0", "LocalAlloc 0 0", "FindNext 1 buffer 0", "LocalFree buffer",
                     "FindClose 1"}));
    ExpectBooksEven();
}

TEST_F(KG_IECacheTest, EmptyCacheEndsAfterTheSizingCall) {
    windows.Open();
    Walk(true, true, true);
    EXPECT_EQ(cache.calls, (Texts{"FindFirst 0 null", "LocalFree null", "FindClose null"}));
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 0 Files; 0 Cookies...");
    EXPECT_EQ(windows.detailsLabel.changes, 0);
    EXPECT_EQ(windows.selection.row, -1);
    EXPECT_TRUE(windows.visibility.visible);
}

TEST_F(KG_IECacheTest, AFirstCallFailingOtherwiseEndsTheWalk) {
    FillUsual();
    windows.Open();
    cache.failAt = 0;
    cache.failure = 5;
    Walk(true, true, true);
    EXPECT_EQ(cache.Left().size(), 4U);
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 0 Files; 0 Cookies...");
}

TEST_F(KG_IECacheTest, LooksForTheWindowByItsCaption) {
    Walk(false, false, false);
    EXPECT_EQ(windows.asked, (Texts{"null|Kestrelguard v2.0 - IE Cache Details and Advanced Configuration"}));
}

TEST_F(KG_IECacheTest, AFoundWindowIsFilledWhateverWasAsked) {
    FillUsual();
    windows.Open();
    windows.entries.rows = {L"an old row"};
    EXPECT_TRUE(Walk(false, false, false));
    EXPECT_EQ(windows.entries.rows, (Rows{L"http://news.example/index.html", L"Cookie:jane@news.example/",
                                          L"Cookie:jane@bank.example/", L"http://news.example/logo.gif"}));
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 4 Files; 2 Cookies...");
    EXPECT_EQ(windows.detailsLabel.text, L"Details of http://news.example/index.html");
    EXPECT_EQ(windows.selection.row, 0);
    EXPECT_EQ(windows.visibility.changes, (std::vector<bool>{false, true}));
    EXPECT_FALSE(windows.entries.appendedWhileDrawn);
    EXPECT_EQ(windows.entries.fills, 0);
    EXPECT_EQ(cache.Left().size(), 4U);
}

TEST_F(KG_IECacheTest, AWindowThatIsNotFoundIsNotFilled) {
    FillUsual();
    windows.ours = true;
    EXPECT_TRUE(Walk(true, false, false));
    EXPECT_FALSE(Walk(false, false, false));
    EXPECT_TRUE(windows.entries.rows.empty());
    EXPECT_EQ(walk.CacheFileCount, 4);
    EXPECT_EQ(walk.CacheCookieCount, 0);
}

TEST_F(KG_IECacheTest, AHandleCountsAsASignedNumber) {
    windows.Open();
    windows.handle = -5;
    EXPECT_FALSE(Walk(false, false, false));
    EXPECT_TRUE(windows.visibility.changes.empty());
}

TEST_F(KG_IECacheTest, AnotherProgramsWindowOfThatCaptionIsLeftAlone) {
    FillUsual();
    windows.handle = 7;
    EXPECT_FALSE(Walk(false, false, false));
    EXPECT_EQ(walk.CacheFileCount, 4);
}

TEST_F(KG_IECacheTest, CookiesOnlyListsCookies) {
    FillUsual();
    windows.Open();
    Walk(true, false, false, true);
    EXPECT_EQ(windows.entries.rows, (Rows{L"Cookie:jane@news.example/", L"Cookie:jane@bank.example/"}));
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 4 Files; 2 Cookies...");
}

TEST_F(KG_IECacheTest, AnEntryIsDeletedByTheBytesOfItsAddress) {
    cache.Add("http://caf\xE9.example/");
    cache.lossyText = true;
    Walk(false, true, false);
    EXPECT_TRUE(cache.Left().empty());
    EXPECT_FALSE(walk.GroupsFlushed);
}

TEST_F(KG_IECacheTest, AnEntryIsListedWithTheBytesOfItsAddress) {
    cache.Add("http://caf\xE9.example/");
    cache.lossyText = true;
    windows.Open();
    Walk(true, false, false);
    EXPECT_EQ(windows.entries.Address(0), "http://caf\xE9.example/");
    EXPECT_EQ(windows.details.asked, (Texts{"http://caf\xE9.example/"}));
}

TEST_F(KG_IECacheTest, ClearingFilesSparesEveryCookie) {
    FillUsual();
    cache.Add("http://shop.example/?return=Cookie:1");
    Walk(false, true, false);
    EXPECT_EQ(cache.Left(), (Texts{kCookie, kSavedCookie, "http://shop.example/?return=Cookie:1"}));
    EXPECT_EQ(walk.CacheFileCount, 3);
    EXPECT_EQ(walk.CacheCookieCount, 0);
}

TEST_F(KG_IECacheTest, ClearingCookiesSparesFilesAndSavedCookies) {
    FillUsual();
    Save(L"Cookie:jane@bank.example/");
    Walk(false, false, true);
    EXPECT_EQ(cache.Left(), (Texts{kPage, kSavedCookie, kPicture}));
    EXPECT_EQ(walk.CacheFileCount, 4);
    EXPECT_EQ(walk.CacheCookieCount, -1);
}

TEST_F(KG_IECacheTest, AnEmptySavedListSparesNoCookie) {
    FillUsual();
    Walk(false, false, true);
    EXPECT_EQ(cache.Left(), (Texts{kPage, kPicture}));
}

TEST_F(KG_IECacheTest, ASavedAddressCountsWithItsCase) {
    FillUsual();
    Save(L"cookie:jane@bank.example/");
    Walk(false, false, true);
    EXPECT_EQ(cache.Left(), (Texts{kPage, kPicture}));
}

TEST_F(KG_IECacheTest, ClearingBothSparesSavedCookiesAlone) {
    FillUsual();
    Save(L"Cookie:jane@bank.example/");
    windows.Open();
    Walk(true, true, true);
    EXPECT_EQ(cache.Left(), (Texts{kSavedCookie}));
    EXPECT_EQ(windows.entries.rows, (Rows{L"Cookie:jane@bank.example/"}));
    // Two files and a cookie deleted: four normal entries less two, two cookies less one.
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 2 Files; 1 Cookies...");
}

TEST_F(KG_IECacheTest, LowerCaseCookieIsAFile) {
    cache.Add("cookie:jane@news.example/");
    Walk(false, false, true);
    EXPECT_EQ(cache.Left().size(), 1U);
    Walk(false, true, false);
    EXPECT_TRUE(cache.Left().empty());
}

TEST_F(KG_IECacheTest, TheSingleDeleteTellsCookiesByALooserText) {
    cache.Add("http://shop.example/CookieJar.html");
    windows.Open();
    Walk(true, true, false);
    EXPECT_EQ(walk.CacheFileCount, 1);
    EXPECT_EQ(walk.CacheCookieCount, -1);
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 1 Files; -1 Cookies...");
}

TEST_F(KG_IECacheTest, EntriesThatAreNotNormalAreSkipped) {
    cache.Add("http://odd.example/", 0);
    cache.Add("Cookie:odd@odd.example/", 0x00100000);
    cache.Add("Cookie:jane@news.example/", 0x00100001);
    windows.Open();
    Walk(true, true, true);
    EXPECT_EQ(cache.Left(), (Texts{"http://odd.example/", "Cookie:odd@odd.example/"}));
    EXPECT_EQ(walk.CacheFileCount, 1);
    EXPECT_EQ(walk.CacheCookieCount, 0);
    EXPECT_TRUE(windows.entries.rows.empty());
}

TEST_F(KG_IECacheTest, CountsAreGrouped) {
    cache.recording = false;
    for (int entry = 0; entry < 1234; ++entry) {
        cache.Add("Cookie:jane@" + std::to_string(entry) + ".example/");
    }
    windows.Open();
    Walk(true, false, false);
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 1,234 Files; 1,234 Cookies...");
}

TEST_F(KG_IECacheTest, TheListEndsBeforeThe32765thEntry) {
    cache.recording = false;
    for (int entry = 1; entry <= 32766; ++entry) {
        cache.Add("http://news.example/" + std::to_string(entry));
    }
    windows.Open();
    Walk(true, false, false);
    ASSERT_EQ(windows.entries.rows.size(), 32764U);
    EXPECT_EQ(windows.entries.rows.back(), L"http://news.example/32764");
    EXPECT_EQ(walk.CacheFileCount, 32766);
    EXPECT_EQ(windows.countLabel.text, L"Internet Explorer Cache 32,766 Files; 0 Cookies...");
}

TEST_F(KG_IECacheTest, EntriesBeyondTheListAreDeletedAllTheSame) {
    cache.recording = false;
    for (int entry = 1; entry <= 32766; ++entry) {
        cache.Add("Cookie:jane@" + std::to_string(entry) + ".example/");
    }
    windows.Open();
    Walk(true, false, true, true);
    EXPECT_TRUE(cache.Left().empty());
    EXPECT_TRUE(windows.entries.rows.empty());
    EXPECT_EQ(walk.CacheFileCount, 32766);
    EXPECT_EQ(walk.CacheCookieCount, 0);
    ExpectBooksEven();
}

TEST_F(KG_IECacheTest, EveryWalkStartsItsCountersAfresh) {
    FillUsual();
    Walk(false, false, true);
    EXPECT_EQ(walk.CacheCookieCount, -2);
    walk.GroupsFlushed = true;
    Walk(false, false, false);
    EXPECT_EQ(walk.CacheFileCount, 2);
    EXPECT_EQ(walk.CacheCookieCount, 0);
    EXPECT_FALSE(walk.GroupsFlushed);
}

}  // namespace
}  // namespace kestrelguard
