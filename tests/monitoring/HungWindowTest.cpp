// A window that does not answer: it is never called, and nobody else minds.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "monitoring/Monitored.h"

namespace kestrelguard::fakes {
namespace {

class HungWindowTest : public testing::Test {
 protected:
    ~HungWindowTest() override {
        for (const auto& window : desktop.Windows()) {
            EXPECT_EQ(0, window->waits) << "window " << window->number;
            window->hung = false;
        }
    }
    void Watch(int windows) {
        for (int i = 1; i <= windows; ++i) {
            desktop.Add(i);
        }
        monitored.On();
    }
    WindowState& Window(int number) { return *desktop.Windows()[static_cast<std::size_t>(number - 1)]; }

    Desktop desktop;
    Monitored monitored{desktop};
};

TEST_F(HungWindowTest, OthersComeAndGoAndItKeepsItsPlace) {
    for (const int hung : {1, 2, 3}) {
        SCOPED_TRACE(hung);
        Desktop desk;
        Monitored watched(desk);
        for (int i = 1; i <= 3; ++i) {
            desk.Add(i);
        }
        watched.On();
        WindowState& window = *desk.Windows()[static_cast<std::size_t>(hung - 1)];
        window.hung = true;
        const auto keys = watched.Keys();
        watched.Open();
        EXPECT_EQ(std::vector<int>{4}, watched.created);
        EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), watched.ListedNumbers());
        watched.CloseLast();
        EXPECT_EQ(1, watched.destroyed);
        EXPECT_EQ(keys, watched.Keys());
        EXPECT_EQ(1, window.sinks);
        EXPECT_EQ(2, window.listens);
        // It answers again: the next announcement finds everything in order, and renews its sink.
        window.hung = false;
        watched.Open();
        EXPECT_EQ((std::vector<int>{4, 5}), watched.created);
        EXPECT_EQ(1, window.sinks);
        EXPECT_EQ(3, window.listens);
        EXPECT_EQ(0, window.waits);
    }
}

TEST_F(HungWindowTest, OneThatAnswersInTheMidstOfARebuildNeverHasTwoSinks) {
    bool answered = true;
    for (int place = 0; answered; ++place) {
        SCOPED_TRACE(place);
        Desktop desk;
        Monitored watched(desk);
        for (int i = 1; i <= 3; ++i) {
            desk.Add(i);
        }
        watched.On();
        WindowState& window = *desk.Windows()[1];
        window.hung = true;
        answered = false;
        desk.places = 0;
        desk.inCall = [&](int at) {
            if (at == place) {
                answered = true;
                window.hung = false;
            }
            EXPECT_LE(window.sinks, 1);
        };
        watched.Open();
        desk.inCall = nullptr;
        EXPECT_EQ(1, window.sinks);
        EXPECT_TRUE(desk.parked.empty());
        EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), watched.ListedNumbers());
        window.hung = false;
    }
}

TEST_F(HungWindowTest, AStartBesideItWatchesTheOthers) {
    desktop.Add(9)->hung = true;
    Watch(2);
    EXPECT_EQ((std::vector<int>{2, 3}), monitored.ListedNumbers());
    EXPECT_EQ(0, Window(1).sinks);
    desktop.Registered();
    EXPECT_TRUE(monitored.created.empty());
    Window(1).hung = false;
    desktop.Registered();
    EXPECT_EQ(std::vector<int>{1}, monitored.created);
    EXPECT_EQ(1, Window(1).sinks);
}

TEST_F(HungWindowTest, OneThatOpensAndHangsAtOnceIsToldWhenItAnswers) {
    Watch(1);
    desktop.Add(7)->hung = true;
    desktop.Registered();
    EXPECT_TRUE(monitored.created.empty());
    monitored.Open();
    EXPECT_EQ(std::vector<int>{3}, monitored.created);
    Window(2).hung = false;
    desktop.Registered();
    EXPECT_EQ((std::vector<int>{3, 2}), monitored.created);
}

