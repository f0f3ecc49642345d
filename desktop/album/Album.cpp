// Brings the unchanged program and the stand-in's browsers, one after the other, into the states that the
// manual shows. Usage: album KESTRELGUARD.EXE FOLDER
//
// For each picture it writes "picture NAME LEFT TOP WIDTH HEIGHT" to standard output and goes on when
// FOLDER\NAME.png is there. scripts/take-pictures is the one that takes them.

#include "desktop/album/LoopbackServer.h"
//
#include <shellapi.h>
#include <wininet.h>

#include <cstdio>
#include <stdexcept>

#include "desktop/Desktop.h"
#include "desktop/driver/CacheFiller.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::desktop {

namespace {

namespace kt = kestrelguard::testing;

constexpr wchar_t kNews[] = L"http://www.news.example/";
constexpr wchar_t kGarden[] = L"http://www.garden.example/";
constexpr wchar_t kPopups[] = L"http://www.popups.example/2006/07/a-page-that-opens-windows-by-itself.html";
constexpr wchar_t kCacheCaption[] = L"Kestrelguard v2.0 - IE Cache Details and Advanced Configuration";

constexpr const char* kCached[] = {
    "http://www.news.example/",
    "http://www.news.example/weather.html",
    "http://www.news.example/pictures/kestrel-over-the-market-place.jpg",
    "Cookie:jane@news.example/",
    "http://www.garden.example/",
    "http://www.garden.example/beans.html",
    "http://www.garden.example/snails.gif",
    "Cookie:jane@garden.example/",
    "http://ads.offers.example/banner.gif",
    "Cookie:jane@offers.example/",
    "Cookie:jane@bank.example/",
};

constexpr char kSavedCookies[] = "'#\r\n'#\r\n'#\r\n'#\r\nCookie:jane@bank.example/\r\n";

void Must(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("not done: ") + what);
    }
}

RECT Union(RECT one, const RECT& other) {
    UnionRect(&one, &one, &other);
    return one;
}

/// Lets the program under test bind to the stand-in's wininet.dll, which lies beside it.
void PreferStandInCache() {
    HKEY key = nullptr;
    const wchar_t order[] = L"native,builtin";
    RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\kestrelguard.exe\\DllOverrides", 0,
                    nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    RegSetValueExW(key, L"wininet", 0, REG_SZ, reinterpret_cast<const BYTE*>(order), sizeof order);
    RegCloseKey(key);
}

class Album {
 public:
    Album(const std::wstring& guard, std::wstring pictures)
        : m_pictures(std::move(pictures)), m_folder("USE/:/:41\r\nPST/:/:1231\r\n", kSavedCookies, guard) {
        const HDC screen = GetDC(nullptr);
        m_dpi = GetDeviceCaps(screen, LOGPIXELSX);
        ReleaseDC(nullptr, screen);
    }

    void Run() {
        PreferStandInCache();
        CacheFiller::Empty();
        for (const char* address : kCached) {
            Must(!CacheFiller::Add(address, "content").empty(), "fill the cache");
        }
        m_folder.Add(kt::OwnFolder() + L"\\wininet.dll");
        Browsers();
        Start();
        UpdateNotice();
        Pages();
        Tray();
        Prompt();
        CacheWindow();
        BlockedPage();
        m_guard->Minimise();
        Must(m_guard->ExitByMenu(), "leave the program");
    }

 private:
    int Scaled(int at96) const { return MulDiv(at96, m_dpi, 96); }

    void Take(const char* name, const RECT& place) const {
        std::printf("picture %s %ld %ld %ld %ld\n", name, place.left, place.top, place.right - place.left,
                    place.bottom - place.top);
        std::fflush(stdout);
        const std::wstring file = m_pictures + L"\\" + std::wstring(name, name + lstrlenA(name)) + L".png";
        Must(kt::WaitUntil([&] { return kt::FileExists(file); }, 60000), "take a picture");
    }
    RECT Screen() const { return {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}; }
    /// Out of the way of everything.
    void HidePointer() const { SetCursorPos(GetSystemMetrics(SM_CXSCREEN) - 2, 2); }
    RECT Form() const { return kt::RectOf(m_guard->Window()); }

    Browser& Open(const wchar_t* url, int left, int top) {
        BrowserOptions options;
        options.url.clear();
        options.title.clear();
        options.dressed = true;
        options.shown = true;
        Browser& browser = m_desktop.OpenBrowser(options);
        browser.Navigate(url);
        Must(browser.WaitIdle(), "load a page");
        SetWindowPos(browser.Window(), HWND_TOP, Scaled(left), Scaled(top), Scaled(470), Scaled(330),
                     SWP_SHOWWINDOW);
        return browser;
    }

    void Browsers() {
        m_desktop.SetNewWindowLook(true, true);
        m_garden = &Open(kGarden, 500, 20);
        m_news = &Open(kNews, 20, 60);
        HidePointer();
        Take("browsers", Union(kt::RectOf(m_garden->Window()), kt::RectOf(m_news->Window())));
        m_popups = &Open(kPopups, 540, 380);
    }

