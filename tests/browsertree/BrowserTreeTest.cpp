#include "browsertree/BrowserTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "controls/Fakes.h"
#include "runtime/ErrorsIgnored.h"

namespace kestrelguard {
namespace {

constexpr std::int32_t kDied = -2147023174;  // the browser's process is gone

using Calls = std::vector<std::wstring>;

/// One line a node: what stands in the tree, details indented.
using Picture = std::vector<std::wstring>;

/// A tree that also writes down its calls.
class LoggedTree : public FakeTree {
 public:
    explicit LoggedTree(Calls& log) : m_log(log) {}
    void Clear() override {
        m_log.emplace_back(L"clear");
        FakeTree::Clear();
    }
    void Add(const std::wstring& parent, const std::wstring& key, const std::wstring& text,
             int image) override {
        m_log.push_back(L"add " + parent + L">" + key + L" '" + text + L"' " + std::to_wstring(image));
        FakeTree::Add(parent, key, text, image);
    }
    void Expand(const std::wstring& key) override {
        m_log.push_back(L"expand " + key);
        FakeTree::Expand(key);
    }
    void SetText(const std::wstring& key, const std::wstring& text) override {
        m_log.push_back(L"text " + key + L" '" + text + L"'");
        FakeTree::SetText(key, text);
    }
    void Remove(const std::wstring& key) override {
        m_log.push_back(L"remove " + key);
        FakeTree::Remove(key);
    }

 private:
    Calls& m_log;
};

/// A browser that writes down what it is asked and lets something happen meanwhile, as a call to another
/// process does.
class LoggedBrowser : public FakeBrowser {
 public:
    LoggedBrowser(Calls& log, std::int32_t window, const std::wstring& name, const std::wstring& url)
        : FakeBrowser(window), m_log(log) {
        locationName = name;
        locationURL = url;
    }
    std::int32_t Handle() const override {
        m_log.emplace_back(L"handle?");
        Meanwhile();
        return FakeBrowser::Handle();
    }
    std::wstring LocationName() const override {
        m_log.emplace_back(L"name?");
        Meanwhile();
        return FakeBrowser::LocationName();
    }
    std::wstring LocationURL() const override {
        m_log.emplace_back(L"url?");
        Meanwhile();
        return FakeBrowser::LocationURL();
    }

    /// Runs once, within the next call.
    mutable std::function<void()> meanwhile;

 private:
    void Meanwhile() const {
        if (const auto event = std::exchange(meanwhile, nullptr)) {
            event();
        }
    }
    Calls& m_log;
};

class FakeBrowserEventsControl : public BrowserEventsControl, public Fallible {
 public:
    explicit FakeBrowserEventsControl(Calls& log) : m_log(log) {}
    void SetEnabled(bool enabled) override {
        m_log.emplace_back(enabled ? L"on" : L"off");
        Call();
        on = enabled;
    }
    void Refresh() override {
        m_log.emplace_back(L"refresh");
        Call();
    }
    std::int16_t Count() const override {
        m_log.emplace_back(L"count?");
        Call();
        if (browsers.size() > 32767) {
            throw RunTimeError(RunTimeError::kOverflow);
        }
        return static_cast<std::int16_t>(browsers.size());
    }
    std::vector<std::shared_ptr<Browser>> Browsers() const override {
        m_log.emplace_back(L"browsers?");
        Call();
        return browsers;
    }
    std::vector<std::shared_ptr<Browser>> browsers;
    bool on = false;

 private:
    Calls& m_log;
};

class FakeWindowActions : public BrowserWindowActions, public Fallible {
 public:
    void ShowNormal(std::int32_t handle) override { Act(L"show ", handle); }
    void SetForeground(std::int32_t handle) override { Act(L"foreground ", handle); }
    void PostClose(std::int32_t handle) override { Act(L"close ", handle); }
    Calls done;

