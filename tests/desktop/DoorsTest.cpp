// What other programs can bring about in the unchanged one: files beside it, and messages to its windows.

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "RunningGuard.h"
#include "desktop/Desktop.h"

namespace kestrelguard::testing {
namespace {

using desktop::Browser;
using desktop::StandInDesktop;

constexpr char kSettings[] =
    "PT1/:/:0\r\nMIN/:/:n\r\nSS1/:/:y/:/:casino -\r\nSS2/:/:y/:/:poker -dice\r\nPP1/:/:n\r\nPP2/:/:n\r\n"
    "PP3/:/:n\r\nPP4/:/:n/:/:3/:/:H\r\nUSE/:/:41\r\nPST/:/:7\r\n";

/// What a message may carry: nothing, small numbers, and what no pointer can be.
constexpr DWORD kValues[] = {0, 1, 2, 0x7F, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xDEADBEEF, 0xFFFFFFFF};

class DoorsTest : public ::testing::Test {
 protected:
    void Start() {
        m_browser = &m_desktop.OpenBrowser();
        m_guard = std::make_unique<RunningGuard>(kSettings);
        Click(m_guard->Button(L"Show Cache"));
        m_cache = WaitTop(m_guard->Program().Id(),
                          [](HWND top) { return ClassOf(top) == L"KG_Cache" && IsWindowVisible(top); });
        ASSERT_NE(nullptr, m_cache);
        m_tree = m_guard->TreeLines();
    }
    /// The program's own windows: the two forms, the pages, and those that only messages reach.
    std::vector<HWND> OwnWindows() const {
        std::vector<HWND> windows;
        for (const HWND top : TopWindows(m_guard->Program().Id())) {
            windows.push_back(top);
            const std::vector<HWND> inside = Inside(top);
            windows.insert(windows.end(), inside.begin(), inside.end());
        }
        std::erase_if(windows, [](HWND window) {
            const std::wstring type = ClassOf(window);
            return !type.starts_with(L"Kestrelguard") && type != L"KG_Cache";
        });
        return windows;
    }
    /// Sends it, as long as it is answered, and posts it.
    static void Give(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        DWORD_PTR result = 0;
        SendMessageTimeoutA(window, message, wParam, lParam, SMTO_NORMAL, kLimit, &result);
        PostMessageA(window, message, wParam, lParam);
    }
    void WaitWorkedOff() const {
        EXPECT_TRUE(WaitUntil([&] { return m_guard->Inside().IsIdle(m_guard->Window()); }));
    }
    /// Everything is as at the start, the guard guards, and its end writes what it would have written.
    void ExpectAsBefore() {
        ASSERT_TRUE(m_guard->Program().Running());
        EXPECT_TRUE(m_guard->WaitPosted());
        EXPECT_FALSE(FindMessageBox(m_guard->Program().Id()));
        EXPECT_TRUE(IsWindow(m_cache));
        EXPECT_EQ(m_tree, m_guard->TreeLines());
        EXPECT_EQ(0, m_guard->Mode());
        EXPECT_FALSE(Enabled(m_guard->Apply()));
        EXPECT_TRUE(m_browser->FireNewWindow2().cancel);
        EXPECT_EQ(L"1", m_guard->Today());
        EXPECT_TRUE(m_guard->EndsWell());
        const std::string file = m_guard->Folder()->Settings();
        EXPECT_NE(std::string::npos,
                  file.find("PT1/:/:0\r\nMIN/:/:n\r\nSS1/:/:y/:/:casino - -\r\nSS2/:/:y/:/:poker -dice\r\n"
                            "PP1/:/:n\r\nPP2/:/:n\r\nPP3/:/:n\r\nPP4/:/:n/:/:3/:/:H\r\nUSE/:/:42\r\n"
                            "PST/:/:8\r\n"))
            << file;
        EXPECT_EQ(0, m_browser->Sinks().connected);
    }

