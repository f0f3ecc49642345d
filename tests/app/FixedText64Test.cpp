#include "app/FixedText64.h"

#include <gtest/gtest.h>

#include <string>

namespace kestrelguard {
namespace {

std::wstring All(const FixedText64& field) {
    return {field.Characters().begin(), field.Characters().end()};
}

TEST(FixedText64, BeginsAsNuls) {
    EXPECT_EQ(All(FixedText64()), std::wstring(64, L'\0'));
    EXPECT_EQ(FixedText64().Text(), L"");
}

TEST(FixedText64, StoresTextNulAndBlanks) {
    const FixedText64 field(L" Kestrelguard");
    EXPECT_EQ(All(field), L" Kestrelguard" + std::wstring(1, L'\0') + std::wstring(50, L' '));
    EXPECT_EQ(field.Text(), L" Kestrelguard");
}

TEST(FixedText64, AnEmptyTextIsNulAndBlanks) {
    const FixedText64 field(L"");
    EXPECT_EQ(All(field), std::wstring(1, L'\0') + std::wstring(63, L' '));
    EXPECT_FALSE(field == FixedText64());
}

TEST(FixedText64, SixtyThreeCharactersFit) {
    const std::wstring text(63, L'x');
    EXPECT_EQ(All(FixedText64(text)), text + std::wstring(1, L'\0'));
}

TEST(FixedText64, ALongerTextIsCutAtSixtyFourWithItsNul) {
    for (const std::size_t length : {64U, 65U, 1000U}) {
        EXPECT_EQ(All(FixedText64(std::wstring(length, L'x'))),
                  std::wstring(63, L'x') + std::wstring(1, L'\0'));
    }
}

TEST(FixedText64, AShorterTextLeavesNothingOfTheOldOne) {
    FixedText64 field(std::wstring(63, L'x'));
    field.Store(L"ab");
    EXPECT_EQ(field, FixedText64(L"ab"));
    EXPECT_EQ(field.Text(), L"ab");
}

TEST(FixedText64, ComparesEveryCharacter) {
    EXPECT_EQ(FixedText64(L"a"), FixedText64(L"a"));
    EXPECT_FALSE(FixedText64(L"a") == FixedText64(L"a "));
}

}  // namespace
}  // namespace kestrelguard
