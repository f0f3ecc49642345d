#include <gtest/gtest.h>

#include <iterator>
#include <random>

#include "runtime/Text.h"
#include "settings/ReadByDefinition.h"
#include "settings/SettingsWorld.h"

namespace kestrelguard {
namespace {

using Rows = std::deque<std::wstring>;

std::wstring LineOf(const std::wstring& file, std::wstring_view key) {
    const auto begin = file.find(L"\r\n" + std::wstring(key)) + 2;
    return file.substr(begin, file.find(L"\r\n", begin) - begin);
}

TEST(SettingsRoundTrip, ListGrowsByOneEmptyRowACycle) {
    SettingsWorld first;
    first.sites.rows = {L"casino"};
    first.SettingsFile(L"Write");
    std::wstring file = first.File();
    Rows expected = {L"casino"};
    std::wstring expectedLine = L"SS1/:/:n/:/:casino -";
    for (int cycle = 0; cycle < 5; ++cycle) {
        EXPECT_EQ(LineOf(file, L"SS1"), expectedLine);
        SettingsWorld next;
        next.Read(file);
        expected.emplace_back();
        EXPECT_EQ(next.sites.rows, expected);
        next.SettingsFile(L"Write");
        file = next.File();
        expectedLine += L" -";
    }
}

TEST(SettingsRoundTrip, EmptyListDoesNotGrow) {
    SettingsWorld world;
    world.SettingsFile(L"Write");
    world.SettingsFile(L"Read");
    EXPECT_TRUE(world.sites.rows.empty());
}

TEST(SettingsRoundTrip, CancelReadsTheFileOverTheControls) {
    SettingsWorld world;
    world.Read(
        L"PT1/:/:1\r\nSS1/:/:n/:/:casino -\r\nSS2/:/:n/:/:a -b\r\nPP4/:/:n/:/:2/:/:h\r\nUSE/:/:4\r\n"
        L"PST/:/:10\r\n");
    world.SettingsFile(L"Write");
    // Then the user changes things, windows are stopped, and Cancel reads the file.
    world.pto[2].Select(true);
    world.kgC[0].value = 1;
    world.openMinimized.value = 1;
    world.titleBan.text = L"other";
    world.washF.text = L"9";
    world.washCmb.text = L"Day/s";
    world.values.WashMinutes = 9 * 1440;
    world.values.popupsStoppedTotal = 15;
    world.SettingsFile(L"Read");
    EXPECT_TRUE(world.pto[1].selected);
    EXPECT_EQ(world.kgC[0].value, 1);  // a read only ever checks
    EXPECT_EQ(world.openMinimized.value, 1);
    EXPECT_EQ(world.titleBan.text, L"a -b");
    EXPECT_EQ(world.washF.text, L"2");
    EXPECT_EQ(world.washCmb.text, L"Hour/s");
    EXPECT_EQ(world.values.WashMinutes, 120);
    EXPECT_EQ(world.values.popupsStoppedTotal, 10);
    EXPECT_EQ(world.values.useCount, 6);
    EXPECT_EQ(world.sites.rows, (Rows{L"casino", L"", L"casino", L"", L""}));
    EXPECT_EQ(world.siteSet.Count(), 2U);
    EXPECT_EQ(world.titleKeywordSet.Count(), 2U);
}

TEST(SettingsRoundTrip, LoneKeywordIsLostOnTheWay) {
    SettingsWorld world;
    world.titleBan.text = L"poker";
    world.SettingsFile(L"Write");
    SettingsWorld next;
    next.Read(world.File());
    EXPECT_EQ(next.titleBan.text, L"xxx -porn -sex");
}

TEST(SettingsRoundTrip, RandomFilesAreReadAsDefined) {
    constexpr const wchar_t* kKeys[] = {L"MIN", L"pt1", L"SS1", L"Ss2", L"PP1", L"pp2",
                                        L"PP3", L"PP4", L"USE", L"PST", L"",    L"'x"};
    constexpr const wchar_t* kPieces[] = {L" -", L" -",  L"y",   L"Y", L"n", L"0", L"1",  L"2",
                                          L".5", L"1e9", L"m",   L"H", L"d", L"a", L"A",  L"",
                                          L"/:", L" ",   L"149", L"9", L"-", L"b", L"1e", L"2147483647"};
    constexpr const wchar_t* kLineEnds[] = {L"\r\n", L"\r", L"\n", L"\r\n\r\n"};
    std::mt19937 random(51);
    const auto oneOf = [&random](const auto& texts) { return texts[random() % std::size(texts)]; };
    int failed = 0;
    for (int round = 0; round < 5000; ++round) {
        std::wstring file;
        for (auto lines = random() % 12; lines > 0; --lines) {
            file += oneOf(kKeys);
            for (auto fields = random() % 5; fields > 0; --fields) {
                file += L"/:/:";
                for (auto pieces = random() % 4; pieces > 0; --pieces) {
                    file += oneOf(kPieces);
                }
            }
            file += oneOf(kLineEnds);
        }
        SettingsWorld world;
        SettingsState expected(world);
        const std::int32_t expectedError = ReadByDefinition(file, expected);
        std::int32_t error = 0;
        try {
            world.Read(file);
        } catch (const RunTimeError& thrown) {
            error = thrown.Number();
            ++failed;
        }
        ASSERT_EQ(error, expectedError) << "round " << round;
        ASSERT_EQ(SettingsState(world), expected) << "round " << round;
    }
    EXPECT_GT(failed, 0);  // else the files are too tame
}

TEST(SettingsRoundTrip, RandomStatesSurvive) {
    std::mt19937 random(5);
    const auto text = [&](std::wstring_view letters, std::size_t most) {
        std::wstring result;
        for (auto size = random() % (most + 1); size > 0; --size) {
            result += letters[random() % letters.size()];
        }
        return result;
    };
    for (int round = 0; round < 3000; ++round) {
        SettingsWorld world;
        world.pto[random() % 3].Select(true);
        world.openMinimized.value = static_cast<int>(random() % 3);
        for (FakeCheckBox& box : world.kgC) {
            box.value = static_cast<int>(random() % 3);
        }
        std::wstring list;
        for (auto sites = random() % 5; sites > 0; --sites) {
            world.sites.rows.push_back(text(L"aB -/:.", 6));
            list += world.sites.rows.back() + L" -";
        }
        world.titleBan.text = text(L"aB -/:", 12);
        world.washF.text = text(L"0123456789.", 3);
        world.washCmb.text = world.washCmb.items[random() % 3];
        world.values.useCount = static_cast<std::int32_t>(random() & 0x3FFFFFFF);
        world.values.popupsStoppedTotal = static_cast<std::int32_t>(random());
        world.SettingsFile(L"Write");

        SettingsWorld next;
        next.Read(world.File());
        for (std::size_t button = 0; button < 3; ++button) {
            ASSERT_EQ(next.pto[button].selected, world.pto[button].selected);
        }
        ASSERT_EQ(next.openMinimized.Ticked(), world.openMinimized.Ticked());
        for (std::size_t box = 0; box < 6; ++box) {
            ASSERT_EQ(next.kgC[box].Ticked(), world.kgC[box].Ticked());
        }
        const auto cut = list.find(L"/:/:");
        auto rows = PiecesByDefinition(list.substr(0, cut), L" -");
        if (rows.size() < 2) {
            rows.clear();
        }
        ASSERT_EQ(next.sites.rows, Rows(rows.begin(), rows.end()));
        std::wstring keywords = world.titleBan.text.substr(0, world.titleBan.text.find(L"/:/:"));
        if (keywords.find(L" -") == std::wstring::npos) {
            keywords = L"xxx -porn -sex";
        }
        ASSERT_EQ(next.titleBan.text, keywords);
        ASSERT_EQ(next.washCmb.text, world.washCmb.text);
        ASSERT_EQ(next.values.useCount, world.values.useCount + 1);
        ASSERT_EQ(next.values.popupsStoppedTotal, world.values.popupsStoppedTotal);
    }
}

}  // namespace
}  // namespace kestrelguard
