// How the program starts and ends.

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

class StartStopTest : public ::testing::Test {
 protected:
    desktop::Apartment m_apartment;
};

class StartStopDesktopTest : public DesktopTest {
 protected:
    /// Starts the program once more: that copy ends at once and changes no file.
    static void ExpectSecondCopyEnds(const GuardFolder& folder, Guard& first) {
        const std::string settings = folder.Settings();
        const std::string cookies = folder.Cookies();
        Process second(folder.Exe());
        ASSERT_TRUE(second.WaitGone());
        EXPECT_EQ(0u, second.ExitCode());
        EXPECT_EQ(settings, folder.Settings());
        EXPECT_EQ(cookies, folder.Cookies());
        EXPECT_TRUE(first.Program().Running());
        // Whatever the copy may have told it has happened.
        EXPECT_TRUE(first.WaitPosted());
    }

    static constexpr char kSavedCookie[] = "Cookie:kate@one.example/\r\n";
};

TEST_F(StartStopDesktopTest, AFirstStartShowsTheWindowAndWritesTheDefaults) {
    const GuardFolder folder;
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    EXPECT_FALSE(guard.Minimised());
    EXPECT_EQ(L"Kestrelguard v2.0.113", TextOf(guard.Window()));
    EXPECT_FALSE(Enabled(guard.Apply()));
    EXPECT_EQ("PT1/:/:0", folder.SettingsLine("PT1"));
    EXPECT_EQ("PP4/:/:n/:/:60/:/:M", folder.SettingsLine("PP4"));
    EXPECT_EQ("USE/:/:0", folder.SettingsLine("USE"));
    EXPECT_TRUE(guard.Close());
    EXPECT_EQ(0u, guard.Program().ExitCode());
}

TEST_F(StartStopDesktopTest, ItWorksInAFolderThatTheCodePageCannotSpell) {
    const GuardFolder outer;
    const std::wstring folder = outer.Path() + L"\\\u0438\u043c\u044f-\u03b8\u03c9-\u05d0";
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    const std::wstring exe = folder + L"\\kestrelguard.exe";
    ASSERT_TRUE(CopyFileW(outer.Exe().c_str(), exe.c_str(), TRUE));
    Process program(exe, {}, folder);
    const HWND window = WaitTop(
        program.Id(), [](HWND top) { return ClassOf(top) == L"Kestrelguard" && IsWindowVisible(top); });
    ASSERT_NE(nullptr, window) << TextOf(FindMessageBox(program.Id()).window);
    EXPECT_TRUE(FileExists(folder + L"\\KestrelS.CFG"));
    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(program.WaitGone());
    EXPECT_EQ(0u, program.ExitCode());
    EXPECT_NE(std::string::npos, ReadBytes(folder + L"\\KestrelS.CFG").find("PT1/:/:0"));
}

TEST_F(StartStopDesktopTest, AStoredMinimisedStartGoesToTheTray) {
    const GuardFolder folder("MIN/:/:y\r\n");
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    EXPECT_TRUE(guard.InTray());
    ASSERT_TRUE(guard.Icon());
    EXPECT_EQ(L" Kestrelguard v2 - Preventing Popups: 0", guard.Icon()->tip);
    EXPECT_TRUE(guard.Restore());
    EXPECT_TRUE(Checked(guard.Button(L"Open Kestrelguard Minimized (in the system tray)")));
}

TEST_F(StartStopDesktopTest, ASecondCopyEndsSilentlyAndChangesNothing) {
    const GuardFolder folder("MIN/:/:y\r\nUSE/:/:41\r\n", kSavedCookie);
    Guard first(folder);
    ASSERT_TRUE(first.WaitReady());
    ASSERT_TRUE(first.Icon());
    ExpectSecondCopyEnds(folder, first);
    EXPECT_TRUE(first.InTray());
    EXPECT_TRUE(WaitTrayIcons(1));
}

TEST_F(StartStopDesktopTest, ASecondCopyDoesNotBringTheWindowToTheFront) {
    const GuardFolder folder("MIN/:/:n\r\nUSE/:/:41\r\n", kSavedCookie);
    Guard first(folder);
    ASSERT_TRUE(first.WaitReady());
    ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == first.Window(); }));
    BrowserOptions shown;
    shown.shown = true;
    const Browser& inFront = m_desktop.OpenBrowser(shown);
    ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == inFront.Window(); }));
    ExpectSecondCopyEnds(folder, first);
    EXPECT_EQ(inFront.Window(), GetForegroundWindow());
    EXPECT_TRUE(IsWindowVisible(first.Window()));
    EXPECT_FALSE(first.Minimised());
    EXPECT_TRUE(TrayIcons().empty());
}

