// The site filter and the title filter of the unchanged program, driven through its page "Safe Surfing" and
// through browsers of another process.

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cmath>

#include "DesktopTest.h"
#include "runtime/Maker.h"

namespace kestrelguard::testing {
namespace {

using desktop::NavigateCall;

using Texts = std::vector<std::wstring>;

constexpr wchar_t kSiteBox[] = L"Prevent the Following Internet Sites from loading in Internet Explorer...";
constexpr wchar_t kTitleBox[] =
    L"Prevent Internet Sites with the following words in their Title from loading... Seperate multiple "
    L"keywords by a space and a minus sign.";
constexpr wchar_t kBlockedTitle[] = L"Kestrelguard - Blocked Site Access";

class BlockingTest : public OneGuardTest {
 protected:
    /// A watched browser. Unless it navigates, what it is sent to is only written down.
    Browser& Watched(bool navigates = false) {
        BrowserOptions options;
        options.navigates = navigates;
        return OneGuardTest::Watched(options);
    }

    HWND SiteField() const { return m_guard->Edits()[0]; }
    HWND TitleField() const { return m_guard->Edits()[1]; }
    HWND SiteList() const { return m_guard->SiteList(); }
    void AddSite(const wchar_t* site) const {
        TypeText(SiteField(), site);
        ClickOn(L"Add");
    }
    void RemoveRow(int row) const {
        SelectRow(SiteList(), row);
        ClickOn(L"Remove");
    }
    void ApplyKeywords(const wchar_t* text) const {
        TypeText(TitleField(), text);
        ClickOn(L"Apply");
    }
    bool NoBox() const { return !FindMessageBox(m_guard->Program().Id()); }
};

bool Cancelled(Browser& browser, std::wstring_view address) {
    const EventResult result = browser.FireBeforeNavigate2(address);
    EXPECT_EQ(S_OK, result.hr);
    EXPECT_EQ(1, result.sinks);
    EXPECT_EQ(result.cancel ? VARIANT_TRUE : VARIANT_FALSE, result.cancelValue);
    return result.cancel;
}

/// Where the title sends the browser; empty when nowhere.
std::wstring PageFor(Browser& browser, std::wstring title) {
    const std::size_t before = browser.NavigateCalls().size();
    EXPECT_EQ(S_OK, browser.FireTitleChange(std::move(title)).hr);
    const std::vector<NavigateCall> calls = browser.NavigateCalls();
    return calls.size() == before ? std::wstring() : calls.back().url;
}

std::wstring PageBeforeTime(const std::wstring& keyword, const std::wstring& address) {
    return L"about:<html><head><title>Kestrelguard - Blocked Site Access</title></head><body><a href=" +
           std::wstring(maker::kProductPage) +
           L">Kestrelguard&#153;</a> Blocked access to the site due to keyword: <b><i>" + keyword +
           L"</i></b><BR><B>" + address + L" at ";
}

/// Whether the text is the present date and time as the system writes them.
bool IsNow(std::wstring text) {
    DATE told = 0;
    if (FAILED(VarDateFromStr(text.data(), LOCALE_USER_DEFAULT, 0, &told))) {
        return false;
    }
    SYSTEMTIME time;
    GetLocalTime(&time);
    DATE now = 0;
    SystemTimeToVariantTime(&time, &now);
    constexpr double kMinutes = 1.0 / (24 * 60);
    return std::fabs(now - told) < 5 * kMinutes;
}

/// Whether a browser was sent to the page that names the keyword.
::testing::AssertionResult IsBlockedPage(const std::wstring& page, const std::wstring& keyword,
                                         const std::wstring& address = L"http://www.home.example/") {
    const std::wstring begin = PageBeforeTime(keyword, address);
    const std::wstring end = L"</b></body></html>";
    if (page.size() < begin.size() + end.size() || page.substr(0, begin.size()) != begin ||
        page.substr(page.size() - end.size()) != end) {
        return ::testing::AssertionFailure() << ::testing::PrintToString(page);
    }
    const std::wstring time = page.substr(begin.size(), page.size() - begin.size() - end.size());
    return IsNow(time) ? ::testing::AssertionSuccess()
                       : ::testing::AssertionFailure() << ::testing::PrintToString(time) << " is not now";
}

// The site filter.

TEST_F(BlockingTest, WithTheFilterOffOrTheListEmptyEveryNavigationProceeds) {
    Start("SS1/:/:n/:/:\r\n");
    Browser& browser = Watched();
    AddSite(L"casino");
    EXPECT_FALSE(Cancelled(browser, L"http://www.casino.example/"));
    ClickOn(kSiteBox);
    EXPECT_TRUE(Cancelled(browser, L"http://www.casino.example/"));
    RemoveRow(0);
    EXPECT_FALSE(Cancelled(browser, L"http://www.casino.example/"));
}

TEST_F(BlockingTest, AnEntryBlocksHostsAndPathsSilentlyAndTheBrowserKeepsItsPage) {
    Start();
    Browser& browser = Watched(true);
    ClickOn(kSiteBox);
    AddSite(L"casino");
    for (const wchar_t* address : {L"http://www.casino.example/", L"http://news.example/city/casinos.html",
                                   L"HTTP://CASINO.EXAMPLE/"}) {
        browser.Navigate(address);
        ASSERT_TRUE(browser.WaitIdle());
        EXPECT_EQ(L"http://www.home.example/", browser.Url());
        EXPECT_EQ(L"Home", browser.Title());
    }
    EXPECT_TRUE(NoBox());
    EXPECT_TRUE(browser.NavigateCalls().empty());
    EXPECT_EQ(L"0", m_guard->Today());
    browser.Navigate(L"http://news.example/casin/o");
    ASSERT_TRUE(browser.WaitIdle());
    EXPECT_EQ(L"http://news.example/casin/o", browser.Url());
}

TEST_F(BlockingTest, TheTreeShowsTheAddressOfABlockedNavigation) {
    Start();
    Browser& browser = Watched();
    ClickOn(kSiteBox);
    AddSite(L"casino");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->TreeLines().size() == 4; }));
    EXPECT_TRUE(Cancelled(browser, L"http://www.Casino.example/"));
    EXPECT_EQ(L"    URL : http://www.Casino.example/", m_guard->TreeLines()[3]);
    EXPECT_FALSE(Cancelled(browser, L"http://news.example/"));
    EXPECT_EQ(L"    URL : http://news.example/", m_guard->TreeLines()[3]);
}

