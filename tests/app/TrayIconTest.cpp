#include "app/TrayIcon.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "controls/Fakes.h"
#include "runtime/ErrorsIgnored.h"

namespace kestrelguard {
namespace {

using Calls = std::vector<std::wstring>;

class FakeShellTray : public ShellTray {
 public:
    explicit FakeShellTray(Calls& log) : m_log(log) {}
    void Add(const FixedText64& tip) override { m_log.push_back(L"add" + tip.Text()); }
    void Modify(const FixedText64& tip) override {
        m_log.push_back(L"modify" + tip.Text());
        sent = tip;
    }
    void Delete() override { m_log.emplace_back(L"delete"); }
    FixedText64 sent;

 private:
    Calls& m_log;
};

class FakeTrayWindow : public TrayWindow {
 public:
    explicit FakeTrayWindow(Calls& log) : m_log(log) {}
    WindowState State() const override { return state; }
    void SetState(WindowState newState) override {
        state = newState;
        m_log.push_back(L"state " + std::to_wstring(static_cast<int>(newState)));
    }
    void Hide() override { m_log.emplace_back(L"hide"); }
    void Show() override { m_log.emplace_back(L"show"); }
    void SetForeground() override { m_log.emplace_back(L"foreground"); }
    MouseScale Scale() const override { return scale; }
    WindowState state = WindowState::Minimised;
    MouseScale scale;

 private:
    Calls& m_log;
};

class TrayIconTest : public testing::Test, protected TrayPopup, protected Caption {
 protected:
    TrayIconTest() { FakeOptionButton::Group({&pto0, &pto1, &pto2}); }

    void PopUp() override { log.push_back(mnuPOP.checked ? L"menu, checked" : L"menu, unchecked"); }
    void SetCaption(const std::wstring& text) override { log.push_back(text); }

