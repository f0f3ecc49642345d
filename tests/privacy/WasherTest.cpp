#include "privacy/WasherFixture.h"

namespace kestrelguard {
namespace {

TEST_F(WasherTest, ButtonsStartTheirWalks) {
    washer.ClearIEC_Click();
    washer.ClearIECookies_Click();
    EXPECT_EQ(log, (Calls{"walk 0100", "walk 0010"}));
    EXPECT_TRUE(historyPlatform.calls.empty());
}

TEST_F(WasherTest, TheHistoryButtonClearsTheHistory) {
    historyPlatform.entries.resize(3);
    washer.ClearIEH_Click();
    EXPECT_TRUE(historyPlatform.entries.empty());
    EXPECT_TRUE(historyPlatform.BooksAreEven());
    EXPECT_TRUE(log.empty());
}

TEST_F(WasherTest, ShowButtonsOpenTheirView) {
    washer.ShowIECookies_Click();
    EXPECT_TRUE(ShowCookiesOnly);
    EXPECT_EQ(opener.shown, 1);
    washer.ShowIEC_Click();
    EXPECT_FALSE(ShowCookiesOnly);
    EXPECT_EQ(opener.shown, 2);
}

TEST_F(WasherTest, SixtyMinutesWashEverySixtyTicks) {
    Tick(true, false, false);
    washer.UpdateWashInterval();
    EXPECT_EQ(WashMinutes, 60);
    for (int wash = 0; wash < 3; ++wash) {
        log.clear();
        for (int tick = 1; tick < 60; ++tick) {
            washer.Washer_Timer();
            EXPECT_EQ(washer.WashTicks(), tick);
        }
        EXPECT_TRUE(log.empty());
        washer.Washer_Timer();
        EXPECT_EQ(log, (Calls{"walk 0100", "messages"}));
        EXPECT_EQ(washer.WashTicks(), 0);
        EXPECT_TRUE(timer.enabled);
    }
}

TEST_F(WasherTest, TwoDaysWashEvery2880Ticks) {
    Tick(false, false, true);
    wash_F.text = L"2";
    wash_CMB.text = L"Day/s";
    washer.wash_CMB_Click();
    for (int tick = 1; tick < 2880; ++tick) {
        washer.Washer_Timer();
    }
    EXPECT_TRUE(log.empty());
    washer.Washer_Timer();
    EXPECT_EQ(log, (Calls{"walk 0010", "messages"}));
}

TEST_F(WasherTest, AnIntervalOfZeroOrLessWashesOnEveryTick) {
    Tick(true, false, false);
    for (const std::int32_t minutes : {0, -5, 1}) {
        log.clear();
        WashMinutes = minutes;
        washer.Washer_Timer();
        washer.Washer_Timer();
        EXPECT_EQ(log.size(), 4U);
    }
}

TEST_F(WasherTest, UntickingTheScheduleStopsTheTimerAtTheNextDueWash) {
    Tick(true, true, true);
    windows.Open();
    washAuto.value = 0;
    EXPECT_TRUE(Due().empty());
    EXPECT_TRUE(historyPlatform.calls.empty());
    EXPECT_FALSE(timer.enabled);
    EXPECT_EQ(washer.WashTicks(), 0);
    EXPECT_EQ(messages.runs, 0);
}

TEST_F(WasherTest, AGreyedScheduleStillWashes) {
    washAuto.value = 2;
    Tick(true, false, false);
    EXPECT_EQ(Due(), (Calls{"walk 0100", "messages"}));
    EXPECT_TRUE(timer.enabled);
}

TEST_F(WasherTest, AWashClearsWhatIsTicked) {
    Tick(true, false, true);
    EXPECT_EQ(Due(), (Calls{"walk 0110", "messages"}));
    EXPECT_FALSE(HistoryCleared());
    Tick(true, true, false);
    EXPECT_EQ(Due(), (Calls{"walk 0100", "messages"}));
    EXPECT_TRUE(HistoryCleared());
    Tick(false, false, true);
    EXPECT_EQ(Due(), (Calls{"walk 0010", "messages"}));
    EXPECT_FALSE(HistoryCleared());
    Tick(false, false, false);
    EXPECT_EQ(Due(), (Calls{"messages"}));
    EXPECT_FALSE(HistoryCleared());
}

TEST_F(WasherTest, HistoryAloneStartsNoWalk) {
    Tick(false, true, false);
    EXPECT_EQ(Due(), (Calls{"messages"}));
    EXPECT_TRUE(HistoryCleared());
}

TEST_F(WasherTest, AGreyedBoxIsNotTicked) {
    washCache.value = 2;
    washHistory.value = 2;
    washCookies.value = 2;
    EXPECT_EQ(Due(), (Calls{"messages"}));
    EXPECT_FALSE(HistoryCleared());
}

TEST_F(WasherTest, AnOpenCacheWindowIsRefreshedAtTheEnd) {
    Tick(true, true, true);
    windows.Open();
    EXPECT_EQ(Due(), (Calls{"walk 0110", "messages", "walk 1000"}));
    EXPECT_EQ(windows.asked.back(), "null|Kestrelguard v2.0 - IE Cache Details and Advanced Configuration");
}

TEST_F(WasherTest, TheHistoryIsClearedAfterTheEventsAndBeforeTheWindowIsRefreshed) {
    Tick(true, true, true);
    windows.Open();
    std::vector<bool> cleared;
    const auto look = [&] { cleared.push_back(HistoryCleared()); };
    cache.during = look;
    messages.pending = look;
    Due();
    EXPECT_EQ(cleared, (std::vector<bool>{false, false, true})) << "first walk, events, refresh";
}

TEST_F(WasherTest, TheTimerIsOffWhileWashing) {
    Tick(true, false, false);
    bool duringWash = true;
    messages.pending = [&] { duringWash = timer.enabled; };
    Due();
    EXPECT_FALSE(duringWash);
    EXPECT_TRUE(timer.enabled);
}

TEST_F(WasherTest, AnEndAmongThePendingEventsEndsTheWash) {
    Tick(true, true, true);
    windows.Open();
    messages.pending = [&] { washer.Stop(); };
    EXPECT_EQ(Due(), (Calls{"walk 0110"}));
    EXPECT_FALSE(HistoryCleared());
    EXPECT_FALSE(timer.enabled);
}

TEST_F(WasherTest, TheTimerIsEnabledExactlyWhenTheScheduleIsTicked) {
    for (const int value : {1, 0, 2, 1}) {
        washAuto.value = value;
        washer.EnableTimer();
        EXPECT_EQ(timer.enabled, value == 1);
    }
}

TEST_F(WasherTest, TheIntervalIsCountTimesUnitRounded) {
    struct Case {
        const wchar_t* count;
        const wchar_t* unit;
        std::int32_t minutes;
    };
    for (const Case& each :
         {Case{L"60", L"Minute/s", 60}, Case{L"1.5", L"Hour/s", 90}, Case{L"2", L"Day/s", 2880},
          Case{L"0.5", L"Minute/s", 0}, Case{L"1.5", L"Minute/s", 2}, Case{L"2.5", L"Minute/s", 2},
          Case{L"-3", L"Hour/s", -180}, Case{L"7 weeks", L"Day/s", 10080}, Case{L"many", L"Hour/s", 0},
          Case{L"", L"Day/s", 0}}) {
        ApplyCmd.enabled = false;
        wash_F.text = each.count;
        wash_CMB.text = each.unit;
        washer.UpdateWashInterval();
        EXPECT_EQ(WashMinutes, each.minutes) << each.minutes;
        EXPECT_TRUE(ApplyCmd.enabled);
    }
}

TEST_F(WasherTest, AnUnknownUnitLeavesTheIntervalButEnablesApply) {
    for (const wchar_t* const unit : {L"", L"Mi", L"minute/s", L"Week/s"}) {
        ApplyCmd.enabled = false;
        wash_F.text = L"5";
        wash_CMB.text = unit;
        washer.wash_CMB_Click();
        EXPECT_EQ(WashMinutes, 60);
        EXPECT_TRUE(ApplyCmd.enabled);
    }
}

TEST_F(WasherTest, AnIntervalOutOfRangeOverflows) {
    wash_F.text = L"1491309";
    wash_CMB.text = L"Day/s";
    try {
        washer.UpdateWashInterval();
        FAIL();
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), RunTimeError::kOverflow);
    }
    EXPECT_EQ(WashMinutes, 60);
    wash_F.text = L"1491308";
    washer.UpdateWashInterval();
    EXPECT_EQ(WashMinutes, 2147483520);
}

