#pragma once

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "monitoring/Monitored.h"

namespace kestrelguard::fakes {

using Keys = std::vector<std::wstring>;
using Numbers = std::vector<int>;

/// A watch over a desktop in memory.
class WindowWatchTest : public testing::Test {
 protected:
    void TearDown() override {
        desktop.inCall = nullptr;
        monitored.inNews = nullptr;
    }
    /// Adds windows with these handles, and switches on.
    void Watch(std::initializer_list<std::int32_t> handles) {
        for (const std::int32_t handle : handles) {
            desktop.Add(handle);
        }
        monitored.On();
    }
    WindowState& Window(int number) { return *desktop.Windows()[static_cast<std::size_t>(number - 1)]; }
    int Reads() const {
        return std::accumulate(desktop.Windows().begin(), desktop.Windows().end(), 0,
                               [](int sum, const auto& window) { return sum + window->handleReads; });
    }
    Numbers Sinks() const {
        Numbers sinks;
        for (const auto& window : desktop.Windows()) {
            sinks.push_back(window->sinks);
        }
        return sinks;
    }
    void Withdraw(int number) {
        Window(number).listed = false;
        desktop.Revoked();
    }

    Desktop desktop;
    Monitored monitored{desktop};
};

}  // namespace kestrelguard::fakes
