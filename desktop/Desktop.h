#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/BrowserObject.h"
#include "desktop/Events.h"
#include "desktop/KeptInterfaces.h"
#include "desktop/RemoteBrowser.h"
#include "desktop/ServedClass.h"

namespace kestrelguard::desktop {

class StandInDesktop;

/// One browser window of the stand-in desktop, for whoever scripts it. Belongs to the desktop and stays valid
/// as long as the desktop does, even after the window is closed.
///
/// `Fire...` deliver one event to all sinks and wait for their answers, up to PendingEvent::kEventLimit;
/// `Start` does not wait, so that the caller can dismiss the message box a sink shows meanwhile:
///
///     auto pending = browser.Start(EventCall::NewWindow2());
///     ... dismiss the box ...
///     EXPECT_FALSE(pending.Result().cancel);
class Browser {
 public:
    Browser(StandInDesktop& desktop, std::shared_ptr<BrowserObject> object, LONG cookie);
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    // What it shows.
    HWND Window() const { return m_object->Window(); }
    /// The frame handle that it reports to clients.
    LONG Handle() const;
    std::wstring Url() const { return m_object->Url(); }
    std::wstring Title() const { return m_object->Title(); }
    std::wstring StatusText() const { return m_object->StatusText(); }
    /// These fire nothing.
    void SetUrl(std::wstring url) { m_object->SetUrl(std::move(url)); }
    void SetTitle(std::wstring title) { m_object->SetTitle(std::move(title)); }
    void SetStatusText(std::wstring text) { m_object->SetStatusText(std::move(text)); }

    // Single events.
    EventResult Fire(EventCall call, bool withException = false);
    PendingEvent Start(EventCall call, bool withException = false);
    EventResult FireBeforeNavigate2(std::wstring_view url) {
        return Fire(EventCall::BeforeNavigate2(Dispatch(), url));
    }
    EventResult FireNavigateComplete2(std::wstring_view url) {
        return Fire(EventCall::NavigateComplete2(Dispatch(), url));
    }
    EventResult FireDocumentComplete(std::wstring_view url) {
        return Fire(EventCall::DocumentComplete(Dispatch(), url));
    }
    EventResult FireDownloadBegin() { return Fire(EventCall::DownloadBegin()); }
    EventResult FireDownloadComplete() { return Fire(EventCall::DownloadComplete()); }
    EventResult FireFileDownload() { return Fire(EventCall::FileDownload()); }
    EventResult FireNewWindow2() { return Fire(EventCall::NewWindow2()); }
    EventResult FireOnFullScreen(bool on) { return Fire(EventCall::OnFullScreen(on)); }
    EventResult FireProgressChange(LONG progress, LONG maximum) {
        return Fire(EventCall::ProgressChange(progress, maximum));
    }
    /// Sets the title too, as a browser does before it tells.
    EventResult FireTitleChange(std::wstring title);
    EventResult FireWindowClosing(bool isChildWindow) {
        return Fire(EventCall::WindowClosing(isChildWindow));
    }
    EventResult FireNavigateError(std::wstring_view url, LONG status) {
        return Fire(EventCall::NavigateError(Dispatch(), url, {}, status));
    }

    // What a user does. The events come from the browser's own thread; WaitIdle waits for their end.
    /// Loads an address typed or clicked: BeforeNavigate2 and, unless cancelled, all events of a load.
    void Navigate(const std::wstring& url) { m_object->Load(url); }
    /// Clicks a link that asks for a new window: NewWindow2 and, unless cancelled, a new browser.
    void ClickNewWindowLink(const std::wstring& url) { m_object->RequestNewWindow(url); }
    /// Clicks a link or button of the page by the mouse, in a dressed window. False when the page has none
    /// that leads there. What it brings about begins after this returns.
    bool ClickLink(const std::wstring& link) const { return m_object->ClickLink(link); }
    /// Where a link or button of the page is on the screen, for pointing at it; empty when there is none.
    RECT LinkPlace(const std::wstring& link) const { return m_object->LinkPlace(link); }
    bool WaitIdle(DWORD limit = 30000) const { return m_object->WaitIdle(limit); }

