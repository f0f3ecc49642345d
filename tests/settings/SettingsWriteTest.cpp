#include <gtest/gtest.h>

#include "runtime/Text.h"
#include "settings/SettingsWorld.h"

namespace kestrelguard {
namespace {

constexpr wchar_t kHeader[] =
    L"'# Kestrelguard v2.0. 113\r\n"
    L"'# Configuration Modified: (5/17/2004 3:05:09 PM)\r\n"
    L"'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING\r\n"
    L"'###################\r\n";

TEST(SettingsWrite, ReadWithoutAFileWritesTheDefaults) {
    SettingsWorld world;
    EXPECT_EQ(world.SettingsFile(L"Read"), L"WRITE");
    EXPECT_EQ(world.File(), std::wstring(kHeader) +
                                L"PT1/:/:0\r\n"
                                L"MIN/:/:n\r\n"
                                L"SS1/:/:n/:/:\r\n"
                                L"SS2/:/:n/:/:xxx -porn -sex\r\n"
                                L"PP1/:/:n\r\n"
                                L"PP2/:/:n\r\n"
                                L"PP3/:/:n\r\n"
                                L"PP4/:/:n/:/:60/:/:M\r\n"
                                L"USE/:/:0\r\n"
                                L"PST/:/:0\r\n");
    EXPECT_EQ(world.folder.reads, 0);
    EXPECT_EQ(world.values.useCount, 0);
}

TEST(SettingsWrite, EverySettingHasItsLine) {
    SettingsWorld world;
    world.pto[1].Select(true);
    world.openMinimized.value = 1;
    for (FakeCheckBox& box : world.kgC) {
        box.value = 1;
    }
    world.sites.rows = {L"casino", L"Banners", L""};
    world.titleBan.text = L" Poker - dice";
    world.washF.text = L" 2.5 ";
    world.washCmb.text = L"Day/s";
    world.values = {41, -7, 999};
    EXPECT_EQ(world.SettingsFile(L"Write"), L"WRITE");
    EXPECT_EQ(world.File(), std::wstring(kHeader) +
                                L"PT1/:/:1\r\n"
                                L"MIN/:/:y\r\n"
                                L"SS1/:/:y/:/:casino -Banners - -\r\n"
                                L"SS2/:/:y/:/: Poker - dice\r\n"
                                L"PP1/:/:y\r\n"
                                L"PP2/:/:y\r\n"
                                L"PP3/:/:y\r\n"
                                L"PP4/:/:y/:/: 2.5 /:/:D\r\n"
                                L"USE/:/:41\r\n"
                                L"PST/:/:-7\r\n");
}

TEST(SettingsWrite, EachPrivacyBoxHasItsOwnLine) {
    constexpr const wchar_t* kLines[] = {L"\r\nSS1/:/:y", L"\r\nSS2/:/:y", L"\r\nPP1/:/:y",
                                         L"\r\nPP2/:/:y", L"\r\nPP3/:/:y", L"\r\nPP4/:/:y"};
    for (std::size_t box = 0; box < 6; ++box) {
        SettingsWorld world;
        world.kgC[box].value = 1;
        world.SettingsFile(L"Write");
        for (std::size_t line = 0; line < 6; ++line) {
            EXPECT_EQ(Contains(world.File(), kLines[line]), line == box) << line << " of " << box;
        }
    }
}

TEST(SettingsWrite, AllowIsTwo) {
    SettingsWorld world;
    world.pto[2].Select(true);
    world.SettingsFile(L"Write");
    EXPECT_TRUE(Contains(world.File(), L"\r\nPT1/:/:2\r\n"));
}

TEST(SettingsWrite, EverySelectedButtonHasALine) {
    SettingsWorld world;
    world.pto[0].selected = false;
    world.SettingsFile(L"Write");
    EXPECT_FALSE(Contains(world.File(), L"PT1"));
    world.pto[0].selected = true;
    world.pto[2].selected = true;
    world.SettingsFile(L"Write");
    EXPECT_TRUE(Contains(world.File(), L"###\r\nPT1/:/:0\r\nPT1/:/:2\r\nMIN"));
}

TEST(SettingsWrite, GreyedBoxIsNo) {
    SettingsWorld world;
    world.kgC[2].value = 2;
    world.openMinimized.value = 2;
    world.SettingsFile(L"Write");
    EXPECT_TRUE(Contains(world.File(), L"\r\nPP1/:/:n\r\n"));
    EXPECT_TRUE(Contains(world.File(), L"\r\nMIN/:/:n\r\n"));
}

TEST(SettingsWrite, UnitIsTheFirstLetterOfTheItem) {
    for (const std::wstring unit : {L"Minute/s", L"Hour/s", L"Day/s", L""}) {
        SettingsWorld world;
        world.washCmb.text = unit;
        world.SettingsFile(L"Write");
        EXPECT_TRUE(Contains(world.File(), L"\r\nPP4/:/:n/:/:60/:/:" + unit.substr(0, 1) + L"\r\n"));
    }
}

TEST(SettingsWrite, EveryModeButReadWrites) {
    for (const wchar_t* mode : {L"Write", L"WRITE", L"read", L"READ", L"Read ", L"", L"nonsense"}) {
        SettingsWorld world;
        world.folder.files[SettingsWorld::kFile] = L"old";
        EXPECT_EQ(world.SettingsFile(mode), mode);
        EXPECT_EQ(world.folder.reads, 0);
        EXPECT_EQ(world.folder.writes, 1);
        EXPECT_NE(world.File(), L"old");
    }
}

TEST(SettingsWrite, MissingFileReplacesTheModeWhateverItIs) {
    for (const wchar_t* mode : {L"Write", L"nonsense", L"Read"}) {
        SettingsWorld world;
        EXPECT_EQ(world.SettingsFile(mode), L"WRITE");
        EXPECT_EQ(world.folder.writes, 1);
    }
}

TEST(SettingsWrite, ReadOfAnExistingFileWritesNothing) {
    SettingsWorld world;
    world.folder.files[SettingsWorld::kFile] = L"";
    EXPECT_EQ(world.SettingsFile(L"Read"), L"Read");
    EXPECT_EQ(world.folder.writes, 0);
    EXPECT_EQ(world.File(), L"");
}

}  // namespace
}  // namespace kestrelguard
