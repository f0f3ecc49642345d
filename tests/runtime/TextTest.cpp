#include "runtime/Text.h"

#include <gtest/gtest.h>

namespace kestrelguard {
namespace {

using Pieces = std::vector<std::wstring_view>;

TEST(LowerCase, CoversTheWindowsCodePages) {
    EXPECT_EQ(LowerCase(L"ABCxyz09-_"), L"abcxyz09-_");
    EXPECT_EQ(LowerCase(L"\u00C4\u00D6\u00DC\u00D7\u00DF"), L"\u00E4\u00F6\u00FC\u00D7\u00DF");
    EXPECT_EQ(LowerCase(L"\u0141\u0179\u0178\u0152"), L"\u0142\u017A\u00FF\u0153");
    EXPECT_EQ(LowerCase(L"\u0391\u03A9\u0386\u038F"), L"\u03B1\u03C9\u03AC\u03CE");
    EXPECT_EQ(LowerCase(L"\u0410\u042F\u0401"), L"\u0430\u044F\u0451");
    EXPECT_EQ(LowerCase(L"\u040F\u0176\u038C\u0490"), L"\u045F\u0177\u03CC\u0491");
    EXPECT_EQ(LowerCase(L"\uFF21\uFF3A\u2160\u2169"), L"\uFF41\uFF5A\u2170\u2179");
    EXPECT_EQ(LowerCase(L"\uFF20\uFF3B\u215F\u2170"), L"\uFF20\uFF3B\u215F\u2170");
}

TEST(UpperCase, IsForKeys) {
    EXPECT_EQ(UpperCase(L"pt1 a"), L"PT1 A");
}

TEST(Trim, TakesBlanksOnly) {
    EXPECT_EQ(Trim(L"  a b  "), L"a b");
    EXPECT_EQ(Trim(L"   "), L"");
    EXPECT_EQ(Trim(L"\ta"), L"\ta");
}

TEST(Split, KeepsEmptyPieces) {
    EXPECT_EQ(Split(L"a -b -", L" -"), (Pieces{L"a", L"b", L""}));
    EXPECT_EQ(Split(L"a", L" -"), (Pieces{L"a"}));
    EXPECT_EQ(Split(L" -", L" -"), (Pieces{L"", L""}));
    EXPECT_TRUE(Split(L"", L" -").empty());
    EXPECT_EQ(Split(L"PP4/:/:y/:/:60/:/:M", L"/:/:"), (Pieces{L"PP4", L"y", L"60", L"M"}));
}

TEST(Without, RemovesEveryOccurrence) {
    EXPECT_EQ(Without(L"12\r\n3\r\n", L"\r\n"), L"123");
    EXPECT_EQ(Without(L"", L"\r\n"), L"");
}

}  // namespace
}  // namespace kestrelguard
