// The unchanged program and the browsers that it watches: what it connects to, what comes back from its
// events, what it lets go.

#include <exdispid.h>

#include <algorithm>

#include "DesktopTest.h"
#include "tests/support/PassingWindows.h"

namespace kestrelguard::testing {
namespace {

using Lines = std::vector<std::wstring>;

class MonitoringTest : public OneGuardTest {
 protected:
    static BrowserOptions Page(const std::wstring& title, bool announced = true) {
        BrowserOptions options;
        options.title = title;
        options.url = L"http://" + title + L".example/";
        options.announced = announced;
        return options;
    }
    /// What the tree shows for pages of these titles; those that were open at the start first.
    static Lines Tree(const Lines& atStart, const Lines& later) {
        Lines lines{L"Windows Browsers (" + std::to_wstring(atStart.size() + later.size()) + L")"};
        const auto add = [&lines](const std::wstring& caption, const std::wstring& title) {
            lines.insert(lines.end(),
                         {caption, L"    Title : " + title, L"    URL : http://" + title + L".example/"});
        };
        for (const std::wstring& title : atStart) {
            add(L"  Browser ", title);
        }
        for (const std::wstring& title : later) {
            add(L"  Browser", title);
        }
        return lines;
    }
    void ExpectOneSinkEach() const {
        for (const Browser* browser : m_desktop.OpenBrowsers()) {
            EXPECT_EQ(1, browser->Sinks().connected) << browser->Handle();
        }
        EXPECT_EQ(1, m_desktop.Sinks().connected);
    }
    bool ReferencesGone() const {
        for (const Browser* browser : m_desktop.Browsers()) {
            if (!WaitUntil([browser] { return browser->OutsideReferences() == 0; })) {
                return false;
            }
        }
        return WaitUntil([this] { return m_desktop.OutsideReferences() == 0; });
    }
};

TEST_F(MonitoringTest, TheStartWatchesEachWindowAndTheEndLetsGo) {
    m_desktop.OpenBrowser(Page(L"one"));
    m_desktop.OpenBrowser(Page(L"two"));
    Start();
    ExpectOneSinkEach();
    for (const Browser* browser : m_desktop.Browsers()) {
        EXPECT_EQ(2, browser->Sinks().advises);
        EXPECT_EQ(0, browser->Sinks().refused);
    }
    EXPECT_EQ(Tree({L"one", L"two"}, {}), m_guard->TreeLines());
    EXPECT_TRUE(m_guard->Close());
    for (const Browser* browser : m_desktop.Browsers()) {
        EXPECT_EQ(2, browser->Sinks().unadvises);
        EXPECT_EQ(0, browser->Sinks().connected);
        EXPECT_EQ(0, browser->Sinks().lost);
    }
    EXPECT_EQ(0, m_desktop.Sinks().connected);
    EXPECT_TRUE(ReferencesGone());
}

TEST_F(MonitoringTest, EveryEventIsAnswered) {
    Browser& browser = m_desktop.OpenBrowser(Page(L"one"));
    Start();
    const std::vector<EventResult> results = {browser.FireBeforeNavigate2(L"http://next.example/"),
                                              browser.FireDocumentComplete(L"http://next.example/"),
                                              browser.FireDownloadBegin(),
                                              browser.FireDownloadComplete(),
                                              browser.FireFileDownload(),
                                              browser.Fire(EventCall::FileDownload(true)),
                                              browser.FireNavigateComplete2(L"http://next.example/"),
                                              browser.FireNavigateError(L"http://next.example/", 404),
                                              browser.FireOnFullScreen(true),
                                              browser.FireProgressChange(1, 2),
                                              browser.FireTitleChange(L"Next"),
                                              browser.FireWindowClosing(false)};
    for (const EventResult& result : results) {
        EXPECT_EQ(S_OK, result.hr);
        EXPECT_EQ(1, result.sinks);
        EXPECT_FALSE(result.cancel);
    }
    const EventResult popup = browser.FireNewWindow2();
    EXPECT_EQ(S_OK, popup.hr);
    EXPECT_EQ(VARIANT_TRUE, popup.cancelValue);
    EXPECT_FALSE(popup.newBrowser);
    EXPECT_EQ((Lines{L"Windows Browsers (1)", L"  Browser ", L"    Title : Next",
                     L"    URL : http://next.example/"}),
              m_guard->TreeLines());
}

TEST_F(MonitoringTest, MalformedEventsAreSurvived) {
    Browser& browser = m_desktop.OpenBrowser(Page(L"one"));
    Start();
    for (DISPID id = 100; id < 300; ++id) {
        browser.Fire(EventCall(id));
        browser.Fire(EventCall(id).Reference(desktop::Variant::Text(L"x")).Cancel());
        browser.Fire(EventCall(id).Value(desktop::Variant::Long(1)).Value(desktop::Variant::Long(2)));
    }
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, browser.Fire(EventCall(DISPID_TITLECHANGE)).hr);
    // An event that it does not listen to may bring anything.
    const EventResult unheard = browser.Fire(EventCall(DISPID_NAVIGATEERROR));
    EXPECT_EQ(S_OK, unheard.hr);
    EXPECT_EQ(1, unheard.sinks);
    EXPECT_EQ(DISP_E_TYPEMISMATCH,
              browser.Fire(EventCall(DISPID_NEWWINDOW2).Value(desktop::Variant::Long(1)).Cancel()).hr);
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_FALSE(FindMessageBox(m_guard->Program().Id()));
}

TEST_F(MonitoringTest, FiftyWindowsOpenAndClose) {
    constexpr int kWindows = 50;
    Start();
    Lines titles;
    for (int i = 0; i < kWindows; ++i) {
        titles.push_back(L"page" + std::to_wstring(i));
        m_desktop.OpenBrowser(Page(titles.back()));
    }
    EXPECT_EQ(Tree({}, titles), m_guard->TreeLines());
    ExpectOneSinkEach();

    // What one more costs.
    std::vector<int> advises;
    for (Browser* browser : m_desktop.Browsers()) {
        advises.push_back(browser->Sinks().advises);
        browser->ResetReads();
    }
    const auto reads = [this] {
        int all = 0;
        for (Browser* browser : m_desktop.Browsers()) {
            all += browser->Reads(desktop::Property::Hwnd);
            browser->ResetReads();
        }
        return all;
    };
    Browser& last = m_desktop.OpenBrowser(Page(L"last"));
    for (std::size_t i = 0; i < m_desktop.Browsers().size(); ++i) {
        EXPECT_EQ(i < advises.size() ? advises[i] + 1 : 1, m_desktop.Browsers()[i]->Sinks().advises);
    }
    EXPECT_LE(reads(), kWindows + 10);
    last.FireBeforeNavigate2(L"http://next.example/");
    last.FireTitleChange(L"Next");
    EXPECT_EQ(0, reads());
    last.Close();
    EXPECT_LE(reads(), kWindows + 10);

    for (Browser* browser : m_desktop.Browsers()) {
        browser->Close();
    }
    EXPECT_EQ(Lines{L"Windows Browsers (0)"}, m_guard->TreeLines());
    EXPECT_TRUE(WaitUntil([this] {
        for (const Browser* browser : m_desktop.Browsers()) {
            if (browser->OutsideReferences() != 0) {
                return false;
            }
        }
        return true;
    }));
}

TEST_F(MonitoringTest, AWindowThatOpensInTheMiddleOfARebuildIsShown) {
    Browser& first = m_desktop.OpenBrowser(Page(L"one"));
    Start();
    first.BeforeAdvise([this] { m_desktop.OpenBrowser(Page(L"three")); });
    m_desktop.OpenBrowser(Page(L"two"));
    EXPECT_TRUE(WaitUntil([this] { return m_guard->TreeLines() == Tree({L"one"}, {L"two", L"three"}); }));
    ExpectOneSinkEach();
    first.BeforeRead(desktop::Property::Hwnd, [this] { m_desktop.OpenBrowser(Page(L"five")); });
    m_desktop.OpenBrowser(Page(L"four"));
    EXPECT_TRUE(WaitUntil([this] {
        return m_guard->TreeLines() == Tree({L"one"}, {L"two", L"three", L"four", L"five"});
    }));
    ExpectOneSinkEach();
    m_desktop.BeforeEnumeration([this] { m_desktop.OpenBrowser(Page(L"seven")); });
    m_desktop.OpenBrowser(Page(L"six"));
    EXPECT_TRUE(WaitUntil([this] { return m_guard->TreeLines().front() == L"Windows Browsers (7)"; }));
    ExpectOneSinkEach();
}

TEST_F(MonitoringTest, AWindowThatClosesInTheMiddleOfARebuildIsForgotten) {
    Browser& first = m_desktop.OpenBrowser(Page(L"one"));
    Browser& second = m_desktop.OpenBrowser(Page(L"two"));
    Start();
    first.BeforeAdvise([&second] { second.Close(); });
    m_desktop.OpenBrowser(Page(L"three"));
    EXPECT_TRUE(WaitUntil([this] { return m_guard->TreeLines() == Tree({L"one"}, {L"three"}); }));
    ExpectOneSinkEach();
}

TEST_F(MonitoringTest, WindowsThatComeAndGoBetweenTwoConnectionsToTheListAreTold) {
    m_desktop.OpenBrowser(Page(L"one"));
    Browser& second = m_desktop.OpenBrowser(Page(L"two"));
    Start();
    m_desktop.BeforeConnect([this] { m_desktop.OpenBrowser(Page(L"three")); });
    m_desktop.OpenBrowser(Page(L"four"));
    Lines tree;
    EXPECT_TRUE(WaitUntil([&] { return (tree = m_guard->TreeLines()).size() == 1 + 4 * 3; }))
        << ::testing::PrintToString(tree);
    m_desktop.BeforeConnect([&second] { second.Close(); });
    m_desktop.OpenBrowser(Page(L"five"));
    EXPECT_TRUE(WaitUntil([&] {
        tree = m_guard->TreeLines();
        return tree.size() == 1 + 4 * 3 && tree.front() == L"Windows Browsers (4)";
    })) << ::testing::PrintToString(tree);
    EXPECT_EQ(tree.end(), std::find(tree.begin(), tree.end(), L"    Title : two"));
    ExpectOneSinkEach();
}

TEST_F(MonitoringTest, AfterTheShellHasRestartedItsListIsWatchedAnew) {
    m_desktop.OpenBrowser(Page(L"one"));
    Start();
    // Nobody announces it.
    Browser& quiet = m_desktop.OpenBrowser(Page(L"two", false));
    PostMessageA(m_guard->Window(), RegisterWindowMessageA("TaskbarCreated"), 0, 0);
    EXPECT_TRUE(WaitUntil([this] { return m_guard->TreeLines() == Tree({L"one", L"two"}, {}); }));
    ExpectOneSinkEach();
    EXPECT_TRUE(quiet.FireNewWindow2().cancel);
}

TEST_F(MonitoringTest, AShellThatComesBackWithoutItsListIsWatchedOnceItHasOne) {
    m_desktop.OpenBrowser(Page(L"one"));
    Start();
    Browser& quiet = m_desktop.OpenBrowser(Page(L"two", false));
    m_desktop.FailEnumeration(E_FAIL);
    const int before = m_desktop.Enumerations();
    PostMessageA(m_guard->Window(), RegisterWindowMessageA("TaskbarCreated"), 0, 0);
    // One for monitoring, one for the tree, which tries again.
    EXPECT_TRUE(WaitUntil([&] { return m_desktop.Enumerations() >= before + 2; }));
    m_desktop.FailEnumeration(S_OK, 0);
    EXPECT_TRUE(WaitUntil([this] { return m_guard->TreeLines() == Tree({L"one", L"two"}, {}); }));
    ExpectOneSinkEach();
    EXPECT_TRUE(quiet.FireNewWindow2().cancel);
}

TEST_F(MonitoringTest, AWindowOutOfSightWhoseThreadTakesNoMessagesIsWatched) {
    Start();
    // This thread makes the frame, and looks for messages at the end only.
    const HWND frame = CreateWindowExA(0, "Static", "frame", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr,
                                       nullptr, nullptr, nullptr);
    BrowserOptions one = Page(L"one");
    one.frame = static_cast<LONG>(reinterpret_cast<LONG_PTR>(frame));
    Browser& browser = m_desktop.OpenBrowser(one);
    EXPECT_TRUE(WaitUntil([this] { return m_guard->TreeLines() == Tree({}, {L"one"}); }));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    DestroyWindow(frame);
}

TEST_F(MonitoringTest, AKilledBrowserIsSurvived) {
    Browser& living = m_desktop.OpenBrowser(Page(L"one"));
    desktop::RemoteBrowser& remote =
        m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe", {L"http://far.example/", L"far"});
    Start();
    EXPECT_EQ(Tree({L"one", L"far"}, {}), m_guard->TreeLines());
    EXPECT_TRUE(remote.FireNewWindow2().cancel);
    remote.Kill();
    EXPECT_TRUE(living.FireNewWindow2().cancel);
    m_desktop.Withdraw(remote.Cookie());
    EXPECT_EQ(Tree({L"one"}, {}), m_guard->TreeLines());
    ExpectOneSinkEach();
    EXPECT_EQ(L"2", m_guard->Today());
    EXPECT_TRUE(m_guard->Close());
}

TEST_F(MonitoringTest, ABrowserThatDiesWithoutAWordIsSurvived) {
    Browser& dead = m_desktop.OpenBrowser(Page(L"one"));
    Browser& living = m_desktop.OpenBrowser(Page(L"two"));
    Start();
    dead.Die();
    EXPECT_TRUE(living.FireNewWindow2().cancel);
    EXPECT_TRUE(m_guard->Close());
    EXPECT_EQ(0, living.Sinks().connected);
    EXPECT_TRUE(ReferencesGone());
}

TEST_F(MonitoringTest, FolderWindowsAndSharedFramesAreWatched) {
    Start();
    BrowserOptions shared = Page(L"one");
    shared.frame = 655412;
    Browser& first = m_desktop.OpenBrowser(shared);
    shared.announced = false;
    Browser& second = m_desktop.OpenBrowser(shared);
    BrowserOptions folder = Page(L"folder");
    folder.folder = true;
    Browser& third = m_desktop.OpenBrowser(folder);
    // The folder has a node like any window, those that share a frame have one.
    Lines tree = Tree({}, {L"one", L"folder"});
    tree.front() = L"Windows Browsers (3)";
    EXPECT_EQ(tree, m_guard->TreeLines());
    ExpectOneSinkEach();
    EXPECT_TRUE(first.FireNewWindow2().cancel);
    EXPECT_TRUE(second.FireNewWindow2().cancel);
    EXPECT_TRUE(third.FireNewWindow2().cancel);
    EXPECT_EQ(L"3", m_guard->Today());
}

TEST_F(MonitoringTest, ARealNavigationReachesTheProgram) {
    Start();
    const desktop::ComPtr<IWebBrowser2> browser = m_desktop.OpenWineBrowser();
    ASSERT_EQ(L"Windows Browsers (1)", m_guard->TreeLines().front());
    desktop::Variant none[4] = {desktop::Variant::Omitted(), desktop::Variant::Omitted(),
                                desktop::Variant::Omitted(), desktop::Variant::Omitted()};
    const desktop::Bstr address(L"http://nowhere.example/");
    browser->Navigate(address.Get(), &none[0], &none[1], &none[2], &none[3]);
    // Wine's browser gives no title, so the tree shows the address alone.
    Lines lines;
    EXPECT_TRUE(WaitUntil([&] {
        lines = m_guard->TreeLines();
        return lines.back() == L"    URL : http://nowhere.example/";
    })) << ::testing::PrintToString(lines);
    browser->Quit();
}

class MonitoringEnduranceTest : public MonitoringTest {};

TEST_F(MonitoringEnduranceTest, AThousandWindowsLeaveNothingBehind) {
    Browser& steady = m_desktop.OpenBrowser(Page(L"one"));
    Start();
    ASSERT_TRUE(m_guard->Minimise());
    LetWindowsPass(m_desktop, 20);
    const ObjectCounts before = m_guard->Inside().Count();
    const LONG references = steady.OutsideReferences();
    const LONG listReferences = m_desktop.OutsideReferences();
    LetWindowsPass(m_desktop, 1000);
    EXPECT_TRUE(WaitUntil([&] { return steady.OutsideReferences() == references; }));
    EXPECT_TRUE(WaitUntil([&] { return m_desktop.OutsideReferences() == listReferences; }));
    ExpectOneSinkEach();
    const ObjectCounts after = m_guard->Inside().Count();
    EXPECT_EQ(before.windows, after.windows);
    EXPECT_EQ(before.menus, after.menus);
    EXPECT_EQ(before.icons, after.icons);
    EXPECT_EQ(before.gdiObjects, after.gdiObjects);
    // The platform keeps a few threads and their handles for a while.
    EXPECT_LE(after.handles, before.handles + 20);
    EXPECT_EQ(Tree({L"one"}, {}), m_guard->TreeLines());
    EXPECT_TRUE(m_guard->Close());
    EXPECT_TRUE(ReferencesGone());
}

}  // namespace
}  // namespace kestrelguard::testing