TEST_F(WasherTest, TypingANewNumberTakesTheInterval) {
    wash_F.text = L"30";
    washer.wash_F_Change();
    EXPECT_EQ(WashMinutes, 30);
    EXPECT_TRUE(ApplyCmd.enabled);
}

TEST_F(WasherTest, TypingTheMinutesThemselvesChangesNothingWhateverTheUnit) {
    WashMinutes = 120;
    wash_CMB.text = L"Hour/s";
    wash_F.text = L"120";
    washer.wash_F_Change();
    EXPECT_EQ(WashMinutes, 120);
    EXPECT_FALSE(ApplyCmd.enabled);
    wash_F.text = L"2";
    washer.wash_F_Change();
    EXPECT_EQ(WashMinutes, 120);
    EXPECT_TRUE(ApplyCmd.enabled);
}

TEST_F(WasherTest, TextThatIsNoNumberIsIgnoredWhenTypedButCountsAsZeroWithANewUnit) {
    wash_F.text = L"soon";
    washer.wash_F_Change();
    EXPECT_EQ(WashMinutes, 60);
    EXPECT_FALSE(ApplyCmd.enabled);
    washer.wash_CMB_Click();
    EXPECT_EQ(WashMinutes, 0);
}

/// No failure is reported, none stops the schedule, and the steps behind the failing one still run.
TEST_F(WasherTest, AFailingStepOfAWashIsLeftAndTheNextOneRuns) {
    Faults faults;
    cache.faults = &faults;
    historyPlatform.faults = &faults;
    windows.Open();
    Tick(true, true, true);
    Due();
    const int calls = faults.Calls();
    EXPECT_GT(calls, 5);
    for (int position = 0; position < calls; ++position) {
        timer.enabled = true;
        historyPlatform.entries.resize(2);
        faults.FailAt(position, -2147467263);
        EXPECT_EQ(Due(), (Calls{"walk 0110", "messages", "walk 1000"})) << position;
        EXPECT_TRUE(timer.enabled) << position;
        EXPECT_TRUE(historyPlatform.BooksAreEven()) << position;
    }
}

