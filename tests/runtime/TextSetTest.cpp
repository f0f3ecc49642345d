#include "runtime/TextSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "runtime/RunTimeError.h"

namespace kestrelguard {
namespace {

using Texts = std::vector<std::wstring>;

Texts All(const TextSet& set) {
    return {set.begin(), set.end()};
}

std::int32_t ErrorOfAdding(TextSet& set, const wchar_t* text) {
    try {
        set.Add(text);
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    return 0;
}

TEST(TextSetTest, KeepsTheOrderOfAddition) {
    TextSet set;
    for (const wchar_t* const text : {L"b", L"", L"a", L"c"}) {
        set.Add(text);
    }
    EXPECT_EQ(All(set), (Texts{L"b", L"", L"a", L"c"}));
    set.Remove(L"a");
    set.Remove(L"b");
    set.Add(L"b");
    EXPECT_EQ(All(set), (Texts{L"", L"c", L"b"}));
    EXPECT_EQ(set.Count(), 3U);
}

TEST(TextSetTest, RefusesATextThatIsThere) {
    TextSet set;
    EXPECT_TRUE(set.TryAdd(L"one"));
    EXPECT_FALSE(set.TryAdd(L"one"));
    EXPECT_EQ(ErrorOfAdding(set, L"one"), RunTimeError::kDuplicateKey);
    EXPECT_EQ(All(set), Texts{L"one"});
}

TEST(TextSetTest, ComparesExactly) {
    TextSet set;
    set.Add(L"Text");
    EXPECT_TRUE(set.Contains(L"Text"));
    EXPECT_FALSE(set.Contains(L"text"));
    EXPECT_FALSE(set.Contains(L"Tex"));
    EXPECT_FALSE(set.Contains(L""));
}

TEST(TextSetTest, ATextThatIsNotThereCannotBeRemoved) {
    TextSet set;
    EXPECT_THROW(set.Remove(L"x"), RunTimeError);
    set.Add(L"x");
    set.Remove(*set.begin());
    EXPECT_TRUE(set.Empty());
    EXPECT_THROW(set.Remove(L"x"), RunTimeError);
}

TEST(TextSetTest, CanBeMovedAndCleared) {
    TextSet set;
    set.Add(L"a");
    TextSet moved(std::move(set));
    EXPECT_TRUE(set.Empty());  // NOLINT(bugprone-use-after-move): usable again
    set.Add(L"b");
    EXPECT_EQ(All(moved), Texts{L"a"});
    moved = std::move(set);
    EXPECT_EQ(All(moved), Texts{L"b"});
    moved.Clear();
    EXPECT_TRUE(moved.Empty());
    EXPECT_FALSE(moved.Contains(L"b"));
    EXPECT_TRUE(moved.TryAdd(L"b"));
}

TEST(TextSetTest, DoesWhatAPlainListDoes) {
    std::mt19937 random(7);
    TextSet set;
    Texts plain;
    for (int step = 0; step < 20000; ++step) {
        const std::wstring text = std::to_wstring(random() % 300);
        const auto found = std::find(plain.begin(), plain.end(), text);
        ASSERT_EQ(set.Contains(text), found != plain.end());
        if (random() % 2 == 0) {
            ASSERT_EQ(set.TryAdd(text), found == plain.end());
            if (found == plain.end()) {
                plain.push_back(text);
            }
        } else if (found != plain.end()) {
            set.Remove(text);
            plain.erase(found);
        }
        ASSERT_EQ(set.Count(), plain.size());
    }
    EXPECT_EQ(All(set), plain);
}

}  // namespace
}  // namespace kestrelguard