 private:
    void Act(const std::wstring& action, std::int32_t handle) {
        done.push_back(action + std::to_wstring(handle));
        Call();
    }
};

class FakeBrowserMenu : public BrowserMenu, public Fallible {
 public:
    void PopUp() override {
        ++opened;
        Call();
    }
    int opened = 0;
};

class BrowserTreeTest : public testing::Test {
 protected:
    BrowserTreeTest() {
        tree.faults = &faults;
        control.faults = &faults;
        actions.faults = &faults;
        menu.faults = &faults;
    }

    std::shared_ptr<LoggedBrowser> NewBrowser(std::int32_t handle, const std::wstring& name = L"News",
                                              const std::wstring& url = L"http://news.example/") {
        auto browser = std::make_shared<LoggedBrowser>(log, handle, name, url);
        browser->faults = &faults;
        return browser;
    }
    std::shared_ptr<LoggedBrowser> Open(std::int32_t handle, const std::wstring& name = L"News",
                                        const std::wstring& url = L"http://news.example/") {
        auto browser = NewBrowser(handle, name, url);
        control.browsers.push_back(browser);
        return browser;
    }
    void Close(const std::shared_ptr<Browser>& browser) { std::erase(control.browsers, browser); }

    Picture Seen() const {
        Picture picture;
        const std::function<void(const std::wstring&, const std::wstring&)> draw =
            [&](const std::wstring& parent, const std::wstring& indent) {
                for (const TreeNode& node : tree.nodes) {
                    if (node.parent == parent) {
                        picture.push_back(indent + node.text);
                        draw(node.key, indent + L"- ");
                    }
                }
            };
        draw({}, {});
        return picture;
    }

    /// The calls that `action` makes, in order.
    Calls CallsOf(const std::function<void()>& action) {
        log.clear();
        action();
        return log;
    }

    Calls log;
    Faults faults;
    LoggedTree tree{log};
    FakeBrowserEventsControl control{log};
    FakeMessageLoop messageLoop;
    FakeWindowActions actions;
    FakeBrowserMenu menu;
    BrowserTree browserTree{BrowserTree::Parts{.tvBrowsers = tree,
                                               .IEEvents1 = control,
                                               .messageLoop = messageLoop,
                                               .windows = actions,
                                               .bMnu = menu}};
};

TEST_F(BrowserTreeTest, WithoutBrowsersThereIsTheRootAlone) {
    browserTree.RefreshBrowserTree();
    EXPECT_EQ(Seen(), Picture{L"Windows Browsers (0)"});
    EXPECT_EQ(tree.nodes[0].key, L"ROOT");
    EXPECT_EQ(tree.images.at(L"ROOT"), 2);
    EXPECT_EQ(tree.expanded, std::vector<std::wstring>{L"ROOT"});
    EXPECT_TRUE(control.on);
}

TEST_F(BrowserTreeTest, ARebuildGoesStepByStep) {
    Open(11, L"News", L"http://news.example/");
    Open(-12, L"", L"about:blank");
    EXPECT_EQ(CallsOf([&] { browserTree.RefreshBrowserTree(); }),
              (Calls{L"on",
                     L"clear",
                     L"add >ROOT 'All Instances' 2",
                     L"expand ROOT",
                     L"count?",
                     L"text ROOT 'Windows Browsers (2)'",
                     L"browsers?",
                     L"handle?",
                     L"add ROOT>_11 'Browser ' 3",
                     L"expand _11",
                     L"handle?",
                     L"name?",
                     L"add _11>_11_TITLE 'Title : News' 1",
                     L"handle?",
                     L"url?",
                     L"add _11>_11_URL 'URL : http://news.example/' 1",
                     L"handle?",
                     L"add ROOT>_-12 'Browser ' 3",
                     L"expand _-12",
                     L"handle?",
                     L"name?",
                     L"add _-12>_-12_TITLE 'Title : ' 1",
                     L"handle?",
                     L"url?",
                     L"add _-12>_-12_URL 'URL : about:blank' 1"}));
}

TEST_F(BrowserTreeTest, ARebuildDropsWhatWasThere) {
    const auto gone = Open(11);
    browserTree.RefreshBrowserTree();
    Close(gone);
    Open(12, L"Mail", L"http://mail.example/");
    browserTree.RefreshBrowserTree();
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (1)", L"- Browser ", L"- - Title : Mail",
                               L"- - URL : http://mail.example/"}));
}

