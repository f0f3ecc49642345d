// The end of the program, wished for in the middle of something else: it comes once, with exit code 0, and
// the settings are whole.

#include <atomic>
#include <string>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

/// Settings in which no line is a default.
constexpr char kSettings[] =
    "PT1/:/:1\r\nMIN/:/:y\r\nSS1/:/:y/:/:casino -banners -\r\nSS2/:/:y/:/:poker "
    "-dice\r\nPP1/:/:y\r\nPP2/:/:y\r\n"
    "PP3/:/:y\r\nPP4/:/:y/:/:3/:/:h\r\nUSE/:/:41\r\nPST/:/:7\r\n";

/// What one start and one end make of them.
void ExpectWhole(const GuardFolder& folder) {
    EXPECT_EQ("PT1/:/:1", folder.SettingsLine("PT1"));
    EXPECT_EQ("MIN/:/:y", folder.SettingsLine("MIN"));
    EXPECT_EQ("SS1/:/:y/:/:casino -banners - -", folder.SettingsLine("SS1"));
    EXPECT_EQ("SS2/:/:y/:/:poker -dice", folder.SettingsLine("SS2"));
    EXPECT_EQ("PP1/:/:y", folder.SettingsLine("PP1"));
    EXPECT_EQ("PP2/:/:y", folder.SettingsLine("PP2"));
    EXPECT_EQ("PP3/:/:y", folder.SettingsLine("PP3"));
    EXPECT_EQ("PP4/:/:y/:/:3/:/:H", folder.SettingsLine("PP4"));
    EXPECT_EQ("USE/:/:42", folder.SettingsLine("USE"));
    EXPECT_EQ("PST/:/:7", folder.SettingsLine("PST"));
}

/// The main window of the one running program, also when it is hidden and not ready yet.
HWND MainWindow() {
    return FindWindowA("Kestrelguard", nullptr);
}

/// A click that another program sends, and waits for: on a thread of its own, until the handler is done.
class SentClick {
 public:
    explicit SentClick(HWND button)
        : m_button(button), m_thread(CreateThread(nullptr, 0, Run, this, 0, nullptr)) {}
    ~SentClick() { WaitForSingleObject(m_thread.Get(), INFINITE); }
    SentClick(const SentClick&) = delete;
    SentClick& operator=(const SentClick&) = delete;
    bool Answered() const { return WaitForSingleObject(m_thread.Get(), kLimit) == WAIT_OBJECT_0; }

 private:
    static DWORD WINAPI Run(void* self) {
        DWORD_PTR answer = 0;
        SendMessageTimeoutA(static_cast<SentClick*>(self)->m_button, BM_CLICK, 0, 0, SMTO_NORMAL, 2 * kLimit,
                            &answer);
        return 0;
    }
    HWND m_button;
    Handle m_thread;
};

class EndDesktopTest : public DesktopTest {
 protected:
    HWND ShowCacheWindow(Guard& guard) {
        Click(guard.Button(L"Show Cache"));
        return WaitTop(guard.Program().Id(),
                       [](HWND top) { return TextOf(top) == kCacheCaption && IsWindowVisible(top); });
    }
    /// The program has ended by itself, well, and nothing is left of it.
    void ExpectGone(Process& program, const Browser& browser) {
        ASSERT_TRUE(program.WaitGone());
        EXPECT_EQ(0u, program.ExitCode());
        EXPECT_TRUE(WaitTrayIcons(0));
        EXPECT_EQ(0, browser.Sinks().connected);
        EXPECT_EQ(0, browser.OutsideReferences());
    }
};

/// The program runs, with settings that were all chosen, and watches one browser.
class EndOfRunTest : public EndDesktopTest {
 protected:
    void SetUp() override { ASSERT_TRUE(m_guard.WaitReady()); }

    const GuardFolder m_folder{kSettings};
    Browser& m_browser = m_desktop.OpenBrowser();
    Guard m_guard{m_folder};
};

TEST_F(EndOfRunTest, ACloseWhileABoxAnswersASentClick) {
    const HWND cache = ShowCacheWindow(m_guard);
    ASSERT_NE(nullptr, cache);
    const SentClick click(FindInside(cache, L"Button", L"<- Clear"));
    ASSERT_TRUE(WaitMessageBox(m_guard.Program().Id()));
    PostMessageW(m_guard.Window(), WM_CLOSE, 0, 0);
    ExpectGone(m_guard.Program(), m_browser);
    EXPECT_TRUE(click.Answered());
    ExpectWhole(m_folder);
}

