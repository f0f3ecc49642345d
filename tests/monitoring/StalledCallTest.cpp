// A call that is under way and does not come back for long: monitoring goes on inside it.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "monitoring/Monitored.h"

namespace kestrelguard::fakes {
namespace {

/// Three windows, one of which stalls at one of its calls while something is done.
class Stalling {
 public:
    Stalling() {
        for (int i = 1; i <= 3; ++i) {
            desktop.Add(i);
        }
        desktop.whileStalled = [this](WindowState& window) {
            stalled = true;
            GoOnBeside(window);
        };
    }

    void ExpectWatched(const WindowState& beside) const {
        for (const auto& window : desktop.Windows()) {
            if (window.get() != &beside) {
                EXPECT_EQ(window->listed ? 1 : 0, window->sinks) << "window " << window->number;
            }
        }
    }
    void GoOnBeside(WindowState& window) {
        monitored.watching.GoOn();
        EXPECT_TRUE(monitored.watching.On());
        ExpectWatched(window);
        const auto told = monitored.created.size();
        monitored.Open();
        ExpectWatched(window);
        EXPECT_EQ(told + 1, monitored.created.size());
        const int gone = monitored.destroyed;
        monitored.CloseLast();
        ExpectWatched(window);
        EXPECT_EQ(gone + 1, monitored.destroyed);
        EXPECT_EQ(0, window.waits);
    }
    void ExpectAtRest() {
        desktop.Remind();
        std::vector<int> listed;
        for (const auto& window : desktop.Windows()) {
            EXPECT_EQ(window->listed ? 1 : 0, window->sinks) << "window " << window->number;
            EXPECT_LE(window->created, 1) << "window " << window->number;
            if (window->listed) {
                listed.push_back(window->number);
            }
        }
        EXPECT_EQ(listed, monitored.ListedNumbers());
        EXPECT_EQ(1, desktop.connections);
    }

    Desktop desktop;
    Monitored monitored{desktop};
    bool stalled = false;
};

/// Stalls each window at each of its calls; answers how many there were.
template <class Before, class Road>
int StallEverywhere(Before before, Road road) {
    int places = 0;
    for (std::size_t which = 0; which < 3; ++which) {
        for (int after = 0;; ++after) {
            SCOPED_TRACE("window " + std::to_string(which + 1) + ", after " + std::to_string(after));
            Stalling stalling;
            before(stalling);
            stalling.desktop.Windows()[which]->stallsAfter = after;
            road(stalling);
            stalling.ExpectAtRest();
            if (!stalling.stalled) {
                break;
            }
            ++places;
            if (testing::Test::HasFailure()) {
                return places;
            }
        }
    }
    return places;
}

TEST(StalledCallTest, AtTheStart) {
    EXPECT_LT(6, StallEverywhere([](Stalling&) {}, [](Stalling& one) { one.monitored.On(); }));
}

TEST(StalledCallTest, WhenAWindowOpens) {
    EXPECT_LT(6, StallEverywhere([](Stalling& one) { one.monitored.On(); },
                                 [](Stalling& one) {
                                     one.monitored.Open();
                                     EXPECT_EQ(1, one.desktop.Windows()[3]->created);
                                 }));
}

TEST(StalledCallTest, WhenAllAreWatchedAnew) {
    EXPECT_LT(6, StallEverywhere([](Stalling& one) { one.monitored.On(); },
                                 [](Stalling& one) { one.monitored.Refresh(); }));
}

TEST(StalledCallTest, WhileAWindowIsToldTheOthersAreToldToo) {
    Stalling one;
    one.monitored.On();
    const auto first = one.desktop.Add(11);
    const auto second = one.desktop.Add(12);
    bool told = false;
    one.monitored.inNews = [&] {
        if (!std::exchange(told, true)) {
            one.desktop.Registered();
            one.monitored.watching.GoOn();
            EXPECT_EQ(1, first->created);
            EXPECT_EQ(1, second->created);
        }
    };
    one.desktop.Registered();
    EXPECT_TRUE(told);
    one.ExpectAtRest();
}

TEST(StalledCallTest, NothingHappensWhileMonitoringIsOff) {
    Stalling one;
    one.monitored.watching.GoOn();
    EXPECT_FALSE(one.monitored.watching.On());
    EXPECT_EQ(0, one.desktop.connects);
}

}  // namespace
}  // namespace kestrelguard::fakes
