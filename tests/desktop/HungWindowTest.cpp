// A browser whose process is stopped, beside the unchanged program: what a user sees of it, and how long he
// waits.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "RunningGuard.h"
#include "desktop/Desktop.h"

namespace kestrelguard::testing {
namespace {

using desktop::Browser;
using desktop::BrowserOptions;
using desktop::RemoteBrowser;
using desktop::StandInDesktop;

// How long a user waits for each beside a window that hangs (milliseconds). They end waits for what comes
// much sooner; where it does not come, they are what the user is promised.
constexpr DWORD kToAnswer = 3000;
constexpr DWORD kToWatch = 5000;
constexpr DWORD kToStartOrEnd = 10000;

constexpr char kSettings[] =
    "PT1/:/:0\r\nMIN/:/:n\r\nSS1/:/:y/:/:casino -\r\nSS2/:/:y/:/:poker -dice\r\nUSE/:/:41\r\nPST/:/:7\r\n";
constexpr char kCookies[] = "1\r\n2\r\n3\r\n4\r\nCookie:a@a.example/\r\nCookie:b@b.example/\r\n";

class HungWindowDesktopTest : public ::testing::Test {
 protected:
    /// A process that is stopped must not be asked to close.
    ~HungWindowDesktopTest() override {
        if (m_far != nullptr) {
            m_far->Kill();
        }
    }

    static BrowserOptions Page(const std::wstring& title) {
        BrowserOptions options;
        options.title = title;
        options.url = L"http://" + title + L".example/";
        return options;
    }
    /// One browser here, "near", and one in a process of its own, "far".
    void OpenBoth() {
        m_near = &m_desktop.OpenBrowser(Page(L"near"));
        m_far = &m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                             {L"http://far.example/", L"far", true});
    }
    void Start(const std::string& settings = kSettings) {
        m_guard = std::make_unique<RunningGuard>(std::make_shared<GuardFolder>(settings, kCookies));
    }
    /// Both are watched, then the far one stops.
    void StartThenHang(const std::string& settings = kSettings) {
        OpenBoth();
        Start(settings);
        ASSERT_EQ(1, Nodes(L"near"));
        ASSERT_EQ(1, Nodes(L"far"));
        m_far->Stop();
    }
    /// How many nodes of the tree show a window.
    int Nodes(const std::wstring& title) const {
        const auto lines = m_guard->TreeLines();
        return static_cast<int>(std::count(lines.begin(), lines.end(), L"    Title : " + title));
    }
    bool WaitNodes(const std::wstring& title, int count) const {
        return WaitUntil([&] { return Nodes(title) == count; }, kToWatch);
    }
    HTREEITEM Node(const std::wstring& text) const {
        for (const TreeNode& node : TreeNodes(m_guard->Tree())) {
            if (node.text == text) {
                return node.item;
            }
        }
        return nullptr;
    }
    /// Its window, wherever it is, and all controls answer.
    void ExpectAnswers() const {
        LRESULT answer = 0;
        EXPECT_TRUE(Ask(m_guard->Window(), WM_NULL, 0, 0, answer, kToAnswer));
        for (const int tab : {1, 0}) {
            ClickTab(m_guard->Tabs(), tab);
            EXPECT_TRUE(WaitUntil([&] { return SelectedTab(m_guard->Tabs()) == tab; }, kToAnswer));
        }
    }
    void ExpectTrayMenu() const {
        ASSERT_TRUE(m_guard->Minimise());
        const auto icon = m_guard->Icon(kToAnswer);
        ASSERT_TRUE(icon);
        ClickTrayIcon(*icon, true);
        EXPECT_TRUE(m_guard->Inside().WaitMenu(kToAnswer));
        EXPECT_TRUE(m_guard->Inside().CloseMenu(kToAnswer));
        EXPECT_TRUE(m_guard->Restore());
    }
    /// Takes a saved cookie off the list in the cache window and leaves that open: nothing of it is written.
    void ChangeSavedCookies() const {
        Click(m_guard->Button(L"Show Cache"));
        const HWND cache = WaitTop(m_guard->Program().Id(), [](HWND top) {
            return ClassOf(top) == L"KG_Cache" && IsWindowVisible(top);
        });
        ASSERT_NE(nullptr, cache);
        HWND saved = nullptr;
        for (const HWND child : Inside(cache)) {
            saved = lstrcmpiW(ClassOf(child).c_str(), L"ListBox") == 0 ? child : saved;
        }
        ASSERT_EQ(2u, ListRows(saved).size());
        SelectRow(saved, 0);
        ClickAndWait(FindInside(cache, L"Button", L"<- Remove"));
        ASSERT_EQ(1u, ListRows(saved).size());
        ASSERT_NE(std::string::npos, m_guard->Folder()->Cookies().find("Cookie:a@a.example/"));
    }
    /// Something to write: a setting, a counter and the saved cookies.
    void ChangeEverything() {
        ClickAndWait(m_guard->Button(L"Open Kestrelguard Minimized (in the system tray)"));
        EXPECT_TRUE(m_near->FireNewWindow2().cancel);
        ChangeSavedCookies();
    }
    void ExpectEverythingWritten() const {
        EXPECT_EQ(0u, m_guard->Program().ExitCode());
        EXPECT_EQ("y", m_guard->Setting("MIN"));
        EXPECT_EQ("y/:/:casino - -", m_guard->Setting("SS1"));
        EXPECT_EQ("42", m_guard->Setting("USE"));
        EXPECT_EQ("8", m_guard->Setting("PST"));
        const std::string cookies = m_guard->Folder()->Cookies();
        EXPECT_EQ(std::string::npos, cookies.find("Cookie:a@a.example/"));
        EXPECT_NE(std::string::npos, cookies.find("Cookie:b@b.example/"));
        EXPECT_EQ(0, m_near->Sinks().connected);
    }