    // What clients did.
    SinkCounts Sinks() const { return m_object->Events().Counts(); }
    /// References that clients hold on the browser; 0 when they have let go of everything.
    LONG OutsideReferences() const { return m_object->OutsideReferences(); }
    int Reads(Property property) const { return m_object->Of(property).Calls(); }
    void ResetReads() { m_object->ResetReads(); }
    std::vector<NavigateCall> NavigateCalls() const { return m_object->NavigateCalls(); }
    bool QuitCalled() const { return m_object->QuitCalled(); }

    // Trouble.
    /// Makes the next `times` reads of a property answer `hr`; -1: from now on; 0: never again.
    void Fail(Property property, HRESULT hr, int times = -1) { m_object->Of(property).Fail(hr, times); }
    /// Makes the next `times` Advise calls answer `hr`; -1: from now on; 0: never again.
    void RefuseAdvise(HRESULT hr, int times = -1) { m_object->Events().RefuseAdvise(hr, times); }
    /// Runs before the next `times` reads (or Advise calls) are answered, while the client waits: the place
    /// to open or close other windows in the middle of a client's work.
    void BeforeRead(Property property, Task task, int times = 1) {
        m_object->Of(property).Before(std::move(task), times);
    }
    void BeforeAdvise(Task task, int times = 1) { m_object->Events().BeforeAdvise(std::move(task), times); }
    void BeforeUnadvise(Task task, int times = 1) {
        m_object->Events().BeforeUnadvise(std::move(task), times);
    }
    /// Lets no read of a property be answered, while the window and all else go on, until `LetGo` or the end.
    void Stall(Property property) { m_object->Stall(property); }
    void LetGo(Property property) { m_object->LetGo(property); }
    /// How many reads of the property wait.
    int Stalled(Property property) const { return m_object->Of(property).Stalled(); }

    // Its end.
    /// Closes it in good order: OnQuit, gone from the list, window gone, WindowRevoked, clients disconnected.
    void Close();
    /// Dies without saying goodbye: window gone, clients disconnected, every call fails; but it stays in the
    /// list and nothing is fired.
    void Die();
    /// Whether it was closed or died.
    bool Ended() const { return m_object->Ended(); }
    /// Waits for the end that a click on its window's close button, WM_CLOSE or `Quit` brings about.
    bool WaitEnded(DWORD limit = 30000) const;

    IDispatch* Dispatch() const { return m_object->Dispatch(); }
    const std::shared_ptr<BrowserObject>& Object() const { return m_object; }
    LONG Cookie() const { return m_cookie; }

 private:
    friend class StandInDesktop;

    StandInDesktop& m_desktop;
    std::shared_ptr<BrowserObject> m_object;
    const LONG m_cookie;
};

/// The stand-in desktop: serves the system's ShellWindows from this process, and browsers behind it, through
/// the interfaces that the real ones have. One at a time in a Wine prefix. Every member may be called from
/// any thread of the multi-threaded apartment. Works under Wine only.
class StandInDesktop final : private BrowserOwner {
 public:
    /// Throws std::runtime_error when it cannot be served.
    StandInDesktop();
    ~StandInDesktop() override;
    StandInDesktop(const StandInDesktop&) = delete;
    StandInDesktop& operator=(const StandInDesktop&) = delete;

