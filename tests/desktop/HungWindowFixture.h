#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "RunningGuard.h"
#include "desktop/Desktop.h"

namespace kestrelguard::testing {

// How long a user waits for each beside a window that hangs (milliseconds). They end waits for what comes
// much sooner; where it does not come, they are what the user is promised.
inline constexpr DWORD kToAnswer = 3000;
inline constexpr DWORD kToWatch = 5000;
inline constexpr DWORD kToStartOrEnd = 10000;

inline constexpr char kSettings[] =
    "PT1/:/:0\r\nMIN/:/:n\r\nSS1/:/:y/:/:casino -\r\nSS2/:/:y/:/:poker -dice\r\nUSE/:/:41\r\nPST/:/:7\r\n";
inline constexpr char kCookies[] = "1\r\n2\r\n3\r\n4\r\nCookie:a@a.example/\r\nCookie:b@b.example/\r\n";

/// The unchanged program beside a browser whose process, or one of whose properties, does not answer.
class BesideHungWindow : public ::testing::Test {
 protected:
    /// A process that is stopped must not be asked to close.
    ~BesideHungWindow() override {
        if (m_far != nullptr) {
            m_far->Kill();
        }
    }

    static desktop::BrowserOptions Page(const std::wstring& title) {
        desktop::BrowserOptions options;
        options.title = title;
        options.url = L"http://" + title + L".example/";
        return options;
    }
    /// One browser here, "near", and one in a process of its own, "far".
    void OpenBoth() {
        m_near = &m_desktop.OpenBrowser(Page(L"near"));
        m_far = &m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                             {L"http://far.example/", L"far", m_farIsShown});
    }
    /// The far one, which nobody has been told of.
    void OpenFarUnannounced() {
        m_far = &m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                             {L"http://far.example/", L"far", m_farIsShown, false});
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
    bool WaitWatched(const desktop::Browser& browser) const {
        return WaitUntil([&] { return browser.Sinks().connected == 1; }, kToWatch);
    }
    /// Another window opens, is in the tree and watched, and leaves the tree when it closes.
    void ExpectOneComesAndGoes(const std::function<void()>& meanwhile = [] {}) {
        desktop::Browser& next = m_desktop.OpenBrowser(Page(L"next"));
        EXPECT_TRUE(WaitNodes(L"next", 1));
        EXPECT_TRUE(WaitWatched(next));
        EXPECT_TRUE(next.FireNewWindow2().cancel);
        meanwhile();
        next.Close();
        EXPECT_TRUE(WaitNodes(L"next", 0));
        EXPECT_EQ(1, Nodes(L"near"));
    }
    /// The program starts with its window on the screen and watches the near one, whose popup it counts.
    void ExpectStartOnTheScreen(Guard& guard) const {
        EXPECT_TRUE(guard.WaitReady(kToStartOrEnd));
        EXPECT_TRUE(IsWindowVisible(guard.Window()));
        EXPECT_TRUE(WaitWatched(*m_near));
        EXPECT_TRUE(m_near->FireNewWindow2().cancel);
        EXPECT_EQ(L"1", guard.Today());
    }
    /// It starts in the tray, and its menu opens.
    static void ExpectStartInTheTray() {
        const GuardFolder folder{std::string("MIN/:/:y\r\n")};
        Guard guard(folder);
        EXPECT_TRUE(guard.Icon(kToStartOrEnd));
        EXPECT_TRUE(guard.WaitReady(kToStartOrEnd));
        ClickTrayIcon(guard.Icon().value(), true);
        EXPECT_TRUE(guard.Inside().WaitMenu(kToAnswer));
        EXPECT_TRUE(guard.Inside().CloseMenu(kToAnswer));
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
    /// As Windows does, which waits for the program's end then.
    void EndTheSession() const {
        LRESULT answer = FALSE;
        EXPECT_TRUE(Ask(m_guard->Window(), WM_QUERYENDSESSION, 0, 0, answer, kToAnswer));
        EXPECT_EQ(TRUE, answer);
        const DWORD asked = GetTickCount();
        // No answer comes from a program that ends in the midst of the message.
        Ask(m_guard->Window(), WM_ENDSESSION, TRUE, 0, answer, kToStartOrEnd);
        const DWORD waited = GetTickCount() - asked;
        EXPECT_TRUE(m_guard->Program().WaitGone(waited < kToStartOrEnd ? kToStartOrEnd - waited : 0));
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
    }

    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    desktop::Browser* m_near = nullptr;
    desktop::RemoteBrowser* m_far = nullptr;
    bool m_farIsShown = true;
    std::unique_ptr<RunningGuard> m_guard;
};

}  // namespace kestrelguard::testing
