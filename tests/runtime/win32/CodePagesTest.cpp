#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <string>

#include "runtime/Text.h"

namespace kestrelguard {
namespace {

/// The code pages of one or two bytes a letter that Windows may run its programs in.
class CodePagesTest : public testing::TestWithParam<unsigned> {
 protected:
    /// Calls `action` with every character that the code page holds beyond the 7 bits.
    template <class Action>
    static int ForEachCharacter(Action&& action) {
        int characters = 0;
        const auto take = [&](const char* bytes, int count) {
            wchar_t letters[4] = {};
            if (MultiByteToWideChar(GetParam(), MB_ERR_INVALID_CHARS, bytes, count, letters, 4) == 1) {
                ++characters;
                action(letters[0]);
            }
        };
        for (int first = 0x80; first < 0x100; ++first) {
            if (!IsDBCSLeadByteEx(GetParam(), static_cast<BYTE>(first))) {
                const char byte = static_cast<char>(first);
                take(&byte, 1);
                continue;
            }
            for (int second = 0x40; second < 0x100; ++second) {
                const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
                take(bytes, 2);
            }
        }
        return characters;
    }

    static std::string Code(wchar_t letter) {
        char text[16];
        std::snprintf(text, sizeof text, "U+%04X", static_cast<unsigned>(letter));
        return text;
    }
};

/// What the system's own table says is the lower case; it need not be in the code page.
wchar_t SystemsLowerCase(wchar_t letter) {
    if (letter == 0x130) {
        return L'i';  // the dotted capital of Turkish: Wine's table has no lower case for it
    }
    wchar_t lower = letter;
    LCMapStringW(MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT), LCMAP_LOWERCASE,
                 &letter, 1, &lower, 1);
    return lower;
}

TEST_P(CodePagesTest, EveryLetterHasTheLowerCaseOfTheSystem) {
    const int characters = ForEachCharacter([](wchar_t letter) {
        EXPECT_EQ(Code(LowerCase(letter)), Code(SystemsLowerCase(letter))) << "of " << Code(letter);
    });
    EXPECT_GT(characters, 50);
}

TEST(LowerCaseBlocks, AreThoseOfTheSystem) {
    struct Block {
        unsigned first;
        unsigned last;
    };
    for (const Block& block : {Block{0x80, 0x17F}, Block{0x386, 0x3CE}, Block{0x400, 0x45F},
                               Block{0x490, 0x491}, Block{0x2150, 0x2182}, Block{0xFF00, 0xFFEF}}) {
        for (unsigned code = block.first; code <= block.last; ++code) {
            const auto letter = static_cast<wchar_t>(code);
            EXPECT_EQ(LowerCase(letter), SystemsLowerCase(letter)) << std::hex << code;
        }
    }
}

std::string NameOf(const testing::TestParamInfo<unsigned>& codePage) {
    return std::to_string(codePage.param);
}

INSTANTIATE_TEST_SUITE_P(SingleByte, CodePagesTest,
                         testing::Values(874, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258), NameOf);
INSTANTIATE_TEST_SUITE_P(DoubleByte, CodePagesTest, testing::Values(932, 936, 949, 950), NameOf);

}  // namespace
}  // namespace kestrelguard