TEST_F(HungWindowTest, OneThatIsBusyWhenItOpensIsWatchedInAWhile) {
    Watch(1);
    EXPECT_FALSE(desktop.Remind());
    desktop.Add(7)->hung = true;
    desktop.Registered();
    // Still busy, and after that no more.
    ASSERT_TRUE(desktop.Remind());
    EXPECT_TRUE(monitored.created.empty());
    Window(2).hung = false;
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ(std::vector<int>{2}, monitored.created);
    EXPECT_EQ(1, Window(2).sinks);
    EXPECT_FALSE(desktop.Remind());
}

TEST_F(HungWindowTest, AStartBesideABusyOneWatchesItInAWhile) {
    desktop.Add(9)->hung = true;
    Watch(1);
    Window(1).hung = false;
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ(std::vector<int>{1}, monitored.created);
    EXPECT_EQ(1, Window(1).sinks);
}

TEST_F(HungWindowTest, AKnownOneThatIsBusyAsksForNoReminder) {
    Watch(2);
    Window(1).hung = true;
    monitored.Open();
    EXPECT_FALSE(desktop.Remind());
}

TEST_F(HungWindowTest, OneThatLeavesTheListIsCutOff) {
    Watch(2);
    Window(1).hung = true;
    Window(1).listed = false;
    desktop.Revoked();
    EXPECT_EQ(1, monitored.destroyed);
    EXPECT_EQ(std::vector<int>{2}, monitored.ListedNumbers());
    ASSERT_EQ(1U, desktop.parked.size());
    EXPECT_TRUE(desktop.parked[0].second);
}

TEST_F(HungWindowTest, SwitchingOffDoesNotWaitForIt) {
    Watch(2);
    Window(2).hung = true;
    monitored.watching.SwitchOff();
    EXPECT_EQ(0, Window(1).sinks);
    EXPECT_EQ(0, desktop.connections);
    ASSERT_FALSE(desktop.parked.empty());
    EXPECT_TRUE(desktop.parked[0].second);
}

TEST_F(HungWindowTest, ARefreshKeepsItListedAndTheNextAnnouncementWatchesIt) {
    Watch(2);
    Window(2).hung = true;
    monitored.Refresh();
    EXPECT_EQ((std::vector<int>{1, 2}), monitored.ListedNumbers());
    EXPECT_EQ(std::vector<std::wstring>{L"_1_"}, monitored.Keys());
    Window(2).hung = false;
    desktop.Registered();
    EXPECT_EQ((std::vector<std::wstring>{L"_1_", L"_2_"}), monitored.Keys());
    // The one that was parked is let go.
    EXPECT_EQ(1, Window(2).sinks);
    EXPECT_TRUE(desktop.parked.empty());
}

TEST_F(HungWindowTest, AfterARefreshItIsWatchedInAWhileWithoutAnnouncement) {
    Watch(2);
    Window(2).hung = true;
    monitored.Refresh();
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ(std::vector<std::wstring>{L"_1_"}, monitored.Keys());
    Window(2).hung = false;
    ASSERT_TRUE(desktop.Remind());
    EXPECT_EQ((std::vector<std::wstring>{L"_1_", L"_2_"}), monitored.Keys());
    EXPECT_EQ(1, Window(2).sinks);
    EXPECT_FALSE(desktop.Remind());
}

TEST_F(HungWindowTest, SwitchedOffAndOnItKeepsItsPlace) {
    Watch(3);
    Window(2).hung = true;
    monitored.OffAndOn();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), monitored.ListedNumbers());
    EXPECT_EQ((std::vector<std::wstring>{L"_1_", L"_3_"}), monitored.Keys());
    Window(2).hung = false;
    monitored.Open();
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), monitored.ListedNumbers());
    EXPECT_EQ(1, Window(2).sinks);
    EXPECT_TRUE(desktop.parked.empty());
}

