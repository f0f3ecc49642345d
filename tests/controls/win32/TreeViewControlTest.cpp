#include "controls/win32/TreeViewControl.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/ErrorsIgnored.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {
namespace {

class TreeViewControlTest : public testing::Test {
 protected:
    TreeViewControlTest() {
        InitCommonControls();
        m_window.Reset(CreateWindowExA(0, WC_TREEVIEWA, "", WS_POPUP | TVS_HASBUTTONS | TVS_LINESATROOT, 0, 0,
                                       300, 200, nullptr, nullptr, GetModuleHandleA(nullptr), nullptr));
        tree.Attach(m_window.Get());
    }

    void AddThreeLevels() {
        tree.Add(L"", L"ROOT", L"Windows Browsers", 2);
        tree.Add(L"ROOT", L"_1", L"Browser ", 3);
        tree.Add(L"_1", L"_1_TITLE", L"Title : a", 1);
        tree.Add(L"_1", L"_1_URL", L"URL : a", 1);
        tree.Add(L"ROOT", L"_2", L"Browser", 3);
        tree.Add(L"_2", L"_2_TITLE", L"Title : b", 1);
    }

    HTREEITEM Next(UINT relation, HTREEITEM item) const {
        return reinterpret_cast<HTREEITEM>(
            SendMessageA(m_window.Get(), TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
    }
    HTREEITEM Root() const { return Next(TVGN_ROOT, nullptr); }
    HTREEITEM FirstBrowser() const { return Next(TVGN_CHILD, Root()); }

    /// What the control itself holds.
    TVITEMA Shown(HTREEITEM item) {
        TVITEMA data = {};
        data.mask = TVIF_HANDLE | TVIF_TEXT | TVIF_STATE | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
        data.stateMask = ~0U;
        data.hItem = item;
        data.pszText = m_text;
        data.cchTextMax = sizeof m_text;
        SendMessageA(m_window.Get(), TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data));
        return data;
    }
    bool Open(HTREEITEM item) { return (Shown(item).state & TVIS_EXPANDED) != 0; }
    void Select(HTREEITEM item) {
        SendMessageA(m_window.Get(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    }

    std::vector<std::wstring> Keys() const {
        std::vector<std::wstring> keys;
        for (const TreeNode& node : tree.Nodes()) {
            keys.push_back(node.key);
        }
        return keys;
    }

    Window m_window;
    char m_text[4096] = {};
    TreeViewControl tree;
};

TEST_F(TreeViewControlTest, NodesComeInTheOrderOfTheTree) {
    AddThreeLevels();
    tree.Add(L"_1", L"_1_X", L"late", 1);
    EXPECT_EQ(Keys(), (std::vector<std::wstring>{L"ROOT", L"_1", L"_1_TITLE", L"_1_URL", L"_1_X", L"_2",
                                                 L"_2_TITLE"}));
    const std::vector<TreeNode> nodes = tree.Nodes();
    EXPECT_EQ(nodes[0].parent, L"");
    EXPECT_EQ(nodes[1].parent, L"ROOT");
    EXPECT_EQ(nodes[2].parent, L"_1");
    EXPECT_EQ(nodes[2].text, L"Title : a");
}

TEST_F(TreeViewControlTest, TheControlShowsTextAndImage) {
    tree.Add(L"", L"ROOT", L"Windows Browsers (0)", 2);
    const TVITEMA shown = Shown(Root());
    EXPECT_STREQ(shown.pszText, "Windows Browsers (0)");
    EXPECT_EQ(shown.iImage, 1);
    EXPECT_EQ(shown.iSelectedImage, 1);
}

TEST_F(TreeViewControlTest, ATrailingBlankIsKept) {
    AddThreeLevels();
    EXPECT_STREQ(Shown(FirstBrowser()).pszText, "Browser ");
}

TEST_F(TreeViewControlTest, AKeyIsUniqueInTheWholeTree) {
    AddThreeLevels();
    EXPECT_EQ(ErrorOf([&] { tree.Add(L"_2", L"_1_URL", L"x", 1); }), RunTimeError::kKeyNotUnique);
    EXPECT_EQ(ErrorOf([&] { tree.Add(L"", L"ROOT", L"x", 1); }), RunTimeError::kKeyNotUnique);
    EXPECT_EQ(Keys().size(), 6U);
}

TEST_F(TreeViewControlTest, AMissingNodeIsAnError) {
    AddThreeLevels();
    EXPECT_EQ(ErrorOf([&] { tree.Add(L"_3", L"_3_URL", L"x", 1); }), RunTimeError::kElementNotFound);
    EXPECT_EQ(ErrorOf([&] { tree.Expand(L"_3"); }), RunTimeError::kElementNotFound);
    EXPECT_EQ(ErrorOf([&] { tree.SetText(L"_3", L"x"); }), RunTimeError::kElementNotFound);
    EXPECT_EQ(ErrorOf([&] { tree.Remove(L"_3"); }), RunTimeError::kElementNotFound);
    EXPECT_EQ(Keys().size(), 6U);
    // A failed addition leaves its key free.
    tree.Add(L"_2", L"_3_URL", L"x", 1);
    EXPECT_EQ(Keys().size(), 7U);
}

TEST_F(TreeViewControlTest, ANodeTakesItsChildrenAlong) {
    AddThreeLevels();
    tree.Remove(L"_1");
    EXPECT_EQ(Keys(), (std::vector<std::wstring>{L"ROOT", L"_2", L"_2_TITLE"}));
    EXPECT_STREQ(Shown(FirstBrowser()).pszText, "Browser");
    tree.Add(L"ROOT", L"_1", L"again", 3);
    tree.Add(L"_1", L"_1_TITLE", L"again", 1);
    EXPECT_EQ(Keys().back(), L"_1_TITLE");
    tree.Remove(L"ROOT");
    EXPECT_TRUE(Keys().empty());
    EXPECT_EQ(Root(), nullptr);
}

TEST_F(TreeViewControlTest, ClearEmptiesTheControlAndFreesTheKeys) {
    AddThreeLevels();
    tree.Clear();
    EXPECT_EQ(Root(), nullptr);
    EXPECT_TRUE(Keys().empty());
    EXPECT_FALSE(tree.Selected().has_value());
    AddThreeLevels();
    EXPECT_EQ(Keys().size(), 6U);
}

TEST_F(TreeViewControlTest, ANodeExpandedBeforeItHasChildrenOpensWithThem) {
    tree.Add(L"", L"ROOT", L"r", 2);
    tree.Expand(L"ROOT");
    tree.Add(L"ROOT", L"_1", L"b", 3);
    EXPECT_TRUE(Open(Root()));
    EXPECT_FALSE(Open(FirstBrowser()));
}

TEST_F(TreeViewControlTest, BuildingALongTreeLeavesItsTopInView) {
    ShowWindow(m_window.Get(), SW_SHOWNOACTIVATE);
    tree.Add(L"", L"ROOT", L"r", 2);
    tree.Expand(L"ROOT");
    for (int browser = 0; browser < 50; ++browser) {
        const std::wstring key = L"_" + std::to_wstring(browser);
        tree.Add(L"ROOT", key, L"b", 3);
        tree.Expand(key);
        tree.Add(key, key + L"_TITLE", L"t", 1);
        tree.Add(key, key + L"_URL", L"u", 1);
    }
    EXPECT_EQ(Next(TVGN_FIRSTVISIBLE, nullptr), Root());
    // Everything is open: each row follows the one above.
    int rows = 0;
    for (HTREEITEM item = Root(); item != nullptr; item = Next(TVGN_NEXTVISIBLE, item)) {
        ++rows;
    }
    EXPECT_EQ(rows, 151);
}

TEST_F(TreeViewControlTest, ANodeExpandedAfterItHasChildrenOpensAtOnce) {
    AddThreeLevels();
    EXPECT_FALSE(Open(Root()));
    tree.Expand(L"ROOT");
    EXPECT_TRUE(Open(Root()));
}

TEST_F(TreeViewControlTest, ANodeThatTheUserClosedStaysClosed) {
    AddThreeLevels();
    tree.Expand(L"ROOT");
    SendMessageA(m_window.Get(), TVM_EXPAND, TVE_COLLAPSE, reinterpret_cast<LPARAM>(Root()));
    tree.Add(L"ROOT", L"_4", L"b", 3);
    EXPECT_FALSE(Open(Root()));
}

TEST_F(TreeViewControlTest, AnOpenNodeThatLostAllChildrenOpensAgain) {
    AddThreeLevels();
    tree.Expand(L"ROOT");
    tree.Remove(L"_1");
    tree.Remove(L"_2");
    tree.Add(L"ROOT", L"_4", L"b", 3);
    EXPECT_TRUE(Open(Root()));
}

TEST_F(TreeViewControlTest, ATextChangesInTheControl) {
    AddThreeLevels();
    tree.SetText(L"_1", L"Browser \x20AC");
    EXPECT_EQ(FromAnsi(Shown(FirstBrowser()).pszText), L"Browser \x20AC");
    EXPECT_EQ(tree.Nodes()[1].text, L"Browser \x20AC");
}

TEST_F(TreeViewControlTest, AnEqualTextIsNotWrittenAgain) {
    AddThreeLevels();
    // Somebody else's text stays: the control was not told.
    char other[] = "other";
    TVITEMA data = {};
    data.mask = TVIF_HANDLE | TVIF_TEXT;
    data.hItem = FirstBrowser();
    data.pszText = other;
    SendMessageA(m_window.Get(), TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&data));
    tree.SetText(L"_1", L"Browser ");
    EXPECT_STREQ(Shown(FirstBrowser()).pszText, "other");
}

TEST_F(TreeViewControlTest, ALongTextIsKeptWhole) {
    const std::wstring address(2083, L'x');
    AddThreeLevels();
    tree.SetText(L"_1", address);
    EXPECT_EQ(tree.Nodes()[1].text, address);
    EXPECT_EQ(std::string(Shown(FirstBrowser()).pszText).size(), address.size());
}

TEST_F(TreeViewControlTest, TheSelectedNodeIsTheOneUnderTheCaret) {
    EXPECT_FALSE(tree.Selected().has_value());
    AddThreeLevels();
    EXPECT_FALSE(tree.Selected().has_value());
    Select(FirstBrowser());
    ASSERT_TRUE(tree.Selected().has_value());
    EXPECT_EQ(tree.Selected()->key, L"_1");
    EXPECT_EQ(tree.Selected()->parent, L"ROOT");
    EXPECT_EQ(tree.Selected()->text, L"Browser ");
}

TEST_F(TreeViewControlTest, TheSelectionSurvivesTheRemovalOfItsNode) {
    AddThreeLevels();
    Select(FirstBrowser());
    tree.Remove(L"_1");
    // The control moves the caret or drops it; either way it names a node that is there.
    if (const auto selected = tree.Selected()) {
        EXPECT_NE(selected->key, L"_1");
    }
    tree.Clear();
    EXPECT_FALSE(tree.Selected().has_value());
}

TEST_F(TreeViewControlTest, AThousandRebuildsLeaveNoUserObjectsBehind) {
    const DWORD before = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    for (int round = 0; round < 1000; ++round) {
        tree.Clear();
        AddThreeLevels();
    }
    EXPECT_EQ(GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS), before);
    EXPECT_EQ(SendMessageA(m_window.Get(), TVM_GETCOUNT, 0, 0), 6);
}

}  // namespace
}  // namespace kestrelguard
