#include "runtime/KeyedCollection.h"

#include <gtest/gtest.h>

#include <vector>

namespace kestrelguard {
namespace {

std::vector<std::wstring> All(const TextSet& set) {
    return {set.begin(), set.end()};
}

TEST(KeyedCollection, KeepsTheOrderOfAddition) {
    TextSet set;
    set.Add(L"b", L"b");
    set.Add(L"a", L"a");
    set.Add(L"c", L"c");
    EXPECT_EQ(All(set), (std::vector<std::wstring>{L"b", L"a", L"c"}));
    set.Remove(L"a");
    EXPECT_EQ(All(set), (std::vector<std::wstring>{L"b", L"c"}));
    EXPECT_EQ(set.Count(), 2U);
}

TEST(KeyedCollection, RefusesADuplicateKeyAndStaysAsItWas) {
    TextSet set;
    set.Add(L"one", L"k");
    try {
        set.Add(L"two", L"k");
        FAIL() << "a duplicate key was accepted";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), RunTimeError::kDuplicateKey);
    }
    EXPECT_EQ(All(set), (std::vector<std::wstring>{L"one"}));
}

TEST(KeyedCollection, ComparesKeysExactly) {
    TextSet set;
    set.Add(L"a", L"Key");
    EXPECT_TRUE(set.Contains(L"Key"));
    EXPECT_FALSE(set.Contains(L"key"));
    EXPECT_EQ(set.Item(L"Key"), L"a");
}

TEST(KeyedCollection, MissingKeyIsAnError) {
    TextSet set;
    EXPECT_THROW(set.Remove(L"x"), RunTimeError);
    EXPECT_THROW(set.Item(L"x"), RunTimeError);
}

TEST(KeyedCollection, ClearForgetsEverything) {
    TextSet set;
    set.Add(L"a", L"a");
    set.Clear();
    EXPECT_TRUE(set.Empty());
    set.Add(L"a", L"a");
    EXPECT_EQ(set.Count(), 1U);
}

}  // namespace
}  // namespace kestrelguard
