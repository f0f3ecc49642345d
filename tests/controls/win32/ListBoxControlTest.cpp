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

/// Addresses that the code page does not spell back from their texts stay with their rows.
TEST_F(ListBoxControlTest, ARowKeepsTheBytesOfItsAddress) {
    control.AppendAddress(L"http://caf?.example/", "http://caf\x82.example/");
    control.AppendAddress(L"http://news.example/", "http://news.example/");
    control.AppendAddress(L"http://caf?.example/", "http://caf\x81.example/");
    control.Append(L"http://shop.example/");
    EXPECT_EQ("http://caf?.example/;http://news.example/;http://caf?.example/;http://shop.example/;", Rows());
    EXPECT_EQ("http://caf\x82.example/", control.Address(0));
    control.Remove(0);
    EXPECT_EQ("http://news.example/", control.Address(0));
    EXPECT_EQ(L"http://caf?.example/", control.Row(1));
    EXPECT_EQ("http://caf\x81.example/", control.Address(1));
    EXPECT_EQ("http://shop.example/", control.Address(2));
    EXPECT_EQ("", control.Address(3));
    EXPECT_EQ("", control.Address(-1));
    control.Clear();
    control.AppendAddress(L"http://bank.example/", "http://bank.example/");
    EXPECT_EQ("http://bank.example/", control.Address(0));
}

}  // namespace
}  // namespace kestrelguard
