#include "desktop/BrowserObject.h"

#include <exdispid.h>
#include <olectl.h>

#include <algorithm>
#include <utility>

#include "desktop/Frame.h"
#include "desktop/Pages.h"

namespace kestrelguard::desktop {

std::shared_ptr<BrowserObject> BrowserObject::Create(BrowserOwner& owner, UiThread& ui,
                                                     BrowserOptions options) {
    std::shared_ptr<BrowserObject> browser(new BrowserObject(owner, ui, std::move(options)));
    ui.Call([&browser] {
        const HWND window = CreateFrame(browser);
        const Hold hold(browser->m_lock);
        browser->m_window = window;
    });
    browser->Changed();
    return browser;
}

BrowserObject::BrowserObject(BrowserOwner& owner, UiThread& ui, BrowserOptions options)
    : UnofferedMembers(DIID_DWebBrowserEvents2),
      m_owner(owner),
      m_ui(ui),
      m_options(std::move(options)),
      m_url(m_options.url),
      m_title(m_options.title),
      m_statusText(m_options.statusText) {}

BrowserObject::~BrowserObject() = default;

HWND BrowserObject::Window() const {
    const Hold hold(m_lock);
    return m_window;
}

std::wstring BrowserObject::Url() const {
    const Hold hold(m_lock);
    return m_url;
}

std::wstring BrowserObject::Title() const {
    const Hold hold(m_lock);
    return m_title;
}

std::wstring BrowserObject::StatusText() const {
    const Hold hold(m_lock);
    return m_statusText;
}

bool BrowserObject::Busy() const {
    const Hold hold(m_lock);
    return m_busy;
}

std::vector<NavigateCall> BrowserObject::NavigateCalls() const {
    const Hold hold(m_lock);
    return m_navigations;
}

bool BrowserObject::QuitCalled() const {
    const Hold hold(m_lock);
    return m_quit;
}

void BrowserObject::SetUrl(std::wstring url) {
    {
        const Hold hold(m_lock);
        m_url = std::move(url);
    }
    Changed();
}

void BrowserObject::SetTitle(std::wstring title) {
    {
        const Hold hold(m_lock);
        m_title = std::move(title);
    }
    Changed();
}

void BrowserObject::SetStatusText(std::wstring text) {
    {
        const Hold hold(m_lock);
        m_statusText = std::move(text);
    }
    Changed();
}

void BrowserObject::ShowStatusText(std::wstring text) {
    SetStatusText(text);
    Post([self = shared_from_this(), text = std::move(text)] {
        self->Announce(EventCall::StatusTextChange(text));
    });
}

void BrowserObject::ResetReads() {
    for (Watch& watch : m_watches) {
        watch.ResetCalls();
    }
}

void BrowserObject::Stall(Property property) {
    if (!Ended()) {
        Of(property).Stall();
    }
    Changed();
}

void BrowserObject::LetGo(Property property) {
    Of(property).LetGo();
    Changed();
}

bool BrowserObject::Stalls() const {
    return std::any_of(m_watches.begin(), m_watches.end(), [](const Watch& watch) { return watch.Stalls(); });
}

HRESULT BrowserObject::Read(Property property) noexcept {
    const HRESULT hr = Of(property).Enter(*this);
    return Ended() ? RPC_E_DISCONNECTED : hr;
}

void BrowserObject::Changed() const {
    FrameChanged(Window());
}

void BrowserObject::Load(const std::wstring& url) {
    Post([self = shared_from_this(), url = CompleteAddress(url)] { self->LoadNow(url); });
}

void BrowserObject::LoadNow(const std::wstring& url) {
    const EventCall before = EventCall::BeforeNavigate2(Dispatch(), url);
    if (Events().Deliver(before).cancel) {
        return;
    }
    const Page page = LoadPage(url);
    {
        const Hold hold(m_lock);
        m_busy = true;
        m_statusText = L"Opening page " + url + L"...";
    }
    Changed();
    Announce(EventCall::CommandStateChange(1, false));
    Announce(EventCall::StatusTextChange(StatusText()));
    Announce(EventCall::DownloadBegin());
    Announce(EventCall::ProgressChange(1, 100));
    SetUrl(url);
    Announce(EventCall::NavigateComplete2(Dispatch(), url));
    SetTitle(page.title);
    Announce(EventCall::TitleChange(page.title));
    Announce(EventCall::ProgressChange(100, 100));
    {
        const Hold hold(m_lock);
        m_busy = false;
        m_statusText = L"Done";
    }
    Changed();
    Announce(EventCall::DownloadComplete());
    Announce(EventCall::ProgressChange(0, 0));
    // A load that something else has already replaced never becomes complete.
    if (m_work.Waiting() > 0) {
        return;
    }
    Announce(EventCall::DocumentComplete(Dispatch(), url));
    Announce(EventCall::StatusTextChange(L"Done"));
    for (const std::wstring& popup : page.popups) {
        RequestNewWindow(popup);
    }
}

void BrowserObject::RequestNewWindow(const std::wstring& url) {
    Post([self = shared_from_this(), url = CompleteAddress(url)] {
        const EventResult result = self->Events().Deliver(EventCall::NewWindow2());
        if (!result.cancel) {
            self->m_owner.OpenWindow(*self, url, result.newBrowser);
        }
    });
}

bool BrowserObject::ClickLink(const std::wstring& link) const {
    bool clicked = false;
    const HWND window = Window();
    m_ui.Call([&] { clicked = PressLink(window, link); });
    return clicked;
}

RECT BrowserObject::LinkPlace(const std::wstring& link) const {
    RECT place{};
    const HWND window = Window();
    m_ui.Call([&] { place = desktop::LinkPlace(window, link); });
    return place;
}

void BrowserObject::End(bool disconnectClients) {
    HWND window = nullptr;
    {
        const Hold hold(m_lock);
        m_ended = true;
        window = std::exchange(m_window, nullptr);
    }
    for (Watch& watch : m_watches) {
        watch.LetGo();
    }
    m_work.Stop();
    if (window != nullptr) {
        m_ui.Call([window] { DestroyWindow(window); });
    }
    if (disconnectClients) {
        CoDisconnectObject(Dispatch(), 0);
        Events().DropSinks();
    }
}

bool BrowserObject::Ended() const {
    const Hold hold(m_lock);
    return m_ended;
}

}  // namespace kestrelguard::desktop
