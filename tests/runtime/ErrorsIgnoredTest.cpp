#include "runtime/ErrorsIgnored.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "runtime/Edge.h"

namespace kestrelguard {
namespace {

TEST(ErrorsIgnored, EveryStepRunsAndFailsOnItsOwn) {
    std::string ran;
    ErrorsIgnored([&] { ran += 'a'; },
                  [&] {
                      ran += 'b';
                      throw RunTimeError(RunTimeError::kOverflow);
                  },
                  [&] { ran += 'c'; });
    EXPECT_EQ(ran, "abc");
}

TEST(ErrorsIgnored, ErrorOfAnswersTheNumber) {
    EXPECT_EQ(ErrorOf([] {}), 0);
    EXPECT_EQ(ErrorOf([] { throw RunTimeError(RunTimeError::kDuplicateKey); }), 457);
}

TEST(ErrorsIgnored, LackOfMemoryIsARunTimeErrorToo) {
    EXPECT_EQ(ErrorOf([] { throw std::bad_alloc(); }), RunTimeError::kOutOfMemory);
}

TEST(ErrorsIgnored, OtherExceptionsAreNotSwallowed) {
    EXPECT_THROW(ErrorsIgnored([] { throw std::logic_error("a mistake"); }), std::logic_error);
}

TEST(RunTimeError, HasAStandardDescription) {
    EXPECT_EQ(RunTimeError(6).Description(), L"Overflow");
    EXPECT_EQ(RunTimeError(457).Description(),
              L"This key is already associated with an element of this collection");
    EXPECT_EQ(RunTimeError(-2147467259).Description(), L"Automation error");
    EXPECT_EQ(RunTimeError(12345).Description(), L"Application-defined or object-defined error");
}

TEST(AtEdge, ReportsEveryKindOfException) {
    std::int32_t number = 0;
    const auto report = [&](const RunTimeError& error) { number = error.Number(); };
    AtEdge([] { throw RunTimeError(6); }, report);
    EXPECT_EQ(number, 6);
    AtEdge([] { throw std::bad_alloc(); }, report);
    EXPECT_EQ(number, 7);
    AtEdge([] { throw 1; }, report);
    EXPECT_EQ(number, 5);
}

TEST(AtEdge, SurvivesAReportThatFails) {
    bool reported = false;
    AtEdge([] { throw RunTimeError(6); },
           [&](const RunTimeError&) {
               reported = true;
               throw std::bad_alloc();
           });
    EXPECT_TRUE(reported);
}

}  // namespace
}  // namespace kestrelguard
