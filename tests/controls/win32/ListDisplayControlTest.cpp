#include "controls/win32/ListDisplayControl.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "controls/Fakes.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {
namespace {

/// How many rows a list window of Windows 98 takes.
constexpr LRESULT kRowsOfAnOldList = 32767;

/// A list window that counts its additions and refuses rows beyond a number, as old ones do. There is one at
/// a time.
class ListWindow {
 public:
    explicit ListWindow(HWND parent)
        : m_list(CreateWindowExA(0, "ListBox", "", WS_CHILD | WS_VISIBLE | WS_VSCROLL | LBS_HASSTRINGS, 0, 0,
                                 100, 100, parent, nullptr, nullptr, nullptr)) {
        s_room = -1;
        s_additions = 0;
        s_visibleAdditions = 0;
        s_original = reinterpret_cast<WNDPROC>(SetWindowLongA(
            m_list, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(&ListWindow::Procedure))));
    }

    HWND Handle() const { return m_list; }
    static void TakesAtMost(LRESULT rows) { s_room = rows; }
    static int Additions() { return s_additions; }
    /// Additions for which the window might have been drawn.
    static int VisibleAdditions() { return s_visibleAdditions; }

 private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == LB_ADDSTRING) {
            ++s_additions;
            s_visibleAdditions += IsWindowVisible(window) != FALSE ? 1 : 0;
            if (s_room >= 0 && CallWindowProcA(s_original, window, LB_GETCOUNT, 0, 0) >= s_room) {
                return LB_ERRSPACE;
            }
        }
        return CallWindowProcA(s_original, window, message, wParam, lParam);
    }

    static WNDPROC s_original;
    static LRESULT s_room;
    static int s_additions;
    static int s_visibleAdditions;

    HWND m_list;
};

WNDPROC ListWindow::s_original = nullptr;
LRESULT ListWindow::s_room = -1;
int ListWindow::s_additions = 0;
int ListWindow::s_visibleAdditions = 0;

struct ListDisplayControlTest : testing::Test {
    ListDisplayControlTest()
        : parent(
              CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr)),
          window(parent.Get()),
          list(window.Handle()) {
        control.Attach(list);
        control.ShowRowsOf(&rows);
    }

    void Append(const wchar_t* text) {
        rows.Append(text);
        control.RowsAppended();
    }
    void AppendMany(int many) {
        for (int row = 0; row < many; ++row) {
            rows.Append(L"row " + std::to_wstring(row));
        }
        control.RowsAppended();
    }
    void Remove(std::int32_t row) {
        rows.Remove(row);
        control.RowRemoved(row);
    }

    LRESULT Asked(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageA(list, message, wParam, lParam);
    }
    /// A row as any other program reads it.
    std::string Text(LRESULT row) const {
        char text[100] = {};
        Asked(LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text));
        return text;
    }
    std::string Texts() const {
        std::string texts;
        const LRESULT count = Asked(LB_GETCOUNT);
        for (LRESULT row = 0; row < count; ++row) {
            texts += Text(row) + ";";
        }
        return texts;
    }

    FakeListRows rows;
    Window parent;
    ListWindow window;
    HWND list;
    ListDisplayControl control;
};

TEST_F(ListDisplayControlTest, NoRowGoesIntoAWindowAtWhichNobodyLooks) {
    AppendMany(1000);
    Remove(3);
    Append(L"last");
    Remove(999);
    EXPECT_EQ(0, ListWindow::Additions());
}

TEST_F(ListDisplayControlTest, WhoeverAsksGetsTheRowsThatWaited) {
    Append(L"a");
    Append(L"");
    Append(L"c");
    EXPECT_EQ("a;;c;", Texts());
    EXPECT_EQ(3, ListWindow::Additions());
    Append(L"d");
    EXPECT_EQ(3, ListWindow::Additions()) << "it waits again";
    EXPECT_EQ("a;;c;d;", Texts());
}

TEST_F(ListDisplayControlTest, ManyRowsAreGivenWithTheHourglassShown) {
    struct Watching : FakeListRows {
        std::wstring Row(std::int32_t row) const override {
            waited = waited && GetCursor() == LoadCursorA(nullptr, MAKEINTRESOURCEA(32514));
            return FakeListRows::Row(row);
        }
        mutable bool waited = true;
    } watching;
    const HCURSOR arrow = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
    SetCursor(arrow);
    watching.Append(L"a");
    watching.Append(L"b");
    control.ShowRowsOf(&watching);
    EXPECT_EQ("a;b;", Texts());
    EXPECT_TRUE(watching.waited);
    EXPECT_EQ(arrow, GetCursor());
    control.ShowRowsOf(nullptr);
}

TEST_F(ListDisplayControlTest, EachQuestionFillsTheWindowWhicheverComesFirst) {
    char text[100] = {};
    const auto buffer = reinterpret_cast<LPARAM>(text);
    const auto second = reinterpret_cast<LPARAM>("second");
    const struct {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
        LRESULT answer;
    } kQuestions[] = {
        {LB_GETCOUNT, 0, 0, 2},
        {LB_GETTEXTLEN, 1, 0, 6},
        {LB_GETTEXT, 1, buffer, 6},
        {LB_SELECTSTRING, static_cast<WPARAM>(-1), second, 1},
        {LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), second, 1},
        {LB_SETCURSEL, 1, 0, 1},
    };
    for (const auto& question : kQuestions) {
        rows.Clear();
        control.ShowRowsOf(&rows);
        Append(L"first");
        Append(L"second");
        const int before = ListWindow::Additions();
        EXPECT_EQ(question.answer, Asked(question.message, question.wParam, question.lParam))
            << question.message;
        EXPECT_EQ(before + 2, ListWindow::Additions()) << question.message;
    }
}

