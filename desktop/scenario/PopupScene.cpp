// The road of one popup: from a browser of its own process to the labels, the tip, the menu and the settings
// file.

#include "desktop/scenario/Scenario.h"

namespace kestrelguard::desktop::scenario {

namespace {

constexpr wchar_t kSesame[] = L"http://popups.example/2006/07/a-page-that-opens-windows-by-itself.html";

std::wstring YesNo(bool yes) {
    return yes ? L"yes" : L"no";
}

}  // namespace

void PlayPopup(Stage& stage) {
    Transcript& say = stage.transcript;
    StandInDesktop& desktop = stage.desktop;

    say.Step(L"Two browser windows are open.");
    Browser& sesame = desktop.OpenBrowser(PageAt(kSesame, L"Open Sesame"));
    desktop.OpenBrowser(PageAt(L"http://www.news.example/", L"The Morning News"));
    for (const Browser* browser : desktop.OpenBrowsers()) {
        say.Show(browser->Title(), browser->Url());
    }

    say.Step(L"kestrelguard.exe starts in a folder without settings.");
    const auto guard = StartGuard(stage);
    int listening = 0;
    for (const Browser* browser : desktop.OpenBrowsers()) {
        listening += browser->Sinks().connected;
    }
    say.Expect(listening == 2, L"it listens to " + std::to_wstring(listening) + L" of 2 browsers");
    ShowLines(say, L"its tree", guard->TreeLines());
    say.Expect(guard->Mode() == 0, std::wstring(L"selected: ") + testing::Guard::ModeCaption(guard->Mode()));

    say.Step(L"A third browser opens.");
    Browser& garden = desktop.OpenBrowser(PageAt(L"http://www.garden.example/", L"Garden Diary"));
    say.Expect(garden.Sinks().connected == 1, L"it is watched as well");
    ShowLines(say, L"the tree", guard->TreeLines());

    say.Step(L"The page in \"Open Sesame\" tries to open http://www.offers.example/ in a new window.");
    const std::size_t before = desktop.OpenBrowsers().size();
    sesame.ClickNewWindowLink(L"http://www.offers.example/");
    sesame.WaitIdle();
    const bool cancelled = desktop.OpenBrowsers().size() == before;
    say.Expect(cancelled, L"new window cancelled: " + YesNo(cancelled));
    say.Expect(guard->Today() == L"1", L"New Browsers Stopped Today: " + guard->Today());
    say.Expect(guard->Total() == L"1", L"New Browsers Stopped Total: " + guard->Total());
    SetForegroundWindow(guard->Window());
    say.Picture(L"popup-stopped");

    say.Step(L"And once more.");
    const EventResult again = sesame.FireNewWindow2();
    say.Expect(again.cancel, L"new window cancelled: " + YesNo(again.cancel));
    say.Expect(guard->Today() == L"2", L"New Browsers Stopped Today: " + guard->Today());

    say.Step(L"The window goes to the tray.");
    say.Expect(guard->Minimise(), L"its icon stands in the notification area");
    const std::wstring tip = guard->Tip();
    say.Expect(tip == L" Kestrelguard v2 - Preventing Popups: 2", L"tip:" + tip);
    say.Picture(L"tray-tip");
    ShowLines(say, L"menu of the right button", guard->OpenTrayMenu().Captions());
    say.Picture(L"tray-menu");

    say.Step(L"\"Prevent Popups\" is chosen in the menu: popups are allowed now.");
    guard->Inside().Choose(L"Prevent Popups = 2");
    testing::WaitUntil([&] { return guard->Mode() == 2; });
    const std::wstring allowing = guard->Tip();
    say.Expect(allowing == L" Kestrelguard v2 - Allowing Popups.", L"tip:" + allowing);
    sesame.ClickNewWindowLink(L"http://www.offers.example/");
    sesame.WaitIdle();
    const bool opened = desktop.OpenBrowsers().size() == before + 1;
    say.Expect(opened, L"the new window opens: " + YesNo(opened));

    say.Step(L"\"Prompt me\" is chosen in the window: the user is asked.");
    say.Expect(guard->Restore(), L"a click on the icon brings the window back");
    guard->SetMode(1);
    const PendingEvent asked = sesame.Start(EventCall::NewWindow2());
    const testing::MessageBoxSeen box = testing::WaitMessageBox(guard->Program().Id());
    ShowLines(say, box.caption, LinesOf(std::string(box.text.begin(), box.text.end())));
    say.Picture(L"prompt");
    say.Expect(!asked.Done(), L"the browser waits for the answer");
    testing::Dismiss(box);
    say.Expect(!asked.Result().cancel, L"after OK the window may open");

    say.Step(L"\"Garden Diary\" is closed.");
    garden.Close();
    testing::WaitUntil([&] { return guard->TreeLines().front() == L"Windows Browsers (3)"; });
    ShowLines(say, L"the tree", guard->TreeLines());

    say.Step(L"\"Exit\" is chosen in the tray menu.");
    guard->Minimise();
    say.Expect(guard->ExitByMenu(), L"the program has ended");
    int left = 0;
    for (const Browser* browser : desktop.Browsers()) {
        left += browser->Sinks().connected;
    }
    say.Expect(left == 0, L"browsers that it still listens to: " + std::to_wstring(left));
    say.Expect(stage.folder.SettingsLine("PST") == "PST/:/:2", L"the total is saved");
    ShowLines(say, L"KestrelS.CFG", LinesOf(stage.folder.Settings()));
}

}  // namespace kestrelguard::desktop::scenario
