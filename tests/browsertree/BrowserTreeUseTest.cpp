#include "browsertree/BrowserTreeFixture.h"

namespace kestrelguard {
namespace {

TEST_F(BrowserTreeTest, ARebuildThatWaitsIsLeftBehindAndDoneAtOnce) {
    const auto first = Open(11);
    const auto second = Open(12, L"Mail");
    for (const int calls : {1, 2, 3, 4, 5}) {
        SCOPED_TRACE(calls);
        // Handle, handle and title, handle and address.
        int left = calls;
        std::function<void()> wait = [&] {
            if (--left > 0) {
                first->meanwhile = wait;
                return;
            }
            browserTree.GoOn();
            EXPECT_EQ(Seen().size(), 7U);
            const auto third = Open(13, L"Third");
            browserTree.BrowserCreated(*third);
            EXPECT_EQ(Seen().size(), 10U);
            Close(third);
            browserTree.BrowserDestroyed();
            browserTree.RefreshBrowserTree();
            EXPECT_EQ(Seen().size(), 7U);
        };
        first->meanwhile = wait;
        EXPECT_NO_THROW(browserTree.RefreshBrowserTree());
        EXPECT_EQ(left, 0);
        EXPECT_EQ(Seen(), (Picture{L"Windows Browsers (2)", L"- Browser ", L"- - Title : News",
                                   L"- - URL : http://news.example/", L"- Browser ", L"- - Title : Mail",
                                   L"- - URL : http://news.example/"}));
    }
}

TEST_F(BrowserTreeTest, WhatFailsInARebuildThatWasLeftBehindIsNotTold) {
    const auto first = Open(11);
    Open(12);
    Faults dead;
    first->meanwhile = [&] {
        browserTree.GoOn();
        dead.FailAt(0, kDied);
        first->faults = &dead;
    };
    EXPECT_NO_THROW(browserTree.RefreshBrowserTree());
    EXPECT_EQ(Seen().size(), 7U);
}

TEST_F(BrowserTreeTest, NothingIsLeftBehindOutsideARebuild) {
    Open(11);
    browserTree.RefreshBrowserTree();
    EXPECT_EQ(CallsOf([&] { browserTree.GoOn(); }), Calls{});
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

TEST_F(BrowserTreeTest, ABrowserThatSpeaksIsNotAskedForAKnownHandle) {
    const auto browser = Open(11);
    browserTree.RefreshBrowserTree();
    browser->known = true;
    EXPECT_EQ(CallsOf([&] { browserTree.SetBrowserNodeText(*browser, L"URL", L"URL : x"); }),
              Calls{L"text _11_URL 'URL : x'"});
    browser->known = false;
    EXPECT_EQ(CallsOf([&] { browserTree.SetBrowserNodeText(*browser, L"URL", L"URL : y"); }),
              (Calls{L"handle?", L"text _11_URL 'URL : y'"}));
}

TEST_F(BrowserTreeTest, AWindowThatIsGoneIsFoundByTheKnownHandles) {
    const auto staying = Open(11);
    const auto going = Open(12);
    browserTree.RefreshBrowserTree();
    staying->known = true;
    Close(going);
    const Calls calls = CallsOf([&] { browserTree.BrowserDestroyed(); });
    EXPECT_EQ(std::count(calls.begin(), calls.end(), L"handle?"), 0);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), L"remove _12"), 1);
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