TEST_F(BrowserTreeTest, AFailureOfAnyStepOfARebuildReachesTheCaller) {
    Open(11);
    Open(12);
    faults.FailAt(-1, 0);
    browserTree.RefreshBrowserTree();
    const int calls = faults.Calls();
    ASSERT_EQ(calls, 7 + 2 * 8 + 2);
    for (int position = 0; position < calls; ++position) {
        faults.FailAt(position, kDied);
        EXPECT_EQ(ErrorOf([&] { browserTree.RefreshBrowserTree(); }), kDied) << position;
        // Nothing ran after the failing step.
        EXPECT_EQ(faults.Calls(), position + 1);
    }
    // And a later one works.
    faults.FailAt(-1, 0);
    browserTree.RefreshBrowserTree();
    EXPECT_EQ(Seen().size(), 7U);
}

TEST_F(BrowserTreeTest, TwoBrowsersWithOneHandleFailARebuild) {
    Open(11);
    Open(11);
    EXPECT_EQ(ErrorOf([&] { browserTree.RefreshBrowserTree(); }), RunTimeError::kKeyNotUnique);
}

TEST_F(BrowserTreeTest, MoreBrowsersThanTheCountHoldsFailARebuild) {
    control.browsers.resize(32768);
    EXPECT_EQ(ErrorOf([&] { browserTree.RefreshBrowserTree(); }), RunTimeError::kOverflow);
    EXPECT_EQ(Seen(), Picture{L"All Instances"});
}

/// The event adds its nodes itself, in its own spelling; the rebuild goes on with the windows that it found.
TEST_F(BrowserTreeTest, AWindowThatComesDuringARebuildIsAddedByItsEvent) {
    const auto first = Open(11);
    first->meanwhile = [&] { browserTree.BrowserCreated(*Open(12)); };
    log.clear();
    browserTree.RefreshBrowserTree();
    EXPECT_EQ(std::count(log.begin(), log.end(), L"clear"), 1);
    const Picture seen = Seen();
    EXPECT_EQ(std::count(seen.begin(), seen.end(), L"- Browser"), 1);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), L"- Browser "), 1);
    EXPECT_EQ(seen.size(), 7U);
    EXPECT_EQ(seen.front(), L"Windows Browsers (2)");
}

/// A window that the rebuild will come to was added by its event: one node, in the event's spelling.
TEST_F(BrowserTreeTest, ANodeThatAnEventAddedFirstIsLeftAsItIs) {
    const auto first = Open(11);
    const auto second = Open(12);
    first->meanwhile = [&] { browserTree.BrowserCreated(*second); };
    browserTree.RefreshBrowserTree();
    const Picture seen = Seen();
    EXPECT_EQ(std::count(seen.begin(), seen.end(), L"- Browser"), 1);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), L"- Browser "), 1);
    EXPECT_EQ(seen.size(), 7U);
}

TEST_F(BrowserTreeTest, AWindowThatDiesDuringARebuildFailsIt) {
    const auto first = Open(11);
    const auto second = Open(12);
    Faults dead;
    first->meanwhile = [&] {
        Close(second);
        dead.FailAt(0, kDied);
        second->faults = &dead;
        browserTree.BrowserDestroyed();
    };
    try {
        browserTree.RefreshBrowserTree();
        ADD_FAILURE();
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), kDied);
    }
    // The event has done its own part: the count.
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (1)", L"- Browser ", L"- - Title : News",
                               L"- - URL : http://news.example/"}));
}

