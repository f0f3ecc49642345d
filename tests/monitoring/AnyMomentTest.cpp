// Everything that can come in while a call goes out, at every place where one does.

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "monitoring/Monitored.h"

namespace kestrelguard::fakes {
namespace {

struct Step {
    const char* name;
    void (*act)(Monitored&);
    /// Whether monitoring listens without a gap in spite of it.
    bool gapless = true;
};

const Step kSteps[] = {
    {"On", [](Monitored& monitored) { monitored.On(); }},
    {"Open", [](Monitored& monitored) { monitored.Open(); }},
    {"CloseFirst", [](Monitored& monitored) { monitored.CloseFirst(); }},
    {"CloseLast", [](Monitored& monitored) { monitored.CloseLast(); }},
    {"AnnounceAgain", [](Monitored& monitored) { monitored.desktop.Registered(); }},
    {"Refresh", [](Monitored& monitored) { monitored.Refresh(); }},
    {"Off", [](Monitored& monitored) { monitored.watching.SwitchOff(); }, false},
    {"OffAndOn", [](Monitored& monitored) { monitored.OffAndOn(); }, false},
};

constexpr Delivery kDeliveries[] = {{false, false}, {false, true}, {true, false}, {true, true}};

std::vector<std::wstring> KeysFor(const Desktop& desktop) {
    std::vector<std::wstring> keys;
    for (const auto& window : desktop.Listed()) {
        keys.push_back(L"_" + std::to_wstring(window->handle) + L"_");
    }
    return keys;
}

/// What must be so once things have come to rest; windows have handles of their own. `gapless` when
/// monitoring was on all the time and everything was announced.
void ExpectAtRest(Monitored& monitored, bool gapless) {
    Desktop& desktop = monitored.desktop;
    const bool on = monitored.watching.On();
    EXPECT_EQ(on ? 1 : 0, desktop.connections);
    std::vector<int> listed;
    std::set<std::int32_t> handles;
    int wentFromTheTree = 0;
    for (const auto& window : desktop.Windows()) {
        EXPECT_EQ(on && window->listed ? 1 : 0, window->sinks) << "window " << window->number;
        if (gapless && monitored.withdrawals == 0) {
            EXPECT_EQ(window->came ? 1 : 0, window->created) << "window " << window->number;
        }
        if (window->listed) {
            listed.push_back(window->number);
            handles.insert(window->handle);
        } else if (window->created > 0 || !window->came) {
            ++wentFromTheTree;
        }
    }
    if (!on) {
        return;
    }
    EXPECT_EQ(KeysFor(desktop), monitored.Keys());
    EXPECT_EQ(listed, monitored.ListedNumbers());
    if (gapless) {
        // No node is missing, no ghost stays, and each withdrawal was told once. Where windows close while
        // others that have closed are still found, one may be told once more, which removes no node.
        EXPECT_EQ(handles, monitored.tree);
        EXPECT_LE(wentFromTheTree, monitored.destroyed);
        EXPECT_LE(monitored.destroyed, monitored.withdrawals + (monitored.withdrawals > 1 ? 1 : 0));
    }
}

void ExpectNothingLeft(Monitored& monitored) {
    monitored.watching.SwitchOff();
    monitored.DropList();
    EXPECT_EQ(0, monitored.desktop.connections);
    for (const auto& window : monitored.desktop.Windows()) {
        EXPECT_EQ(0, window->sinks);
        EXPECT_EQ(0, window->references);
    }
}

/// Runs `first`, and `second` at one place in it, and `third` at a later one; answers the number of places.
int Play(int windows, const Step& first, const Delivery& delivery, const Step* second, int secondAt,
         const Step* third, int thirdAt) {
    Desktop desktop;
    desktop.delivery = delivery;
    Monitored monitored(desktop);
    for (int i = 0; i < windows; ++i) {
        desktop.Add(i + 1);
    }
    bool gapless =
        first.gapless && (second == nullptr || second->gapless) && (third == nullptr || third->gapless);
    if (std::string_view(first.name) != "On") {
        monitored.On();
        monitored.listening = true;
    } else {
        // What opens and closes before anybody listens is not told.
        gapless = false;
    }
    desktop.places = 0;
    desktop.inCall = [&](int place) {
        if (second != nullptr && place == secondAt) {
            second->act(monitored);
        }
        if (third != nullptr && place == thirdAt) {
            third->act(monitored);
        }
    };
    first.act(monitored);
    const int places = desktop.places;
    desktop.inCall = nullptr;
    while (desktop.LateWaits()) {
        desktop.DeliverLate();
    }
    ExpectAtRest(monitored, gapless && !monitored.failedRefresh);
    ExpectNothingLeft(monitored);
    return places;
}

class AnyMomentTest : public testing::TestWithParam<std::tuple<int, Step>> {};

TEST_P(AnyMomentTest, OneThingComesIn) {
    const auto& [windows, first] = GetParam();
    for (const Delivery& delivery : kDeliveries) {
        const int places = Play(windows, first, delivery, nullptr, 0, nullptr, 0);
        for (const Step& second : kSteps) {
            for (int at = 0; at < places; ++at) {
                SCOPED_TRACE(std::string(second.name) + " at " + std::to_string(at) + " of " +
                             std::to_string(places) + (delivery.newestFirst ? ", newest first" : "") +
                             (delivery.secondLater ? ", second later" : ""));
                Play(windows, first, delivery, &second, at, nullptr, 0);
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}

TEST_P(AnyMomentTest, TwoThingsComeIn) {
    const auto& [windows, first] = GetParam();
    if (windows != 1 || !first.gapless) {
        return;
    }
    for (const Delivery& delivery : {kDeliveries[3]}) {
        const int places = Play(windows, first, delivery, nullptr, 0, nullptr, 0);
        for (const Step* second = &kSteps[1]; second != &kSteps[6]; ++second) {
            for (const Step* third = &kSteps[1]; third != &kSteps[6]; ++third) {
                for (int at = 0; at < places; ++at) {
                    for (int later = at + 1; later < places; ++later) {
                        SCOPED_TRACE(std::string(second->name) + " at " + std::to_string(at) + ", " +
                                     third->name + " at " + std::to_string(later) +
                                     ", newest first, second later");
                        Play(windows, first, delivery, second, at, third, later);
                        if (HasFailure()) {
                            return;
                        }
                    }
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Starts, AnyMomentTest,
                         testing::Combine(testing::Range(0, 4), testing::ValuesIn(kSteps)),
                         [](const auto& with) {
                             return std::to_string(std::get<0>(with.param)) + std::get<1>(with.param).name;
                         });

/// Anything at any place: windows that share frames, fail, die or are no browsers, and all that a user does.
class Chaos {
 public:
    explicit Chaos(unsigned seed) : m_random(seed), m_monitored(m_desktop) {
        m_desktop.delivery = kDeliveries[m_random() % 4];
        m_desktop.inCall = [this](int) {
            if (m_left > 0 && m_depth < 5 && m_random() % 12 == 0) {
                Act();
            }
        };
    }
    ~Chaos() { m_desktop.inCall = nullptr; }

    void Run() {
        m_monitored.On();
        while (m_left > 0) {
            Act();
        }
        m_desktop.inCall = nullptr;
        m_desktop.shellFailures = 0;
        m_desktop.strangers.clear();
        m_desktop.empties.clear();
        for (const auto& window : m_desktop.Windows()) {
            window->failures = 0;
            window->listed = window->listed && !window->dead;
        }
        m_desktop.DeliverLate();
        m_monitored.On();
        // One more announcement finds the world in order.
        m_desktop.Revoked();
        m_desktop.DeliverLate();
    }
    void ExpectOrder() {
        std::vector<int> listed;
        std::map<std::int32_t, int> shared;
        std::vector<std::wstring> keys;
        for (const auto& window : m_desktop.Windows()) {
            EXPECT_EQ(window->listed ? 1 : 0, window->sinks) << "window " << window->number;
            if (window->listed) {
                listed.push_back(window->number);
                const int before = shared[window->handle]++;
                keys.push_back(L"_" + std::to_wstring(window->handle) + L"_" +
                               (before > 0 ? std::to_wstring(before) : L""));
            }
        }
        EXPECT_EQ(1, m_desktop.connections);
        EXPECT_EQ(listed, m_monitored.ListedNumbers());
        EXPECT_EQ(keys, m_monitored.Keys());
        ExpectNothingLeft(m_monitored);
    }

 private:
    void Act() {
        --m_left;
        ++m_depth;
        const auto listed = m_desktop.Listed();
        const auto any = [&] { return listed[m_random() % listed.size()]; };
        switch (m_random() % (listed.empty() ? 9 : 15)) {
            case 0:
            case 1:
                m_monitored.Open();
                break;
            case 2:
                m_monitored.Open(false);
                break;
            case 3:
                m_desktop.Registered();
                break;
            case 4:
                m_desktop.Revoked();
                break;
            case 5:
                m_monitored.Refresh();
                break;
            case 6:
                m_monitored.OffAndOn();
                break;
            case 7:
                m_desktop.shellFailures += 1;
                break;
            case 8:
                m_desktop.strangers = {static_cast<int>(m_random() % 4)};
                m_desktop.empties = {static_cast<int>(m_random() % 6)};
                break;
            case 9:
            case 10:
                m_monitored.CloseWindow(*any());
                break;
            case 11:
                m_monitored.CloseWindow(*any(), false);
                break;
            case 12:
                any()->dead = true;
                break;
            case 13:
                any()->failures += 1 + static_cast<int>(m_random() % 3);
                break;
            default:
                m_desktop.Add(any()->handle);
                break;
        }
        --m_depth;
    }

    std::mt19937 m_random;
    int m_left = 40;
    int m_depth = 0;
    Desktop m_desktop;
    Monitored m_monitored;
};

TEST(AnyMomentWalkTest, WhateverHappensOrderComesBack) {
    const char* const wanted = std::getenv("KG_SEED");
    const unsigned first = wanted != nullptr ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : 1;
    const char* const count = std::getenv("KG_WALKS");
    const unsigned walks = count != nullptr ? static_cast<unsigned>(std::strtoul(count, nullptr, 10)) : 2000;
    for (unsigned seed = first; seed < first + walks; ++seed) {
        SCOPED_TRACE("KG_SEED=" + std::to_string(seed));
        Chaos chaos(seed);
        chaos.Run();
        chaos.ExpectOrder();
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace kestrelguard::fakes
