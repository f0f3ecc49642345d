#include "privacy/win32/WinInetEntries.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "controls/Fakes.h"
#include "desktop/driver/CacheFiller.h"
#include "privacy/win32/WinInet.h"
#include "runtime/win32/AnsiText.h"

namespace {

/// What freed memory leaves as the thread's last error; 0 for nothing. Any real free may do so.
DWORD g_errorOfFreedMemory = 0;

void Free(void* block) {
    std::free(block);
    if (g_errorOfFreedMemory != 0) {
        SetLastError(g_errorOfFreedMemory);
    }
}

}  // namespace

[[gnu::noinline]] void operator delete(void* block) noexcept {
    Free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* const block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}

namespace kestrelguard {
namespace {

class WinInetEntriesTest : public testing::Test {
 protected:
    WinInetEntriesTest() { CacheFiller::Empty(); }
    ~WinInetEntriesTest() override {
        g_errorOfFreedMemory = 0;
        CacheFiller::Empty();
    }

    FakeLocale locale;
    WinInetEntries entries{locale};
};

TEST_F(WinInetEntriesTest, DeletesAnEntry) {
    ASSERT_FALSE(CacheFiller::Add("http://news.example/", "news").empty());
    EXPECT_EQ(entries.DeleteUrlCacheEntryA("http://news.example/"), 0U);
    EXPECT_TRUE(CacheFiller::Addresses().empty());
}

TEST_F(WinInetEntriesTest, TheErrorOfADeletionIsTakenBeforeAnythingElseSetsIt) {
    const std::string address = "http://nowhere.example/an/address/that/takes/memory";
    g_errorOfFreedMemory = 4711;
    const std::uint32_t error = entries.DeleteUrlCacheEntryA(address);
    g_errorOfFreedMemory = 0;
    EXPECT_EQ(error, static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
}

/// What the system says of an error, however long.
std::wstring WholeMessage(DWORD error) {
    char* text = nullptr;
    const DWORD length = FormatMessageA(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_ALLOCATE_BUFFER, nullptr,
        error, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    const std::wstring message = length == 0 ? std::wstring() : FromAnsi({text, length});
    LocalFree(text);
    return message;
}

TEST_F(WinInetEntriesTest, AnErrorHasTheTextOfTheSystem) {
    EXPECT_NE(entries.SystemMessage(ERROR_FILE_NOT_FOUND), L"");
    int silent = 0;
    for (DWORD error = 0; error < 12'500; ++error) {
        const std::wstring whole = WholeMessage(error);
        silent += whole.empty() ? 1 : 0;
        ASSERT_EQ(entries.SystemMessage(error), whole.size() < 200 ? whole : L"") << error;
    }
    EXPECT_GT(silent, 0);
}

/// A time beyond what calendar fields can hold.
TEST_F(WinInetEntriesTest, ATimeWithoutCalendarFieldsHasNoValue) {
    const std::string path = CacheFiller::Add("http://news.example/", "news");
    ASSERT_FALSE(path.empty());
    const FILETIME beyond{0xFFFFFFFF, 0xFFFFFFFF};
    SYSTEMTIME fields{};
    ASSERT_FALSE(FileTimeToSystemTime(&beyond, &fields));
    INTERNET_CACHE_ENTRY_INFOA entry{};
    entry.dwStructSize = sizeof entry;
    entry.LastModifiedTime = beyond;
    ASSERT_TRUE(SetUrlCacheEntryInfoA("http://news.example/", &entry, CACHE_ENTRY_MODTIME_FC));
    const std::wstring details = entries.CacheEntryDetails("http://news.example/");
    EXPECT_NE(details.find(L"Modified: No value.\r\n"), std::wstring::npos)
        << testing::PrintToString(details);
}

}  // namespace
}  // namespace kestrelguard
