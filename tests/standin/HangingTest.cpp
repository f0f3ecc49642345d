// Browsers that hang: a process that is stopped, and a property that stalls.

#include "desktop/driver/Windows.h"
#include "tests/standin/StandInTest.h"

namespace kestrelguard::desktop {
namespace {

using namespace kestrelguard::testing;

class HangingTest : public StandInTest {
 protected:
    /// Sends a command without waiting for its answer.
    int Begin(const std::string& command) {
        const int from = static_cast<int>(m_client.Program().Lines().size());
        m_client.Program().WriteLine(command);
        return from;
    }
    static bool Answers(HWND window) {
        LRESULT answer = 0;
        return testing::Ask(window, WM_NULL, 0, 0, answer, 500);
    }
};

TEST_F(HangingTest, AStoppedProcessAnswersNothingUntilItGoesOn) {
    RemoteBrowser& remote = OpenRemote();
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    EXPECT_TRUE(Answers(remote.Window()));
    remote.Stop();
    EXPECT_FALSE(Answers(remote.Window()));
    EXPECT_TRUE(remote.Running());
    const int from = Begin("navigate http://next.example/");
    EXPECT_EQ(-1, m_client.Program().WaitLine("ok", from, 500));
    remote.GoOn();
    EXPECT_NE(-1, m_client.Program().WaitLine("ok", from));
    EXPECT_TRUE(Answers(remote.Window()));
    EXPECT_NE("no event", m_client.Event("browser0 250"));
    EXPECT_EQ(1, remote.Sinks());
    EXPECT_EQ(1, remote.FireNewWindow2().sinks);
    EXPECT_TRUE(remote.Close());
}

TEST_F(HangingTest, AStoppedProcessIsListedAndAnnouncedLikeAnyOther) {
    m_desktop.OpenBrowser();
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    RemoteOptions silent;
    silent.announced = false;
    RemoteBrowser& remote = OpenRemote(silent);
    EXPECT_EQ(0, m_client.Count("list 200", 0));
    remote.Stop();
    EXPECT_EQ(1, m_desktop.FireWindowRegistered(remote.Cookie()).sinks);
    EXPECT_EQ(1, m_client.Count("list 200", 1));
    // However often the list is walked: handing the window out must not take a word with its process.
    for (int i = 0; i < 40; ++i) {
        ASSERT_EQ("ok 2 count 2", m_client.Ask("walk")) << i;
        ASSERT_EQ("ok object", m_client.Ask("item 1")) << i;
    }
    m_desktop.Withdraw(remote.Cookie());
    EXPECT_EQ(1, m_client.Count("list 201", 1));
    EXPECT_EQ("ok 1 count 1", m_client.Ask("walk"));
}

TEST_F(HangingTest, AStoppedProcessCanBeKilled) {
    RemoteBrowser& remote = OpenRemote();
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    remote.Stop();
    const int from = Begin("navigate http://next.example/");
    EXPECT_EQ(-1, m_client.Program().WaitLine("failed", from, 200));
    remote.Kill();
    EXPECT_NE(-1, m_client.Program().WaitLine("failed", from));
    EXPECT_FALSE(remote.Running());
    EXPECT_EQ(-1, remote.Sinks());
}

TEST_F(HangingTest, TheDesktopEndsWithAStoppedProcess) {
    RemoteBrowser& remote = OpenRemote();
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    remote.Stop();
    // The rest is the end of the test: it must come.
}

TEST_F(HangingTest, APropertyStallsAloneHereAndFarAway) {
    Browser& browser = m_desktop.OpenBrowser();
    RemoteBrowser& remote = OpenRemote();
    EXPECT_EQ("ok 2 of 2", m_client.Ask("attach"));
    browser.Stall(Property::LocationName);
    const int first = Begin("list");
    ASSERT_TRUE(WaitUntil([&] { return browser.Stalled(Property::LocationName) == 1; }));
    EXPECT_EQ(1, browser.Reads(Property::LocationUrl));
    EXPECT_TRUE(Answers(browser.Window()));
    // The client waits in its call, and hears events meanwhile.
    EXPECT_EQ(1, browser.FireNewWindow2().sinks);
    EXPECT_EQ(-1, m_client.Program().WaitLine("window", first, 200));
    browser.LetGo(Property::LocationName);
    EXPECT_NE(-1, m_client.Program().WaitLine("ok 2", first));

    remote.Stall(Property::Hwnd);
    const int second = Begin("list");
    ASSERT_TRUE(remote.WaitStalled(Property::Hwnd));
    EXPECT_TRUE(Answers(remote.Window()));
    EXPECT_EQ(1, remote.FireNewWindow2().sinks);
    EXPECT_EQ(1, m_client.Count("browser1 251", 1));
    EXPECT_EQ(-1, m_client.Program().WaitLine("ok", second, 200));
    remote.LetGo(Property::Hwnd);
    EXPECT_NE(-1, m_client.Program().WaitLine("ok 2", second));
    EXPECT_EQ(0, remote.Stalled(Property::Hwnd));
}

TEST_F(HangingTest, AStalledReadEndsWithItsBrowser) {
    Browser& browser = m_desktop.OpenBrowser();
    RemoteBrowser& remote = OpenRemote();
    browser.Stall(Property::Hwnd);
    const int first = Begin("list");
    ASSERT_TRUE(WaitUntil([&] { return browser.Stalled(Property::Hwnd) == 1; }));
    remote.Stall(Property::LocationUrl);
    browser.Die();
    ASSERT_TRUE(remote.WaitStalled(Property::LocationUrl));
    remote.Kill();
    EXPECT_NE(-1, m_client.Program().WaitLine("ok 2", first));
}

TEST_F(HangingTest, EventsOfAnotherProcessComeWithTheirArguments) {
    RemoteBrowser& remote = OpenRemote();
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    EXPECT_EQ(1, remote.FireBeforeNavigate2(L"http://a.example/x y").sinks);
    EXPECT_EQ(1, remote.FireNavigateComplete2(L"http://a.example/").sinks);
    EXPECT_EQ(1, remote.FireDocumentComplete(L"http://a.example/").sinks);
    EXPECT_EQ(1, remote.FireTitleChange(L"A long title").sinks);
    EXPECT_NE("no event", m_client.Event("browser0 250 args 7: object &\"http://a.example/x y\""));
    EXPECT_NE("no event", m_client.Event("browser0 252 args 2: object &\"http://a.example/\""));
    EXPECT_NE("no event", m_client.Event("browser0 259 args 2: object &\"http://a.example/\""));
    EXPECT_NE("no event", m_client.Event("browser0 113 args 1: \"A long title\""));
    m_client.Ask("list");
    EXPECT_NE(-1, m_client.Program().WaitLine("window " + std::to_string(remote.Handle()) +
                                              " http://a.example/|A long title|"));
    m_client.Ask("fail 800a0006");
    EXPECT_EQ(static_cast<HRESULT>(0x800a0006), remote.FireNewWindow2().hr);
    remote.Navigate(L"http://www.news.example/");
    EXPECT_NE("no event", m_client.Event("browser0 259 args 2: object &\"http://www.news.example/\""));
}

TEST_F(HangingTest, TheMenuOfADressedWindowMakesItHang) {
    BrowserOptions options;
    options.dressed = true;
    Browser& browser = m_desktop.OpenBrowser(options);
    const HMENU menu = GetSystemMenu(browser.Window(), FALSE);
    const auto choose = [&](const std::wstring& start) {
        for (int i = 0; i < GetMenuItemCount(menu); ++i) {
            wchar_t text[100];
            if (GetMenuStringW(menu, static_cast<UINT>(i), text, 100, MF_BYPOSITION) > 0 &&
                std::wstring(text).starts_with(start)) {
                PostMessageW(browser.Window(), WM_SYSCOMMAND, GetMenuItemID(menu, i), 0);
                return true;
            }
        }
        return false;
    };
    ASSERT_TRUE(choose(L"S&tall"));
    EXPECT_TRUE(WaitUntil([&] { return TextOf(browser.Window()).ends_with(L" (stalls)"); }));
    const int from = Begin("list");
    EXPECT_TRUE(WaitUntil([&] { return browser.Stalled(Property::Hwnd) == 1; }));
    ASSERT_TRUE(choose(L"S&tall"));
    EXPECT_NE(-1, m_client.Program().WaitLine("ok 1", from));
    EXPECT_TRUE(WaitUntil([&] { return TextOf(browser.Window()) == L"Home - Microsoft Internet Explorer"; }));

    ASSERT_TRUE(choose(L"&Open"));
    ASSERT_TRUE(WaitUntil([&] { return m_desktop.RemoteBrowsers().size() == 1; }));
    RemoteBrowser& remote = *m_desktop.RemoteBrowsers()[0];
    EXPECT_TRUE(IsWindowVisible(remote.Window()));
    ASSERT_TRUE(choose(L"Stop"));
    EXPECT_TRUE(WaitUntil([&] { return !Answers(remote.Window()); }));
    ASSERT_TRUE(choose(L"Stop"));
    EXPECT_TRUE(WaitUntil([&] { return Answers(remote.Window()); }));
    EXPECT_TRUE(remote.Close());
}

}  // namespace
}  // namespace kestrelguard::desktop
