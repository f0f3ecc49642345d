// Surfing privacy: the cache, the cookies and the history cleaned at once, then by the schedule.

#include "desktop/scenario/CacheStage.h"
//
#include <shlguid.h>
#include <urlhist.h>

#include <stdexcept>

namespace kestrelguard::desktop::scenario {

namespace {

constexpr wchar_t kHistoryFile[] = L"C:\\history.txt";
constexpr wchar_t kScheduleBox[] = L"Clear Automatically every";
constexpr UINT_PTR kWasherTimer = 1;
constexpr int kPage = 2;

/// Puts the stand-in's history into the place of the platform's.
bool ServeHistory() {
    const HMODULE library = LoadLibraryW((testing::OwnFolder() + L"\\url_history.dll").c_str());
    if (library == nullptr) {
        return false;
    }
    const auto registration = reinterpret_cast<HRESULT(WINAPI*)()>(
        reinterpret_cast<void*>(GetProcAddress(library, "DllRegisterServer")));
    return registration != nullptr && registration() == S_OK;
}

void Visit(std::initializer_list<const wchar_t*> addresses) {
    ComPtr<IUrlHistoryStg2> history;
    if (FAILED(CoCreateInstance(CLSID_CUrlHistory, nullptr, CLSCTX_INPROC_SERVER, IID_IUrlHistoryStg2,
                                history.PutVoid()))) {
        throw std::runtime_error("there is no history");
    }
    for (const wchar_t* const address : addresses) {
        if (FAILED(history->AddUrl(address, L"A page", 0))) {
            throw std::runtime_error("the history takes no address");
        }
    }
}

std::size_t Visited() {
    return LinesOf(testing::ReadBytes(kHistoryFile)).size();
}

/// The files behind the entries.
struct Files {
    std::string news;
    std::string picture;
    std::string shop;
    std::string bank;

