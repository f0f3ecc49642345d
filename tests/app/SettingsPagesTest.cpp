#include "app/SettingsPages.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "blocking/FakeBrowserNodes.h"
#include "controls/Fakes.h"
#include "privacy/FakeCache.h"
#include "privacy/FakeHistory.h"
#include "runtime/RunTimeError.h"
#include "settings/SettingsWorld.h"

namespace kestrelguard {
namespace {

struct FakeFrames final : PageFrames {
    int SelectedTab() const override { return selected; }
    int TabCount() const override { return 3; }
    void ShowFrame(int frame, bool show) override {
        if (frame >= 0 && frame < 3) {
            shown[static_cast<std::size_t>(frame)] = show;
        }
    }
    int selected = 1;
    std::array<bool, 3> shown = {true, false, false};
};

struct NoWalk final : CacheWalk {
    void LoadCacheEntries(bool&, bool&, bool&, bool&) override {}
};

struct NoCacheWindow final : CacheWindowOpener {
    void ShowCacheWindow() override {}
};

struct FakeTrayWindow final : TrayWindow {
    WindowState State() const override { return state; }
    void SetState(WindowState newState) override { state = newState; }
    void Hide() override {}
    void Show() override {}
    void SetForeground() override {}
    WindowState state = WindowState::Normal;
};

/// The pages over the rooms that own the settings, with a file in memory.
struct SettingsPagesTest : testing::Test, SettingsWorld {
    SettingsPagesTest() {
        // As after a start: a file is there, and every edit of the keywords is heard.
        SettingsFile(L"Write");
        folder.writes = 0;
        folder.reads = 0;
    }
    void EditKeywords(const std::wstring& text) {
        titleBan.text = text;
        titleBlocking.TitleBan_Change();
    }
    bool Minimised() const { return window.state == WindowState::Minimised; }

