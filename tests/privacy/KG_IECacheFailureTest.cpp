#include "privacy/CacheWalkFixture.h"

#include <limits>

namespace kestrelguard {
namespace {

TEST_F(KG_IECacheTest, GroupsAreFlushedOnceAWalkAndOnlyAfterAFailedDelete) {
    FillUsual();
    cache.groups = {0x1000000000001LL, 2};
    Walk(false, true, false);
    EXPECT_EQ(cache.Calls("FindFirstGroup"), 0);
    EXPECT_FALSE(walk.GroupsFlushed);

    cache.Add("http://locked.example/1");
    cache.Add("http://locked.example/2");
    cache.entries[4].locked = true;
    cache.entries[5].locked = true;
    cache.calls.clear();
    Walk(false, true, false);
    EXPECT_TRUE(walk.GroupsFlushed);
    EXPECT_EQ(cache.Calls("FindFirstGroup"), 1);
    EXPECT_EQ(cache.Calls("Delete http://locked.example/1"), 1) << "a failed deletion is not tried again";
    EXPECT_EQ(cache.deletedGroups, (std::vector<std::int64_t>{0x1000000000001LL, 2}));
    EXPECT_EQ(cache.calls.back(), "FindClose 2");
    // Counted off although the deletions failed.
    EXPECT_EQ(walk.CacheFileCount, 2);
}

TEST_F(KG_IECacheTest, FlushMakesItsCallsInTheirOrder) {
    cache.groups = {11, 12};
    walk.DeleteCacheEntry(L"http://gone.example/");
    EXPECT_EQ(cache.calls,
              (Texts{"Delete http://gone.example/", "FindFirstGroup 0 0 null 0 null", "DeleteGroup 11 2 null",
                     "FindNextGroup 1000 null", "DeleteGroup 12 2 null", "FindNextGroup 1000 null"}));
}

TEST_F(KG_IECacheTest, NoGroupsEndsTheFlush) {
    walk.DeleteCacheEntry(L"http://gone.example/");
    EXPECT_EQ(cache.calls, (Texts{"Delete http://gone.example/", "FindFirstGroup 0 0 null 0 null"}));
    EXPECT_TRUE(walk.GroupsFlushed);
}

TEST_F(KG_IECacheTest, MissingGroupFunctionsAreForgotten) {
    FillUsual();
    cache.entries[0].locked = true;
    cache.groups = {11, 12};
    cache.missing = {"FindFirstGroup", "FindNextGroup", "DeleteGroup"};
    Walk(false, true, false);
    EXPECT_EQ(cache.Left(), (Texts{kPage, kCookie, kSavedCookie}));
    ExpectBooksEven();
}

TEST_F(KG_IECacheTest, AMissingGroupDeleteGoesOnToTheNextGroup) {
    cache.groups = {11, 12};
    cache.missing = {"DeleteGroup"};
    walk.DeleteCacheEntry(L"http://gone.example/");
    EXPECT_EQ(cache.Calls("DeleteGroup"), 2);
    EXPECT_EQ(cache.Calls("FindNextGroup"), 2);
}

TEST_F(KG_IECacheTest, AMissingNextGroupEndsTheFlush) {
    cache.groups = {11, 12};
    cache.missing = {"FindNextGroup", "DeleteGroup"};
    walk.DeleteCacheEntry(L"http://gone.example/");
    EXPECT_EQ(cache.Calls("DeleteGroup"), 1);
}

/// Kept: the last error decides even behind a group that was found.
TEST_F(KG_IECacheTest, ANextGroupThatComesWithErrorTwoEndsTheFlush) {
    cache.groups = {11, 12, 13};
    cache.nextGroupLeaves = 2;
    walk.DeleteCacheEntry(L"http://gone.example/");
    EXPECT_EQ(cache.deletedGroups, (std::vector<std::int64_t>{11}));
    EXPECT_EQ(cache.Calls("FindNextGroup"), 1);
}

TEST_F(KG_IECacheTest, AFailedGroupDeleteStopsTheFlush) {
    cache.groups = {11, 12};
    cache.failAt = 2;
    walk.DeleteCacheEntry(L"http://gone.example/");
    EXPECT_EQ(cache.Calls("DeleteGroup"), 1);
    EXPECT_EQ(cache.Calls("FindNextGroup"), 0);
}

TEST_F(KG_IECacheTest, EndlessGroupsComeToAnEnd) {
    cache.groups = {11};
    cache.endlessGroups = true;
    cache.recording = false;
    walk.DeleteCacheEntry(L"http://gone.example/");
    EXPECT_EQ(cache.deletedGroups.size(), 65536U);
}

TEST_F(KG_IECacheTest, CountersOverflow) {
    walk.CacheFileCount = std::numeric_limits<std::int32_t>::min();
    walk.CacheCookieCount = std::numeric_limits<std::int32_t>::min();
    const auto number = [this](const wchar_t* address) {
        try {
            walk.DeleteCacheEntry(address);
        } catch (const RunTimeError& error) {
            return error.Number();
        }
        return 0;
    };
    EXPECT_EQ(number(L"http://news.example/"), RunTimeError::kOverflow);
    EXPECT_EQ(number(L"a Cookie without its colon"), RunTimeError::kOverflow);
    EXPECT_TRUE(cache.calls.empty());
}

TEST_F(KG_IECacheTest, StringFromPointerCopiesTheText) {
    EXPECT_EQ(walk.StringFromPointer("Cookie:jane@bank.example/"), L"Cookie:jane@bank.example/");
    EXPECT_EQ(walk.StringFromPointer(""), L"");
    EXPECT_EQ(walk.StringFromPointer(nullptr), L"");
    EXPECT_EQ(walk.StringFromPointer("caf\xE9"), L"caf\u00E9");
}

TEST_F(KG_IECacheTest, AnEntryRemovedBySomebodyElseBeforeItsFetchIsPassedOver) {
    FillUsual();
    cache.Add("http://b.example/");
    // The entry whose size was asked for goes before it is fetched; the one behind it needs no more room.
    cache.beforeFetch = [this](std::size_t position) {
        if (position == 3) {
            cache.entries[3].gone = true;
        }
    };
    Walk(false, true, false);
    EXPECT_EQ(cache.Left(), (Texts{kCookie, kSavedCookie}));
    EXPECT_EQ(cache.Calls("Delete http://b.example/"), 1);
    ExpectBooksEven();
}

TEST_F(KG_IECacheTest, TheLastEntryRemovedBeforeItsFetchEndsTheWalk) {
    FillUsual();
    cache.beforeFetch = [this](std::size_t position) {
        if (position == 3) {
            cache.entries[3].gone = true;
        }
    };
    Walk(false, false, false);
    EXPECT_EQ(walk.CacheFileCount, 3);
    ExpectBooksEven();
}

TEST_F(KG_IECacheTest, EachEntryGetsABufferOfItsOwnSize) {
    std::string address = "http://news.example/";
    for (int entry = 0; entry < 12; ++entry) {
        cache.Add(address);
        address += address;
    }
    windows.Open();
    Walk(true, false, false);
    ASSERT_EQ(windows.entries.rows.size(), 12U);
    EXPECT_EQ(windows.entries.rows.back().size(), 20U << 11U);
    ExpectBooksEven();
}

TEST_F(KG_IECacheTest, AnEntryThatGrowsBeforeItsFetchEndsTheWalkInOrder) {
    FillUsual();
    windows.Open();
    cache.beforeFetch = [this](std::size_t position) {
        if (position == 2) {
            cache.entries[2].address += "and/much/more";
        }
    };
    Walk(true, true, false);
    EXPECT_EQ(walk.CacheFileCount, 1);
    EXPECT_EQ(windows.entries.rows, (Rows{L"Cookie:jane@news.example/"}));
    EXPECT_TRUE(windows.visibility.visible);
    ExpectBooksEven();
}

TEST_F(KG_IECacheTest, AnEnumerationThatGoesInCirclesComesToAnEnd) {
    for (const int length : {1, 2, 17, 300}) {
        cache.entries.clear();
        cache.recording = false;
        for (int entry = 0; entry < 40 + length; ++entry) {
            cache.Add("http://news.example/" + std::to_string(entry));
        }
        cache.circleTo = 40;
        windows.Open();
        Walk(true, false, false);
        EXPECT_GE(walk.CacheFileCount, 40 + length) << "all entries were seen";
        EXPECT_LE(walk.CacheFileCount, 64 * (40 + length));
        ExpectBooksEven();
    }
}

TEST_F(KG_IECacheTest, ACircleOfEntriesThatAreNotCountedIsToldToo) {
    cache.recording = false;
    for (int entry = 0; entry < 20; ++entry) {
        cache.entries.push_back({"http://news.example/" + std::to_string(entry), 0});
    }
    cache.circleTo = 3;
    int fetches = 0;
    cache.beforeFetch = [&](std::size_t) { ++fetches; };
    KG_IECache module(KG_IECache::Platform{cache, cache, cache, cache, windows, locale, saved}, 100000);
    bool no = false;
    module.LoadCacheEntries(no, no, no, no);
    EXPECT_GE(fetches, 20);
    EXPECT_LT(fetches, 2000);
    EXPECT_EQ(module.CacheFileCount, 0);
}

TEST_F(KG_IECacheTest, AnAddressThatComesBackAFewTimesDoesNotEndTheWalk) {
    for (int entry = 0; entry < 400; ++entry) {
        cache.Add(entry % 40 == 0 ? "http://news.example/again"
                                  : "http://news.example/" + std::to_string(entry));
    }
    Walk(false, false, false);
    EXPECT_EQ(walk.CacheFileCount, 400);
}

TEST_F(KG_IECacheTest, EverNewEntriesComeToAnEnd) {
    cache.recording = false;
    cache.endless = true;
    for (const std::uint32_t type : {0U, kNormalCacheEntry}) {
        cache.endlessType = type;
        KG_IECache module(KG_IECache::Platform{cache, cache, cache, cache, windows, locale, saved}, 1000);
        bool no = false;
        module.LoadCacheEntries(no, no, no, no);
        EXPECT_EQ(module.CacheFileCount, type == 0 ? 0 : 1000);
        ExpectBooksEven();
    }
    EXPECT_EQ(KG_IECache::kMostEntries, 16777216U);
}

/// Lets each call of the platform that can fail do so once. Whatever happens: no crash, nothing left open,
/// the saved cookie stays, the list comes back.
TEST_F(KG_IECacheTest, SurvivesEachFailingPlatformCall) {
    int position = 0;
    for (bool hit = true; hit; ++position) {
        for (const std::uint32_t failure : {2U, 5U, 122U, 259U}) {
            FakeCache faulty;
            faulty.Add(kPage);
            faulty.Add(kCookie);
            faulty.Add(kSavedCookie);
            faulty.Add(kPicture);
            faulty.entries[0].locked = true;
            faulty.groups = {11, 12};
            faulty.failAt = position;
            faulty.failure = failure;
            FakeCacheWindows open;
            open.Open();
            TextSet savedCookies;
            savedCookies.Add(L"Cookie:jane@bank.example/");
            KG_IECache module(
                KG_IECache::Platform{faulty, faulty, faulty, faulty, open, locale, savedCookies});
            bool showList = true;
            bool clear = true;
            bool cookiesOnly = false;
            module.LoadCacheEntries(showList, clear, clear, cookiesOnly);
            EXPECT_TRUE(faulty.BooksAreEven()) << position;
            EXPECT_FALSE(faulty.freedTwice) << position;
            EXPECT_TRUE(faulty.Has(kSavedCookie)) << position;
            EXPECT_TRUE(open.visibility.visible) << position;
            EXPECT_EQ(open.entries.fills, 0) << position;
            hit = faulty.fallibleCalls > position;
        }
    }
    EXPECT_GT(position, 15);
}

/// The same for the window's controls: their errors reach the caller, after everything was given back.
TEST_F(KG_IECacheTest, SurvivesEachFailingControl) {
    FillUsual();
    Save(L"Cookie:jane@bank.example/");
    windows.Open();
    Faults faults;
    windows.SetFaults(&faults);
    Walk(true, false, false);
    const int calls = faults.Calls();
    EXPECT_GT(calls, 8);
    for (int position = 0; position < calls; ++position) {
        faults.FailAt(position, RunTimeError::kOutOfMemory);
        EXPECT_THROW(Walk(true, false, false), RunTimeError) << position;
        EXPECT_TRUE(cache.BooksAreEven()) << position;
        EXPECT_EQ(windows.entries.fills, 0) << position;
        EXPECT_TRUE(windows.visibility.visible) << position;
    }
    EXPECT_EQ(cache.Left().size(), 4U);
}

}  // namespace
}  // namespace kestrelguard
