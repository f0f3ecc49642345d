#include "desktop/Desktop.h"

#include <algorithm>
#include <stdexcept>

#include "desktop/Pages.h"

namespace kestrelguard::desktop {

Browser::Browser(StandInDesktop& desktop, std::shared_ptr<BrowserObject> object, LONG cookie)
    : m_desktop(desktop), m_object(std::move(object)), m_cookie(cookie) {}

LONG Browser::Handle() const {
    const LONG frame = m_object->Options().frame;
    return frame != 0 ? frame : static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_object->Window()));
}

EventResult Browser::Fire(EventCall call, bool withException) {
    return Start(std::move(call), withException).Result();
}

PendingEvent Browser::Start(EventCall call, bool withException) {
    return m_object->Events().Start(std::move(call), m_object, withException);
}

EventResult Browser::FireTitleChange(std::wstring title) {
    EventCall call = EventCall::TitleChange(title);
    m_object->SetTitle(std::move(title));
    return Fire(std::move(call));
}

void Browser::Close() {
    m_desktop.Close(*this);
}

void Browser::Die() {
    m_object->End(true);
}

bool Browser::WaitEnded(DWORD limit) const {
    const DWORD start = GetTickCount();
    while (!Ended()) {
        if (GetTickCount() - start > limit) {
            return false;
        }
        Sleep(5);
    }
    return true;
}

StandInDesktop::StandInDesktop() : m_list(ShellWindowsObject::Create()) {
    PrepareRegistry();
    m_list->OnForeign([this](DWORD process, ComPtr<IDispatch> object,
                             LONG cookie) { Registered(process, std::move(object), cookie); },
                      [this](LONG cookie) { FireWindowRevoked(cookie); });
    m_class = std::make_unique<ServedClass>(kStandInShellWindows, m_list);
}

StandInDesktop::~StandInDesktop() {
    OnAllClosed({});
    m_class.reset();
    std::vector<std::unique_ptr<RemoteBrowser>> remote;
    std::vector<std::unique_ptr<Browser>> browsers;
    {
        const Hold hold(m_lock);
        remote.swap(m_remoteBrowsers);
        browsers.swap(m_browsers);
    }
    // First of all, since letting go of a browser that is stopped would wait with it.
    for (const auto& browser : remote) {
        browser->Kill();
    }
    m_list->End();
    for (const auto& browser : browsers) {
        browser->Object()->End(true);
        // Its thread still calls this desktop; it must be done before the desktop is gone.
        browser->WaitIdle();
    }
}

Browser& StandInDesktop::OpenBrowser(BrowserOptions options) {
    const bool announced = options.announced;
    std::shared_ptr<BrowserObject> object = BrowserObject::Create(*this, m_ui, std::move(options));
    const LONG cookie = m_list->Add(object);
    auto owned = std::make_unique<Browser>(*this, std::move(object), cookie);
    Browser& browser = *owned;
    {
        const Hold hold(m_lock);
        m_browsers.push_back(std::move(owned));
    }
    if (announced) {
        FireWindowRegistered(cookie);
    }
    return browser;
}

RemoteBrowser& StandInDesktop::OpenRemoteBrowser(const std::wstring& host, RemoteOptions options) {
    // Once in some hundred times Wine finds no browser in what a new process has registered, however often
    // it is asked. No listener has been told of that one, and another one takes its place.
    for (int tries = 0; tries < 5; ++tries) {
        kestrelguard::Handle process;
        const auto arrival = StartHost(host, options, process);
        if (arrival->browser) {
            auto owned =
                std::make_unique<RemoteBrowser>(std::move(process), arrival->browser, arrival->cookie);
            RemoteBrowser& browser = *owned;
            const Hold hold(m_lock);
            m_remoteBrowsers.push_back(std::move(owned));
            return browser;
        }
        TerminateProcess(process.Get(), 9);
        m_list->Remove(arrival->cookie);
    }
    throw std::runtime_error("what the browser host registers is no browser");
}

std::shared_ptr<StandInDesktop::Arrival> StandInDesktop::StartHost(const std::wstring& host,
                                                                   const RemoteOptions& options,
                                                                   kestrelguard::Handle& process) {
    std::wstring command = L"\"" + host + L"\" \"" + options.url + L"\" \"" + options.title + L"\"" +
                           (options.dressed ? L" dressed" : L"");
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(host.c_str(), command.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr,
                        nullptr, &startup, &started)) {
        throw std::runtime_error("the browser host cannot be started");
    }
    process = kestrelguard::Handle(started.hProcess);
    const kestrelguard::Handle thread(started.hThread);
    const auto arrival = std::make_shared<Arrival>();
    arrival->announced = options.announced;
    {
        const Hold hold(m_lock);
        m_arrivals[started.dwProcessId] = arrival;
    }
    ResumeThread(thread.Get());
    if (!arrival->signal.Wait(30000)) {
        TerminateProcess(process.Get(), 9);
        throw std::runtime_error("the browser host did not register");
    }
    return arrival;
}

void StandInDesktop::Registered(DWORD process, ComPtr<IDispatch> object, LONG cookie) {
    std::shared_ptr<Arrival> arrival;
    {
        const Hold hold(m_lock);
        if (const auto node = m_arrivals.extract(process)) {
            arrival = node.mapped();
        }
    }
    bool announced = true;
    if (arrival) {
        arrival->browser = object.As<IWebBrowser2>();
        announced = arrival->announced && arrival->browser;
        arrival->cookie = cookie;
        arrival->signal.Set();
    }
    if (announced) {
        FireWindowRegistered(cookie);
    }
}

