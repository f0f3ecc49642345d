#include <string>
#include <vector>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

using Texts = std::vector<std::wstring>;

constexpr wchar_t kShow[] = L"Show this Browser Window";
constexpr wchar_t kClose[] = L"Close this Browser Window";

class TreeDesktopTest : public DesktopTest {
 protected:
    Browser& Open(const std::wstring& title, bool shown = false) {
        BrowserOptions options;
        options.title = title;
        options.url = L"http://" + title + L".example/";
        options.shown = shown;
        return m_desktop.OpenBrowser(options);
    }
    /// Waits until the tree reads so; what it reads at last.
    static Texts Await(const RunningGuard& guard, const Texts& texts) {
        WaitUntil([&] { return TreeTexts(guard.Tree()) == texts; });
        return TreeTexts(guard.Tree());
    }
    static HTREEITEM Node(const RunningGuard& guard, std::size_t index) {
        const std::vector<TreeNode> nodes = TreeNodes(guard.Tree());
        return index < nodes.size() ? nodes[index].item : nullptr;
    }
    /// Waits until the browser has worked off what was posted to its window before, and what came of that.
    static bool WaitPosted(Browser& browser) {
        // Its window shows the new title when it comes to it in its turn.
        browser.SetTitle(L"its turn");
        return WaitUntil(
                   [&] { return browser.Ended() || TextOf(browser.Window()).starts_with(L"its turn"); }) &&
               browser.WaitIdle();
    }
    static std::wstring SelectedText(const RunningGuard& guard) {
        for (const TreeNode& node : TreeNodes(guard.Tree())) {
            if (node.selected) {
                return node.text;
            }
        }
        return {};
    }
};

TEST_F(TreeDesktopTest, WithoutBrowsersThereIsTheRootAlone) {
    RunningGuard guard;
    EXPECT_EQ(TreeTexts(guard.Tree()), Texts{L"Windows Browsers (0)"});
    EXPECT_NE(FindInside(guard.Window(), L"Static", L"   Windows Internet Explorer Instances"), nullptr);
    EXPECT_NE(FindInside(guard.Window(), L"Static", L"Right Click for more options..."), nullptr);
}

TEST_F(TreeDesktopTest, TheBrowsersOfTheStartAreThereInTheirOrder) {
    Open(L"one");
    Open(L"two");
    RunningGuard guard;
    EXPECT_EQ(TreeTexts(guard.Tree()), (Texts{L"Windows Browsers (2)", L"  Browser ", L"    Title : one",
                                              L"    URL : http://one.example/", L"  Browser ",
                                              L"    Title : two", L"    URL : http://two.example/"}));
    const std::vector<TreeNode> nodes = TreeNodes(guard.Tree());
    ASSERT_EQ(nodes.size(), 7U);
    const int images[] = {2, 3, 1, 1, 3, 1, 1};
    for (std::size_t index = 0; index < nodes.size(); ++index) {
        EXPECT_EQ(nodes[index].image, images[index] - 1) << index;
        EXPECT_EQ(nodes[index].expanded, images[index] != 1) << index;
    }
}

TEST_F(TreeDesktopTest, AnOpenedBrowserIsSpelledWithoutABlankAndAClosedOneGoes) {
    Browser& one = Open(L"one");
    RunningGuard guard;
    Open(L"two");
    EXPECT_EQ(Await(guard, {L"Windows Browsers (2)", L"  Browser ", L"    Title : one",
                            L"    URL : http://one.example/", L"  Browser", L"    Title : two",
                            L"    URL : http://two.example/"})
                  .size(),
              7U);
    EXPECT_TRUE(TreeNodes(guard.Tree())[4].expanded);
    one.Close();
    const Texts left{L"Windows Browsers (1)", L"  Browser", L"    Title : two",
                     L"    URL : http://two.example/"};
    EXPECT_EQ(Await(guard, left), left);
}