    desktop::Apartment m_apartment;
    StandInDesktop m_desktop;
    Browser* m_near = nullptr;
    RemoteBrowser* m_far = nullptr;
    std::unique_ptr<RunningGuard> m_guard;
};

TEST_F(HungWindowDesktopTest, TheWindowAnswersAndTheTrayMenuOpens) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    ExpectAnswers();
    ExpectTrayMenu();
    Browser& next = m_desktop.OpenBrowser(Page(L"next"));
    ExpectAnswers();
    ExpectTrayMenu();
    next.Close();
    ExpectAnswers();
    ExpectTrayMenu();
    DoubleClickNode(m_guard->Tree(), TreeNodes(m_guard->Tree()).at(0).item);
    ExpectAnswers();
    ExpectTrayMenu();
}

TEST_F(HungWindowDesktopTest, OthersAreWatchedWhenTheyOpenAndLeaveWhenTheyClose) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    for (int round = 1; round <= 3; ++round) {
        Browser& next = m_desktop.OpenBrowser(Page(L"next"));
        EXPECT_TRUE(WaitNodes(L"next", 1));
        EXPECT_TRUE(WaitUntil([&] { return next.Sinks().connected == 1; }, kToWatch));
        EXPECT_TRUE(next.FireNewWindow2().cancel);
        EXPECT_TRUE(m_near->FireNewWindow2().cancel);
        EXPECT_EQ(std::to_wstring(2 * round), m_guard->Today());
        next.Close();
        EXPECT_TRUE(WaitNodes(L"next", 0));
        EXPECT_EQ(1, Nodes(L"near"));
        EXPECT_EQ(1, Nodes(L"far")) << "it keeps its node";
    }
    // It answers again: with the next announcement at the latest it is watched, exactly once.
    m_far->GoOn();
    m_desktop.OpenBrowser(Page(L"last"));
    EXPECT_TRUE(WaitNodes(L"last", 1));
    EXPECT_TRUE(WaitUntil([&] { return m_far->Sinks() == 1; }, kToWatch));
    EXPECT_EQ(1, Nodes(L"far"));
    EXPECT_TRUE(m_far->FireNewWindow2().cancel);
    EXPECT_EQ(L"7", m_guard->Today());
}