/// The first window's node is there when the window goes, and goes with its event; the rebuild goes on.
TEST_F(BrowserTreeTest, AWindowThatWasBuiltAndGoesDuringARebuildIsRemovedByItsEvent) {
    const auto first = Open(11);
    const auto second = Open(12);
    second->meanwhile = [&] {
        Close(first);
        browserTree.BrowserDestroyed();
    };
    browserTree.RefreshBrowserTree();
    EXPECT_EQ(std::count(log.begin(), log.end(), L"clear"), 1);
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (1)", L"- Browser ", L"- - Title : News",
                               L"- - URL : http://news.example/"}));
}

/// A rebuild asked for in between runs, and does not hide that the first one failed.
TEST_F(BrowserTreeTest, ARebuildWithinAFailingOneIsDoneAndTheFailureTold) {
    const auto first = Open(11);
    Faults dead;
    first->meanwhile = [&] {
        browserTree.RefreshBrowserTree();
        dead.FailAt(0, kDied);
        first->faults = &dead;
    };
    try {
        browserTree.RefreshBrowserTree();
        ADD_FAILURE();
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), kDied);
    }
    EXPECT_EQ(Seen().size(), 4U);
}

TEST_F(BrowserTreeTest, ARebuildIsNeverEnteredTwice) {
    const auto first = Open(11);
    first->meanwhile = [&] {
        const std::size_t before = log.size();
        browserTree.RefreshBrowserTree();
        EXPECT_EQ(log.size(), before);
    };
    browserTree.RefreshBrowserTree();
    EXPECT_EQ(Seen().size(), 4U);
}

TEST_F(BrowserTreeTest, ACreatedBrowserIsAddedStepByStep) {
    browserTree.RefreshBrowserTree();
    const auto browser = Open(11);
    EXPECT_EQ(CallsOf([&] { browserTree.BrowserCreated(*browser); }),
              (Calls{L"count?", L"text ROOT 'Windows Browsers (1)'", L"handle?", L"add ROOT>_11 'Browser' 3",
                     L"expand _11", L"handle?", L"name?", L"add _11>_11_TITLE 'Title : News' 1", L"handle?",
                     L"url?", L"add _11>_11_URL 'URL : http://news.example/' 1"}));
}

TEST_F(BrowserTreeTest, ARebuildAndAnEventSpellTheNodeDifferently) {
    Open(11);
    browserTree.RefreshBrowserTree();
    browserTree.BrowserCreated(*Open(12));
    EXPECT_EQ(tree.nodes[1].text, L"Browser ");
    EXPECT_EQ(tree.nodes[4].text, L"Browser");
}

TEST_F(BrowserTreeTest, ACreatedBrowserThatIsThereAlreadyAddsNothing) {
    const auto browser = Open(11);
    browserTree.RefreshBrowserTree();
    Open(12);
    const std::size_t expansions = tree.expanded.size();
    browserTree.BrowserCreated(*browser);
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (2)", L"- Browser ", L"- - Title : News",
                               L"- - URL : http://news.example/"}));
    EXPECT_EQ(tree.expanded.size(), expansions);
}

