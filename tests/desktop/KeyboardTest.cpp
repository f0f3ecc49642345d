// The unchanged program under the hands of somebody who has no mouse.

#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>
#include <vector>

#include "desktop/Desktop.h"
#include "desktop/driver/CacheFiller.h"
#include "desktop/driver/StandInLibraries.h"
#include "tests/desktop/RunningGuard.h"

namespace kestrelguard::testing {
namespace {

using Names = std::vector<std::wstring>;

constexpr wchar_t kTitleBox[] =
    L"Prevent Internet Sites with the following words in their Title from loading... Seperate "
    L"multiple keywords by a space and a minus sign.";

class KeyboardTest : public ::testing::Test {
 protected:
    void Start(const std::string& settings = "MIN/:/:n\r\n") {
        m_guard = std::make_unique<RunningGuard>(settings);
        m_form = m_guard->Window();
        ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == m_form && Focus() != nullptr; }));
    }

    /// The control of the program's user-interface thread that has the focus.
    HWND Focus() const {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(m_form, nullptr), &info);
        return info.hwndFocus;
    }
    /// Presses keys as a person does, and waits until the program has dealt with them.
    void Press(std::initializer_list<BYTE> keys) const {
        for (const BYTE key : keys) {
            keybd_event(key, 0, Extended(key), 0);
        }
        for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
            keybd_event(*key, 0, Extended(*key) | KEYEVENTF_KEYUP, 0);
        }
        // What is sent overtakes keys: its thread must say that none is left.
        EXPECT_TRUE(
            WaitUntil([&] { return !m_guard->Program().Running() || m_guard->Inside().IsIdle(m_form); }));
    }
    static DWORD Extended(BYTE key) {
        return key == VK_NEXT || key == VK_PRIOR || key == VK_DOWN || key == VK_APPS ? KEYEVENTF_EXTENDEDKEY
                                                                                     : 0;
    }
    bool FocusIs(HWND control) const {
        return WaitUntil([&] { return Focus() == control; }, 10000);
    }
    /// How a person would call a control.
    std::wstring Name(HWND control) const {
        const std::wstring type = ClassOf(control);
        if (lstrcmpiW(type.c_str(), L"Button") == 0) {
            return TextOf(control) == L"Check1"
                       ? L"Check1 at " + std::to_wstring(m_guard->WashBoxes()[0] == control   ? 0
                                                         : m_guard->WashBoxes()[1] == control ? 1
                                                                                              : 2)
                       : TextOf(control);
        }
        return type + L" " + std::to_wstring(IdOf(control));
    }
    /// Where Tab leads from the control that has the focus until it is back there.
    Names TabRound(const std::initializer_list<BYTE> keys = {VK_TAB}) {
        Names names;
        const HWND first = Focus();
        HWND now = first;
        do {
            names.push_back(Name(now));
            Press(keys);
            if (!WaitUntil([&] { return Focus() != now; }, 10000)) {
                names.push_back(L"and stays there");
                break;
            }
            now = Focus();
        } while (now != first && names.size() < 40);
        return names;
    }
    HWND ForEnter(HWND window) const {
        HWND found = nullptr;
        for (const HWND control : Inside(window)) {
            if (lstrcmpiW(ClassOf(control).c_str(), L"Button") == 0 &&
                (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) == BS_DEFPUSHBUTTON) {
                EXPECT_EQ(nullptr, found) << "two buttons are drawn for Enter";
                found = control;
            }
        }
        return found;
    }
    std::wstring TypeAndId(HWND control) const {
        return ClassOf(control) + L" " + std::to_wstring(IdOf(control));
    }

    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    std::unique_ptr<RunningGuard> m_guard;
    HWND m_form = nullptr;
};

