#include <exdispid.h>
#include <olectl.h>

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

TEST_F(StandInDesktopTest, EveryEventArrivesInItsShape) {
    Browser& browser = m_desktop.OpenBrowser();
    ASSERT_EQ("ok 1 of 1", m_client.Ask("attach"));
    EXPECT_EQ(1, browser.Sinks().connected);
    EXPECT_EQ(1, m_desktop.Sinks().connected);
    const std::vector<std::pair<EventResult, std::string>> expected = [&] {
        std::vector<std::pair<EventResult, std::string>> all;
        all.emplace_back(
            browser.Fire(EventCall::BeforeNavigate2(browser.Dispatch(), L"http://a.example/", 64, L"frame",
                                                    "q=1", L"Referer: x")),
            "250 args 7: object &\"http://a.example/\" &64 &\"frame\" &&bytes q=1 &\"Referer: x\" &bool 0");
        all.emplace_back(
            browser.FireBeforeNavigate2(L"http://b.example/"),
            "250 args 7: object &\"http://b.example/\" &0 &null text &&empty &null text &bool 0");
        all.emplace_back(browser.FireNavigateComplete2(L"http://a.example/"),
                         "252 args 2: object &\"http://a.example/\"");
        all.emplace_back(browser.FireDocumentComplete(L"http://a.example/"),
                         "259 args 2: object &\"http://a.example/\"");
        all.emplace_back(browser.FireDownloadBegin(), "106 args 0:");
        all.emplace_back(browser.FireDownloadComplete(), "104 args 0:");
        all.emplace_back(browser.FireFileDownload(), "270 args 1: &bool 0");
        all.emplace_back(browser.Fire(EventCall::FileDownload(true)), "270 args 2: true &bool 0");
        all.emplace_back(browser.FireNewWindow2(), "251 args 2: &no object &bool 0");
        all.emplace_back(browser.FireOnFullScreen(true), "258 args 1: true");
        all.emplace_back(browser.FireProgressChange(7, 100), "108 args 2: 7 100");
        all.emplace_back(browser.FireTitleChange(L"A title"), "113 args 1: \"A title\"");
        all.emplace_back(browser.FireWindowClosing(false), "263 args 2: false &bool 0");
        all.emplace_back(browser.FireNavigateError(L"http://a.example/", 404),
                         "271 args 5: object &\"http://a.example/\" &null text &404 &bool 0");
        return all;
    }();
    const auto lines = m_client.Program().Lines();
    ASSERT_EQ(1 + expected.size(), lines.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(S_OK, expected[i].first.hr) << expected[i].second;
        EXPECT_EQ(1, expected[i].first.sinks);
        EXPECT_EQ("event browser0 " + expected[i].second, lines[i + 1]);
    }
    EXPECT_EQ(L"A title", browser.Title());
}

TEST_F(StandInDesktopTest, CancelComesBack) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    EXPECT_FALSE(browser.FireNewWindow2().cancel);
    m_client.Ask("cancel -1");
    const EventResult result = browser.FireNewWindow2();
    EXPECT_TRUE(result.cancel);
    EXPECT_EQ(VARIANT_TRUE, result.cancelValue);
    EXPECT_TRUE(browser.FireBeforeNavigate2(L"http://a.example/").cancel);
    EXPECT_TRUE(browser.FireFileDownload().cancel);
    EXPECT_TRUE(browser.FireWindowClosing(false).cancel);
    m_client.Ask("cancel 1");
    EXPECT_EQ(1, browser.FireNewWindow2().cancelValue);
}

TEST_F(StandInDesktopTest, ReplacedBrowserComesBack) {
    Browser& first = m_desktop.OpenBrowser();
    Browser& second = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    EXPECT_FALSE(second.FireNewWindow2().newBrowser);
    m_client.Ask("replace");
    const EventResult result = second.FireNewWindow2();
    ASSERT_TRUE(result.newBrowser);
    // The same object by the identity rule of COM.
    EXPECT_EQ(ComPtr<IDispatch>(first.Dispatch()).As<IUnknown>().Get(),
              result.newBrowser.As<IUnknown>().Get());
}

TEST_F(StandInDesktopTest, FailuresComeBackWithTheirDescription) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Ask("fail 800a0006");
    EXPECT_EQ(static_cast<HRESULT>(0x800a0006), browser.FireNewWindow2().hr);
    m_client.Ask("except Overflow");
    const EventResult result = browser.Fire(EventCall::NewWindow2(), true);
    EXPECT_EQ(static_cast<HRESULT>(0x800a0006), result.hr);
    EXPECT_EQ(L"Overflow", result.description);
    // The sink always gets a place for its exception from the marshaller; without one here the number is
    // lost.
    EXPECT_EQ(DISP_E_EXCEPTION, browser.Fire(EventCall::NewWindow2()).hr);
}

