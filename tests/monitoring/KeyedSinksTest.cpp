#include "monitoring/KeyedSinks.h"

#include <gtest/gtest.h>

#include "monitoring/FakeWatchedDesktop.h"
#include "runtime/ErrorsIgnored.h"

namespace kestrelguard::fakes {
namespace {

using Keys = std::vector<std::wstring>;

class KeyedSinksTest : public testing::Test {
 protected:
    /// A sink on a new window with that handle, under the key that the handle gets.
    DesktopWindowPtr Add(std::int32_t handle) {
        desktop.Add(handle);
        DesktopWindowPtr window;
        const auto walk = desktop.ConnectShell(nullptr)->Walk();
        while (walk->Next()) {
            window = walk->Window();
        }
        sinks.Add({sinks.KeyOf(handle), window, desktop.Listen(window), handle});
        return window;
    }
    int SinksOn(int number) const { return desktop.Windows()[static_cast<std::size_t>(number) - 1]->sinks; }

    Desktop desktop;
    KeyedSinks sinks;
};

TEST_F(KeyedSinksTest, AKeyIsTakenOnce) {
    const auto window = Add(-5);
    Add(-5);
    Add(-5);
    EXPECT_EQ((Keys{L"_-5_", L"_-5_1", L"_-5_2"}), sinks.Keys());
    EXPECT_EQ(RunTimeError::kDuplicateKey, ErrorOf([&] { sinks.Add({L"_-5_1", window, nullptr, -5}); }));
}

TEST_F(KeyedSinksTest, ReleasedWithNothingResting) {
    const auto window = Add(1);
    desktop.inCall = [&](int) {
        // Whoever comes in meanwhile finds none.
        EXPECT_TRUE(sinks.Keys().empty());
    };
    sinks.Release();
    desktop.inCall = nullptr;
    EXPECT_EQ(0, SinksOn(1));
    EXPECT_FALSE(sinks.Rests(window));
    EXPECT_FALSE(sinks.WindowOf(window->Identity()));
    EXPECT_TRUE(sinks.TakeResting().empty());
}

TEST_F(KeyedSinksTest, WhatDoesNotAnswerRestsAndIsWokenUnderTheFirstFreeKey) {
    Add(1);
    const auto second = Add(1);
    Add(1);
    desktop.Windows()[1]->hung = true;
    sinks.Release();
    EXPECT_EQ(0, SinksOn(1));
    EXPECT_EQ(1, SinksOn(2));
    EXPECT_TRUE(sinks.Keys().empty());
    ASSERT_TRUE(sinks.Rests(second));
    EXPECT_EQ(second, sinks.WindowOf(second->Identity()));
    sinks.Wake(second);
    EXPECT_FALSE(sinks.Rests(second));
    EXPECT_EQ(Keys{L"_1_"}, sinks.Keys());
    EXPECT_EQ(second, sinks.WindowOf(second->Identity()));
    ASSERT_EQ(1U, sinks.All().size());
    EXPECT_EQ(1, sinks.All()[0].handle);
    EXPECT_EQ(1, SinksOn(2));
    desktop.Windows()[1]->hung = false;
}

TEST_F(KeyedSinksTest, ThoseThatRestAreTakenAway) {
    const auto window = Add(7);
    desktop.Windows()[0]->hung = true;
    sinks.Release();
    const auto resting = sinks.TakeResting();
    ASSERT_EQ(1U, resting.size());
    EXPECT_EQ(window, resting[0].window);
    EXPECT_TRUE(resting[0].listening);
    EXPECT_FALSE(sinks.Rests(window));
    desktop.Windows()[0]->hung = false;
}

}  // namespace
}  // namespace kestrelguard::fakes