TEST_F(BlockingTest, AnEmptyRowOfTheFileCancelsEverythingAndCannotBeRemoved) {
    Start("SS1/:/:y/:/:casino -\r\n");
    Browser& one = Watched();
    Browser& other = Watched();
    EXPECT_EQ((Texts{L"casino", L""}), ListRows(SiteList()));
    EXPECT_TRUE(Cancelled(one, L"http://news.example/"));
    EXPECT_TRUE(Cancelled(other, L"about:blank"));
    RemoveRow(1);
    RemoveRow(0);
    EXPECT_EQ(Texts{L""}, ListRows(SiteList()));
    RemoveRow(0);
    EXPECT_EQ(Texts{L""}, ListRows(SiteList()));
    EXPECT_TRUE(Cancelled(one, L"http://news.example/"));
    ClickOn(kSiteBox);
    EXPECT_FALSE(Cancelled(one, L"http://news.example/"));
}

TEST_F(BlockingTest, ADuplicateGetsItsRowAndIsNeverRefused) {
    Start();
    AddSite(L"Casino");
    EXPECT_EQ(L"", TextOf(SiteField()));
    AddSite(L"casino");
    EXPECT_EQ(L"", TextOf(SiteField()));
    EXPECT_EQ((Texts{L"casino", L"casino"}), ListRows(SiteList()));
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    ClickOn(kSiteBox);
    ClickOn(L"Apply");
    EXPECT_EQ("SS1/:/:y/:/:casino -casino -", m_folder->SettingsLine("SS1"));
    Browser& browser = Watched();
    RemoveRow(1);
    EXPECT_TRUE(Cancelled(browser, L"http://casino.example/"));
    RemoveRow(0);
    EXPECT_FALSE(Cancelled(browser, L"http://casino.example/"));
}

TEST_F(BlockingTest, AnEmptyFieldAddsNothingAndNoSelectionRemovesNothing) {
    Start();
    AddSite(L"");
    EXPECT_TRUE(ListRows(SiteList()).empty());
    AddSite(L"casino");
    RemoveRow(-1);
    EXPECT_EQ(Texts{L"casino"}, ListRows(SiteList()));
}

TEST_F(BlockingTest, AnEntryOfTheFileWithCapitalsNeverMatches) {
    // Without a separator at its end the line brings no empty row.
    Start("SS1/:/:y/:/:Casino -banners\r\n");
    Browser& browser = Watched();
    EXPECT_EQ((Texts{L"Casino", L"banners"}), ListRows(SiteList()));
    EXPECT_FALSE(Cancelled(browser, L"http://www.Casino.example/"));
    EXPECT_TRUE(Cancelled(browser, L"http://www.Banners.example/"));
}

