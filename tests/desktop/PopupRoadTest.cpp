// The road of one popup through the unchanged program: from a browser of another process to the labels, the
// tip, the menu and the settings file.

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

class PopupRoadTest : public OneGuardTest {};

TEST_F(PopupRoadTest, APreventedPopupIsCountedShownAndSaved) {
    desktop::BrowserOptions options;
    options.url = L"http://popups.example/";
    options.title = L"Open Sesame";
    Browser& browser = m_desktop.OpenBrowser(options);
    Start();
    EXPECT_EQ(1, browser.Sinks().connected);
    EXPECT_EQ((std::vector<std::wstring>{L"Windows Browsers (1)", L"  Browser ", L"    Title : Open Sesame",
                                         L"    URL : http://popups.example/"}),
              m_guard->TreeLines());
    EXPECT_EQ(0, m_guard->Mode());

    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_EQ(L"1", m_guard->Today());
    EXPECT_EQ(L"1", m_guard->Total());
    browser.ClickNewWindowLink(L"http://www.offers.example/");
    EXPECT_TRUE(browser.WaitIdle());
    EXPECT_EQ(1u, m_desktop.OpenBrowsers().size());
    EXPECT_EQ(L"2", m_guard->Today());

    ASSERT_TRUE(m_guard->Minimise());
    EXPECT_EQ(L" Kestrelguard v2 - Preventing Popups: 2", m_guard->Tip());
    const OpenMenu menu = m_guard->OpenTrayMenu();
    EXPECT_EQ((std::vector<std::wstring>{L"Kestrelguard Help", L"-", L"* Prevent Popups = 2",
                                         L"Clear Internet Cache", L"Clear Internet Cookies",
                                         L"Show Kestrelguard", L"-", L"Exit"}),
              menu.Captions());
    EXPECT_TRUE(m_guard->Inside().Choose(L"Exit"));
    EXPECT_TRUE(m_guard->Program().WaitGone());
    EXPECT_EQ("PST/:/:2", m_folder->SettingsLine("PST"));
    EXPECT_EQ(0, browser.Sinks().connected);
    EXPECT_FALSE(browser.FireNewWindow2().cancel);
}

TEST_F(PopupRoadTest, PromptShowsTheBoxAndLetsTheWindowOpen) {
    desktop::BrowserOptions options;
    options.url = L"http://www.home.example/aaaaaaaaaaaaaaaaaaaaaaaaa12345678901";
    ASSERT_EQ(60u, options.url.size());
    Browser& browser = m_desktop.OpenBrowser(options);
    Start("PT1/:/:1\r\n");
    EXPECT_EQ(1, m_guard->Mode());
    const PendingEvent pending = browser.Start(EventCall::NewWindow2());
    const MessageBoxSeen box = WaitMessageBox(m_guard->Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Kestrelguard New Browser Window Prompt!", box.caption);
    EXPECT_EQ(L"A New Browser Window is attempting to open, allow it?\r\n12345678901...", box.text);
    EXPECT_EQ(1u, box.buttons.size());
    EXPECT_FALSE(pending.Done());
    EXPECT_TRUE(Dismiss(box));
    EXPECT_FALSE(pending.Result().cancel);
    EXPECT_EQ(S_OK, pending.Result().hr);
    EXPECT_EQ(L"0", m_guard->Today());
}

}  // namespace
}  // namespace kestrelguard::testing
