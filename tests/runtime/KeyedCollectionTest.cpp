#include "runtime/KeyedCollection.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace kestrelguard {
namespace {

using Texts = KeyedCollection<std::wstring>;

std::vector<std::wstring> All(const Texts& set) {
    return {set.begin(), set.end()};
}

TEST(KeyedCollection, KeepsTheOrderOfAddition) {
    Texts set;
    set.Add(L"b", L"b");
    set.Add(L"a", L"a");
    set.Add(L"c", L"c");
    EXPECT_EQ(All(set), (std::vector<std::wstring>{L"b", L"a", L"c"}));
    set.Remove(L"a");
    EXPECT_EQ(All(set), (std::vector<std::wstring>{L"b", L"c"}));
    EXPECT_EQ(set.Count(), 2U);
}

TEST(KeyedCollection, RefusesADuplicateKeyAndStaysAsItWas) {
    Texts set;
    set.Add(L"one", L"k");
    try {
        set.Add(L"two", L"k");
        FAIL() << "a duplicate key was accepted";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), RunTimeError::kDuplicateKey);
    }
    EXPECT_EQ(All(set), (std::vector<std::wstring>{L"one"}));
}

TEST(KeyedCollection, TryAddAnswersWhetherTheKeyWasFree) {
    Texts set;
    EXPECT_TRUE(set.TryAdd(L"one", L"k"));
    EXPECT_FALSE(set.TryAdd(L"two", L"k"));
    EXPECT_EQ(All(set), (std::vector<std::wstring>{L"one"}));
}

TEST(KeyedCollection, KeysSurviveAMove) {
    Texts set;
    set.Add(L"a", L"a");
    set.Add(L"a text too long for a small buffer", L"a key too long for a small buffer");
    Texts moved(std::move(set));
    Texts assigned;
    assigned.Add(L"gone", L"gone");
    assigned = std::move(moved);
    EXPECT_FALSE(assigned.Contains(L"gone"));
    EXPECT_EQ(assigned.Item(L"a"), L"a");
    assigned.Remove(L"a key too long for a small buffer");
    EXPECT_EQ(All(assigned), (std::vector<std::wstring>{L"a"}));
}

TEST(KeyedCollection, RemovesByAKeyOfItsOwn) {
    Texts set;
    set.Add(L"x", L"x");
    set.Remove(*set.begin());
    EXPECT_TRUE(set.Empty());
}

TEST(KeyedCollection, ComparesKeysExactly) {
    Texts set;
    set.Add(L"a", L"Key");
    EXPECT_TRUE(set.Contains(L"Key"));
    EXPECT_FALSE(set.Contains(L"key"));
    EXPECT_EQ(set.Item(L"Key"), L"a");
}

TEST(KeyedCollection, MissingKeyIsAnError) {
    Texts set;
    EXPECT_THROW(set.Remove(L"x"), RunTimeError);
    EXPECT_THROW(set.Item(L"x"), RunTimeError);
}

TEST(KeyedCollection, ClearForgetsEverything) {
    Texts set;
    set.Add(L"a", L"a");
    set.Clear();
    EXPECT_TRUE(set.Empty());
    set.Add(L"a", L"a");
    EXPECT_EQ(set.Count(), 1U);
}

}  // namespace
}  // namespace kestrelguard
