#include "runtime/OutOfSight.h"

#include <gtest/gtest.h>

#include <array>

#include "runtime/Edge.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/FirstFailure.h"

// The functions below are as small as what GCC 12 gets wrong when it is allowed to see it all: without
// OutOfSight they answer what happened to lie on the stack. That takes a build that is optimised and not
// sanitized, as the product's is.

namespace kestrelguard {
namespace {

struct Piece {
    const char* text;
    unsigned size;
};

/// Two words come back in registers; the handler gets what the variable held.
[[gnu::noinline]] Piece Take(int index) {
    if (index > 1) {
        throw RunTimeError(RunTimeError::kSubscriptOutOfRange);
    }
    return {"taken", 5};
}

using Block = std::array<int, 20>;

/// A whole block comes back in memory.
[[gnu::noinline]] Block TakeBlock(int index) {
    if (index > 1) {
        throw RunTimeError(RunTimeError::kSubscriptOutOfRange);
    }
    return {1, 2, 3};
}

[[gnu::noinline]] Piece TakeIgnoringErrors(int index) {
    Piece piece{"nothing", 7};
    ErrorsIgnored([&] { piece = Take(index); });
    return piece;
}

[[gnu::noinline]] Block TakeBlockIgnoringErrors(int index) {
    Block block{7, 8, 9};
    ErrorsIgnored([&] { block = TakeBlock(index); });
    return block;
}

[[gnu::noinline]] Piece TakeAtTheEdge(int index) {
    Piece piece{"nothing", 7};
    AtEdge([&] { piece = Take(index); }, [](const RunTimeError&) {});
    return piece;
}

[[gnu::noinline]] Piece TakeAsOneOfAllSteps(int index) {
    FirstFailure failure;
    Piece piece{"nothing", 7};
    failure.Try([&] { piece = Take(index); });
    return piece;
}

/// Leaves something else on the stack.
[[gnu::noinline]] int Litter(int seed) {
    volatile int rubbish[500];
    for (int i = 0; i < 500; ++i) {
        rubbish[i] = seed + i;
    }
    return rubbish[seed];
}

TEST(OutOfSight, AVariableKeepsItsValueWhenTheCallThatWasToReplaceItThrows) {
    Litter(7);
    EXPECT_EQ(TakeIgnoringErrors(2).size, 7U);
    EXPECT_EQ(TakeIgnoringErrors(0).size, 5U);
}

TEST(OutOfSight, ABlockKeepsItsValuesToo) {
    Litter(70);
    EXPECT_EQ(TakeBlockIgnoringErrors(2)[2], 9);
    EXPECT_EQ(TakeBlockIgnoringErrors(0)[2], 3);
}

TEST(OutOfSight, TheSameHoldsAtAnEdge) {
    Litter(11);
    EXPECT_EQ(TakeAtTheEdge(2).size, 7U);
    EXPECT_EQ(TakeAtTheEdge(0).size, 5U);
}

TEST(OutOfSight, TheSameHoldsWhereAllStepsAreRun) {
    Litter(13);
    EXPECT_EQ(TakeAsOneOfAllSteps(2).size, 7U);
    EXPECT_EQ(TakeAsOneOfAllSteps(0).size, 5U);
}

}  // namespace
}  // namespace kestrelguard