TEST_F(StartStopDesktopTest, OfTwoCopiesAtOnceExactlyOneStays) {
    const GuardFolder folder("MIN/:/:y\r\n");
    for (int round = 0; round < 5; ++round) {
        Process one(folder.Exe(), {}, {}, true);
        Process other(folder.Exe(), {}, {}, true);
        one.Resume();
        other.Resume();
        ASSERT_TRUE(WaitUntil([&] { return !one.Running() || !other.Running(); }));
        ASSERT_TRUE(WaitTrayIcons(1));
        EXPECT_NE(one.Running(), other.Running());
        EXPECT_EQ(0u, (one.Running() ? other : one).ExitCode());
        Process& running = one.Running() ? one : other;
        const HWND window = WaitTop(running.Id(), [](HWND top) { return IsIconic(top) != FALSE; });
        ASSERT_NE(nullptr, window);
        PostMessageW(window, WM_CLOSE, 0, 0);
        ASSERT_TRUE(running.WaitGone());
        ASSERT_TRUE(WaitTrayIcons(0));
    }
}

TEST_F(StartStopDesktopTest, ExitWritesTheSettingsBeforeTheEnd) {
    const GuardFolder folder("MIN/:/:y\r\nUSE/:/:41\r\nPST/:/:7\r\n");
    Browser& browser = m_desktop.OpenBrowser();
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_TRUE(guard.ExitByMenu());
    EXPECT_EQ(0u, guard.Program().ExitCode());
    EXPECT_EQ("USE/:/:42", folder.SettingsLine("USE"));
    EXPECT_EQ("PST/:/:8", folder.SettingsLine("PST"));
    EXPECT_TRUE(WaitTrayIcons(0));
    // Nobody listens any more.
    EXPECT_EQ(0, browser.Sinks().connected);
    EXPECT_FALSE(browser.FireNewWindow2().cancel);
    EXPECT_EQ(0, browser.OutsideReferences());
}

TEST_F(StartStopDesktopTest, TheEndOfTheSessionRunsTheUnload) {
    const GuardFolder folder("PST/:/:7\r\n");
    Browser& browser = m_desktop.OpenBrowser();
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_EQ(TRUE, Ask(guard.Window(), WM_QUERYENDSESSION));
    // A session that goes on after all changes nothing.
    Ask(guard.Window(), WM_ENDSESSION, FALSE);
    EXPECT_EQ("PST/:/:7", folder.SettingsLine("PST"));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    Ask(guard.Window(), WM_ENDSESSION, TRUE);
    EXPECT_EQ("PST/:/:9", folder.SettingsLine("PST"));
}

TEST_F(StartStopDesktopTest, ASentCloseEndsTheProgramToo) {
    const GuardFolder folder;
    Browser& browser = m_desktop.OpenBrowser();
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    Ask(guard.Window(), WM_CLOSE);
    EXPECT_TRUE(guard.Program().WaitGone());
    EXPECT_EQ(0, browser.Sinks().connected);
}

TEST_F(StartStopDesktopTest, ALockedSettingsFileIsToldAndEndsTheStart) {
    const GuardFolder folder("USE/:/:41\r\n");
    const File lock = Locked(folder, L"KestrelS.CFG", 0);
    Process program(folder.Exe());
    const MessageBoxSeen box = WaitMessageBox(program.Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Kestrelguard", box.caption);
    EXPECT_EQ(L"Run-time error '70':\r\n\r\nPermission denied", box.text);
    EXPECT_TRUE(Dismiss(box));
    ASSERT_TRUE(program.WaitGone());
    EXPECT_NE(0u, program.ExitCode());
}

TEST_F(StartStopDesktopTest, SettingsThatCannotBeWrittenAreToldAndTheProgramEnds) {
    const GuardFolder folder("USE/:/:41\r\n");
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    const File lock = Locked(folder, L"KestrelS.CFG", FILE_SHARE_READ);
    const MessageBoxSeen box = CloseAndWaitBox(guard);
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Kestrelguard", box.caption);
    EXPECT_TRUE(box.text.starts_with(L"Run-time error '"));
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(guard.Program().WaitGone());
    EXPECT_EQ("USE/:/:41", folder.SettingsLine("USE"));
}

// Without the list of browser windows there is nothing to watch.
TEST_F(StartStopTest, WithoutShellWindowsTheStartFailsWithABox) {
    const GuardFolder folder;
    Process program(folder.Exe());
    const MessageBoxSeen box = WaitMessageBox(program.Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Kestrelguard", box.caption);
    EXPECT_TRUE(box.text.starts_with(L"Run-time error '-"));
    EXPECT_TRUE(Dismiss(box));
    ASSERT_TRUE(program.WaitGone());
    EXPECT_NE(0u, program.ExitCode());
}

}  // namespace
}  // namespace kestrelguard::testing
