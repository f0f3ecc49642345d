// The settings pages: their controls, and Apply, OK and Cancel.

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

constexpr wchar_t kSiteBox[] = L"Prevent the Following Internet Sites from loading in Internet Explorer...";
constexpr wchar_t kTitleBox[] =
    L"Prevent Internet Sites with the following words in their Title from loading... Seperate multiple "
    L"keywords "
    L"by a space and a minus sign.";
constexpr wchar_t kMinimisedBox[] = L"Open Kestrelguard Minimized (in the system tray)";
constexpr wchar_t kAutomatic[] = L"Clear Automatically every";

class SettingsPagesTest : public OneGuardTest {
 protected:
    bool Shown(const wchar_t* type, const wchar_t* text) const {
        return IsWindowVisible(m_guard->Find(type, text)) != FALSE;
    }
};

TEST_F(SettingsPagesTest, EveryControlHasItsCaption) {
    Start();
    for (const wchar_t* caption :
         {L"Prevent New Browser Windows - \"Hushpane\"", L"Prompt me for New Browser Windows",
          L"Enable New Browser Windows", kMinimisedBox, kSiteBox, kTitleBox, L"Add", L"Remove",
          L"Clear Internet Explorer Cache Now", L"Clear Internet Eplorer History Now",
          L"Clear Internet Explorer Cookies Now", L"Check1", kAutomatic, L"Show Cache", L"Show Cookies", L"?",
          L"OK", L"Cancel", L"Apply"}) {
        EXPECT_NE(nullptr, m_guard->Button(caption)) << std::string(caption, caption + wcslen(caption));
    }
    for (const wchar_t* text : {L"   Windows Internet Explorer Instances", L"Right Click for more options...",
                                L"Prevent or Allow Internet Popups", L"Startup Options",
                                L"New Browsers Stopped Today:", L"New Browsers Stopped Total:"}) {
        EXPECT_NE(nullptr, m_guard->Find(L"Static", text)) << std::string(text, text + wcslen(text));
    }
    EXPECT_EQ((std::vector<std::wstring>{L"\"Hushpane\" Technology", L"Safe Surfing", L"Privacy Protection"}),
              TabTexts(m_guard->Tabs()));
    const std::vector<HWND> edits = m_guard->Edits();
    ASSERT_EQ(3u, edits.size());
    EXPECT_EQ(L"", TextOf(edits[0]));
    EXPECT_EQ(L"xxx -porn -sex", TextOf(edits[1]));
    EXPECT_EQ(L"60", TextOf(edits[2]));
    EXPECT_EQ((std::vector<std::wstring>{L"Minute/s", L"Hour/s", L"Day/s"}),
              DropDownRows(m_guard->UnitDropDown()));
    EXPECT_EQ(L"Minute/s", TextOf(m_guard->UnitDropDown()));
    EXPECT_EQ(3u, m_guard->WashBoxes().size());
    EXPECT_EQ(0, m_guard->Mode());
    EXPECT_EQ(L"0", m_guard->Today());
    EXPECT_EQ(L"0", m_guard->Total());
}

TEST_F(SettingsPagesTest, ATabShowsItsPageAlone) {
    Start();
    EXPECT_TRUE(Shown(L"Button", kMinimisedBox));
    EXPECT_FALSE(Shown(L"Button", kSiteBox));
    EXPECT_FALSE(Shown(L"Button", kAutomatic));
    ClickTab(m_guard->Tabs(), 1);
    ASSERT_TRUE(WaitUntil([&] { return Shown(L"Button", kSiteBox); }));
    EXPECT_TRUE(WaitUntil([&] { return !Shown(L"Button", kMinimisedBox); }));
    ClickTab(m_guard->Tabs(), 2);
    ASSERT_TRUE(WaitUntil([&] { return Shown(L"Button", kAutomatic); }));
    EXPECT_TRUE(WaitUntil([&] { return !Shown(L"Button", kSiteBox); }));
    EXPECT_FALSE(Enabled(m_guard->Apply()));
}

TEST_F(SettingsPagesTest, TheFirstTabGroupsTheCounters) {
    Start("PST/:/:1234\r\n");
    EXPECT_EQ(L"1,234", m_guard->Total());
    EXPECT_EQ(L"0", m_guard->Today());
}

TEST_F(SettingsPagesTest, ComingBackToTheFirstTabRefreshesTheCounters) {
    Start("PST/:/:1234\r\nSS1/:/:n/:/:\r\n");
    // Cancel reads the total again without telling the labels.
    Browser& browser = m_desktop.OpenBrowser();
    ASSERT_TRUE(WaitUntil([&] { return browser.Sinks().connected == 1; }));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    EXPECT_EQ(L"1,235", m_guard->Total());
    ClickOn(kMinimisedBox);
    ClickOn(L"Cancel");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    ASSERT_TRUE(m_guard->Restore());
    EXPECT_EQ(L"1,235", m_guard->Total());
    ClickTab(m_guard->Tabs(), 1);
    ASSERT_TRUE(WaitUntil([&] { return Shown(L"Button", kSiteBox); }));
    ClickTab(m_guard->Tabs(), 0);
    EXPECT_TRUE(WaitUntil([&] { return m_guard->Total() == L"1,234"; }));
    EXPECT_EQ(L"1", m_guard->Today());
}

