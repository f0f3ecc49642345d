#include "app/SettingsPages.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "controls/Fakes.h"
#include "runtime/RunTimeError.h"

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

struct FakeActions final : SettingsActions {
    std::int32_t PopupsStoppedToday() const override { return 17; }
    std::int32_t PopupsStoppedTotal() const override { return 1234; }
    void RebuildTitleKeywords() override {
        log += "keywords ";
        if (keywordsFail) {
            throw RunTimeError(RunTimeError::kDuplicateKey);
        }
    }
    void SettingsFile(const wchar_t* mode) override {
        log += std::wstring(mode) == L"Read" ? "read " : "write ";
        if (fileFails) {
            throw RunTimeError(RunTimeError::kPathFileAccess);
        }
    }
    void SetWasher() override { log += "washer "; }
    void Minimise() override { log += "minimise "; }

    std::string log;
    bool keywordsFail = false;
    bool fileFails = false;
};

struct SettingsPagesTest : testing::Test {
    FakeFrames frames;
    FakeSwitch apply;
    FakeCaption today;
    FakeCaption total;
    FakeLocale locale;
    FakeActions actions;
    SettingsPages pages{{frames, apply, today, total, locale, actions}};
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

TEST_F(SettingsPagesTest, AClickOnABoxEnablesApply) {
    apply.enabled = false;
    pages.KG_C_Click(4);
    EXPECT_TRUE(apply.enabled);
    apply.enabled = false;
    pages.cOpenM_Click();
    EXPECT_TRUE(apply.enabled);
    EXPECT_EQ(actions.log, "");
}

TEST_F(SettingsPagesTest, ApplyRebuildsTheKeywordsThenWrites) {
    apply.enabled = true;
    pages.ApplyCmd_Click();
    EXPECT_EQ(actions.log, "keywords write washer ");
    EXPECT_FALSE(apply.enabled);
}

TEST_F(SettingsPagesTest, ApplyThatFailsStaysEnabled) {
    apply.enabled = true;
    actions.keywordsFail = true;
    EXPECT_THROW(pages.ApplyCmd_Click(), RunTimeError);
    EXPECT_EQ(actions.log, "keywords ");
    EXPECT_TRUE(apply.enabled);
    actions.keywordsFail = false;
    actions.fileFails = true;
    EXPECT_THROW(pages.ApplyCmd_Click(), RunTimeError);
    EXPECT_TRUE(apply.enabled);
}

TEST_F(SettingsPagesTest, OKWithNothingChangedDoesNotWrite) {
    apply.enabled = false;
    pages.OKcmd_Click();
    EXPECT_EQ(actions.log, "minimise ");
}

TEST_F(SettingsPagesTest, OKAppliesChangesAndMinimises) {
    apply.enabled = true;
    pages.OKcmd_Click();
    EXPECT_EQ(actions.log, "keywords write washer minimise ");
}

TEST_F(SettingsPagesTest, OKThatCannotStoreKeepsTheWindow) {
    apply.enabled = true;
    actions.fileFails = true;
    EXPECT_THROW(pages.OKcmd_Click(), RunTimeError);
    EXPECT_EQ(actions.log, "keywords write ");
}

TEST_F(SettingsPagesTest, CancelReadsOnlyWhatWasChanged) {
    apply.enabled = false;
    pages.Cancelcmd_Click();
    EXPECT_EQ(actions.log, "minimise ");
    actions.log.clear();
    apply.enabled = true;
    pages.Cancelcmd_Click();
    EXPECT_EQ(actions.log, "read minimise ");
    EXPECT_FALSE(apply.enabled);
}

}  // namespace
}  // namespace kestrelguard
