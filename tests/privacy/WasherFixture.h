#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "privacy/FakeCache.h"
#include "privacy/FakeHistory.h"
#include "privacy/Washer.h"
#include "runtime/LastingValues.h"

namespace kestrelguard {

/// Writes down what a walk was asked for.
class FakeCacheWalk : public CacheWalk, public Fallible {
 public:
    explicit FakeCacheWalk(std::vector<std::string>& log) : m_log(log) {}
    void LoadCacheEntries(bool& ShowList, bool& ClearFiles, bool& ClearCookies, bool& CookiesOnly) override {
        std::string call = "walk ";
        for (const bool flag : {ShowList, ClearFiles, ClearCookies, CookiesOnly}) {
            call += flag ? '1' : '0';
        }
        m_log.push_back(call);
        if (during) {
            during();
        }
        // The walk sets this when it finds the window; callers must not mind.
        ShowList = true;
        Call();
    }
    std::function<void()> during;

 private:
    std::vector<std::string>& m_log;
};

class FakeOpener : public CacheWindowOpener, public Fallible {
 public:
    void ShowCacheWindow() override {
        Call();
        ++shown;
    }
    int shown = 0;
};

class WasherTest : public ::testing::Test {
 protected:
    WasherTest() {
        messages.pending = [this] { log.push_back("messages"); };
    }
    void Tick(bool files, bool history, bool cookies) {
        washCache.value = files ? 1 : 0;
        washHistory.value = history ? 1 : 0;
        washCookies.value = cookies ? 1 : 0;
    }
    /// One due tick; answers what was done.
    std::vector<std::string> Due() {
        log.clear();
        historyPlatform.calls.clear();
        WashMinutes = 0;
        washer.Washer_Timer();
        return log;
    }
    bool HistoryCleared() const {
        for (const std::string& call : historyPlatform.calls) {
            if (call == "clear") {
                return true;
            }
        }
        return false;
    }

    std::vector<std::string> log;
    FakeCheckBox washCache;
    FakeCheckBox washHistory;
    FakeCheckBox washCookies;
    FakeCheckBox washAuto{1};
    FakeTextBox wash_F{L"60"};
    FakeDropDown wash_CMB{{L"Minute/s", L"Hour/s", L"Day/s"}, L"Minute/s"};
    FakeSwitch timer{true};
    FakeSwitch ApplyCmd;
    FakeCacheWalk cache{log};
    FakeCacheWindows windows;
    FakeOpener opener;
    FakeHistory historyPlatform;
    FakeMessageLoop messages;
    std::int32_t WashMinutes = LastingValues().WashMinutes;
    bool ShowCookiesOnly = false;
    Washer washer{Washer::Parts{washCache, washHistory, washCookies, washAuto, wash_F, wash_CMB, timer,
                                ApplyCmd, cache, windows, opener, historyPlatform, messages, WashMinutes,
                                ShowCookiesOnly}};
};

using Calls = std::vector<std::string>;

}  // namespace kestrelguard