LONG StandInDesktop::Include(ComPtr<IDispatch> object, bool announced) {
    const LONG cookie = m_list->AddForeign(std::move(object));
    if (announced) {
        FireWindowRegistered(cookie);
    }
    return cookie;
}

ComPtr<IWebBrowser2> StandInDesktop::OpenWineBrowser() {
    ComPtr<IWebBrowser2> browser;
    if (FAILED(CoCreateInstance(CLSID_InternetExplorer, nullptr, CLSCTX_LOCAL_SERVER, IID_IWebBrowser2,
                                browser.PutVoid()))) {
        throw std::runtime_error("Wine's own browser cannot be started");
    }
    Include(browser.As<IDispatch>());
    return browser;
}

void StandInDesktop::Withdraw(LONG cookie, bool announced) {
    m_list->Remove(cookie);
    if (announced) {
        FireWindowRevoked(cookie);
    }
}

std::vector<Browser*> StandInDesktop::Browsers() const {
    const Hold hold(m_lock);
    std::vector<Browser*> browsers;
    for (const auto& browser : m_browsers) {
        browsers.push_back(browser.get());
    }
    return browsers;
}

std::vector<Browser*> StandInDesktop::OpenBrowsers() const {
    std::vector<Browser*> browsers = Browsers();
    std::erase_if(browsers, [](const Browser* browser) { return browser->Ended(); });
    return browsers;
}

std::vector<RemoteBrowser*> StandInDesktop::RemoteBrowsers() const {
    const Hold hold(m_lock);
    std::vector<RemoteBrowser*> browsers;
    for (const auto& browser : m_remoteBrowsers) {
        browsers.push_back(browser.get());
    }
    return browsers;
}

EventResult StandInDesktop::FireWindowRegistered(LONG cookie) {
    return StartWindowRegistered(cookie).Result();
}

EventResult StandInDesktop::FireWindowRevoked(LONG cookie) {
    return StartWindowRevoked(cookie).Result();
}

PendingEvent StandInDesktop::StartWindowRegistered(LONG cookie) {
    return m_list->Events().Start(EventCall::WindowRegistered(cookie), m_list);
}

PendingEvent StandInDesktop::StartWindowRevoked(LONG cookie) {
    return m_list->Events().Start(EventCall::WindowRevoked(cookie), m_list);
}

EventResult StandInDesktop::FireOnList(EventCall call) {
    return m_list->Events().Start(std::move(call), m_list).Result();
}

void StandInDesktop::SetNewWindowLook(bool dressed, bool shown) {
    const Hold hold(m_lock);
    m_newDressed = dressed;
    m_newShown = shown;
}

void StandInDesktop::OnAllClosed(Task task) {
    const Hold hold(m_lock);
    m_allClosed = std::move(task);
}

void StandInDesktop::CloseRequested(BrowserObject& browser) noexcept {
    Browser* found = nullptr;
    {
        const Hold hold(m_lock);
        const auto position = std::find_if(m_browsers.begin(), m_browsers.end(), [&browser](const auto& one) {
            return one->Object().get() == &browser;
        });
        found = position != m_browsers.end() ? position->get() : nullptr;
    }
    if (found != nullptr) {
        Close(*found);
    }
}

void StandInDesktop::OpenWindow(BrowserObject&, const std::wstring& url,
                                ComPtr<IDispatch> replacement) noexcept {
    // A sink that offers a browser of its own gets the page shown in there.
    if (const ComPtr<IWebBrowser2> offered = replacement.As<IWebBrowser2>()) {
        Variant none[4] = {Variant::Omitted(), Variant::Omitted(), Variant::Omitted(), Variant::Omitted()};
        const Bstr address(url);
        offered->Navigate(address.Get(), &none[0], &none[1], &none[2], &none[3]);
        return;
    }
    BrowserOptions options;
    options.url.clear();
    options.title.clear();
    options.opened = true;
    {
        const Hold hold(m_lock);
        options.dressed = m_newDressed;
        options.shown = m_newShown;
    }
    OpenBrowser(std::move(options)).Navigate(url);
}

void StandInDesktop::OpenApart() noexcept {
    // On a thread of its own: windows' threads never call out.
    RunDetached([this] {
        RemoteOptions options;
        options.dressed = true;
        try {
            wchar_t own[MAX_PATH];
            const std::wstring path(own, GetModuleFileNameW(nullptr, own, MAX_PATH));
            OpenRemoteBrowser(path.substr(0, path.find_last_of(L'\\') + 1) + L"browser_host.exe", options);
        } catch (const std::exception&) {
            MessageBeep(MB_ICONERROR);
        }
    });
}

void StandInDesktop::StopApart() noexcept {
    const Hold hold(m_lock);
    const bool stopped = std::any_of(m_remoteBrowsers.begin(), m_remoteBrowsers.end(),
                                     [](const auto& browser) { return browser->Stopped(); });
    for (const auto& browser : m_remoteBrowsers) {
        if (stopped) {
            browser->GoOn();
        } else if (browser->Running()) {
            browser->Stop();
        }
    }
}

void StandInDesktop::Close(Browser& browser) {
    // OnQuit comes while the browser still answers; afterwards it is gone from the list before anybody hears
    // so.
    browser.Object()->Events().Deliver(EventCall::OnQuit());
    if (!m_list->Remove(browser.Cookie())) {
        return;
    }
    browser.Object()->End(false);
    FireWindowRevoked(browser.Cookie());
    browser.Object()->End(true);
    Task allClosed;
    if (OpenBrowsers().empty()) {
        const Hold hold(m_lock);
        allClosed = m_allClosed;
    }
    if (allClosed) {
        allClosed();
    }
}

}  // namespace kestrelguard::desktop
