// The installer and the uninstaller, clicked through.

#include "InstallerFixture.h"
#include "desktop/driver/Controls.h"
#include "desktop/driver/Windows.h"

namespace kestrelguard::testing {
namespace {

/// A program with dialog boxes that is clicked through.
class Clicked {
 public:
    explicit Clicked(const std::wstring& exe) : m_program(exe) {}

    const Program& Process() const { return m_program; }

    /// Waits until a button of a dialog of any process can be pressed, and presses it as the mouse does.
    static bool Press(const wchar_t* caption) {
        HWND button = nullptr;
        const bool there = WaitUntil(
            [&] {
                button = Find(L"Button", caption);
                return button != nullptr && IsWindowVisible(button) && IsWindowEnabled(button);
            },
            kPatience);
        if (there) {
            RECT place = {};
            GetClientRect(button, &place);
            PostClick(button, {place.right / 2, place.bottom / 2});
        }
        return there;
    }

    /// A control in a dialog on the screen: the installer's, the uninstaller's (whose process is a copy of
    /// it) or a message box.
    static HWND Find(const wchar_t* type, const wchar_t* caption = nullptr) {
        Search search = {type, caption, nullptr};
        EnumWindows(LookInside, reinterpret_cast<LPARAM>(&search));
        return search.found;
    }

 private:
    struct Search {
        const wchar_t* type;
        const wchar_t* caption;
        HWND found;
    };

    static BOOL CALLBACK LookInside(HWND window, LPARAM parameter) noexcept {
        auto& search = *reinterpret_cast<Search*>(parameter);
        if (ClassOf(window) == L"#32770" && IsWindowVisible(window)) {
            search.found = FindInside(window, search.type, search.caption);
        }
        return search.found == nullptr;
    }

    Program m_program;
};

class InstallerClickTest : public InstallerTest {};

TEST_F(InstallerClickTest, EverythingCanBeClicked) {
    const std::wstring folder = L"C:\\Clicked";
    const Clicked setup(Installer());
    // The component "Start with Windows" is ticked by the keyboard.
    HWND tree = nullptr;
    ASSERT_TRUE(WaitUntil(
        [&tree] { return (tree = Clicked::Find(L"SysTreeView32")) != nullptr && IsWindowVisible(tree); },
        kPatience));
    std::vector<TreeNode> nodes;
    ASSERT_TRUE(WaitUntil([&] { return (nodes = TreeNodes(tree)).size() == 2; }));
    SelectNode(tree, nodes[1].item);
    PostMessageA(tree, WM_KEYDOWN, VK_SPACE, 0);
    ASSERT_TRUE(Clicked::Press(L"&Next >"));
    HWND edit = nullptr;
    ASSERT_TRUE(WaitUntil(
        [&edit] { return (edit = Clicked::Find(L"Edit")) != nullptr && IsWindowVisible(edit); }, kPatience));
    EXPECT_EQ(m_folder, TextOf(edit));
    TypeText(edit, folder);
    ASSERT_TRUE(Clicked::Press(L"&Install"));
    ASSERT_TRUE(Clicked::Press(L"&Yes"));  // start it now
    ASSERT_TRUE(WaitRunning());
    EXPECT_TRUE(setup.Process().WaitGone());
    EXPECT_EQ(0u, setup.Process().ExitCode());
    std::vector<std::string> expected = Expected(folder, m_menu, "HKCU");
    expected.push_back("+ " + Narrow(m_menu) + "\\StartUp\\Kestrelguard.lnk");
    expected.push_back("+ C:\\Clicked\\KestrelS.CFG");
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(WaitUntil([&] { return Changes() == expected; }));
    EXPECT_EQ(expected, Changes());

    const Clicked uninstall(folder + L"\\uninstall.exe");
    ASSERT_TRUE(Clicked::Press(L"&Uninstall"));
    ASSERT_TRUE(Clicked::Press(L"&Yes"));  // the settings, too
    ASSERT_TRUE(Clicked::Press(L"&Close"));
    ASSERT_TRUE(WaitNoEntry(HKEY_CURRENT_USER));
    EXPECT_EQ(nullptr, Running());
    EXPECT_EQ(std::vector<std::string>(), Changes());
}

TEST_F(InstallerClickTest, ACancelledInstallationLeavesNothing) {
    const Clicked setup(Installer());
    ASSERT_TRUE(Clicked::Press(L"Cancel"));
    EXPECT_TRUE(setup.Process().WaitGone());
    EXPECT_EQ(1u, setup.Process().ExitCode());
    EXPECT_EQ(std::vector<std::string>(), Changes());
}

}  // namespace
}  // namespace kestrelguard::testing
