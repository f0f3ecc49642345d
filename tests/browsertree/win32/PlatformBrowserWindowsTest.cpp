#include "browsertree/win32/PlatformBrowserWindows.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <vector>

#include "runtime/win32/Owners.h"

namespace kestrelguard {
namespace {

std::vector<WPARAM>* g_closes = nullptr;

LRESULT CALLBACK KeepCloses(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE) {
        g_closes->push_back(wParam | static_cast<WPARAM>(lParam));
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

class PlatformBrowserWindowsTest : public testing::Test {
 protected:
    PlatformBrowserWindowsTest() {
        g_closes = &closes;
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = KeepCloses;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.lpszClassName = "KeepCloses";
        RegisterClassA(&windowClass);
        window.Reset(CreateWindowA("KeepCloses", "", WS_OVERLAPPEDWINDOW, 10, 10, 200, 100, nullptr, nullptr,
                                   GetModuleHandleA(nullptr), nullptr));
    }
    ~PlatformBrowserWindowsTest() override {
        window.Reset();
        g_closes = nullptr;
    }

    std::int32_t Handle() const {
        return static_cast<std::int32_t>(reinterpret_cast<LONG_PTR>(window.Get()));
    }
    static void RunPending() {
        MSG message = {};
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageA(&message);
        }
    }

    std::vector<WPARAM> closes;
    Window window;
    PlatformBrowserWindows windows;
};

TEST_F(PlatformBrowserWindowsTest, CloseIsPostedAndNotSent) {
    windows.PostClose(Handle());
    EXPECT_TRUE(closes.empty());
    RunPending();
    EXPECT_EQ(closes, std::vector<WPARAM>{0});
}

TEST_F(PlatformBrowserWindowsTest, AMinimisedWindowComesBackNormalAndToTheFront) {
    ShowWindow(window.Get(), SW_SHOWMINIMIZED);
    ASSERT_TRUE(IsIconic(window.Get()));
    windows.ShowNormal(Handle());
    windows.SetForeground(Handle());
    EXPECT_FALSE(IsIconic(window.Get()));
    EXPECT_TRUE(IsWindowVisible(window.Get()));
    EXPECT_EQ(GetForegroundWindow(), window.Get());
}

TEST_F(PlatformBrowserWindowsTest, AWindowThatIsGoneDoesNoHarm) {
    const std::int32_t handle = Handle();
    window.Reset();
    windows.ShowNormal(handle);
    windows.SetForeground(handle);
    windows.PostClose(handle);
    RunPending();
    EXPECT_TRUE(closes.empty());
}

}  // namespace
}  // namespace kestrelguard
