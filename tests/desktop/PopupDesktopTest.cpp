#include <string>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

/// A number as the labels show it, with this user's separator of thousands.
std::wstring InGroups(std::wstring digits) {
    wchar_t separator[8] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_STHOUSAND, separator, 8);
    for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3) {
        digits.insert(static_cast<std::size_t>(at), separator);
    }
    return digits;
}

class PopupDesktopTest : public DesktopTest {};

TEST_F(PopupDesktopTest, PreventCancelsCountsAndShows) {
    RunningGuard guard("PST/:/:1234566\r\n");
    Browser& browser = Watched();
    EXPECT_EQ(guard.Today(), L"0");
    EXPECT_EQ(guard.Total(), InGroups(L"1234566"));
    const EventResult result = browser.FireNewWindow2();
    EXPECT_EQ(result.hr, S_OK);
    EXPECT_EQ(result.cancelValue, VARIANT_TRUE);
    EXPECT_EQ(result.newBrowser.Get(), nullptr);
    EXPECT_EQ(guard.Today(), L"1");
    EXPECT_EQ(guard.Total(), InGroups(L"1234567"));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_EQ(guard.Today(), L"2");
    EXPECT_FALSE(Enabled(guard.Apply()));
    EXPECT_TRUE(guard.EndsWell());
    EXPECT_EQ(guard.Setting("PST"), "1234568");
    EXPECT_EQ(guard.Setting("PT1"), "0");
}

TEST_F(PopupDesktopTest, APopupOfALinkDoesNotOpen) {
    RunningGuard guard;
    Browser& browser = Watched();
    browser.ClickNewWindowLink(L"http://popup.example/");
    ASSERT_TRUE(browser.WaitIdle());
    EXPECT_EQ(m_desktop.OpenBrowsers().size(), 1U);
    ClickAndWait(guard.ModeButton(2));
    browser.ClickNewWindowLink(L"http://popup.example/");
    ASSERT_TRUE(browser.WaitIdle());
    EXPECT_EQ(m_desktop.OpenBrowsers().size(), 2U);
    EXPECT_EQ(guard.Today(), L"1");
}

TEST_F(PopupDesktopTest, AThousandGetsItsSeparator) {
    RunningGuard guard("PST/:/:999\r\n");
    EXPECT_TRUE(Watched().FireNewWindow2().cancel);
    EXPECT_EQ(guard.Total(), InGroups(L"1000"));
}

TEST_F(PopupDesktopTest, ControlLetsTheWindowOpen) {
    RunningGuard guard;
    Browser& browser = Watched();
    {
        const HeldKeys keys(guard, {VK_CONTROL});
        const EventResult result = browser.FireNewWindow2();
        EXPECT_EQ(result.hr, S_OK);
        EXPECT_FALSE(result.cancel);
    }
    EXPECT_EQ(guard.Today(), L"0");
    EXPECT_TRUE(browser.NavigateCalls().empty());
}

TEST_F(PopupDesktopTest, ShiftAloneDoesNotHelp) {
    RunningGuard guard;
    Browser& browser = Watched();
    {
        const HeldKeys keys(guard, {VK_SHIFT});
        EXPECT_TRUE(browser.FireNewWindow2().cancel);
    }
    EXPECT_EQ(guard.Today(), L"1");
    EXPECT_TRUE(browser.NavigateCalls().empty());
}

TEST_F(PopupDesktopTest, ControlAndShiftOpenTheLinkInTheSameWindow) {
    RunningGuard guard;
    BrowserOptions options;
    options.statusText = L"http://link.example/caf\x00E9?q=\x4E2D";
    options.navigates = false;
    Browser& browser = Watched(options);
    {
        const HeldKeys keys(guard, {VK_CONTROL, VK_SHIFT});
        const EventResult result = browser.FireNewWindow2();
        EXPECT_EQ(result.hr, S_OK);
        EXPECT_TRUE(result.cancel);
    }
    const auto calls = browser.NavigateCalls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].url, options.statusText);
    EXPECT_TRUE(calls[0].second);
    for (const VARTYPE type : calls[0].optional) {
        EXPECT_EQ(type, VT_ERROR);
    }
    EXPECT_EQ(guard.Today(), L"0");
    EXPECT_EQ(guard.Total(), L"0");
}

TEST_F(PopupDesktopTest, ControlAndShiftCancelWhateverTheBrowserAnswers) {
    RunningGuard guard;
    Browser& browser = Watched();
    const HeldKeys keys(guard, {VK_CONTROL, VK_SHIFT});
    for (const Property property : {Property::StatusText, Property::Navigate}) {
        browser.Fail(property, E_FAIL);
        const EventResult result = browser.FireNewWindow2();
        EXPECT_EQ(result.hr, S_OK);
        EXPECT_TRUE(result.cancel);
        browser.Fail(property, S_OK, 0);
    }
    EXPECT_EQ(guard.Today(), L"0");
}

TEST_F(PopupDesktopTest, KeysCountAtOnceBehindAPopupWithoutThem) {
    RunningGuard guard;
    BrowserOptions options;
    options.navigates = false;
    Browser& browser = Watched(options);
    for (std::size_t round = 1; round <= 3; ++round) {
        EXPECT_TRUE(browser.FireNewWindow2().cancel);
        {
            const HeldKeys keys(guard, {VK_CONTROL, VK_SHIFT});
            EXPECT_TRUE(browser.FireNewWindow2().cancel);
        }
        EXPECT_EQ(browser.NavigateCalls().size(), round);
        EXPECT_EQ(guard.Today(), std::to_wstring(round));
    }
}

