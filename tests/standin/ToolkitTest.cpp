// The toolkit itself, tried on a small program of its own.

#include <windows.h>

#include <gtest/gtest.h>
#include <shellapi.h>

#include "desktop/driver/Controls.h"
#include "desktop/driver/Files.h"
#include "desktop/driver/Hook.h"
#include "desktop/driver/Process.h"
#include "desktop/driver/Tray.h"

namespace kestrelguard::testing {
namespace {

class ToolkitTest : public ::testing::Test {
 protected:
    ToolkitTest() : m_program(OwnFolder() + L"\\toolkit_target.exe", {}, {}, true) {
        WaitTrayIcons(0);  // those of the test before
        m_program.Resume();
        m_window = WaitTop(m_program.Id(), [](HWND window) {
            return ClassOf(window) == L"ToolkitTarget" && IsWindowVisible(window) != FALSE;
        });
        WaitTrayIcons(1);
    }
    HWND Control(const wchar_t* type, const wchar_t* text = nullptr) const {
        return FindInside(m_window, type, text);
    }
    bool WaitLast(const std::wstring& text) const {
        return WaitUntil([&] { return TextOf(LabelRightOf(m_window, L"Last:")) == text; }, 5000);
    }

    Process m_program;
    HWND m_window = nullptr;
};

TEST_F(ToolkitTest, ButtonsAreFoundAndClicked) {
    ASSERT_NE(nullptr, m_window);
    ClickAndWait(Control(L"Button", L"Press"));
    EXPECT_TRUE(WaitLast(L"button 1"));
    Click(Control(L"Button", L"Press"));
    EXPECT_TRUE(WaitLast(L"button 2"));
    EXPECT_EQ(nullptr, Control(L"Button", L"Pres"));
    EXPECT_FALSE(Checked(Control(L"Button", L"Tick")));
    ClickAndWait(Control(L"Button", L"Tick"));
    EXPECT_TRUE(Checked(Control(L"Button", L"Tick")));
    EXPECT_TRUE(Enabled(Control(L"Button", L"Tick")));
    EnableWindow(Control(L"Button", L"Tick"), FALSE);
    EXPECT_FALSE(Enabled(Control(L"Button", L"Tick")));
}

TEST_F(ToolkitTest, TextsListsAndDropDownsAreReadAndSet) {
    EXPECT_EQ(L"typed", TextOf(Control(L"Edit")));
    TypeText(Control(L"Edit"), L"a longer text");
    EXPECT_TRUE(WaitLast(L"edit"));
    EXPECT_EQ(L"a longer text", TextOf(Control(L"Edit")));
    const HWND list = Control(L"ListBox");
    EXPECT_EQ((std::vector<std::wstring>{L"casino", L""}), ListRows(list));
    EXPECT_EQ(-1, SelectedRow(list));
    SelectRow(list, 1);
    EXPECT_TRUE(WaitLast(L"list"));
    EXPECT_EQ(1, SelectedRow(list));
    const HWND combo = Control(L"ComboBox");
    EXPECT_EQ((std::vector<std::wstring>{L"Minute/s", L"Hour/s"}), DropDownRows(combo));
    SelectDropDown(combo, 1);
    EXPECT_TRUE(WaitLast(L"combo"));
    EXPECT_EQ(L"Hour/s", TextOf(combo));
}

TEST_F(ToolkitTest, TreesAreReadAndClicked) {
    const HWND tree = Control(L"SysTreeView32");
    EXPECT_EQ((std::vector<std::wstring>{L"Windows Browsers (1)", L"  Browser ", L"    Title : x"}),
              TreeTexts(tree));
    const auto nodes = TreeNodes(tree);
    EXPECT_TRUE(nodes[0].expanded);
    EXPECT_FALSE(nodes[1].expanded);
    ClickNode(tree, nodes[1].item);
    EXPECT_TRUE(WaitLast(L"tree click"));
    EXPECT_TRUE(WaitUntil([&] { return TreeNodes(tree)[1].selected; }, 5000));
    DoubleClickNode(tree, nodes[0].item);
    EXPECT_TRUE(WaitLast(L"tree double click"));
    SelectNode(tree, nodes[0].item);
    EXPECT_TRUE(TreeNodes(tree)[0].selected);
    RECT rect{};
    EXPECT_FALSE(NodeRect(tree, nodes[2].item, rect));
}

TEST_F(ToolkitTest, TabsAreReadAndClicked) {
    const HWND tabs = Control(L"SysTabControl32");
    EXPECT_EQ((std::vector<std::wstring>{L"One", L"Two"}), TabTexts(tabs));
    EXPECT_EQ(0, SelectedTab(tabs));
    ClickTab(tabs, 1);
    EXPECT_TRUE(WaitLast(L"tab"));
    EXPECT_EQ(1, SelectedTab(tabs));
}

TEST_F(ToolkitTest, MessageBoxesAreReadAndDismissed) {
    EXPECT_FALSE(FindMessageBox(m_program.Id()));
    Click(Control(L"Button", L"Ask"));
    const MessageBoxSeen box = WaitMessageBox(m_program.Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Target asks", box.caption);
    EXPECT_EQ(L"Yes or no?", box.text);
    EXPECT_EQ(2u, box.buttons.size());
    EXPECT_TRUE(box.topmost);
    EXPECT_TRUE(Dismiss(box, IDNO));
    EXPECT_TRUE(WaitLast(L"no"));
}

TEST_F(ToolkitTest, TheNotificationAreaIsReadAndClicked) {
    const auto icons = TrayIcons();
    ASSERT_EQ(1u, icons.size());
    EXPECT_EQ(L" Target tip", icons[0].tip);
    ClickTrayIcon(icons[0]);
    EXPECT_TRUE(WaitLast(L"icon"));
    PostMessageW(m_window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(m_program.WaitGone());
    EXPECT_EQ(7u, m_program.ExitCode());
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST_F(ToolkitTest, MenusAreReadAndChosenFrom) {
    const Hook hook(m_program);
    EXPECT_FALSE(hook.ReadMenu());
    ClickTrayIcon(TrayIcons().at(0), true);
    const OpenMenu menu = hook.WaitMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ((std::vector<std::wstring>{L"First", L"-", L"* Second = 12", L"Third"}), menu.Captions());
    EXPECT_EQ(302u, menu.entries[3].id);
    EXPECT_TRUE(menu.entries[3].isDefault);
    EXPECT_FALSE(menu.entries[0].isDefault);
    EXPECT_FALSE(hook.Choose(L"Fourth"));
    EXPECT_TRUE(hook.Choose(L"Second = 12"));
    EXPECT_TRUE(WaitLast(L"menu 301"));
    const HWND tree = Control(L"SysTreeView32");
    ClickNode(tree, TreeNodes(tree)[0].item, true);
    ASSERT_TRUE(hook.WaitMenu());
    EXPECT_TRUE(hook.CloseMenu());
    EXPECT_FALSE(hook.ReadMenu());
    EXPECT_TRUE(WaitLast(L"menu 301"));
}

TEST_F(ToolkitTest, ObjectsAreCounted) {
    const Hook hook(m_program);
    const ObjectCounts first = hook.Count();
    EXPECT_LT(10, first.windows);
    EXPECT_LT(0, first.gdiObjects);
    for (int i = 0; i < 5; ++i) {
        ClickTrayIcon(TrayIcons().at(0), true);
        ASSERT_TRUE(hook.WaitMenu());
        EXPECT_LE(first.menus + 1, hook.Count().menus);
        ASSERT_TRUE(hook.CloseMenu());
    }
    EXPECT_TRUE(WaitUntil([&] { return hook.Count().menus <= first.menus + 1; }, 5000));
    EXPECT_LT(5, first.handles);
    EXPECT_GE(first.handles + 3, hook.Count().handles);
}

TEST(ToolkitStartTest, TrayCallsAreWrittenDownFromTheVeryFirstOne) {
    Process program(OwnFolder() + L"\\toolkit_target.exe", {}, {}, true);
    const Hook hook(program);
    ASSERT_TRUE(hook.RecordTray());
    EXPECT_TRUE(hook.TrayCalls().empty());
    program.Resume();
    ASSERT_TRUE(WaitTrayIcons(1));
    const auto calls = hook.TrayCalls();
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ(static_cast<DWORD>(NIM_ADD), calls[0].message);
    EXPECT_EQ(88u, calls[0].size);
    EXPECT_EQ(7u, calls[0].flags);
    EXPECT_EQ(1u, calls[0].id);
    EXPECT_EQ(" Target tip", calls[0].tip);
    EXPECT_EQ(64u, calls[0].tipBuffer.size());
    program.Kill();
    EXPECT_TRUE(WaitTrayIcons(0));
}

TEST(ToolkitStartTest, FilesAndFoldersComeAndGo) {
    std::wstring path;
    {
        const TemporaryFolder folder;
        path = folder.Path();
        WriteBytes(path + L"\\a.txt", "one\r\n");
        EXPECT_TRUE(FileExists(path + L"\\a.txt"));
        EXPECT_EQ("one\r\n", ReadBytes(path + L"\\a.txt"));
        const TemporaryFolder another;
        EXPECT_NE(path, another.Path());
    }
    EXPECT_FALSE(FileExists(path));
}

TEST(ToolkitStartTest, HeldKeysAreSeen) {
    EXPECT_EQ(0, GetAsyncKeyState(VK_CONTROL) & 0x8000);
    {
        const HeldKey key(VK_CONTROL);
        EXPECT_NE(0, GetAsyncKeyState(VK_CONTROL) & 0x8000);
    }
    EXPECT_EQ(0, GetAsyncKeyState(VK_CONTROL) & 0x8000);
}

TEST(ToolkitStartTest, KilledProgramsAreGone) {
    Process program(OwnFolder() + L"\\toolkit_target.exe");
    EXPECT_TRUE(program.Running());
    EXPECT_EQ(static_cast<DWORD>(STILL_ACTIVE), program.ExitCode());
    EXPECT_FALSE(program.WaitGone(10));
    program.Kill(5);
    EXPECT_FALSE(program.Running());
    EXPECT_EQ(5u, program.ExitCode());
    EXPECT_THROW(Process(L"C:\\not-there.exe"), std::runtime_error);
}

}  // namespace
}  // namespace kestrelguard::testing
