#include "monitoring/WindowChanges.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace kestrelguard {
namespace {

class Window final : public DesktopWindow {
 public:
    explicit Window(char name) : m_name(name) {}
    std::int32_t Handle() override { return m_name; }
    const void* Identity() const override { return this; }
    bool Answers() override { return true; }

 private:
    char m_name;
};

/// News as text: the windows' names as they come, "-" for one that went.
class Told final : public WindowNews {
 public:
    void BrowserCreated(const DesktopWindowPtr& window) override {
        text += static_cast<char>(window->Handle());
    }
    void BrowserDestroyed() override { text += '-'; }
    std::string text;
};

class WindowChangesTest : public testing::Test {
 protected:
    /// What an announcement leads to.
    std::string Tell(const WindowChanges::Announced& announced) {
        changes.MakeDue(announced);
        Told told;
        while (changes.AnythingDue()) {
            changes.TellNext(told);
        }
        return told.text;
    }

    const DesktopWindowPtr a = std::make_shared<Window>('a');
    const DesktopWindowPtr b = std::make_shared<Window>('b');
    const DesktopWindowPtr c = std::make_shared<Window>('c');
    WindowChanges changes;
};

TEST_F(WindowChangesTest, TheFirstListIsNoNews) {
    EXPECT_FALSE(changes.Knows(a));
    EXPECT_FALSE(changes.WindowOf(a.get()));
    EXPECT_TRUE(changes.Known().empty());
    changes.Note({a, b}, true);
    EXPECT_TRUE(changes.Knows(a));
    EXPECT_FALSE(changes.Knows(nullptr));
    EXPECT_EQ(b, changes.WindowOf(b.get()));
    EXPECT_EQ((WindowChanges::Windows{a, b}), changes.Known());
    EXPECT_EQ("", Tell({}));
}

TEST_F(WindowChangesTest, TheOneThatWasFoundIsToldFirst) {
    changes.Note({a}, true);
    changes.Note({a, b, c}, true);
    EXPECT_EQ("cb", Tell({.found = c}));
    EXPECT_EQ("", Tell({}));
}

TEST_F(WindowChangesTest, AnAnnouncementOfWithdrawalIsToldWhateverTheListSays) {
    changes.Note({a, b}, true);
    EXPECT_EQ("-", Tell({.revoked = 1}));
    changes.Note({a}, true);
    EXPECT_EQ("--", Tell({.revoked = 2}));
}

TEST_F(WindowChangesTest, ARepetitionIsToldOnlyWhenSomethingHasGone) {
    changes.Note({a, b, c}, true);
    EXPECT_EQ("", Tell({.revoked = 1, .perhapsRepeated = 1}));
    changes.Note({a, b}, true);
    EXPECT_EQ("-", Tell({.revoked = 1, .perhapsRepeated = 1}));
    changes.Note({}, true);
    EXPECT_EQ("--", Tell({.revoked = 3, .perhapsRepeated = 2}));
}

TEST_F(WindowChangesTest, WhatAFailedRebuildOwesIsToldWithTheNext) {
    changes.Note({a, b}, true);
    changes.Owe(1);
    changes.Note({a}, true);
    EXPECT_EQ("-", Tell({}));
    changes.Owe(1);
    EXPECT_EQ("", Tell({}));
}

TEST_F(WindowChangesTest, AWalkThatEndedEarlyTakesNobodyForGone) {
    changes.Note({a, b}, true);
    changes.Note({a, c}, false);
    EXPECT_TRUE(changes.Knows(b));
    EXPECT_EQ("c", Tell({.revoked = 1, .perhapsRepeated = 1}));
    changes.Note({a}, true);
    EXPECT_FALSE(changes.Knows(b));
    EXPECT_EQ("--", Tell({.revoked = 2, .perhapsRepeated = 2}));
}

TEST_F(WindowChangesTest, WhoCameAndWentUntoldWasNeverThere) {
    changes.Note({a}, true);
    changes.Note({a, b}, true);
    changes.Note({a}, true);
    EXPECT_EQ("", Tell({.revoked = 1, .perhapsRepeated = 1}));
}

TEST_F(WindowChangesTest, OneThatWasFoundAndHasGoneIsToldBothWays) {
    changes.Note({a}, true);
    EXPECT_EQ("b", Tell({.found = b}));
    EXPECT_EQ("-", Tell({.revoked = 1, .perhapsRepeated = 1}));
    // One that was known before is told by the list.
    EXPECT_EQ("c", Tell({.found = c, .wasKnown = true}));
    EXPECT_EQ("", Tell({.revoked = 1, .perhapsRepeated = 1}));
}

}  // namespace
}  // namespace kestrelguard