TEST_F(HungWindowTest, WhatIsParkedIsLetGoWhenItAnswers) {
    Watch(2);
    Window(1).hung = true;
    Window(1).listed = false;
    desktop.Revoked();
    ASSERT_EQ(1U, desktop.parked.size());
    monitored.Open();
    ASSERT_EQ(1U, desktop.parked.size());
    Window(1).hung = false;
    monitored.Open();
    EXPECT_TRUE(desktop.parked.empty());
    EXPECT_EQ(0, Window(1).sinks);
    EXPECT_EQ(0, Window(1).references);
}

// It hangs in the middle of a call, which is cut off: at every call of an announcement's work.

TEST_F(HungWindowTest, AKnownOneThatHangsInACallKeepsItsPlace) {
    for (int which = 1; which <= 3; ++which) {
        for (int call = 0; call < 4; ++call) {
            SCOPED_TRACE(std::to_string(which) + " in call " + std::to_string(call));
            Desktop desk;
            Monitored watched(desk);
            for (int i = 1; i <= 3; ++i) {
                desk.Add(i);
            }
            watched.On();
            WindowState& window = *desk.Windows()[static_cast<std::size_t>(which - 1)];
            window.hangsAfter = call;
            watched.Open();
            EXPECT_EQ(call < 4, window.hung);
            EXPECT_EQ(0, desk.failedAnnouncements);
            EXPECT_EQ(0, window.waits);
            EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), watched.ListedNumbers());
            EXPECT_EQ(std::vector<int>{4}, watched.created);
            for (const auto& other : desk.Windows()) {
                if (other.get() != &window) {
                    EXPECT_EQ(1, other->sinks);
                }
            }
            window.hung = false;
            watched.Open();
            EXPECT_EQ(1, window.sinks);
            EXPECT_TRUE(desk.parked.empty());
            EXPECT_EQ(5U, watched.Keys().size());
            watched.watching.SwitchOff();
            EXPECT_EQ(0, window.sinks);
        }
    }
}

TEST_F(HungWindowTest, ANewOneThatHangsInACallIsToldWhenItAnswers) {
    for (const bool others : {false, true}) {
        for (int call = 0; call < 4; ++call) {
            SCOPED_TRACE(call);
            Desktop desk;
            Monitored watched(desk);
            if (others) {
                desk.Add(1);
            }
            watched.On();
            const auto fresh = desk.Add(7);
            fresh->hangsAfter = call;
            desk.Registered();
            if (!fresh->hung) {
                // So many calls are not made.
                EXPECT_EQ(1U, watched.created.size());
                continue;
            }
            EXPECT_EQ(0, desk.failedAnnouncements);
            EXPECT_EQ(0, fresh->waits);
            ASSERT_TRUE(desk.Remind());
            EXPECT_EQ(0, fresh->waits);
            fresh->hung = false;
            desk.Remind();
            EXPECT_EQ(std::vector<int>{fresh->number}, watched.created);
            EXPECT_EQ(1, fresh->sinks);
            EXPECT_TRUE(desk.parked.empty());
        }
    }
}

TEST_F(HungWindowTest, AStartGoesOnWhenOneHangsInACall) {
    for (int call = 0; call < 6; ++call) {
        SCOPED_TRACE(call);
        Desktop desk;
        Monitored watched(desk);
        const auto first = desk.Add(7);
        desk.Add(8);
        first->hangsAfter = call;
        EXPECT_NO_THROW(watched.watching.SwitchOn());
        EXPECT_TRUE(first->hung);
        EXPECT_EQ(0, first->waits);
        EXPECT_EQ(1, desk.Windows()[1]->sinks);
        first->hung = false;
        ASSERT_TRUE(desk.Remind());
        EXPECT_EQ(1, first->sinks);
        EXPECT_EQ((std::vector<int>{1, 2}), watched.ListedNumbers());
    }
}

}  // namespace
}  // namespace kestrelguard::fakes
