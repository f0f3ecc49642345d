#include "privacy/win32/PatientCacheWalk.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>

namespace kestrelguard {
namespace {

struct FakeWalk final : CacheWalk {
    void LoadCacheEntries(bool& ShowList, bool& ClearFiles, bool& ClearCookies, bool& CookiesOnly) override {
        during();
        EXPECT_FALSE(ShowList);
        EXPECT_TRUE(ClearFiles);
        EXPECT_FALSE(ClearCookies);
        EXPECT_TRUE(CookiesOnly);
        ShowList = true;
    }
    std::function<void()> during;
};

TEST(PatientCacheWalk, ShowsTheHourglassOverPaintedWindows) {
    const HWND window = CreateWindowA("Static", "", WS_POPUP | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr,
                                      nullptr, nullptr);
    InvalidateRect(window, nullptr, TRUE);
    FakeWalk fake;
    bool walked = false;
    fake.during = [&] {
        walked = true;
        EXPECT_EQ(GetCursor(), LoadCursorA(nullptr, MAKEINTRESOURCEA(32514)));
        EXPECT_FALSE(GetUpdateRect(window, nullptr, FALSE));
    };
    const HCURSOR arrow = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
    SetCursor(arrow);
    bool showList = false, clearFiles = true, clearCookies = false, cookiesOnly = true;
    PatientCacheWalk(fake).LoadCacheEntries(showList, clearFiles, clearCookies, cookiesOnly);
    EXPECT_TRUE(walked);
    EXPECT_TRUE(showList);
    EXPECT_EQ(GetCursor(), arrow);
    DestroyWindow(window);
}

}  // namespace
}  // namespace kestrelguard
