// What fails on the desktop, what handlers throw, and what they do to the watch themselves.

#include <functional>
#include <utility>
#include <vector>

#include "monitoring/WindowWatchFixture.h"

namespace kestrelguard::fakes {
namespace {

class WindowWatchFailureTest : public WindowWatchTest {};

TEST_F(WindowWatchFailureTest, AFailureBeforeTheFirstKeyGoesToTheCaller) {
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

TEST_F(WindowWatchFailureTest, AnEmptyEntryEndsTheWalk) {
    desktop.empties = {1};
    Watch({1, 2, 3});
    EXPECT_EQ(Numbers{1}, monitored.ListedNumbers());
    // Announcements look no further, either.
    desktop.Registered();
    EXPECT_TRUE(monitored.created.empty());
}

TEST_F(WindowWatchFailureTest, ALaterWindowThatRefusesEndsTheWalkUntilTheNextRebuild) {
    desktop.Add(1);
    desktop.Add(2).get()->failures = 2;
    Watch({3});
    EXPECT_EQ(Numbers{1}, monitored.ListedNumbers());
    EXPECT_EQ((Numbers{1, 0, 0}), Sinks());
    desktop.Registered();
    EXPECT_EQ((Numbers{2, 3}), monitored.created);
    EXPECT_EQ((Numbers{1, 1, 1}), Sinks());
}

TEST_F(WindowWatchFailureTest, ALaterWindowWithoutAHandleIsListedButHasNoSink) {
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

TEST_F(WindowWatchFailureTest, AnObjectThatIsNoBrowserIsPassedOver) {
    desktop.strangers = {1};
    Watch({1, 2, 3});
    EXPECT_EQ((Numbers{1, 3}), monitored.ListedNumbers());
    monitored.Open();
    EXPECT_EQ(Numbers{4}, monitored.created);
}

TEST_F(WindowWatchFailureTest, AWindowBehindADeadSinkIsJudgedNew) {
    Watch({1, 2, 3});
    Window(2).dead = true;
    Window(2).listed = false;
    desktop.Registered();
    EXPECT_EQ(Numbers{3}, monitored.created);
    EXPECT_EQ((Numbers{1, 0, 1}), Sinks());
}

TEST_F(WindowWatchFailureTest, AFailedRebuildIsMadeUpForByTheNextOne) {
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

TEST_F(WindowWatchFailureTest, AFailedConnectionKeepsTheOldOne) {
    Watch({1});
    desktop.shellFailures = 1;
    desktop.Revoked();
    EXPECT_EQ(1, desktop.failedAnnouncements);
    EXPECT_EQ(1, desktop.connections);
    EXPECT_EQ(Numbers{0}, Sinks());
    monitored.Open();
    EXPECT_EQ((Numbers{1, 1}), Sinks());
}

TEST_F(WindowWatchFailureTest, AFailedRebuildIsTriedAgainInAWhile) {
    Watch({1, 2});
    desktop.shellFailures = 1;
    Withdraw(1);
    EXPECT_EQ(1, desktop.failedAnnouncements);
    // Nobody says a word any more, whatever comes and goes.
    Window(2).listed = false;
    desktop.Add(3);
    desktop.shellFailures = 1;
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ((Numbers{0, 0, 0}), Sinks());
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ((Numbers{0, 0, 1}), Sinks());
    EXPECT_EQ(Numbers{3}, monitored.created);
    EXPECT_EQ(2, monitored.destroyed);
    EXPECT_FALSE(desktop.Remind());
}

TEST_F(WindowWatchFailureTest, AnAnnouncementThatFindsNobodyLeavesAFailedRebuildToBeTriedAgain) {
    Watch({1});
    bool once = false;
    desktop.inCall = [&](int) {
        // The new connection stands: the walk over it fails.
        if (desktop.connections == 2 && !std::exchange(once, true)) {
            desktop.shellFailures = 1;
        }
    };
    Withdraw(1);
    EXPECT_EQ(1, desktop.failedAnnouncements);
    desktop.Registered();
    EXPECT_EQ(0, monitored.destroyed);
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ(1, monitored.destroyed);
    EXPECT_FALSE(desktop.Remind());
}

TEST_F(WindowWatchFailureTest, AFailedSearchIsMadeUpForInAWhile) {
    Watch({1});
    desktop.shellFailures = 1;
    monitored.Open();
    EXPECT_EQ(1, desktop.failedAnnouncements);
    EXPECT_EQ((Numbers{1, 0}), Sinks());
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ((Numbers{1, 1}), Sinks());
    EXPECT_EQ(Numbers{2}, monitored.created);
    EXPECT_FALSE(desktop.Remind());
}

TEST_F(WindowWatchFailureTest, AnErrorInOneHandlerDoesNotKeepTheOtherNewsBack) {
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

TEST_F(WindowWatchFailureTest, AnAnnouncementInsideItsOwnNewsIsHandledAtOnce) {
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

TEST_F(WindowWatchFailureTest, ARefreshInsideTheNewsGoesOnTelling) {
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

}  // namespace
}  // namespace kestrelguard::fakes
