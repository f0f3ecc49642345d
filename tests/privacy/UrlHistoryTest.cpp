#include "privacy/UrlHistory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeHistory.h"

namespace kestrelguard {
namespace {

constexpr std::int32_t kFailure = -2147467259;

class UrlHistoryTest : public ::testing::Test {
 protected:
    UrlHistoryTest() {
        platform.entries.push_back({u"http://news.example/", u"News"});
        platform.entries.push_back({u"http://shop.example/", u"Shop"});
        platform.entries.push_back({u"http://news.example/sport", u"Sport"});
    }
    ~UrlHistoryTest() override {
        EXPECT_TRUE(platform.BooksAreEven());
        EXPECT_FALSE(platform.freedTwice);
    }
    static std::vector<std::wstring> Addresses(const CURLHistory& history) {
        std::vector<std::wstring> addresses;
        for (const auto& item : history) {
            addresses.push_back(item->URL());
        }
        return addresses;
    }

    FakeHistory platform;
};

using Calls = std::vector<std::string>;
using Texts = std::vector<std::wstring>;

TEST_F(UrlHistoryTest, CreationLoadsEveryEntry) {
    CURLHistory history(platform);
    EXPECT_EQ(platform.calls, (Calls{"create", "enum", "filter  0"}));
    EXPECT_EQ(history.Count(), 3);
    EXPECT_EQ(history.Item(1)->URL(), L"http://news.example/");
    EXPECT_EQ(history.Item(3)->Title(), L"Sport");
    EXPECT_EQ(platform.enumerators, 0);
    EXPECT_EQ(platform.stores, 1);
}

TEST_F(UrlHistoryTest, TheIndexCountsFromOne) {
    CURLHistory history(platform);
    for (const std::int32_t index : {-1, 0, 4}) {
        try {
            static_cast<void>(history.Item(index));
            FAIL() << index;
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.Number(), RunTimeError::kSubscriptOutOfRange);
        }
        EXPECT_THROW(history.Remove(index), RunTimeError);
    }
}

TEST_F(UrlHistoryTest, ClearEmptiesTheHistory) {
    CURLHistory history(platform);
    platform.calls.clear();
    history.Clear();
    EXPECT_EQ(platform.calls, (Calls{"clear", "enum", "filter  0"}));
    EXPECT_EQ(history.Count(), 0);
}

TEST_F(UrlHistoryTest, ClearCountsWhatThePlatformStillEnumerates) {
    platform.stubborn = 1;
    CURLHistory history(platform);
    history.Clear();
    EXPECT_EQ(history.Count(), 1);
}

TEST_F(UrlHistoryTest, RefreshListsWhatTheFilterLetsThrough) {
    CURLHistory history(platform);
    history.Refresh(L"http://news.example/", 1);
    EXPECT_EQ(platform.calls.back(), "filter http://news.example/ 1");
    EXPECT_EQ(Addresses(history), (Texts{L"http://news.example/", L"http://news.example/sport"}));
    history.Refresh(L"", 0);
    EXPECT_EQ(history.Count(), 3);
}

TEST_F(UrlHistoryTest, AddURLDoesNotReload) {
    CURLHistory history(platform);
    history.AddURL(L"http://new.example/", L"New", 1);
    EXPECT_EQ(platform.calls.back(), "add http://new.example/ New 1");
    EXPECT_EQ(history.Count(), 3);
    history.Refresh(L"", 0);
    EXPECT_EQ(history.Count(), 4);
}

TEST_F(UrlHistoryTest, RemoveDeletesTheItemsAddress) {
    CURLHistory history(platform);
    history.Remove(2);
    EXPECT_EQ(platform.calls.back(), "delete http://shop.example/ 0");
    EXPECT_EQ(Addresses(history), (Texts{L"http://news.example/", L"http://news.example/sport"}));
    EXPECT_EQ(platform.entries.size(), 2U);
}

TEST_F(UrlHistoryTest, AnItemStaysWhenItsAddressCannotBeDeleted) {
    CURLHistory history(platform);
    Faults faults;
    platform.faults = &faults;
    faults.FailAt(0, kFailure);
    EXPECT_THROW(history.Remove(2), RunTimeError);
    platform.faults = nullptr;
    EXPECT_EQ(platform.calls.back(), "delete http://shop.example/ 0");
    EXPECT_EQ(history.Count(), 3);
    EXPECT_EQ(history.Item(2)->URL(), L"http://shop.example/");
}

TEST_F(UrlHistoryTest, DeleteURLTakesANumber) {
    platform.entries.push_back({u"-42", u"A number"});
    CURLHistory history(platform);
    platform.calls.clear();
    history.DeleteURL(-42, 7);
    EXPECT_EQ(platform.calls, (Calls{"delete -42 7", "enum", "filter  0"}));
    EXPECT_EQ(history.Count(), 3);
}

TEST_F(UrlHistoryTest, ItemsShowTheFieldsOfTheirRecord) {
    platform.zone = 0;
    platform.entries[0].flags = 0x80000001;
    const CURLHistory history(platform);
    URLHistoryItem& item = *history.Item(1);
    EXPECT_EQ(item.LastVisited(), 1000);
    EXPECT_EQ(item.LastUpdated(), 2000);
    EXPECT_EQ(item.Expires(), 3000);
    EXPECT_EQ(item.Flags(), -2147483647);
    EXPECT_EQ(item.Title(), L"News");
}

TEST_F(UrlHistoryTest, EachReadOfATimeShiftsItOnceMore) {
    const CURLHistory history(platform);
    URLHistoryItem& item = *history.Item(1);
    EXPECT_EQ(item.LastVisited(), 1002);
    EXPECT_EQ(item.LastVisited(), 1004);
    EXPECT_EQ(item.LastVisited(), 1006);
    EXPECT_EQ(item.LastUpdated(), 2002);
    EXPECT_TRUE(platform.inPlace);
}

TEST_F(UrlHistoryTest, AMissingTextIsEmpty) {
    platform.entries[0].untitled = true;
    const CURLHistory history(platform);
    EXPECT_EQ(history.Item(1)->Title(), L"");
    EXPECT_EQ(history.Item(1)->URL(), L"http://news.example/");
}

TEST_F(UrlHistoryTest, AnItemFreesItsTitleBeforeItsAddress) {
    {
        CURLHistory history(platform);
        history.Remove(2);
        EXPECT_EQ(platform.freed, (std::vector<std::u16string>{u"Shop", u"http://shop.example/"}));
        platform.freed.clear();
        history.Refresh(L"", 0);
        EXPECT_EQ(platform.freed, (std::vector<std::u16string>{u"News", u"http://news.example/", u"Sport",
                                                               u"http://news.example/sport"}));
    }
    EXPECT_EQ(platform.freed.size(), 8U);
}

TEST_F(UrlHistoryTest, AnItemOutlivesItsCollection) {
    std::shared_ptr<URLHistoryItem> item;
    {
        const CURLHistory history(platform);
        item = history.Item(2);
    }
    EXPECT_EQ(item->URL(), L"http://shop.example/");
}

/// Each failing platform call reaches the caller with its own result code, and nothing stays behind.
TEST_F(UrlHistoryTest, EachFailingCallReachesTheCaller) {
    Faults faults;
    platform.faults = &faults;
    const auto useAll = [this] {
        CURLHistory history(platform);
        history.AddURL(L"http://new.example/", L"New", 0);
        static_cast<void>(history.Item(1)->LastVisited());
        history.Remove(2);
        history.DeleteURL(5, 0);
        history.Refresh(L"http://", 0);
        history.Clear();
    };
    useAll();
    const int calls = faults.Calls();
    EXPECT_GT(calls, 20);
    for (int position = 0; position < calls; ++position) {
        platform.entries = {{u"http://news.example/", u"News"},
                            {u"http://shop.example/", u"Shop"},
                            {u"http://news.example/sport", u"Sport"}};
        faults.FailAt(position, kFailure);
        try {
            useAll();
            ADD_FAILURE() << position;
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.Number(), kFailure);
        }
        EXPECT_TRUE(platform.BooksAreEven()) << position;
    }
    faults.FailAt(-1, 0);
}