TEST_F(TreeDesktopTest, TheRootOpensWithTheFirstBrowser) {
    RunningGuard guard;
    Browser& one = Open(L"one");
    ASSERT_TRUE(WaitUntil([&] { return TreeNodes(guard.Tree()).size() == 4; }));
    EXPECT_TRUE(TreeNodes(guard.Tree())[0].expanded);
    one.Close();
    const Texts none{L"Windows Browsers (0)"};
    EXPECT_EQ(Await(guard, none), none);
    Open(L"two");
    ASSERT_TRUE(WaitUntil([&] { return TreeNodes(guard.Tree()).size() == 4; }));
    EXPECT_TRUE(TreeNodes(guard.Tree())[0].expanded);
}

TEST_F(TreeDesktopTest, AnAnnouncementOfAKnownWindowAddsNothing) {
    Browser& one = Open(L"one");
    RunningGuard guard;
    const Texts before = TreeTexts(guard.Tree());
    const int advises = one.Sinks().advises;
    m_desktop.FireWindowRegistered(one.Cookie());
    EXPECT_TRUE(guard.WaitPosted());
    EXPECT_EQ(TreeTexts(guard.Tree()), before);
    EXPECT_EQ(one.Sinks().advises, advises) << "connected to once more";
}

TEST_F(TreeDesktopTest, ABrowserInAKnownFrameIsCountedButNotDoubled) {
    Browser& one = Open(L"one");
    RunningGuard guard;
    BrowserOptions tab;
    tab.frame = one.Handle();
    m_desktop.OpenBrowser(tab);
    // Its frame is known, so it counts as known too.
    m_desktop.OpenBrowser();
    ASSERT_TRUE(WaitUntil([&] { return TreeNodes(guard.Tree()).size() == 7; }));
    EXPECT_EQ(TreeTexts(guard.Tree())[0], L"Windows Browsers (3)");
}

