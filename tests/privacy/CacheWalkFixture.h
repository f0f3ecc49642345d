#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "privacy/FakeCache.h"
#include "privacy/KG_IECache.h"

namespace kestrelguard {

inline constexpr char kPage[] = "http://news.example/index.html";
inline constexpr char kCookie[] = "Cookie:jane@news.example/";
inline constexpr char kSavedCookie[] = "Cookie:jane@bank.example/";
inline constexpr char kPicture[] = "http://news.example/logo.gif";

class KG_IECacheTest : public ::testing::Test {
 protected:
    void Save(const std::wstring& address) { saved.Add(address); }
    void FillUsual() {
        cache.Add(kPage);
        cache.Add(kCookie);
        cache.Add(kSavedCookie);
        cache.Add(kPicture);
    }
    /// Answers what became of ShowList.
    bool Walk(bool showList, bool clearFiles, bool clearCookies, bool cookiesOnly = false) {
        walk.LoadCacheEntries(showList, clearFiles, clearCookies, cookiesOnly);
        return showList;
    }
    void ExpectBooksEven() const {
        EXPECT_TRUE(cache.BooksAreEven());
        EXPECT_FALSE(cache.freedTwice);
        EXPECT_TRUE(cache.sizesWritten);
    }

    FakeCache cache;
    FakeCacheWindows windows;
    FakeLocale locale;
    TextSet saved;
    KG_IECache walk{KG_IECache::Platform{cache, cache, cache, cache, windows, locale, saved}};
};

using Texts = std::vector<std::string>;
using Rows = std::deque<std::wstring>;

}  // namespace kestrelguard