    desktop::Apartment m_apartment;
    StandInDesktop m_desktop;
    Browser* m_browser = nullptr;
    std::unique_ptr<RunningGuard> m_guard;
    HWND m_cache = nullptr;
    std::vector<std::wstring> m_tree;
};

/// Anything may lie beside the program under a library's name: what it loads it asks for by the full path.
TEST_F(DoorsTest, ALibraryOfTheSystemIsNotTakenFromBesideTheProgram) {
    const auto folder = std::make_shared<GuardFolder>(kSettings);
    const std::wstring planted = OwnFolder() + L"\\kg_hook.dll";
    ASSERT_TRUE(CopyFileW(planted.c_str(), folder->File(L"uxtheme.dll").c_str(), TRUE));
    m_guard = std::make_unique<RunningGuard>(folder, &Hook::RecordLibraries);
    char system[MAX_PATH] = {};
    ASSERT_NE(0u, GetSystemDirectoryA(system, MAX_PATH));
    const auto calls = m_guard->Inside().LibraryCalls();
    EXPECT_FALSE(calls.empty()) << "the pages ask whether there are visual styles";
    for (const std::string& name : calls) {
        EXPECT_EQ(std::string(system) + "\\uxtheme.dll", name);
    }
    EXPECT_TRUE(m_guard->EndsWell());
}

TEST_F(DoorsTest, WindowsDoNotDieOfMessagesThatTellOfTheirBirthOrDeath) {
    ASSERT_NO_FATAL_FAILURE(Start());
    CREATESTRUCTA creation{};
    for (const HWND window : OwnWindows()) {
        for (const DWORD pointer : kValues) {
            creation.lpCreateParams = reinterpret_cast<void*>(static_cast<UINT_PTR>(pointer));
            Give(window, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&creation));
            Give(window, WM_CREATE, 0, reinterpret_cast<LPARAM>(&creation));
        }
        Give(window, WM_DESTROY, 0, 0);
        Give(window, WM_NCDESTROY, 0, 0);
        // The forms close as a user closes them; nothing else of the program can be closed.
        if (window != m_guard->Window() && window != m_cache) {
            Give(window, WM_CLOSE, 0, 0);
        }
    }
    WaitWorkedOff();
    ExpectAsBefore();
}

TEST_F(DoorsTest, AWishToQuitEndsNothing) {
    ASSERT_NO_FATAL_FAILURE(Start());
    PostMessageA(m_guard->Window(), WM_QUIT, 7, 0);
    PostThreadMessageA(GetWindowThreadProcessId(m_guard->Window(), nullptr), WM_QUIT, 8, 0);
    WaitWorkedOff();
    ExpectAsBefore();
}

TEST_F(DoorsTest, SystemMessagesWithForgedContentsChangeNothing) {
    ASSERT_NO_FATAL_FAILURE(Start());
    constexpr UINT kMessages[] = {WM_TIMER,           WM_NOTIFY,         WM_COPYDATA,      WM_SETTEXT,
                                  WM_DRAWITEM,        WM_ERASEBKGND,     WM_CTLCOLORBTN,   WM_CTLCOLORSTATIC,
                                  WM_VKEYTOITEM,      WM_SYSCOLORCHANGE, WM_SETTINGCHANGE, WM_DEVICECHANGE,
                                  WM_QUERYENDSESSION, WM_GETTEXT};
    for (const HWND window : OwnWindows()) {
        for (const UINT message : kMessages) {
            for (const DWORD value : kValues) {
                if (message != WM_TIMER || value != 1) {
                    PostMessageA(window, message, value, static_cast<LPARAM>(value));
                }
            }
        }
        // What the system carries from one program to the other, and what the session asks before its end.
        COPYDATASTRUCT data{7, sizeof kSettings, const_cast<char*>(kSettings)};
        Give(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data));
        Ask(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"another caption"));
        Ask(window, WM_QUERYENDSESSION);
        Ask(window, WM_ENDSESSION, FALSE);
    }
    WaitWorkedOff();
    ExpectAsBefore();
}

TEST_F(DoorsTest, CommandsOfControlsThatAreNotThereDoNothing) {
    ASSERT_NO_FATAL_FAILURE(Start());
    for (const HWND window : OwnWindows()) {
        for (const int id : {0, 99, 200, 299, 400, 0x7FFF, 0xFFFF}) {
            for (const DWORD control : kValues) {
                PostMessageA(window, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), static_cast<LPARAM>(control));
            }
        }
        // Controls that are there tell of nothing but what they can do.
        for (WORD id = 1; id < 400; ++id) {
            PostMessageA(window, WM_COMMAND, MAKEWPARAM(id, 0x7654), 0);
        }
    }
    WaitWorkedOff();
    ExpectAsBefore();
}

TEST_F(DoorsTest, PrivateMessagesWithAnyContentsAreHarmless) {
    ASSERT_NO_FATAL_FAILURE(Start());
    for (const HWND window : OwnWindows()) {
        for (UINT message = WM_USER; message < WM_USER + 64; ++message) {
            PostMessageA(window, message, 0xDEADBEEF, static_cast<LPARAM>(0xDEADBEEF));
        }
        for (UINT message = WM_APP; message < WM_APP + 16; ++message) {
            for (const DWORD value : kValues) {
                PostMessageA(window, message, value, static_cast<LPARAM>(value));
            }
            // The tree's menu may have opened, as a right click opens it.
            while (!m_guard->Inside().IsIdle(m_guard->Window()) || m_guard->Inside().ReadMenu()) {
                m_guard->Inside().CloseMenu();
            }
        }
    }
    // What the shell tells of the icon, and that it has begun anew.
    for (const DWORD value : kValues) {
        PostMessageA(m_guard->Window(), WM_MOUSEMOVE, value, static_cast<LPARAM>(value));
    }
    PostMessageA(m_guard->Window(), RegisterWindowMessageA("TaskbarCreated"), 7, 7);
    WaitWorkedOff();
    // The tree is built anew by a double click, which spells a node with a blank at its end, as at the start.
    ExpectAsBefore();
}

}  // namespace
}  // namespace kestrelguard::testing
