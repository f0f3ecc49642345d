#include "cachewindow/CacheBrowser.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "controls/Fakes.h"

namespace kestrelguard {
namespace {

struct FakeListing final : CacheListing {
    void LoadCacheEntries(bool clearFiles, bool clearCookies, bool cookiesOnly) override {
        log += std::string(clearFiles ? "files " : "") + (clearCookies ? "cookies " : "") +
               (cookiesOnly ? "only " : "") + "walk;";
        if (during) {
            during();
        }
    }
    std::string log;
    std::function<void()> during;
};

struct FakeEntries final : CacheEntries {
    std::wstring CacheEntryDetails(const std::string& address) override {
        asked = address;
        return L"<" + std::wstring(address.begin(), address.end()) + L">";
    }
    std::uint32_t DeleteUrlCacheEntryA(const std::string& address) override {
        deleted.push_back(address);
        return error;
    }
    std::wstring SystemMessage(std::uint32_t) const override { return L"File not found.\r\n"; }
    std::vector<std::string> deleted;
    std::string asked;
    std::uint32_t error = 0;
};

struct CacheBrowserTest : testing::Test {
    FakeAddressRows rows;
    FakeListSelection selection;
    FakeTextBox fndTXT;
    FakeCaption find;
    FakeToolTip findTip;
    FakeCaption label;
    FakeCaption detail;
    FakeListing listing;
    FakeEntries cache;
    FakeMessageBoxes boxes;
    FakeMessageLoop messages;
    bool ShowCookiesOnly = false;
    CacheBrowser browser{{rows, selection, fndTXT, find, findTip, label, detail, listing, cache, boxes,
                          messages, ShowCookiesOnly}};

    void Fill(std::initializer_list<const wchar_t*> texts) {
        rows.rows.clear();
        for (const wchar_t* text : texts) {
            rows.rows.emplace_back(text);
        }
    }
};

TEST_F(CacheBrowserTest, TheViewsSetTheFlagAndRefresh) {
    browser.ShowCook_Click();
    EXPECT_TRUE(ShowCookiesOnly);
    EXPECT_EQ(listing.log, "only walk;");
    EXPECT_EQ(label.text, L"Internet Explorer Cache Files loading, please wait...");
    listing.log.clear();
    browser.AllCache_Click();
    EXPECT_FALSE(ShowCookiesOnly);
    EXPECT_EQ(listing.log, "walk;");
}

TEST_F(CacheBrowserTest, LoadingIsSaidBeforeEventsRunAndBeforeTheWalk) {
    std::vector<std::wstring> seen;
    messages.pending = [&] { seen.push_back(L"events: " + label.text); };
    listing.during = [&] { seen.push_back(L"walk: " + label.text); };
    browser.RefreshIE_Click();
    EXPECT_EQ(seen,
              (std::vector<std::wstring>{L"events: Internet Explorer Cache Files loading, please wait...",
                                         L"walk: Internet Explorer Cache Files loading, please wait..."}));
}

TEST_F(CacheBrowserTest, ClearingIsSaidBeforeTheWalkAndNotAfterIt) {
    boxes.answer = 6;
    std::wstring seen;
    listing.during = [&] {
        seen = label.text;
        label.text = L"the walk's own counts";
    };
    browser.ClearIENow_Click();
    EXPECT_EQ(seen, L"Internet Explorer Cache Files clearing, please wait...");
    EXPECT_EQ(label.text, L"the walk's own counts");
}

TEST_F(CacheBrowserTest, ClearAsksFirst) {
    boxes.answer = 7;
    browser.ClearIENow_Click();
    EXPECT_EQ(listing.log, "");
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text, L"Are you sure you want to delete your temporary internet files?");
    EXPECT_EQ(boxes.shown[0].caption, L"Kestrelguard - Confirm Cache Deletion!");
    EXPECT_EQ(boxes.shown[0].style, 68U);
}

TEST_F(CacheBrowserTest, ClearInTheViewOfAllTakesFilesAndCookies) {
    boxes.answer = 6;
    browser.ClearIENow_Click();
    EXPECT_EQ(listing.log, "files cookies walk;");
    EXPECT_EQ(label.text, L"Internet Explorer Cache Files clearing, please wait...");
}

TEST_F(CacheBrowserTest, ClearInTheViewOfCookiesTakesCookiesAlone) {
    boxes.answer = 6;
    ShowCookiesOnly = true;
    browser.ClearIENow_Click();
    EXPECT_EQ(listing.log, "cookies only walk;");
    EXPECT_EQ(boxes.shown[0].text, L"Are you sure you want to delete your unsaved internet Cookies?");
    EXPECT_EQ(boxes.shown[0].caption, L"Kestrelguard - Confirm Cookies Deletion!");
}

TEST_F(CacheBrowserTest, AClickShowsTheDetails) {
    Fill({L"a", L"b"});
    selection.row = 1;
    browser.kg_CLST_Click();
    EXPECT_EQ(detail.text, L"<b>");
}

TEST_F(CacheBrowserTest, ADoubleClickAsksWithTheFirstFiftyCharacters) {
    const std::wstring address = std::wstring(50, L'a') + L"cut";
    Fill({address.c_str()});
    selection.row = 0;
    boxes.answer = 7;
    browser.kg_CLST_DblClick();
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text,
              L"Delete this Internet Explorer Cache Entry now?\r\n" + std::wstring(50, L'a') + L"...");
    EXPECT_EQ(boxes.shown[0].caption, L"Kestrelguard - Confirm Cache Deletion!");
    EXPECT_EQ(boxes.shown[0].style, 68U);
    EXPECT_TRUE(cache.deleted.empty());
    EXPECT_EQ(rows.rows.size(), 1U);
}

