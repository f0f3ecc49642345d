#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "monitoring/FakeWatchedDesktop.h"

namespace kestrelguard::fakes {
namespace {

using Keys = std::vector<std::wstring>;
using Numbers = std::vector<int>;

class WindowWatchTest : public testing::Test {
 protected:
    void TearDown() override {
        desktop.inCall = nullptr;
        monitored.inNews = nullptr;
    }
    /// Adds windows with these handles, and switches on.
    void Watch(std::initializer_list<std::int32_t> handles) {
        for (const std::int32_t handle : handles) {
            desktop.Add(handle);
        }
        monitored.On();
    }
    WindowState& Window(int number) { return *desktop.Windows()[static_cast<std::size_t>(number - 1)]; }
    int Reads() const {
        return std::accumulate(desktop.Windows().begin(), desktop.Windows().end(), 0,
                               [](int sum, const auto& window) { return sum + window->handleReads; });
    }
    Numbers Sinks() const {
        Numbers sinks;
        for (const auto& window : desktop.Windows()) {
            sinks.push_back(window->sinks);
        }
        return sinks;
    }
    void Withdraw(int number) {
        Window(number).listed = false;
        desktop.Revoked();
    }

    Desktop desktop;
    Monitored monitored{desktop};
};

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

// Failures.

TEST_F(WindowWatchTest, AFailureBeforeTheFirstKeyGoesToTheCaller) {
    desktop.Add(1);
    for (const auto& fail : std::vector<std::function<void()>>{[&] { desktop.shellFailures = 1; },
                                                               [&] { Window(1).failures = 1; },
                                                               [&] { desktop.strangers = {0}; }}) {
        fail();
        EXPECT_THROW(monitored.watching.SwitchOn(), RunTimeError);
        EXPECT_FALSE(monitored.watching.On());
        EXPECT_EQ(0, desktop.connections);
        EXPECT_EQ(Numbers{0}, Sinks());
        desktop.strangers.clear();
        Window(1).failures = 0;
    }
    // The handle, which is read after the sink is there.
    int asked = 0;
    desktop.inCall = [&](int) {
        if (Window(1).sinks == 1 && asked++ == 0) {
            Window(1).failures = 1;
        }
    };
    EXPECT_THROW(monitored.watching.SwitchOn(), RunTimeError);
    EXPECT_EQ(Numbers{0}, Sinks());
}

TEST_F(WindowWatchTest, AnEmptyEntryEndsTheWalk) {
    desktop.empties = {1};
    Watch({1, 2, 3});
    EXPECT_EQ(Numbers{1}, monitored.ListedNumbers());
    // Announcements look no further, either.
    desktop.Registered();
    EXPECT_TRUE(monitored.created.empty());
}

TEST_F(WindowWatchTest, ALaterWindowThatRefusesEndsTheWalkUntilTheNextRebuild) {
    desktop.Add(1);
    desktop.Add(2).get()->failures = 2;
    Watch({3});
    EXPECT_EQ(Numbers{1}, monitored.ListedNumbers());
    EXPECT_EQ((Numbers{1, 0, 0}), Sinks());
    desktop.Registered();
    EXPECT_EQ((Numbers{2, 3}), monitored.created);
    EXPECT_EQ((Numbers{1, 1, 1}), Sinks());
}

TEST_F(WindowWatchTest, ALaterWindowWithoutAHandleIsListedButHasNoSink) {
    Watch({1, 2, 3});
    const int readsBefore = Window(2).handleReads;
    bool mute = false;
    desktop.inCall = [&](int) {
        if (Window(2).handleReads > readsBefore && !std::exchange(mute, true)) {
            Window(2).failures = 1;
        }
    };
    desktop.Revoked();
    desktop.inCall = nullptr;
    EXPECT_EQ((Numbers{1, 2, 3}), monitored.ListedNumbers());
    EXPECT_EQ((Keys{L"_1_", L"_3_"}), monitored.Keys());
    EXPECT_EQ((Numbers{1, 0, 1}), Sinks());
}

TEST_F(WindowWatchTest, AnObjectThatIsNoBrowserIsPassedOver) {
    desktop.strangers = {1};
    Watch({1, 2, 3});
    EXPECT_EQ((Numbers{1, 3}), monitored.ListedNumbers());
    monitored.Open();
    EXPECT_EQ(Numbers{4}, monitored.created);
}

TEST_F(WindowWatchTest, AWindowBehindADeadSinkIsJudgedNew) {
    Watch({1, 2, 3});
    Window(2).dead = true;
    Window(2).listed = false;
    desktop.Registered();
    EXPECT_EQ(Numbers{3}, monitored.created);
    EXPECT_EQ((Numbers{1, 0, 1}), Sinks());
}

TEST_F(WindowWatchTest, AFailedRebuildIsMadeUpForByTheNextOne) {
    Watch({1, 2});
    Window(2).listed = false;
    Window(1).failures = 1;
    desktop.Revoked();
    EXPECT_EQ(1, desktop.failedAnnouncements);
    EXPECT_EQ(0, monitored.destroyed);
    EXPECT_TRUE(monitored.ListedNumbers().empty());
    EXPECT_EQ(1, desktop.connections);
    desktop.Registered();
    EXPECT_EQ(Numbers{1}, monitored.created);
    // The one that went is told now.
    EXPECT_EQ(1, monitored.destroyed);
    EXPECT_EQ((Numbers{1, 0}), Sinks());
}

TEST_F(WindowWatchTest, AFailedConnectionKeepsTheOldOne) {
    Watch({1});
    desktop.shellFailures = 1;
    desktop.Revoked();
    EXPECT_EQ(1, desktop.failedAnnouncements);
    EXPECT_EQ(1, desktop.connections);
    EXPECT_EQ(Numbers{0}, Sinks());
    monitored.Open();
    EXPECT_EQ((Numbers{1, 1}), Sinks());
}

TEST_F(WindowWatchTest, AnErrorInOneHandlerDoesNotKeepTheOtherNewsBack) {
    Watch({1});
    monitored.inNews = [&] {
        if (monitored.created.size() == 1) {
            throw RunTimeError(RunTimeError::kInvalidCall);
        }
    };
    monitored.Open(false);
    monitored.Open();
    EXPECT_EQ((Numbers{2, 3}), monitored.created);
    EXPECT_EQ(1, desktop.failedAnnouncements);
}

TEST_F(WindowWatchTest, AnAnnouncementInsideItsOwnNewsIsHandledAtOnce) {
    Watch({1});
    bool once = false;
    monitored.inNews = [&] {
        if (!std::exchange(once, true)) {
            monitored.Open();
            EXPECT_EQ(3U, monitored.ListedNumbers().size());
        }
    };
    monitored.Open();
    EXPECT_EQ((Numbers{2, 3}), monitored.created);
}

TEST_F(WindowWatchTest, ARefreshInsideTheNewsGoesOnTelling) {
    Watch({1});
    bool once = false;
    monitored.inNews = [&] {
        if (!std::exchange(once, true)) {
            monitored.Refresh();
        }
    };
    monitored.Open(false);
    monitored.Open();
    EXPECT_EQ((Numbers{2, 3}), monitored.created);
    EXPECT_EQ((Numbers{1, 1, 1}), Sinks());
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
