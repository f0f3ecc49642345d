#include "blocking/SiteList.h"

#include <gtest/gtest.h>

#include <deque>

#include "controls/Fakes.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {
namespace {

using Rows = std::deque<std::wstring>;

/// Fails the test when a row is read back from the display.
struct WriteOnlyRows : FakeListRows {
    std::wstring Row(std::int32_t row) const override {
        ADD_FAILURE() << "the display is asked for row " << row;
        return FakeListRows::Row(row);
    }
};

class SiteListTest : public testing::Test {
 protected:
    WriteOnlyRows display;
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
    EXPECT_EQ(display.rows, (Rows{L"one", odd, L"Gr\u00fc\u00dfe \u20ac"}));
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_TRUE(display.rows.empty());
    EXPECT_FALSE(list.AnyOccursIn(L"one"));
}

TEST_F(SiteListTest, ARowThatIsNotThereIsEmptyAndCannotBeRemoved) {
    list.Append(L"one");
    for (const std::int32_t row : {-1, 1, 2000000000}) {
        EXPECT_EQ(list.Row(row), L"");
        EXPECT_THROW(list.Remove(row), RunTimeError) << row;
    }
    EXPECT_EQ(display.rows, Rows{L"one"});
}

TEST_F(SiteListTest, PassesFillsOn) {
    {
        const ListFill fill(list);
        EXPECT_EQ(display.fills, 1);
    }
    EXPECT_EQ(display.fills, 0);
}

TEST(SiteListFailureTest, ARowThatTheDisplayRefusesToShowOrToRemoveChangesNothing) {
    struct Refusing : FakeListRows {
        bool refuse = false;
        void Append(const std::wstring& text) override {
            if (refuse) {
                throw RunTimeError(RunTimeError::kOutOfMemory);
            }
            FakeListRows::Append(text);
        }
        void Remove(std::int32_t row) override {
            if (refuse) {
                throw RunTimeError(RunTimeError::kInvalidCall);
            }
            FakeListRows::Remove(row);
        }
    } display;
    SiteList list(display);
    list.Append(L"one");
    display.refuse = true;
    EXPECT_THROW(list.Append(L"two"), RunTimeError);
    EXPECT_THROW(list.Remove(0), RunTimeError);
    EXPECT_EQ(list.Count(), 1);
    EXPECT_TRUE(list.AnyOccursIn(L"one"));
    EXPECT_FALSE(list.AnyOccursIn(L"two"));
}

}  // namespace
}  // namespace kestrelguard
