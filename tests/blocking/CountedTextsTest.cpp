#include "blocking/CountedTexts.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace kestrelguard {
namespace {

TEST(CountedTextsTest, HoldsEqualTextsOnce) {
    CountedTexts texts;
    const auto first = texts.Add("casino");
    const auto second = texts.Add("casino");
    EXPECT_TRUE(first.isNew);
    EXPECT_FALSE(second.isNew);
    EXPECT_EQ(first.row, second.row);
    EXPECT_EQ(texts.Count(), 1U);
    texts.Remove(first.row);
    EXPECT_TRUE(texts.Holds(first.row));
    EXPECT_TRUE(texts.IsLast(first.row));
    texts.Remove(first.row);
    EXPECT_FALSE(texts.Holds(first.row));
    EXPECT_EQ(texts.Count(), 0U);
}

TEST(CountedTextsTest, AgreesWithAMapOverManyAdditionsAndRemovals) {
    std::mt19937 random(7);
    CountedTexts texts;
    std::map<std::string, std::pair<CountedTexts::Row, std::size_t>> expected;
    for (int operation = 0; operation < 40000; ++operation) {
        // Swells and shrinks, so that the table grows and most bytes lie unused now and then.
        const bool swelling = operation / 5000 % 2 == 0;
        if (random() % 10 < (swelling ? 8U : 2U)) {
            const std::string text(1 + random() % 3, static_cast<char>('a' + random() % 26));
            const std::string whole = text + std::to_string(random() % 3000);
            const auto added = texts.Add(whole);
            auto& [row, count] = expected[whole];
            ASSERT_EQ(added.isNew, count == 0);
            ASSERT_TRUE(count == 0 || row == added.row);
            row = added.row;
            ++count;
        } else if (!expected.empty()) {
            auto chosen = expected.lower_bound(std::string(1, static_cast<char>('a' + random() % 26)));
            chosen = chosen == expected.end() ? expected.begin() : chosen;
            auto& [row, count] = chosen->second;
            ASSERT_EQ(texts.IsLast(row), count == 1);
            texts.Remove(row);
            if (--count == 0) {
                ASSERT_FALSE(texts.Holds(row));
                expected.erase(chosen);
            }
        }
        ASSERT_EQ(texts.Count(), expected.size());
        if (operation % 1000 == 0) {
            for (const auto& [text, held] : expected) {
                ASSERT_TRUE(texts.Holds(held.first));
                ASSERT_EQ(texts[held.first], text);
            }
        }
    }
}

}  // namespace
}  // namespace kestrelguard
