// A browser whose window goes on while a call to it does not come back, beside the unchanged program.

#include <gtest/gtest.h>

#include <string>

#include "HungWindowFixture.h"

namespace kestrelguard::testing {
namespace {

using desktop::Property;

/// The property does not answer.
class StalledReadTest : public BesideHungWindow, public ::testing::WithParamInterface<Property> {
 protected:
    /// Both are watched; then a call to the far one is under way that does not come back.
    void StartThenStall(const std::string& settings = kSettings) {
        OpenBoth();
        Start(settings);
        ASSERT_EQ(1, Nodes(L"near"));
        ASSERT_EQ(1, Nodes(L"far"));
        m_far->Stall(GetParam());
    }
    void BringAboutTheCall() {
        LONG other = 0;
        if (GetParam() == Property::Hwnd) {
            desktop::BrowserOptions page = Page(L"other");
            page.announced = false;
            other = m_desktop.OpenBrowser(page).Cookie();
        }
        const auto tryOnce = [&] {
            if (GetParam() == Property::Hwnd) {
                // Nobody waits for what comes of it.
                m_opened = m_desktop.StartWindowRegistered(other);
            } else {
                // Title and address are read by a rebuild of the whole tree.
                DoubleClickNode(m_guard->Tree(), TreeNodes(m_guard->Tree()).at(0).item);
            }
            return m_far->WaitStalled(GetParam(), kToAnswer);
        };
        // On a loaded machine the far one may have taken too long to answer, and is left alone for a second.
        ASSERT_TRUE(WaitUntil(tryOnce));
    }
    void ExpectFarWatchedOnce() const {
        EXPECT_TRUE(WaitUntil([&] { return m_far->FireNewWindow2().cancel; }, kToWatch));
        EXPECT_EQ(1, m_far->Sinks());
    }
    /// That many windows are in the tree.
    bool WaitWindows(int count) const {
        return WaitUntil(
            [&] {
                int windows = 0;
                for (const TreeNode& node : TreeNodes(m_guard->Tree())) {
                    windows += node.depth == 1 ? 1 : 0;
                }
                return windows == count;
            },
            kToWatch);
    }

