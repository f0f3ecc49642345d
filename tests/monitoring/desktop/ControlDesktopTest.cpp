#include <exdispid.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "desktop/Desktop.h"
#include "desktop/driver/Process.h"

// Monitoring against browsers of other processes: the client beside this program runs the control, the
// stand-in desktop in this one serves the windows.
namespace kestrelguard::desktop {
namespace {

using kestrelguard::testing::OwnFolder;
using kestrelguard::testing::Process;
using kestrelguard::testing::WaitUntil;
using Lines = std::vector<std::string>;

/// The client, driven line by line.
class Client {
 public:
    Client() : m_process(Process::WithPipes(OwnFolder() + L"\\monitoring_client.exe")) {}

    /// Sends a command; its answer without the "ok ".
    std::string Ask(const std::string& command) {
        const std::size_t from = m_process.Lines().size();
        m_process.WriteLine(command);
        std::string answer = "no answer";
        WaitUntil([&] {
            const Lines lines = m_process.Lines();
            for (std::size_t i = from; i < lines.size(); ++i) {
                if (lines[i].rfind("ok", 0) == 0 || lines[i].rfind("failed", 0) == 0) {
                    answer = lines[i].rfind("ok ", 0) == 0 ? lines[i].substr(3) : lines[i];
                    return true;
                }
            }
            return false;
        });
        return answer;
    }
    /// The events so far, those that were asked for before left out.
    Lines Events() {
        const Lines lines = m_process.Lines();
        Lines events;
        for (; m_seen < lines.size(); ++m_seen) {
            if (lines[m_seen].rfind("event ", 0) == 0) {
                events.push_back(lines[m_seen].substr(6));
            }
        }
        return events;
    }
    Process& Program() { return m_process; }

 private:
    Process m_process;
    std::size_t m_seen = 0;
};

class ControlDesktopTest : public ::testing::Test {
 protected:
    /// How many handles the client has read since the last call, in all browsers.
    int HandleReads() {
        int reads = 0;
        for (Browser* browser : m_desktop.Browsers()) {
            reads += browser->Reads(Property::Hwnd);
            browser->ResetReads();
        }
        return reads;
    }
    std::string Handles() const {
        std::string handles;
        for (const Browser* browser : m_desktop.OpenBrowsers()) {
            handles += (handles.empty() ? "" : " ") + std::to_string(browser->Handle());
        }
        return handles;
    }
    void ExpectOneSinkEach() const {
        for (const Browser* browser : m_desktop.OpenBrowsers()) {
            EXPECT_EQ(1, browser->Sinks().connected) << browser->Handle();
        }
        EXPECT_EQ(1, m_desktop.Sinks().connected);
    }
    static BrowserOptions Quiet() {
        BrowserOptions options;
        options.announced = false;
        return options;
    }

    Apartment m_apartment;
    StandInDesktop m_desktop;
    Client m_client;
};

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
    const auto openAndClose = [&](int windows) {
        for (int i = 0; i < windows; ++i) {
            Browser& browser = m_desktop.OpenBrowser();
            ASSERT_EQ(1, browser.Sinks().connected);
            browser.Close();
            ASSERT_EQ(0, browser.Sinks().connected);
            ASSERT_TRUE(WaitUntil([&] { return browser.OutsideReferences() == 0; })) << i;
        }
    };
    openAndClose(20);
    const LONG references = steady.OutsideReferences();
    const LONG listReferences = m_desktop.OutsideReferences();
    openAndClose(100);
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
