#include "blocking/SiteBlocking.h"

#include <gtest/gtest.h>

#include <deque>

#include "blocking/FakeBrowserNodes.h"
#include "controls/Fakes.h"

namespace kestrelguard {
namespace {

using Rows = std::deque<std::wstring>;

class SiteBlockingTest : public testing::Test {
 protected:
    FakeCheckBox blockSites;
    FakeTextBox siteTXT;
    FakeListDisplay display;
    SiteList siteLST{display};
    FakeListSelection selection;
    TextSet siteSet;
    FakeBrowserNodes nodes;
    FakeBrowser browser{1};
    SiteBlocking blocking{{blockSites, siteTXT, siteLST, selection, siteSet, nodes}};

    void Add(const std::wstring& site) {
        siteTXT.text = site;
        blocking.AddSite_Click();
    }
    void RemoveRow(std::int32_t row) {
        selection.row = row;
        blocking.RemoveSite_Click();
    }
    bool Cancels(const std::wstring& address) {
        bool cancel = false;
        blocking.IEEvents1_BrowserNavigating(browser, address, cancel);
        return cancel;
    }
};

TEST_F(SiteBlockingTest, AddsTheEntryInLowerCaseAndEmptiesTheField) {
    Add(L"Casino");
    EXPECT_EQ(display.shown, Rows{L"casino"});
    EXPECT_EQ(siteLST.Row(0), L"casino");
    EXPECT_TRUE(siteSet.Contains(L"casino"));
    EXPECT_EQ(siteTXT.text, L"");
}

TEST_F(SiteBlockingTest, AddsNothingForAnEmptyField) {
    Add(L"");
    EXPECT_EQ(siteLST.Count(), 0);
    EXPECT_TRUE(siteSet.Empty());
}

TEST_F(SiteBlockingTest, ADuplicateGetsASecondRowAndNeverShowsAlreadyExists) {
    Add(L"Casino");
    Add(L"casino");
    EXPECT_EQ(display.shown, (Rows{L"casino", L"casino"}));
    EXPECT_EQ(siteSet.Count(), 1U);
    EXPECT_EQ(siteTXT.text, L"");
}

TEST_F(SiteBlockingTest, ASiteForWhichTheWindowHasNoRoomIsAddedAndBlocked) {
    display.room = 1;
    blockSites.value = 1;
    Add(L"banners");
    Add(L"casino");
    EXPECT_EQ(display.shown, Rows{L"banners"});
    EXPECT_EQ(siteTXT.text, L"");
    EXPECT_EQ(siteLST.Row(1), L"casino");
    EXPECT_TRUE(Cancels(L"http://casino/"));
}

TEST_F(SiteBlockingTest, ARemovedRowMakesRoomForOneThatWasNotShownAndCanBeRemovedThen) {
    display.room = 2;
    Add(L"a");
    Add(L"b");
    Add(L"c");
    RemoveRow(0);
    EXPECT_EQ(display.shown, (Rows{L"b", L"c"}));
    RemoveRow(1);
    EXPECT_EQ(display.shown, Rows{L"b"});
    EXPECT_EQ(siteLST.Count(), 1);
    EXPECT_FALSE(siteSet.Contains(L"c"));
}

TEST_F(SiteBlockingTest, RemovesTheSelectedRowAndItsKey) {
    Add(L"casino");
    Add(L"banners");
    RemoveRow(0);
    EXPECT_EQ(display.shown, Rows{L"banners"});
    EXPECT_FALSE(siteSet.Contains(L"casino"));
    EXPECT_TRUE(siteSet.Contains(L"banners"));
}

TEST_F(SiteBlockingTest, RemovesEveryRowOfADuplicateThoughItsKeyIsGoneAfterTheFirst) {
    Add(L"casino");
    Add(L"casino");
    RemoveRow(1);
    EXPECT_EQ(display.shown, Rows{L"casino"});
    EXPECT_TRUE(siteSet.Empty());
    RemoveRow(0);
    EXPECT_EQ(siteLST.Count(), 0);
}

TEST_F(SiteBlockingTest, RemovesNothingWithoutASelection) {
    Add(L"casino");
    RemoveRow(-1);
    EXPECT_EQ(siteLST.Count(), 1);
    EXPECT_TRUE(siteSet.Contains(L"casino"));
}

TEST_F(SiteBlockingTest, NeverRemovesAnEmptyRow) {
    siteLST.Append(L"");
    siteSet.Add(L"");
    RemoveRow(0);
    EXPECT_EQ(display.shown, Rows{L""});
    EXPECT_EQ(siteSet.Count(), 1U);
}

TEST_F(SiteBlockingTest, ARowOfTheFileWithCapitalsIsRemovedThoughItsKeyIsInLowerCase) {
    siteLST.Append(L"Casino");
    siteSet.Add(L"casino");
    RemoveRow(0);
    EXPECT_EQ(siteLST.Count(), 0);
    EXPECT_TRUE(siteSet.Contains(L"casino"));
}

TEST_F(SiteBlockingTest, NothingIsCancelledWithTheFilterOff) {
    Add(L"casino");
    EXPECT_FALSE(Cancels(L"http://www.casino.com/"));
    blockSites.value = 2;
    EXPECT_FALSE(Cancels(L"http://www.casino.com/"));
}

TEST_F(SiteBlockingTest, NothingIsCancelledWithAnEmptyList) {
    blockSites.value = 1;
    EXPECT_FALSE(Cancels(L"http://www.casino.com/"));
    EXPECT_FALSE(Cancels(L""));
}

TEST_F(SiteBlockingTest, AnEntryMatchesAnywhereInTheAddressWhateverItsCase) {
    blockSites.value = 1;
    Add(L"CASINO");
    EXPECT_TRUE(Cancels(L"http://www.casino.com/"));
    EXPECT_TRUE(Cancels(L"HTTP://WWW.CASINO.COM/"));
    EXPECT_TRUE(Cancels(L"http://news.example/city/casinos.html"));
    EXPECT_TRUE(Cancels(L"http://news.example/?q=casino"));
    EXPECT_FALSE(Cancels(L"http://news.example/casin/o"));
}

TEST_F(SiteBlockingTest, AnEntryOfTheFileWithCapitalsNeverMatches) {
    blockSites.value = 1;
    siteLST.Append(L"Casino");
    EXPECT_FALSE(Cancels(L"http://www.Casino.com/"));
}

TEST_F(SiteBlockingTest, AnEmptyRowCancelsEveryNavigation) {
    blockSites.value = 1;
    siteLST.Append(L"");
    EXPECT_TRUE(Cancels(L"http://news.example/"));
    EXPECT_TRUE(Cancels(L""));
    blockSites.value = 0;
    EXPECT_FALSE(Cancels(L"http://news.example/"));
}

TEST_F(SiteBlockingTest, RowsTakeEffectAtOnceAndUntilTheyAreRemoved) {
    blockSites.value = 1;
    Add(L"casino");
    Add(L"casino");
    EXPECT_TRUE(Cancels(L"http://casino/"));
    RemoveRow(0);
    EXPECT_TRUE(Cancels(L"http://casino/"));
    RemoveRow(0);
    EXPECT_FALSE(Cancels(L"http://casino/"));
}

TEST_F(SiteBlockingTest, CancelIsLeftAloneWhenNothingOccurs) {
    blockSites.value = 1;
    Add(L"casino");
    bool cancel = true;
    blocking.IEEvents1_BrowserNavigating(browser, L"http://news.example/", cancel);
    EXPECT_TRUE(cancel);
}

TEST_F(SiteBlockingTest, TheTreeShowsTheAddressAsItCameBlockedOrNot) {
    blockSites.value = 1;
    Add(L"casino");
    Cancels(L"http://News.example/");
    Cancels(L"http://Casino.example/");
    ASSERT_EQ(nodes.written.size(), 2U);
    EXPECT_EQ(nodes.written[0], (FakeBrowserNodes::Written{&browser, L"URL", L"URL : http://News.example/"}));
    EXPECT_EQ(nodes.written[1],
              (FakeBrowserNodes::Written{&browser, L"URL", L"URL : http://Casino.example/"}));
}

TEST_F(SiteBlockingTest, AnErrorOfTheTreeComesFirstAndReachesTheCaller) {
    blockSites.value = 1;
    Add(L"casino");
    nodes.error = RunTimeError::kElementNotFound;
    bool cancel = false;
    EXPECT_THROW(blocking.IEEvents1_BrowserNavigating(browser, L"http://casino/", cancel), RunTimeError);
    EXPECT_FALSE(cancel);
}

}  // namespace
}  // namespace kestrelguard