TEST_F(KeyboardTest, TabGoesThroughEveryControlInReadingOrder) {
    Start();
    const std::wstring tree = TypeAndId(m_guard->Tree());
    const std::wstring tabs = TypeAndId(m_guard->Tabs());
    const std::vector<HWND> edits = m_guard->Edits();
    ASSERT_TRUE(FocusIs(m_guard->Tabs()));
    EXPECT_EQ((Names{tabs, Guard::ModeCaption(0), L"Open Kestrelguard Minimized (in the system tray)", L"?",
                     L"OK", L"Cancel", tree}),
              TabRound());
    Press({VK_CONTROL, VK_TAB});
    EXPECT_EQ((Names{tabs, L"Prevent the Following Internet Sites from loading in Internet Explorer...",
                     TypeAndId(edits[0]), L"Add", TypeAndId(m_guard->SiteList()), L"Remove", kTitleBox,
                     TypeAndId(edits[1]), L"?", L"OK", L"Cancel", tree}),
              TabRound());
    Press({VK_CONTROL, VK_TAB});
    const Names third = {tabs,
                         L"Clear Internet Explorer Cache Now",
                         L"Check1 at 0",
                         L"Show Cache",
                         L"Clear Internet Eplorer History Now",
                         L"Check1 at 1",
                         L"Clear Internet Explorer Cookies Now",
                         L"Check1 at 2",
                         L"Show Cookies",
                         L"Clear Automatically every",
                         TypeAndId(edits[2]),
                         TypeAndId(m_guard->UnitDropDown()),
                         L"?",
                         L"OK",
                         L"Cancel",
                         tree};
    EXPECT_EQ(third, TabRound());
    Names back(third.rbegin(), third.rend() - 1);
    back.insert(back.begin(), tabs);
    EXPECT_EQ(back, TabRound({VK_SHIFT, VK_TAB}));
    ClickAndWait(m_guard->WashBoxes()[1]);
    EXPECT_TRUE(Enabled(m_guard->Apply()));
}

TEST_F(KeyboardTest, TheKeysOfPagesTurnThem) {
    Start();
    const struct {
        std::vector<BYTE> keys;
        int page;
    } steps[] = {{{VK_CONTROL, VK_TAB}, 1},   {{VK_CONTROL, VK_NEXT}, 2},
                 {{VK_CONTROL, VK_TAB}, 0},   {{VK_CONTROL, VK_SHIFT, VK_TAB}, 2},
                 {{VK_CONTROL, VK_PRIOR}, 1}, {{VK_CONTROL, VK_PRIOR}, 0}};
    const HWND shown[] = {m_guard->ModeButton(0), m_guard->SiteList(), m_guard->UnitDropDown()};
    for (const auto& step : steps) {
        step.keys.size() == 2 ? Press({step.keys[0], step.keys[1]})
                              : Press({step.keys[0], step.keys[1], step.keys[2]});
        ASSERT_TRUE(WaitUntil([&] { return SelectedTab(m_guard->Tabs()) == step.page; }));
        for (int page = 0; page < 3; ++page) {
            EXPECT_TRUE(
                WaitUntil([&] { return (IsWindowVisible(shown[page]) != FALSE) == (page == step.page); }));
        }
        EXPECT_TRUE(FocusIs(m_guard->Tabs()));
    }
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    // From within a page the focus goes into the next one, not to what is hidden.
    SetForegroundWindow(m_form);
    Press({VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->ModeButton(0)));
    Press({VK_CONTROL, VK_NEXT});
    EXPECT_TRUE(FocusIs(
        m_guard->Button(L"Prevent the Following Internet Sites from loading in Internet Explorer...")));
    Press({VK_CONTROL, VK_PRIOR});
    EXPECT_TRUE(FocusIs(m_guard->ModeButton(0)));
    EXPECT_EQ(0, m_guard->Mode());
}

TEST_F(KeyboardTest, AfterApplyTheFocusIsOnAButtonThatWorks) {
    Start();
    ClickAndWait(m_guard->WashBoxes()[0]);
    ASSERT_TRUE(WaitUntil([&] { return Enabled(m_guard->Apply()); }));
    Press({VK_SHIFT, VK_TAB});
    ASSERT_TRUE(WaitUntil([&] { return Focus() != m_guard->Tabs(); }));
    while (Focus() != m_guard->Apply()) {
        const HWND before = Focus();
        Press({VK_TAB});
        ASSERT_TRUE(WaitUntil([&] { return Focus() != before; }));
    }
    Press({VK_SPACE});
    ASSERT_TRUE(WaitUntil([&] { return !Enabled(m_guard->Apply()); }));
    EXPECT_EQ("y", m_guard->Setting("PP1"));
    EXPECT_TRUE(FocusIs(m_guard->Button(L"OK")));
    Press({VK_TAB});
    EXPECT_TRUE(FocusIs(m_guard->Button(L"Cancel")));
    EXPECT_TRUE(m_guard->Shown());
}