/// As that of a damaged index does; with circles of every length, beginning here and there.
TEST_F(UrlHistoryTest, AnEnumerationThatGoesInCirclesEnds) {
    platform.entries.clear();
    for (int entry = 0; entry < 20; ++entry) {
        platform.entries.push_back(
            {u"http://site.example/" + std::u16string(1, static_cast<char16_t>('A' + entry)), u""});
        for (platform.circleTo = 0; platform.circleTo <= entry; platform.circleTo += 13) {
            const CURLHistory history(platform, 5000);
            EXPECT_GE(history.Count(), entry + 1);
            EXPECT_LT(history.Count(), 2000);
        }
    }
}

TEST_F(UrlHistoryTest, AnEnumerationWithoutAnEndAndWithoutAddressesEndsToo) {
    platform.entries = {{u"", u"", {}, {}, {}, 0, true}};
    platform.circleTo = 0;
    const CURLHistory history(platform, 1000);
    EXPECT_EQ(history.Count(), 1000);
}

TEST_F(UrlHistoryTest, AnAddressMayComeBackAFewTimes) {
    for (int time = 0; time < 10; ++time) {
        platform.entries.push_back({u"http://news.example/", u"News"});
    }
    EXPECT_EQ(CURLHistory(platform).Count(), 13);
}

}  // namespace
}  // namespace kestrelguard
