// What the program asks of Windows and leaves no trace of: the pace of its timer, and what the shell is to
// open.

#include <windows.h>

#include <string>
#include <vector>

#include "DesktopTest.h"
#include "runtime/Maker.h"

namespace kestrelguard::testing {
namespace {

std::wstring Wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

class PlatformCallsTest : public DesktopTest {
 protected:
    /// One call after the other for the help page, each with the main window as its owner.
    static void ExpectHelpCalls(RunningGuard& guard, std::size_t count) {
        const auto calls = guard.Inside().ExecuteCalls();
        EXPECT_EQ(count, calls.size());
        for (const ExecuteCall& call : calls) {
            EXPECT_EQ(guard.Window(), call.owner);
            EXPECT_EQ("open", call.verb);
            EXPECT_EQ(std::wstring(L"http://") + maker::kWebServer + L"/KG/help", Wide(call.file));
            EXPECT_EQ("0", call.parameters);
            EXPECT_EQ(guard.Folder()->Path(), Wide(call.folder));
            EXPECT_EQ(SW_SHOWNORMAL, call.show);
        }
    }
};

TEST_F(PlatformCallsTest, TheWasherTicksOnceAMinute) {
    RunningGuard guard("MIN/:/:n\r\nPP4/:/:y/:/:5/:/:M\r\n", &Hook::RecordCalls);
    // The start is over when what was posted is worked off.
    ASSERT_TRUE(guard.WaitPosted());
    std::vector<TimerCall> ticks;
    for (const TimerCall& call : guard.Inside().TimerCalls()) {
        if (call.window == guard.Window()) {
            ticks.push_back(call);
        }
    }
    ASSERT_EQ(1u, ticks.size());
    EXPECT_EQ(1u, ticks[0].id);
    EXPECT_EQ(60000u, ticks[0].milliseconds) << "a minute, whatever the interval of the cleaning is";
    EXPECT_TRUE(guard.EndsWell());
}

TEST_F(PlatformCallsTest, TheQuestionMarkOpensTheHelpPage) {
    RunningGuard guard("MIN/:/:n\r\n", &Hook::RecordCalls);
    ExpectHelpCalls(guard, 0);
    ClickAndWait(guard.Button(L"?"));
    ExpectHelpCalls(guard, 1);
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()))
        << "a page that cannot be opened is none of its errors";
    EXPECT_FALSE(Enabled(guard.Apply()));
    EXPECT_TRUE(guard.EndsWell());
}

TEST_F(PlatformCallsTest, TheTrayMenuOpensTheSameHelpPage) {
    RunningGuard guard("MIN/:/:y\r\n", &Hook::RecordCalls);
    ASSERT_TRUE(guard.ChooseFromTrayMenu(L"Kestrelguard Help"));
    ASSERT_TRUE(WaitUntil([&] { return !guard.Inside().ExecuteCalls().empty(); }));
    ASSERT_TRUE(guard.WaitPosted());
    ExpectHelpCalls(guard, 1);
    EXPECT_FALSE(FindMessageBox(guard.Program().Id()));
    EXPECT_TRUE(guard.InTray());
    EXPECT_TRUE(guard.EndsWell());
}

}  // namespace
}  // namespace kestrelguard::testing
