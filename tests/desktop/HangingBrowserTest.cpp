// A browser that does not answer, beside the unchanged program.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

using desktop::RemoteBrowser;

class HangingBrowserTest : public ::testing::Test {
 protected:
    ~HangingBrowserTest() override {
        if (m_hanging != nullptr) {
            m_hanging->Kill();
        }
    }
    static BrowserOptions Page(const std::wstring& title) {
        BrowserOptions options;
        options.title = title;
        options.url = L"http://" + title + L".example/";
        return options;
    }
    RemoteBrowser& OpenFar() {
        m_hanging = &m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                                 {L"http://far.example/", L"far", true});
        return *m_hanging;
    }
    bool Shows(const std::wstring& title) const {
        const auto lines = m_guard->TreeLines();
        return std::find(lines.begin(), lines.end(), L"    Title : " + title) != lines.end();
    }

    std::ptrdiff_t BrowserNodes() const {
        const auto nodes = TreeNodes(m_guard->Tree());
        return std::count_if(nodes.begin(), nodes.end(),
                             [](const TreeNode& node) { return node.depth == 1; });
    }

    desktop::Apartment m_apartment;
    StandInDesktop m_desktop;
    RemoteBrowser* m_hanging = nullptr;
    std::unique_ptr<RunningGuard> m_guard;
};

TEST_F(HangingBrowserTest, TheOthersAreWatchedAndTheEndStoresEverything) {
    Browser& living = m_desktop.OpenBrowser(Page(L"near"));
    RemoteBrowser& hung = OpenFar();
    m_guard = std::make_unique<RunningGuard>();
    ASSERT_TRUE(Shows(L"far"));
    hung.Stop();
    EXPECT_TRUE(living.FireNewWindow2().cancel);
    Browser& next = m_desktop.OpenBrowser(Page(L"next"));
    EXPECT_TRUE(WaitUntil([&] { return Shows(L"next"); }));
    EXPECT_TRUE(next.FireNewWindow2().cancel);
    EXPECT_TRUE(living.FireNewWindow2().cancel);
    EXPECT_EQ(L"3", m_guard->Today());
    next.Close();
    EXPECT_TRUE(WaitUntil([&] { return !Shows(L"next"); }));
    EXPECT_TRUE(Shows(L"far"));
    EXPECT_TRUE(m_guard->EndsWell());
    EXPECT_EQ("3", m_guard->Setting("PST"));
}

TEST_F(HangingBrowserTest, OnceItAnswersItIsWatchedExactlyOnce) {
    m_desktop.OpenBrowser(Page(L"near"));
    RemoteBrowser& hung = OpenFar();
    m_guard = std::make_unique<RunningGuard>();
    hung.Stop();
    m_desktop.OpenBrowser(Page(L"next"));
    EXPECT_TRUE(WaitUntil([&] { return Shows(L"next"); }));
    hung.GoOn();
    m_desktop.OpenBrowser(Page(L"last"));
    EXPECT_TRUE(WaitUntil([&] { return Shows(L"last"); }));
    EXPECT_EQ(1, hung.Sinks());
    EXPECT_TRUE(hung.FireNewWindow2().cancel);
    EXPECT_EQ(L"1", m_guard->Today());
    EXPECT_TRUE(m_guard->EndsWell());
}

TEST_F(HangingBrowserTest, AStartBesideItShowsTheWindowAndWatchesTheOthers) {
    Browser& living = m_desktop.OpenBrowser(Page(L"near"));
    OpenFar().Stop();
    m_guard = std::make_unique<RunningGuard>();
    EXPECT_TRUE(Shows(L"near"));
    EXPECT_TRUE(living.FireNewWindow2().cancel);
    EXPECT_TRUE(m_guard->EndsWell());
}

TEST_F(HangingBrowserTest, OneThatWasBusyAtTheStartIsWatchedWithoutFurtherAnnouncement) {
    RemoteBrowser& busy = OpenFar();
    busy.Stop();
    m_guard = std::make_unique<RunningGuard>();
    EXPECT_FALSE(Shows(L"far"));
    busy.GoOn();
    EXPECT_TRUE(WaitUntil([&] { return Shows(L"far"); }));
    EXPECT_EQ(1, busy.Sinks());
    EXPECT_TRUE(busy.FireNewWindow2().cancel);
    EXPECT_TRUE(m_guard->EndsWell());
}

TEST_F(HangingBrowserTest, ADoubleClickOnTheRootKeepsItsNode) {
    m_desktop.OpenBrowser(Page(L"near"));
    RemoteBrowser& hung = OpenFar();
    m_guard = std::make_unique<RunningGuard>();
    ASSERT_TRUE(Shows(L"far"));
    hung.Stop();
    const HWND tree = m_guard->Tree();
    DoubleClickNode(tree, TreeNodes(tree).at(0).item);
    // Its title is not known now.
    EXPECT_TRUE(WaitUntil([&] { return Shows(L"") && Shows(L"near") && BrowserNodes() == 2; }));
    hung.GoOn();
    EXPECT_TRUE(WaitUntil([&] { return hung.Sinks() == 1 && hung.FireNewWindow2().cancel; }));
    m_desktop.OpenBrowser(Page(L"next"));
    EXPECT_TRUE(WaitUntil([&] { return Shows(L"next"); }));
    EXPECT_EQ(3, BrowserNodes());
    EXPECT_EQ(1, hung.Sinks());
    EXPECT_TRUE(m_guard->EndsWell());
}

TEST_F(HangingBrowserTest, ASinkThatWasKeptIsTakenBackWhenItAnswers) {
    m_desktop.OpenBrowser(Page(L"near"));
    RemoteBrowser& hung = OpenFar();
    m_guard = std::make_unique<RunningGuard>();
    hung.Stop();
    const HWND tree = m_guard->Tree();
    // A click on the root watches all windows anew, and cannot take back the sink on this one.
    ClickNode(tree, TreeNodes(tree).at(0).item);
    ASSERT_TRUE(m_guard->WaitPosted());
    hung.GoOn();
    m_desktop.OpenBrowser(Page(L"next"));
    EXPECT_TRUE(WaitUntil([&] { return Shows(L"next"); }));
    EXPECT_TRUE(WaitUntil([&] { return hung.Sinks() == 1 && hung.FireNewWindow2().cancel; }));
    EXPECT_TRUE(m_guard->EndsWell());
    EXPECT_EQ(0, hung.Sinks());
}

}  // namespace
}  // namespace kestrelguard::testing
