#include "privacy/win32/WinInetCache.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "controls/Fakes.h"
#include "desktop/driver/CacheFiller.h"
#include "privacy/KG_IECache.h"

namespace kestrelguard {
namespace {

using Texts = std::vector<std::string>;

class SomeDetails : public CacheDetails {
 public:
    std::wstring CacheEntryDetails(const std::string& address) override {
        return L"Details of " + std::wstring(address.begin(), address.end());
    }
};

/// The walk over the platform's own cache, with the stand-in's wininet.dll in front of it.
class WinInetCacheTest : public ::testing::Test {
 protected:
    WinInetCacheTest() { CacheFiller::Empty(); }
    ~WinInetCacheTest() override {
        if (shown != nullptr) {
            DestroyWindow(shown);
        }
        CacheFiller::Empty();
    }
    void Walk(bool clearFiles, bool clearCookies) {
        bool showList = false;
        bool cookiesOnly = false;
        walk.LoadCacheEntries(showList, clearFiles, clearCookies, cookiesOnly);
    }
    void OpenWindow() {
        shown = CreateWindowExA(0, "STATIC", kCacheWindowCaption, WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                nullptr, nullptr, nullptr);
        windows.SetOwn(&window);
    }

    HWND shown = nullptr;
    WinInetCache cache;
    KernelMemory memory;
    KernelText text;
    DesktopCacheWindows windows;
    FakeLocale locale;
    TextSet saved;
    FakeAddressRows entries;
    FakeListSelection selection;
    FakeVisibility visibility;
    FakeCaption countLabel;
    FakeCaption detailsLabel;
    SomeDetails details;
    CacheWindow window{entries, selection, visibility, countLabel, detailsLabel, details};
    KG_IECache walk{KG_IECache::Platform{cache, cache, memory, text, windows, locale, saved}};
};

TEST_F(WinInetCacheTest, ClearsFilesFromDiskAndSparesCookies) {
    const std::string page = CacheFiller::Add("http://news.example/index.html", "a page");
    const std::string cookie = CacheFiller::Add("Cookie:jane@news.example/", "a cookie");
    ASSERT_TRUE(FileExists(page));
    ASSERT_TRUE(FileExists(cookie));
    Walk(true, false);
    EXPECT_FALSE(FileExists(page));
    EXPECT_TRUE(FileExists(cookie));
    EXPECT_EQ(CacheFiller::Addresses(), (Texts{"Cookie:jane@news.example/"}));
    EXPECT_EQ(walk.CacheFileCount, 1);
    EXPECT_FALSE(walk.GroupsFlushed);
}

TEST_F(WinInetCacheTest, ClearsCookiesFromDiskAndSparesSavedOnes) {
    const std::string page = CacheFiller::Add("http://news.example/index.html", "a page");
    const std::string cookie = CacheFiller::Add("Cookie:jane@news.example/", "a cookie");
    const std::string kept = CacheFiller::Add("Cookie:jane@bank.example/", "a saved cookie");
    saved.Add(L"Cookie:jane@bank.example/");
    Walk(false, true);
    EXPECT_TRUE(FileExists(page));
    EXPECT_FALSE(FileExists(cookie));
    EXPECT_TRUE(FileExists(kept));
}

TEST_F(WinInetCacheTest, FillsTheWindowThatBearsTheCaption) {
    CacheFiller::Add("http://news.example/index.html", "a page");
    CacheFiller::Add("Cookie:jane@news.example/", "a cookie");
    Walk(false, false);
    EXPECT_TRUE(entries.rows.empty());
    OpenWindow();
    Walk(false, false);
    EXPECT_EQ(entries.rows.size(), 2U);
    EXPECT_EQ(countLabel.text, L"Internet Explorer Cache 2 Files; 1 Cookies...");
    EXPECT_EQ(selection.row, 0);
    EXPECT_TRUE(visibility.visible);
}

TEST_F(WinInetCacheTest, AnEmptyCacheShowsZeroCounts) {
    OpenWindow();
    Walk(true, true);
    EXPECT_EQ(countLabel.text, L"Internet Explorer Cache 0 Files; 0 Cookies...");
    EXPECT_TRUE(entries.rows.empty());
}

TEST_F(WinInetCacheTest, AFailedDeleteAsksForTheGroups) {
    walk.DeleteCacheEntry(L"http://not.there.example/");
    EXPECT_TRUE(walk.GroupsFlushed);
}

/// The calls as the platform's library sees them.
TEST_F(WinInetCacheTest, MakesTheseCallsAndNoOthers) {
    char folder[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, folder);
    const std::string log = std::string(folder) + "calls.txt";
    CacheFiller::Add("http://news.example/index.html", "a page");
    DeleteFileA(log.c_str());
    _putenv_s("KESTRELGUARD_WININET_LOG", log.c_str());
    _putenv_s("KESTRELGUARD_WININET_LOCKED", "news.example");
    _putenv_s("KESTRELGUARD_WININET_GROUPS", "2");
    Walk(true, false);
    _putenv_s("KESTRELGUARD_WININET_LOG", "");
    _putenv_s("KESTRELGUARD_WININET_LOCKED", "");
    _putenv_s("KESTRELGUARD_WININET_GROUPS", "");
    Texts calls;
    std::ifstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        calls.push_back(line);
    }
    EXPECT_EQ(calls, (Texts{"FindFirstUrlCacheEntryA \"0\" null", "FindFirstUrlCacheEntryA null buffer",
                            "DeleteUrlCacheEntryA \"http://news.example/index.html\"",
                            "FindFirstUrlCacheGroup 0 0 null 0 null", "DeleteUrlCacheGroup 1 2 null",
                            "FindNextUrlCacheGroup null", "DeleteUrlCacheGroup 2 2 null",
                            "FindNextUrlCacheGroup null", "FindNextUrlCacheEntryA null",
                            "FindNextUrlCacheEntryA buffer", "FindCloseUrlCache"}));
}

TEST_F(WinInetCacheTest, AnEnumerationThatGoesInCirclesComesToAnEnd) {
    for (int entry = 0; entry < 50; ++entry) {
        CacheFiller::Add("http://news.example/" + std::to_string(entry), "a page");
    }
    OpenWindow();
    _putenv_s("KESTRELGUARD_WININET_CIRCLE", "1");
    Walk(false, false);
    _putenv_s("KESTRELGUARD_WININET_CIRCLE", "");
    EXPECT_GT(walk.CacheFileCount, 50);
    EXPECT_EQ(CacheFiller::Addresses().size(), 50U);
}

}  // namespace
}  // namespace kestrelguard