TEST_F(BrowserTreeTest, EachFailingStepOfACreatedBrowserIsSkippedAndTheNextOneRuns) {
    const std::wstring oldRoot = L"Windows Browsers (0)";
    const std::wstring newRoot = L"Windows Browsers (1)";
    const std::wstring node = L"- Browser";
    const std::wstring title = L"- - Title : News";
    const std::wstring url = L"- - URL : http://news.example/";
    const std::vector<Picture> expected{
        {oldRoot, node, title, url},  // count
        {oldRoot, node, title, url},  // root's text
        {newRoot},                    // handle: without the node its details have no parent
        {newRoot},                    // node
        {newRoot, node, title, url},  // expansion
        {newRoot, node, url},         // handle
        {newRoot, node, url},         // title
        {newRoot, node, url},         // title node
        {newRoot, node, title},       // handle
        {newRoot, node, title},       // address
        {newRoot, node, title},       // address node
    };
    const auto browser = NewBrowser(11);
    for (std::size_t position = 0; position < expected.size(); ++position) {
        control.browsers.clear();
        faults.FailAt(-1, 0);
        browserTree.RefreshBrowserTree();
        control.browsers.push_back(browser);
        faults.FailAt(static_cast<int>(position), kDied);
        EXPECT_EQ(ErrorOf([&] { browserTree.BrowserCreated(*browser); }), 0);
        EXPECT_TRUE(faults.Hit()) << position;
        faults.FailAt(-1, 0);
        EXPECT_EQ(Seen(), expected[position]) << position;
    }
}

TEST_F(BrowserTreeTest, ADeadBrowserYieldsNoNodesButTheCountIsRight) {
    browserTree.RefreshBrowserTree();
    const auto browser = Open(11);
    Faults dead;
    browser->faults = &dead;
    for (int position = 0; position < 5; ++position) {
        dead.FailAt(0, kDied);
        browserTree.BrowserCreated(*browser);
    }
    EXPECT_EQ(tree.nodes[0].text, L"Windows Browsers (1)");
}

TEST_F(BrowserTreeTest, TooManyBrowsersLeaveTheCountTextAsItWas) {
    browserTree.RefreshBrowserTree();
    const auto browser = NewBrowser(11);
    control.browsers.resize(32768);
    browserTree.BrowserCreated(*browser);
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (0)", L"- Browser", L"- - Title : News",
                               L"- - URL : http://news.example/"}));
}

TEST_F(BrowserTreeTest, AClosedWindowsNodesDisappear) {
    const auto first = Open(11, L"News");
    Open(12, L"Mail");
    browserTree.RefreshBrowserTree();
    Close(first);
    browserTree.BrowserDestroyed();
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (1)", L"- Browser ", L"- - Title : Mail",
                               L"- - URL : http://news.example/"}));
}

TEST_F(BrowserTreeTest, OneNodeAtMostGoesWithEachEvent) {
    Open(11);
    Open(12);
    Open(13);
    browserTree.RefreshBrowserTree();
    control.browsers.clear();
    browserTree.BrowserDestroyed();
    EXPECT_EQ(Seen().size(), 7U);
    EXPECT_EQ(tree.nodes[1].key, L"_12");
    EXPECT_EQ(tree.nodes[0].text, L"Windows Browsers (0)");
    browserTree.BrowserDestroyed();
    browserTree.BrowserDestroyed();
    EXPECT_EQ(Seen(), Picture{L"Windows Browsers (0)"});
    browserTree.BrowserDestroyed();
    EXPECT_EQ(Seen(), Picture{L"Windows Browsers (0)"});
}

TEST_F(BrowserTreeTest, WhenEveryNodeIsLiveNothingIsRemoved) {
    Open(11);
    Open(12);
    browserTree.RefreshBrowserTree();
    browserTree.BrowserDestroyed();
    EXPECT_EQ(Seen().size(), 7U);
}

TEST_F(BrowserTreeTest, EachHandleIsReadOnceForAllNodes) {
    for (std::int32_t handle = 1; handle <= 50; ++handle) {
        Open(handle);
    }
    browserTree.RefreshBrowserTree();
    Close(control.browsers.back());
    const Calls calls = CallsOf([&] { browserTree.BrowserDestroyed(); });
    EXPECT_EQ(std::count(calls.begin(), calls.end(), L"handle?"), 49);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), L"remove _50"), 1);
}

