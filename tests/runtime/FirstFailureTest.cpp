#include "runtime/FirstFailure.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "runtime/RunTimeError.h"

namespace kestrelguard {
namespace {

std::int32_t NumberOf(const FirstFailure& failure) {
    try {
        failure.Rethrow();
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    return 0;
}

TEST(FirstFailure, StepsThatSucceedLeaveNothingToTell) {
    FirstFailure failure;
    int ran = 0;
    failure.Try([&] { ++ran; });
    failure.Try([&] { ++ran; });
    EXPECT_EQ(ran, 2);
    EXPECT_NO_THROW(failure.Rethrow());
}

TEST(FirstFailure, TheFirstOfTwoFailuresIsTold) {
    FirstFailure failure;
    failure.Try([] {});
    failure.Try([] { throw RunTimeError(RunTimeError::kDiskFull); });
    failure.Try([] { throw RunTimeError(RunTimeError::kOverflow); });
    EXPECT_EQ(NumberOf(failure), RunTimeError::kDiskFull);
}

TEST(FirstFailure, WhateverAStepThrowsTheNextIsDone) {
    std::string ran;
    EXPECT_THROW(AllSteps(
                     [&] {
                         ran += 'a';
                         throw std::bad_alloc();
                     },
                     [&] {
                         ran += 'b';
                         throw std::logic_error("a mistake");
                     },
                     [&] {
                         ran += 'c';
                         throw 1;
                     },
                     [&] { ran += 'd'; }),
                 std::bad_alloc);
    EXPECT_EQ(ran, "abcd");
}

TEST(FirstFailure, AllStepsThatSucceedThrowNothing) {
    std::string ran;
    EXPECT_NO_THROW(AllSteps([&] { ran += 'a'; }, [&] { ran += 'b'; }));
    EXPECT_EQ(ran, "ab");
}

}  // namespace
}  // namespace kestrelguard