    FakeFrames frames;
    FakeTrayWindow window;
    FakeSwitch apply;
    FakeCaption today;
    FakeCaption total;
    PopupState popups{.prevent = pto[0],
                      .prompt = pto[1],
                      .allow = pto[2],
                      .popupsStoppedTotal = values.popupsStoppedTotal};
    FakeBrowserNodes nodes;
    FakeMessageBoxes boxes;
    FakeMessageLoop messages;
    TitleBlocking titleBlocking{{.blockTitles = kgC[1],
                                 .titleBan = titleBan,
                                 .titleKeywordSet = titleKeywordSet,
                                 .applyCmd = apply,
                                 .nodes = nodes,
                                 .boxes = boxes,
                                 .locale = locale}};
    FakeSwitch timer;
    NoWalk walk;
    FakeCacheWindows cacheWindows;
    NoCacheWindow cacheWindow;
    FakeHistory history;
    bool ShowCookiesOnly = false;
    Washer washer{{.washCache = kgC[2],
                   .washHistory = kgC[3],
                   .washCookies = kgC[4],
                   .washAuto = kgC[5],
                   .wash_F = washF,
                   .wash_CMB = washCmb,
                   .timer = timer,
                   .ApplyCmd = apply,
                   .cache = walk,
                   .cacheWindows = cacheWindows,
                   .cacheWindowOpener = cacheWindow,
                   .history = history,
                   .messages = messages,
                   .WashMinutes = values.WashMinutes,
                   .ShowCookiesOnly = ShowCookiesOnly}};
    SettingsPages pages{{.frames = frames,
                         .window = window,
                         .ApplyCmd = apply,
                         .popsToday = today,
                         .popStopsT = total,
                         .locale = locale,
                         .popups = popups,
                         .titleBlocking = titleBlocking,
                         .settings = store,
                         .washer = washer}};
};

TEST_F(SettingsPagesTest, ASelectedTabShowsItsFrameAlone) {
    frames.selected = 3;
    pages.KGTabs_Click();
    EXPECT_EQ(frames.shown, (std::array<bool, 3>{false, false, true}));
    frames.selected = 2;
    pages.KGTabs_Click();
    EXPECT_EQ(frames.shown, (std::array<bool, 3>{false, true, false}));
}

TEST_F(SettingsPagesTest, TheFirstTabShowsTheCountersGrouped) {
    popups.popupsStoppedToday = 17;
    values.popupsStoppedTotal = 1234;
    frames.selected = 1;
    pages.KGTabs_Click();
    EXPECT_EQ(today.text, L"17");
    EXPECT_EQ(total.text, L"1,234");
}

TEST_F(SettingsPagesTest, TheOtherTabsLeaveTheCountersAlone) {
    today.text = L"old";
    frames.selected = 2;
    pages.KGTabs_Click();
    EXPECT_EQ(today.text, L"old");
}

TEST_F(SettingsPagesTest, AClickOnABoxEnablesApplyAndStoresNothing) {
    apply.enabled = false;
    pages.KG_C_Click();
    EXPECT_TRUE(apply.enabled);
    apply.enabled = false;
    pages.cOpenM_Click();
    EXPECT_TRUE(apply.enabled);
    EXPECT_EQ(folder.writes, 0);
}

TEST_F(SettingsPagesTest, ApplyTakesTheKeywordsStoresAndSetsTheWasherGoing) {
    EditKeywords(L"Poker -Dice");
    kgC[5].value = 1;
    pages.ApplyCmd_Click();
    EXPECT_TRUE(titleKeywordSet.Contains(L"poker"));
    EXPECT_TRUE(titleKeywordSet.Contains(L"dice"));
    EXPECT_NE(File().find(L"SS2/:/:n/:/:Poker -Dice"), std::wstring::npos);
    EXPECT_FALSE(apply.enabled);
    EXPECT_TRUE(timer.enabled);
    kgC[5].value = 0;
    pages.ApplyCmd_Click();
    EXPECT_FALSE(timer.enabled);
}

TEST_F(SettingsPagesTest, ApplyAfterABoxAloneLeavesTheKeywordsAlone) {
    titleBan.text = L"unheard -edit";
    pages.KG_C_Click();
    pages.ApplyCmd_Click();
    EXPECT_EQ(titleKeywordSet.Count(), 0);
    EXPECT_EQ(folder.writes, 1);
}

TEST_F(SettingsPagesTest, ApplyThatFailsStaysEnabled) {
    EditKeywords(L"twice -twice");
    EXPECT_THROW(pages.ApplyCmd_Click(), RunTimeError);
    EXPECT_EQ(folder.writes, 0) << "keywords come first";
    EXPECT_TRUE(apply.enabled);
    EditKeywords(L"once -twice");
    Faults faults;
    folder.faults = &faults;
    faults.FailAt(1, RunTimeError::kPathFileAccess);  // after the look whether the file is there
    EXPECT_THROW(pages.ApplyCmd_Click(), RunTimeError);
    EXPECT_EQ(folder.writes, 1);
    EXPECT_TRUE(apply.enabled);
    EXPECT_FALSE(timer.enabled);
}

TEST_F(SettingsPagesTest, OKWithNothingChangedDoesNotWrite) {
    apply.enabled = false;
    pages.OKcmd_Click();
    EXPECT_EQ(folder.writes, 0);
    EXPECT_TRUE(Minimised());
}

TEST_F(SettingsPagesTest, OKAppliesChangesAndMinimises) {
    EditKeywords(L"a -b");
    pages.OKcmd_Click();
    EXPECT_EQ(folder.writes, 1);
    EXPECT_TRUE(titleKeywordSet.Contains(L"a"));
    EXPECT_TRUE(Minimised());
}

TEST_F(SettingsPagesTest, OKThatCannotStoreKeepsTheWindow) {
    EditKeywords(L"twice -twice");
    EXPECT_THROW(pages.OKcmd_Click(), RunTimeError);
    EXPECT_FALSE(Minimised());
}

TEST_F(SettingsPagesTest, CancelReadsOnlyWhatWasChanged) {
    apply.enabled = false;
    pages.Cancelcmd_Click();
    EXPECT_EQ(folder.reads, 0);
    EXPECT_TRUE(Minimised());
    apply.enabled = true;
    pages.Cancelcmd_Click();
    EXPECT_EQ(folder.reads, 1);
    EXPECT_FALSE(apply.enabled);
}

TEST_F(SettingsPagesTest, CancelAfterAnEditOfTheKeywordsPutsTheStoredOnesBack) {
    EditKeywords(L"edited -away");
    pages.Cancelcmd_Click();
    EXPECT_EQ(titleBan.text, L"xxx -porn -sex");
    EXPECT_TRUE(titleKeywordSet.Contains(L"xxx"));
    EXPECT_FALSE(titleKeywordSet.Contains(L"edited"));
}

TEST_F(SettingsPagesTest, CancelTurnsApplyOffEvenWhenTheFileCannotBeRead) {
    apply.enabled = true;
    Faults faults;
    folder.faults = &faults;
    faults.FailAt(1, RunTimeError::kPermissionDenied);
    EXPECT_THROW(pages.Cancelcmd_Click(), RunTimeError);
    EXPECT_FALSE(apply.enabled);
    EXPECT_FALSE(Minimised());
}

}  // namespace
}  // namespace kestrelguard
