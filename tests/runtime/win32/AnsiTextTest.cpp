#include "runtime/win32/AnsiText.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace kestrelguard {
namespace {

TEST(AnsiText, SevenBitTextsStayWhatTheyAre) {
    std::string ansi;
    std::wstring wide;
    for (int letter = 0; letter < 0x80; ++letter) {
        ansi += static_cast<char>(letter);
        wide += static_cast<wchar_t>(letter);
    }
    EXPECT_EQ(ToAnsi(wide), ansi);
    EXPECT_EQ(FromAnsi(ansi), wide);
    EXPECT_EQ(ToAnsi(L""), "");
    EXPECT_EQ(FromAnsi(""), L"");
}

/// One character beyond the 7 bits brings the system's own conversion in; both ways agree on the rest.
TEST(AnsiText, OtherTextsGoThroughTheCodePage) {
    ASSERT_EQ(GetACP(), 1252U);
    EXPECT_EQ(ToAnsi(L"caf\u00E9 \u20AC \u65E5"), "caf\xE9 \x80 ?");
    EXPECT_EQ(FromAnsi("caf\xE9 \x80"), L"caf\u00E9 \u20AC");
}

TEST(AnsiText, EveryCharacterOfTheCodePageComesBack) {
    std::string all;
    for (int letter = 0; letter < 0x100; ++letter) {
        all += static_cast<char>(letter);
    }
    EXPECT_EQ(ToAnsi(FromAnsi(all)), all);
}

TEST(AnsiArgument, IsTheTextOfToAnsi) {
    for (const std::wstring& text :
         {std::wstring(), std::wstring(L"short"), std::wstring(299, L'x'), std::wstring(300, L'x'),
          std::wstring(5000, L'x'), std::wstring(L"caf\u00E9"), std::wstring(400, L'\u00E9')}) {
        EXPECT_EQ(AnsiArgument(text).Get(), ToAnsi(text)) << text.size();
    }
}

}  // namespace
}  // namespace kestrelguard