TEST_F(EndOfRunTest, ACloseThatIsSentItselfWhileABoxIsOpen) {
    // The question of the prompt mode, while the browser waits.
    auto pending = m_browser.Start(desktop::EventCall::NewWindow2());
    ASSERT_TRUE(WaitMessageBox(m_guard.Program().Id()));
    Ask(m_guard.Window(), WM_CLOSE);
    ASSERT_TRUE(m_guard.Program().WaitGone());
    EXPECT_EQ(0u, m_guard.Program().ExitCode());
    EXPECT_FALSE(pending.Result().cancel);
    ExpectWhole(m_folder);
}

TEST_F(EndOfRunTest, ASecondCloseInTheMiddleOfTheEnd) {
    std::atomic<int> closes = 0;
    m_browser.BeforeUnadvise([&] {
        Ask(MainWindow(), WM_CLOSE);
        ++closes;
        EXPECT_NE(nullptr, MainWindow()) << "the windows stay until the settings are written";
    });
    PostMessageW(m_guard.Window(), WM_CLOSE, 0, 0);
    ExpectGone(m_guard.Program(), m_browser);
    EXPECT_EQ(1, closes);
    ExpectWhole(m_folder);
}

TEST_F(EndOfRunTest, TheEndOfTheSessionInTheMiddleOfTheEnd) {
    std::string written;
    m_browser.BeforeUnadvise([&] {
        EXPECT_EQ(TRUE, Ask(MainWindow(), WM_QUERYENDSESSION));
        Ask(MainWindow(), WM_ENDSESSION, TRUE);
        // From here on the system may end the process.
        written = m_folder.SettingsLine("USE");
    });
    PostMessageW(m_guard.Window(), WM_CLOSE, 0, 0);
    ExpectGone(m_guard.Program(), m_browser);
    EXPECT_EQ("USE/:/:42", written);
    ExpectWhole(m_folder);
}

TEST_F(EndOfRunTest, TheEndOfTheSessionEndsTheProgram) {
    Ask(m_guard.Window(), WM_ENDSESSION, TRUE);
    EXPECT_EQ("USE/:/:42", m_folder.SettingsLine("USE")) << "before the answer";
    ASSERT_TRUE(m_guard.Program().WaitGone());
    EXPECT_EQ(0u, m_guard.Program().ExitCode());
    EXPECT_EQ(0, m_browser.Sinks().connected);
    ExpectWhole(m_folder);
}

TEST_F(EndOfRunTest, TheEndOfTheSessionWhileAQuestionIsOpen) {
    auto pending = m_browser.Start(desktop::EventCall::NewWindow2());
    ASSERT_TRUE(WaitMessageBox(m_guard.Program().Id()));
    Ask(m_guard.Window(), WM_ENDSESSION, TRUE);
    EXPECT_EQ("USE/:/:42", m_folder.SettingsLine("USE")) << "before the answer";
    ASSERT_TRUE(m_guard.Program().WaitGone());
    EXPECT_EQ(0u, m_guard.Program().ExitCode());
    EXPECT_FALSE(pending.Result().cancel);
    ExpectWhole(m_folder);
}

TEST_F(EndDesktopTest, ACloseInTheMiddleOfTheStartEndsQuietly) {
    const GuardFolder folder(kSettings);
    Browser& browser = m_desktop.OpenBrowser();
    std::atomic<int> closes = 0;
    browser.BeforeAdvise([&] {
        Ask(MainWindow(), WM_CLOSE);
        ++closes;
    });
    Process program(folder.Exe());
    ASSERT_TRUE(WaitUntil([&] { return !program.Running() || FindMessageBox(program.Id()); }));
    EXPECT_FALSE(FindMessageBox(program.Id())) << "no word about it";
    ExpectGone(program, browser);
    EXPECT_EQ(1, closes);
    ExpectWhole(folder);
}

