// "Cancel" after an edit of the banned words: the text of the file comes back, the words in force stay, and
// the edit is remembered.

#include <windows.h>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

constexpr wchar_t kMinimisedBox[] = L"Open Kestrelguard Minimized (in the system tray)";

class CancelDesktopTest : public DesktopTest {
 protected:
    /// Edits the banned words and cancels.
    static void EditAndCancel(RunningGuard& guard, const wchar_t* words) {
        TypeText(guard.Edits()[1], words);
        ASSERT_TRUE(Enabled(guard.Apply()));
        ClickAndWait(guard.Button(L"Cancel"));
        ASSERT_TRUE(WaitUntil([&] { return guard.InTray(); }));
        EXPECT_FALSE(Enabled(guard.Apply()));
    }
    static bool Bans(Browser& browser, const wchar_t* title) {
        const std::size_t before = browser.NavigateCalls().size();
        EXPECT_EQ(S_OK, browser.FireTitleChange(title).hr);
        return browser.NavigateCalls().size() > before;
    }
};

TEST_F(CancelDesktopTest, TheWordsOfTheFileComeBack) {
    RunningGuard guard("SS2/:/:y/:/:Poker -dice\r\n");
    Browser& browser = Watched();
    EditAndCancel(guard, L"roulette -bingo");
    EXPECT_EQ(L"Poker -dice", TextOf(guard.Edits()[1]));
    EXPECT_TRUE(Bans(browser, L"Poker for all"));
    EXPECT_TRUE(Bans(browser, L"Dice for all"));
    EXPECT_FALSE(Bans(browser, L"Roulette for all"));
    EXPECT_TRUE(guard.EndsWell());
    EXPECT_EQ("y/:/:Poker -dice", guard.Setting("SS2"));
}

TEST_F(CancelDesktopTest, ALoneWordOfTheFileDoesNotComeBackAndTheEditActsWithTheNextApply) {
    RunningGuard guard("SS2/:/:y/:/:poker\r\n");
    Browser& browser = Watched();
    EditAndCancel(guard, L"roulette -bingo");
    EXPECT_EQ(L"roulette -bingo", TextOf(guard.Edits()[1]));
    EXPECT_FALSE(Bans(browser, L"Roulette for all"));
    // Any other change that is applied takes the edited words along.
    ClickAndWait(guard.Button(kMinimisedBox));
    ClickAndWait(guard.Apply());
    EXPECT_TRUE(Bans(browser, L"Roulette for all"));
    EXPECT_EQ("y/:/:roulette -bingo", guard.Setting("SS2"));
}

TEST_F(CancelDesktopTest, WhatTheFilePutsIntoTheTextBoxIsNoChange) {
    RunningGuard guard("SS2/:/:y/:/:Poker -dice\r\n");
    const HWND words = guard.Edits()[1];
    // Nothing but the text differs, so that nothing else can turn Apply on.
    EditAndCancel(guard, L"roulette -bingo");
    EXPECT_EQ(L"Poker -dice", TextOf(words)) << "the file was read";
    ASSERT_TRUE(guard.Restore());
    EXPECT_FALSE(Enabled(guard.Apply()));
    // An edit is still heard.
    TypeText(words, L"bingo -roulette");
    EXPECT_TRUE(Enabled(guard.Apply()));
}

TEST_F(CancelDesktopTest, ApplyIsOffBeforeTheFileIsReadAndStaysOffWhenItCannotBeRead) {
    RunningGuard guard("SS2/:/:y/:/:Poker -dice\r\n");
    const HWND words = guard.Edits()[1];
    TypeText(words, L"roulette -bingo");
    ASSERT_TRUE(Enabled(guard.Apply()));
    File lock(CreateFileW(guard.Folder()->File(L"KestrelS.CFG").c_str(), GENERIC_READ, 0, nullptr,
                          OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(lock);
    Click(guard.Button(L"Cancel"));
    const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
    ASSERT_TRUE(box);
    EXPECT_FALSE(Enabled(guard.Apply())) << "while the failure is told";
    EXPECT_TRUE(Dismiss(box));
    ASSERT_TRUE(guard.WaitPosted());
    EXPECT_FALSE(Enabled(guard.Apply()));
    EXPECT_TRUE(guard.Shown()) << "what failed does not minimise";
    EXPECT_EQ(L"roulette -bingo", TextOf(words));
    // With nothing to cancel, a second Cancel does not read the file, locked or not.
    ClickAndWait(guard.Button(L"Cancel"));
    EXPECT_TRUE(WaitUntil([&] { return guard.InTray(); }));
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
    lock.Reset();
    EXPECT_TRUE(guard.EndsWell());
}

}  // namespace
}  // namespace kestrelguard::testing