TEST_F(CacheBrowserTest, ADeletedEntryLeavesTheList) {
    Fill({L"a", L"b", L"c"});
    selection.row = 1;
    boxes.answer = 6;
    browser.kg_CLST_DblClick();
    EXPECT_EQ(cache.deleted, (std::vector<std::string>{"b"}));
    ASSERT_EQ(rows.rows.size(), 2U);
    EXPECT_EQ(rows.rows[1], L"c");
}

TEST_F(CacheBrowserTest, OfTwoRowsOfOneTextTheOneAskedAboutGoes) {
    Fill({L"a", L"b", L"a", L"c"});
    selection.row = 2;
    boxes.answer = 6;
    browser.kg_CLST_DblClick();
    EXPECT_EQ(rows.rows, (std::deque<std::wstring>{L"a", L"b", L"c"}));
}

/// Two addresses that the code page reads alike and spells back as neither.
TEST_F(CacheBrowserTest, AnEntryIsShownAndDeletedByTheBytesOfItsAddress) {
    rows.AppendAddress(L"http://caf\xE9.example/", "http://caf\x81.example/");
    rows.AppendAddress(L"http://caf\xE9.example/", "http://caf\x82.example/");
    rows.AppendAddress(L"http://news.example/", "http://news.example/");
    selection.row = 1;
    browser.kg_CLST_Click();
    EXPECT_EQ(cache.asked, "http://caf\x82.example/");
    boxes.answer = 6;
    // A wash has put the same entries in another order.
    boxes.whileShown = [this] {
        std::swap(rows.rows[1], rows.rows[2]);
        std::swap(rows.addresses[1], rows.addresses[2]);
    };
    browser.kg_CLST_DblClick();
    EXPECT_EQ(boxes.shown[0].text,
              L"Delete this Internet Explorer Cache Entry now?\r\nhttp://caf\xE9.example/...");
    EXPECT_EQ(cache.deleted, (std::vector<std::string>{"http://caf\x82.example/"}));
    EXPECT_EQ(rows.addresses, (std::deque<std::string>{"http://caf\x81.example/", "http://news.example/"}));
}

/// A wash fills the list anew while the question is open: other rows, the first one selected.
TEST_F(CacheBrowserTest, TheAnswerConcernsTheRowThatWasAskedAbout) {
    Fill({L"a", L"b", L"c"});
    selection.row = 2;
    boxes.answer = 6;
    boxes.whileShown = [this] {
        Fill({L"b", L"c", L"d"});
        selection.row = 0;
    };
    browser.kg_CLST_DblClick();
    EXPECT_EQ(cache.deleted, (std::vector<std::string>{"c"}));
    EXPECT_EQ(rows.rows, (std::deque<std::wstring>{L"b", L"d"}));
}

TEST_F(CacheBrowserTest, ARowThatTheWashTookAwayIsNotMissed) {
    Fill({L"a", L"b"});
    selection.row = 1;
    boxes.answer = 6;
    boxes.whileShown = [this] {
        Fill({L"a"});
        selection.row = 0;
    };
    browser.kg_CLST_DblClick();
    EXPECT_EQ(cache.deleted, (std::vector<std::string>{"b"}));
    EXPECT_EQ(rows.rows, (std::deque<std::wstring>{L"a"}));
    boxes.whileShown = [this] { Fill({}); };
    selection.row = 0;
    browser.kg_CLST_DblClick();
    EXPECT_TRUE(rows.rows.empty());
}

TEST_F(CacheBrowserTest, AFailedDeletionIsToldWithTheSystemsText) {
    Fill({L"a"});
    selection.row = 0;
    boxes.answer = 6;
    cache.error = 2;
    browser.kg_CLST_DblClick();
    ASSERT_EQ(boxes.shown.size(), 2U);
    EXPECT_EQ(boxes.shown[1].text, L"2 File not found.\r\n");
    EXPECT_EQ(boxes.shown[1].style, 0U);
    EXPECT_EQ(rows.rows.size(), 1U);
}

