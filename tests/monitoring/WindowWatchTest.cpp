#include <set>
#include <utility>

#include "monitoring/WindowWatchFixture.h"

namespace kestrelguard::fakes {
namespace {

TEST_F(WindowWatchTest, TheStartLooksTwiceAndTellsNothing) {
    Watch({1, 2});
    EXPECT_EQ(2, desktop.connects);
    EXPECT_EQ(1, desktop.connections);
    EXPECT_EQ((Numbers{1, 1}), Sinks());
    EXPECT_EQ(2, Window(1).listens);
    EXPECT_EQ((Numbers{1, 2}), monitored.ListedNumbers());
    EXPECT_TRUE(monitored.created.empty());
    EXPECT_EQ(0, monitored.destroyed);
}

TEST_F(WindowWatchTest, SharedHandlesGetCountedKeys) {
    Watch({655412, 655412, 7, 655412, -5, -5});
    EXPECT_EQ((Keys{L"_655412_", L"_655412_1", L"_7_", L"_655412_2", L"_-5_", L"_-5_1"}), monitored.Keys());
    EXPECT_EQ(6U, monitored.ListedNumbers().size());
}

TEST_F(WindowWatchTest, TheOrderOfARebuild) {
    Watch({1, 2});
    Numbers sinksThen;
    bool listed = true;
    int connectionsThen = 0;
    desktop.inCall = [&](int) {
        if (desktop.connects == 3 && sinksThen.empty()) {
            // The new list is about to be made: all sinks are gone, the old connection listens.
            sinksThen = Sinks();
            connectionsThen = desktop.connections;
            listed = !monitored.ListedNumbers().empty();
        }
    };
    desktop.Revoked();
    EXPECT_EQ((Numbers{0, 0}), sinksThen);
    EXPECT_EQ(1, connectionsThen);
    EXPECT_TRUE(listed);  // the list is cleared later
    EXPECT_EQ((Numbers{1, 1}), Sinks());
    EXPECT_EQ(1, desktop.connections);
}

TEST_F(WindowWatchTest, ANewWindowIsToldOnceTheListHoldsIt) {
    Watch({1});
    Numbers listedThen;
    monitored.inNews = [&] { listedThen = monitored.ListedNumbers(); };
    monitored.Open();
    EXPECT_EQ(Numbers{2}, monitored.created);
    EXPECT_EQ((Numbers{1, 2}), listedThen);
    EXPECT_EQ(3, Window(1).listens);
    EXPECT_EQ(1, Window(2).listens);
}

TEST_F(WindowWatchTest, AnAnnouncementWithoutANewWindowDoesNothing) {
    Watch({1});
    desktop.Registered();
    EXPECT_EQ(2, desktop.connects);
    EXPECT_TRUE(monitored.created.empty());
}

TEST_F(WindowWatchTest, AllWindowsThatCameAreToldAtOnceAndOnlyOnce) {
    Watch({1});
    monitored.Open(false);
    monitored.Open();
    EXPECT_EQ((Numbers{2, 3}), monitored.created);
    desktop.Registered();
    EXPECT_EQ(2U, monitored.created.size());
    EXPECT_EQ(3, desktop.connects);
}

TEST_F(WindowWatchTest, AWindowThatSharesAKnownHandleIsNotNewUntilTheNextRebuild) {
    Watch({1});
    desktop.Add(1);
    desktop.Registered();
    EXPECT_TRUE(monitored.created.empty());
    EXPECT_EQ((Numbers{1, 0}), Sinks());
    monitored.Open();
    EXPECT_EQ((Numbers{3, 2}), monitored.created);
    EXPECT_EQ((Numbers{1, 1, 1}), Sinks());
}

TEST_F(WindowWatchTest, AWithdrawnWindowIsToldOnceTheListIsRid) {
    Watch({1, 2});
    Numbers listedThen;
    monitored.inNews = [&] { listedThen = monitored.ListedNumbers(); };
    Withdraw(1);
    EXPECT_EQ(1, monitored.destroyed);
    EXPECT_EQ(Numbers{2}, listedThen);
    EXPECT_EQ((Numbers{0, 1}), Sinks());
    EXPECT_EQ(0, Window(1).references);
}

TEST_F(WindowWatchTest, AWithdrawalRebuildsAndIsToldEvenWhenNothingChanged) {
    Watch({1});
    desktop.Revoked();
    EXPECT_EQ(1, monitored.destroyed);
    EXPECT_EQ(3, Window(1).listens);
}

TEST_F(WindowWatchTest, SeveralWithdrawalsInOneRebuildAreToldOneByOne) {
    Watch({1, 2, 3, 4});
    bool once = false;
    desktop.inCall = [&](int) {
        // The rebuild for the first: connected anew, nothing walked yet.
        if (desktop.connects == 3 && desktop.connections == 2 && !std::exchange(once, true)) {
            monitored.CloseWindow(Window(2));
            monitored.CloseWindow(Window(3));
        }
    };
    monitored.CloseWindow(Window(1));
    EXPECT_TRUE(once);
    EXPECT_EQ(3, monitored.destroyed);
    EXPECT_EQ(4, desktop.connects);
    EXPECT_EQ(std::set<std::int32_t>{4}, monitored.tree);
}

TEST_F(WindowWatchTest, SeveralAnnouncementsDuringARebuildShareOneMore) {
    Watch({1});
    bool once = false;
    desktop.inCall = [&](int) {
        if (desktop.connects == 3 && Window(1).listens == 3 && !std::exchange(once, true)) {
            monitored.Open();
            monitored.Open();
            monitored.CloseWindow(Window(2));
        }
    };
    monitored.Open();
    EXPECT_EQ((Numbers{2, 3, 4}), monitored.created);
    EXPECT_EQ(1, monitored.destroyed);
    EXPECT_EQ((Numbers{1, 3, 4}), monitored.ListedNumbers());
}

TEST_F(WindowWatchTest, AWindowThatOpensOrClosesInTheGapOfARebuildIsTold) {
    // At the place where once nobody listened: the sinks are down, the new connection is not made yet.
    Watch({1, 2, 3});
    bool once = false;
    desktop.inCall = [&](int) {
        if (desktop.connects == 3 && !std::exchange(once, true)) {
            monitored.Open();
            monitored.CloseWindow(Window(2));
        }
    };
    monitored.CloseWindow(Window(1));
    EXPECT_EQ(Numbers{4}, monitored.created);
    EXPECT_EQ(2, monitored.destroyed);
    EXPECT_EQ((std::set<std::int32_t>{3, 1000}), monitored.tree);
}

TEST_F(WindowWatchTest, ARefreshTellsOfWindowsWithTheirAnnouncementOnly) {
    Watch({1});
    monitored.Open(false);
    monitored.Refresh();
    EXPECT_EQ((Numbers{1, 1}), Sinks());
    EXPECT_TRUE(monitored.created.empty());
    // It may come late.
    desktop.Registered();
    EXPECT_EQ(Numbers{2}, monitored.created);
}

TEST_F(WindowWatchTest, ARebuildAskedForDuringAnotherFollowsIt) {
    auto watch =
        std::make_shared<WindowWatch>(std::shared_ptr<WatchedDesktop>(std::shared_ptr<void>(), &desktop));
    desktop.Add(1);
    watch->FirstLook();
    bool once = false;
    desktop.inCall = [&](int) {
        if (!std::exchange(once, true)) {
            watch->LoadBrowsers();
        }
    };
    watch->LoadBrowsers();
    EXPECT_EQ(3, desktop.connects);
    EXPECT_EQ(Numbers{1}, Sinks());
    watch->Close();
    // Too late for anything.
    watch->LoadBrowsers();
    EXPECT_EQ(3, desktop.connects);
}

// Costs.

TEST_F(WindowWatchTest, AnAnnouncementReadsEachHandleOnce) {
    constexpr int kWindows = 50;
    for (int i = 0; i < kWindows; ++i) {
        desktop.Add(i + 1);
    }
    monitored.On();
    for (const auto& window : desktop.Windows()) {
        window->handleReads = 0;
        window->listens = 0;
    }
    monitored.Open();
    for (const auto& window : desktop.Windows()) {
        EXPECT_EQ(1, window->handleReads) << window->number;
        EXPECT_EQ(1, window->listens) << window->number;
    }
    EXPECT_EQ(Numbers{kWindows + 1}, monitored.created);
}

TEST_F(WindowWatchTest, AThousandWindowsLeaveNothingBehind) {
    Watch({1});
    for (int i = 0; i < 1000; ++i) {
        monitored.Open();
        ASSERT_EQ(1, desktop.Windows().back()->sinks);
        monitored.CloseLast();
        ASSERT_EQ(0, desktop.Windows().back()->sinks);
        ASSERT_EQ(0, desktop.Windows().back()->references);
    }
    EXPECT_EQ(1000U, monitored.created.size());
    EXPECT_EQ(1000, monitored.destroyed);
}

TEST_F(WindowWatchTest, SwitchedOffNothingIsHeardAndTheListStays) {
    Watch({1});
    monitored.watching.SwitchOff();
    EXPECT_EQ(Numbers{0}, Sinks());
    EXPECT_EQ(0, desktop.connections);
    monitored.Open();
    EXPECT_TRUE(monitored.created.empty());
    EXPECT_EQ(Numbers{1}, monitored.ListedNumbers());
}

TEST_F(WindowWatchTest, SwitchingOnTwiceDoesNothingTheSecondTime) {
    Watch({1});
    monitored.watching.SwitchOn();
    EXPECT_EQ(2, desktop.connects);
}

}  // namespace
}  // namespace kestrelguard::fakes