TEST_F(ListDisplayControlTest, AWindowThatIsShownGetsTheRowsAtOnceAndHidden) {
    AppendMany(1000);
    ShowWindow(parent.Get(), SW_SHOWNA);
    UpdateWindow(list);
    EXPECT_EQ(1000, ListWindow::Additions());
    EXPECT_EQ(0, ListWindow::VisibleAdditions());
    EXPECT_TRUE(IsWindowVisible(list));
    // One more row is drawn as ever.
    Append(L"last");
    EXPECT_EQ(1001, ListWindow::Additions());
    AppendMany(2);
    EXPECT_EQ(1003, ListWindow::Additions());
    EXPECT_EQ(1, ListWindow::VisibleAdditions());
    EXPECT_EQ("last", Text(1000));
}

TEST_F(ListDisplayControlTest, AListWhoseOwnWindowIsHiddenStaysSo) {
    ShowWindow(list, SW_HIDE);
    AppendMany(10);
    EXPECT_EQ(10, Asked(LB_GETCOUNT));
    EXPECT_FALSE(GetWindowLongA(list, GWL_STYLE) & static_cast<LONG>(WS_VISIBLE));
}

TEST_F(ListDisplayControlTest, RowsGoWhetherTheWindowHasThemOrNot) {
    Append(L"a");
    Append(L"b");
    Remove(0);
    EXPECT_EQ("b;", Texts());
    Append(L"c");
    Append(L"d");
    Remove(1);  // not yet in the window
    Remove(0);  // in the window
    EXPECT_EQ("d;", Texts());
}

TEST_F(ListDisplayControlTest, OtherRowsTakeThePlaceOfTheOldOnes) {
    Append(L"a");
    EXPECT_EQ("a;", Texts());
    FakeListRows others;
    others.Append(L"b");
    control.ShowRowsOf(&others);
    EXPECT_EQ("b;", Texts());
    control.ShowRowsOf(nullptr);
    EXPECT_EQ("", Texts());
}

TEST_F(ListDisplayControlTest, WhatTheWindowRefusesIsNotShown) {
    ListWindow::TakesAtMost(kRowsOfAnOldList);
    AppendMany(kRowsOfAnOldList + 3);
    EXPECT_EQ(kRowsOfAnOldList, Asked(LB_GETCOUNT));
    EXPECT_EQ("row 32766", Text(kRowsOfAnOldList - 1));
    EXPECT_EQ(kRowsOfAnOldList + 1, ListWindow::Additions()) << "a refused row is not tried again and again";
    Append(L"last");
    EXPECT_EQ(kRowsOfAnOldList, Asked(LB_GETCOUNT));
}

TEST_F(ListDisplayControlTest, ARowThatLeavesMakesRoomForTheNext) {
    ListWindow::TakesAtMost(2);
    for (const wchar_t* const text : {L"a", L"b", L"c", L"d"}) {
        Append(text);
    }
    EXPECT_EQ("a;b;", Texts());
    Remove(0);
    EXPECT_EQ("b;c;", Texts());
    Remove(2);  // one that is not shown
    Remove(1);
    EXPECT_EQ("b;", Texts());
}

TEST_F(ListDisplayControlTest, AFullWindowThatIsDrawnComesToRest) {
    ListWindow::TakesAtMost(2);
    AppendMany(4);
    ShowWindow(parent.Get(), SW_SHOWNA);
    int drawn = 0;
    while (GetUpdateRect(list, nullptr, FALSE) != FALSE && drawn < 100) {
        UpdateWindow(list);
        ++drawn;
    }
    EXPECT_LT(drawn, 100);
    EXPECT_EQ(3, ListWindow::Additions());
}

TEST_F(ListDisplayControlTest, TellsAndSetsTheSelectedRow) {
    Append(L"a");
    Append(L"b");
    EXPECT_EQ(-1, control.SelectedRow());
    control.SelectRow(1);
    EXPECT_EQ(1, control.SelectedRow());
    EXPECT_EQ(1, Asked(LB_GETCURSEL));
}

TEST_F(ListDisplayControlTest, TheWindowOutlivesTheControl) {
    const Window other(
        CreateWindowExA(0, "ListBox", "", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr));
    const LONG before = GetWindowLongA(other.Get(), GWL_WNDPROC);
    {
        ListDisplayControl shortLived;
        shortLived.Attach(other.Get());
        EXPECT_NE(before, GetWindowLongA(other.Get(), GWL_WNDPROC));
    }
    EXPECT_EQ(before, GetWindowLongA(other.Get(), GWL_WNDPROC));
    EXPECT_EQ(0, SendMessageA(other.Get(), LB_GETCOUNT, 0, 0));
}

TEST_F(ListDisplayControlTest, TheControlOutlivesTheWindow) {
    Append(L"a");
    EXPECT_EQ("a;", Texts());
    parent.Reset();
    Append(L"b");
    Remove(0);
    control.ShowRowsOf(nullptr);
    EXPECT_EQ(1, ListWindow::Additions());
}

}  // namespace
}  // namespace kestrelguard
