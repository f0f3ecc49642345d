// The list of windows and what clients read there.

#include "desktop/driver/Controls.h"
#include "tests/standin/StandInTest.h"

namespace kestrelguard::desktop {
namespace {

using namespace kestrelguard::testing;

BrowserOptions Page(std::wstring url, std::wstring title) {
    BrowserOptions options;
    options.url = std::move(url);
    options.title = std::move(title);
    return options;
}

class StandInDesktopTest : public StandInTest {};

TEST_F(StandInDesktopTest, AnEmptyListEnumeratesNothing) {
    EXPECT_EQ("ok 0 count 0", m_client.Ask("list"));
    EXPECT_EQ("ok nothing", m_client.Ask("item 0"));
}

TEST_F(StandInDesktopTest, BrowsersAreEnumeratedInOrderWithTheirProperties) {
    BrowserOptions first = Page(L"http://one.example/", L"One");
    first.statusText = L"http://link.example/";
    const Browser& one = m_desktop.OpenBrowser(first);
    const Browser& two = m_desktop.OpenBrowser(Page(L"file:///C:/", L"C:"));
    EXPECT_EQ("ok 2 count 2", m_client.Ask("list"));
    const auto lines = m_client.Program().Lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ("window " + std::to_string(one.Handle()) + " http://one.example/|One|http://link.example/",
              lines[0]);
    EXPECT_EQ("window " + std::to_string(two.Handle()) + " file:///C:/|C:|", lines[1]);
    EXPECT_EQ("ok object", m_client.Ask("item 1"));
    EXPECT_EQ("ok nothing", m_client.Ask("item 2"));
    EXPECT_EQ(1, one.Reads(Property::Hwnd));
    EXPECT_EQ(1, two.Reads(Property::StatusText));
}

TEST_F(StandInDesktopTest, BrowsersMayShareAFrame) {
    BrowserOptions options;
    options.frame = 655412;
    m_desktop.OpenBrowser(options);
    m_desktop.OpenBrowser(options);
    m_client.Ask("list");
    EXPECT_EQ(0, m_client.Program().WaitLine("window 655412 "));
    EXPECT_EQ(1, m_client.Program().WaitLine("window 655412 ", 1));
}

TEST_F(StandInDesktopTest, OpeningAndClosingIsAnnounced) {
    m_client.Ask("attach");
    Browser& browser = m_desktop.OpenBrowser();
    EXPECT_EQ("event list 200 args 1: " + std::to_string(browser.Cookie()), m_client.Event("list 200"));
    BrowserOptions silent;
    silent.announced = false;
    m_desktop.OpenBrowser(silent);
    EXPECT_EQ(1, m_client.Count("list 200", 1));
    browser.Close();
    EXPECT_EQ("event list 201 args 1: " + std::to_string(browser.Cookie()), m_client.Event("list 201"));
    EXPECT_TRUE(browser.Ended());
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    EXPECT_EQ(1, m_desktop.FireWindowRegistered(99).sinks);
    EXPECT_EQ(2, m_client.Count("list 200", 2));
}

TEST_F(StandInDesktopTest, ClosingTheWindowClosesTheBrowser) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    PostMessageW(browser.Window(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(browser.WaitEnded());
    EXPECT_NE("no event", m_client.Event("browser0 253"));
    EXPECT_NE("no event", m_client.Event("list 201"));
    EXPECT_EQ("ok 0 count 0", m_client.Ask("list"));
}

TEST_F(StandInDesktopTest, OmittedArgumentsOfNavigate2AreSeen) {
    BrowserOptions options;
    options.navigates = false;
    Browser& browser = m_desktop.OpenBrowser(options);
    m_client.Ask("attach");
    EXPECT_EQ("ok", m_client.Ask("navigate http://elsewhere.example/"));
    const auto calls = browser.NavigateCalls();
    ASSERT_EQ(1u, calls.size());
    EXPECT_TRUE(calls[0].second);
    EXPECT_EQ(L"http://elsewhere.example/", calls[0].url);
    EXPECT_EQ(VT_BSTR, calls[0].urlType);
    const std::array<VARTYPE, 4> omitted = {VT_ERROR, VT_ERROR, VT_ERROR, VT_ERROR};
    EXPECT_EQ(omitted, calls[0].optional);
    EXPECT_EQ(L"http://www.home.example/", browser.Url());
}

TEST_F(StandInDesktopTest, ReferencesOfClientsAreCounted) {
    Browser& browser = m_desktop.OpenBrowser();
    EXPECT_EQ(0, browser.OutsideReferences());
    m_client.Ask("attach");
    EXPECT_LT(0, browser.OutsideReferences());
    EXPECT_EQ(1, browser.Sinks().advises);
    EXPECT_EQ("ok", m_client.Ask("detach"));
    EXPECT_TRUE(WaitUntil([&] { return browser.OutsideReferences() == 0; }));
    EXPECT_TRUE(WaitUntil([&] { return m_desktop.OutsideReferences() == 0; }));
    EXPECT_EQ(1, browser.Sinks().unadvises);
    EXPECT_EQ(0, browser.Sinks().connected);
}

TEST_F(StandInDesktopTest, ChosenPropertiesFailForChosenTimes) {
    Browser& browser = m_desktop.OpenBrowser();
    browser.Fail(Property::Hwnd, E_FAIL, 1);
    m_client.Ask("list");
    EXPECT_EQ(0, m_client.Program().WaitLine("window failed http://www.home.example/|Home|"));
    m_client.Ask("list");
    EXPECT_LT(0, m_client.Program().WaitLine("window " + std::to_string(browser.Handle())));
    browser.Fail(Property::LocationName, E_FAIL);
    m_client.Ask("list");
    EXPECT_LT(0, m_client.Program().WaitLine("window " + std::to_string(browser.Handle()) +
                                             " http://www.home.example/||"));
    browser.RefuseAdvise(E_ACCESSDENIED, 1);
    EXPECT_EQ("failed 80070005", m_client.Ask("attach"));
    EXPECT_EQ(1, browser.Sinks().refused);
    EXPECT_EQ("failed 80004005", [&] {
        m_desktop.FailEnumeration(E_FAIL, 1);
        return m_client.Ask("list");
    }());
}

TEST_F(StandInDesktopTest, WindowsMayOpenInTheMiddleOfAnEnumeration) {
    m_client.Ask("attach");
    m_desktop.BeforeEnumeration([this] { m_desktop.OpenBrowser(); });
    // The client hears of it while its own call waits, and the list it gets holds the new window.
    EXPECT_EQ("ok 1 count 0", m_client.Ask("list"));
    EXPECT_EQ(1, m_client.Count("list 200", 1));
}

TEST_F(StandInDesktopTest, ADeadBrowserStaysInTheListAndAnswersNothing) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    browser.Die();
    EXPECT_EQ(1, m_desktop.ListSize());
    EXPECT_EQ(0, m_client.Count("list 201", 0));
    EXPECT_EQ(0u, m_client.Ask("navigate http://a.example/").find("failed "));
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    EXPECT_NE(-1, m_client.Program().WaitLine("window failed ||"));
    m_desktop.Withdraw(browser.Cookie());
    EXPECT_EQ(1, m_client.Count("list 201", 1));
}

TEST_F(StandInDesktopTest, ObjectsThatAreNoBrowsersMayBeInTheList) {
    // The list itself will do for an object that is no browser.
    ComPtr<IDispatch> list;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_ALL, IID_IDispatch, list.PutVoid()));
    m_desktop.Include(nullptr);
    const LONG cookie = m_desktop.Include(list);
    m_desktop.OpenBrowser();
    EXPECT_EQ("ok 1 of 3", m_client.Ask("attach"));
    m_desktop.Withdraw(cookie);
    EXPECT_EQ("ok 2 count 2", m_client.Ask("list"));
}

TEST_F(StandInDesktopTest, FiftyWindowsOpenAndClose) {
    m_client.Ask("attach");
    for (int i = 0; i < 50; ++i) {
        m_desktop.OpenBrowser();
    }
    EXPECT_EQ("ok 50 count 50", m_client.Ask("list"));
    EXPECT_EQ(50, m_client.Count("list 200", 50));
    for (Browser* browser : m_desktop.OpenBrowsers()) {
        browser->Close();
    }
    EXPECT_EQ("ok 0 count 0", m_client.Ask("list"));
    EXPECT_EQ(50, m_client.Count("list 201", 50));
}

}  // namespace
}  // namespace kestrelguard::desktop