TEST_F(TreeDesktopTest, TwoBrowsersInOneFrameFailTheFirstBuild) {
    BrowserOptions tab;
    tab.frame = Open(L"one").Handle();
    m_desktop.OpenBrowser(tab);
    const GuardFolder folder;
    Process program(folder.Exe(), {}, folder.Path());
    const MessageBoxSeen box = WaitMessageBox(program.Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(box.caption, L"Kestrelguard");
    EXPECT_NE(box.text.find(L"Run-time error '35602':"), std::wstring::npos);
    ASSERT_TRUE(Dismiss(box));
    ASSERT_TRUE(program.WaitGone());
    EXPECT_NE(program.ExitCode(), 0U);
}

TEST_F(TreeDesktopTest, AddressAndTitleFollowTheBrowser) {
    Browser& one = Open(L"one");
    RunningGuard guard;
    EXPECT_EQ(one.FireBeforeNavigate2(L"http://next.example/?q=%20").hr, S_OK);
    EXPECT_EQ(TreeTexts(guard.Tree())[3], L"    URL : http://next.example/?q=%20");
    EXPECT_EQ(one.FireTitleChange(L"Next page").hr, S_OK);
    EXPECT_EQ(TreeTexts(guard.Tree())[2], L"    Title : Next page");
    EXPECT_EQ(one.FireTitleChange({}).hr, S_OK);
    EXPECT_EQ(TreeTexts(guard.Tree())[2], L"    Title : ");
}

TEST_F(TreeDesktopTest, EachBrowserHasItsOwnDetails) {
    Open(L"one");
    Browser& two = Open(L"two");
    RunningGuard guard;
    two.FireBeforeNavigate2(L"http://next.example/");
    const Texts texts = TreeTexts(guard.Tree());
    EXPECT_EQ(texts[3], L"    URL : http://one.example/");
    EXPECT_EQ(texts[6], L"    URL : http://next.example/");
}

TEST_F(TreeDesktopTest, AClickOnTheRootRestartsTheWatcherAlone) {
    Browser& one = Open(L"one");
    RunningGuard guard;
    one.SetTitle(L"changed");
    const int advises = one.Sinks().advises;
    ClickNode(guard.Tree(), Node(guard, 0));
    // A new watcher looks at the windows twice.
    EXPECT_TRUE(WaitUntil([&] { return one.Sinks().advises == advises + 2 && one.Sinks().connected == 1; }));
    // Not rebuilt: the title is the old one.
    EXPECT_EQ(TreeTexts(guard.Tree())[2], L"    Title : one");
    EXPECT_TRUE(one.FireNewWindow2().cancel);
}

TEST_F(TreeDesktopTest, AClickOnABrowserRestartsNothing) {
    Browser& one = Open(L"one");
    RunningGuard guard;
    const int advises = one.Sinks().advises;
    ClickNode(guard.Tree(), Node(guard, 1));
    ASSERT_TRUE(WaitUntil([&] { return SelectedText(guard) == L"Browser "; }));
    EXPECT_TRUE(guard.WaitPosted());
    EXPECT_EQ(one.Sinks().advises, advises);
}

TEST_F(TreeDesktopTest, ADoubleClickOnTheRootRebuildsTheTree) {
    RunningGuard guard;
    Browser& one = Open(L"one");
    ASSERT_TRUE(WaitUntil([&] { return TreeNodes(guard.Tree()).size() == 4; }));
    EXPECT_EQ(TreeTexts(guard.Tree())[1], L"  Browser");
    one.SetTitle(L"changed");
    DoubleClickNode(guard.Tree(), Node(guard, 0));
    const Texts rebuilt{L"Windows Browsers (1)", L"  Browser ", L"    Title : changed",
                        L"    URL : http://one.example/"};
    EXPECT_EQ(Await(guard, rebuilt), rebuilt);
    EXPECT_TRUE(WaitUntil([&] { return one.Sinks().connected == 1; }));
}

TEST_F(TreeDesktopTest, AWindowThatClosesDuringARebuildIsNotMissed) {
    Browser& one = Open(L"one");
    Browser& two = Open(L"two");
    RunningGuard guard;
    one.BeforeRead(Property::LocationName, [&two] { two.Close(); });
    SelectNode(guard.Tree(), Node(guard, 0));
    DoubleClickNode(guard.Tree(), Node(guard, 0));
    const Texts left{L"Windows Browsers (1)", L"  Browser ", L"    Title : one",
                     L"    URL : http://one.example/"};
    EXPECT_EQ(Await(guard, left), left);
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
}

TEST_F(TreeDesktopTest, ADeadBrowserGoesWithTheNextEvent) {
    Open(L"one");
    Browser& two = Open(L"two");
    Browser& three = Open(L"three");
    RunningGuard guard;
    two.Die();
    three.Close();
    // One node goes with each event, the first that no browser answers for.
    const Texts both{L"    Title : one", L"    Title : three"};
    ASSERT_TRUE(WaitUntil([&] { return TreeNodes(guard.Tree()).size() == 7; }));
    EXPECT_EQ(TreeTexts(guard.Tree())[2], both[0]);
    EXPECT_EQ(TreeTexts(guard.Tree())[5], both[1]);
    m_desktop.FireWindowRevoked(two.Cookie());
    ASSERT_TRUE(WaitUntil([&] { return TreeNodes(guard.Tree()).size() == 4; }));
    EXPECT_EQ(TreeTexts(guard.Tree())[2], both[0]);
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
    EXPECT_TRUE(guard.EndsWell());
}

TEST_F(TreeDesktopTest, ARightClickOpensTheMenuAndSelectsNothing) {
    Open(L"one");
    Browser& two = Open(L"two", true);
    RunningGuard guard;
    SelectNode(guard.Tree(), Node(guard, 5));
    ClickNode(guard.Tree(), Node(guard, 1), true);
    const OpenMenu menu = guard.Inside().WaitMenu();
    EXPECT_EQ(menu.Captions(), (Texts{kShow, kClose}));
    ASSERT_EQ(menu.entries.size(), 2U);
    EXPECT_TRUE(menu.entries[0].isDefault);
    EXPECT_FALSE(menu.entries[1].isDefault);
    EXPECT_EQ(SelectedText(guard), L"Title : two");
    // The menu acts on the selected node, not on the one under the pointer.
    ASSERT_TRUE(guard.Inside().Choose(kClose));
    EXPECT_TRUE(two.WaitEnded());
    EXPECT_EQ(m_desktop.OpenBrowsers().size(), 1U);
    const Texts left{L"Windows Browsers (1)", L"  Browser ", L"    Title : one",
                     L"    URL : http://one.example/"};
    EXPECT_EQ(Await(guard, left), left);
}

TEST_F(TreeDesktopTest, CloseOnTheRootDoesNothing) {
    Browser& one = Open(L"one");
    RunningGuard guard;
    SelectNode(guard.Tree(), Node(guard, 0));
    ClickNode(guard.Tree(), Node(guard, 1), true);
    ASSERT_TRUE(guard.Inside().WaitMenu());
    ASSERT_TRUE(guard.Inside().Choose(kClose));
    EXPECT_TRUE(guard.WaitPosted());
    EXPECT_TRUE(WaitPosted(one));
    EXPECT_FALSE(one.Ended());
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
}

TEST_F(TreeDesktopTest, ShowBringsTheWindowToTheFront) {
    Browser& one = Open(L"one", true);
    Open(L"two", true);
    RunningGuard guard;
    ShowWindow(one.Window(), SW_MINIMIZE);
    ASSERT_TRUE(WaitUntil([&] { return IsIconic(one.Window()) != FALSE; }));
    SelectNode(guard.Tree(), Node(guard, 3));
    ClickNode(guard.Tree(), Node(guard, 0), true);
    ASSERT_TRUE(guard.Inside().WaitMenu());
    ASSERT_TRUE(guard.Inside().Choose(kShow));
    EXPECT_TRUE(WaitUntil([&] { return IsIconic(one.Window()) == FALSE; }));
    EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == one.Window(); }));
}

