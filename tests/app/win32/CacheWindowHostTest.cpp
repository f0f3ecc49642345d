// The cache window with real controls, over a walk and a folder that fail.

#include "app/win32/CacheWindowHost.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "controls/Fakes.h"

namespace kestrelguard {
namespace {

struct FakeWalk final : CacheWalk {
    void LoadCacheEntries(bool&, bool&, bool&, bool&) override {
        ++walks;
        if (instead) {
            instead();
        }
    }
    int walks = 0;
    std::function<void()> instead;
};

HWND CacheWindowOnScreen() {
    return FindWindowA(nullptr, kCacheWindowCaption);
}

struct CacheWindowHostTest : testing::Test {
    CacheWindowHostTest() {
        InitCommonControls();
        savedCookies.Add(L"Cookie:a");
        savedCookies.Add(L"Cookie:b");
    }
    HWND Control(int id) const { return GetDlgItem(CacheWindowOnScreen(), id); }
    /// The second list and the button beside it, by their order.
    static constexpr int kRemoveButton = 107;
    static constexpr int kSavedList = 109;
    void RemoveFirstCookie() const {
        SendMessageA(Control(kSavedList), LB_SETCURSEL, 0, 0);
        SendMessageA(Control(kRemoveButton), BM_CLICK, 0, 0);
    }

    FakeWalk walk;
    DesktopCacheWindows windows;
    FakeLocale locale;
    FakeMessageLoop messages;
    FakeProgramFolder folder;
    TextSet savedCookies;
    SavedCookiesStore store{folder, locale, savedCookies};
    bool ShowCookiesOnly = false;
    std::vector<std::int32_t> errors;
    CacheWindowHost host{
        {.icons = {},
         .cache = walk,
         .windows = windows,
         .locale = locale,
         .messages = messages,
         .savedCookies = savedCookies,
         .savedCookiesFile = store,
         .ShowCookiesOnly = ShowCookiesOnly,
         .showError = [this](HWND, const RunTimeError& error) { errors.push_back(error.Number()); }}};
};

TEST_F(CacheWindowHostTest, AWindowThatCannotBeLoadedIsNone) {
    for (const auto& failure : std::vector<std::function<void()>>{
             [] { throw RunTimeError(RunTimeError::kOverflow); }, [] { throw std::bad_alloc(); }}) {
        walk.instead = failure;
        EXPECT_ANY_THROW(host.ShowCacheWindow());
        EXPECT_EQ(nullptr, CacheWindowOnScreen());
        EXPECT_EQ(nullptr, windows.KG_Cache());
        host.Unload();
        EXPECT_EQ(0, folder.writes) << "its empty list is not the saved cookies";
    }
    // The next one is whole.
    walk.instead = nullptr;
    host.ShowCacheWindow();
    ASSERT_NE(nullptr, CacheWindowOnScreen());
    EXPECT_TRUE(IsWindowVisible(CacheWindowOnScreen()));
    EXPECT_EQ(3, walk.walks);
    EXPECT_EQ(2, SendMessageA(Control(kSavedList), LB_GETCOUNT, 0, 0));
    host.Unload();
    EXPECT_EQ(nullptr, CacheWindowOnScreen());
    EXPECT_EQ(0, folder.writes);
}

TEST_F(CacheWindowHostTest, AFailedWriteIsTriedAgainByTheNextWindow) {
    host.ShowCacheWindow();
    RemoveFirstCookie();
    Faults faults;
    folder.faults = &faults;
    faults.FailAt(0, RunTimeError::kPermissionDenied);
    SendMessageA(CacheWindowOnScreen(), WM_CLOSE, 0, 0);
    EXPECT_EQ((std::vector<std::int32_t>{RunTimeError::kPermissionDenied}), errors);
    EXPECT_EQ(nullptr, CacheWindowOnScreen());
    EXPECT_TRUE(store.Unwritten());
    host.ShowCacheWindow();
    SendMessageA(CacheWindowOnScreen(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(store.Unwritten());
    EXPECT_EQ(std::wstring::npos, folder.files[L"KestrelC.CFG"].find(L"Cookie:a"));
    EXPECT_NE(std::wstring::npos, folder.files[L"KestrelC.CFG"].find(L"Cookie:b"));
    EXPECT_EQ(1u, errors.size());
}

/// Lack of memory while the file is written, too: the window goes and the cookies are still to be written.
TEST_F(CacheWindowHostTest, LackOfMemoryInTheWriteClosesTheWindowAllTheSame) {
    host.ShowCacheWindow();
    RemoveFirstCookie();
    Faults faults;
    folder.faults = &faults;
    faults.FailAt(0, 0);
    EXPECT_THROW(host.Unload(), std::bad_alloc);
    EXPECT_EQ(nullptr, CacheWindowOnScreen());
    EXPECT_EQ(nullptr, windows.KG_Cache());
    EXPECT_TRUE(store.Unwritten());
}

/// A handler shows a question, and the window is closed meanwhile.
TEST_F(CacheWindowHostTest, AClosedWindowMayStillHaveAHandlerRunning) {
    host.ShowCacheWindow();
    walk.instead = [this] {
        host.Unload();
        throw RunTimeError(RunTimeError::kOverflow);
    };
    constexpr int kRefreshButton = 104;
    SendMessageA(Control(kRefreshButton), BM_CLICK, 0, 0);
    EXPECT_EQ((std::vector<std::int32_t>{RunTimeError::kOverflow}), errors);
    EXPECT_EQ(nullptr, CacheWindowOnScreen());
}

}  // namespace
}  // namespace kestrelguard
