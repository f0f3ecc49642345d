// A browser whose process is stopped, beside the unchanged program: what a user sees of it, and how long he
// waits.

#include <gtest/gtest.h>

#include <string>

#include "HungWindowFixture.h"

namespace kestrelguard::testing {
namespace {

using desktop::Browser;

/// The window that hangs is on the screen, or has never been there: only a call tells then that it hangs.
class HungWindowDesktopTest : public BesideHungWindow, public ::testing::WithParamInterface<bool> {
 protected:
    HungWindowDesktopTest() { m_farIsShown = GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(, HungWindowDesktopTest, ::testing::Values(true, false),
                         [](const auto& shown) { return shown.param ? "OnTheScreen" : "OutOfSight"; });

TEST_P(HungWindowDesktopTest, TheWindowAnswersAndTheTrayMenuOpens) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    ExpectAnswers();
    ExpectTrayMenu();
    Browser& next = m_desktop.OpenBrowser(Page(L"next"));
    ExpectAnswers();
    ExpectTrayMenu();
    next.Close();
    ExpectAnswers();
    ExpectTrayMenu();
    DoubleClickNode(m_guard->Tree(), TreeNodes(m_guard->Tree()).at(0).item);
    ExpectAnswers();
    ExpectTrayMenu();
}

TEST_P(HungWindowDesktopTest, OthersAreWatchedWhenTheyOpenAndLeaveWhenTheyClose) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    for (int round = 1; round <= 3; ++round) {
        ExpectOneComesAndGoes([&] {
            EXPECT_TRUE(m_near->FireNewWindow2().cancel);
            EXPECT_EQ(std::to_wstring(2 * round), m_guard->Today());
        });
        EXPECT_EQ(1, Nodes(L"far")) << "it keeps its node";
    }
    // It answers again: with the next announcement at the latest it is watched, exactly once.
    m_far->GoOn();
    m_desktop.OpenBrowser(Page(L"last"));
    EXPECT_TRUE(WaitNodes(L"last", 1));
    EXPECT_TRUE(WaitUntil([&] { return m_far->Sinks() == 1; }, kToWatch));
    EXPECT_EQ(1, Nodes(L"far"));
    EXPECT_TRUE(m_far->FireNewWindow2().cancel);
    EXPECT_EQ(L"7", m_guard->Today());
}

TEST_P(HungWindowDesktopTest, ExitEndsTheProgramAndWritesEverything) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    ASSERT_NO_FATAL_FAILURE(ChangeEverything());
    ASSERT_TRUE(m_guard->Minimise());
    EXPECT_TRUE(m_guard->ExitByMenu(kToStartOrEnd));
    ExpectEverythingWritten();
    EXPECT_EQ(0, m_near->Sinks().connected);
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_P(HungWindowDesktopTest, TheEndOfTheSessionWritesEverything) {
    ASSERT_NO_FATAL_FAILURE(StartThenHang());
    ASSERT_NO_FATAL_FAILURE(ChangeEverything());
    EndTheSession();
    ExpectEverythingWritten();
    EXPECT_EQ(0, m_near->Sinks().connected);
}

TEST_P(HungWindowDesktopTest, AStartShowsTheWindowAndWatchesThoseThatAnswer) {
    OpenBoth();
    m_far->Stop();
    const GuardFolder folder{std::string(kSettings)};
    Guard guard(folder);
    ExpectStartOnTheScreen(guard);
    m_far->GoOn();
    EXPECT_TRUE(WaitUntil([&] { return m_far->Sinks() == 1; }, kToWatch));
    EXPECT_TRUE(m_far->FireNewWindow2().cancel);
    EXPECT_EQ(L"2", guard.Today());
}

TEST_P(HungWindowDesktopTest, AStartInTheTrayShowsTheIcon) {
    OpenBoth();
    m_far->Stop();
    ExpectStartInTheTray();
}

TEST_P(HungWindowDesktopTest, ShowOnItDoesNotHangAndShowsItOnceItAnswers) {
    OpenBoth();
    ShowWindow(m_far->Window(), SW_MINIMIZE);
    ASSERT_TRUE(WaitUntil([&] { return IsIconic(m_far->Window()) != FALSE; }));
    Start();
    m_far->Stop();
    SelectNode(m_guard->Tree(), Node(L"Title : far"));
    ClickNode(m_guard->Tree(), Node(L"Title : far"), true);
    ASSERT_TRUE(m_guard->Inside().WaitMenu());
    ASSERT_TRUE(m_guard->Inside().Choose(L"Show this Browser Window"));
    ExpectAnswers();
    EXPECT_TRUE(IsIconic(m_far->Window()));
    m_far->GoOn();
    EXPECT_TRUE(WaitUntil([&] { return !IsIconic(m_far->Window()); }));
}

}  // namespace
}  // namespace kestrelguard::testing