TEST_F(TreeDesktopTest, FiftyWindowsAreShownAndKeptUpToDate) {
    // Every rebuild asks fifty browsers of another process a dozen times each.
    constexpr DWORD kPatience = 4 * kLimit;
    std::vector<Browser*> browsers;
    browsers.reserve(50);
    for (int number = 0; number < 50; ++number) {
        browsers.push_back(&Open(L"b" + std::to_wstring(number)));
    }
    RunningGuard guard;
    EXPECT_EQ(TreeNodes(guard.Tree()).size(), 151U);
    EXPECT_EQ(TreeTexts(guard.Tree())[0], L"Windows Browsers (50)");
    for (const std::size_t closed : {49U, 25U, 0U}) {
        browsers[closed]->Close();
    }
    Open(L"new");
    ASSERT_TRUE(WaitUntil([&] { return TreeTexts(guard.Tree()).back() == L"    URL : http://new.example/"; },
                          kPatience));
    const Texts texts = TreeTexts(guard.Tree());
    ASSERT_EQ(texts.size(), 1U + 48U * 3U);
    EXPECT_EQ(texts[0], L"Windows Browsers (48)");
    EXPECT_EQ(texts[2], L"    Title : b1");
    EXPECT_EQ(texts[2 + 24 * 3], L"    Title : b26");
    DoubleClickNode(guard.Tree(), Node(guard, 0));
    // Rebuilt: the new window's node is spelled as the others.
    ASSERT_TRUE(WaitUntil(
        [&] {
            const Texts now = TreeTexts(guard.Tree());
            return now.size() == texts.size() && now[now.size() - 3] == L"  Browser ";
        },
        kPatience));
}

}  // namespace
}  // namespace kestrelguard::testing