/// A close that waits among the program's messages when the start looks at them for the first time.
TEST_F(EndDesktopTest, ACloseBeforeTheStartLooksAtItsMessagesEndsQuietly) {
    std::string sites;
    for (int site = 0; site < 50000; ++site) {
        sites += "site" + std::to_string(site) + " -";
    }
    // Reading them takes long enough for the close to come first.
    const GuardFolder folder("USE/:/:41\r\nSS1/:/:y/:/:" + sites + "\r\n");
    Browser& browser = m_desktop.OpenBrowser();
    Process program(folder.Exe());
    while (MainWindow() == nullptr && program.Running()) {
        SwitchToThread();
    }
    PostMessageA(MainWindow(), WM_CLOSE, 0, 0);
    ASSERT_TRUE(WaitUntil([&] { return !program.Running() || FindMessageBox(program.Id()); }));
    EXPECT_FALSE(FindMessageBox(program.Id()));
    ExpectGone(program, browser);
    EXPECT_EQ("USE/:/:42", folder.SettingsLine("USE"));
    EXPECT_EQ("SS1/:/:y/:/:" + sites + " -", folder.SettingsLine("SS1"));
}

TEST_F(EndDesktopTest, TheEndOfTheSessionInTheMiddleOfTheStart) {
    const GuardFolder folder(kSettings);
    Browser& browser = m_desktop.OpenBrowser();
    std::string written;
    browser.BeforeAdvise([&] {
        Ask(MainWindow(), WM_ENDSESSION, TRUE);
        written = folder.SettingsLine("USE");
    });
    Process program(folder.Exe());
    ASSERT_TRUE(WaitUntil([&] { return !program.Running() || FindMessageBox(program.Id()); }));
    EXPECT_FALSE(FindMessageBox(program.Id()));
    ASSERT_TRUE(program.WaitGone());
    EXPECT_EQ(0u, program.ExitCode());
    EXPECT_EQ("USE/:/:42", written);
    ExpectWhole(folder);
}

TEST_F(EndDesktopTest, ACloseWhileTheFailureOfTheEndIsTold) {
    const GuardFolder folder(kSettings);
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    const File lock = Locked(folder, L"KestrelS.CFG", FILE_SHARE_READ);
    const MessageBoxSeen box = CloseAndWaitBox(guard);
    ASSERT_TRUE(box);
    Ask(guard.Window(), WM_CLOSE);
    EXPECT_TRUE(IsWindow(box.window)) << "it can still be read";
    EXPECT_TRUE(Dismiss(box));
    ASSERT_TRUE(guard.Program().WaitGone());
    EXPECT_EQ(0u, guard.Program().ExitCode());
}

/// A cookie is taken off the list while its file cannot be written, and the program ends later.
TEST_F(EndDesktopTest, SavedCookiesThatCouldNotBeWrittenAreWrittenAtTheEnd) {
    const GuardFolder folder(kSettings, "1\r\n2\r\n3\r\n4\r\nCookie:a@a.example/\r\nCookie:b@b.example/\r\n");
    Guard guard(folder);
    ASSERT_TRUE(guard.WaitReady());
    const HWND cache = ShowCacheWindow(guard);
    ASSERT_NE(nullptr, cache);
    HWND saved = nullptr;
    for (const HWND child : Inside(cache)) {
        if (lstrcmpiW(ClassOf(child).c_str(), L"ListBox") == 0) {
            saved = child;  // the second one
        }
    }
    ASSERT_EQ((std::vector<std::wstring>{L"Cookie:a@a.example/", L"Cookie:b@b.example/"}), ListRows(saved));
    SelectRow(saved, 0);
    ClickAndWait(FindInside(cache, L"Button", L"<- Remove"));
    {
        const File lock = Locked(folder, L"KestrelC.CFG", FILE_SHARE_READ);
        PostMessageW(cache, WM_CLOSE, 0, 0);
        const MessageBoxSeen box = WaitMessageBox(guard.Program().Id());
        ASSERT_TRUE(box);
        EXPECT_TRUE(box.text.starts_with(L"Run-time error '")) << "which says why";
        EXPECT_TRUE(Dismiss(box));
    }
    EXPECT_NE(std::string::npos, folder.Cookies().find("Cookie:a@a.example/"));
    EXPECT_TRUE(guard.Close());
    EXPECT_EQ(std::string::npos, folder.Cookies().find("Cookie:a@a.example/"));
    EXPECT_NE(std::string::npos, folder.Cookies().find("Cookie:b@b.example/"));
}

}  // namespace
}  // namespace kestrelguard::testing
