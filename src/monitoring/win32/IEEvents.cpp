#include "monitoring/win32/IEEvents.h"

#include <utility>

namespace kestrelguard {

namespace {

constexpr std::wstring_view kEnabled = L"Enabled";

}  // namespace

IEEvents::IEEvents(BrowserEvents& host, PropertyHost* properties, ShellWindowsMaker makeShellWindows)
    : m_host(host), m_properties(properties), m_makeShellWindows(std::move(makeShellWindows)) {}

IEEvents::~IEEvents() {
    Stop();
}

bool IEEvents::Enabled() {
    const bool enabled = static_cast<bool>(oBrowserEvents);
    // Kept: reading counts as a change, too.
    PropertyChanged();
    return enabled;
}

void IEEvents::SetEnabled(bool blnNewValue) {
    if (!blnNewValue) {
        Stop();
    } else if (!oBrowserEvents && m_startingTurn == 0) {
        Start();
    }
    PropertyChanged();
}

void IEEvents::Refresh() {
    Stop();
    Start();
}

void IEEvents::Start() {
    const std::uint32_t turn = ++m_turn;
    m_startingTurn = turn;
    // Watching calls the windows, which lets other calls in: one of them may switch monitoring off, or start
    // it over.
    ComPtr<cBrowserEvents> watcher;
    try {
        watcher = cBrowserEvents::Create(m_makeShellWindows);
    } catch (...) {
        if (m_startingTurn == turn) {
            m_startingTurn = 0;
        }
        throw;
    }
    if (m_turn != turn) {
        watcher->Close();
        return;
    }
    m_startingTurn = 0;
    oBrowserEvents = watcher;
    watcher->Connect(m_listener);
    watcher->SetBrowsers(m_oBrowsers);
    watcher->LoadBrowsers();
}

void IEEvents::Stop() noexcept {
    ++m_turn;
    m_startingTurn = 0;
    if (const ComPtr<cBrowserEvents> watcher = std::move(oBrowserEvents)) {
        watcher->Close();
    }
}

void IEEvents::PropertyChanged() {
    if (m_properties != nullptr) {
        m_properties->PropertyChanged(kEnabled);
    }
}

void IEEvents::WriteProperties(PropertyBag& bag) const {
    // Kept: what is stored is whether monitoring is off.
    bag.WriteProperty(kEnabled, !oBrowserEvents, false);
}

void IEEvents::oBrowserEvents_BrowserNavigating(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL,
                                                VARIANT& Flags, VARIANT& TargetFrameName, VARIANT& PostData,
                                                VARIANT& Headers, VARIANT_BOOL& Cancel) {
    m_host.BrowserNavigating(Browser, pDisp, URL, Flags, TargetFrameName, PostData, Headers, Cancel);
}

void IEEvents::oBrowserEvents_DocumentComplete(IWebBrowser2*& Browser, IDispatch*& pDisp, VARIANT& URL) {
    m_host.DocumentComplete(Browser, pDisp, URL);
}

void IEEvents::oBrowserEvents_DownLoadBegin(IWebBrowser2*& Browser) {
    m_host.DownLoadBegin(Browser);
}

void IEEvents::oBrowserEvents_DownLoadComplete(IWebBrowser2*& Browser) {
    m_host.DownLoadComplete(Browser);
}

void IEEvents::oBrowserEvents_FileDownload(IWebBrowser2*& Browser, VARIANT_BOOL& Cancel) {
    m_host.FileDownload(Browser, Cancel);
}

void IEEvents::oBrowserEvents_NavigateComplete(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL) {
    m_host.NavigateComplete(Browser, pDisp, URL);
}

void IEEvents::oBrowserEvents_NavigateError(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL,
                                            VARIANT& Frame, VARIANT& StatusCode, VARIANT_BOOL& Cancel) {
    m_host.NavigateError(Browser, pDisp, URL, Frame, StatusCode, Cancel);
}

void IEEvents::oBrowserEvents_NewWindow(IWebBrowser2*& Browser, IDispatch*& ppDisp, VARIANT_BOOL& Cancel) {
    m_host.NewWindow(Browser, ppDisp, Cancel);
}

void IEEvents::oBrowserEvents_OnFullScreen(IWebBrowser2*& Browser, VARIANT_BOOL FullScreen) {
    m_host.OnFullScreen(Browser, FullScreen);
}

void IEEvents::oBrowserEvents_ProgressChange(IWebBrowser2*& Browser, LONG Progress, LONG ProgressMax) {
    m_host.ProgressChange(Browser, Progress, ProgressMax);
}

void IEEvents::oBrowserEvents_TitleChange(IWebBrowser2*& Browser, const std::wstring& Text) {
    m_host.TitleChange(Browser, Text);
}

void IEEvents::oBrowserEvents_WindowClosing(IWebBrowser2*& Browser, VARIANT_BOOL IsChildWindow,
                                            VARIANT_BOOL& Cancel) {
    m_host.WindowClosing(Browser, IsChildWindow, Cancel);
}

void IEEvents::oBrowserEvents_BrowserCreated(IWebBrowser2* Browser) {
    m_host.BrowserCreated(Browser);
}

void IEEvents::oBrowserEvents_BrowserDestroyed() {
    m_host.BrowserDestroyed();
}

void IEEvents::Listener::BrowserNavigating(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL,
                                           VARIANT& Flags, VARIANT& TargetFrameName, VARIANT& PostData,
                                           VARIANT& Headers, VARIANT_BOOL& Cancel) {
    m_control.oBrowserEvents_BrowserNavigating(Browser, pDisp, URL, Flags, TargetFrameName, PostData, Headers,
                                               Cancel);
}

void IEEvents::Listener::DocumentComplete(IWebBrowser2*& Browser, IDispatch*& pDisp, VARIANT& URL) {
    m_control.oBrowserEvents_DocumentComplete(Browser, pDisp, URL);
}

void IEEvents::Listener::DownLoadBegin(IWebBrowser2*& Browser) {
    m_control.oBrowserEvents_DownLoadBegin(Browser);
}

void IEEvents::Listener::DownLoadComplete(IWebBrowser2*& Browser) {
    m_control.oBrowserEvents_DownLoadComplete(Browser);
}

void IEEvents::Listener::FileDownload(IWebBrowser2*& Browser, VARIANT_BOOL& Cancel) {
    m_control.oBrowserEvents_FileDownload(Browser, Cancel);
}

void IEEvents::Listener::NavigateComplete(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL) {
    m_control.oBrowserEvents_NavigateComplete(Browser, pDisp, URL);
}

void IEEvents::Listener::NavigateError(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL, VARIANT& Frame,
                                       VARIANT& StatusCode, VARIANT_BOOL& Cancel) {
    m_control.oBrowserEvents_NavigateError(Browser, pDisp, URL, Frame, StatusCode, Cancel);
}

void IEEvents::Listener::NewWindow(IWebBrowser2*& Browser, IDispatch*& ppDisp, VARIANT_BOOL& Cancel) {
    m_control.oBrowserEvents_NewWindow(Browser, ppDisp, Cancel);
}

void IEEvents::Listener::OnFullScreen(IWebBrowser2*& Browser, VARIANT_BOOL FullScreen) {
    m_control.oBrowserEvents_OnFullScreen(Browser, FullScreen);
}

void IEEvents::Listener::ProgressChange(IWebBrowser2*& Browser, LONG Progress, LONG ProgressMax) {
    m_control.oBrowserEvents_ProgressChange(Browser, Progress, ProgressMax);
}

void IEEvents::Listener::TitleChange(IWebBrowser2*& Browser, const std::wstring& Text) {
    m_control.oBrowserEvents_TitleChange(Browser, Text);
}

void IEEvents::Listener::WindowClosing(IWebBrowser2*& Browser, VARIANT_BOOL IsChildWindow,
                                       VARIANT_BOOL& Cancel) {
    m_control.oBrowserEvents_WindowClosing(Browser, IsChildWindow, Cancel);
}

void IEEvents::Listener::BrowserCreated(IWebBrowser2* Browser) {
    m_control.oBrowserEvents_BrowserCreated(Browser);
}

void IEEvents::Listener::BrowserDestroyed() {
    m_control.oBrowserEvents_BrowserDestroyed();
}

}  // namespace kestrelguard