TEST_F(StandInDesktopTest, MalformedEventsArrive) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    EXPECT_EQ(S_OK, browser.Fire(EventCall(DISPID_NEWWINDOW2)).hr);
    EXPECT_EQ(S_OK, browser.Fire(EventCall(DISPID_TITLECHANGE).Value(Variant::Long(5))).hr);
    EXPECT_EQ(S_OK, browser.Fire(EventCall(4711).Value(Variant::Bool(true)).Value(Variant::Text(L"x"))).hr);
    EXPECT_EQ("event browser0 251 args 0:", m_client.Event("browser0 251"));
    EXPECT_EQ("event browser0 113 args 1: 5", m_client.Event("browser0 113"));
    EXPECT_EQ("event browser0 4711 args 2: true \"x\"", m_client.Event("browser0 4711"));
}

TEST_F(StandInDesktopTest, OpeningAndClosingIsAnnounced) {
    m_client.Ask("attach");
    Browser& browser = m_desktop.OpenBrowser();
    EXPECT_EQ("event list 200 args 1: " + std::to_string(browser.Cookie()), m_client.Event("list 200"));
    BrowserOptions silent;
    silent.announced = false;
    m_desktop.OpenBrowser(silent);
    EXPECT_EQ(1, m_client.Count("list 200"));
    browser.Close();
    EXPECT_EQ("event list 201 args 1: " + std::to_string(browser.Cookie()), m_client.Event("list 201"));
    EXPECT_TRUE(browser.Ended());
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    EXPECT_EQ(1, m_desktop.FireWindowRegistered(99).sinks);
    EXPECT_EQ(2, m_client.Count("list 200"));
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

TEST_F(StandInDesktopTest, NavigateLoadsWithAllEvents) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    EXPECT_EQ("ok", m_client.Ask("navigate www.news.example"));
    EXPECT_EQ("event browser0 259 args 2: object &\"http://www.news.example/\"",
              m_client.Event("browser0 259"));
    EXPECT_TRUE(browser.WaitIdle());
    EXPECT_EQ(L"http://www.news.example/", browser.Url());
    EXPECT_EQ(L"The Morning News", browser.Title());
    EXPECT_EQ(1, m_client.Count("browser0 250"));
    EXPECT_EQ(1, m_client.Count("browser0 106"));
    EXPECT_EQ(1, m_client.Count("browser0 252"));
    EXPECT_EQ(1, m_client.Count("browser0 113"));
    EXPECT_EQ(1, m_client.Count("browser0 104"));
}

TEST_F(StandInDesktopTest, ACancelledLoadLeavesThePageAsItWas) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Ask("cancel -1");
    browser.Navigate(L"http://www.news.example/");
    EXPECT_TRUE(browser.WaitIdle());
    EXPECT_EQ(1, m_client.Count("browser0 250"));
    EXPECT_EQ(0, m_client.Count("browser0 252"));
    EXPECT_EQ(L"http://www.home.example/", browser.Url());
}

TEST_F(StandInDesktopTest, ANewWindowOpensUnlessCancelled) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Ask("cancel -1");
    browser.ClickNewWindowLink(L"http://www.garden.example/");
    EXPECT_TRUE(browser.WaitIdle());
    EXPECT_EQ(1u, m_desktop.OpenBrowsers().size());
    m_client.Ask("cancel 0");
    browser.ClickNewWindowLink(L"http://www.garden.example/");
    EXPECT_TRUE(browser.WaitIdle());
    ASSERT_EQ(2u, m_desktop.OpenBrowsers().size());
    EXPECT_TRUE(m_desktop.Browsers()[1]->WaitIdle());
    EXPECT_EQ(L"Garden Diary", m_desktop.Browsers()[1]->Title());
}

TEST_F(StandInDesktopTest, AChosenReplacementGetsThePage) {
    Browser& first = m_desktop.OpenBrowser();
    Browser& second = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Ask("replace");
    second.ClickNewWindowLink(L"http://www.garden.example/");
    EXPECT_TRUE(second.WaitIdle());
    EXPECT_TRUE(first.WaitIdle());
    EXPECT_EQ(L"Garden Diary", first.Title());
    EXPECT_EQ(2u, m_desktop.OpenBrowsers().size());
}

TEST_F(StandInDesktopTest, AnEventThatWaitsDoesNotHoldUpOthers) {
    Browser& first = m_desktop.OpenBrowser();
    Browser& second = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Ask("box");
    const PendingEvent pending = first.Start(EventCall::NewWindow2());
    HWND box = nullptr;
    ASSERT_TRUE(WaitUntil([&] { return (box = FindWindowW(L"#32770", L"Client")) != nullptr; }));
    EXPECT_FALSE(pending.Done());
    EXPECT_EQ(S_OK, second.FireTitleChange(L"Meanwhile").hr);
    EXPECT_FALSE(pending.Done());
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    EXPECT_EQ(S_OK, pending.Result().hr);
    EXPECT_FALSE(pending.Result().timedOut);
}