    /// Opens a browser window and, unless the options say otherwise, announces it with WindowRegistered.
    Browser& OpenBrowser(BrowserOptions options = {});
    /// Opens a browser in a process of its own; `host` is the path of browser_host.exe. Throws
    /// std::runtime_error when it does not register in time.
    RemoteBrowser& OpenRemoteBrowser(const std::wstring& host, RemoteOptions options = {});
    /// Puts any object into the list: Wine's own browser, an object that is no browser, or null.
    /// Its cookie, for Withdraw.
    LONG Include(ComPtr<IDispatch> object, bool announced = true);
    /// Starts one of Wine's own browsers in its own process and puts it into the list. Throws
    /// std::runtime_error when there is none.
    ComPtr<IWebBrowser2> OpenWineBrowser();
    /// Takes an object out of the list and, unless `announced` is false, fires WindowRevoked.
    void Withdraw(LONG cookie, bool announced = true);

    /// The browsers in the order in which they were opened, closed ones included.
    std::vector<Browser*> Browsers() const;
    /// Those that are neither closed nor dead.
    std::vector<Browser*> OpenBrowsers() const;
    /// Those in processes of their own, ended ones included.
    std::vector<RemoteBrowser*> RemoteBrowsers() const;
    /// Entries in the list, dead ones included.
    int ListSize() const { return m_list->Size(); }

    // Announcements, with or without a window behind them. They wait as Browser::Fire does.
    EventResult FireWindowRegistered(LONG cookie);
    EventResult FireWindowRevoked(LONG cookie);
    PendingEvent StartWindowRegistered(LONG cookie);
    PendingEvent StartWindowRevoked(LONG cookie);
    /// Any event on the list's connection point.
    EventResult FireOnList(EventCall call);

    // What clients did with the list, and trouble; as for Browser.
    SinkCounts Sinks() const { return m_list->Events().Counts(); }
    LONG OutsideReferences() const { return m_list->OutsideReferences(); }
    int Enumerations() const { return m_list->Enumerations().Calls(); }
    void FailEnumeration(HRESULT hr, int times = -1) { m_list->Enumerations().Fail(hr, times); }
    /// Before a client connects to the list's events.
    void BeforeConnect(Task task, int times = 1) { m_list->Events().BeforeAdvise(std::move(task), times); }
    void BeforeEnumeration(Task task, int times = 1) {
        m_list->Enumerations().Before(std::move(task), times);
    }

    /// How windows that pages open look: dressed and shown or not. Bare and hidden at first.
    void SetNewWindowLook(bool dressed, bool shown);
    /// Called, on any thread, when the last open browser is gone.
    void OnAllClosed(Task task);

 private:
    friend class Browser;

    void CloseRequested(BrowserObject& browser) noexcept override;
    void OpenWindow(BrowserObject& opener, const std::wstring& url,
                    ComPtr<IDispatch> replacement) noexcept override;
    void OpenApart() noexcept override;
    void StopApart() noexcept override;
    bool CanOpenApart() const noexcept override { return true; }
    void Close(Browser& browser);
    void Registered(DWORD process, ComPtr<IDispatch> object, LONG cookie);

    /// A browser host that was started and has not registered yet.
    struct Arrival {
        bool announced = true;
        /// Null when what has registered is none.
        ComPtr<IWebBrowser2> browser;
        LONG cookie = 0;
        Signal signal;
    };
    /// Starts a host and waits until it has registered. Throws std::runtime_error.
    std::shared_ptr<Arrival> StartHost(const std::wstring& host, const RemoteOptions& options,
                                       kestrelguard::Handle& process);

    Apartment m_apartment;
    KeptInterfaces m_keptInterfaces;
    UiThread m_ui;
    std::shared_ptr<ShellWindowsObject> m_list;
    std::unique_ptr<ServedClass> m_class;
    mutable Lock m_lock;
    std::vector<std::unique_ptr<Browser>> m_browsers;
    std::vector<std::unique_ptr<RemoteBrowser>> m_remoteBrowsers;
    std::map<DWORD, std::shared_ptr<Arrival>> m_arrivals;  // by process
    bool m_newDressed = false;
    bool m_newShown = false;
    Task m_allClosed;
};

}  // namespace kestrelguard::desktop