    Calls log;
    FakeOptionButton pto0{true};
    FakeOptionButton pto1;
    FakeOptionButton pto2;
    std::int32_t total = 5000;
    PopupState state{pto0, pto1, pto2, total};
    FakeShellTray shell{log};
    FakeTrayWindow window{log};
    FakeCheckMark mnuPOP{true};
    TrayIcon icon{TrayIcon::Parts{.state = state,
                                  .shell = shell,
                                  .window = window,
                                  .mnuM = *this,
                                  .mnuPOPCaption = *this,
                                  .mnuPOP = mnuPOP}};
};

TEST_F(TrayIconTest, TheFirstTipFollowsTheMode) {
    icon.FillTip();
    EXPECT_EQ(icon.Tip(), FixedText64(L" Kestrelguard v2 - Preventing Popups: 0"));
    EXPECT_TRUE(mnuPOP.checked);
    pto1.Select(true);
    icon.FillTip();
    EXPECT_EQ(icon.Tip(), FixedText64(L" Kestrelguard v2 - Prompting for Popups: 0"));
    EXPECT_TRUE(mnuPOP.checked);
    pto2.Select(true);
    icon.FillTip();
    EXPECT_EQ(icon.Tip(), FixedText64(L" Kestrelguard v2 - Allowing Popups."));
    EXPECT_FALSE(mnuPOP.checked);
    EXPECT_TRUE(log.empty());
}

TEST_F(TrayIconTest, MinimisingHidesTheWindowAndAddsTheIcon) {
    icon.FillTip();
    icon.Form_Resize();
    EXPECT_EQ(log, (Calls{L"hide", L"add Kestrelguard v2 - Preventing Popups: 0"}));
}

TEST_F(TrayIconTest, AnyOtherStateDeletesTheIcon) {
    for (const WindowState other : {WindowState::Normal, WindowState::Maximised}) {
        log.clear();
        window.state = other;
        icon.Form_Resize();
        EXPECT_EQ(log, Calls{L"delete"});
    }
}

TEST_F(TrayIconTest, LeftButtonUpAndDoubleClickRestoreTheWindow) {
    for (const double message : {514.0, 515.0}) {
        window.state = WindowState::Minimised;
        icon.Form_MouseMove(message);
        log.clear();
        window.state = WindowState::Minimised;
        icon.Form_MouseMove(message);
        EXPECT_EQ(log, (Calls{L"state 0", L"show"})) << message;
    }
}

TEST_F(TrayIconTest, RightButtonUpOpensTheMenu) {
    icon.FillTip();
    icon.UpdateSZTIP();
    log.clear();
    icon.Form_MouseMove(517);
    EXPECT_EQ(log, (Calls{L"foreground", L"Prevent Popups = 0", L"menu, checked"}));
}

TEST_F(TrayIconTest, TheMenuShowsTheCountAndTheMode) {
    icon.UpdateSZTIP();
    state.popupsStoppedToday = 1234;
    pto1.Select(true);
    log.clear();
    icon.Form_MouseMove(517);
    EXPECT_EQ(log, (Calls{L"foreground", L"Prevent Popups = 1234", L"menu, unchecked"}));
    log.clear();
    pto0.Select(true);
    icon.Form_MouseMove(517);
    EXPECT_EQ(log, (Calls{L"foreground", L"Prevent Popups = 1234", L"menu, checked"}));
}

TEST_F(TrayIconTest, OtherMessagesDoNothingMore) {
    icon.UpdateSZTIP();
    log.clear();
    for (int message = 0; message <= 600; ++message) {
        if (message != 514 && message != 515 && message != 517) {
            icon.Form_MouseMove(message);
        }
    }
    EXPECT_TRUE(log.empty());
}

TEST_F(TrayIconTest, MouseMovesOverTheShownWindowAreIgnored) {
    window.state = WindowState::Normal;
    for (const double x : {512.0, 514.0, 515.0, 517.0}) {
        icon.Form_MouseMove(x);
    }
    EXPECT_TRUE(log.empty());
}

TEST_F(TrayIconTest, AMaximisedWindowHearsClicksButSendsNoTip) {
    window.state = WindowState::Maximised;
    icon.FillTip();
    icon.Form_MouseMove(515);
    EXPECT_EQ(log, (Calls{L"state 0", L"show"}));
}

TEST_F(TrayIconTest, AWindowThatMeasuresInTwipsDividesByTheScreensFactor) {
    icon.UpdateSZTIP();
    log.clear();
    window.scale = {.pixels = false, .twipsPerPixelX = 15};
    icon.Form_MouseMove(517);
    EXPECT_TRUE(log.empty());
    icon.Form_MouseMove(514 * 15 + 7);
    EXPECT_EQ(log, (Calls{L"state 0", L"show"}));
    window.state = WindowState::Minimised;
    window.scale.pixels = true;
    log.clear();
    icon.Form_MouseMove(514.4);
    EXPECT_EQ(log, (Calls{L"state 0", L"show"}));
}

TEST_F(TrayIconTest, AnImpossiblePlaceOfTheMouseIsAnOverflow) {
    EXPECT_EQ(ErrorOf([&] { icon.Form_MouseMove(3e9); }), RunTimeError::kOverflow);
}

TEST_F(TrayIconTest, TheTipIsSentOnceAndAgainWhenItChanged) {
    icon.FillTip();
    icon.Form_MouseMove(512);
    EXPECT_EQ(log, Calls{L"modify Kestrelguard v2 - Preventing Popups: 0"});
    log.clear();
    icon.Form_MouseMove(512);
    EXPECT_TRUE(log.empty());
    icon.WriteTip(TipText(PopupMode::Prevent, 1));
    icon.Form_MouseMove(512);
    EXPECT_EQ(log, Calls{L"modify Kestrelguard v2 - Preventing Popups: 1"});
}

TEST_F(TrayIconTest, InPreventModeAMouseMoveDoesNotRewriteTheTip) {
    icon.FillTip();
    state.popupsStoppedToday = 9;
    icon.WriteTip(L"as it stands");
    icon.Form_MouseMove(512);
    EXPECT_EQ(log, Calls{L"modifyas it stands"});
    EXPECT_EQ(icon.Tip(), FixedText64(L"as it stands"));
}

TEST_F(TrayIconTest, InPromptModeTheTipIsRebuiltWithTheCount) {
    pto1.Select(true);
    state.popupsStoppedToday = 9;
    icon.WriteTip(L"something else");
    icon.Form_MouseMove(512);
    EXPECT_EQ(log, Calls{L"modify Kestrelguard v2 - Prompting for Popups: 9"});
}

TEST_F(TrayIconTest, InAllowModeTheTipHasNoNumber) {
    pto2.Select(true);
    state.popupsStoppedToday = 9;
    icon.WriteTip(L"something else");
    icon.Form_MouseMove(512);
    EXPECT_EQ(log, Calls{L"modify Kestrelguard v2 - Allowing Popups."});
}

TEST_F(TrayIconTest, AModeChangedOnThePageShowsWithTheNextWrittenTip) {
    icon.FillTip();
    icon.UpdateSZTIP();
    log.clear();
    pto1.Select(true);
    icon.UpdateSZTIP();
    EXPECT_TRUE(log.empty());
    icon.WriteTip(TipText(PopupMode::Prevent, 1));
    icon.UpdateSZTIP();
    EXPECT_EQ(log, Calls{L"modify Kestrelguard v2 - Prompting for Popups: 0"});
}

TEST_F(TrayIconTest, WhileTheWindowIsShownNoTipIsSent) {
    icon.FillTip();
    for (const WindowState shown : {WindowState::Normal, WindowState::Maximised}) {
        window.state = shown;
        icon.UpdateSZTIP();
    }
    EXPECT_TRUE(log.empty());
}

TEST_F(TrayIconTest, ATipThatIsTooLongIsCutWithItsNul) {
    icon.WriteTip(std::wstring(100, L'x'));
    icon.UpdateSZTIP();
    EXPECT_EQ(shell.sent.Characters()[62], L'x');
    EXPECT_EQ(shell.sent.Characters()[63], L'\0');
}

TEST_F(TrayIconTest, ANewTaskBarGetsTheIconAgain) {
    icon.FillTip();
    icon.TaskbarCreated();
    EXPECT_EQ(log, Calls{L"add Kestrelguard v2 - Preventing Popups: 0"});
    log.clear();
    window.state = WindowState::Normal;
    icon.TaskbarCreated();
    EXPECT_TRUE(log.empty());
}

TEST_F(TrayIconTest, DeleteTakesTheIconAway) {
    icon.Delete();
    EXPECT_EQ(log, Calls{L"delete"});
}

}  // namespace
}  // namespace kestrelguard