TEST_F(StandInDesktopTest, AnEventThatIsNeverAnsweredCountsAsLost) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Ask("box");
    const PendingEvent pending = browser.Start(EventCall::NewWindow2());
    ASSERT_TRUE(WaitUntil([] { return FindWindowW(L"#32770", L"Client") != nullptr; }));
    EXPECT_TRUE(pending.Result(50).timedOut);
    // The event ends with the client.
    m_client.Program().Kill();
    EXPECT_TRUE(FAILED(pending.Result().hr));
    EXPECT_FALSE(pending.Result().timedOut);
}

TEST_F(StandInDesktopTest, AKilledClientIsDropped) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Program().Kill();
    EXPECT_EQ(HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), browser.FireNewWindow2().hr);
    EXPECT_EQ(0, browser.FireNewWindow2().sinks);
    EXPECT_EQ(1, browser.Sinks().lost);
    Client another;
    EXPECT_EQ("ok 1 of 1", another.Ask("attach"));
    EXPECT_EQ(S_OK, browser.FireNewWindow2().hr);
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
    EXPECT_EQ(1, m_client.Count("list 200"));
}

TEST_F(StandInDesktopTest, ADeadBrowserStaysInTheListAndAnswersNothing) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    browser.Die();
    EXPECT_EQ(1, m_desktop.ListSize());
    EXPECT_EQ(0, m_client.Count("list 201"));
    EXPECT_EQ(0u, m_client.Ask("navigate http://a.example/").find("failed "));
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    EXPECT_NE(-1, m_client.Program().WaitLine("window failed ||"));
    m_desktop.Withdraw(browser.Cookie());
    EXPECT_EQ(1, m_client.Count("list 201"));
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

TEST_F(StandInDesktopTest, ABrowserOfAnotherProcessTakesPart) {
    m_desktop.OpenBrowser();
    RemoteBrowser& remote = m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                                        {L"http://remote.example/", L"Far away"});
    EXPECT_EQ(2, m_desktop.ListSize());
    EXPECT_EQ("ok 2 of 2", m_client.Ask("attach"));
    EXPECT_EQ(1, remote.Sinks());
    m_client.Ask("cancel -1");
    EXPECT_TRUE(remote.FireNewWindow2().cancel);
    EXPECT_EQ(1, m_client.Count("browser1 251"));
    m_client.Ask("list");
    EXPECT_NE(-1, m_client.Program().WaitLine("window " + std::to_string(remote.Handle()) +
                                              " http://remote.example/|Far away|"));
    EXPECT_TRUE(remote.Close());
    EXPECT_EQ(1, m_desktop.ListSize());
    EXPECT_EQ(1, m_client.Count("list 201"));
}

TEST_F(StandInDesktopTest, AKilledBrowserProcessLeavesADeadEntry) {
    RemoteBrowser& remote = m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                                        {L"http://remote.example/", L"Far away"});
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    remote.Kill();
    EXPECT_EQ(-1, remote.Sinks());
    EXPECT_EQ(1, m_desktop.ListSize());
    EXPECT_EQ(0u, m_client.Ask("navigate http://a.example/").find("failed "));
    EXPECT_EQ(0, m_client.Count("list 201"));
    const Browser& living = m_desktop.OpenBrowser();
    // It can be walked over, but answers nothing.
    EXPECT_EQ("ok 2 count 2", m_client.Ask("list"));
    EXPECT_NE(-1, m_client.Program().WaitLine("window failed ||"));
    EXPECT_NE(-1, m_client.Program().WaitLine("window " + std::to_string(living.Handle()) + " "));
    m_desktop.Withdraw(remote.Cookie());
    EXPECT_EQ(1, m_client.Count("list 201"));
}

TEST_F(StandInDesktopTest, WinesOwnBrowserTakesPart) {
    const ComPtr<IWebBrowser2> browser = m_desktop.OpenWineBrowser();
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    SHANDLE_PTR handle = 0;
    ASSERT_EQ(S_OK, browser->get_HWND(&handle));
    EXPECT_NE(0, handle);
    m_client.Ask("navigate about:blank");
    EXPECT_NE("no event", m_client.Event("browser0 250"));
    browser->Quit();
}

TEST_F(StandInDesktopTest, DressedWindowsNavigateByTheirAddressBarAndLinks) {
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

TEST_F(StandInDesktopTest, PointingAtALinkShowsItsAddress) {
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

TEST_F(StandInDesktopTest, FiftyWindowsOpenAndClose) {
    m_client.Ask("attach");
    for (int i = 0; i < 50; ++i) {
        m_desktop.OpenBrowser();
    }
    EXPECT_EQ("ok 50 count 50", m_client.Ask("list"));
    EXPECT_EQ(50, m_client.Count("list 200"));
    for (Browser* browser : m_desktop.OpenBrowsers()) {
        browser->Close();
    }
    EXPECT_EQ("ok 0 count 0", m_client.Ask("list"));
    EXPECT_EQ(50, m_client.Count("list 201"));
}

}  // namespace
}  // namespace kestrelguard::desktop
