#include "ControlFixture.h"

#include <exdispid.h>

#include <string>
#include <vector>

// Monitoring against browsers of other processes: the client beside this program runs the control, the
// stand-in desktop in this one serves the windows.

namespace kestrelguard::desktop {
namespace {

TEST_F(ControlDesktopTest, SwitchingOnWatchesAllWindowsAndFillsTheList) {
    m_desktop.OpenBrowser();
    const Browser& second = m_desktop.OpenBrowser();
    EXPECT_EQ("false", m_client.Ask("enabled"));
    EXPECT_EQ("Enabled true default false", m_client.Ask("stored"));
    EXPECT_EQ("ok", m_client.Ask("on"));
    EXPECT_EQ("true", m_client.Ask("enabled"));
    EXPECT_EQ("Enabled false default false", m_client.Ask("stored"));
    EXPECT_EQ(Handles(), m_client.Ask("handles"));
    ExpectOneSinkEach();
    EXPECT_EQ(2, second.Sinks().advises);
    EXPECT_EQ("ok", m_client.Ask("on"));
    EXPECT_EQ(2, second.Sinks().advises);
    EXPECT_EQ(Lines{}, m_client.Events());
}

TEST_F(ControlDesktopTest, TheFourteenEventsReachTheHost) {
    m_desktop.OpenBrowser();
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    EXPECT_EQ(S_OK, browser
                        .Fire(EventCall::BeforeNavigate2(browser.Dispatch(), L"http://a.example/", 64,
                                                         L"frame", "q=1", L"Referer: x"))
                        .hr);
    EXPECT_EQ(S_OK, browser.FireBeforeNavigate2(L"http://b.example/").hr);
    EXPECT_EQ(S_OK, browser.FireDocumentComplete(L"http://a.example/").hr);
    EXPECT_EQ(S_OK, browser.FireDownloadBegin().hr);
    EXPECT_EQ(S_OK, browser.FireDownloadComplete().hr);
    EXPECT_EQ(S_OK, browser.FireFileDownload().hr);
    EXPECT_EQ(S_OK, browser.Fire(EventCall::FileDownload(true)).hr);
    EXPECT_EQ(S_OK, browser.FireNavigateComplete2(L"http://a.example/").hr);
    EXPECT_EQ(S_OK, browser.FireNavigateError(L"http://a.example/", 404).hr);
    EXPECT_EQ(S_OK, browser.FireNewWindow2().hr);
    EXPECT_EQ(S_OK, browser.FireOnFullScreen(true).hr);
    EXPECT_EQ(S_OK, browser.FireProgressChange(7, 100).hr);
    EXPECT_EQ(S_OK, browser.FireTitleChange(L"A title").hr);
    EXPECT_EQ(S_OK, browser.FireWindowClosing(true).hr);
    Browser& third = m_desktop.OpenBrowser();
    third.Close();
    // NavigateError is the fourteenth: no sink hears it.
    EXPECT_EQ(
        (Lines{"BrowserNavigating #2 object 'http://a.example/' '64' 'frame' type16396 'Referer: x'",
               "BrowserNavigating #2 object 'http://b.example/' '0' '' type16396 ''",
               "DocumentComplete #2 object 'http://a.example/'", "DownLoadBegin #2", "DownLoadComplete #2",
               "FileDownload #2", "FileDownload #2", "NavigateComplete #2 object 'http://a.example/'",
               "NewWindow #2 nothing", "OnFullScreen #2 -1", "ProgressChange #2 7 100",
               "TitleChange #2 A title", "WindowClosing #2 -1", "BrowserCreated #3", "BrowserDestroyed #0"}),
        m_client.Events());
}

TEST_F(ControlDesktopTest, CancelAndTheNewWindowsObjectComeBack) {
    Browser& first = m_desktop.OpenBrowser();
    Browser& second = m_desktop.OpenBrowser();
    m_client.Ask("on");
    const EventResult before = second.FireNewWindow2();
    EXPECT_FALSE(before.cancel);
    EXPECT_FALSE(before.newBrowser);
    m_client.Ask("cancel");
    EXPECT_EQ(VARIANT_TRUE, second.FireNewWindow2().cancelValue);
    EXPECT_EQ(VARIANT_TRUE, second.FireBeforeNavigate2(L"http://a.example/").cancelValue);
    EXPECT_EQ(VARIANT_TRUE, second.FireFileDownload().cancelValue);
    EXPECT_EQ(VARIANT_TRUE, second.Fire(EventCall::FileDownload(false)).cancelValue);
    EXPECT_EQ(VARIANT_TRUE, second.FireWindowClosing(false).cancelValue);
    EXPECT_FALSE(second.FireNavigateError(L"http://a.example/", 404).cancel);
    m_client.Ask("replace");
    const EventResult replaced = second.FireNewWindow2();
    ASSERT_TRUE(replaced.newBrowser);
    EXPECT_EQ(ComPtr<IDispatch>(first.Dispatch()).As<IUnknown>().Get(),
              replaced.newBrowser.As<IUnknown>().Get());
}

TEST_F(ControlDesktopTest, ACancelledClickOpensNoWindow) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    m_client.Ask("cancel");
    browser.ClickNewWindowLink(L"http://www.garden.example/");
    EXPECT_TRUE(browser.WaitIdle());
    EXPECT_EQ(1U, m_desktop.OpenBrowsers().size());
    EXPECT_EQ(Lines{"NewWindow #1 nothing"}, m_client.Events());
}

TEST_F(ControlDesktopTest, ARunTimeErrorComesBackAsAFailedCall) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    m_client.Ask("fail 6");
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), browser.FireNewWindow2().hr);
    const EventResult described = browser.Fire(EventCall::NewWindow2(), true);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), described.hr);
    EXPECT_EQ(L"Overflow", described.description);
    m_client.Ask("fail 0");
    EXPECT_EQ(S_OK, browser.FireNewWindow2().hr);
}