TEST_F(SettingsPagesTest, AClickOnTheShownTabRefreshesTheCountersToo) {
    Start("PST/:/:1234\r\nSS1/:/:n/:/:\r\n");
    Browser& browser = m_desktop.OpenBrowser();
    ASSERT_TRUE(WaitUntil([&] { return browser.Sinks().connected == 1; }));
    EXPECT_TRUE(browser.FireNewWindow2().cancel);
    ClickOn(kMinimisedBox);
    ClickOn(L"Cancel");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    ASSERT_TRUE(m_guard->Restore());
    EXPECT_EQ(L"1,235", m_guard->Total());
    ClickTab(m_guard->Tabs(), 0);
    EXPECT_TRUE(WaitUntil([&] { return m_guard->Total() == L"1,234"; }));
}

TEST_F(SettingsPagesTest, EverySettingEnablesApplyAndApplyStores) {
    Start("USE/:/:1\r\n");
    for (const wchar_t* caption : {kMinimisedBox, kSiteBox, kTitleBox, kAutomatic}) {
        ASSERT_FALSE(Enabled(m_guard->Apply()));
        ClickOn(caption);
        EXPECT_TRUE(Enabled(m_guard->Apply()));
        ClickOn(L"Apply");
        EXPECT_FALSE(Enabled(m_guard->Apply()));
    }
    for (const HWND box : m_guard->WashBoxes()) {
        ClickAndWait(box);
        EXPECT_TRUE(Enabled(m_guard->Apply()));
        ClickOn(L"Apply");
    }
    for (const int mode : {1, 2, 0}) {
        ASSERT_TRUE(m_guard->SetMode(mode));
        EXPECT_TRUE(Enabled(m_guard->Apply()));
        ClickOn(L"Apply");
        EXPECT_EQ("PT1/:/:" + std::to_string(mode), m_folder->SettingsLine("PT1"));
    }
    TypeText(m_guard->Edits()[1], L"poker -dice");
    EXPECT_TRUE(Enabled(m_guard->Apply()));
    ClickOn(L"Apply");
    TypeText(m_guard->Edits()[2], L"5");
    EXPECT_TRUE(Enabled(m_guard->Apply()));
    ClickOn(L"Apply");
    SelectDropDown(m_guard->UnitDropDown(), 2);
    EXPECT_TRUE(WaitUntil([&] { return Enabled(m_guard->Apply()); }));
    ClickOn(L"Apply");
    EXPECT_EQ("MIN/:/:y", m_folder->SettingsLine("MIN"));
    EXPECT_EQ("SS1/:/:y/:/:", m_folder->SettingsLine("SS1"));
    EXPECT_EQ("SS2/:/:y/:/:poker -dice", m_folder->SettingsLine("SS2"));
    EXPECT_EQ("PP1/:/:y", m_folder->SettingsLine("PP1"));
    EXPECT_EQ("PP2/:/:y", m_folder->SettingsLine("PP2"));
    EXPECT_EQ("PP3/:/:y", m_folder->SettingsLine("PP3"));
    EXPECT_EQ("PP4/:/:y/:/:5/:/:D", m_folder->SettingsLine("PP4"));
}

TEST_F(SettingsPagesTest, AddingOrRemovingASiteDoesNotEnableApply) {
    Start("USE/:/:1\r\n");
    TypeText(m_guard->Edits()[0], L"Casino");
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    ClickOn(L"Add");
    EXPECT_EQ((std::vector<std::wstring>{L"casino"}), ListRows(m_guard->SiteList()));
    EXPECT_FALSE(Enabled(m_guard->Apply()));
    SelectRow(m_guard->SiteList(), 0);
    ClickOn(L"Remove");
    EXPECT_TRUE(ListRows(m_guard->SiteList()).empty());
    EXPECT_FALSE(Enabled(m_guard->Apply()));
}

TEST_F(SettingsPagesTest, CancelBringsAClearedBoxBack) {
    Start("MIN/:/:n\r\nPP1/:/:y\r\n");
    const HWND box = m_guard->WashBoxes()[0];
    ASSERT_TRUE(Checked(box));
    ClickAndWait(box);
    ASSERT_FALSE(Checked(box));
    ClickOn(L"Cancel");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    EXPECT_TRUE(Checked(box));
    EXPECT_FALSE(Enabled(m_guard->Apply()));
}

