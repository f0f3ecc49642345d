#include "browsertree/BrowserTreeFixture.h"

namespace kestrelguard {
namespace {

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

}  // namespace
}  // namespace kestrelguard