TEST_F(BrowserTreeTest, EachFailingStepOfADestroyedBrowserIsSkipped) {
    struct Expected {
        const wchar_t* root;
        std::size_t nodes;
    };
    const std::vector<Expected> expected{
        {L"Windows Browsers (2)", 4},  // count
        {L"Windows Browsers (2)", 4},  // root's text
        {L"Windows Browsers (1)", 7},  // list of browsers
        {L"Windows Browsers (1)", 7},  // nodes
        {L"Windows Browsers (1)", 4},  // handle: this browser matches none, the first of the two goes
        {L"Windows Browsers (1)", 7},  // nodes
        {L"Windows Browsers (1)", 7},  // removal
    };
    const auto first = NewBrowser(11);
    const auto second = NewBrowser(12);
    for (std::size_t position = 0; position < expected.size(); ++position) {
        control.browsers = {first, second};
        faults.FailAt(-1, 0);
        browserTree.RefreshBrowserTree();
        control.browsers = {second};
        faults.FailAt(static_cast<int>(position), kDied);
        EXPECT_EQ(ErrorOf([&] { browserTree.BrowserDestroyed(); }), 0);
        EXPECT_TRUE(faults.Hit()) << position;
        faults.FailAt(-1, 0);
        EXPECT_EQ(tree.nodes[0].text, expected[position].root) << position;
        EXPECT_EQ(Seen().size(), expected[position].nodes) << position;
    }
}

TEST_F(BrowserTreeTest, AWindowThatComesWhileAGoneOneIsLookedForStays) {
    const auto first = Open(11);
    const auto second = Open(12);
    browserTree.RefreshBrowserTree();
    Close(second);
    first->meanwhile = [&] { browserTree.BrowserCreated(*Open(13)); };
    browserTree.BrowserDestroyed();
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (2)", L"- Browser ", L"- - Title : News",
                               L"- - URL : http://news.example/", L"- Browser", L"- - Title : News",
                               L"- - URL : http://news.example/"}));
    EXPECT_EQ(tree.nodes.back().key, L"_13_URL");
}

TEST_F(BrowserTreeTest, TwoWindowsThatGoOneWithinTheOtherAreBothRemoved) {
    const auto first = Open(11);
    const auto second = Open(12);
    const auto third = Open(13);
    browserTree.RefreshBrowserTree();
    Close(second);
    first->meanwhile = [&] {
        Close(third);
        browserTree.BrowserDestroyed();
    };
    browserTree.BrowserDestroyed();
    EXPECT_EQ(Seen().size(), 4U);
    EXPECT_EQ(tree.nodes[1].key, L"_11");
}

TEST_F(BrowserTreeTest, NavigationAndTitleChangeTheDetails) {
    const auto browser = Open(11);
    browserTree.RefreshBrowserTree();
    browserTree.SetBrowserNodeText(*browser, L"URL", L"URL : http://mail.example/");
    browserTree.SetBrowserNodeText(*browser, L"TITLE", L"Title : Mail");
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (1)", L"- Browser ", L"- - Title : Mail",
                               L"- - URL : http://mail.example/"}));
}

TEST_F(BrowserTreeTest, TheTextOfAnUnknownBrowserChangesNothing) {
    Open(11);
    browserTree.RefreshBrowserTree();
    const Picture before = Seen();
    browserTree.SetBrowserNodeText(*NewBrowser(12), L"URL", L"URL : x");
    browserTree.SetBrowserNodeText(*NewBrowser(11), L"OTHER", L"x");
    EXPECT_EQ(Seen(), before);
}

TEST_F(BrowserTreeTest, ATextsErrorsAreIgnored) {
    const auto browser = Open(11);
    browserTree.RefreshBrowserTree();
    const Picture before = Seen();
    for (int position = 0; position < 2; ++position) {
        faults.FailAt(position, kDied);
        EXPECT_EQ(ErrorOf([&] { browserTree.SetBrowserNodeText(*browser, L"URL", L"x"); }), 0);
        EXPECT_TRUE(faults.Hit());
    }
    EXPECT_EQ(Seen(), before);
}

