#include <gtest/gtest.h>

#include <new>

#include "settings/SettingsWorld.h"

namespace kestrelguard {
namespace {

/// Number 0 stands for an allocation that fails.
constexpr std::int32_t kErrors[] = {RunTimeError::kPermissionDenied, RunTimeError::kDeviceIOError, 0};

constexpr wchar_t kFile[] =
    L"'# comment\r\nPT1/:/:2\r\nMIN/:/:y\r\nPP1/:/:y\r\nUSE/:/:3\r\nPST/:/:4\r\n"
    L"SS1/:/:y/:/:a -b -\r\nSS2/:/:y/:/:c -d\r\nPP2/:/:y\r\nPP4/:/:y/:/:2/:/:h\r\nUSE/:/:5\r\nPST/:/:6\r\n";

/// Whether SettingsFile failed.
bool Fails(SettingsWorld& world, std::wstring mode) {
    try {
        world.store.SettingsFile(mode);
    } catch (const RunTimeError&) {
        return true;
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

TEST(SettingsFaults, EachStepOfAWriteFailsOnce) {
    Faults faults;
    for (const std::int32_t error : kErrors) {
        for (int position = 0;; ++position) {
            SettingsWorld world;
            world.sites.rows = {L"a", L"b"};
            world.folder.files[SettingsWorld::kFile] = L"old";
            world.Attach(&faults);
            faults.FailAt(position, error);
            const bool failed = Fails(world, L"Write");
            ASSERT_EQ(failed, faults.Hit());
            if (!faults.Hit()) {
                // exists, 3 buttons, 7 boxes, count, 2 rows, 3 texts, date, write
                EXPECT_EQ(position, 1 + 3 + 7 + 3 + 3 + 1 + 1);
                break;
            }
            ASSERT_EQ(world.File(), L"old") << position;
        }
    }
}

TEST(SettingsFaults, EachStepOfAReadFailsOnce) {
    Faults faults;
    SettingsWorld good;
    good.Attach(&faults);
    faults.FailAt(-1, 0);
    good.Read(kFile);
    const int calls = faults.Calls();
    const SettingsState goodState(good);

    for (const std::int32_t error : kErrors) {
        int thrown = 0;
        for (int position = 0; position < calls; ++position) {
            SettingsWorld world;
            world.folder.files[SettingsWorld::kFile] = kFile;
            world.Attach(&faults);
            faults.FailAt(position, error);
            const bool failed = Fails(world, L"Read");
            ASSERT_TRUE(faults.Hit());
            ASSERT_EQ(world.sites.fills, 0);
            const SettingsState state(world);
            if (failed) {
                // Nothing behind the failing step has happened.
                ++thrown;
                ASSERT_TRUE(state.sites.empty()) << position;
                ASSERT_EQ(state.washMinutes, 60);
                ASSERT_EQ(faults.Calls(), position + 1);
            } else {
                ASSERT_FALSE(state == goodState) << position;
            }
        }
        // exists, open, 7 lines (the seventh is the first that ignores errors), 3 values
        EXPECT_EQ(thrown, 1 + 1 + 7 + 3);
    }
}

TEST(SettingsFaults, StepThatFailsWhileErrorsAreIgnoredIsSkippedAlone) {
    Faults faults;
    const auto readWith = [&faults](Fallible& broken, SettingsWorld& world) {
        broken.faults = &faults;
        faults.FailAt(0, RunTimeError::kInvalidCall);
        world.Read(L"SS1/:/:y/:/:a -b -\r\nSS2/:/:y/:/:c -d\r\nPP4/:/:y/:/:2/:/:h\r\nPST/:/:9\r\n");
        EXPECT_TRUE(faults.Hit());
    };
    const auto expectRest = [](const SettingsWorld& world, const SettingsState& expected) {
        EXPECT_EQ(SettingsState(world), expected);
    };
    SettingsWorld good;
    good.Read(L"SS1/:/:y/:/:a -b -\r\nSS2/:/:y/:/:c -d\r\nPP4/:/:y/:/:2/:/:h\r\nPST/:/:9\r\n");

    for (const std::size_t box : {0U, 1U, 5U}) {
        SettingsWorld world;
        readWith(world.kgC[box], world);
        SettingsState expected(good);
        expected.boxes[4 + box] = 0;
        expectRest(world, expected);
    }
    {
        SettingsWorld world;
        readWith(world.sites, world);
        SettingsState expected(good);
        expected.sites = {L"b", L""};  // the set has all three
        expectRest(world, expected);
    }
    {
        SettingsWorld world;
        readWith(world.titleBan, world);
        SettingsState expected(good);
        expected.titleBan = L"xxx -porn -sex";
        expectRest(world, expected);
    }
    {
        SettingsWorld world;
        readWith(world.washF, world);
        SettingsState expected(good);
        expected.washF = L"60";
        expectRest(world, expected);
    }
    {
        SettingsWorld world;
        world.washCmb.text = L"Day/s";
        readWith(world.washCmb, world);
        SettingsState expected(good);
        expected.washCmb = L"Day/s";
        expectRest(world, expected);
    }
}

TEST(SettingsFaults, FileThatFailsBehindAnIgnoringLineIsOver) {
    Faults faults;
    SettingsWorld world;
    world.folder.faults = &faults;
    faults.FailAt(3, RunTimeError::kDeviceIOError);  // exists, open, first line, second line
    world.Read(L"SS1/:/:n/:/:a -\r\nPST/:/:9\r\n");
    EXPECT_TRUE(faults.Hit());
    EXPECT_EQ(world.sites.rows.size(), 2U);
    EXPECT_EQ(world.values.popupsStoppedTotal, 0);
}

}  // namespace
}  // namespace kestrelguard