    void Start() {
        m_guard = std::make_unique<kt::Guard>(m_folder);
        Must(m_guard->WaitReady(), "start kestrelguard.exe");
        for (int popup = 0; popup < 3; ++popup) {
            Must(m_popups->FireNewWindow2().cancel, "stop a new window");
        }
        SetWindowPos(m_guard->Window(), nullptr, Scaled(120), Scaled(150), 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        SetForegroundWindow(m_guard->Window());
        HidePointer();
        Take("desktop", Screen());
        Take("popups", Form());
    }

    void Show(int tab) const {
        kt::ClickTab(m_guard->Tabs(), tab);
        Must(kt::WaitUntil([&] { return kt::SelectedTab(m_guard->Tabs()) == tab; }), "show a page");
        HidePointer();
    }

    void Pages() {
        Show(1);
        for (const wchar_t* site : {L"casino", L"ads.", L"offers.example/more"}) {
            kt::TypeText(m_guard->Edits().at(0), site);
            kt::ClickAndWait(m_guard->Button(L"Add"));
        }
        kt::ClickAndWait(
            m_guard->Button(L"Prevent the Following Internet Sites from loading in Internet Explorer..."));
        kt::SelectRow(m_guard->SiteList(), 1);
        Take("safe-surfing", Form());

        Show(2);
        kt::ClickAndWait(m_guard->WashBoxes().at(0));
        kt::ClickAndWait(m_guard->WashBoxes().at(2));
        kt::ClickAndWait(m_guard->Button(L"Clear Automatically every"));
        kt::TypeText(m_guard->Edits().at(2), L"2");
        kt::SelectDropDown(m_guard->UnitDropDown(), 1);
        Take("privacy", Form());
        kt::ClickAndWait(m_guard->Apply());

        Show(0);
        kt::TreeNode chosen;
        for (const kt::TreeNode& node : kt::TreeNodes(m_guard->Tree())) {
            if (node.text == L"Title : The Morning News") {
                chosen = node;
            }
        }
        Must(chosen.item != nullptr, "find a browser in the tree");
        RECT node{};
        Must(kt::NodeRect(m_guard->Tree(), chosen.item, node), "see a browser in the tree");
        MapWindowPoints(m_guard->Tree(), nullptr, reinterpret_cast<POINT*>(&node), 2);
        const POINT middle{(node.left + node.right) / 2, (node.top + node.bottom) / 2};
        kt::ClickScreen(middle);
        Must(kt::WaitUntil([&] {
                 return kt::Ask(m_guard->Tree(), TVM_GETNEXTITEM, TVGN_CARET) ==
                        reinterpret_cast<LRESULT>(chosen.item);
             }),
             "choose a browser in the tree");
        // Beside the node, so that it can be seen.
        kt::ClickScreen({middle.x, node.bottom + 6 * (node.bottom - node.top)}, true);
        const kt::OpenMenu menu = m_guard->Inside().WaitMenu();
        Must(static_cast<bool>(menu), "open the menu of the tree");
        Take("tree-menu", Union(Form(), kt::RectOf(menu.window)));
        Must(m_guard->Inside().CloseMenu(), "close the menu of the tree");
    }

    /// The part of the screen around the notification area.
    RECT Corner(int width, int height) const {
        const RECT screen = Screen();
        return {screen.right - Scaled(width), screen.bottom - Scaled(height), screen.right, screen.bottom};
    }

    static bool TipShown() {
        HWND tip = nullptr;
        while ((tip = FindWindowExW(nullptr, tip, L"tooltips_class32", nullptr)) != nullptr) {
            if (IsWindowVisible(tip)) {
                return true;
            }
        }
        return false;
    }

    void Tray() {
        Must(m_guard->Minimise(), "minimise");
        // The list of windows must not be in the picture's corner.
        SetWindowPos(m_popups->Window(), nullptr, Scaled(60), Scaled(330), 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        m_guard->Tip();
        const auto icon = m_guard->Icon();
        Must(icon.has_value(), "find the icon");
        kt::PointAtTrayIcon(*icon);
        SetCursorPos((icon->place.left + icon->place.right) / 2, (icon->place.top + icon->place.bottom) / 2);
        Must(kt::WaitUntil(TipShown), "show the tip");
        Take("tray-tip", Corner(360, 80));
        const kt::OpenMenu menu = m_guard->OpenTrayMenu();
        Must(static_cast<bool>(menu), "open the tray menu");
        const RECT place = kt::RectOf(menu.window);
        // To "Show Kestrelguard"; the tip goes.
        SetCursorPos((place.left + place.right) / 2, place.bottom - (place.bottom - place.top) * 3 / 10);
        Must(kt::WaitUntil([] { return !TipShown(); }), "hide the tip");
        RECT around = Union(place, Corner(60, 40));
        around.left -= Scaled(12);
        around.top -= Scaled(12);
        around.right = Screen().right;
        Take("tray-menu", around);
        Must(m_guard->Inside().CloseMenu(), "close the tray menu");
        HidePointer();
        Must(m_guard->Restore(), "restore");
    }

    kt::MessageBoxSeen Box() const {
        kt::MessageBoxSeen box = kt::WaitMessageBox(m_guard->Program().Id());
        Must(static_cast<bool>(box), "see a message box");
        HidePointer();
        return box;
    }

    void Prompt() {
        m_guard->SetMode(1);
        const PendingEvent asked = m_popups->Start(EventCall::NewWindow2());
        const kt::MessageBoxSeen box = Box();
        Take("prompt", kt::RectOf(box.window));
        kt::Dismiss(box);
        Must(!asked.Result().cancel, "let the window open");
        m_guard->SetMode(0);
    }

    void CacheWindow() {
        Show(2);
        kt::Click(m_guard->Button(L"Show Cache"));
        const HWND window = kt::WaitTop(m_guard->Program().Id(), [](HWND top) {
            return kt::TextOf(top) == kCacheCaption && IsWindowVisible(top);
        });
        Must(window != nullptr, "open the cache window");
        SetWindowPos(window, HWND_TOP, Scaled(60), Scaled(80), Scaled(880), Scaled(440), SWP_SHOWWINDOW);
        SetForegroundWindow(window);
        const auto button = [window](const wchar_t* caption) {
            return kt::FindInside(window, L"Button", caption);
        };
        HWND entries = nullptr;
        for (const HWND inside : kt::Inside(window)) {
            if (entries == nullptr && kt::ClassOf(inside) == L"ListBox") {
                entries = inside;
            }
        }
        kt::ClickAndWait(button(L"<- Refresh"));
        HidePointer();
        Take("cache-all", kt::RectOf(window));

        kt::TypeText(kt::FindInside(window, L"Edit"), L"garden");
        kt::ClickAndWait(button(L"<- Find"));
        kt::ClickAndWait(button(L"<- F. Again "));
        HidePointer();
        Take("cache-found", kt::RectOf(window));

        kt::ClickAndWait(button(L"Cookies"));
        kt::SelectRow(entries, 0);
        kt::ClickAndWait(button(L"Save ->"));
        HidePointer();
        Take("cache-cookies", kt::RectOf(window));

        kt::Click(button(L"<- Clear"));
        const kt::MessageBoxSeen box = Box();
        Take("cache-question", kt::RectOf(box.window));
        kt::Dismiss(box, IDNO);
        PostMessageW(window, WM_CLOSE, 0, 0);
        Must(kt::WaitUntil([window] { return !IsWindow(window); }), "close the cache window");
    }

    void BlockedPage() {
        Show(1);
        kt::Click(
            m_guard->Button(L"Prevent Internet Sites with the following words in their Title from loading... "
                            L"Seperate multiple keywords by a space and a minus sign."));
        kt::TypeText(m_guard->Edits().at(1), L"xxx -porn -sex -lottery");
        kt::ClickAndWait(m_guard->Apply());
        Must(kt::WaitUntil([this] { return !kt::Enabled(m_guard->Apply()); }), "apply");
        SetWindowPos(m_garden->Window(), HWND_TOP, Scaled(20), Scaled(20), Scaled(640), Scaled(300),
                     SWP_SHOWWINDOW);
        m_garden->Navigate(L"http://videos.example/");
        Must(kt::WaitUntil([this] { return m_garden->Title() == L"Kestrelguard - Blocked Site Access"; }),
             "see the blocked page");
        Must(m_garden->WaitIdle(), "load the blocked page");
        BringWindowToTop(m_garden->Window());
        HidePointer();
        Take("blocked-page", kt::RectOf(m_garden->Window()));
    }

    /// Before any page has finished loading: the program looks once an hour.
    void UpdateNotice() {
        const std::string server = "127.0.0.1";
        const LoopbackServer web(80, "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(server.size()) +
                                         "\r\nContent-Type: text/html\r\n\r\n" + server);
        const LoopbackServer update(26144, ":'/|ZEV_PRODLI2.0.120");
        m_news->FireDocumentComplete(kNews);
        const kt::MessageBoxSeen box = Box();
        Take("update-notice", kt::RectOf(box.window));
        kt::Dismiss(box);
    }

    const std::wstring m_pictures;
    int m_dpi = 96;
    StandInDesktop m_desktop;
    kt::GuardFolder m_folder;
    std::unique_ptr<kt::Guard> m_guard;
    Browser* m_news = nullptr;
    Browser* m_garden = nullptr;
    Browser* m_popups = nullptr;
};

}  // namespace

}  // namespace kestrelguard::desktop

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    int count = 0;
    wchar_t** list = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::vector<std::wstring> arguments(list, list + count);
    LocalFree(list);
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: album KESTRELGUARD.EXE FOLDER\n");
        return 2;
    }
    try {
        const kestrelguard::desktop::Apartment apartment;
        kestrelguard::desktop::Album(arguments[1], arguments[2]).Run();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "album: %s\n", error.what());
        return 1;
    }
}