TEST_F(BlockingTest, LettersOutsideAsciiAreLowerCasedToo) {
    Start();
    Browser& browser = Watched();
    ClickOn(kSiteBox);
    AddSite(L"GR\u00dcSSE");
    EXPECT_EQ(Texts{L"gr\u00fcsse"}, ListRows(SiteList()));
    EXPECT_TRUE(Cancelled(browser, L"http://www.Gr\u00fcsse.example/"));
    EXPECT_TRUE(Cancelled(browser, L"http://www.GR\u00dcSSE.example/"));
    EXPECT_FALSE(Cancelled(browser, L"http://www.grusse.example/"));
}

TEST_F(BlockingTest, AListOfAHundredThousandEntriesDecidesRightly) {
    std::string line = "SS1/:/:y/:/:";
    for (int entry = 0; entry < 100000; ++entry) {
        line += "www.blocked-" + std::to_string(entry) + ".example -";
    }
    line.resize(line.size() - 2);
    Start(line + "\r\n");
    Browser& browser = Watched();
    LRESULT rows = 0;
    ASSERT_TRUE(Ask(SiteList(), LB_GETCOUNT, 0, 0, rows));
    EXPECT_EQ(100000, rows);
    EXPECT_TRUE(Cancelled(browser, L"http://WWW.blocked-99999.example/index.html"));
    EXPECT_TRUE(Cancelled(browser, L"http://other.example/?from=www.blocked-0.example"));
    EXPECT_FALSE(Cancelled(browser, L"http://www.blocked-100000.example/"));
}

// The title filter.

TEST_F(BlockingTest, APageWithAKeywordInItsTitleIsReplaced) {
    Start("SS2/:/:y/:/:xxx -porn -sex\r\n");
    Browser& browser = Watched();
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Free XXX Videos"), L"xxx"));
    const std::vector<NavigateCall> calls = browser.NavigateCalls();
    ASSERT_EQ(1u, calls.size());
    EXPECT_FALSE(calls[0].second);
    EXPECT_EQ((std::array<VARTYPE, 4>{VT_ERROR, VT_ERROR, VT_ERROR, VT_ERROR}), calls[0].optional);
    EXPECT_EQ(L"", PageFor(browser, L"Knitting"));
    EXPECT_TRUE(NoBox());
}

TEST_F(BlockingTest, TheBrowserShowsTheBlockedPageUnderItsTitle) {
    Start("SS2/:/:y/:/:xxx -porn -sex\r\n");
    Browser& browser = Watched(true);
    browser.FireTitleChange(L"Free XXX Videos");
    EXPECT_TRUE(WaitUntil([&] { return browser.Title() == kBlockedTitle; }));
    ASSERT_TRUE(browser.WaitIdle());
    EXPECT_TRUE(IsBlockedPage(browser.Url(), L"xxx"));
    const auto shown = [&] {
        const Texts lines = m_guard->TreeLines();
        return lines.size() == 4 && lines[2] == L"    Title : " + std::wstring(kBlockedTitle);
    };
    EXPECT_TRUE(WaitUntil(shown));
    EXPECT_EQ(1u, browser.NavigateCalls().size());
}

TEST_F(BlockingTest, TheTreeShowsTheTitleWhateverTheFilterSays) {
    Start("SS2/:/:n/:/:xxx -porn\r\n");
    Browser& browser = Watched();
    ASSERT_TRUE(WaitUntil([&] { return m_guard->TreeLines().size() == 4; }));
    EXPECT_EQ(L"", PageFor(browser, L"Free XXX Videos"));
    EXPECT_EQ(L"    Title : Free XXX Videos", m_guard->TreeLines()[2]);
}

TEST_F(BlockingTest, TheFirstKeywordInOrderIsNamed) {
    Start("SS2/:/:y/:/:porn -xxx\r\n");
    Browser& browser = Watched();
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"xxx and porn"), L"porn"));
}

TEST_F(BlockingTest, KeywordsAreNotTrimmed) {
    Start("SS2/:/:y/:/:a -b\r\n");
    Browser& browser = Watched();
    ApplyKeywords(L"xxx - Porn");
    EXPECT_EQ(L"", PageFor(browser, L"porn"));
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"more porn"), L" porn"));
}

TEST_F(BlockingTest, ASeparatorAtTheEndBansEveryTitle) {
    Start("SS2/:/:y/:/:a -b\r\n");
    Browser& browser = Watched();
    ApplyKeywords(L"poker -");
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Poker nights"), L"poker"));
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Knitting"), L""));
}

TEST_F(BlockingTest, AnEmptyTextBansNothing) {
    Start("SS2/:/:y/:/:a -b\r\n");
    Browser& browser = Watched();
    TypeText(TitleField(), L"");
    EXPECT_EQ(L"", PageFor(browser, L"a and b"));
    ClickOn(L"Apply");
    EXPECT_EQ(L"", PageFor(browser, L"a and b"));
    EXPECT_EQ("SS2/:/:y/:/:", m_folder->SettingsLine("SS2"));
}

