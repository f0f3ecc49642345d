#include "controls/win32/WaitCursor.h"

#include <gtest/gtest.h>

namespace kestrelguard {
namespace {

HCURSOR Hourglass() {
    return LoadCursorA(nullptr, MAKEINTRESOURCEA(32514));
}

TEST(WaitCursor, IsShownUntilItGoes) {
    const HCURSOR arrow = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
    SetCursor(arrow);
    {
        const WaitCursor outer;
        EXPECT_EQ(GetCursor(), Hourglass());
        { const WaitCursor inner; }
        EXPECT_EQ(GetCursor(), Hourglass());
    }
    EXPECT_EQ(GetCursor(), arrow);
}

class PaintWindowsTest : public testing::Test {
 protected:
    PaintWindowsTest()
        : m_window(CreateWindowA("Static", "", WS_POPUP | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr,
                                 nullptr, nullptr)),
          m_list(CreateWindowA("ListBox", "", WS_CHILD | WS_VISIBLE, 10, 10, 50, 50, m_window, nullptr,
                               nullptr, nullptr)) {}
    ~PaintWindowsTest() override { DestroyWindow(m_window); }

    HWND m_window;
    HWND m_list;
};

TEST_F(PaintWindowsTest, LeavesNothingToPaintAndHandlesNoMessage) {
    PaintWindows();
    InvalidateRect(m_window, nullptr, TRUE);
    InvalidateRect(m_list, nullptr, TRUE);
    PostMessageA(m_window, WM_APP, 0, 0);
    ASSERT_TRUE(GetUpdateRect(m_list, nullptr, FALSE));
    PaintWindows();
    EXPECT_FALSE(GetUpdateRect(m_window, nullptr, FALSE));
    EXPECT_FALSE(GetUpdateRect(m_list, nullptr, FALSE));
    MSG message = {};
    EXPECT_TRUE(PeekMessageA(&message, m_window, WM_APP, WM_APP, PM_REMOVE));
}

}  // namespace
}  // namespace kestrelguard