TEST_F(SettingsPagesTest, CancelNeverUnticksABox) {
    Start("MIN/:/:n\r\nUSE/:/:5\r\n");
    ClickOn(kMinimisedBox);
    ClickOn(L"Cancel");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    EXPECT_TRUE(Checked(m_guard->Button(kMinimisedBox)));
}

TEST_F(SettingsPagesTest, CancelWithNothingChangedDoesNotReadTheFile) {
    Start("USE/:/:5\r\nSS1/:/:n/:/:casino -\r\n");
    EXPECT_EQ(2u, ListRows(m_guard->SiteList()).size());
    ClickOn(L"Cancel");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    EXPECT_EQ(2u, ListRows(m_guard->SiteList()).size());
    EXPECT_TRUE(m_guard->ExitByMenu());
    EXPECT_EQ("USE/:/:6", m_folder->SettingsLine("USE"));
}

TEST_F(SettingsPagesTest, CancelWithChangesAppendsTheSitesOnceMore) {
    Start("SS1/:/:n/:/:casino -\r\n");
    ClickOn(kMinimisedBox);
    ClickOn(L"Cancel");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    EXPECT_EQ((std::vector<std::wstring>{L"casino", L"", L"casino", L""}), ListRows(m_guard->SiteList()));
}

TEST_F(SettingsPagesTest, OKWithNothingChangedDoesNotWrite) {
    Start("USE/:/:5\r\n");
    const std::string before = m_folder->Settings();
    ClickOn(L"OK");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    EXPECT_EQ(before, m_folder->Settings());
    EXPECT_TRUE(m_guard->Icon());
}

TEST_F(SettingsPagesTest, OKAppliesChangesAndGoesToTheTray) {
    Start("USE/:/:5\r\n");
    ClickOn(kAutomatic);
    ClickOn(L"OK");
    ASSERT_TRUE(WaitUntil([&] { return m_guard->InTray(); }));
    EXPECT_EQ("PP4/:/:y/:/:60/:/:M", m_folder->SettingsLine("PP4"));
    EXPECT_TRUE(m_guard->Restore());
    EXPECT_FALSE(Enabled(m_guard->Apply()));
}

TEST_F(SettingsPagesTest, ARepeatedKeywordIsToldAndNothingIsStored) {
    Start("USE/:/:5\r\n");
    const std::string before = m_folder->Settings();
    TypeText(m_guard->Edits()[1], L"dice -poker -Dice");
    Click(m_guard->Apply());
    const MessageBoxSeen box = WaitMessageBox(m_guard->Program().Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"Kestrelguard", box.caption);
    EXPECT_EQ(
        L"Run-time error '457':\r\n\r\nThis key is already associated with an element of this collection",
        box.text);
    EXPECT_TRUE(Dismiss(box));
    EXPECT_EQ(before, m_folder->Settings());
    EXPECT_TRUE(Enabled(m_guard->Apply()));
    TypeText(m_guard->Edits()[1], L"dice -poker");
    ClickOn(L"Apply");
    EXPECT_EQ("SS2/:/:n/:/:dice -poker", m_folder->SettingsLine("SS2"));
}

TEST_F(SettingsPagesTest, NewKeywordsActFromApplyOn) {
    Start("SS2/:/:y/:/:poker -dice\r\n");
    Browser& browser = m_desktop.OpenBrowser();
    ASSERT_TRUE(WaitUntil([&] { return browser.Sinks().connected == 1; }));
    TypeText(m_guard->Edits()[1], L"roulette -dice");
    browser.FireTitleChange(L"Roulette for all");
    EXPECT_TRUE(browser.NavigateCalls().empty());
    ClickOn(L"Apply");
    browser.FireTitleChange(L"Roulette for all");
    EXPECT_TRUE(WaitUntil([&] { return browser.NavigateCalls().size() == 1; }));
}

TEST_F(SettingsPagesTest, AppliedWithoutAnEditTheKeywordsStay) {
    // A keyword saved alone is not loaded, whatever the text box shows.
    Start("SS2/:/:y/:/:poker\r\n");
    Browser& browser = m_desktop.OpenBrowser();
    ASSERT_TRUE(WaitUntil([&] { return browser.Sinks().connected == 1; }));
    EXPECT_EQ(L"xxx -porn -sex", TextOf(m_guard->Edits()[1]));
    const auto firesTitles = [&] {
        for (const wchar_t* title : {L"Poker", L"porn"}) {
            EXPECT_EQ(S_OK, browser.FireTitleChange(title).hr);
        }
    };
    firesTitles();
    EXPECT_TRUE(browser.NavigateCalls().empty());
    ClickOn(kMinimisedBox);
    ClickOn(L"Apply");
    firesTitles();
    EXPECT_TRUE(browser.NavigateCalls().empty());
    EXPECT_EQ("SS2/:/:y/:/:xxx -porn -sex", m_folder->SettingsLine("SS2"));
}

}  // namespace
}  // namespace kestrelguard::testing
