#include "controls/Fakes.h"

#include <gtest/gtest.h>

namespace kestrelguard {
namespace {

TEST(Fakes, SelectingAnOptionButtonTakesTheSelectionFromItsGroup) {
    FakeOptionButton first(true);
    FakeOptionButton second;
    FakeOptionButton::Group({&first, &second});
    second.Select(true);
    EXPECT_FALSE(first.selected);
    EXPECT_TRUE(second.selected);
    second.Select(false);
    EXPECT_FALSE(first.selected);
}

TEST(Fakes, DropDownTakesOnlyItsItems) {
    FakeDropDown units({L"Minute/s", L"Hour/s"}, L"Minute/s");
    units.SetText(L"Day/s");
    EXPECT_EQ(units.text, L"Minute/s");
    units.SetText(L"Hour/s");
    EXPECT_EQ(units.text, L"Hour/s");
}

TEST(Fakes, ListNoticesAnAppendThatIsDrawn) {
    FakeListRows list;
    {
        const ListFill fill(list);
        list.Append(L"a");
    }
    EXPECT_FALSE(list.appendedWhileDrawn);
    list.Append(L"b");
    EXPECT_TRUE(list.appendedWhileDrawn);
    EXPECT_THROW(list.Remove(2), RunTimeError);
    list.Remove(0);
    EXPECT_EQ(list.Row(0), L"b");
    EXPECT_EQ(list.Row(1), L"");
}

TEST(Fakes, TreeRemovesANodeWithItsChildren) {
    FakeTree tree;
    tree.Add(L"", L"root", L"Root", 1);
    tree.Add(L"root", L"child", L"Child", 2);
    tree.Add(L"child", L"leaf", L"Leaf", 3);
    tree.Add(L"", L"other", L"Other", 1);
    EXPECT_THROW(tree.Add(L"", L"child", L"again", 1), RunTimeError);
    EXPECT_THROW(tree.Add(L"nobody", L"x", L"x", 1), RunTimeError);
    tree.selected = L"leaf";
    EXPECT_EQ(tree.Selected()->text, L"Leaf");
    tree.Remove(L"root");
    EXPECT_FALSE(tree.Selected().has_value());
    ASSERT_EQ(tree.nodes.size(), 1U);
    EXPECT_EQ(tree.nodes[0].key, L"other");
}

TEST(Fakes, FolderHandsOverLines) {
    FakeProgramFolder folder;
    EXPECT_THROW(folder.ReadLines(L"f", [](std::wstring_view) {}), RunTimeError);
    folder.Write(L"f", L"a\r\nb");
    EXPECT_TRUE(folder.Exists(L"f"));
    std::wstring lines;
    folder.ReadLines(L"f", [&lines](std::wstring_view line) { lines.append(line).append(L"|"); });
    EXPECT_EQ(lines, L"a|b|");
}

TEST(Fakes, FaultsHitOneCall) {
    Faults faults;
    FakeCheckBox box;
    box.faults = &faults;
    faults.FailAt(1, RunTimeError::kOutOfMemory);
    box.SetValue(1);
    EXPECT_FALSE(faults.Hit());
    EXPECT_THROW(box.SetValue(0), RunTimeError);
    EXPECT_TRUE(faults.Hit());
    EXPECT_EQ(box.Value(), 1);
    EXPECT_EQ(faults.Calls(), 3);
    faults.FailAt(0, 0);
    EXPECT_THROW(box.Value(), std::bad_alloc);
}

}  // namespace
}  // namespace kestrelguard
