// Safe surfing: a listed site that cannot be reached, one that can, and a page whose title is banned.

#include "desktop/scenario/Scenario.h"

namespace kestrelguard::desktop::scenario {

namespace {

constexpr wchar_t kHome[] = L"http://www.home.example/";
constexpr wchar_t kNews[] = L"http://www.news.example/";
constexpr wchar_t kCasino[] = L"http://www.casino.example/";
constexpr wchar_t kVideos[] = L"http://videos.example/";
constexpr wchar_t kSiteBox[] = L"Prevent the Following Internet Sites from loading in Internet Explorer...";
constexpr wchar_t kTitleBox[] =
    L"Prevent Internet Sites with the following words in their Title from loading";
constexpr wchar_t kBlockedTitle[] = L"Kestrelguard - Blocked Site Access";

/// The check box whose caption begins with the text.
HWND BoxThatBegins(const testing::Guard& guard, const std::wstring& start) {
    for (const HWND child : testing::Inside(guard.Window())) {
        if (lstrcmpiW(testing::ClassOf(child).c_str(), L"Button") == 0 &&
            testing::TextOf(child).compare(0, start.size(), start) == 0) {
            return child;
        }
    }
    return nullptr;
}

void Tick(HWND box) {
    if (!testing::Checked(box)) {
        testing::ClickAndWait(box);
    }
}

}  // namespace

void PlayBlocking(Stage& stage) {
    Transcript& say = stage.transcript;

    say.Step(L"A browser window is open, and kestrelguard.exe watches it.");
    Browser& browser = stage.desktop.OpenBrowser(PageAt(kHome, L"Home"));
    const auto guard = StartGuard(stage);
    say.Expect(browser.Sinks().connected == 1, L"it listens to the browser");
    say.Show(L"the browser", browser.Title() + L", " + browser.Url());

    say.Step(
        L"On the page \"Safe Surfing\" the site \"casino\" is added, and the box above the list is ticked.");
    testing::ClickTab(guard->Tabs(), 1);
    say.Expect(testing::WaitUntil([&] { return testing::SelectedTab(guard->Tabs()) == 1; }),
               L"the page is shown: " + testing::TabTexts(guard->Tabs()).at(1));
    testing::TypeText(guard->Edits().at(0), L"casino");
    testing::ClickAndWait(guard->Button(L"Add"));
    Tick(guard->Button(kSiteBox));
    const std::vector<std::wstring> sites = testing::ListRows(guard->SiteList());
    ShowLines(say, L"the list", sites);
    say.Expect(sites == std::vector<std::wstring>{L"casino"}, L"the site is in the list");
    say.Expect(testing::Checked(guard->Button(kSiteBox)), L"the box is ticked");
    SetForegroundWindow(guard->Window());
    say.Picture(L"blocking-list");

    say.Step(std::wstring(L"The browser is sent to ") + kCasino + L".");
    browser.Navigate(kCasino);
    say.Expect(browser.WaitIdle(), L"it has come to rest");
    say.Expect(browser.Url() == kHome && browser.Title() == L"Home",
               L"it keeps its page: " + browser.Title() + L", " + browser.Url());
    say.Expect(!testing::FindMessageBox(guard->Program().Id()), L"no box is shown");
    say.Expect(guard->Today() == L"0", L"New Browsers Stopped Today: " + guard->Today());
    ShowLines(say, L"the tree", guard->TreeLines());

    say.Step(std::wstring(L"The browser is sent to ") + kNews + L", which is not in the list.");
    browser.Navigate(kNews);
    say.Expect(browser.WaitIdle(), L"it has come to rest");
    say.Expect(browser.Url() == kNews, L"it goes there: " + browser.Title() + L", " + browser.Url());

    say.Step(L"\"xxx -porn\" are the banned words of titles, and Apply is pressed.");
    testing::TypeText(guard->Edits().at(1), L"xxx -porn");
    Tick(BoxThatBegins(*guard, kTitleBox));
    testing::ClickAndWait(guard->Apply());
    say.Show(L"KestrelS.CFG", LinesOf(stage.folder.SettingsLine("SS1")).at(0));
    say.Show(L"KestrelS.CFG", LinesOf(stage.folder.SettingsLine("SS2")).at(0));
    say.Expect(stage.folder.SettingsLine("SS1") == "SS1/:/:y/:/:casino -", L"the list is saved");
    say.Expect(stage.folder.SettingsLine("SS2") == "SS2/:/:y/:/:xxx -porn", L"the words are saved");

    say.Step(std::wstring(L"The browser is sent to ") + kVideos + L", whose title is \"Free XXX Videos\".");
    browser.Navigate(kVideos);
    const bool replaced = testing::WaitUntil([&] { return browser.Title() == kBlockedTitle; });
    say.Expect(replaced, L"the page is replaced, the title is now: " + browser.Title());
    browser.WaitIdle();
    const std::vector<NavigateCall> calls = browser.NavigateCalls();
    if (say.Expect(calls.size() == 1,
                   L"addresses that the program sent it to: " + std::to_wstring(calls.size()))) {
        const std::wstring& page = calls.front().url;
        say.Show(L"the address", page);
        say.Expect(page.compare(0, 12, L"about:<html>") == 0, L"the page is in the address itself");
        say.Expect(page.find(L"due to keyword: <b><i>xxx</i></b>") != std::wstring::npos,
                   L"it names the keyword");
        say.Expect(page.find(kVideos) != std::wstring::npos, L"it names the site");
    }
    SetForegroundWindow(browser.Window());
    say.Picture(L"blocking-replaced");

    say.Step(L"The program is closed.");
    say.Expect(guard->Close(), L"it has ended");
    say.Expect(browser.Sinks().connected == 0, L"the browser is on its own again");
}

}  // namespace kestrelguard::desktop::scenario