TEST_F(KeyboardTest, EnterPressesTheButtonThatHasTheFocusAndElseOK) {
    Start();
    EXPECT_TRUE(WaitUntil([&] { return ForEnter(m_form) == m_guard->Button(L"OK"); }));
    Press({VK_SHIFT, VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->Tree()));
    Press({VK_SHIFT, VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->Button(L"Cancel")));
    EXPECT_TRUE(WaitUntil([&] { return ForEnter(m_form) == m_guard->Button(L"Cancel"); }));
    Press({VK_TAB});
    Press({VK_CONTROL, VK_NEXT});
    Press({VK_TAB});
    Press({VK_TAB});
    Press({VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->Edits()[0]));
    EXPECT_TRUE(WaitUntil([&] { return ForEnter(m_form) == m_guard->Button(L"Add"); }));
    TypeText(m_guard->Edits()[0], L"casino");
    Press({VK_RETURN});
    EXPECT_TRUE(WaitUntil([&] { return ListRows(m_guard->SiteList()) == Names{L"casino"}; }));
    Press({VK_TAB});
    Press({VK_TAB});
    Press({VK_DOWN});
    Press({VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->Button(L"Remove")));
    Press({VK_RETURN});
    EXPECT_TRUE(WaitUntil([&] { return ListRows(m_guard->SiteList()).empty(); }));
    EXPECT_TRUE(m_guard->Shown());
    Press({VK_TAB});
    Press({VK_RETURN});
    EXPECT_TRUE(WaitUntil([&] { return m_guard->InTray(); })) << "on a check box Enter is OK";
}

TEST_F(KeyboardTest, EscIsCancelWhereverTheFocusIs) {
    Start();
    const std::string before = m_guard->Folder()->Settings();
    Press({VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->ModeButton(0)));
    ClickAndWait(m_guard->WashBoxes()[0]);
    Press({VK_ESCAPE});
    EXPECT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    EXPECT_EQ(before, m_guard->Folder()->Settings());
}

TEST_F(KeyboardTest, TheMenuKeyOpensTheMenuOfTheTree) {
    Start();
    Press({VK_SHIFT, VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->Tree()));
    Press({VK_APPS});
    const OpenMenu menu = m_guard->Inside().WaitMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ((Names{L"Show this Browser Window", L"Close this Browser Window"}), menu.Captions());
    EXPECT_TRUE(m_guard->Inside().CloseMenu());
    EXPECT_TRUE(FocusIs(m_guard->Tree()));
}

TEST_F(KeyboardTest, AModeChosenInTheTrayOutlivesTheReturnOfTheFocus) {
    Start();
    Press({VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->ModeButton(0)));
    ASSERT_TRUE(m_guard->Minimise());
    ASSERT_TRUE(m_guard->ChooseFromTrayMenu(L"Prevent Popups = 0"));
    ASSERT_TRUE(WaitUntil([&] { return m_guard->Mode() == 2; }));
    ASSERT_TRUE(m_guard->Restore());
    // On the button that was left the focus would select it.
    EXPECT_TRUE(FocusIs(m_guard->ModeButton(2)));
    EXPECT_EQ(2, m_guard->Mode());
}

TEST_F(KeyboardTest, TheFocusComesBackFromTheTrayToWhereItWas) {
    Start();
    Press({VK_SHIFT, VK_TAB});
    Press({VK_SHIFT, VK_TAB});
    ASSERT_TRUE(FocusIs(m_guard->Button(L"Cancel")));
    Press({VK_SPACE});
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    ASSERT_TRUE(m_guard->Restore());
    EXPECT_TRUE(FocusIs(m_guard->Button(L"Cancel")));
}

