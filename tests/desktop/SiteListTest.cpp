// The window of the blocked sites in the unchanged program: it gets its rows when somebody looks, and what it
// refuses costs no site.

#include <windows.h>

#include <string>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

/// How many rows a list window of Windows 98 takes.
constexpr int kRowsOfAnOldList = 32767;

std::string Site(int number) {
    return "site-" + std::to_string(number) + "-blocked";
}

/// A line of so many sites, without the end that would bring an empty row.
std::string SitesLine(int sites) {
    std::string line = "SS1/:/:y/:/:";
    for (int site = 0; site < sites; ++site) {
        line += (site == 0 ? "" : " -") + Site(site);
    }
    return line + "\r\n";
}

std::wstring Wide(const std::string& text) {
    return {text.begin(), text.end()};
}

std::wstring Row(HWND list, int row) {
    wchar_t text[100] = {};
    SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text));
    return text;
}

/// A list box has a scroll bar when it holds more rows than it can show at once.
bool HasScrollBar(HWND list) {
    return (GetWindowLongA(list, GWL_STYLE) & WS_VSCROLL) != 0;
}

class SiteListDesktopTest : public DesktopTest {
 protected:
    bool Cancelled(Browser& browser, const std::string& host) const {
        const EventResult result = browser.FireBeforeNavigate2(Wide("http://" + host + ".example/"));
        EXPECT_EQ(S_OK, result.hr);
        return result.cancel;
    }
};

TEST_F(SiteListDesktopTest, AListInTheTrayGetsItsRowsWhenItIsAsked) {
    RunningGuard guard("MIN/:/:y\r\n" + SitesLine(100'000));
    ASSERT_TRUE(guard.InTray());
    const HWND list = guard.SiteList();
    Browser& browser = Watched();
    EXPECT_TRUE(Cancelled(browser, Site(99'999)));
    EXPECT_FALSE(HasScrollBar(list)) << "a hundred thousand rows went into a window at which nobody looks";
    const std::wstring last = Wide(Site(99'999));
    EXPECT_EQ(99'999, SendMessageW(list, LB_SELECTSTRING, static_cast<WPARAM>(-1),
                                   reinterpret_cast<LPARAM>(last.c_str())));
    EXPECT_TRUE(HasScrollBar(list));
    EXPECT_EQ(99'999, SelectedRow(list));
    EXPECT_EQ(100'000, Ask(list, LB_GETCOUNT));
    EXPECT_EQ(last, Row(list, 99'999));
    ClickAndWait(guard.Button(L"Remove"));
    EXPECT_EQ(99'999, Ask(list, LB_GETCOUNT));
    EXPECT_FALSE(Cancelled(browser, Site(99'999)));
    EXPECT_TRUE(Cancelled(browser, Site(99'998)));
    EXPECT_TRUE(guard.EndsWell());
}

TEST_F(SiteListDesktopTest, AListThatNobodyAsksIsSavedWhole) {
    RunningGuard guard("MIN/:/:y\r\n" + SitesLine(1000));
    TypeText(guard.Edits()[0], L"Casino");
    ClickAndWait(guard.Button(L"Add"));
    EXPECT_FALSE(HasScrollBar(guard.SiteList()));
    EXPECT_TRUE(guard.EndsWell());
    const std::string sites = guard.Setting("SS1");
    EXPECT_TRUE(sites.starts_with("y/:/:" + Site(0) + " -" + Site(1) + " -"));
    EXPECT_TRUE(sites.ends_with(" -" + Site(999) + " -casino -"));
}

TEST_F(SiteListDesktopTest, TheListIsFilledWhenItsPageIsShown) {
    RunningGuard guard(SitesLine(1000));
    const HWND list = guard.SiteList();
    EXPECT_FALSE(HasScrollBar(list));
    ClickTab(guard.Tabs(), 1);
    EXPECT_TRUE(WaitUntil([&] { return HasScrollBar(list); }));
}

TEST_F(SiteListDesktopTest, AListOfWindows98CostsNoSite) {
    constexpr int kSites = 40'000;
    RunningGuard guard(SitesLine(kSites), &Hook::MakeListsOld);
    const HWND list = guard.SiteList();
    Browser& browser = Watched();
    EXPECT_EQ(kRowsOfAnOldList, Ask(list, LB_GETCOUNT));
    EXPECT_TRUE(Cancelled(browser, Site(kRowsOfAnOldList)));
    EXPECT_TRUE(Cancelled(browser, Site(kSites - 1)));
    // Added.
    TypeText(guard.Edits()[0], L"Casino");
    ClickAndWait(guard.Button(L"Add"));
    EXPECT_EQ(L"", TextOf(guard.Edits()[0]));
    EXPECT_TRUE(Cancelled(browser, "casino"));
    // A row that is removed makes room for one that was not shown.
    SelectRow(list, 1);
    ClickAndWait(guard.Button(L"Remove"));
    EXPECT_EQ(kRowsOfAnOldList, Ask(list, LB_GETCOUNT));
    EXPECT_EQ(Wide(Site(kRowsOfAnOldList)), Row(list, kRowsOfAnOldList - 1));
    EXPECT_TRUE(Cancelled(browser, Site(kSites - 1)));
    // Which can be removed now.
    SelectRow(list, kRowsOfAnOldList - 1);
    ClickAndWait(guard.Button(L"Remove"));
    EXPECT_EQ(Wide(Site(kRowsOfAnOldList + 1)), Row(list, kRowsOfAnOldList - 1));
    EXPECT_FALSE(Cancelled(browser, Site(kRowsOfAnOldList)));
    // Saved.
    EXPECT_TRUE(guard.EndsWell());
    std::string expected = "y/:/:";
    for (int site = 0; site < kSites; ++site) {
        if (site != 1 && site != kRowsOfAnOldList) {
            expected += Site(site) + " -";
        }
    }
    EXPECT_TRUE(guard.Setting("SS1") == expected + "casino -") << "not printed: it has 40,000 sites";
}

}  // namespace
}  // namespace kestrelguard::testing
