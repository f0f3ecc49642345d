#include "blocking/TitleBlocking.h"

#include <gtest/gtest.h>

#include "blocking/FakeBrowserNodes.h"
#include "controls/Fakes.h"
#include "runtime/Maker.h"
#include "runtime/Text.h"

namespace kestrelguard {
namespace {

/// A browser whose calls can be made to fail or to let something else in.
struct TitleBrowser : FakeBrowser {
    std::int32_t navigateError = 0;
    std::function<void()> duringCalls;

    TitleBrowser() : FakeBrowser(1) { locationURL = L"http://films.example/Free"; }
    std::wstring LocationURL() const override {
        if (duringCalls) {
            duringCalls();
        }
        return FakeBrowser::LocationURL();
    }
    void Navigate(const std::wstring& address) override {
        if (navigateError != 0) {
            throw RunTimeError(navigateError, L"it went wrong");
        }
        FakeBrowser::Navigate(address);
    }
};

class TitleBlockingTest : public testing::Test {
 protected:
    FakeCheckBox blockTitles;
    FakeTextBox titleBan;
    TextSet keywords;
    FakeSwitch applyCmd;
    FakeBrowserNodes nodes;
    FakeMessageBoxes boxes;
    FakeLocale locale;
    TitleBrowser browser;
    TitleBlocking blocking{{blockTitles, titleBan, keywords, applyCmd, nodes, boxes, locale}};

    void Ban(const std::wstring& text) {
        titleBan.text = text;
        blocking.TitleBan_Change();
        blocking.RebuildTitleKeywords();
    }
    std::vector<std::wstring> Keywords() const { return {keywords.begin(), keywords.end()}; }
    /// The pages that the browser was sent to by a title.
    std::size_t PagesFor(const std::wstring& title) {
        browser.navigated.clear();
        blocking.IEEvents1_TitleChange(browser, title);
        return browser.navigated.size();
    }
};

std::wstring PageFor(const std::wstring& keyword) {
    return L"about:<html><head><title>Kestrelguard - Blocked Site Access</title></head><body><a href=" +
           std::wstring(maker::kProductPage) +
           L">Kestrelguard&#153;</a> Blocked access to the site due to keyword: <b><i>" + keyword +
           L"</i></b><BR><B>http://films.example/Free at 5/17/2004 3:05:09 PM</b></body></html>";
}

using Texts = std::vector<std::wstring>;

TEST_F(TitleBlockingTest, AnEditEnablesApplyAndMarksTheKeywords) {
    EXPECT_FALSE(blocking.TitleKeywordsDirty());
    blocking.TitleBan_Change();
    EXPECT_TRUE(applyCmd.enabled);
    EXPECT_TRUE(blocking.TitleKeywordsDirty());
}

TEST_F(TitleBlockingTest, TheRebuildSplitsLowerCasesAndClearsTheMark) {
    Ban(L"XXX -Porn -sex");
    EXPECT_EQ(Keywords(), (Texts{L"xxx", L"porn", L"sex"}));
    EXPECT_FALSE(blocking.TitleKeywordsDirty());
}

TEST_F(TitleBlockingTest, PiecesAreNotTrimmed) {
    Ban(L"xxx - porn");
    EXPECT_EQ(Keywords(), (Texts{L"xxx", L" porn"}));
}

TEST_F(TitleBlockingTest, ASinglePieceIsOneKeywordAndAnEmptyTextIsNone) {
    Ban(L"Poker");
    EXPECT_EQ(Keywords(), Texts{L"poker"});
    Ban(L"");
    EXPECT_TRUE(keywords.Empty());
}

TEST_F(TitleBlockingTest, WithoutAnEditNothingIsRebuilt) {
    Ban(L"poker");
    titleBan.text = L"dice";
    blocking.RebuildTitleKeywords();
    EXPECT_EQ(Keywords(), Texts{L"poker"});
}

TEST_F(TitleBlockingTest, ARepeatedPieceFailsAndLeavesTheMark) {
    titleBan.text = L"dice -Poker -poker -cards";
    blocking.TitleBan_Change();
    try {
        blocking.RebuildTitleKeywords();
        FAIL() << "no error";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), RunTimeError::kDuplicateKey);
    }
    EXPECT_EQ(Keywords(), (Texts{L"dice", L"poker"}));
    EXPECT_TRUE(blocking.TitleKeywordsDirty());
    EXPECT_TRUE(applyCmd.enabled);
}

TEST_F(TitleBlockingTest, TwoEmptyPiecesAreARepeatedPiece) {
    titleBan.text = L" -";
    blocking.TitleBan_Change();
    EXPECT_THROW(blocking.RebuildTitleKeywords(), RunTimeError);
}

