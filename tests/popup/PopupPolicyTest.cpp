#include "popup/PopupPolicyFixture.h"

#include "runtime/ErrorsIgnored.h"

namespace kestrelguard {
namespace {

TEST_F(PopupPolicyTest, PreventCancelsAndCounts) {
    total = 41;
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(total, 42);
    EXPECT_EQ(state.popupsStoppedToday, 1);
    EXPECT_EQ(popsToday.text, L"1");
    EXPECT_EQ(popStopsT.text, L"42");
    EXPECT_EQ(trayTip.tip, L" Kestrelguard v2 - Preventing Popups: 1");
    EXPECT_TRUE(browser.navigated2.empty());
    EXPECT_TRUE(messageBoxes.shown.empty());
}

TEST_F(PopupPolicyTest, PreventWritesTheTipButLeavesTheShellAlone) {
    NewWindow();
    EXPECT_EQ(trayTip.calls, std::vector<std::wstring>{L"write Kestrelguard v2 - Preventing Popups: 1"});
}

TEST_F(PopupPolicyTest, PreventSamplesControlThenShift) {
    NewWindow();
    EXPECT_EQ(keyboard.asked, (std::vector<int>{kControl, kShift}));
}

TEST_F(PopupPolicyTest, BothKeysAreSampledEvenWhenControlIsHeld) {
    keyboard.states[kControl] = kHeld;
    NewWindow();
    EXPECT_EQ(keyboard.asked, (std::vector<int>{kControl, kShift}));
}

TEST_F(PopupPolicyTest, LabelsGroupThousandsTheWayOfTheLocale) {
    total = 1234566;
    state.popupsStoppedToday = 999;
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(popsToday.text, L"1,000");
    EXPECT_EQ(popStopsT.text, L"1,234,567");

    locale.thousandsSeparator = L".";
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(popsToday.text, L"1.001");
    EXPECT_EQ(popStopsT.text, L"1.234.568");
    EXPECT_EQ(trayTip.tip, L" Kestrelguard v2 - Preventing Popups: 1001");
}

TEST_F(PopupPolicyTest, ACounterOfZeroShowsAsZero) {
    total = -1;
    state.popupsStoppedToday = -1;
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(popsToday.text, L"0");
    EXPECT_EQ(popStopsT.text, L"0");
}

TEST_F(PopupPolicyTest, HeldControlLetsTheWindowOpen) {
    keyboard.states[kControl] = kHeld;
    EXPECT_FALSE(NewWindow());
    EXPECT_EQ(total, 0);
    EXPECT_EQ(state.popupsStoppedToday, 0);
    EXPECT_TRUE(trayTip.calls.empty());
    EXPECT_EQ(popsToday.changes, 0);
}

TEST_F(PopupPolicyTest, ControlPressedSinceTheLastEventLetsTheWindowOpen) {
    keyboard.states[kControl] = kPressedBefore;
    EXPECT_FALSE(NewWindow());
    EXPECT_EQ(total, 0);
}

TEST_F(PopupPolicyTest, ControlPressedBeforeWithShiftHeldLetsTheWindowOpen) {
    keyboard.states[kControl] = kPressedBefore;
    keyboard.states[kShift] = kHeld;
    EXPECT_FALSE(NewWindow());
    EXPECT_EQ(total, 0);
    EXPECT_TRUE(browser.navigated2.empty());
}

TEST_F(PopupPolicyTest, HeldControlWithShiftPressedBeforeLetsTheWindowOpen) {
    keyboard.states[kControl] = kHeld;
    keyboard.states[kShift] = kPressedBefore;
    EXPECT_FALSE(NewWindow());
    EXPECT_EQ(total, 0);
    EXPECT_TRUE(browser.navigated2.empty());
}

TEST_F(PopupPolicyTest, ShiftAloneDoesNotHelp) {
    for (const std::int16_t shift : {kHeld, kPressedBefore, std::int16_t{-32767}}) {
        keyboard.states[kShift] = shift;
        EXPECT_TRUE(NewWindow());
    }
    EXPECT_EQ(total, 3);
    EXPECT_EQ(state.popupsStoppedToday, 3);
}

TEST_F(PopupPolicyTest, ControlAndShiftOpenTheLinkInTheSameWindow) {
    keyboard.states[kControl] = std::int16_t{-32767};
    keyboard.states[kShift] = kHeld;
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(browser.navigated2, std::vector<std::wstring>{L"http://news.example/story"});
    EXPECT_EQ(total, 0);
    EXPECT_EQ(state.popupsStoppedToday, 0);
    EXPECT_TRUE(trayTip.calls.empty());
}

TEST_F(PopupPolicyTest, AStatusTextPassesThroughUnharmed) {
    keyboard.states[kControl] = kHeld;
    keyboard.states[kShift] = kHeld;
    browser.statusText = L" http://\x4E2D\x6587.example/?q=\x20AC\xFFFD ";
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(browser.navigated2, std::vector<std::wstring>{browser.statusText});
}

TEST_F(PopupPolicyTest, ControlAndShiftCancelWhateverTheBrowserAnswers) {
    keyboard.states[kControl] = kHeld;
    keyboard.states[kShift] = kHeld;
    Faults faults;
    browser.faults = &faults;
    for (int position = 0; position < 2; ++position) {
        faults.FailAt(position, -2147467259);
        EXPECT_TRUE(NewWindow()) << position;
        EXPECT_TRUE(faults.Hit()) << position;
    }
    EXPECT_TRUE(browser.navigated2.empty());
    EXPECT_EQ(total, 0);
}

TEST_F(PopupPolicyTest, AFullTotalIsAnOverflowAndStays) {
    total = kFull;
    bool cancel = false;
    EXPECT_EQ(ErrorOf([&] { policy.HandleNewWindow(browser, cancel); }), RunTimeError::kOverflow);
    EXPECT_EQ(total, kFull);
    EXPECT_EQ(state.popupsStoppedToday, 0);
    EXPECT_FALSE(cancel);
    EXPECT_TRUE(trayTip.calls.empty());
}

TEST_F(PopupPolicyTest, AFullCountOfTodayIsAnOverflowAfterTheTotalRose) {
    state.popupsStoppedToday = kFull;
    bool cancel = false;
    EXPECT_EQ(ErrorOf([&] { policy.HandleNewWindow(browser, cancel); }), RunTimeError::kOverflow);
    EXPECT_EQ(total, 1);
    EXPECT_EQ(state.popupsStoppedToday, kFull);
    EXPECT_FALSE(cancel);
    EXPECT_EQ(popsToday.changes, 0);
}

TEST_F(PopupPolicyTest, TheLastCountBeforeTheOverflowIsCounted) {
    total = kFull - 1;
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(popStopsT.text, L"2,147,483,647");
}

TEST_F(PopupPolicyTest, PromptShowsTheAddressFromItsFiftiethCharacterOn) {
    pto1.Select(true);
    browser.locationURL = std::wstring(49, L'x') + L"elevenchars";
    ASSERT_EQ(browser.locationURL.size(), 60U);
    EXPECT_FALSE(NewWindow());
    ASSERT_EQ(messageBoxes.shown.size(), 1U);
    EXPECT_EQ(messageBoxes.shown[0].text,
              L"A New Browser Window is attempting to open, allow it?\r\nelevenchars...");
    EXPECT_EQ(messageBoxes.shown[0].caption, L"Kestrelguard New Browser Window Prompt!");
    EXPECT_EQ(messageBoxes.shown[0].style, 0x11040U);
}

TEST_F(PopupPolicyTest, PromptShowsAShortAddressAsDotsAlone) {
    pto1.Select(true);
    for (const std::size_t length : {0U, 1U, 48U, 49U}) {
        browser.locationURL = std::wstring(length, L'x');
        EXPECT_FALSE(NewWindow());
        EXPECT_EQ(messageBoxes.shown.back().text,
                  L"A New Browser Window is attempting to open, allow it?\r\n...");
    }
    browser.locationURL = std::wstring(49, L'x') + L"y";
    EXPECT_FALSE(NewWindow());
    EXPECT_EQ(messageBoxes.shown.back().text,
              L"A New Browser Window is attempting to open, allow it?\r\ny...");
}

TEST_F(PopupPolicyTest, PromptNeitherCountsNorLooksAtTheKeys) {
    pto1.Select(true);
    keyboard.states[kControl] = kHeld;
    keyboard.states[kShift] = kHeld;
    EXPECT_FALSE(NewWindow());
    EXPECT_TRUE(keyboard.asked.empty());
    EXPECT_EQ(total, 0);
    EXPECT_EQ(state.popupsStoppedToday, 0);
    EXPECT_TRUE(trayTip.calls.empty());
}

TEST_F(PopupPolicyTest, OnlyTheAnswerNoCancels) {
    pto1.Select(true);
    for (int answer = 0; answer <= 11; ++answer) {
        messageBoxes.answer = answer;
        EXPECT_EQ(NewWindow(), answer == 7) << answer;
    }
}

TEST_F(PopupPolicyTest, PromptWritesFalseIntoACancelThatArrivesTrue) {
    pto1.Select(true);
    bool cancel = true;
    policy.HandleNewWindow(browser, cancel);
    EXPECT_FALSE(cancel);
}

TEST_F(PopupPolicyTest, PromptOfAClosingWindowFailsBeforeTheBox) {
    pto1.Select(true);
    Faults faults;
    browser.faults = &faults;
    faults.FailAt(0, -2147417848);
    bool cancel = false;
    EXPECT_EQ(ErrorOf([&] { policy.HandleNewWindow(browser, cancel); }), -2147417848);
    EXPECT_TRUE(messageBoxes.shown.empty());
    EXPECT_FALSE(cancel);
}

TEST_F(PopupPolicyTest, AllowDoesNothing) {
    pto2.Select(true);
    EXPECT_FALSE(NewWindow());
    bool cancel = true;
    policy.HandleNewWindow(browser, cancel);
    EXPECT_TRUE(cancel);
    EXPECT_TRUE(keyboard.asked.empty());
    EXPECT_TRUE(messageBoxes.shown.empty());
    EXPECT_TRUE(trayTip.calls.empty());
    EXPECT_EQ(total, 0);
}

TEST_F(PopupPolicyTest, NoButtonSelectedCountsAsAllow) {
    pto0.selected = false;
    EXPECT_FALSE(NewWindow());
    EXPECT_EQ(total, 0);
}

TEST_F(PopupPolicyTest, AChangedModeActsAtOnce) {
    EXPECT_TRUE(NewWindow());
    pto2.Select(true);
    EXPECT_FALSE(NewWindow());
    pto0.Select(true);
    EXPECT_TRUE(NewWindow());
    EXPECT_EQ(total, 2);
}

TEST_F(PopupPolicyTest, TheModeIsTheOneAtTheMomentOfTheEvent) {
    pto1.Select(true);
    messageBoxes.whileShown = [this] { pto0.Select(true); };
    EXPECT_FALSE(NewWindow());
    EXPECT_EQ(total, 0);
}

TEST_F(PopupPolicyTest, ANewRunBeginsWithTodayAtZeroAndTheSavedTotal) {
    std::int32_t saved = 1234;
    const PopupState fresh{pto0, pto1, pto2, saved};
    EXPECT_EQ(fresh.popupsStoppedToday, 0);
    EXPECT_EQ(fresh.popupsStoppedTotal, 1234);
}

TEST_F(PopupPolicyTest, TheMenuTurnsPreventIntoAllow) {
    state.popupsStoppedToday = 17;
    ClickInTheMenu();
    EXPECT_EQ(Selected(), 2);
    EXPECT_FALSE(mnuPOP.checked);
    EXPECT_EQ(trayTip.calls,
              (std::vector<std::wstring>{L"write Kestrelguard v2 - Allowing Popups.", L"update"}));
    EXPECT_FALSE(applyCmd.enabled);
}

TEST_F(PopupPolicyTest, TheMenuTurnsAllowIntoPrevent) {
    pto2.Select(true);
    state.popupsStoppedToday = 17;
    ClickInTheMenu();
    EXPECT_EQ(Selected(), 0);
    EXPECT_TRUE(mnuPOP.checked);
    EXPECT_EQ(trayTip.calls,
              (std::vector<std::wstring>{L"write Kestrelguard v2 - Preventing Popups: 17", L"update"}));
    EXPECT_FALSE(applyCmd.enabled);
}

TEST_F(PopupPolicyTest, TheMenuLeavesPromptWhenTheItemIsChecked) {
    pto1.Select(true);
    ClickInTheMenu();
    EXPECT_EQ(Selected(), 0);
    EXPECT_TRUE(mnuPOP.checked);
    EXPECT_EQ(trayTip.tip, L" Kestrelguard v2 - Preventing Popups: 0");
}

TEST_F(PopupPolicyTest, UncheckingTheItemInPromptModeChangesNothing) {
    pto1.Select(true);
    mnuPOP.checked = true;
    policy.mnuPOP_Click();
    EXPECT_FALSE(mnuPOP.checked);
    EXPECT_EQ(Selected(), 1);
    EXPECT_EQ(trayTip.calls, std::vector<std::wstring>{L"update"});
}

TEST_F(PopupPolicyTest, UncheckingTheItemInAllowModeChangesNothing) {
    pto2.Select(true);
    mnuPOP.checked = true;
    policy.mnuPOP_Click();
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(trayTip.calls, std::vector<std::wstring>{L"update"});
}

TEST_F(PopupPolicyTest, CheckingTheItemInPreventModeChangesNothing) {
    mnuPOP.checked = false;
    policy.mnuPOP_Click();
    EXPECT_TRUE(mnuPOP.checked);
    EXPECT_EQ(Selected(), 0);
    EXPECT_EQ(trayTip.calls, std::vector<std::wstring>{L"update"});
}

TEST_F(PopupPolicyTest, AnOptionButtonEnablesApplyAndNothingElse) {
    for (int index = 0; index < 3; ++index) {
        applyCmd.enabled = false;
        policy.PTO_Click(index);
        EXPECT_TRUE(applyCmd.enabled);
    }
    EXPECT_EQ(Selected(), 0);
    EXPECT_TRUE(trayTip.calls.empty());
}

}  // namespace
}  // namespace kestrelguard