TEST_F(WasherTest, ButtonsReportNothing) {
    Faults faults;
    cache.faults = &faults;
    historyPlatform.faults = &faults;
    faults.FailAt(0, -2147467263);
    EXPECT_NO_THROW(washer.ClearIEC_Click());
    faults.FailAt(0, -2147467263);
    EXPECT_NO_THROW(washer.ClearIECookies_Click());
    faults.FailAt(0, -2147467263);
    EXPECT_NO_THROW(washer.ClearIEH_Click());
    EXPECT_TRUE(faults.Hit());
}

/// A wash over a whole cache: each of its platform calls fails once; the saved cookie is still there.
class WashOfACacheTest : public WasherTest {
 protected:
    struct Outcome {
        bool hit;
        bool savedCookieThere;
        bool booksEven;
    };
    Outcome Wash(int failAt) {
        FakeCache store;
        store.Add("http://news.example/");
        store.Add("Cookie:jane@bank.example/");
        store.Add("Cookie:jane@news.example/");
        store.groups = {1};
        store.entries[2].locked = true;
        store.failAt = failAt;
        FakeLocale locale;
        TextSet saved;
        saved.Add(L"Cookie:jane@bank.example/");
        windows.Open();
        KG_IECache walk(KG_IECache::Platform{store, store, store, store, windows, locale, saved});
        Washer whole(Washer::Parts{washCache, washHistory, washCookies, washAuto, wash_F, wash_CMB, timer,
                                   ApplyCmd, walk, windows, opener, historyPlatform, messages, WashMinutes,
                                   ShowCookiesOnly});
        WashMinutes = 0;
        Tick(true, true, true);
        whole.Washer_Timer();
        return Outcome{store.fallibleCalls > failAt, store.Has("Cookie:jane@bank.example/"),
                       store.BooksAreEven() && historyPlatform.BooksAreEven()};
    }
};

TEST_F(WashOfACacheTest, NoFailureCostsASavedCookie) {
    int position = -1;
    for (bool hit = true; hit; ++position) {
        timer.enabled = true;
        const Outcome outcome = Wash(position);
        EXPECT_TRUE(outcome.savedCookieThere) << position;
        EXPECT_TRUE(outcome.booksEven) << position;
        EXPECT_TRUE(timer.enabled) << position;
        hit = outcome.hit;
    }
    EXPECT_GT(position, 20);
}

}  // namespace
}  // namespace kestrelguard