TEST_F(BrowserTreeTest, AClickOnTheRootRestartsTheWatcher) {
    Open(11);
    browserTree.RefreshBrowserTree();
    tree.selected = L"ROOT";
    EXPECT_EQ(CallsOf([&] { browserTree.tvBrowsers_Click(); }), Calls{L"refresh"});
    EXPECT_EQ(messageLoop.runs, 1);
    EXPECT_EQ(Seen().size(), 4U);
}

TEST_F(BrowserTreeTest, AClickElsewhereOrNowhereDoesNothing) {
    Open(11);
    browserTree.RefreshBrowserTree();
    for (const wchar_t* selected : {L"_11", L"_11_TITLE", L"_11_URL", L""}) {
        tree.selected = selected;
        EXPECT_EQ(CallsOf([&] {
                      browserTree.tvBrowsers_Click();
                      browserTree.tvBrowsers_DblClick();
                  }),
                  Calls{});
    }
    EXPECT_EQ(messageLoop.runs, 0);
}

TEST_F(BrowserTreeTest, TheRootIsKnownByItsTextInItsExactCase) {
    Open(11, L"About Windows Browsers and more");
    Open(12, L"windows browsers");
    browserTree.RefreshBrowserTree();
    tree.selected = L"_11_TITLE";
    EXPECT_EQ(CallsOf([&] { browserTree.tvBrowsers_Click(); }), Calls{L"refresh"});
    tree.selected = L"_12_TITLE";
    EXPECT_EQ(CallsOf([&] { browserTree.tvBrowsers_Click(); }), Calls{});
}

TEST_F(BrowserTreeTest, AFailingRefreshStillLetsEventsRun) {
    browserTree.RefreshBrowserTree();
    tree.selected = L"ROOT";
    faults.FailAt(1, kDied);
    EXPECT_EQ(ErrorOf([&] { browserTree.tvBrowsers_Click(); }), 0);
    EXPECT_TRUE(faults.Hit());
    EXPECT_EQ(messageLoop.runs, 1);
    // Without knowing what is selected there is nothing to do.
    faults.FailAt(0, kDied);
    EXPECT_EQ(ErrorOf([&] { browserTree.tvBrowsers_Click(); }), 0);
    EXPECT_EQ(messageLoop.runs, 1);
}

TEST_F(BrowserTreeTest, EventsThatRunAfterAClickFindTheTreeReady) {
    browserTree.RefreshBrowserTree();
    tree.selected = L"ROOT";
    messageLoop.pending = [&] { browserTree.BrowserCreated(*Open(11)); };
    browserTree.tvBrowsers_DblClick();
    EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (1)", L"- Browser", L"- - Title : News",
                               L"- - URL : http://news.example/"}));
}

TEST_F(BrowserTreeTest, ADoubleClickOnTheRootRebuildsFromScratch) {
    browserTree.RefreshBrowserTree();
    Open(11);
    tree.selected = L"ROOT";
    const Calls calls = CallsOf([&] { browserTree.tvBrowsers_DblClick(); });
    ASSERT_GE(calls.size(), 3U);
    EXPECT_EQ(Calls(calls.begin(), calls.begin() + 3), (Calls{L"off", L"on", L"clear"}));
    EXPECT_EQ(messageLoop.runs, 1);
    EXPECT_EQ(Seen().size(), 4U);
}

