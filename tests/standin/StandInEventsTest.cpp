// Events, and what comes back from them.

#include <exdispid.h>

#include "desktop/driver/Controls.h"
#include "tests/standin/StandInTest.h"

namespace kestrelguard::desktop {
namespace {

using namespace kestrelguard::testing;

class StandInEventsTest : public StandInTest {};

TEST_F(StandInEventsTest, EveryEventArrivesInItsShape) {
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
    m_client.Count("browser0", static_cast<int>(expected.size()));
    const auto lines = m_client.Program().Lines();
    ASSERT_EQ(1 + expected.size(), lines.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(S_OK, expected[i].first.hr) << expected[i].second;
        EXPECT_EQ(1, expected[i].first.sinks);
        EXPECT_EQ("event browser0 " + expected[i].second, lines[i + 1]);
    }
    EXPECT_EQ(L"A title", browser.Title());
}

TEST_F(StandInEventsTest, CancelComesBack) {
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

TEST_F(StandInEventsTest, ReplacedBrowserComesBack) {
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

TEST_F(StandInEventsTest, FailuresComeBackWithTheirDescription) {
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

TEST_F(StandInEventsTest, MalformedEventsArrive) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    EXPECT_EQ(S_OK, browser.Fire(EventCall(DISPID_NEWWINDOW2)).hr);
    EXPECT_EQ(S_OK, browser.Fire(EventCall(DISPID_TITLECHANGE).Value(Variant::Long(5))).hr);
    EXPECT_EQ(S_OK, browser.Fire(EventCall(4711).Value(Variant::Bool(true)).Value(Variant::Text(L"x"))).hr);
    EXPECT_EQ("event browser0 251 args 0:", m_client.Event("browser0 251"));
    EXPECT_EQ("event browser0 113 args 1: 5", m_client.Event("browser0 113"));
    EXPECT_EQ("event browser0 4711 args 2: true \"x\"", m_client.Event("browser0 4711"));
}

TEST_F(StandInEventsTest, NavigateLoadsWithAllEvents) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    EXPECT_EQ("ok", m_client.Ask("navigate www.news.example"));
    EXPECT_EQ("event browser0 259 args 2: object &\"http://www.news.example/\"",
              m_client.Event("browser0 259"));
    EXPECT_TRUE(browser.WaitIdle());
    EXPECT_EQ(L"http://www.news.example/", browser.Url());
    EXPECT_EQ(L"The Morning News", browser.Title());
    EXPECT_EQ(1, m_client.Count("browser0 250", 1));
    EXPECT_EQ(1, m_client.Count("browser0 106", 1));
    EXPECT_EQ(1, m_client.Count("browser0 252", 1));
    EXPECT_EQ(1, m_client.Count("browser0 113", 1));
    EXPECT_EQ(1, m_client.Count("browser0 104", 1));
}

TEST_F(StandInEventsTest, ACancelledLoadLeavesThePageAsItWas) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    m_client.Ask("cancel -1");
    browser.Navigate(L"http://www.news.example/");
    EXPECT_TRUE(browser.WaitIdle());
    EXPECT_EQ(1, m_client.Count("browser0 250", 1));
    EXPECT_EQ(0, m_client.Count("browser0 252", 0));
    EXPECT_EQ(L"http://www.home.example/", browser.Url());
}

TEST_F(StandInEventsTest, ANewWindowOpensUnlessCancelled) {
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

TEST_F(StandInEventsTest, AChosenReplacementGetsThePage) {
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

TEST_F(StandInEventsTest, AnEventThatWaitsDoesNotHoldUpOthers) {
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

TEST_F(StandInEventsTest, AnEventThatIsNeverAnsweredCountsAsLost) {
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

TEST_F(StandInEventsTest, AKilledClientIsDropped) {
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

}  // namespace
}  // namespace kestrelguard::desktop
