#include <gtest/gtest.h>

#include <vector>

#include "runtime/RunTimeError.h"
#include "settings/SettingsWorld.h"

namespace kestrelguard {
namespace {

using Rows = std::deque<std::wstring>;
using Texts = std::vector<std::wstring>;

Texts All(const TextSet& set) {
    return {set.begin(), set.end()};
}

std::int32_t ErrorOfReading(SettingsWorld& world, const wchar_t* text) {
    try {
        world.Read(text);
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    return 0;
}

// --- lines

TEST(SettingsRead, EmptyFileChangesNothing) {
    SettingsWorld world;
    world.Read(L"");
    EXPECT_EQ(SettingsState(world), SettingsState(SettingsWorld()));
}

TEST(SettingsRead, HeaderEmptyAndUnknownLinesAreSkipped) {
    SettingsWorld world;
    world.Read(
        L"'# Kestrelguard v2.0. 113\r\n\r\n'# anything\r\nPT1\r\nPT1/:/2\r\nXYZ/:/:1\r\nPT10/:/:2\r\n"
        L"/:/:\r\n/:/:PT1/:/:2\r\n PT1/:/:2\r\nMI/:/:y\r\n'PT1/:/:2\r\n");
    EXPECT_EQ(SettingsState(world), SettingsState(SettingsWorld()));
}

TEST(SettingsRead, KeysComeInAnyCaseAndOrder) {
    SettingsWorld world;
    world.Read(L"pSt/:/:5\nuSe/:/:2\rpp1/:/:y\r\nPp2/:/:Y\r\nmin/:/:y\r\npt1/:/:1");
    EXPECT_EQ(world.values.popupsStoppedTotal, 5);
    EXPECT_EQ(world.values.useCount, 3);
    EXPECT_EQ(world.kgC[2].value, 1);
    EXPECT_EQ(world.kgC[3].value, 1);
    EXPECT_EQ(world.openMinimized.value, 1);
    EXPECT_TRUE(world.pto[1].selected);
    EXPECT_FALSE(world.pto[0].selected);
}

TEST(SettingsRead, FieldsBeyondTheUsedOnesAreIgnored) {
    SettingsWorld world;
    world.Read(
        L"PT1/:/:2/:/:0\r\nMIN/:/:y/:/:n\r\nPP1/:/:y/:/:\r\nPP4/:/:y/:/:3/:/:h/:/:d\r\n"
        L"SS1/:/:y/:/:a -/:/:b -\r\nSS2/:/:y/:/:c -d/:/:e -\r\nUSE/:/:1/:/:9\r\nPST/:/:2/:/:9\r\n");
    EXPECT_TRUE(world.pto[2].selected);
    EXPECT_EQ(world.openMinimized.value, 1);
    EXPECT_EQ(world.kgC[2].value, 1);
    EXPECT_EQ(world.values.WashMinutes, 180);
    EXPECT_EQ(world.sites.rows, (Rows{L"a", L""}));
    EXPECT_EQ(world.titleBan.text, L"c -d");
    EXPECT_EQ(world.values.useCount, 2);
    EXPECT_EQ(world.values.popupsStoppedTotal, 2);
}

TEST(SettingsRead, LastOfTwoEqualKeysWins) {
    SettingsWorld world;
    world.Read(
        L"PT1/:/:1\r\nPT1/:/:2\r\nUSE/:/:7\r\nUSE/:/:1\r\nPST/:/:3\r\nPST/:/:4\r\n"
        L"SS1/:/:n/:/:a -\r\nSS1/:/:n/:/:a -b -\r\nPP4/:/:n/:/:5/:/:d\r\nPP4/:/:n/:/:6/:/:m\r\n");
    EXPECT_TRUE(world.pto[2].selected);
    EXPECT_EQ(world.values.useCount, 2);
    EXPECT_EQ(world.values.popupsStoppedTotal, 4);
    EXPECT_EQ(world.sites.rows, (Rows{L"a", L"", L"a", L"b", L""}));
    EXPECT_EQ(All(world.siteSet), (Texts{L"a", L"", L"b"}));
    EXPECT_EQ(world.values.WashMinutes, 6);
    EXPECT_EQ(world.washCmb.text, L"Minute/s");
}

TEST(SettingsRead, NulBelongsToItsField) {
    SettingsWorld world;
    world.Read(std::wstring(L"PT1/:/:2\0\r\nPP1/:/:y\r\nSS1/:/:n/:/:a\0b -\r\n\0\r\n", 41));
    EXPECT_TRUE(world.pto[0].selected);
    EXPECT_EQ(world.kgC[2].value, 1);
    EXPECT_EQ(world.sites.rows, (Rows{std::wstring(L"a\0b", 3), L""}));
}

TEST(SettingsRead, LineEndMayLackAtTheEnd) {
    SettingsWorld world;
    world.Read(L"PT1/:/:1\r\nPST/:/:12");
    EXPECT_EQ(world.values.popupsStoppedTotal, 12);
}

// --- scalar values

TEST(SettingsRead, ModeIsExactlyOneDigit) {
    for (const wchar_t* value : {L"3", L"", L"01", L" 1", L"1 ", L"-1", L"y"}) {
        SettingsWorld world;
        world.Read(std::wstring(L"PT1/:/:") + value + L"\r\n");
        EXPECT_TRUE(world.pto[0].selected);
    }
    for (std::size_t mode = 0; mode < 3; ++mode) {
        SettingsWorld world;
        world.pto[(mode + 1) % 3].Select(true);
        world.Read(L"PT1/:/:" + std::to_wstring(mode));
        for (std::size_t button = 0; button < 3; ++button) {
            EXPECT_EQ(world.pto[button].selected, button == mode);
        }
    }
}

TEST(SettingsRead, OnlyMinimizedMindsTheCase) {
    SettingsWorld world;
    world.Read(L"MIN/:/:Y\r\nPP1/:/:Y\r\nPP3/:/:Y\r\nSS1/:/:Y\r\nSS2/:/:Y\r\nPP4/:/:Y\r\n");
    EXPECT_EQ(world.openMinimized.value, 0);
    EXPECT_EQ(world.kgC[2].value, 1);
    EXPECT_EQ(world.kgC[3].value, 0);
    EXPECT_EQ(world.kgC[4].value, 1);
    EXPECT_EQ(world.kgC[0].value, 1);
    EXPECT_EQ(world.kgC[1].value, 1);
    EXPECT_EQ(world.kgC[5].value, 1);
}

TEST(SettingsRead, NoNeverUnchecks) {
    SettingsWorld world;
    world.openMinimized.value = 1;
    for (FakeCheckBox& box : world.kgC) {
        box.value = 1;
    }
    world.Read(L"MIN/:/:n\r\nSS1/:/:n\r\nSS2/:/:n\r\nPP1/:/:n\r\nPP2/:/:n\r\nPP3/:/:n\r\nPP4/:/:n\r\n");
    EXPECT_EQ(world.openMinimized.value, 1);
    for (const FakeCheckBox& box : world.kgC) {
        EXPECT_EQ(box.value, 1);
    }
}

TEST(SettingsRead, YesIsOneLetter) {
    SettingsWorld world;
    world.Read(
        L"MIN/:/:yes\r\nPP1/:/:yes\r\nPP2/:/: y\r\nPP3/:/:\r\nPP4/:/:yy\r\nSS1/:/:1\r\nSS2/:/:true\r\n");
    EXPECT_EQ(world.openMinimized.value, 0);
    for (const FakeCheckBox& box : world.kgC) {
        EXPECT_EQ(box.value, 0);
    }
}

TEST(SettingsRead, UseCountRisesByOneARead) {
    const auto useCount = [](const std::wstring& value) {
        return NumberRead(&LastingValues::useCount, L"USE/:/:" + value);
    };
    EXPECT_EQ(useCount(L"41"), 42);
    EXPECT_EQ(useCount(L"x"), 1);
    EXPECT_EQ(useCount(L""), 1);
    EXPECT_EQ(useCount(L" -3 "), -2);
    EXPECT_EQ(useCount(L"1.5"), 2);   // 2.5 goes to the even 2
    EXPECT_EQ(useCount(L"2.5"), 4);   // 3.5 goes to the even 4
    EXPECT_EQ(useCount(L"-0.6"), 0);  // 0.4
    EXPECT_EQ(useCount(L"2147483646"), 2147483647);
}

TEST(SettingsRead, StoppedTotalIsRoundedOrZero) {
    const auto total = [](const std::wstring& value) {
        return NumberRead(&LastingValues::popupsStoppedTotal, L"PST/:/:" + value);
    };
    EXPECT_EQ(total(L""), 0);
    EXPECT_EQ(total(L"x"), 0);
    EXPECT_EQ(total(L"1234567"), 1234567);
    EXPECT_EQ(total(L"+8"), 8);
    EXPECT_EQ(total(L"2.5"), 2);
    EXPECT_EQ(total(L"3.5"), 4);
    EXPECT_EQ(total(L"-2147483648"), -2147483647 - 1);
    EXPECT_EQ(total(L"2147483647.4"), 2147483647);
}

// --- sites

TEST(SettingsRead, SitesEndWithAnEmptyRow) {
    SettingsWorld world;
    world.Read(L"SS1/:/:y/:/:casino -banners -\r\n");
    EXPECT_EQ(world.kgC[0].value, 1);
    EXPECT_EQ(world.sites.rows, (Rows{L"casino", L"banners", L""}));
    EXPECT_EQ(All(world.siteSet), (Texts{L"casino", L"banners", L""}));
    EXPECT_FALSE(world.sites.appendedWhileDrawn);
    EXPECT_EQ(world.sites.fills, 0);
}

TEST(SettingsRead, LoneSiteIsDropped) {
    SettingsWorld world;
    world.Read(L"SS1/:/:y/:/:casino\r\n");
    EXPECT_EQ(world.kgC[0].value, 1);
    EXPECT_TRUE(world.sites.rows.empty());
    EXPECT_TRUE(world.siteSet.Empty());
}

TEST(SettingsRead, RowsKeepTheirCaseTheSetDoesNot) {
    SettingsWorld world;
    world.Read(L"SS1/:/:n/:/:Casino - casino -CASINO\r\n");
    EXPECT_EQ(world.kgC[0].value, 0);
    EXPECT_EQ(world.sites.rows, (Rows{L"Casino", L" casino", L"CASINO"}));
    EXPECT_EQ(All(world.siteSet), (Texts{L"casino", L" casino"}));
}

TEST(SettingsRead, EntryEndIsBlankAndMinusAlone) {
    SettingsWorld world;
    world.Read(L"SS1/:/:n/:/:a- b -c--d  -e -\r\n");
    EXPECT_EQ(world.sites.rows, (Rows{L"a- b", L"c--d ", L"e", L""}));
}

TEST(SettingsRead, EntryEndAloneGivesTwoEmptyRows) {
    SettingsWorld world;
    world.Read(L"SS1/:/:n/:/: -\r\n");
    EXPECT_EQ(world.sites.rows, (Rows{L"", L""}));
    EXPECT_EQ(All(world.siteSet), Texts{L""});
}

TEST(SettingsRead, SitesWithoutTheThirdFieldOnlyCheckTheBox) {
    for (const wchar_t* text : {L"SS1/:/:y", L"SS1/:/:y/:/:"}) {
        SettingsWorld world;
        EXPECT_EQ(ErrorOfReading(world, text), 0);
        EXPECT_EQ(world.kgC[0].value, 1);
        EXPECT_TRUE(world.sites.rows.empty());
    }
}

TEST(SettingsRead, SecondSiteLineWithoutFieldRepeatsNothing) {
    SettingsWorld world;
    world.Read(L"SS1/:/:n/:/:a -\r\nSS1/:/:y\r\n");
    EXPECT_EQ(world.kgC[0].value, 1);
    EXPECT_EQ(world.sites.rows, (Rows{L"a", L""}));
}

// --- title keywords

TEST(SettingsRead, KeywordsAreShownAsTypedAndKeptInLowerCase) {
    SettingsWorld world;
    world.Read(L"SS2/:/:y/:/:Poker -Dice\r\n");
    EXPECT_EQ(world.kgC[1].value, 1);
    EXPECT_EQ(world.titleBan.text, L"Poker -Dice");
    EXPECT_EQ(All(world.titleKeywordSet), (Texts{L"poker", L"dice"}));
}

TEST(SettingsRead, LoneKeywordIsLost) {
    for (const wchar_t* text :
         {L"SS2/:/:y/:/:poker\r\n", L"SS2/:/:y/:/:\r\n", L"SS2/:/:y\r\n", L"SS2/:/:y/:/:poker-\r\n"}) {
        SettingsWorld world;
        EXPECT_EQ(ErrorOfReading(world, text), 0);
        EXPECT_EQ(world.kgC[1].value, 1);
        EXPECT_EQ(world.titleBan.text, L"xxx -porn -sex");
        EXPECT_EQ(world.titleBan.changes, 0);
        EXPECT_TRUE(world.titleKeywordSet.Empty());
    }
}

TEST(SettingsRead, LastEndOfTheKeywordTextIsCut) {
    SettingsWorld world;
    // What is shown is built as: poker -, then an empty piece -; the last end goes.
    world.Read(L"SS2/:/:n/:/:poker -\r\n");
    EXPECT_EQ(world.titleBan.text, L"poker -");
    EXPECT_EQ(All(world.titleKeywordSet), (Texts{L"poker", L""}));
}

TEST(SettingsRead, RepeatedKeywordIsShownTwiceAndHeldOnce) {
    SettingsWorld world;
    world.Read(L"SS2/:/:n/:/:a -A - a -b\r\n");
    EXPECT_EQ(world.titleBan.text, L"a -A - a -b");
    EXPECT_EQ(All(world.titleKeywordSet), (Texts{L"a", L" a", L"b"}));
}

// --- wash interval

struct Interval {
    const wchar_t* line;
    const wchar_t* count;
    const wchar_t* unit;
    std::int32_t minutes;
};

TEST(SettingsRead, WashIntervalLines) {
    // Before each read: 7, "Hour/s" and 420 minutes.
    constexpr Interval kIntervals[] = {
        {L"PP4/:/:y/:/:2/:/:H", L"2", L"Hour/s", 120},
        {L"PP4/:/:y/:/:abc/:/:d", L"60", L"Day/s", 86400},
        {L"PP4/:/:y/:/:90/:/:M", L"90", L"Minute/s", 90},
        {L"PP4/:/:y/:/: 1.5 /:/:h", L"1.5", L"Hour/s", 120},  // 1.5 goes to the even 2 first
        {L"PP4/:/:y/:/:0.5/:/:d", L"0.5", L"Day/s", 0},       // 0.5 goes to the even 0 first
        {L"PP4/:/:y/:/:-3/:/:m", L"-3", L"Minute/s", -3},
        {L"PP4/:/:y/:/:/:/:h", L"60", L"Hour/s", 3600},
        {L"PP4/:/:y/:/:5/:/:x", L"5", L"Hour/s", 5},  // the unit stays as it was
        {L"PP4/:/:y/:/:5/:/:", L"5", L"Hour/s", 5},
        {L"PP4/:/:y/:/:5/:/:mm", L"5", L"Hour/s", 5},
        {L"PP4/:/:y/:/:5", L"5", L"Hour/s", 5},  // no fourth field
        {L"PP4/:/:y/:/:abc", L"60", L"Hour/s", 60},
        {L"PP4/:/:y", L"7", L"Hour/s", 420},  // no third one either
        // Out of range: shown, but the minutes stay, and are what the unit multiplies.
        {L"PP4/:/:y/:/:99999999999/:/:m", L"99999999999", L"Minute/s", 420},
        {L"PP4/:/:y/:/:99999999999/:/:d", L"99999999999", L"Day/s", 604800},
        // Out of range by the unit alone.
        {L"PP4/:/:y/:/:2000000/:/:d", L"2000000", L"Day/s", 2000000},
        {L"PP4/:/:y/:/:1491308/:/:d", L"1491308", L"Day/s", 2147483520},
        {L"PP4/:/:y/:/:1491309/:/:d", L"1491309", L"Day/s", 1491309},
    };
    for (const Interval& interval : kIntervals) {
        SettingsWorld world;
        world.washF.text = L"7";
        world.washCmb.text = L"Hour/s";
        world.values.WashMinutes = 420;
        EXPECT_EQ(ErrorOfReading(world, interval.line), 0);
        EXPECT_EQ(world.kgC[5].value, 1);
        EXPECT_EQ(world.washF.text, interval.count);
        EXPECT_EQ(world.washCmb.text, interval.unit);
        EXPECT_EQ(world.values.WashMinutes, interval.minutes);
    }
}

// --- errors

TEST(SettingsRead, OverflowIsAnErrorBeforeErrorsAreIgnored) {
    for (const wchar_t* line : {L"USE/:/:2147483647", L"PST/:/:2147483648", L"PST/:/:1e300"}) {
        SettingsWorld world;
        world.values.useCount = 5;
        world.values.popupsStoppedTotal = 6;
        EXPECT_EQ(ErrorOfReading(world, line), RunTimeError::kOverflow);
        EXPECT_EQ(world.values.useCount, 5);
        EXPECT_EQ(world.values.popupsStoppedTotal, 6);
    }
}

TEST(SettingsRead, OverflowEndsTheReadBeforeErrorsAreIgnored) {
    SettingsWorld world;
    EXPECT_EQ(ErrorOfReading(world, L"PST/:/:2147483648\r\nPT1/:/:2\r\n"), RunTimeError::kOverflow);
    EXPECT_TRUE(world.pto[0].selected);
}

TEST(SettingsRead, OverflowIsSkippedBehindEachLineThatIgnoresErrors) {
    for (const wchar_t* line : {L"SS1/:/:n", L"SS2/:/:n", L"PP4/:/:n", L"ss1/:/:"}) {
        SettingsWorld world;
        world.values.useCount = 5;
        world.values.popupsStoppedTotal = 6;
        const std::wstring text =
            std::wstring(line) + L"\r\nUSE/:/:2147483647\r\nPST/:/:9999999999\r\nPT1/:/:2";
        EXPECT_EQ(ErrorOfReading(world, text.c_str()), 0);
        EXPECT_EQ(world.values.useCount, 5);
        EXPECT_EQ(world.values.popupsStoppedTotal, 6);
        EXPECT_TRUE(world.pto[2].selected);
    }
}

TEST(SettingsRead, LineOfTooFewFieldsDoesNotSwitchErrorsOff) {
    SettingsWorld world;
    EXPECT_EQ(ErrorOfReading(world, L"SS1\r\nPST/:/:9999999999"), RunTimeError::kOverflow);
}

TEST(SettingsRead, NextReadMindsErrorsAgain) {
    SettingsWorld world;
    EXPECT_EQ(ErrorOfReading(world, L"SS1/:/:n\r\nPST/:/:9999999999"), 0);
    EXPECT_EQ(ErrorOfReading(world, L"PST/:/:9999999999"), RunTimeError::kOverflow);
}

// --- size

TEST(SettingsRead, HundredThousandSites) {
    std::wstring text = L"SS1/:/:y/:/:";
    for (int site = 0; site < 100'000; ++site) {
        text += L"some-blocked-site-" + std::to_wstring(site) + L" -";
    }
    SettingsWorld world;
    world.Read(text + L"\r\n");
    ASSERT_EQ(world.sites.rows.size(), 100'001U);
    EXPECT_EQ(world.siteSet.Count(), 100'001U);
    EXPECT_EQ(world.sites.rows[99'999], L"some-blocked-site-99999");
    world.SettingsFile(L"Write");
    EXPECT_NE(world.File().find(text + L" -\r\n"), std::wstring::npos);
}

TEST(SettingsRead, LinesOfManyMegabytes) {
    const std::wstring longText(4'000'000, L'y');
    std::wstring separators;
    for (int field = 0; field < 1'000'000; ++field) {
        separators += L"/:/:";
    }
    SettingsWorld world;
    world.Read(longText + L"\r\n" + longText + L"/:/:y\r\nPP1/:/:" + longText + L"\r\n" + separators +
               L"\r\nPT1" + separators + L"\r\nPST/:/:" + std::wstring(1'000'000, L'0') + L"9\r\nPT1/:/:1");
    EXPECT_EQ(world.values.popupsStoppedTotal, 9);
    EXPECT_EQ(world.kgC[2].value, 0);
    EXPECT_TRUE(world.pto[1].selected);
}

}  // namespace
}  // namespace kestrelguard
