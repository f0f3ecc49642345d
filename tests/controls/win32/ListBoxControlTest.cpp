#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "controls/win32/Win32Controls.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {
namespace {

struct ListBoxControlTest : testing::Test {
    ListBoxControlTest()
        : parent(
              CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr)),
          list(CreateWindowExA(0, "ListBox", "", WS_CHILD | WS_VISIBLE | LBS_HASSTRINGS, 0, 0, 100, 100,
                               parent.Get(), nullptr, nullptr, nullptr)) {
        control.Attach(list);
    }

    /// The rows as any other program reads them.
    std::string Rows() const {
        std::string rows;
        const LRESULT count = SendMessageA(list, LB_GETCOUNT, 0, 0);
        for (LRESULT row = 0; row < count; ++row) {
            char text[100] = {};
            SendMessageA(list, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text));
            rows += std::string(text) + ";";
        }
        return rows;
    }

    Window parent;
    HWND list;
    ListBoxControl control;
};

TEST_F(ListBoxControlTest, AppendsAndRemovesRows) {
    control.Append(L"a");
    control.Append(L"b");
    EXPECT_EQ("a;b;", Rows());
    EXPECT_EQ(L"b", control.Row(1));
    EXPECT_EQ(L"", control.Row(2));
    control.Remove(0);
    EXPECT_EQ(1, control.Count());
    EXPECT_THROW(control.Remove(1), RunTimeError);
    control.SelectRow(0);
    EXPECT_EQ(0, control.SelectedRow());
}

}  // namespace
}  // namespace kestrelguard
