// In which order the program starts and ends, seen from outside at the moments at which it calls a browser or
// shows a box.

#include <windows.h>

#include <atomic>
#include <string>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

class OrderDesktopTest : public DesktopTest {};

TEST_F(OrderDesktopTest, TheSettingsAreReadBeforeTheBrowsersAreAsked) {
    Browser& browser = m_desktop.OpenBrowser();
    std::atomic<int> mode = -1;
    std::atomic<bool> filtered = false;
    browser.BeforeAdvise([&] {
        const HWND window = FindWindowA("Kestrelguard", nullptr);
        for (int button = 0; button < 3; ++button) {
            if (Checked(FindInside(window, L"Button", Guard::ModeCaption(button)))) {
                mode = button;
            }
        }
        filtered = Ask(FindInside(window, L"ListBox"), LB_GETCOUNT) == 2;
    });
    RunningGuard guard("PT1/:/:2\r\nSS1/:/:y/:/:casino -\r\n");
    EXPECT_EQ(2, mode);
    EXPECT_TRUE(filtered);
    EXPECT_FALSE(Enabled(guard.Apply())) << "what was read is no change";
}

TEST_F(OrderDesktopTest, AStartWhoseSettingsCannotBeReadAsksNoBrowserAndShowsNoIcon) {
    Browser& browser = m_desktop.OpenBrowser();
    const GuardFolder folder("MIN/:/:y\r\n");
    const File lock = Locked(folder, L"KestrelS.CFG", 0);
    Process program(folder.Exe());
    const MessageBoxSeen box = WaitMessageBox(program.Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(0, m_desktop.Enumerations());
    EXPECT_EQ(0, browser.Sinks().advises);
    EXPECT_TRUE(TrayIcons().empty());
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(program.WaitGone());
}

TEST_F(OrderDesktopTest, TheEndLetsTheBrowsersGoFirstAndWritesTheSettingsLast) {
    Browser& browser = m_desktop.OpenBrowser();
    auto folder = std::make_shared<GuardFolder>("USE/:/:41\r\n");
    RunningGuard guard(folder);
    ClickAndWait(guard.Button(L"Show Cache"));
    const auto cacheWindow = [] { return FindWindowW(nullptr, kCacheCaption); };
    ASSERT_TRUE(WaitUntil([&] { return cacheWindow() != nullptr; }));
    ASSERT_TRUE(guard.Minimise());
    ASSERT_EQ(1u, TrayIcons().size());
    std::atomic<int> unadvises = 0;
    std::atomic<bool> cacheWindowThere = false;
    std::atomic<bool> iconThere = false;
    std::string written;
    File lock;
    browser.BeforeUnadvise([&] {
        cacheWindowThere = cacheWindow() != nullptr;
        iconThere = !TrayIcons().empty();
        written = folder->SettingsLine("USE");
        // Not before: a file that is locked from the start stays as it is, whenever it is to be written.
        lock = Locked(*folder, L"KestrelS.CFG", FILE_SHARE_READ);
        ++unadvises;
    });
    PostMessageW(guard.Window(), WM_CLOSE, 0, 0);
    ASSERT_TRUE(WaitUntil([&] { return unadvises == 1; }));
    ASSERT_EQ("USE/:/:41", written) << "while the browsers are let go";
    // Now the settings cannot be written, which is told when all that comes before is done.
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(1, unadvises);
    EXPECT_TRUE(cacheWindowThere) << "while the browsers are let go";
    EXPECT_TRUE(iconThere) << "while the browsers are let go";
    EXPECT_EQ(0, browser.Sinks().connected);
    EXPECT_EQ(nullptr, cacheWindow());
    EXPECT_TRUE(TrayIcons().empty());
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(guard.Program().WaitGone());
}

}  // namespace
}  // namespace kestrelguard::testing