TEST_F(CacheBrowserTest, ADoubleClickOnNothingAsksNothing) {
    browser.kg_CLST_DblClick();
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(CacheBrowserTest, ANewTextIsSearchedFromTheTopAndTheSameFromTheLastMatch) {
    Fill({L"one x", L"two", L"three x", L"four"});
    fndTXT.text = L"x";
    browser.fndCache_Click();
    EXPECT_EQ(selection.row, 0);
    EXPECT_EQ(detail.text, L"<one x>");
    EXPECT_EQ(find.text, L"<- F. Again ");
    EXPECT_EQ(findTip.text, L" Find \"x\" Again...");
    browser.fndCache_Click();
    EXPECT_EQ(selection.row, 2);
    fndTXT.text = L"o";
    browser.fndCache_Click();
    EXPECT_EQ(selection.row, 0);
    EXPECT_TRUE(boxes.shown.empty());
}

/// A new search forgets where the old one was: it says so when it finds nothing.
TEST_F(CacheBrowserTest, ANewTextWithoutAMatchAfterAFoundOneHasNoMatches) {
    Fill({L"x", L"news", L"y"});
    fndTXT.text = L"news";
    browser.fndCache_Click();
    ASSERT_EQ(selection.row, 1);
    fndTXT.text = L"shop";
    browser.fndCache_Click();
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text, L" No matches for \"shop\" found...");
    EXPECT_EQ(find.text, L"<- Find ");
}

/// A text that was searched in vain is the last one searched, so it is not searched again.
TEST_F(CacheBrowserTest, ATextFoundNowhereIsNotSearchedASecondTime) {
    Fill({L"x"});
    fndTXT.text = L"news";
    browser.fndCache_Click();
    ASSERT_EQ(boxes.shown.size(), 1U);
    Fill({L"x", L"news"});
    browser.fndCache_Click();
    EXPECT_EQ(boxes.shown.size(), 2U);
    EXPECT_EQ(selection.row, -1);
}

TEST_F(CacheBrowserTest, TheSearchIsCaseSensitive) {
    Fill({L"Cookie:a"});
    fndTXT.text = L"cookie";
    browser.fndCache_Click();
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text, L" No matches for \"cookie\" found...");
    EXPECT_EQ(boxes.shown[0].caption, L"Kestrelguard");
    EXPECT_EQ(boxes.shown[0].style, 64U);
    EXPECT_EQ(find.text, L"<- Find ");
    EXPECT_EQ(findTip.text, L" Click here to find internet cache containing...");
}

TEST_F(CacheBrowserTest, AFindAgainWithoutAFurtherMatchSaysNothing) {
    Fill({L"x", L"y", L"z"});
    fndTXT.text = L"x";
    browser.fndCache_Click();
    browser.fndCache_Click();
    browser.fndCache_Click();
    EXPECT_TRUE(boxes.shown.empty());
    EXPECT_EQ(selection.row, 0);
    EXPECT_EQ(find.text, L"<- F. Again ");
}

TEST_F(CacheBrowserTest, AMatchInTheLastRowSaysThatThereIsNoMore) {
    Fill({L"y", L"x"});
    fndTXT.text = L"x";
    browser.fndCache_Click();
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text, L" No more matches for \"x\" ...");
    EXPECT_EQ(boxes.shown[0].caption, L"Kestrelguard");
    EXPECT_EQ(boxes.shown[0].style, 64U);
    EXPECT_EQ(find.text, L"<- F. Again ");
    browser.fndCache_Click();
    EXPECT_EQ(boxes.shown.size(), 2U);
}

TEST_F(CacheBrowserTest, FindingInAnEmptyListHasNoMatches) {
    fndTXT.text = L"x";
    browser.fndCache_Click();
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text, L" No matches for \"x\" found...");
    browser.fndCache_Click();
    EXPECT_EQ(boxes.shown.size(), 2U);
}

TEST_F(CacheBrowserTest, AnEmptyTextAtFirstIsNoNewSearch) {
    Fill({L"a"});
    browser.fndCache_Click();
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text, L" No matches for \"\" found...");
}

TEST_F(CacheBrowserTest, AnEmptiedTextBringsTheCaptionBack) {
    find.text = L"<- F. Again ";
    fndTXT.text = L"x";
    browser.fndTXT_Change();
    EXPECT_EQ(find.text, L"<- F. Again ");
    fndTXT.text = L"";
    browser.fndTXT_Change();
    EXPECT_EQ(find.text, L"<- Find");
    EXPECT_EQ(findTip.text, L" Find Internet Cache...");
}

}  // namespace
}  // namespace kestrelguard