TEST_F(ControlDesktopTest, MalformedEventsAreSurvived) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    const std::vector<DISPID> ids = {104, 106, 108, 113, 250, 251,  252, 258,
                                     259, 263, 270, 271, 102, 4711, -4};
    for (const DISPID id : ids) {
        browser.Fire(EventCall(id));
        browser.Fire(EventCall(id).Value(Variant::Long(5)));
        browser.Fire(EventCall(id).Value(Variant::Text(L"x")).Value(Variant::Long(5)));
        browser.Fire(EventCall(id).Reference(Variant::Text(L"x")).Cancel());
        browser.Fire(EventCall(id).Cancel().Cancel().Cancel());
        EventCall many(id);
        for (int i = 0; i < 12; ++i) {
            many = std::move(many).Value(Variant::Text(L"x"));
        }
        browser.Fire(std::move(many));
    }
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, browser.Fire(EventCall(DISPID_NEWWINDOW2)).hr);
    EXPECT_EQ(DISP_E_TYPEMISMATCH,
              browser.Fire(EventCall(DISPID_FILEDOWNLOAD).Value(Variant::Text(L"x"))).hr);
    m_client.Events();
    EXPECT_EQ(S_OK, browser.FireDownloadBegin().hr);
    EXPECT_EQ(Lines{"DownLoadBegin #1"}, m_client.Events());
}

TEST_F(ControlDesktopTest, BrowsersThatShareAFrameAreAllWatched) {
    BrowserOptions options;
    options.frame = 655412;
    options.announced = false;
    Browser& first = m_desktop.OpenBrowser(options);
    Browser& second = m_desktop.OpenBrowser(options);
    Browser& third = m_desktop.OpenBrowser(options);
    m_client.Ask("on");
    EXPECT_EQ("655412 655412 655412", m_client.Ask("handles"));
    ExpectOneSinkEach();
    first.FireDownloadBegin();
    second.FireDownloadBegin();
    third.FireDownloadBegin();
    EXPECT_EQ((Lines{"DownLoadBegin #1", "DownLoadBegin #2", "DownLoadBegin #3"}), m_client.Events());
    // One more of the same frame is no new window.
    options.announced = true;
    m_desktop.OpenBrowser(options);
    EXPECT_EQ(Lines{}, m_client.Events());
    EXPECT_EQ("3", m_client.Ask("count"));
}

TEST_F(ControlDesktopTest, AFolderWindowIsAWindow) {
    m_client.Ask("on");
    BrowserOptions options;
    options.folder = true;
    options.url = L"file:///C:/";
    Browser& folder = m_desktop.OpenBrowser(options);
    EXPECT_EQ(Lines{"BrowserCreated #1"}, m_client.Events());
    EXPECT_EQ(1, folder.Sinks().connected);
}

TEST_F(ControlDesktopTest, AnAnnouncementOfAKnownWindowDoesNothing) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    EXPECT_EQ(S_OK, m_desktop.FireWindowRegistered(browser.Cookie()).hr);
    EXPECT_EQ(Lines{}, m_client.Events());
    EXPECT_EQ(2, browser.Sinks().advises);
    EXPECT_EQ(S_OK, m_desktop.FireWindowRevoked(12345).hr);
    EXPECT_EQ(Lines{"BrowserDestroyed #0"}, m_client.Events());
    EXPECT_EQ(3, browser.Sinks().advises);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, m_desktop.FireOnList(EventCall(DISPID_WINDOWREGISTERED)).hr);
    EXPECT_EQ(S_OK, m_desktop.FireOnList(EventCall(4711)).hr);
    EXPECT_EQ(Lines{}, m_client.Events());
}

TEST_F(ControlDesktopTest, SwitchedOffNothingIsHeardAndTheListStays) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("on");
    EXPECT_EQ("ok", m_client.Ask("off"));
    EXPECT_EQ(0, browser.Sinks().connected);
    EXPECT_EQ(0, m_desktop.Sinks().connected);
    EXPECT_EQ(0, browser.FireNewWindow2().sinks);
    m_desktop.OpenBrowser();
    EXPECT_EQ(Lines{}, m_client.Events());
    EXPECT_EQ("1", m_client.Ask("count"));
    EXPECT_EQ("ok", m_client.Ask("refresh"));
    EXPECT_EQ("true", m_client.Ask("enabled"));
    EXPECT_EQ("2", m_client.Ask("count"));
    ExpectOneSinkEach();
}

}  // namespace
}  // namespace kestrelguard::desktop
