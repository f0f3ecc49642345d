// Browser windows to click in.

#include "desktop/driver/Controls.h"
#include "tests/standin/StandInTest.h"

namespace kestrelguard::desktop {
namespace {

using namespace kestrelguard::testing;

class StandInWindowsTest : public StandInTest {};

TEST_F(StandInWindowsTest, DressedWindowsNavigateByTheirAddressBarAndLinks) {
    BrowserOptions options;
    options.dressed = true;
    Browser& browser = m_desktop.OpenBrowser(options);
    m_client.Ask("attach");
    const HWND address = FindInside(browser.Window(), L"Edit");
    ASSERT_TRUE(WaitUntil([&] { return TextOf(address) == L"http://www.home.example/"; }));

    Ask(address, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"www.news.example"));
    PostMessageW(address, WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_TRUE(WaitUntil([&] { return browser.Title() == L"The Morning News"; }));
    EXPECT_NE("no event", m_client.Event("browser0 259"));
    EXPECT_TRUE(WaitUntil([&] { return TextOf(address) == L"http://www.news.example/"; }));
    EXPECT_TRUE(WaitUntil(
        [&] { return TextOf(browser.Window()) == L"The Morning News - Microsoft Internet Explorer"; }));

    EXPECT_FALSE(browser.ClickLink(L"http://nowhere.example/"));
    EXPECT_TRUE(browser.ClickLink(L"http://www.news.example/weather.html"));
    EXPECT_TRUE(WaitUntil([&] { return browser.Title() == L"The Morning News - Weather"; }));
    EXPECT_TRUE(WaitUntil([&] { return TextOf(address) == L"http://www.news.example/weather.html"; }));

    Ask(address, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"http://www.home.example/"));
    Click(FindInside(browser.Window(), L"Button", L"Go"));
    EXPECT_TRUE(WaitUntil([&] { return browser.Title() == L"Home"; }));
    EXPECT_TRUE(WaitUntil([&] { return browser.ClickLink(L"http://www.offers.example/"); }));
    EXPECT_NE("no event", m_client.Event("browser0 251"));
    ASSERT_TRUE(WaitUntil([&] { return m_desktop.OpenBrowsers().size() == 2; }));
    EXPECT_TRUE(WaitUntil([&] { return m_desktop.OpenBrowsers()[1]->Title() == L"Today's Offer"; }));
}

TEST_F(StandInWindowsTest, PointingAtALinkShowsItsAddress) {
    BrowserOptions options;
    options.dressed = true;
    options.shown = true;
    const Browser& browser = m_desktop.OpenBrowser(options);
    m_client.Ask("attach");
    RECT place{};
    ASSERT_TRUE(WaitUntil([&] {
        place = browser.LinkPlace(L"http://www.news.example/");
        return !IsRectEmpty(&place);
    }));
    // The pointer rests on the link. It is moved a little now and then, so that the window hears of it
    // however late it appears; not all the time, since a move discards those before it that are still on
    // their way.
    LONG nudge = 0;
    EXPECT_TRUE(WaitUntil([&] {
        nudge = 1 - nudge;
        SetCursorPos(place.left + 20 + nudge, (place.top + place.bottom) / 2);
        return WaitUntil([&] { return browser.StatusText() == L"http://www.news.example/"; }, 1000);
    }));
    EXPECT_EQ("event browser0 102 args 1: \"http://www.news.example/\"",
              m_client.Event("browser0 102 args 1: \"h"));
    const HWND status = FindInside(browser.Window(), L"msctls_statusbar32");
    EXPECT_TRUE(WaitUntil([&] { return TextOf(status) == L" http://www.news.example/"; }));
}

}  // namespace
}  // namespace kestrelguard::desktop
