#include "ControlFixture.h"

#include <exdispid.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/PassingWindows.h"

// Many windows, and windows that come, go and fail at bad moments.

namespace kestrelguard::desktop {
namespace {

using kestrelguard::testing::LetWindowsPass;

TEST_F(ControlDesktopTest, FiftyWindowsOpenAndClose) {
    constexpr int kWindows = 50;
    m_client.Ask("on");
    for (int i = 1; i <= kWindows; ++i) {
        m_desktop.OpenBrowser();
        ASSERT_EQ(Lines{"BrowserCreated #" + std::to_string(i)}, m_client.Events());
    }
    ExpectOneSinkEach();
    EXPECT_EQ(Handles(), m_client.Ask("handles"));

    // What one more costs.
    HandleReads();
    std::vector<int> advises;
    for (const Browser* browser : m_desktop.Browsers()) {
        advises.push_back(browser->Sinks().advises);
    }
    m_desktop.OpenBrowser();
    EXPECT_LE(HandleReads(), 2 * kWindows + 10);
    for (std::size_t i = 0; i < advises.size(); ++i) {
        EXPECT_EQ(advises[i] + 1, m_desktop.Browsers()[i]->Sinks().advises);
    }

    for (Browser* browser : m_desktop.Browsers()) {
        browser->Close();
    }
    EXPECT_EQ("0", m_client.Ask("count"));
    for (Browser* browser : m_desktop.Browsers()) {
        EXPECT_TRUE(WaitUntil([&] { return browser->OutsideReferences() == 0; }));
    }
    Lines expected(kWindows, "BrowserDestroyed #0");
    expected.insert(expected.begin(), {"BrowserCreated #51", "BrowserDestroyed #0"});
    EXPECT_EQ(expected, m_client.Events());
}

TEST_F(ControlDesktopTest, AHundredWindowsLeaveNothingBehind) {
    Browser& steady = m_desktop.OpenBrowser();
    m_client.Ask("on");
    LetWindowsPass(m_desktop, 20);
    const LONG references = steady.OutsideReferences();
    const LONG listReferences = m_desktop.OutsideReferences();
    LetWindowsPass(m_desktop, 100);
    EXPECT_TRUE(WaitUntil([&] { return steady.OutsideReferences() == references; }));
    EXPECT_TRUE(WaitUntil([&] { return m_desktop.OutsideReferences() == listReferences; }));
    EXPECT_EQ(1, steady.Sinks().connected);
    EXPECT_EQ(1, m_desktop.Sinks().connected);
    EXPECT_EQ(240U, m_client.Events().size());
    m_client.Ask("quit");
    EXPECT_TRUE(WaitUntil([&] { return steady.OutsideReferences() == 0; }));
    EXPECT_TRUE(WaitUntil([&] { return m_desktop.OutsideReferences() == 0; }));
}

TEST_F(ControlDesktopTest, AWindowThatOpensInTheMiddleOfARebuildIsNotLost) {
    Browser& first = m_desktop.OpenBrowser();
    m_client.Ask("on");
    first.Object()->Events().BeforeAdvise([this] { m_desktop.OpenBrowser(); }, 1);
    m_desktop.OpenBrowser();
    EXPECT_TRUE(WaitUntil([this] { return m_client.Ask("count") == "3"; }));
    EXPECT_EQ((Lines{"BrowserCreated #2", "BrowserCreated #3"}), m_client.Events());
    EXPECT_EQ(Handles(), m_client.Ask("handles"));
    ExpectOneSinkEach();
}

TEST_F(ControlDesktopTest, AWindowThatClosesInTheMiddleOfARebuildIsMissed) {
    Browser& first = m_desktop.OpenBrowser();
    Browser& second = m_desktop.OpenBrowser();
    m_client.Ask("on");
    first.Object()->Events().BeforeAdvise([&second] { second.Close(); }, 1);
    Browser& third = m_desktop.OpenBrowser();
    EXPECT_TRUE(WaitUntil([this] { return m_client.Ask("count") == "2"; }));
    EXPECT_EQ(Handles(), m_client.Ask("handles"));
    ExpectOneSinkEach();
    EXPECT_EQ(1, third.Sinks().connected);
    const Lines events = m_client.Events();
    EXPECT_EQ(1, std::count(events.begin(), events.end(), "BrowserDestroyed #0"));
}

TEST_F(ControlDesktopTest, AnnouncementsFromManyThreadsLoseNoWindow) {
    m_desktop.OpenBrowser();
    m_client.Ask("on");
    constexpr int kWindows = 20;
    std::vector<PendingEvent> pending;
    for (int i = 0; i < kWindows; ++i) {
        const Browser& browser = m_desktop.OpenBrowser(Quiet());
        pending.push_back(m_desktop.StartWindowRegistered(browser.Cookie()));
    }
    for (const PendingEvent& event : pending) {
        EXPECT_EQ(S_OK, event.Result().hr);
    }
    EXPECT_EQ(std::to_string(kWindows + 1), m_client.Ask("count"));
    EXPECT_EQ(Handles(), m_client.Ask("handles"));
    ExpectOneSinkEach();
}

TEST_F(ControlDesktopTest, AWindowWhoseHandleCannotBeReadIsSurvived) {
    Browser& first = m_desktop.OpenBrowser();
    Browser& mute = m_desktop.OpenBrowser();
    m_client.Ask("on");
    mute.Fail(Property::Hwnd, E_FAIL);
    Browser& third = m_desktop.OpenBrowser();
    EXPECT_EQ(1, first.Sinks().connected);
    EXPECT_EQ(0, mute.Sinks().connected);
    EXPECT_EQ(1, third.Sinks().connected);
    // The scan ends at the one that cannot be read, which is thus judged new; the third did come.
    EXPECT_EQ((Lines{"BrowserCreated #2", "BrowserCreated #3"}), m_client.Events());
    mute.Fail(Property::Hwnd, S_OK, 0);
    EXPECT_EQ(S_OK, m_desktop.FireWindowRegistered(mute.Cookie()).hr);
    ExpectOneSinkEach();
}

TEST_F(ControlDesktopTest, ARefusalOfTheFirstWindowIsTheCallersError) {
    Browser& shy = m_desktop.OpenBrowser();
    shy.RefuseAdvise(E_ACCESSDENIED, 1);
    EXPECT_EQ("failed " + std::to_string(E_ACCESSDENIED), m_client.Ask("on"));
    EXPECT_EQ("false", m_client.Ask("enabled"));
    EXPECT_EQ("ok", m_client.Ask("on"));
    m_desktop.FailEnumeration(E_FAIL, 1);
    EXPECT_EQ("failed " + std::to_string(E_FAIL), m_client.Ask("refresh"));
    EXPECT_EQ("ok", m_client.Ask("refresh"));
    ExpectOneSinkEach();
}

TEST_F(ControlDesktopTest, ObjectsThatAreNoBrowsersDoNotHideOthers) {
    m_desktop.OpenBrowser();
    m_client.Ask("on");
    ComPtr<IDispatch> list;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_ALL, IID_IDispatch, list.PutVoid()));
    m_desktop.Include(list);
    m_desktop.OpenBrowser();
    EXPECT_EQ(Lines{"BrowserCreated #2"}, m_client.Events());
    EXPECT_EQ(Handles(), m_client.Ask("handles"));
    ExpectOneSinkEach();
}