TEST_F(BrowserTreeTest, ADoubleClicksErrorsAreIgnoredStepByStep) {
    Open(11);
    browserTree.RefreshBrowserTree();
    tree.selected = L"ROOT";
    faults.FailAt(-1, 0);
    browserTree.tvBrowsers_DblClick();
    const int calls = faults.Calls();
    ASSERT_EQ(calls, 2 + 7 + 9);
    for (int position = 0; position < calls; ++position) {
        faults.FailAt(-1, 0);
        browserTree.RefreshBrowserTree();
        tree.selected = L"ROOT";
        messageLoop.runs = 0;
        log.clear();
        faults.FailAt(position, kDied);
        EXPECT_EQ(ErrorOf([&] { browserTree.tvBrowsers_DblClick(); }), 0);
        EXPECT_TRUE(faults.Hit()) << position;
        EXPECT_EQ(messageLoop.runs, position == 0 ? 0 : 1) << position;
        if (position == 1) {
            // Switching off failed; the rebuild ran all the same.
            EXPECT_EQ(faults.Calls(), calls);
        }
    }
}

TEST_F(BrowserTreeTest, OnlyTheRightButtonOpensTheMenuAndTheSelectionStays) {
    Open(11);
    browserTree.RefreshBrowserTree();
    tree.selected = L"_11_URL";
    for (const int button : {0, 1, 3, 4}) {
        browserTree.tvBrowsers_MouseDown(button);
    }
    EXPECT_EQ(menu.opened, 0);
    browserTree.tvBrowsers_MouseDown(2);
    EXPECT_EQ(menu.opened, 1);
    EXPECT_EQ(tree.selected, L"_11_URL");
    faults.FailAt(0, kDied);
    EXPECT_EQ(ErrorOf([&] { browserTree.tvBrowsers_MouseDown(2); }), 0);
}

TEST_F(BrowserTreeTest, TheMenuActsOnTheSelectedNodesWindow) {
    Open(-77);
    browserTree.RefreshBrowserTree();
    for (const wchar_t* selected : {L"_-77", L"_-77_TITLE", L"_-77_URL"}) {
        tree.selected = selected;
        actions.done.clear();
        browserTree.mnuSB_Click();
        EXPECT_EQ(actions.done, (Calls{L"show -77", L"foreground -77"}));
        actions.done.clear();
        browserTree.mnuCB_Click();
        EXPECT_EQ(actions.done, Calls{L"close -77"});
    }
}

TEST_F(BrowserTreeTest, TheMenuDoesNothingOnTheRootOrWithoutSelection) {
    browserTree.RefreshBrowserTree();
    for (const wchar_t* selected : {L"ROOT", L""}) {
        tree.selected = selected;
        browserTree.mnuSB_Click();
        browserTree.mnuCB_Click();
    }
    EXPECT_TRUE(actions.done.empty());
}

TEST_F(BrowserTreeTest, TheMenusErrorsAreIgnoredStepByStep) {
    Open(11);
    browserTree.RefreshBrowserTree();
    tree.selected = L"_11";
    for (int position = 0; position < 3; ++position) {
        actions.done.clear();
        faults.FailAt(position, kDied);
        EXPECT_EQ(ErrorOf([&] { browserTree.mnuSB_Click(); }), 0);
        EXPECT_TRUE(faults.Hit());
        EXPECT_EQ(actions.done, position == 0 ? Calls{} : (Calls{L"show 11", L"foreground 11"}));
    }
    for (int position = 0; position < 2; ++position) {
        actions.done.clear();
        faults.FailAt(position, kDied);
        EXPECT_EQ(ErrorOf([&] { browserTree.mnuCB_Click(); }), 0);
        EXPECT_TRUE(faults.Hit());
        EXPECT_EQ(actions.done, position == 0 ? Calls{} : Calls{L"close 11"});
    }
}

TEST_F(BrowserTreeTest, AHandleThatIsNo32BitNumberIsIgnored) {
    browserTree.RefreshBrowserTree();
    tree.FakeTree::Add(L"ROOT", L"_99999999999", L"x", 3);
    tree.selected = L"_99999999999";
    EXPECT_EQ(ErrorOf([&] {
                  browserTree.mnuSB_Click();
                  browserTree.mnuCB_Click();
              }),
              0);
    EXPECT_TRUE(actions.done.empty());
}

}  // namespace
}  // namespace kestrelguard