    bool Pages() const { return FileExists(news) && FileExists(picture); }
    bool NoPages() const { return !FileExists(news) && !FileExists(picture); }
};

Files Fill(Transcript& say) {
    Files files;
    files.news = MakeEntry(say, "http://www.news.example/index.html", "The Morning News");
    files.picture = MakeEntry(say, "http://www.news.example/kestrel.gif", "a picture");
    files.shop = MakeEntry(say, "Cookie:jane@shop.example/", "a cookie");
    files.bank = MakeEntry(say, "Cookie:jane@bank.example/", "a saved cookie");
    return files;
}

void ShowCache(Transcript& say) {
    std::vector<std::wstring> lines;
    for (const std::string& address : CacheFiller::Addresses()) {
        lines.emplace_back(address.begin(), address.end());
    }
    ShowLines(say, L"the cache", lines);
}

/// Ticks of the one-minute timer, posted as the system does.
void PostTicks(HWND window, int ticks) {
    for (int tick = 0; tick < ticks; ++tick) {
        PostMessageW(window, WM_TIMER, kWasherTimer, 0);
    }
}

bool ShowPage(const testing::Guard& guard, int page) {
    testing::ClickTab(guard.Tabs(), page);
    return testing::WaitUntil([&] { return testing::SelectedTab(guard.Tabs()) == page; });
}

}  // namespace

void PlayCleaning(Stage& stage) {
    Transcript& say = stage.transcript;

    say.Step(L"Two pages and two cookies lie in the browser's cache; the cookie of the bank is saved.");
    PrepareCache(stage);
    if (!say.Expect(ServeHistory(), L"there is a history")) {
        return;
    }
    DeleteFileW(kHistoryFile);
    Files files = Fill(say);
    testing::WriteBytes(stage.folder.File(L"KestrelC.CFG"),
                        "'#\r\n'#\r\n'#\r\n'#\r\nCookie:jane@bank.example/\r\n");
    ShowLines(say, L"KestrelC.CFG", LinesOf(stage.folder.Cookies()));
    Visit({L"http://www.news.example/", L"http://www.shop.example/", L"http://www.bank.example/"});
    say.Expect(Visited() == 3, L"addresses in the history: " + std::to_wstring(Visited()));

    say.Step(L"kestrelguard.exe starts and shows its page for cleaning.");
    const auto guard = StartGuard(stage);
    say.Expect(ShowPage(*guard, kPage),
               L"the page: " + testing::TabTexts(guard->Tabs()).at(static_cast<std::size_t>(kPage)));
    say.Expect(files.Pages() && Visited() == 3, L"nothing has been cleaned yet");

    say.Step(L"\"Clear Internet Explorer Cache Now\" is pressed.");
    testing::ClickAndWait(guard->Button(L"Clear Internet Explorer Cache Now"));
    say.Expect(files.NoPages(), L"the files of the two pages are gone from the disk");
    say.Expect(FileExists(files.shop) && FileExists(files.bank), L"both cookies are still there");
    ShowCache(say);

    say.Step(L"\"Clear Internet Explorer Cookies Now\" is pressed.");
    testing::ClickAndWait(guard->Button(L"Clear Internet Explorer Cookies Now"));
    say.Expect(!FileExists(files.shop), L"the cookie of the shop is gone from the disk");
    say.Expect(FileExists(files.bank), L"the saved cookie of the bank is spared");
    ShowCache(say);

    say.Step(L"\"Clear Internet Eplorer History Now\" is pressed.");
    const std::size_t before = Visited();
    testing::ClickAndWait(guard->Button(L"Clear Internet Eplorer History Now"));
    say.Expect(before == 3 && Visited() == 0, L"addresses in the history: " + std::to_wstring(before) +
                                                  L" before, " + std::to_wstring(Visited()) + L" after");

    say.Step(L"All three are to be cleaned every 30 minutes, and Apply is pressed.");
    for (const HWND box : guard->WashBoxes()) {
        if (!testing::Checked(box)) {
            testing::ClickAndWait(box);
        }
    }
    if (!testing::Checked(guard->Button(kScheduleBox))) {
        testing::ClickAndWait(guard->Button(kScheduleBox));
    }
    testing::SelectDropDown(guard->UnitDropDown(), 0);
    testing::TypeText(guard->Edits().at(2), L"30");
    testing::ClickAndWait(guard->Apply());
    for (const char* const key : {"PP1", "PP2", "PP3", "PP4"}) {
        const std::string line = stage.folder.SettingsLine(key);
        say.Show(L"KestrelS.CFG", std::wstring(line.begin(), line.end()));
    }
    say.Expect(stage.folder.SettingsLine("PP4") == "PP4/:/:y/:/:30/:/:M", L"the schedule is saved");
    SetForegroundWindow(guard->Window());
    say.Picture(L"cleaning-schedule");

    say.Step(L"The user surfs on; ten minutes pass.");
    files = Fill(say);
    Visit({L"http://www.news.example/", L"http://www.garden.example/"});
    PostTicks(guard->Window(), 10);
    // Clicks are posted behind the ticks: when they have been dealt with, so have the ticks.
    say.Expect(ShowPage(*guard, 0) && ShowPage(*guard, kPage), L"the program has dealt with the ten ticks");
    say.Expect(files.Pages() && FileExists(files.shop) && Visited() == 2,
               L"nothing is cleaned before its time");

    say.Step(L"Twenty minutes more pass.");
    PostTicks(guard->Window(), 20);
    const bool washed =
        testing::WaitUntil([&] { return files.NoPages() && !FileExists(files.shop) && Visited() == 0; });
    say.Expect(washed, L"the pages, the cookie of the shop and the history are gone");
    say.Expect(FileExists(files.bank), L"the saved cookie of the bank is spared");
    say.Expect(Visited() == 0, L"addresses in the history: " + std::to_wstring(Visited()));
    say.Expect(!testing::FindMessageBox(guard->Program().Id()), L"no box is shown");
    ShowCache(say);

    say.Step(L"The program is closed.");
    say.Expect(guard->Close(), L"it has ended");
    CacheFiller::Empty();
}

}  // namespace kestrelguard::desktop::scenario