TEST_F(TitleBlockingTest, ReplacesAPageWhoseTitleHoldsAKeyword) {
    Ban(L"xxx -porn -sex");
    blockTitles.value = 1;
    EXPECT_EQ(PagesFor(L"Free XXX Videos"), 1U);
    EXPECT_EQ(browser.navigated, Texts{PageFor(L"xxx")});
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(TitleBlockingTest, TheFirstKeywordInOrderDecidesNotTheFirstInTheTitle) {
    Ban(L"porn -xxx");
    blockTitles.value = 1;
    PagesFor(L"xxx and porn");
    EXPECT_EQ(browser.navigated, Texts{PageFor(L"porn")});
}

TEST_F(TitleBlockingTest, LetsOtherTitlesPass) {
    Ban(L"xxx -porn");
    blockTitles.value = 1;
    EXPECT_EQ(PagesFor(L"Knitting"), 0U);
    EXPECT_EQ(PagesFor(L""), 0U);
}

TEST_F(TitleBlockingTest, DoesNothingUnlessTickedWithKeywordsAndWithText) {
    Ban(L"xxx");
    EXPECT_EQ(PagesFor(L"xxx"), 0U);
    blockTitles.value = 2;
    EXPECT_EQ(PagesFor(L"xxx"), 0U);
    blockTitles.value = 1;
    EXPECT_EQ(PagesFor(L"xxx"), 1U);
    titleBan.text.clear();
    EXPECT_EQ(PagesFor(L"xxx"), 0U);
    titleBan.text = L"xxx";
    keywords.Clear();
    EXPECT_EQ(PagesFor(L"xxx"), 0U);
}

TEST_F(TitleBlockingTest, AnEditHasNoEffectBeforeApply) {
    Ban(L"xxx");
    blockTitles.value = 1;
    titleBan.text = L"poker";
    blocking.TitleBan_Change();
    EXPECT_EQ(PagesFor(L"poker"), 0U);
    EXPECT_EQ(PagesFor(L"xxx"), 1U);
    blocking.RebuildTitleKeywords();
    EXPECT_EQ(PagesFor(L"poker"), 1U);
    EXPECT_EQ(PagesFor(L"xxx"), 0U);
}

TEST_F(TitleBlockingTest, ATrailingSeparatorBansEveryTitle) {
    Ban(L"poker -");
    EXPECT_EQ(Keywords(), (Texts{L"poker", L""}));
    blockTitles.value = 1;
    PagesFor(L"Knitting");
    EXPECT_EQ(browser.navigated, Texts{PageFor(L"")});
    EXPECT_EQ(PagesFor(L""), 1U);
}

TEST_F(TitleBlockingTest, AKeywordOfTheBlockedPagesOwnTitleMatchesEachTime) {
    Ban(L"blocked");
    blockTitles.value = 1;
    EXPECT_EQ(PagesFor(L"Kestrelguard - Blocked Site Access"), 1U);
    EXPECT_EQ(PagesFor(L"Kestrelguard - Blocked Site Access"), 1U);
}

TEST_F(TitleBlockingTest, TheTreeShowsTheTitleAsItCameWhateverTheFilterSays) {
    PagesFor(L"Free XXX Videos");
    ASSERT_EQ(nodes.written.size(), 1U);
    EXPECT_EQ(nodes.written[0], (FakeBrowserNodes::Written{&browser, L"TITLE", L"Title : Free XXX Videos"}));
}

TEST_F(TitleBlockingTest, AnErrorOfTheTreeComesFirstAndReachesTheCaller) {
    Ban(L"xxx");
    blockTitles.value = 1;
    nodes.error = RunTimeError::kElementNotFound;
    EXPECT_THROW(blocking.IEEvents1_TitleChange(browser, L"xxx"), RunTimeError);
    EXPECT_TRUE(browser.navigated.empty());
}

TEST_F(TitleBlockingTest, AFailedNavigationIsToldInABox) {
    Ban(L"xxx");
    blockTitles.value = 1;
    browser.navigateError = -2147023174;
    EXPECT_EQ(PagesFor(L"Free XXX Videos"), 0U);
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text, L"Error Number: -2147023174, please report to " +
                                       std::wstring(maker::kSupportEmail) +
                                       L"!\r\nit went wrong Free XXX Videos");
    EXPECT_EQ(boxes.shown[0].caption, L"Kestrelguard Error!");
    EXPECT_EQ(boxes.shown[0].style, 0x11040U);
}

TEST_F(TitleBlockingTest, AnAddressThatCannotBeReadStaysEmptyAndThePageIsBlockedEvenSo) {
    Ban(L"xxx");
    blockTitles.value = 1;
    browser.duringCalls = [] { throw RunTimeError(-2147023174); };
    EXPECT_EQ(PagesFor(L"xxx"), 1U);
    EXPECT_TRUE(Contains(browser.navigated[0], L"</i></b><BR><B> at 5/17/2004 3:05:09 PM</b>"));
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(TitleBlockingTest, KeywordsMayBeRebuiltWhileTheBrowserIsCalled) {
    Ban(L"a keyword too long to be held in place");
    blockTitles.value = 1;
    browser.duringCalls = [this] { Ban(L"dice"); };
    EXPECT_EQ(PagesFor(L"A keyword too long to be held in place!"), 1U);
    EXPECT_EQ(browser.navigated, Texts{PageFor(L"a keyword too long to be held in place")});
}

}  // namespace
}  // namespace kestrelguard
