#include "runtime/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

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

TEST(NumberOf, RefusesANumberThatNoDoubleHolds) {
    EXPECT_FALSE(NumberOf(L"1e309").has_value());
    EXPECT_FALSE(NumberOf(L"1" + std::wstring(400, L'0')).has_value());
    EXPECT_FALSE(NumberOf(L"1e99999999999999999999999").has_value());
    EXPECT_EQ(NumberOf(L"1e-99999999999999999999999"), 0.0);
    EXPECT_EQ(NumberOf(L"0e99999999999999999999999"), 0.0);
    EXPECT_EQ(NumberOf(L"1" + std::wstring(400, L'0') + L"e-400"), 1.0);
    EXPECT_EQ(NumberOf(L"0." + std::wstring(400, L'0') + L"1e401"), 1.0);
}

TEST(NumberOf, TakesLinearTimeForDigitsWithoutEnd) {
    const std::wstring digits(2'000'000, L'7');
    EXPECT_FALSE(NumberOf(digits).has_value());
    EXPECT_EQ(NumberOf(L"0." + digits), 7.0 / 9.0);
    EXPECT_EQ(NumberOf(std::wstring(2'000'000, L'0') + L"5"), 5.0);
}

TEST(NumberOf, RoundsLikeTheCLibrary) {
    std::mt19937_64 random(113);
    for (int round = 0; round < 20'000; ++round) {
        std::string text = random() % 2 != 0 ? "-" : "";
        const auto digits = [&](std::uint64_t count) {
            for (; count > 0; --count) {
                text += static_cast<char>('0' + random() % 10);
            }
        };
        digits(1 + random() % 20);
        if (random() % 2 != 0) {
            text += '.';
            digits(random() % 20);
        }
        if (random() % 2 != 0) {
            text += "e" + std::to_string(static_cast<int>(random() % 600) - 300);
        }
        const double expected = std::strtod(text.c_str(), nullptr);
        const std::optional<double> number = NumberOf(std::wstring(text.begin(), text.end()));
        ASSERT_EQ(number.has_value(), std::isfinite(expected)) << text;
        if (number) {
            ASSERT_EQ(*number, expected) << text;
        }
    }
}

TEST(NumberOf, DigitsFarBehindStillDecideAHalf) {
    // 2^53 + 1 lies in the middle of two doubles; anything more, however far behind, goes up.
    EXPECT_EQ(NumberOf(L"9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(NumberOf(L"9007199254740993." + std::wstring(2000, L'0') + L"1"), 9007199254740994.0);
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
