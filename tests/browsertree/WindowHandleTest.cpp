#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "browsertree/BrowserTree.h"
#include "runtime/ErrorsIgnored.h"

namespace kestrelguard {
namespace {

TEST(WindowHandleOf, ABrowserKeyHoldsIt) {
    EXPECT_EQ(WindowHandleOf(L"_655412"), 655412);
    EXPECT_EQ(WindowHandleOf(L"_0"), 0);
}

TEST(WindowHandleOf, DetailKeysHoldItToo) {
    EXPECT_EQ(WindowHandleOf(L"_655412_TITLE"), 655412);
    EXPECT_EQ(WindowHandleOf(L"_655412_URL"), 655412);
}

TEST(WindowHandleOf, ANegativeHandleIsOne) {
    EXPECT_EQ(WindowHandleOf(L"_-12_URL"), -12);
    EXPECT_EQ(WindowHandleOf(L"_-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(WindowHandleOf(L"_2147483647"), std::numeric_limits<std::int32_t>::max());
}

TEST(WindowHandleOf, TheRootHasNone) {
    EXPECT_EQ(WindowHandleOf(L"ROOT"), std::nullopt);
    EXPECT_EQ(WindowHandleOf(L""), std::nullopt);
    // A number, but the key has no "_".
    EXPECT_EQ(WindowHandleOf(L"655412"), std::nullopt);
}

TEST(WindowHandleOf, NoNumericPartIsNone) {
    EXPECT_EQ(WindowHandleOf(L"_"), std::nullopt);
    EXPECT_EQ(WindowHandleOf(L"_TITLE"), std::nullopt);
    EXPECT_EQ(WindowHandleOf(L"_12x_URL"), std::nullopt);
}

TEST(WindowHandleOf, TheFirstNumericPartFromTheLeftCounts) {
    EXPECT_EQ(WindowHandleOf(L"_x_12_13"), 12);
    EXPECT_EQ(WindowHandleOf(L"7_12"), 7);
}

TEST(WindowHandleOf, IsRoundedHalvesToTheEvenNeighbour) {
    EXPECT_EQ(WindowHandleOf(L"_12.5"), 12);
    EXPECT_EQ(WindowHandleOf(L"_13.5"), 14);
    EXPECT_EQ(WindowHandleOf(L"_1e3"), 1000);
}

TEST(WindowHandleOf, ATooLargeNumberIsAnOverflow) {
    EXPECT_EQ(ErrorOf([] { WindowHandleOf(L"_2147483648"); }), RunTimeError::kOverflow);
}

}  // namespace
}  // namespace kestrelguard
