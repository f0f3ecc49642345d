#include "runtime/Flagged.h"

#include <gtest/gtest.h>

#include "runtime/RunTimeError.h"

namespace kestrelguard {
namespace {

TEST(Flagged, TheFlagIsSetForTheScope) {
    bool flag = false;
    {
        const Flagged set(flag);
        EXPECT_TRUE(flag);
    }
    EXPECT_FALSE(flag);
}

TEST(Flagged, AnExceptionEndsTheScopeToo) {
    bool flag = false;
    EXPECT_THROW(
        {
            const Flagged set(flag);
            throw RunTimeError(RunTimeError::kOverflow);
        },
        RunTimeError);
    EXPECT_FALSE(flag);
}

TEST(Flagged, AnInnerScopeLeavesTheFlagToTheOuterOne) {
    bool flag = false;
    {
        const Flagged outer(flag);
        {
            const Flagged inner(flag);
            EXPECT_TRUE(flag);
        }
        EXPECT_TRUE(flag);
    }
    EXPECT_FALSE(flag);
}

}  // namespace
}  // namespace kestrelguard