TEST_F(HungWindowDesktopTest, ExitEndsTheProgramAndWritesEverything) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    ASSERT_NO_FATAL_FAILURE(ChangeEverything());
    ASSERT_TRUE(m_guard->Minimise());
    EXPECT_TRUE(m_guard->ExitByMenu(kToStartOrEnd));
    ExpectEverythingWritten();
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_F(HungWindowDesktopTest, TheEndOfTheSessionWritesEverything) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    ASSERT_NO_FATAL_FAILURE(ChangeEverything());
    LRESULT answer = FALSE;
    EXPECT_TRUE(Ask(m_guard->Window(), WM_QUERYENDSESSION, 0, 0, answer, kToAnswer));
    EXPECT_EQ(TRUE, answer);
    const DWORD asked = GetTickCount();
    // No answer comes from a program that ends in the midst of the message.
    Ask(m_guard->Window(), WM_ENDSESSION, TRUE, 0, answer, kToStartOrEnd);
    const DWORD waited = GetTickCount() - asked;
    EXPECT_TRUE(m_guard->Program().WaitGone(waited < kToStartOrEnd ? kToStartOrEnd - waited : 0));
    ExpectEverythingWritten();
}

TEST_F(HungWindowDesktopTest, AStartShowsTheWindowAndWatchesThoseThatAnswer) {
    OpenBoth();
    m_far->Stop();
    const GuardFolder folder{std::string(kSettings)};
    Guard guard(folder);
    EXPECT_TRUE(guard.WaitReady(kToStartOrEnd));
    EXPECT_TRUE(IsWindowVisible(guard.Window()));
    EXPECT_TRUE(WaitUntil([&] { return m_near->Sinks().connected == 1; }, kToWatch));
    EXPECT_TRUE(m_near->FireNewWindow2().cancel);
    EXPECT_EQ(L"1", guard.Today());
    m_far->GoOn();
    EXPECT_TRUE(WaitUntil([&] { return m_far->Sinks() == 1; }, kToWatch));
    EXPECT_TRUE(m_far->FireNewWindow2().cancel);
    EXPECT_EQ(L"2", guard.Today());
}

TEST_F(HungWindowDesktopTest, AStartInTheTrayShowsTheIcon) {
    OpenBoth();
    m_far->Stop();
    const GuardFolder folder{std::string("MIN/:/:y\r\n")};
    Guard guard(folder);
    EXPECT_TRUE(guard.Icon(kToStartOrEnd));
    EXPECT_TRUE(guard.WaitReady(kToStartOrEnd));
    ClickTrayIcon(guard.Icon().value(), true);
    EXPECT_TRUE(guard.Inside().WaitMenu(kToAnswer));
    EXPECT_TRUE(guard.Inside().CloseMenu(kToAnswer));
}

TEST_F(HungWindowDesktopTest, ShowOnItDoesNotHangAndShowsItOnceItAnswers) {
    OpenBoth();
    ShowWindow(m_far->Window(), SW_MINIMIZE);
    ASSERT_TRUE(WaitUntil([&] { return IsIconic(m_far->Window()) != FALSE; }));
    Start();
    m_far->Stop();
    SelectNode(m_guard->Tree(), Node(L"Title : far"));
    ClickNode(m_guard->Tree(), Node(L"Title : far"), true);
    ASSERT_TRUE(m_guard->Inside().WaitMenu());
    ASSERT_TRUE(m_guard->Inside().Choose(L"Show this Browser Window"));
    ExpectAnswers();
    EXPECT_TRUE(IsIconic(m_far->Window()));
    m_far->GoOn();
    EXPECT_TRUE(WaitUntil([&] { return !IsIconic(m_far->Window()); }));
}

}  // namespace
}  // namespace kestrelguard::testing
