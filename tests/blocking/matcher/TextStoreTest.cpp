#include "blocking/matcher/TextStore.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace kestrelguard {
namespace {

TEST(TextStoreTest, HoldsEachAdditionByItself) {
    TextStore texts;
    const TextStore::Row first = texts.Add("casino");
    const TextStore::Row second = texts.Add("casino");
    EXPECT_NE(first, second);
    EXPECT_EQ(texts.Count(), 2U);
    texts.Remove(first);
    EXPECT_FALSE(texts.Holds(first));
    EXPECT_TRUE(texts.Holds(second));
    EXPECT_EQ(texts[second], "casino");
    EXPECT_EQ(texts.Count(), 1U);
    texts.Clear();
    EXPECT_EQ(texts.Count(), 0U);
    EXPECT_EQ(texts.Slots(), 0U);
}

TEST(TextStoreTest, UsesTheRowsOfRemovedTextsAgain) {
    TextStore texts;
    const TextStore::Row first = texts.Add("a");
    const TextStore::Row second = texts.Add("b");
    texts.Remove(first);
    texts.Remove(second);
    texts.Add("c");
    texts.Add("d");
    EXPECT_EQ(texts.Slots(), 2U);
}

TEST(TextStoreTest, AgreesWithAMapOverManyAdditionsAndRemovals) {
    std::mt19937 random(7);
    TextStore texts;
    std::map<TextStore::Row, std::string> expected;
    for (int operation = 0; operation < 40000; ++operation) {
        // Swells and shrinks, so that most bytes lie unused now and then.
        const bool swelling = operation / 5000 % 2 == 0;
        if (random() % 10 < (swelling ? 8U : 2U)) {
            const std::string text(1 + random() % 40, static_cast<char>('a' + random() % 26));
            const TextStore::Row row = texts.Add(text);
            ASSERT_TRUE(expected.emplace(row, text).second) << "the row is held by another text";
            ASSERT_LT(row, texts.Slots());
        } else if (!expected.empty()) {
            auto chosen = expected.lower_bound(static_cast<TextStore::Row>(random() % texts.Slots()));
            chosen = chosen == expected.end() ? expected.begin() : chosen;
            texts.Remove(chosen->first);
            ASSERT_FALSE(texts.Holds(chosen->first));
            expected.erase(chosen);
        }
        ASSERT_EQ(texts.Count(), expected.size());
        if (operation % 1000 == 0) {
            for (const auto& [row, text] : expected) {
                ASSERT_TRUE(texts.Holds(row));
                ASSERT_EQ(texts[row], text);
            }
        }
    }
}

}  // namespace
}  // namespace kestrelguard