    desktop::PendingEvent m_opened;
};

TEST_P(StalledReadTest, TheProgramGoesOnAndWatchesItOnceWhenItAnswers) {
    ASSERT_NO_FATAL_FAILURE(StartThenStall());
    ASSERT_NO_FATAL_FAILURE(BringAboutTheCall());
    const int windows = GetParam() == Property::Hwnd ? 3 : 2;
    ExpectTrayMenu();
    ExpectAnswers();
    EXPECT_TRUE(WaitWindows(windows));
    EXPECT_TRUE(m_near->FireNewWindow2().cancel);
    for (int round = 1; round <= 2; ++round) {
        ExpectOneComesAndGoes([&] {
            EXPECT_EQ(std::to_wstring(1 + round), m_guard->Today());
            EXPECT_TRUE(WaitWindows(windows + 1));
        });
        EXPECT_TRUE(WaitWindows(windows)) << "the far one keeps its node";
    }
    ExpectTrayMenu();
    m_far->LetGo(GetParam());
    m_desktop.OpenBrowser(Page(L"last"));
    EXPECT_TRUE(WaitNodes(L"last", 1));
    ExpectFarWatchedOnce();
    EXPECT_EQ(L"4", m_guard->Today());
    EXPECT_TRUE(WaitWindows(windows + 1));
    EXPECT_TRUE(m_guard->EndsWell());
    EXPECT_EQ(0, m_far->Sinks());
}

TEST_P(StalledReadTest, ItsProcessMayEndMeanwhile) {
    ASSERT_NO_FATAL_FAILURE(StartThenStall());
    ASSERT_NO_FATAL_FAILURE(BringAboutTheCall());
    ExpectTrayMenu();
    m_far->Kill();
    m_desktop.Withdraw(m_far->Cookie());
    EXPECT_TRUE(WaitWindows(GetParam() == Property::Hwnd ? 2 : 1));
    EXPECT_EQ(1, Nodes(L"near"));
    ExpectAnswers();
    EXPECT_TRUE(m_near->FireNewWindow2().cancel);
    EXPECT_EQ(L"1", m_guard->Today());
    EXPECT_TRUE(m_guard->EndsWell());
    EXPECT_EQ(0, m_near->Sinks().connected);
}

TEST_P(StalledReadTest, ExitEndsTheProgramAndWritesEverything) {
    ASSERT_NO_FATAL_FAILURE(StartThenStall());
    ASSERT_NO_FATAL_FAILURE(ChangeEverything());
    ASSERT_NO_FATAL_FAILURE(BringAboutTheCall());
    ASSERT_TRUE(m_guard->Minimise());
    EXPECT_TRUE(m_guard->ExitByMenu(kToStartOrEnd));
    ExpectEverythingWritten();
    EXPECT_EQ(0, m_near->Sinks().connected);
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_P(StalledReadTest, TheEndOfTheSessionWritesEverything) {
    ASSERT_NO_FATAL_FAILURE(StartThenStall());
    ASSERT_NO_FATAL_FAILURE(ChangeEverything());
    ASSERT_NO_FATAL_FAILURE(BringAboutTheCall());
    EndTheSession();
    ExpectEverythingWritten();
}

std::string NameOf(const ::testing::TestParamInfo<Property>& with) {
    switch (with.param) {
        case Property::Hwnd:
            return "Hwnd";
        case Property::LocationName:
            return "LocationName";
        case Property::LocationUrl:
            return "LocationUrl";
        case Property::StatusText:
            return "StatusText";
        case Property::Navigate:
            return "Navigate";
        default:
            return "Connect";
    }
}

INSTANTIATE_TEST_SUITE_P(Properties, StalledReadTest,
                         ::testing::Values(Property::Hwnd, Property::LocationName, Property::LocationUrl),
                         NameOf);

/// The property does not answer when the program starts.
class StalledStartTest : public StalledReadTest {};

TEST_P(StalledStartTest, AStartShowsTheWindowAndWatchesThoseThatAnswer) {
    OpenBoth();
    m_far->Stall(GetParam());
    const GuardFolder folder{std::string(kSettings)};
    Guard guard(folder);
    ExpectStartOnTheScreen(guard);
    EXPECT_TRUE(WaitWatched(m_desktop.OpenBrowser(Page(L"next"))));
    m_far->LetGo(GetParam());
    ExpectFarWatchedOnce();
    EXPECT_EQ(L"2", guard.Today());
    EXPECT_TRUE(guard.Close());
    EXPECT_EQ(0u, guard.Program().ExitCode());
}

TEST_P(StalledStartTest, AStartInTheTrayShowsTheIcon) {
    OpenBoth();
    m_far->Stall(GetParam());
    ExpectStartInTheTray();
}

INSTANTIATE_TEST_SUITE_P(Properties, StalledStartTest,
                         ::testing::Values(Property::Hwnd, Property::LocationName, Property::LocationUrl,
                                           Property::Connect),
                         NameOf);

/// The call that does not come back is one of an event's handler.
class StalledHandlerTest : public BesideHungWindow {
 protected:
    void ExpectTheOthersWatched() {
        ExpectAnswers();
        ExpectTrayMenu();
        EXPECT_TRUE(m_near->FireNewWindow2().cancel);
        ExpectOneComesAndGoes();
        EXPECT_EQ(L"2", m_guard->Today());
    }
    /// The far one is announced, and the property does not answer whoever looks at it then.
    void AnnounceStalled(Property property) {
        m_near = &m_desktop.OpenBrowser(Page(L"near"));
        Start();
        OpenFarUnannounced();
        m_far->Stall(property);
        m_announcement = m_desktop.StartWindowRegistered(m_far->Cookie());
        ASSERT_TRUE(m_far->WaitStalled(property));
    }

    desktop::PendingEvent m_announcement;
};

TEST_F(StalledHandlerTest, TheTitleRuleThatCannotReplaceThePage) {
    OpenBoth();
    Start();
    m_far->Stall(Property::Navigate);
    desktop::PendingEvent title = m_far->StartTitleChange(L"poker night");
    ASSERT_TRUE(m_far->WaitStalled(Property::Navigate));
    ExpectTheOthersWatched();
    m_far->LetGo(Property::Navigate);
    title.Result();
    EXPECT_TRUE(m_far->FireNewWindow2().cancel);
    EXPECT_EQ(L"3", m_guard->Today());
    EXPECT_TRUE(m_guard->EndsWell());
}

TEST_F(StalledHandlerTest, TheTitleRuleThatCannotReadTheAddress) {
    OpenBoth();
    Start();
    m_far->Stall(Property::LocationUrl);
    desktop::PendingEvent title = m_far->StartTitleChange(L"poker night");
    ASSERT_TRUE(m_far->WaitStalled(Property::LocationUrl));
    ExpectTheOthersWatched();
    EXPECT_EQ(1, m_far->Sinks());
    m_far->LetGo(Property::LocationUrl);
    title.Result();
    EXPECT_EQ(1, Nodes(L"poker night"));
    EXPECT_TRUE(m_guard->EndsWell());
}

/// With both keys held a new window opens in the same one: its address is read from the status bar and gone
/// to.
class StalledLinkTest : public StalledHandlerTest, public ::testing::WithParamInterface<Property> {};

TEST_P(StalledLinkTest, ALinkThatCannotBeFollowed) {
    OpenBoth();
    Start();
    m_far->Stall(GetParam());
    desktop::PendingEvent popup = [&] {
        const HeldKeys keys(*m_guard, {VK_CONTROL, VK_SHIFT});
        desktop::PendingEvent started = m_far->StartNewWindow2();
        EXPECT_TRUE(m_far->WaitStalled(GetParam()));
        return started;
    }();
    ExpectTheOthersWatched();
    m_far->LetGo(GetParam());
    EXPECT_TRUE(popup.Result().cancel);
    EXPECT_EQ(L"2", m_guard->Today()) << "the link itself is no popup";
    EXPECT_TRUE(m_guard->EndsWell());
}

INSTANTIATE_TEST_SUITE_P(Properties, StalledLinkTest,
                         ::testing::Values(Property::StatusText, Property::Navigate), NameOf);

TEST_F(StalledHandlerTest, ANewWindowThatCannotBeListenedTo) {
    ASSERT_NO_FATAL_FAILURE(AnnounceStalled(Property::Connect));
    ExpectTheOthersWatched();
    m_far->LetGo(Property::Connect);
    EXPECT_TRUE(WaitNodes(L"far", 1));
    EXPECT_TRUE(m_far->FireNewWindow2().cancel);
    EXPECT_EQ(1, m_far->Sinks());
    EXPECT_TRUE(m_guard->EndsWell());
}

TEST_F(StalledHandlerTest, ANewWindowThatCannotBeShownInTheTree) {
    ASSERT_NO_FATAL_FAILURE(AnnounceStalled(Property::LocationName));
    ExpectTheOthersWatched();
    EXPECT_TRUE(m_far->FireNewWindow2().cancel);
    m_far->LetGo(Property::LocationName);
    EXPECT_TRUE(WaitNodes(L"far", 1));
    EXPECT_TRUE(m_guard->EndsWell());
}

}  // namespace
}  // namespace kestrelguard::testing