TEST_F(BlockingTest, AKeywordOfTheBlockedPagesTitleMatchesItEachTime) {
    Start("SS2/:/:y/:/:a -b\r\n");
    Browser& browser = Watched();
    ApplyKeywords(L"blocked -poker");
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, kBlockedTitle), L"blocked"));
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, kBlockedTitle), L"blocked"));
    EXPECT_EQ(2u, browser.NavigateCalls().size());
}

TEST_F(BlockingTest, ABlockedPageThatIsBannedItselfIsMadeAnewUntilTheFilterIsOff) {
    Start("SS2/:/:y/:/:a -b\r\n");
    Browser& browser = Watched(true);
    ApplyKeywords(L"blocked -poker");
    browser.Navigate(L"http://poker.example/");
    EXPECT_TRUE(WaitUntil([&] { return browser.NavigateCalls().size() >= 4; }));
    ClickOn(kTitleBox);
    ASSERT_TRUE(browser.WaitIdle());
    const std::vector<NavigateCall> calls = browser.NavigateCalls();
    EXPECT_TRUE(IsBlockedPage(calls.at(0).url, L"poker", L"http://poker.example/"));
    for (std::size_t call = 1; call < calls.size(); ++call) {
        EXPECT_TRUE(IsBlockedPage(calls[call].url, L"blocked", calls[call - 1].url)) << call;
    }
    EXPECT_EQ(calls.back().url, browser.Url());
    EXPECT_TRUE(NoBox());
}

TEST_F(BlockingTest, AnEditActsFromApplyOnAndMarksTheSettings) {
    Start("SS2/:/:y/:/:poker -dice\r\n");
    Browser& browser = Watched();
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    TypeText(TitleField(), L"roulette");
    EXPECT_TRUE(Enabled(m_guard->Apply()));
    EXPECT_EQ(L"", PageFor(browser, L"Roulette"));
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Dice"), L"dice"));
    ClickOn(L"Apply");
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Roulette"), L"roulette"));
    EXPECT_EQ(L"", PageFor(browser, L"Dice"));
}

TEST_F(BlockingTest, InTheVeryFirstRunNoWordIsBannedUntilTheWordsAreApplied) {
    Start();
    Browser& browser = Watched();
    ClickOn(kTitleBox);
    EXPECT_EQ(L"xxx -porn -sex", TextOf(TitleField()));
    EXPECT_EQ(L"", PageFor(browser, L"Free XXX"));
    ClickOn(L"Apply");
    EXPECT_EQ(L"", PageFor(browser, L"Free XXX"));
    ApplyKeywords(L"xxx -porn");
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Free XXX"), L"xxx"));
    m_guard->Close();
    m_guard = std::make_unique<Guard>(*m_folder);
    ASSERT_TRUE(m_guard->WaitReady());
    EXPECT_TRUE(WaitUntil([&] { return browser.Sinks().connected == 1; }));
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Free XXX"), L"xxx"));
}

TEST_F(BlockingTest, APageThatCannotBeReplacedIsToldInABox) {
    Start("SS2/:/:y/:/:xxx -porn\r\n");
    Browser& browser = Watched();
    browser.Fail(Property::Navigate, E_ACCESSDENIED, 1);
    const PendingEvent pending = browser.Start(EventCall::TitleChange(L"Free XXX Videos"));
    const MessageBoxSeen box = WaitMessageBox(m_guard->Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Kestrelguard Error!", box.caption);
    const std::wstring begin =
        L"Error Number: -2147024891, please report to " + std::wstring(maker::kSupportEmail) + L"!\r\n";
    const std::wstring end = L" Free XXX Videos";
    ASSERT_GT(box.text.size(), begin.size() + end.size()) << "no description";
    EXPECT_EQ(begin, box.text.substr(0, begin.size()));
    EXPECT_EQ(end, box.text.substr(box.text.size() - end.size()));
    EXPECT_TRUE(box.topmost);
    EXPECT_EQ(1u, box.buttons.size());
    EXPECT_FALSE(pending.Done());
    EXPECT_TRUE(Dismiss(box));
    EXPECT_EQ(S_OK, pending.Result().hr);
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Free XXX Videos"), L"xxx"));
}

TEST_F(BlockingTest, AnAddressThatCannotBeReadLeavesItsPlaceEmpty) {
    Start("SS2/:/:y/:/:xxx -porn\r\n");
    Browser& browser = Watched();
    browser.Fail(Property::LocationUrl, E_FAIL);
    EXPECT_TRUE(IsBlockedPage(PageFor(browser, L"Free XXX Videos"), L"xxx", L""));
    EXPECT_TRUE(NoBox());
}

}  // namespace
}  // namespace kestrelguard::testing