TEST_F(ControlDesktopTest, ABrowserThatDiesWithoutAWordIsSurvived) {
    Browser& dead = m_desktop.OpenBrowser();
    Browser& living = m_desktop.OpenBrowser();
    m_client.Ask("on");
    dead.Die();
    EXPECT_EQ(S_OK, living.FireNewWindow2().hr);
    m_desktop.Withdraw(dead.Cookie());
    EXPECT_EQ((Lines{"NewWindow #2 nothing", "BrowserDestroyed #0"}), m_client.Events());
    EXPECT_EQ(1, living.Sinks().connected);
    EXPECT_EQ(Handles(), m_client.Ask("handles"));
    EXPECT_TRUE(WaitUntil([&] { return dead.OutsideReferences() == 0; }));
}

TEST_F(ControlDesktopTest, AKilledBrowserProcessIsSurvived) {
    Browser& living = m_desktop.OpenBrowser();
    RemoteBrowser& remote = m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                                        {L"http://remote.example/", L"Far away"});
    m_client.Ask("on");
    EXPECT_EQ("2", m_client.Ask("count"));
    m_client.Ask("cancel");
    EXPECT_TRUE(remote.FireNewWindow2().cancel);
    remote.Kill();
    EXPECT_TRUE(living.FireNewWindow2().cancel);
    m_client.Events();
    // Another window opens: the dead one cannot be connected to and ends the walk.
    Browser& third = m_desktop.OpenBrowser();
    EXPECT_EQ(1, living.Sinks().connected);
    EXPECT_EQ(0, third.Sinks().connected);
    m_desktop.Withdraw(remote.Cookie());
    ExpectOneSinkEach();
    EXPECT_EQ(Handles(), m_client.Ask("handles"));
    EXPECT_EQ("BrowserDestroyed #0", m_client.Events().back());
    EXPECT_EQ("ok", m_client.Ask("off"));
}