class CacheKeyboardTest : public KeyboardTest {
 protected:
    static void SetUpTestSuite() { ASSERT_TRUE(BindToOwnWinInet()); }
    CacheKeyboardTest() { CacheFiller::Empty(); }
    ~CacheKeyboardTest() override {
        m_guard.reset();
        CacheFiller::Empty();
    }

    void StartWithCacheWindow() {
        CacheFiller::Add("http://one.example/", "a");
        CacheFiller::Add("http://two.example/", "a");
        auto folder = std::make_shared<GuardFolder>(std::string("MIN/:/:n\r\n"));
        folder->Add(OwnFolder() + L"\\wininet.dll");
        m_guard = std::make_unique<RunningGuard>(folder);
        m_form = m_guard->Window();
        Click(m_guard->Button(L"Show Cache"));
        m_window = WaitTop(m_guard->Program().Id(),
                           [](HWND top) { return ClassOf(top) == L"KG_Cache" && IsWindowVisible(top); });
        ASSERT_NE(nullptr, m_window);
        ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == m_window; }));
    }
    HWND List() const { return FindInside(m_window, L"ListBox"); }
    HWND Details() const { return GetDlgItem(m_window, IdOf(FindInside(m_window, L"Edit")) - 2); }

    HWND m_window = nullptr;
};

TEST_F(CacheKeyboardTest, TabGoesThroughTheCacheWindowInReadingOrder) {
    ASSERT_NO_FATAL_FAILURE(StartWithCacheWindow());
    ASSERT_TRUE(FocusIs(List()));
    HWND saved = nullptr;
    for (const HWND inside : Inside(m_window)) {
        saved = ClassOf(inside) == L"ListBox" ? inside : saved;
    }
    EXPECT_EQ((Names{TypeAndId(List()), L"All Cache", L"Cookies", L"<- Refresh", L"<- Clear", L"Save ->",
                     L"<- Remove", TypeAndId(saved), TypeAndId(FindInside(m_window, L"Edit")), L"<- Find"}),
              TabRound());
    EXPECT_EQ(nullptr, ForEnter(m_window)) << "Enter presses nothing while a list has the focus";
    Press({VK_TAB});
    EXPECT_TRUE(
        WaitUntil([&] { return ForEnter(m_window) == FindInside(m_window, L"Button", L"All Cache"); }));
}

TEST_F(CacheKeyboardTest, AListThatIsFilledAnewKeepsTheFocus) {
    ASSERT_NO_FATAL_FAILURE(StartWithCacheWindow());
    ASSERT_TRUE(FocusIs(List()));
    CacheFiller::Add("http://three.example/", "a");
    // As the schedule does it: without anybody touching the window.
    const HWND clear = m_guard->Button(L"Clear Internet Explorer Cookies Now");
    Ask(m_form, WM_COMMAND, MAKEWPARAM(IdOf(clear), BN_CLICKED), reinterpret_cast<LPARAM>(clear));
    ASSERT_EQ(3u, ListRows(List()).size());
    EXPECT_TRUE(FocusIs(List()));
    EXPECT_EQ(m_window, GetForegroundWindow());
}

TEST_F(CacheKeyboardTest, EnterInTheFieldFindsAndEscCloses) {
    ASSERT_NO_FATAL_FAILURE(StartWithCacheWindow());
    Press({VK_SHIFT, VK_TAB});
    Press({VK_SHIFT, VK_TAB});
    ASSERT_TRUE(FocusIs(FindInside(m_window, L"Edit")));
    const std::wstring details = TextOf(Details());
    SelectRow(List(), 1);
    ASSERT_NE(details, TextOf(Details()));
    TypeText(Focus(), ListRows(List())[0].substr(0, 12));
    Press({VK_RETURN});
    EXPECT_TRUE(WaitUntil([&] { return SelectedRow(List()) == 0; }));
    EXPECT_TRUE(WaitUntil([&] { return TextOf(Details()) == details; })) << "Find shows what it finds";
    Press({VK_ESCAPE});
    EXPECT_TRUE(WaitUntil([&] { return !IsWindow(m_window); }));
    EXPECT_TRUE(m_guard->Shown());
}

}  // namespace
}  // namespace kestrelguard::testing
