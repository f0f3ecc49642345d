#include <windows.h>

#include <shellapi.h>

#include <string>
#include <vector>

#include "DesktopTest.h"
#include "desktop/driver/Tray.h"

namespace kestrelguard::testing {
namespace {

constexpr char kInTheTray[] = "MIN/:/:y\r\n";

// What the shell sends of the icon.
constexpr LPARAM kMouseMove = 512;
constexpr LPARAM kLeftUp = 514;
constexpr LPARAM kLeftDouble = 515;
constexpr LPARAM kRightUp = 517;

class TrayDesktopTest : public DesktopTest {
 protected:
    /// The program's icon, once it is there.
    static TrayIcon Icon() {
        EXPECT_TRUE(WaitTrayIcons(1));
        const std::vector<TrayIcon> icons = TrayIcons();
        return icons.empty() ? TrayIcon{} : icons[0];
    }
    static bool WaitTip(const std::wstring& tip) {
        return WaitUntil([&] {
            const std::vector<TrayIcon> icons = TrayIcons();
            return icons.size() == 1 && icons[0].tip == tip;
        });
    }
    /// One message of the icon, dealt with when this returns.
    static void Notify(const RunningGuard& guard, LPARAM message) {
        Ask(guard.Window(), WM_MOUSEMOVE, 1, message);
    }
};

TEST_F(TrayDesktopTest, AnErrorInTheTrayComesToTheFrontWithoutTheMainWindow) {
    RunningGuard guard(kInTheTray);
    const HWND elsewhere = CreateWindowW(L"Static", L"elsewhere", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50,
                                         nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(SetFileAttributesW(guard.Folder()->File(L"KestrelS.CFG").c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_TRUE(guard.ChooseFromTrayMenu(L"Exit"));
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(0u, box.text.find(L"Run-time error '75'"));
    EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == box.window; }));
    EXPECT_EQ(nullptr, GetWindow(box.window, GW_OWNER));
    EXPECT_FALSE(guard.Shown());
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(guard.Program().WaitGone());
    DestroyWindow(elsewhere);
}

TEST_F(TrayDesktopTest, AnErrorOfTheMainWindowBelongsToIt) {
    RunningGuard guard("MIN/:/:n\r\n");
    ASSERT_TRUE(SetFileAttributesW(guard.Folder()->File(L"KestrelS.CFG").c_str(), FILE_ATTRIBUTE_READONLY));
    ClickAndWait(guard.WashBoxes()[0]);
    Click(guard.Apply());
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(guard.Window(), GetWindow(box.window, GW_OWNER));
    EXPECT_TRUE(Dismiss(box));
    SetFileAttributesW(guard.Folder()->File(L"KestrelS.CFG").c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(guard.EndsWell());
}

TEST_F(TrayDesktopTest, MinimisedItIsAnIconWithTheModeAndTheCount) {
    RunningGuard guard(kInTheTray);
    EXPECT_EQ(Icon().tip, L" Kestrelguard v2 - Preventing Popups: 0");
    EXPECT_TRUE(guard.InTray());
    EXPECT_TRUE(guard.EndsWell());
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_F(TrayDesktopTest, ShownItHasNoIconUntilItIsMinimised) {
    RunningGuard guard;
    EXPECT_TRUE(guard.Shown());
    EXPECT_TRUE(TrayIcons().empty());
    ASSERT_TRUE(guard.Minimise());
    EXPECT_TRUE(guard.InTray());
    EXPECT_TRUE(WaitTrayIcons(1));
}

TEST_F(TrayDesktopTest, OKAndCancelInTheTrayLeaveItThere) {
    RunningGuard guard(kInTheTray);
    for (const wchar_t* const button : {L"OK", L"Cancel"}) {
        ClickAndWait(guard.Button(button));
        EXPECT_TRUE(guard.InTray()) << button;
        EXPECT_EQ(1u, TrayIcons().size()) << button;
    }
    EXPECT_TRUE(guard.EndsWell());
}

TEST_F(TrayDesktopTest, TheRecordHasItsFirstForm) {
    RunningGuard guard(kInTheTray, &Hook::RecordTray);
    ASSERT_TRUE(WaitUntil([&] {
        for (const TrayCall& call : guard.Inside().TrayCalls()) {
            if (call.message == NIM_ADD) {
                return true;
            }
        }
        return false;
    }));
    TrayCall add;
    for (const TrayCall& call : guard.Inside().TrayCalls()) {
        if (call.message == NIM_ADD) {
            add = call;
        }
    }
    EXPECT_EQ(add.size, 88U);
    EXPECT_EQ(add.window, guard.Window());
    EXPECT_EQ(add.id, 1U);
    EXPECT_EQ(add.flags, 7U);
    EXPECT_EQ(add.callback, 512U);
    EXPECT_NE(add.icon, nullptr);
    std::string buffer = " Kestrelguard v2 - Preventing Popups: 0";
    buffer += '\0';
    buffer.resize(64, ' ');
    EXPECT_EQ(add.tipBuffer, buffer);
}

TEST_F(TrayDesktopTest, EachModeHasItsTip) {
    {
        RunningGuard guard("MIN/:/:y\r\nPT1/:/:1\r\n");
        EXPECT_EQ(Icon().tip, L" Kestrelguard v2 - Prompting for Popups: 0");
        EXPECT_TRUE(guard.EndsWell());
        ASSERT_TRUE(WaitTrayIcons(0));
    }
    RunningGuard guard("MIN/:/:y\r\nPT1/:/:2\r\n");
    EXPECT_EQ(Icon().tip, L" Kestrelguard v2 - Allowing Popups.");
}

TEST_F(TrayDesktopTest, ACountedPopupShowsWhenThePointerComes) {
    RunningGuard guard(kInTheTray, &Hook::RecordTray);
    Browser& browser = Watched();
    const TrayIcon icon = Icon();
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_EQ(TrayIcons()[0].tip, L" Kestrelguard v2 - Preventing Popups: 0");
    PointAtTrayIcon(icon);
    EXPECT_TRUE(WaitTip(L" Kestrelguard v2 - Preventing Popups: 1"));
    EXPECT_TRUE(guard.WaitPosted());  // the task bar has the tip before the program's call has returned
    // A further move sends nothing: the tip is the one that was sent last.
    const std::size_t calls = guard.Inside().TrayCalls().size();
    Notify(guard, kMouseMove);
    EXPECT_EQ(guard.Inside().TrayCalls().size(), calls);
}

TEST_F(TrayDesktopTest, AClickOnTheIconRestoresTheWindow) {
    RunningGuard guard(kInTheTray);
    ClickTrayIcon(Icon());
    EXPECT_TRUE(WaitUntil([&] { return guard.Shown(); }));
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_F(TrayDesktopTest, ADoubleClickOnTheIconRestoresTheWindow) {
    RunningGuard guard(kInTheTray);
    Icon();
    Notify(guard, kLeftDouble);
    EXPECT_TRUE(WaitUntil([&] { return guard.Shown(); }));
    EXPECT_TRUE(WaitTrayIcons(0));
    // And with real input, of which the first release does it already.
    ASSERT_TRUE(guard.Minimise());
    ClickTrayIcon(Icon(), false, true);
    EXPECT_TRUE(WaitUntil([&] { return guard.Shown(); }));
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_F(TrayDesktopTest, OtherMessagesOfTheIconDoNothing) {
    RunningGuard guard(kInTheTray);
    Icon();
    for (LPARAM message = 512; message <= 525; ++message) {
        if (message != kLeftUp && message != kLeftDouble && message != kRightUp) {
            Notify(guard, message);
            EXPECT_FALSE(guard.Shown()) << message;
            EXPECT_FALSE(guard.Inside().ReadMenu()) << message;
        }
    }
    EXPECT_EQ(TrayIcons().size(), 1U);
}

TEST_F(TrayDesktopTest, MouseMovesOverTheShownWindowDoNothing) {
    RunningGuard guard;
    for (const LPARAM x : {kLeftUp, kLeftDouble, kRightUp}) {
        Notify(guard, x);
        EXPECT_TRUE(guard.Shown());
        EXPECT_FALSE(guard.Inside().ReadMenu());
    }
    EXPECT_TRUE(TrayIcons().empty());
}

TEST_F(TrayDesktopTest, ARightClickOpensTheMenu) {
    RunningGuard guard(kInTheTray);
    Browser& browser = Watched();
    ClickTrayIcon(Icon(), true);
    const OpenMenu menu = guard.Inside().WaitMenu();
    EXPECT_EQ(menu.Captions(), (std::vector<std::wstring>{L"Kestrelguard Help", L"-", L"* Prevent Popups = 0",
                                                          L"Clear Internet Cache", L"Clear Internet Cookies",
                                                          L"Show Kestrelguard", L"-", L"Exit"}));
    ASSERT_TRUE(guard.Inside().CloseMenu());
    EXPECT_FALSE(guard.Shown());
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    ClickTrayIcon(Icon(), true);
    EXPECT_EQ(guard.Inside().WaitMenu().Captions()[2], L"* Prevent Popups = 1");
    EXPECT_TRUE(guard.Inside().CloseMenu());
}

TEST_F(TrayDesktopTest, TheMenuClosesOnAClickElsewhere) {
    RunningGuard guard(kInTheTray);
    ClickTrayIcon(Icon(), true);
    ASSERT_TRUE(guard.Inside().WaitMenu());
    ClickScreen(POINT{20, 20});
    EXPECT_TRUE(WaitUntil([&] { return !guard.Inside().ReadMenu(); }));
    // And opens again.
    ClickTrayIcon(Icon(), true);
    EXPECT_TRUE(guard.Inside().WaitMenu());
    EXPECT_TRUE(guard.Inside().CloseMenu());
}

TEST_F(TrayDesktopTest, TheMenuSwitchesBetweenPreventAndAllow) {
    RunningGuard guard(kInTheTray);
    Browser& browser = Watched();
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    ClickTrayIcon(Icon(), true);
    ASSERT_TRUE(guard.Inside().WaitMenu());
    ASSERT_TRUE(guard.Inside().Choose(L"Prevent Popups = 1"));
    EXPECT_TRUE(WaitTip(L" Kestrelguard v2 - Allowing Popups."));
    EXPECT_EQ(guard.Mode(), 2);
    EXPECT_FALSE(browser.FireNewWindow2().cancel);

    ClickTrayIcon(Icon(), true);
    EXPECT_EQ(guard.Inside().WaitMenu().Captions()[2], L"Prevent Popups = 1");
    ASSERT_TRUE(guard.Inside().Choose(L"Prevent Popups = 1"));
    EXPECT_TRUE(WaitTip(L" Kestrelguard v2 - Preventing Popups: 1"));
    EXPECT_EQ(guard.Mode(), 0);
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_FALSE(Enabled(guard.Apply()));
}

TEST_F(TrayDesktopTest, TheModeOfTheMenuIsSavedAtExit) {
    RunningGuard guard(kInTheTray);
    ClickTrayIcon(Icon(), true);
    ASSERT_TRUE(guard.Inside().WaitMenu());
    ASSERT_TRUE(guard.Inside().Choose(L"Prevent Popups = 0"));
    ASSERT_TRUE(WaitUntil([&] { return guard.Mode() == 2; }));
    EXPECT_EQ(guard.Setting("PT1"), "");
    ClickTrayIcon(Icon(), true);
    ASSERT_TRUE(guard.Inside().WaitMenu());
    ASSERT_TRUE(guard.Inside().Choose(L"Exit"));
    ASSERT_TRUE(guard.Program().WaitGone());
    EXPECT_EQ(guard.Program().ExitCode(), 0U);
    EXPECT_EQ(guard.Setting("PT1"), "2");
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_F(TrayDesktopTest, FromPromptTheMenuLeadsToPreventOnly) {
    RunningGuard guard("MIN/:/:y\r\nPT1/:/:1\r\n");
    ClickTrayIcon(Icon(), true);
    EXPECT_EQ(guard.Inside().WaitMenu().Captions()[2], L"Prevent Popups = 0");
    ASSERT_TRUE(guard.Inside().Choose(L"Prevent Popups = 0"));
    EXPECT_TRUE(WaitUntil([&] { return guard.Mode() == 0; }));
    EXPECT_TRUE(WaitTip(L" Kestrelguard v2 - Preventing Popups: 0"));
}

TEST_F(TrayDesktopTest, TheCheckMarkFollowsTheModeOfThePage) {
    RunningGuard guard;
    ClickAndWait(guard.ModeButton(2));
    ASSERT_TRUE(guard.Minimise());
    ClickTrayIcon(Icon(), true);
    EXPECT_EQ(guard.Inside().WaitMenu().Captions()[2], L"Prevent Popups = 0");
    ASSERT_TRUE(guard.Inside().CloseMenu());
    ClickAndWait(guard.ModeButton(0));
    ClickTrayIcon(Icon(), true);
    EXPECT_EQ(guard.Inside().WaitMenu().Captions()[2], L"* Prevent Popups = 0");
    EXPECT_TRUE(guard.Inside().CloseMenu());
}

TEST_F(TrayDesktopTest, TheMenuShowsTheWindow) {
    RunningGuard guard(kInTheTray);
    ClickTrayIcon(Icon(), true);
    ASSERT_TRUE(guard.Inside().WaitMenu());
    ASSERT_TRUE(guard.Inside().Choose(L"Show Kestrelguard"));
    EXPECT_TRUE(WaitUntil([&] { return guard.Shown(); }));
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_F(TrayDesktopTest, TheIconComesBackWhenTheShellRestarts) {
    RunningGuard guard(kInTheTray);
    Icon();
    // What a shell that ended has forgotten.
    NOTIFYICONDATAA record = {};
    record.cbSize = NOTIFYICONDATAA_V1_SIZE;
    record.hWnd = guard.Window();
    record.uID = 1;
    Shell_NotifyIconA(NIM_DELETE, &record);
    ASSERT_TRUE(WaitTrayIcons(0));
    PostMessageA(HWND_BROADCAST, RegisterWindowMessageA("TaskbarCreated"), 0, 0);
    EXPECT_TRUE(WaitTip(L" Kestrelguard v2 - Preventing Popups: 0"));
}

}  // namespace
}  // namespace kestrelguard::testing