TEST_F(ControlDesktopTest, EventsOfOneBrowserComeWhileAnothersWaits) {
    Browser& first = m_desktop.OpenBrowser();
    Browser& second = m_desktop.OpenBrowser();
    m_client.Ask("on");
    m_client.Ask("box");
    const PendingEvent pending = first.Start(EventCall::NewWindow2());
    HWND box = nullptr;
    ASSERT_TRUE(WaitUntil([&] { return (box = FindWindowW(L"#32770", L"Monitoring")) != nullptr; }));
    EXPECT_EQ(S_OK, second.FireTitleChange(L"Meanwhile").hr);
    Browser& third = m_desktop.OpenBrowser();
    EXPECT_EQ(1, third.Sinks().connected);
    EXPECT_FALSE(pending.Done());
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    EXPECT_EQ(S_OK, pending.Result().hr);
    // The reference names the browser that spoke last.
    EXPECT_EQ(
        (Lines{"NewWindow #1 nothing", "TitleChange #2 Meanwhile", "BrowserCreated #3", "NewWindow done #2"}),
        m_client.Events());
}

TEST_F(ControlDesktopTest, SwitchingOffInsideAnEventIsSurvived) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    m_client.Ask("cancel");
    m_client.Ask("in off");
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_EQ("false", m_client.Ask("enabled"));
    EXPECT_EQ(0, browser.Sinks().connected);
    EXPECT_EQ(0, browser.FireNewWindow2().sinks);
    EXPECT_EQ("ok", m_client.Ask("on"));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
}

TEST_F(ControlDesktopTest, StartingOverInsideAnEventIsSurvived) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    m_client.Ask("cancel");
    for (const char* command : {"in refresh", "in renew"}) {
        m_client.Ask(command);
        EXPECT_TRUE(browser.FireNewWindow2().cancel);
        ExpectOneSinkEach();
    }
    m_client.Ask("in renew");
    m_desktop.OpenBrowser();
    EXPECT_EQ("2", m_client.Ask("count"));
    ExpectOneSinkEach();
}

TEST_F(ControlDesktopTest, ANavigationOfWinesOwnBrowserIsHeard) {
    m_client.Ask("on");
    const ComPtr<IWebBrowser2> browser = m_desktop.OpenWineBrowser();
    EXPECT_EQ(Lines{"BrowserCreated #1"}, m_client.Events());
    m_client.Ask("cancel");
    Variant none[4] = {Variant::Omitted(), Variant::Omitted(), Variant::Omitted(), Variant::Omitted()};
    const Bstr address(L"http://nowhere.example/");
    browser->Navigate(address.Get(), &none[0], &none[1], &none[2], &none[3]);
    Lines events;
    ASSERT_TRUE(WaitUntil([&] {
        const Lines more = m_client.Events();
        events.insert(events.end(), more.begin(), more.end());
        return !events.empty();
    }));
    EXPECT_EQ(0U, events[0].find("BrowserNavigating #1 object 'http://nowhere.example/'")) << events[0];
    browser->Quit();
}

}  // namespace
}  // namespace kestrelguard::desktop
