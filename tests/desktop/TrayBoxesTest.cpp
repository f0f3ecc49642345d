// Boxes that the program shows while its window is in the tray: they come up by themselves, can be answered,
// and leave the window where it is.

#include <windows.h>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

class TrayBoxesTest : public DesktopTest {
 protected:
    /// The box can be seen and answered; the window stays in the tray before and after.
    static void ExpectUsable(RunningGuard& guard, const MessageBoxSeen& box) {
        ASSERT_TRUE(box);
        EXPECT_TRUE(IsWindowVisible(box.window));
        EXPECT_TRUE(guard.InTray());
        EXPECT_TRUE(Dismiss(box));
        EXPECT_TRUE(guard.InTray());
        EXPECT_EQ(1u, TrayIcons().size());
    }
};

TEST_F(TrayBoxesTest, TheQuestionOfAPopup) {
    RunningGuard guard("MIN/:/:y\r\nPT1/:/:1\r\n");
    const PendingEvent event = Watched().Start(EventCall::NewWindow2());
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    EXPECT_TRUE(box.topmost);
    ExpectUsable(guard, box);
    EXPECT_FALSE(event.Result().cancel);
}

TEST_F(TrayBoxesTest, APageThatCannotBeReplaced) {
    RunningGuard guard("MIN/:/:y\r\nSS2/:/:y/:/:xxx -porn\r\n");
    Browser& browser = Watched();
    browser.Fail(Property::Navigate, E_ACCESSDENIED, 1);
    const PendingEvent event = browser.Start(EventCall::TitleChange(L"Free XXX Videos"));
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    EXPECT_EQ(L"Kestrelguard Error!", box.caption);
    ExpectUsable(guard, box);
    EXPECT_EQ(S_OK, event.Result().hr);
}

TEST_F(TrayBoxesTest, ARunTimeError) {
    RunningGuard guard("MIN/:/:y\r\nPP4/:/:n/:/:1/:/:d\r\n");
    // Typed by another program, in front of the digit that is there. The sixth makes more minutes than a
    // number holds.
    for (int digit = 0; digit < 6; ++digit) {
        PostMessageW(guard.Edits()[2], WM_CHAR, L'9', 1);
    }
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    EXPECT_EQ(L"Run-time error '6':\r\n\r\nOverflow", box.text);
    ExpectUsable(guard, box);
    EXPECT_TRUE(guard.EndsWell());
}

}  // namespace
}  // namespace kestrelguard::testing
