#include "blocking/SiteList.h"

#include <gtest/gtest.h>

#include <deque>

#include "controls/Fakes.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {
namespace {

using Rows = std::deque<std::wstring>;

class SiteListTest : public testing::Test {
 protected:
    FakeListDisplay display;
    SiteList list{display};
};

TEST_F(SiteListTest, ShowsEveryChangeAndAnswersFromItsOwnRows) {
    const std::wstring odd(L"a\0b", 3);
    list.Append(L"one");
    list.Append(L"");
    list.Append(odd);
    list.Append(L"Gr\u00fc\u00dfe \u20ac");
    EXPECT_EQ(list.Count(), 4);
    EXPECT_EQ(list.Row(0), L"one");
    EXPECT_EQ(list.Row(1), L"");
    EXPECT_EQ(list.Row(2), odd);
    EXPECT_EQ(list.Row(3), L"Gr\u00fc\u00dfe \u20ac");
    list.Remove(1);
    EXPECT_EQ(list.Row(1), odd);
    EXPECT_EQ(display.shown, (Rows{L"one", odd, L"Gr\u00fc\u00dfe \u20ac"}));
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_TRUE(display.shown.empty());
    EXPECT_FALSE(list.AnyOccursIn(L"one"));
    list.Append(L"two");
    EXPECT_EQ(display.shown, Rows{L"two"});
}

TEST_F(SiteListTest, ARowThatIsNotThereIsEmptyAndCannotBeRemoved) {
    list.Append(L"one");
    for (const std::int32_t row : {-1, 1, 2000000000}) {
        EXPECT_EQ(list.Row(row), L"");
        EXPECT_THROW(list.Remove(row), RunTimeError) << row;
    }
    EXPECT_EQ(display.shown, Rows{L"one"});
}

TEST_F(SiteListTest, AppendsARowToWhatIsThere) {
    const std::wstring rows[] = {L"one", L"", std::wstring(L"a\0b", 3), L"Gr\u00fc\u00dfe \u20ac", L"\u20ac"};
    std::wstring text = L"SS1:";
    std::wstring expected = text;
    for (std::int32_t row = 0; row < 5; ++row) {
        list.Append(rows[row]);
        list.AppendRow(row, text);
        expected += rows[row];
        EXPECT_EQ(text, expected) << row;
        EXPECT_EQ(list.Row(row), rows[row]);
    }
    list.AppendRow(-1, text);
    list.AppendRow(5, text);
    EXPECT_EQ(text, expected);
}

TEST_F(SiteListTest, TellsTheDisplayOfManyRowsOnce) {
    const int before = display.looks;
    {
        const ListFill outer(list);
        {
            const ListFill inner(list);
            list.Append(L"a");
            list.Append(L"b");
        }
        list.Append(L"c");
        EXPECT_EQ(display.looks, before);
    }
    EXPECT_EQ(display.looks, before + 1);
    EXPECT_EQ(display.shown, (Rows{L"a", L"b", L"c"}));
}

TEST_F(SiteListTest, HoldsEveryRowWhateverTheDisplayShows) {
    display.room = 2;
    for (const wchar_t* const text : {L"one", L"two", L"three", L"four"}) {
        list.Append(text);
    }
    EXPECT_EQ(display.shown, (Rows{L"one", L"two"}));
    EXPECT_EQ(list.Count(), 4);
    EXPECT_EQ(list.Row(3), L"four");
    EXPECT_TRUE(list.AnyOccursIn(L"http://four/"));
    list.Remove(2);
    EXPECT_EQ(list.Row(2), L"four");
    EXPECT_FALSE(list.AnyOccursIn(L"http://three/"));
    EXPECT_EQ(display.shown, (Rows{L"one", L"two"}));
}

TEST(SiteListEndTest, TheDisplayDoesNotLookAtRowsThatAreGone) {
    FakeListDisplay display;
    { const SiteList list(display); }
    EXPECT_EQ(display.source, nullptr);
}

}  // namespace
}  // namespace kestrelguard