TEST_F(PopupDesktopTest, PromptAsksAndOpens) {
    RunningGuard guard("PT1/:/:1\r\n");
    BrowserOptions options;
    options.url = L"http://a-page-that-opens.example/windows/all/the/eleven-last";
    ASSERT_EQ(options.url.size(), 60U);
    Browser& browser = Watched(options);
    auto event = browser.Start(EventCall::NewWindow2());
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(box.caption, L"Kestrelguard New Browser Window Prompt!");
    EXPECT_EQ(box.text,
              L"A New Browser Window is attempting to open, allow it?\r\n" + options.url.substr(49) + L"...");
    EXPECT_EQ(box.buttons.size(), 1U);
    EXPECT_TRUE(box.topmost);
    // The browser waits for the user.
    EXPECT_FALSE(event.Done());
    ASSERT_TRUE(Dismiss(box));
    const EventResult result = event.Result();
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.hr, S_OK);
    EXPECT_FALSE(result.cancel);
    EXPECT_EQ(guard.Today(), L"0");
}

TEST_F(PopupDesktopTest, PromptShowsAShortAddressAsDotsAlone) {
    RunningGuard guard("PT1/:/:1\r\n");
    BrowserOptions options;
    options.url = L"http://www.example/" + std::wstring(30, L'x');
    ASSERT_EQ(options.url.size(), 49U);
    auto event = Watched(options).Start(EventCall::NewWindow2());
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(box.text, L"A New Browser Window is attempting to open, allow it?\r\n...");
    ASSERT_TRUE(Dismiss(box));
    EXPECT_FALSE(event.Result().cancel);
}

TEST_F(PopupDesktopTest, OtherBrowsersAreServedWhileTheQuestionWaits) {
    RunningGuard guard("PT1/:/:1\r\n");
    Browser& first = Watched();
    Browser& second = Watched();
    auto event = first.Start(EventCall::NewWindow2());
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(second.FireBeforeNavigate2(L"http://meanwhile.example/").hr, S_OK);
    EXPECT_EQ(TreeTexts(guard.Tree()).back(), L"    URL : http://meanwhile.example/");
    ASSERT_TRUE(Dismiss(box));
    EXPECT_FALSE(event.Result().cancel);
}

TEST_F(PopupDesktopTest, PromptOfAWindowThatIsClosingFailsWithoutABox) {
    RunningGuard guard("PT1/:/:1\r\n");
    Browser& browser = Watched();
    browser.Fail(Property::LocationUrl, E_FAIL);
    const EventResult result = browser.FireNewWindow2();
    EXPECT_FALSE(result.timedOut);
    EXPECT_TRUE(FAILED(result.hr));
    EXPECT_FALSE(result.cancel);
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
    browser.Fail(Property::LocationUrl, S_OK, 0);
    ClickAndWait(guard.ModeButton(0));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
}

TEST_F(PopupDesktopTest, AllowShowsAndCountsNothing) {
    RunningGuard guard("PT1/:/:2\r\n");
    const EventResult result = Watched().FireNewWindow2();
    EXPECT_EQ(result.hr, S_OK);
    EXPECT_FALSE(result.cancel);
    EXPECT_EQ(guard.Today(), L"0");
    EXPECT_EQ(guard.Total(), L"0");
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
}

TEST_F(PopupDesktopTest, AModeActsAtOnceAndIsSavedByApply) {
    RunningGuard guard;
    Browser& browser = Watched();
    EXPECT_EQ(guard.Mode(), 0);
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_FALSE(Enabled(guard.Apply()));
    ClickAndWait(guard.ModeButton(2));
    EXPECT_EQ(guard.Mode(), 2);
    EXPECT_TRUE(Enabled(guard.Apply()));
    EXPECT_FALSE(browser.FireNewWindow2().cancel);
    EXPECT_EQ(guard.Setting("PT1"), "0");
    ClickAndWait(guard.Apply());
    EXPECT_EQ(guard.Setting("PT1"), "2");
    ClickAndWait(guard.ModeButton(0));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
}

TEST_F(PopupDesktopTest, AFullCounterFailsTheEventAndDoesNotWrap) {
    RunningGuard guard("PST/:/:2147483647\r\n");
    Browser& browser = Watched();
    const EventResult result = browser.FireNewWindow2();
    EXPECT_FALSE(result.timedOut);
    EXPECT_TRUE(FAILED(result.hr));
    EXPECT_FALSE(result.cancel);
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
    EXPECT_EQ(guard.Total(), InGroups(L"2147483647"));
    EXPECT_EQ(guard.Today(), L"0");
    // The program lives on.
    ClickAndWait(guard.ModeButton(2));
    EXPECT_EQ(browser.FireNewWindow2().hr, S_OK);
    EXPECT_TRUE(guard.EndsWell());
    EXPECT_EQ(guard.Setting("PST"), "2147483647");
}

TEST_F(PopupDesktopTest, ANewRunCountsTodayFromZeroAndTheTotalOn) {
    const auto folder = std::make_shared<GuardFolder>("PST/:/:7\r\n");
    {
        RunningGuard guard(folder);
        Browser& browser = Watched();
        EXPECT_TRUE(browser.FireNewWindow2().cancel);
        EXPECT_TRUE(browser.FireNewWindow2().cancel);
        EXPECT_TRUE(guard.EndsWell());
    }
    RunningGuard guard(folder);
    EXPECT_EQ(guard.Today(), L"0");
    EXPECT_EQ(guard.Total(), L"9");
}

}  // namespace
}  // namespace kestrelguard::testing
