// The schedule of cleaning in the unchanged program, with posted ticks.

#include "PrivacyFixture.h"

namespace kestrelguard::testing {
namespace {

// --- the schedule

TEST_F(PrivacyTest, AWashIsDueAfterTheInterval) {
    VisitPages();
    Start(Schedule(true, true, true, true, "3/:/:m"));
    Tick(2);
    EXPECT_EQ("pcs", There());
    EXPECT_EQ(2u, Visited());
    Tick();
    EXPECT_EQ("s", There());
    EXPECT_EQ(0u, Visited());
    EXPECT_FALSE(BoxShown());
    Refill();
    Tick(2);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("s", There());
}

TEST_F(PrivacyTest, PostedTicksWash) {
    VisitPages();
    Start(Schedule(true, true, true, true, "1/:/:h"));
    PostTicks(60);
    EXPECT_TRUE(WaitUntil([this] { return There() == "s" && Visited() == 0; })) << There();
}

TEST_F(PrivacyTest, SixtyMinutesAreSixtyTicks) {
    Start(Schedule(true, false, false, true, "60/:/:m"));
    Tick(59);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, AFractionIsRoundedBeforeItsUnitWhenItIsReadAndAfterItWhenItIsTyped) {
    Start(Schedule(true, false, false, true, "1.5/:/:h"));
    Tick(119);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
    Refill();
    TypeText(IntervalField(), L"1.5");
    Tick(89);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, TwoDaysAre2880Ticks) {
    Start(Schedule(true, false, false, true, "2/:/:d"));
    Tick(2879);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, AWashClearsOnlyWhatIsTicked) {
    VisitPages();
    Start(Schedule(false, true, false, true, "1/:/:m"));
    Tick();
    EXPECT_EQ("pcs", There());
    EXPECT_EQ(0u, Visited());

    ClickAndWait(m_guard->WashBoxes().at(1));
    ClickAndWait(m_guard->WashBoxes().at(2));
    VisitPages();
    Tick();
    EXPECT_EQ("ps", There());
    EXPECT_EQ(2u, Visited());

    ClickAndWait(m_guard->WashBoxes().at(2));
    ClickAndWait(m_guard->WashBoxes().at(0));
    Refill();
    Tick();
    EXPECT_EQ("cs", There());
    EXPECT_EQ(2u, Visited());
}

TEST_F(PrivacyTest, UntickingTheScheduleStopsItUntilApply) {
    Start(Schedule(true, false, false, true, "1/:/:m"));
    ClickAndWait(ScheduleBox());
    ASSERT_FALSE(Checked(ScheduleBox()));
    Tick();
    EXPECT_EQ("pcs", There());
    // Ticked again but not applied: the timer is still off.
    ClickAndWait(ScheduleBox());
    Tick(3);
    EXPECT_EQ("pcs", There());
    ClickAndWait(m_guard->Apply());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, TheTimerRunsExactlyWhenTheAppliedScheduleIsTicked) {
    Start(Schedule(true, false, false, false, "1/:/:m"));
    Tick(3);
    EXPECT_EQ("pcs", There());
    ClickAndWait(ScheduleBox());
    ClickAndWait(m_guard->Apply());
    Tick();
    EXPECT_EQ("cs", There());
    Refill();
    ClickAndWait(ScheduleBox());
    ClickAndWait(m_guard->Apply());
    Tick(3);
    EXPECT_EQ("pcs", There());
}

TEST_F(PrivacyTest, AFailingHistoryDoesNotStopTheSchedule) {
    VisitPages();
    const StandInSetting fail(L"KESTRELGUARD_HISTORY_FAIL", L"EnumUrls");
    Start(Schedule(true, true, false, true, "1/:/:m"));
    Tick();
    EXPECT_EQ("cs", There());
    EXPECT_FALSE(BoxShown());
    Refill();
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, TypingTheMinutesThemselvesDoesNotRecomputeTheInterval) {
    Start(Schedule(true, false, false, true, "2/:/:h"));
    ASSERT_FALSE(Enabled(m_guard->Apply()));
    TypeText(IntervalField(), L"120");
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    Tick(119);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There()) << "still every two hours";
    Refill();
    TypeText(IntervalField(), L"soon");
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    TypeText(IntervalField(), L"1");
    EXPECT_TRUE(Enabled(m_guard->Apply()));
    Tick(59);
    EXPECT_EQ("pcs", There());
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, ANewUnitTakesTheTextAsItIs) {
    Start(Schedule(true, false, false, true, "30/:/:m"));
    TypeText(IntervalField(), L"soon");
    SelectDropDown(m_guard->UnitDropDown(), 2);
    EXPECT_TRUE(WaitUntil([this] { return Enabled(m_guard->Apply()); }));
    // No digits: an interval of 0, which washes on every tick.
    Tick();
    EXPECT_EQ("cs", There());
}

TEST_F(PrivacyTest, AnIntervalOutOfRangeIsARunTimeError) {
    Start(Schedule(true, false, false, true, "1/:/:d"));
    const HWND field = IntervalField();
    SendNotifyMessageW(field, EM_SETSEL, 0, -1);
    for (const wchar_t digit : std::wstring(L"9999999")) {
        PostMessageW(field, WM_CHAR, static_cast<WPARAM>(digit), 1);
    }
    const MessageBoxSeen box = WaitMessageBox(m_guard->Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Run-time error '6':\r\n\r\nOverflow", box.text);
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(m_guard->Program().Running());
}

}  // namespace
}  // namespace kestrelguard::testing
