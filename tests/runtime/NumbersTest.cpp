#include "runtime/Numbers.h"

#include <gtest/gtest.h>

#include <limits>

#include "runtime/RunTimeError.h"

namespace kestrelguard {
namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

TEST(NumberOf, AcceptsBlanksSignPointAndExponent) {
    EXPECT_EQ(NumberOf(L"60"), 60.0);
    EXPECT_EQ(NumberOf(L"  -2.5 "), -2.5);
    EXPECT_EQ(NumberOf(L"+7"), 7.0);
    EXPECT_EQ(NumberOf(L".5"), 0.5);
    EXPECT_EQ(NumberOf(L"5."), 5.0);
    EXPECT_EQ(NumberOf(L"1e3"), 1000.0);
}

TEST(NumberOf, RefusesEverythingElse) {
    for (const wchar_t* text :
         {L"", L" ", L"abc", L"6 0", L"60x", L"-", L".", L"1e", L"1e999", L"0x10", L"inf"}) {
        EXPECT_FALSE(NumberOf(text).has_value()) << "text of length " << std::wstring(text).size();
    }
}

TEST(LeadingNumber, TakesWhatTheTextBeginsWith) {
    EXPECT_EQ(LeadingNumber(L"1.5"), 1.5);
    EXPECT_EQ(LeadingNumber(L"  12abc"), 12.0);
    EXPECT_EQ(LeadingNumber(L"abc"), 0.0);
    EXPECT_EQ(LeadingNumber(L""), 0.0);
    EXPECT_EQ(LeadingNumber(L"-3-4"), -3.0);
    EXPECT_EQ(LeadingNumber(L"0000123\r\n"), 123.0);
}

TEST(RoundToInteger, HalvesGoToTheEvenNeighbour) {
    EXPECT_EQ(RoundToInteger(0.5), 0);
    EXPECT_EQ(RoundToInteger(1.5), 2);
    EXPECT_EQ(RoundToInteger(2.5), 2);
    EXPECT_EQ(RoundToInteger(-2.5), -2);
    EXPECT_EQ(RoundToInteger(-1.6), -2);
    EXPECT_EQ(RoundToInteger(2147483647.4), kMax);
    EXPECT_EQ(RoundToInteger(-2147483648.5), kMin);
}

TEST(RoundToInteger, OverflowIsAnError) {
    EXPECT_THROW(RoundToInteger(2147483647.5), RunTimeError);
    EXPECT_THROW(RoundToInteger(-2147483649.0), RunTimeError);
    EXPECT_THROW(RoundToInteger(std::numeric_limits<double>::quiet_NaN()), RunTimeError);
}

TEST(CheckedSums, NeverWrap) {
    EXPECT_EQ(CheckedAdd(kMax - 1, 1), kMax);
    EXPECT_THROW(CheckedAdd(kMax, 1), RunTimeError);
    EXPECT_EQ(CheckedSubtract(kMin + 1, 1), kMin);
    EXPECT_THROW(CheckedSubtract(kMin, 1), RunTimeError);
}

TEST(Grouped, GroupsByThree) {
    EXPECT_EQ(Grouped(0, L","), L"0");
    EXPECT_EQ(Grouped(999, L","), L"999");
    EXPECT_EQ(Grouped(1000, L","), L"1,000");
    EXPECT_EQ(Grouped(1234567, L","), L"1,234,567");
    EXPECT_EQ(Grouped(-1234, L"."), L"-1.234");
    EXPECT_EQ(Grouped(kMin, L","), L"-2,147,483,648");
}

TEST(Grouped, PatternWithoutObligatoryDigitIsEmptyForZero) {
    EXPECT_EQ(GroupedWithoutZero(0, L","), L"");
    EXPECT_EQ(GroupedWithoutZero(12345, L","), L"12,345");
}

TEST(Decimal, IsPlain) {
    EXPECT_EQ(Decimal(0), L"0");
    EXPECT_EQ(Decimal(-655412), L"-655412");
}

}  // namespace
}  // namespace kestrelguard
