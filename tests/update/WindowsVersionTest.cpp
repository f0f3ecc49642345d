#include "update/WindowsVersion.h"

#include <gtest/gtest.h>

namespace kestrelguard {
namespace {

struct Case {
    WindowsVersion version;
    const wchar_t* code;
};

class WindowsCode : public testing::TestWithParam<Case> {};

TEST_P(WindowsCode, IsThatOfTheTable) {
    EXPECT_EQ(WindowsCodeOf(GetParam().version), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(EveryRow, WindowsCode,
                         testing::Values(Case{{0, 3, 10, L"", 0, 0}, L"WIN31"},               //
                                         Case{{0, 99, 99, L"C", 2, 1}, L"WIN31"},             //
                                         Case{{1, 4, 0, L" C", 0, 0}, L"95OS2"},              //
                                         Case{{1, 4, 0, L" c", 0, 0}, L"95OS2"},              //
                                         Case{{1, 4, 0, L"", 0, 0}, L"WIN95"},                //
                                         Case{{1, 4, 0, L" A", 0, 0}, L"WIN95"},              //
                                         Case{{1, 4, 0, L" B ", 0, 0}, L"WIN95"},             //
                                         Case{{1, 4, 10, L" A ", 0, 0}, L"98SEC"},            //
                                         Case{{1, 4, 10, L"a", 0, 0}, L"98SEC"},              //
                                         Case{{1, 4, 10, L"", 0, 0}, L"WIN98"},               //
                                         Case{{1, 4, 10, L" C ", 0, 0}, L"WIN98"},            //
                                         Case{{1, 4, 90, L"", 0, 0}, L"WINME"},               //
                                         Case{{1, 4, 90, L" A C ", 0, 0}, L"WINME"},          //
                                         Case{{2, 3, 0, L"", 0, 0}, L"NTV30"},                //
                                         Case{{2, 3, 1, L"", 0, 0}, L"NTV31"},                //
                                         Case{{2, 3, 5, L"", 0, 0}, L"NTV35"},                //
                                         Case{{2, 3, 51, L"", 0, 0}, L"NT351"},               //
                                         Case{{2, 4, 0, L"Service Pack 6", 0, 1}, L"NTV40"},  //
                                         Case{{2, 4, 77, L"", 2, 3}, L"NTV40"},               //
                                         Case{{2, 5, 0, L"", 0, 1}, L"00PRO"},                //
                                         Case{{2, 5, 0, L"", 2, 1}, L"00PRO"},                //
                                         Case{{2, 5, 0, L"", 128, 1}, L"00PRO"},              //
                                         Case{{2, 5, 0, L"", 2, 3}, L"00ADV"},                //
                                         Case{{2, 5, 0, L"", 128, 3}, L"00DCE"},              //
                                         Case{{2, 5, 0, L"", 0, 3}, L"00SVR"},                //
                                         Case{{2, 5, 0, L"", 1, 3}, L"00SVR"},                //
                                         Case{{2, 5, 0, L"", 3, 3}, L"00SVR"},                //
                                         Case{{2, 5, 0, L"", 127, 3}, L"00SVR"},              //
                                         Case{{2, 5, 0, L"", 129, 3}, L"00SVR"},              //
                                         Case{{2, 5, 0, L"", 130, 3}, L"00SVR"},              //
                                         Case{{2, 5, 1, L"", 2, 1}, L"XPHOM"},                //
                                         Case{{2, 5, 1, L"", 0x202, 1}, L"XPHOM"},            //
                                         Case{{2, 5, 1, L"", 3, 1}, L"XPHOM"},                //
                                         Case{{2, 5, 1, L"", 0, 1}, L"XPPRO"},                //
                                         Case{{2, 5, 1, L"", 1, 1}, L"XPPRO"},                //
                                         Case{{2, 5, 1, L"", 0xFFFD, 1}, L"XPPRO"},           //
                                         Case{{2, 5, 1, L"", 2, 3}, L"XPNET"},                //
                                         Case{{2, 5, 1, L"", 2, 2}, L"XPNET"},                //
                                         Case{{2, 5, 1, L"", 2, 0}, L"XPNET"},                //
                                         Case{{2, 5, 1, L"", 3, 3}, L"XPSVR"},                //
                                         Case{{2, 5, 1, L"", 0, 3}, L"XPSVR"},                //
                                         Case{{2, 5, 1, L"", 0x202, 2}, L"XPSVR"}));

/// The neighbours of the rows.
TEST(WindowsCodeOf, IsTheUnknownOneForWhatTheTableLacks) {
    const WindowsVersion neighbours[] = {
        {3, 4, 0, L"", 0, 0},   {0xFFFFFFFF, 5, 1, L"", 0, 1}, {1, 4, 1, L" C", 0, 0},
        {1, 4, 9, L" A", 0, 0}, {1, 4, 11, L" A", 0, 0},       {1, 4, 89, L"", 0, 0},
        {1, 4, 91, L"", 0, 0},  {2, 2, 51, L"", 0, 0},         {2, 3, 2, L"", 0, 0},
        {2, 3, 4, L"", 0, 0},   {2, 3, 6, L"", 0, 0},          {2, 3, 50, L"", 0, 0},
        {2, 3, 52, L"", 0, 0},  {2, 5, 0, L"", 2, 2},          {2, 5, 0, L"", 0, 0},
        {2, 5, 0, L"", 0, 4},   {2, 5, 2, L"", 0, 1},          {2, 5, 2, L"", 2, 3},
        {2, 6, 0, L"", 0, 1},   {2, 6, 1, L"", 0, 1},          {2, 10, 0, L"", 256, 1}};
    for (const WindowsVersion& version : neighbours) {
        EXPECT_EQ(WindowsCodeOf(version), L"02UNK")
            << version.platform << ' ' << version.major << '.' << version.minor << ' ' << version.suiteMask
            << ' ' << version.productType;
    }
}

// A home edition of Windows XP has the bit of the personal suite alone.
TEST(WindowsCodeOf, XPHomeCountsAsProfessional) {
    EXPECT_EQ(WindowsCodeOf({2, 5, 1, L"Service Pack 2", 0x200, 1}), L"XPPRO");
}

TEST(WindowsCodeOf, AVersionWithoutCodeKeepsTheOneThatIsThere) {
    EXPECT_EQ(WindowsCodeOf({2, 6, 0, L"", 0, 1}, L"XPPRO"), L"XPPRO");
    EXPECT_EQ(WindowsCodeOf({2, 5, 0, L"", 0, 1}, L"XPPRO"), L"00PRO");
}

}  // namespace
}  // namespace kestrelguard
